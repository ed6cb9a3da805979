// Messages to an object, seen from its own thread: order, who owns them, closing, and pumping from within.
#include "component/thread_msg_proxy.h"

#include <poll.h>
#include <sys/resource.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "component/proxy_helpers.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/child_process.h"
#include "tessaret/library.hpp"
#include "tessaret/pump.hpp"

namespace tessaret {
namespace {

using test::messagesAlive;
using test::Post;
using test::Send;
using Numbers = std::vector<int>;

bool IsReadable(int descriptor) {
  pollfd ready{.fd = descriptor, .events = POLLIN, .revents = 0};
  return ::poll(&ready, 1, 0) == 1;
}

class Proxy : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(messagesAlive, 0);
    ASSERT_TRUE(proxy_.Create(nullptr));
  }
  void TearDown() override {
    proxy_.Close();
    EXPECT_EQ(messagesAlive, 0);
    EXPECT_EQ(PumpEvents(0), 0);
    EXPECT_FALSE(IsReadable(EventsDescriptor()));
  }

  test::NotingProxy proxy_;
};

TEST_F(Proxy, HandlesNothingBeforeTheThreadPumps) {
  EXPECT_TRUE(Post(proxy_, 1));
  EXPECT_EQ(proxy_.heard, Numbers());
  EXPECT_EQ(messagesAlive, 1);
}

TEST_F(Proxy, HandlesMessagesInTheirOrderAndFreesEachOnce) {
  for (const int number : {1, 2, 3}) EXPECT_TRUE(Post(proxy_, number));
  proxy_.then = [](int number) { EXPECT_EQ(messagesAlive, 4 - number); };
  EXPECT_EQ(PumpEvents(0), 3);
  EXPECT_EQ(proxy_.heard, (Numbers{1, 2, 3}));
  EXPECT_EQ(proxy_.thread, std::this_thread::get_id());
  EXPECT_EQ(messagesAlive, 0);
  EXPECT_EQ(PumpEvents(0), 0);
}

