#include "platform/host_lookup.h"

#include <netdb.h>
#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "platform/file_calls.h"

namespace tessaret {
namespace {

using Clock = std::chrono::steady_clock;

bool NotGivenUp() { return false; }

std::uint32_t Number(const std::string& text) { return ntohl(DottedAddress(text).s_addr); }

TEST(DottedAddresses, AreReadInAllTheirForms) {
  EXPECT_EQ(Number("10.1.2.3"), 0x0a010203u);
  EXPECT_EQ(Number("127.1"), 0x7f000001u);
  EXPECT_EQ(Number("0x7f.0.0.010"), 0x7f000008u);
  EXPECT_EQ(Number("3232235777"), 0xc0a80101u);
}

TEST(DottedAddresses, AreAllOnesForAnyOtherText) {
  for (const char* text : {"", "archive", "3com-host", "1.2.3.4.5", "256.1.1.1", "1.2.3.x"}) {
    EXPECT_EQ(Number(text), 0xffffffffu) << text;
  }
}

TEST(ServicePorts, AreThoseOfTheSystem) {
  const servent* service = ::getservbyname("http", nullptr);
  if (service == nullptr) GTEST_SKIP() << "the system has no list of services";
  EXPECT_EQ(FindServicePort("http"), ntohs(static_cast<std::uint16_t>(service->s_port)));
}

TEST(ServicePorts, AreNoneForNamesThatAreNotListed) {
  EXPECT_FALSE(FindServicePort("").has_value());
  EXPECT_FALSE(FindServicePort("0").has_value());
  EXPECT_FALSE(FindServicePort(std::string(100000, 'x')).has_value());
}

/// The look-up of these tests, which answers when it is let go.
class HostLookups : public testing::Test {
 protected:
  HostLookups() {
    holds_ = false;
    SetHostLookup([](const std::string& name) {
      std::unique_lock held(lock_);
      ++running_;
      changed_.notify_all();
      changed_.wait(held, [] { return !holds_; });
      --running_;
      changed_.notify_all();
      if (name == "thrown") throw std::runtime_error(name);
      return name == "known" ? std::optional<in_addr>(in_addr{htonl(0x01020304)}) : std::nullopt;
    });
  }
  ~HostLookups() override {
    LetGo();
    SetHostLookup(nullptr);
  }

  static void Hold() { holds_ = true; }
  static void AwaitRunning() {
    std::unique_lock held(lock_);
    changed_.wait(held, [] { return running_ != 0; });
  }
  static void LetGo() {
    std::unique_lock held(lock_);
    holds_ = false;
    changed_.notify_all();
    changed_.wait(held, [] { return running_ == 0; });
  }

  static inline std::mutex lock_;
  static inline std::condition_variable changed_;
  static inline bool holds_ = false;
  static inline int running_ = 0;
};

TEST_F(HostLookups, AnswerWithTheAddress) {
  const auto found = FindHost("known", std::nullopt, &NotGivenUp);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(ntohl(found->s_addr), 0x01020304u);
}

TEST_F(HostLookups, AnswerWithNothingWhereTheNameIsNotKnownOrTheLookUpFails) {
  EXPECT_FALSE(FindHost("unknown", std::nullopt, &NotGivenUp).has_value());
  EXPECT_FALSE(FindHost("thrown", std::nullopt, &NotGivenUp).has_value());
}

TEST_F(HostLookups, AreLeftBehindAtTheDeadline) {
  Hold();
  const auto begin = Clock::now();
  EXPECT_FALSE(FindHost("known", DeadlineIn(50), &NotGivenUp).has_value());
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(50));
}

TEST_F(HostLookups, AreLeftBehindWhenTheyAreGivenUp) {
  Hold();
  int asked = 0;
  EXPECT_FALSE(FindHost("known", std::nullopt, [&] { return ++asked == 3; }).has_value());
  EXPECT_EQ(asked, 3);
}

TEST_F(HostLookups, AreLeftBehindWhenCallsAreCancelled) {
  Hold();
  int asked = 0;
  const auto found = FindHost("known", DeadlineIn(10'000), [&] {
    if (++asked == 3) CancelFileCalls(true);
    return false;
  });
  CancelFileCalls(false);
  EXPECT_FALSE(found.has_value());
  EXPECT_EQ(asked, 3);
}

TEST_F(HostLookups, AreLeftBehindWhereTheThreadThatWaitsIsCancelled) {
  Hold();
  pthread_t waiting{};
  ASSERT_EQ(::pthread_create(
                &waiting, nullptr,
                [](void*) -> void* {
                  FindHost("known", std::nullopt, &NotGivenUp);
                  return nullptr;
                },
                nullptr),
            0);
  AwaitRunning();
  ::pthread_cancel(waiting);
  void* end = nullptr;
  ::pthread_join(waiting, &end);
  EXPECT_EQ(end, PTHREAD_CANCELED);
}

TEST_F(HostLookups, KnowTheMachineItself) {
  SetHostLookup(nullptr);
  const auto found = FindHost("localhost", DeadlineIn(60000), &NotGivenUp);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(ntohl(found->s_addr) >> 24, 127u);
}

}  // namespace
}  // namespace tessaret
