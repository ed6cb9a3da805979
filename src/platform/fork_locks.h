// The locks that are the library's for as long as it is there, made so that a child of fork can go on with them. It has only the thread
// that made it: a lock that another one held would stay locked there for ever. So a fork takes all of them first.
#pragma once

#include <pthread.h>

#include <atomic>
#include <mutex>

namespace tessaret {

/// A mutex, for std::lock_guard. Needs no construction at run time and no destruction, so that it can be had however early or late.
class ForkLock {
 public:
  constexpr ForkLock() noexcept = default;
  ForkLock(const ForkLock&) = delete;
  ForkLock& operator=(const ForkLock&) = delete;

  void lock() {
    mutex_.lock();
    holder_.store(::pthread_self(), std::memory_order_relaxed);
  }
  bool try_lock() noexcept {
    if (!mutex_.try_lock()) return false;
    holder_.store(::pthread_self(), std::memory_order_relaxed);
    return true;
  }
  void unlock() noexcept {
    holder_.store(kNobody, std::memory_order_relaxed);
    mutex_.unlock();
  }

  /// Around a fork, in the thread that makes it. Where it holds the lock already that is left alone: it holds it in the child too.
  void LockForFork() noexcept;
  void UnlockAfterFork() noexcept;

 private:
  static constexpr pthread_t kNobody = 0;

  std::mutex mutex_;
  std::atomic<pthread_t> holder_ = kNobody;
  bool wasHeld_ = false;  // by the thread that forks, whose alone it is meanwhile
};

/// All of them, in the order in which a fork takes them: who holds one may lock a later one, but none before it.
struct ForkLocks {
  ForkLock start;       // the first start of the library
  ForkLock options;     // their first use
  ForkLock codecs;      // which there are, and who uses them
  ForkLock lateBlocks;  // memory for records in threads that end
  ForkLock blocks;      // memory for records that any thread may take
  ForkLock dumpFile;    // its name
};
extern constinit ForkLocks forkLocks;

}  // namespace tessaret