TEST_F(Proxy, KeepsTheOrderAmongTheProxiesOfAThread) {
  test::NotingProxy other;
  ASSERT_TRUE(other.Create(nullptr));
  Numbers all;
  proxy_.then = other.then = [&](int number) { all.push_back(number); };
  Post(proxy_, 1);
  Post(other, 2);
  Post(proxy_, 3);
  Post(other, 4);
  EXPECT_EQ(PumpEvents(-1), 4);
  EXPECT_EQ(all, (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(proxy_.heard, (Numbers{1, 3}));
}

TEST_F(Proxy, ADescriptorIsReadableWhileSomethingWaits) {
  const int descriptor = EventsDescriptor();
  ASSERT_GE(descriptor, 0);
  EXPECT_FALSE(IsReadable(descriptor));
  Post(proxy_, 1);
  Post(proxy_, 2);
  EXPECT_TRUE(IsReadable(descriptor));
  bool readableWithin = false;
  proxy_.then = [&](int number) {
    if (number == 1) readableWithin = IsReadable(descriptor);
  };
  EXPECT_EQ(PumpEvents(0), 2);
  EXPECT_TRUE(readableWithin);
  EXPECT_FALSE(IsReadable(descriptor));
  EXPECT_EQ(EventsDescriptor(), descriptor);
}

TEST_F(Proxy, PumpingWaitsAsLongAsItIsTold) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(PumpEvents(0), 0);
  EXPECT_EQ(PumpEvents(30), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(30));
  Post(proxy_, 1);
  EXPECT_EQ(PumpEvents(100000), 1);
}

TEST_F(Proxy, WhatIsPostedMeanwhileIsLeftForTheNextTime) {
  proxy_.then = [&](int number) { Post(proxy_, number + 1); };
  Post(proxy_, 1);
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(PumpEvents(-1), 1);
  EXPECT_EQ(proxy_.heard, (Numbers{1, 2}));
}

TEST_F(Proxy, MayPumpWhileItHandles) {
  proxy_.then = [&](int number) {
    if (number > 1) return;
    EXPECT_EQ(PumpEvents(0), 2);
  };
  for (const int number : {1, 2, 3}) Post(proxy_, number);
  // The two others were handled within the first.
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(proxy_.heard, (Numbers{1, 2, 3}));
}

TEST_F(Proxy, GoesOnAfterAFailure) {
  proxy_.then = [](int number) {
    if (number == 1) throw std::runtime_error("lost");
  };
  Post(proxy_, 1);
  Post(proxy_, 2);
  EXPECT_EQ(PumpEvents(0), 2);
  EXPECT_EQ(messagesAlive, 0);
}

TEST_F(Proxy, ClosingFreesWhatWaitsUnhandled) {
  for (const int number : {1, 2, 3}) Post(proxy_, number);
  proxy_.Close();
  EXPECT_EQ(messagesAlive, 0);
  EXPECT_FALSE(IsReadable(EventsDescriptor()));
  EXPECT_EQ(PumpEvents(0), 0);
  EXPECT_EQ(proxy_.heard, Numbers());
}

TEST_F(Proxy, ClosingLeavesTheMessagesOfOthers) {
  test::NotingProxy other;
  ASSERT_TRUE(other.Create(nullptr));
  Post(other, 1);
  Post(proxy_, 2);
  Post(other, 3);
  Post(proxy_, 4);
  proxy_.Close();
  EXPECT_TRUE(IsReadable(EventsDescriptor()));
  Post(other, 5);
  EXPECT_EQ(PumpEvents(0), 3);
  EXPECT_EQ(other.heard, (Numbers{1, 3, 5}));
}

TEST_F(Proxy, OnceClosedItLeavesMessagesWithWhoeverPostsThem) {
  proxy_.Close();
  std::unique_ptr<CThreadMsg> message = std::make_unique<test::Message>(1);
  proxy_.Post(message);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(messagesAlive, 1);
  proxy_.Send(message);
  ASSERT_NE(message, nullptr);
  message = nullptr;
  EXPECT_EQ(PumpEvents(0), 0);
  EXPECT_FALSE(proxy_.Create(nullptr));
  proxy_.Close();
  proxy_.Drain();
}

TEST_F(Proxy, TakesNothingBeforeItIsCreated) {
  test::NotingProxy fresh;
  EXPECT_FALSE(Post(fresh, 1));
  EXPECT_FALSE(Send(fresh, 1));
  fresh.Drain();
  fresh.Close();
}

TEST_F(Proxy, TakesNoMessageThatIsNone) {
  std::unique_ptr<CThreadMsg> none;
  proxy_.Post(none);
  proxy_.Send(none);
  EXPECT_EQ(PumpEvents(0), 0);
}

TEST_F(Proxy, ClosingWithinAMessageEndsIt) {
  proxy_.then = [&](int) {
    proxy_.Close();
    EXPECT_EQ(messagesAlive, 1);  // the one that is handled
  };
  for (const int number : {1, 2, 3}) Post(proxy_, number);
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(proxy_.heard, (Numbers{1}));
}

TEST_F(Proxy, MayEndWithinItsMessage) {
  auto doomed = std::make_unique<test::NotingProxy>();
  ASSERT_TRUE(doomed->Create(nullptr));
  doomed->then = [&](int) { doomed = nullptr; };
  Post(*doomed, 1);
  Post(*doomed, 2);
  Post(proxy_, 3);
  EXPECT_EQ(PumpEvents(0), 2);
  EXPECT_EQ(doomed, nullptr);
  EXPECT_EQ(proxy_.heard, (Numbers{3}));
}

TEST_F(Proxy, DrainingDropsWhatWaitsAndNoMore) {
  Post(proxy_, 1);
  Post(proxy_, 2);
  proxy_.Drain();
  EXPECT_EQ(messagesAlive, 0);
  Post(proxy_, 3);
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(proxy_.heard, (Numbers{3}));
}

TEST_F(Proxy, OnItsOwnThreadItHandlesWhatIsSentAtOnceAndInOrder) {
  test::NotingProxy other;
  ASSERT_TRUE(other.Create(nullptr));
  Post(other, 1);
  Post(proxy_, 2);
  EXPECT_TRUE(Send(proxy_, 3));
  EXPECT_EQ(proxy_.heard, (Numbers{2, 3}));
  EXPECT_EQ(other.heard, Numbers());
  EXPECT_EQ(messagesAlive, 1);
  EXPECT_EQ(PumpEvents(0), 1);
}

TEST_F(Proxy, MayEndWithinAMessageThatWasSent) {
  auto doomed = std::make_unique<test::NotingProxy>();
  ASSERT_TRUE(doomed->Create(nullptr));
  doomed->then = [&](int) { doomed = nullptr; };
  Post(*doomed, 1);
  EXPECT_TRUE(Send(*doomed, 2));
  EXPECT_EQ(doomed, nullptr);
  EXPECT_EQ(messagesAlive, 0);
}

TEST_F(Proxy, NeedsNoMemoryToPostOrToPump) {
  proxy_.heard.reserve(1);
  std::unique_ptr<CThreadMsg> message = std::make_unique<test::Message>(1);
  {
    const test::AllocationFailure failure(1);
    proxy_.Post(message);
    EXPECT_EQ(message, nullptr);
    EXPECT_EQ(PumpEvents(0), 1);
    EXPECT_FALSE(failure.Happened());
  }
}

TEST_F(Proxy, FreesALongQueueWithoutGoingDeep) {
  for (int number = 0; number < 300000; ++number) Post(proxy_, number);
  proxy_.Close();
  EXPECT_EQ(messagesAlive, 0);
}

/// An object that holds a proxy, as classes with workers do.
class Worker final : public IObject {
 public:
  explicit Worker(bool& gone) : gone_(gone) { EXPECT_TRUE(proxy.Create(this)); }
  Status QueryInterface(const InterfaceId&, void**) override { return kNoInterface; }
  std::uint32_t AddRef() override { return ++references_; }
  std::uint32_t Release() override {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;
    return left;
  }

  test::NotingProxy proxy;

 private:
  ~Worker() {
    proxy.Close();
    gone_ = true;
  }

  bool& gone_;
  std::uint32_t references_ = 1;
};

TEST_F(Proxy, HoldsItsOwnerWhileAMessageIsHandledAndNoLonger) {
  bool gone = false;
  auto* worker = new Worker(gone);
  EXPECT_EQ(worker->proxy.Owner(), worker);
  worker->proxy.then = [&](int) {
    worker->Release();
    EXPECT_FALSE(gone);
  };
  Post(worker->proxy, 1);
  Post(worker->proxy, 2);
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_TRUE(gone);
}

TEST_F(Proxy, InAChildOfForkNothingIsToldOfWhatWasMadeBefore) {
  Post(proxy_, 1);
  const int answer = test::RunInChild([&] {
    if (PumpEvents(0) != 0 || Post(proxy_, 2) || Send(proxy_, 3)) return 1;
    // The child's own world.
    test::NotingProxy own;
    if (!own.Create(nullptr) || !Post(own, 4)) return 2;
    if (PumpEvents(-1) != 1 || own.heard != Numbers{4}) return 3;
    proxy_.Drain();
    proxy_.Close();
    return 0;
  });
  EXPECT_EQ(answer, 0);
  EXPECT_TRUE(IsReadable(EventsDescriptor()));
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(proxy_.heard, (Numbers{1}));
}

TEST_F(Proxy, AForkWhileAMessageIsHandledEndsWellInBoth) {
  int answer = -1;
  proxy_.then = [&](int) { answer = test::RunInChild([] { return PumpEvents(0); }); };
  Post(proxy_, 1);
  Post(proxy_, 2);
  EXPECT_EQ(PumpEvents(0), 2);
  EXPECT_EQ(answer, 0);
}

TEST(Pump, SaysSoWhereNoDescriptorIsLeft) {
  if (test::kInstrumented)
    GTEST_SKIP() << "the undefined behaviour sanitizer asks through a pipe of its own whether "
                    "memory is there";
  std::int32_t pumped = 0;
  int descriptor = 0;
  bool created = true;
  std::string words;
  std::thread([&] {
    rlimit before{};
    EXPECT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    pumped = PumpEvents(0);
    words = LastError().text;
    descriptor = EventsDescriptor();
    test::NotingProxy proxy;
    created = proxy.Create(nullptr);
    EXPECT_FALSE(Post(proxy, 1));
    EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    // It is tried again.
    EXPECT_TRUE(proxy.Create(nullptr));
    EXPECT_GE(EventsDescriptor(), 0);
  }).join();
  EXPECT_EQ(pumped, kException);
  EXPECT_EQ(words, "No descriptor is left for events");
  EXPECT_EQ(descriptor, kException);
  EXPECT_FALSE(created);
}

TEST(Pump, WithoutMemoryItFailsAndIsTriedAgain) {
  std::thread([] {
    int refused = 0;
    test::FailEveryAllocation([&] { refused += PumpEvents(0) == kOutOfMemory ? 1 : 0; }, [] {});
    EXPECT_GT(refused, 0);
    EXPECT_EQ(PumpEvents(0), 0);
  }).join();
}

}  // namespace
}  // namespace tessaret
