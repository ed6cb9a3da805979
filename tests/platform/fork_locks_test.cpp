#include "platform/fork_locks.h"

#include <unistd.h>

#include <chrono>
#include <mutex>
#include <semaphore>
#include <thread>

#include <gtest/gtest.h>

#include "support/child_process.h"

namespace tessaret {
namespace {

using namespace std::chrono_literals;

constexpr ForkLock* kAll[] = {&forkLocks.start,      &forkLocks.options, &forkLocks.codecs,
                              &forkLocks.lateBlocks, &forkLocks.blocks,  &forkLocks.dumpFile};

/// 0 when it could be locked.
int LockOnce(ForkLock& lock) {
  ::alarm(20);
  const std::lock_guard held(lock);
  return 0;
}

bool IsFreeForOthers(ForkLock& lock) {
  bool wasFree = false;
  std::thread([&] {
    const std::lock_guard held(lock);
    wasFree = true;
  }).join();
  return wasFree;
}

TEST(ForkLocks, AreFreeInAChildWhateverOtherThreadsHeld) {
  for (ForkLock* const lock : kAll) {
    std::binary_semaphore begun{0};
    std::thread other([&] {
      const std::lock_guard held(*lock);
      begun.release();
      std::this_thread::sleep_for(20ms);
    });
    begun.acquire();
    EXPECT_EQ(test::RunInChild([&] { return LockOnce(*lock); }), 0);
    other.join();
    EXPECT_TRUE(IsFreeForOthers(*lock)) << "in the parent too";
  }
}

TEST(ForkLocks, StayWithAThreadThatForksWhileItHoldsThem) {
  for (ForkLock* const lock : kAll) {
    std::unique_lock held(*lock);
    const int answer = test::RunInChild([&] {
      ::alarm(20);
      held.unlock();
      return IsFreeForOthers(*lock) ? LockOnce(*lock) : 1;
    });
    EXPECT_EQ(answer, 0);
    held.unlock();
    EXPECT_TRUE(IsFreeForOthers(*lock));
    EXPECT_EQ(test::RunInChild([&] { return LockOnce(*lock); }), 0) << "and once more";
  }
}

TEST(ForkLocks, AreTriedWithoutWaiting) {
  ForkLock lock;
  const auto tryElsewhere = [&] {
    bool had = false;
    std::thread([&] {
      had = lock.try_lock();
      if (had) lock.unlock();
    }).join();
    return had;
  };
  ASSERT_TRUE(lock.try_lock());
  EXPECT_FALSE(tryElsewhere());
  lock.LockForFork();  // by the thread that has it
  lock.UnlockAfterFork();
  EXPECT_FALSE(tryElsewhere());
  lock.unlock();
  EXPECT_TRUE(tryElsewhere());
  const std::lock_guard held(lock);
}

TEST(ForkLocks, ExcludeOtherThreads) {
  ForkLock lock;
  int count = 0;
  std::thread other([&] {
    for (int at = 0; at < 100000; ++at) {
      const std::lock_guard held(lock);
      ++count;
    }
  });
  for (int at = 0; at < 100000; ++at) {
    const std::lock_guard held(lock);
    ++count;
  }
  other.join();
  EXPECT_EQ(count, 200000);
}

}  // namespace
}  // namespace tessaret
