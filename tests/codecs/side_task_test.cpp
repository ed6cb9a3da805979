#include "side_task.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace tessaret::codecs {
namespace {

TEST(SideTask, IsDoneOnceWhenItIsFinished) {
  int times = 0;
  SideTask task([&] { ++times; });
  task.Finish();
  EXPECT_EQ(times, 1);
  task.Finish();
  EXPECT_EQ(times, 1);
}

TEST(SideTask, WhatItThrowsComesOutWhereItIsAwaited) {
  SideTask task([] { throw std::runtime_error("no good"); });
  EXPECT_THROW(task.Finish(), std::runtime_error);
  task.Finish();
}

TEST(SideTask, NobodyNeedsToAskForIt) {
  for (int round = 0; round < 100; ++round) {
    const SideTask task([] { throw std::runtime_error("nobody hears"); });
  }
}

TEST(SideTask, AThreadThatIsCancelledWaitsForItFirst) {
  struct Host {
    std::atomic<bool> isBegun = false;
    std::atomic<bool> mayEnd = false;
    std::atomic<bool> isAwaited = false;
  } host;
  pthread_t thread{};
  const auto run = [](void* argument) -> void* {
    Host& self = *static_cast<Host*>(argument);
    SideTask task([&self] {
      self.isBegun = true;
      while (!self.mayEnd) std::this_thread::yield();
    });
    task.Finish();
    self.isAwaited = true;
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, nullptr, run, &host), 0);
  while (!host.isBegun) std::this_thread::yield();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  pthread_cancel(thread);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(host.isAwaited);
  host.mayEnd = true;
  pthread_join(thread, nullptr);
  EXPECT_TRUE(host.isAwaited);
}

TEST(SideTask, ItsThreadLeavesSignalsToTheHost) {
  bool blocks = false;
  const pthread_t here = pthread_self();
  SideTask task([&] {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    blocks = pthread_equal(here, pthread_self()) != 0 || sigismember(&mask, SIGTERM) == 1;
  });
  task.Finish();
  EXPECT_TRUE(blocks);
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  EXPECT_EQ(sigismember(&mask, SIGTERM), 0);
}

}  // namespace
}  // namespace tessaret::codecs
