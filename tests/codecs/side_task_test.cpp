#include "side_task.h"

#include <csignal>
#include <stdexcept>

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
