// The data dictionary is read by any number of threads without a lock.
#include <array>
#include <atomic>
#include <cstring>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/rtc.h"

namespace tessaret {
namespace {

TEST(RTC, IsReadByManyThreadsAtOnce) {
  constexpr std::string_view kText = "\n{0x0010 0x0010 PN \"Name\"}\n{0x0028 0x0010 US \"Rows\"}\n";
  RTC rtc;
  ASSERT_TRUE(rtc.AttachBytes(kText.data(), kText.size()));
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int at = 0; at < 8; ++at) {
    threads.emplace_back([&] {
      for (int round = 0; round < 1000; ++round) {
        std::array<char, kDescriptionBuffer> text;
        const bool known = rtc.RunTimeClass(0x0028, 0x0010, text.data()) == type_code::US;
        if (!known || std::strcmp(text.data(), "Rows") != 0) ++wrong;
        if (rtc.RunTimeClass(0x0028, 0x0011, text.data()) != 0 || text[0] != '\0') ++wrong;
        VR vr(0x0010, 0x0010, 0, nullptr);
        if (!rtc.RunTimeClass(&vr) || vr.TypeCode != type_code::PN) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace tessaret
