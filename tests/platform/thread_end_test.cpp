#include "platform/thread_end.h"

#include <pthread.h>

#include <cstdlib>
#include <thread>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

int first = 0;
int second = 0;
int order = 0;

void NoteFirst() noexcept { first = ++order; }
void NoteSecond() noexcept { second = ++order; }

TEST(ThreadEnd, CallsWhatWasAskedForTheLatestFirst) {
  std::thread([] {
    EXPECT_TRUE(CallAtThreadEnd(&NoteFirst));
    EXPECT_TRUE(CallAtThreadEnd(&NoteSecond));
    EXPECT_EQ(order, 0);
  }).join();
  EXPECT_EQ(second, 1);
  EXPECT_EQ(first, 2);
}

int calls = 0;

void CountCall() noexcept { ++calls; }
void AskForAnother() noexcept { CallAtThreadEnd(&CountCall); }

TEST(ThreadEnd, WhatIsAskedForWhileTheThreadEndsIsCalledToo) {
  calls = 0;
  std::thread([] { CallAtThreadEnd(&AskForAnother); }).join();
  EXPECT_EQ(calls, 1);
}

TEST(ThreadEnd, RefusesMoreThanItCanHold) {
  calls = 0;
  std::thread([] {
    for (int asked = 0; asked < kMostCallsAtThreadEnd; ++asked) {
      EXPECT_TRUE(CallAtThreadEnd(&CountCall));
    }
    EXPECT_FALSE(CallAtThreadEnd(&CountCall));
  }).join();
  EXPECT_EQ(calls, kMostCallsAtThreadEnd);
}

/// Asks again when static objects go, with a key of the host's own in use, and ends the process with the answer.
struct AsksAtExit {
  ~AsksAtExit() {
    std::thread([] {
      pthread_key_t key = 0;
      int value = 0;
      ::pthread_key_create(&key, nullptr);
      ::pthread_setspecific(key, &value);
      calls = 0;
      CallAtThreadEnd(&CountCall);
      if (::pthread_getspecific(key) != &value) std::_Exit(2);
    }).join();
    std::_Exit(calls == 1 ? 0 : 1);
  }
};

TEST(ThreadEndDeathTest, ServesThreadsThatStaticObjectsEndAndTouchesNoKeyOfTheHost) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        static const AsksAtExit late;
        CallAtThreadEnd(&CountCall);
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

void LeaveAtExit() noexcept { std::_Exit(0); }

TEST(ThreadEndDeathTest, IsCalledForTheThreadThatEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        CallAtThreadEnd(&LeaveAtExit);
        std::exit(3);
      },
      testing::ExitedWithCode(0), "");
}

/// Whether the library refuses when the process has used up all keys before it asked for its own.
bool IsRefusedWithoutAKey() {
  pthread_key_t key = 0;
  while (::pthread_key_create(&key, nullptr) == 0) {
  }
  return !CallAtThreadEnd(&CountCall);
}

// In a process of its own, where the library has no key yet.
TEST(ThreadEndDeathTest, RefusesWhereTheSystemHasNoKeyLeft) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(IsRefusedWithoutAKey() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tessaret
