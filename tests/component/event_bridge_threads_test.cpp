// Messages from one thread to another: what arrives, where, and what happens at the ends of threads and objects.
#include <pthread.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <optional>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "component/proxy_helpers.h"
#include "tessaret/pump.hpp"

namespace tessaret {
namespace {

using test::messagesAlive;
using test::Post;
using test::Send;
using namespace std::chrono_literals;

TEST(EventBridge, BringsWhatManyThreadsPostToTheOwnersThreadInEachOnesOrder) {
  constexpr int kThreads = 8;
  constexpr int kEach = 2000;
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  const std::thread::id owner = std::this_thread::get_id();
  std::map<int, int> next;
  int wrong = 0;
  proxy.then = [&](int number) {
    if (proxy.thread != owner) ++wrong;
    if (next[number / kEach]++ != number % kEach) ++wrong;
  };
  std::vector<std::thread> workers;
  for (int worker = 0; worker < kThreads; ++worker) {
    workers.emplace_back([&, worker] {
      for (int at = 0; at < kEach; ++at) Post(proxy, worker * kEach + at);
    });
  }
  int handled = 0;
  while (handled < kThreads * kEach) handled += PumpEvents(-1);
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(proxy.heard.size(), std::size_t{kThreads} * kEach);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(PumpEvents(0), 0);
  EXPECT_EQ(messagesAlive, 0);
}

TEST(EventBridge, WakesAThreadThatWaitsForEver) {
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::thread worker([&] {
    std::this_thread::sleep_for(20ms);
    Post(proxy, 7);
  });
  EXPECT_EQ(PumpEvents(-1), 1);
  worker.join();
  EXPECT_EQ(proxy.heard, (std::vector<int>{7}));
}

TEST(EventBridge, AThreadPumpsItsOwnObjectsOnly) {
  test::NotingProxy mine;
  ASSERT_TRUE(mine.Create(nullptr));
  std::thread([&] {
    test::NotingProxy theirs;
    ASSERT_TRUE(theirs.Create(nullptr));
    Post(mine, 1);
    Post(theirs, 2);
    EXPECT_EQ(PumpEvents(0), 1);
    EXPECT_EQ(theirs.heard, (std::vector<int>{2}));
  }).join();
  EXPECT_TRUE(mine.heard.empty());
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_EQ(mine.heard, (std::vector<int>{1}));
}

TEST(EventBridge, ASenderGoesOnWhenItsMessageBeginsToBeHandled) {
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::promise<void> sent;
  std::atomic<bool> began = false;
  proxy.then = [&](int) {
    began = true;
    // Would never end if the sender waited for the end of this.
    sent.get_future().wait();
  };
  std::thread worker([&] {
    EXPECT_TRUE(Send(proxy, 1));
    EXPECT_TRUE(began || messagesAlive == 1);
    sent.set_value();
  });
  EXPECT_EQ(PumpEvents(-1), 1);
  worker.join();
  EXPECT_EQ(messagesAlive, 0);
}

TEST(EventBridge, ASenderGoesOnWhenNobodyWillHandleItsMessage) {
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::atomic<bool> back = false;
  std::thread worker([&] {
    // Taken over, and freed unhandled; or too late for that.
    Send(proxy, 1);
    back = true;
  });
  std::this_thread::sleep_for(20ms);
  EXPECT_FALSE(back);
  proxy.Close();
  worker.join();
  EXPECT_TRUE(proxy.heard.empty());
  EXPECT_EQ(messagesAlive, 0);
}

/// A thread that does `work` and is to end.
class CancelledThread {
 public:
  explicit CancelledThread(std::function<void()> work) : work_(std::move(work)) {
    const auto begin = [](void* self) -> void* {
      static_cast<CancelledThread*>(self)->work_();
      ::pthread_testcancel();
      return nullptr;
    };
    EXPECT_EQ(::pthread_create(&thread_, nullptr, begin, this), 0);
  }
  CancelledThread(const CancelledThread&) = delete;
  CancelledThread& operator=(const CancelledThread&) = delete;
  void Cancel() { EXPECT_EQ(::pthread_cancel(thread_), 0); }
  ~CancelledThread() {
    void* result = nullptr;
    EXPECT_EQ(::pthread_join(thread_, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
  }

 private:
  std::function<void()> work_;
  pthread_t thread_{};
};

TEST(EventBridge, AThreadThatIsToEndWaitsUntilItsMessageIsHandled) {
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::atomic<bool> back = false;
  {
    CancelledThread sender([&] {
      Send(proxy, 1);
      back = true;
    });
    std::this_thread::sleep_for(20ms);
    sender.Cancel();
    std::this_thread::sleep_for(20ms);
    EXPECT_EQ(PumpEvents(-1), 1);
  }
  EXPECT_TRUE(back);
  EXPECT_EQ(proxy.heard, (std::vector<int>{1}));
}

TEST(EventBridge, AThreadThatIsToEndClosesWhollyBefore) {
  test::NotingProxy proxy;
  ASSERT_TRUE(proxy.Create(nullptr));
  std::atomic<bool> isHandled = false;
  std::atomic<bool> closedThen = false;
  std::optional<CancelledThread> closer;
  proxy.then = [&](int) {
    closer.emplace([&] {
      proxy.Close();
      closedThen = isHandled.load();
    });
    std::this_thread::sleep_for(20ms);
    closer->Cancel();
    std::this_thread::sleep_for(20ms);
    isHandled = true;
  };
  Post(proxy, 1);
  EXPECT_EQ(PumpEvents(0), 1);
  closer.reset();
  EXPECT_TRUE(closedThen);
}

/// Drops what waits, and says how many bytes are written meanwhile where calls that ended before had theirs.
[[gnu::noinline]] int DrainWatchingTheStack(CThreadMsgProxy& proxy) {
  std::array<volatile unsigned char, 16384> ended;
  for (volatile unsigned char& byte : ended) byte = 0xAA;
  proxy.Drain();
  int written = 0;
  for (const volatile unsigned char& byte : ended) written += byte == 0xAA ? 0 : 1;
  return written;
}

/// Sends from so far down the stack that nothing else lies there later.
[[gnu::noinline]] void SendFromBelow(CThreadMsgProxy& proxy, int number) {
  std::array<volatile unsigned char, 4096> between;
  for (volatile unsigned char& byte : between) byte = 0;
  Send(proxy, number);
  between[0] = 1;
}

TEST(EventBridge, ASenderThatEndsAmidItsOwnMessagesIsNotToldOfThemLater) {
  struct Owner {
    test::NotingProxy proxy;

    ~Owner() {
      EXPECT_EQ(messagesAlive, 1);
      EXPECT_EQ(DrainWatchingTheStack(proxy), 0);
      EXPECT_EQ(proxy.heard, (std::vector<int>{1}));
    }
  };
  {
    CancelledThread thread([] {
      Owner owner;
      EXPECT_TRUE(owner.proxy.Create(nullptr));
      owner.proxy.then = [](int) {
        ::pthread_cancel(::pthread_self());
        ::pthread_testcancel();
      };
      Post(owner.proxy, 1);
      SendFromBelow(owner.proxy, 2);
      ADD_FAILURE() << "it went on";
    });
  }
  EXPECT_EQ(messagesAlive, 0);
}

TEST(EventBridge, ClosingFromAnotherThreadWaitsForTheMessageThatIsHandled) {
  std::optional<test::NotingProxy> proxy;
  proxy.emplace();
  ASSERT_TRUE(proxy->Create(nullptr));
  std::promise<void> began;
  std::atomic<bool> ended = false;
  proxy->then = [&](int) {
    began.set_value();
    std::this_thread::sleep_for(30ms);
    ended = true;
  };
  Post(*proxy, 1);
  Post(*proxy, 2);
  std::thread closer([&] {
    began.get_future().wait();
    proxy->Close();
    EXPECT_TRUE(ended);
    EXPECT_EQ(proxy->heard.size(), 1u);
    proxy.reset();
  });
  EXPECT_EQ(PumpEvents(-1), 1);
  closer.join();
  EXPECT_EQ(messagesAlive, 0);
}

TEST(EventBridge, AProxyThatComesToLieWhereOneEndedWithinItsMessageIsAnotherOne) {
  std::optional<test::NotingProxy> proxy;
  proxy.emplace();
  ASSERT_TRUE(proxy->Create(nullptr));
  proxy->then = [&](int) {
    proxy.emplace();
    ASSERT_TRUE(proxy->Create(nullptr));
    // Would never end if that waited for the message of the one before.
    std::thread([&] { proxy->Close(); }).join();
  };
  Post(*proxy, 1);
  EXPECT_EQ(PumpEvents(0), 1);
  EXPECT_TRUE(proxy->heard.empty());
}

TEST(EventBridge, WhatWaitsForAThreadThatEndsIsFreed) {
  test::NotingProxy proxy;
  std::promise<void> created;
  std::promise<void> posted;
  std::thread owner([&] {
    EXPECT_TRUE(proxy.Create(nullptr));
    created.set_value();
    posted.get_future().wait();
  });
  created.get_future().wait();
  EXPECT_TRUE(Post(proxy, 1));
  std::thread sender([&] { Send(proxy, 2); });
  posted.set_value();
  owner.join();
  sender.join();
  EXPECT_EQ(messagesAlive, 0);
  // Nobody is left to handle it.
  EXPECT_FALSE(Post(proxy, 3));
  EXPECT_FALSE(Send(proxy, 4));
  proxy.Drain();
  proxy.Close();
  EXPECT_TRUE(proxy.heard.empty());
}

TEST(EventBridge, ClosingAmidPostsLosesNoMessageAndHandlesNoneAfterwards) {
  for (int round = 0; round < 200; ++round) {
    test::NotingProxy proxy;
    ASSERT_TRUE(proxy.Create(nullptr));
    std::atomic<bool> go = false;
    std::thread worker([&] {
      go = true;
      for (int at = 0; at < 50; ++at) Post(proxy, at);
    });
    while (!go) std::this_thread::yield();
    PumpEvents(0);
    proxy.Close();
    const std::size_t heard = proxy.heard.size();
    EXPECT_EQ(PumpEvents(0), 0);
    worker.join();
    EXPECT_EQ(PumpEvents(0), 0);
    EXPECT_EQ(proxy.heard.size(), heard);
    EXPECT_EQ(messagesAlive, 0);
  }
}

TEST(EventBridge, ManyOwnersAndManyWorkersAtOnce) {
  std::atomic<int> handled = 0;
  std::vector<std::thread> owners;
  for (int owner = 0; owner < 4; ++owner) {
    owners.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        test::NotingProxy proxy;
        EXPECT_TRUE(proxy.Create(nullptr));
        std::thread one([&] {
          for (int at = 0; at < 20; ++at) Post(proxy, at);
        });
        std::thread two([&] {
          for (int at = 0; at < 20; ++at) Send(proxy, at);
        });
        for (int left = 40; left > 0;) left -= PumpEvents(-1);
        one.join();
        two.join();
        handled += static_cast<int>(proxy.heard.size());
      }
    });
  }
  for (std::thread& owner : owners) owner.join();
  EXPECT_EQ(handled, 4 * 20 * 40);
  EXPECT_EQ(messagesAlive, 0);
}

}  // namespace
}  // namespace tessaret
