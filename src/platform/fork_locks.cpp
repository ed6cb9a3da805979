#include "platform/fork_locks.h"

#include <iterator>

#include "platform/at_fork.h"

namespace tessaret {

constinit ForkLocks forkLocks;

namespace {

constexpr ForkLock* kInOrder[] = {&forkLocks.start,      &forkLocks.options, &forkLocks.codecs,
                                  &forkLocks.lateBlocks, &forkLocks.blocks,  &forkLocks.dumpFile};
static_assert(sizeof(ForkLocks) == std::size(kInOrder) * sizeof(ForkLock));

void LockAll() noexcept {
  for (ForkLock* const lock : kInOrder) lock->LockForFork();
}

void UnlockAll() noexcept {
  for (ForkLock* const lock : kInOrder) lock->UnlockAfterFork();
}

/// With the library, before anything in it can be locked. Without memory for that a fork waits for nobody. The first of all who ask to
/// be called: then these locks are the last to be taken, for others may be held by who takes one of these.
[[gnu::constructor(101)]] void WatchForks() noexcept { CallAtFork(&LockAll, &UnlockAll); }

}  // namespace

void ForkLock::LockForFork() noexcept {
  if (::pthread_equal(holder_.load(std::memory_order_relaxed), ::pthread_self()) != 0) {
    wasHeld_ = true;
  } else {
    mutex_.lock();
  }
}

void ForkLock::UnlockAfterFork() noexcept {
  if (wasHeld_) {
    wasHeld_ = false;
  } else {
    mutex_.unlock();
  }
}

}  // namespace tessaret
