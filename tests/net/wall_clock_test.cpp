// The wall clock of this program jumps by a day, forwards and backwards, whenever anybody looks at it. Waits go by another clock.
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "net/socket.h"
#include "platform/host_lookup.h"
#include "support/plain_peer.h"

namespace {

constexpr time_t kDay = 86400;

time_t Jump() {
  static std::atomic<unsigned> looks = 0;
  return ++looks % 2 == 0 ? kDay : -kDay;
}

}  // namespace

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  const long answer = ::syscall(SYS_clock_gettime, clock, now);
  if (answer == 0 && clock == CLOCK_REALTIME) now->tv_sec += Jump();
  return static_cast<int>(answer);
}

extern "C" int gettimeofday(timeval* now, void*) noexcept {
  timespec precise{};
  clock_gettime(CLOCK_REALTIME, &precise);
  *now = {precise.tv_sec, precise.tv_nsec / 1000};
  return 0;
}

extern "C" time_t time(time_t* now) noexcept {
  timespec precise{};
  clock_gettime(CLOCK_REALTIME, &precise);
  if (now != nullptr) *now = precise.tv_sec;
  return precise.tv_sec;
}

namespace tessaret {
namespace {

using Clock = std::chrono::steady_clock;

TEST(JumpsOfTheWallClock, AreThere) {
  const auto first = std::chrono::system_clock::now();
  const auto second = std::chrono::system_clock::now();
  const auto third = std::chrono::system_clock::now();
  EXPECT_GT(std::chrono::abs(second - first), std::chrono::hours(47));
  EXPECT_LT(std::chrono::abs(third - first), std::chrono::hours(1));
}

TEST(JumpsOfTheWallClock, EndNoReadTooEarly) {
  auto ends = test::ConnectedPair();
  Socket socket;
  socket.Adopt(ends[1].Release());
  std::thread peer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    ends[0].Send({7});
  });
  char byte = 0;
  EXPECT_EQ(socket.Read(&byte, 1), 1);
  peer.join();
}

TEST(JumpsOfTheWallClock, LengthenNoWait) {
  auto ends = test::ConnectedPair();
  Socket socket;
  socket.Adopt(ends[1].Release());
  socket.TimeoutSecs = 1;
  const auto begin = Clock::now();
  char byte = 0;
  EXPECT_EQ(socket.Read(&byte, 1), -1);
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_LT(Clock::now() - begin, std::chrono::minutes(1));
}

TEST(JumpsOfTheWallClock, NeitherEndNorLengthenAConnect) {
  const test::SilentListener listener;
  Socket socket;
  socket.TimeoutSecs = 1;
  const auto begin = Clock::now();
  EXPECT_EQ(socket.Open("127.0.0.1", listener.PortText()), 0);
  EXPECT_STREQ(socket.GetLastError(), "Operation timed out");
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_LT(Clock::now() - begin, std::chrono::minutes(1));
}

TEST(JumpsOfTheWallClock, NeitherEndNorLengthenASend) {
  const test::Bytes much(1 << 23);
  auto ends = test::ConnectedPair();
  Socket socket;
  socket.Adopt(ends[1].Release());
  std::thread peer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(ends[0].Receive(much.size()).size(), much.size());
  });
  EXPECT_EQ(socket.Send(much.data(), static_cast<std::uint32_t>(much.size())), 1);
  peer.join();
  socket.TimeoutSecs = 1;
  const auto begin = Clock::now();
  EXPECT_EQ(socket.Send(much.data(), static_cast<std::uint32_t>(much.size())), 0);
  EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
  EXPECT_LT(Clock::now() - begin, std::chrono::minutes(1));
}

TEST(JumpsOfTheWallClock, NeitherEndNorLengthenALookUp) {
  SetHostLookup([](const std::string&) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    return std::optional<in_addr>(in_addr{htonl(INADDR_LOOPBACK)});
  });
  EXPECT_TRUE(FindHost("name", DeadlineIn(60000), [] { return false; }).has_value());
  SetHostLookup(nullptr);
}

}  // namespace
}  // namespace tessaret
