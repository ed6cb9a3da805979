#include "base/thread_keep.h"

#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

struct OneUse {};
struct AnotherUse {};

std::string* Kept() { return ThreadKept<std::string, OneUse>(); }
std::string* KeptForAnotherUse() { return ThreadKept<std::string, AnotherUse>(); }

TEST(ThreadKept, IsTheSameValueWheneverAThreadAsks) {
  *Kept() = "kept";
  EXPECT_EQ(*Kept(), "kept");
}

TEST(ThreadKept, EachUseHasItsOwn) {
  *Kept() = "kept";
  *KeptForAnotherUse() = "other";
  EXPECT_EQ(*Kept(), "kept");
}

TEST(ThreadKept, EachThreadHasItsOwnWhichStartsEmpty) {
  *Kept() = "kept";
  std::string found = "nothing asked";
  std::thread([&] { found = *Kept(); }).join();
  EXPECT_EQ(found, "");
}

TEST(ThreadKept, TheValueGoesWithItsThread) {
  const auto counted = std::make_shared<int>(1);
  std::thread([&] { *ThreadKept<std::shared_ptr<int>, OneUse>() = counted; }).join();
  EXPECT_EQ(counted.use_count(), 1);
}

bool askedLate = false;
bool refusedLate = false;

/// Made before the kept value and so destroyed behind it.
struct AsksLate {
  ~AsksLate() {
    askedLate = true;
    refusedLate = ThreadKept<std::string, AsksLate>() == nullptr;
  }
};

TEST(ThreadKept, IsNotGivenOutOnceItIsGone) {
  std::thread([] {
    static thread_local AsksLate late;
    static_cast<void>(&late);
    *ThreadKept<std::string, AsksLate>() = "kept";
  }).join();
  EXPECT_TRUE(askedLate);
  EXPECT_TRUE(refusedLate);
}

}  // namespace
}  // namespace tessaret
