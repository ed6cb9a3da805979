#include "platform/thread_end.h"

#include <pthread.h>

#include <array>

namespace tessaret {
namespace {

using Leave = void (*)() noexcept;

/// What is to be called for one thread. Plain data, which is there until the thread is gone for good.
struct Calls {
  std::array<Leave, kMostCallsAtThreadEnd> leaves;
  int count;
};
thread_local constinit Calls calls{};

void CallAll(void*) {
  while (calls.count > 0) calls.leaves[static_cast<std::size_t>(--calls.count)]();
}

/// The key goes with the library, so that no thread calls what has been unloaded.
class ThreadEnds {
 public:
  ThreadEnds() noexcept : made_(::pthread_key_create(&key_, &CallAll) == 0) {}
  ThreadEnds(const ThreadEnds&) = delete;
  ThreadEnds& operator=(const ThreadEnds&) = delete;
  ~ThreadEnds() {
    if (made_) ::pthread_key_delete(key_);
    made_ = false;
  }
  [[nodiscard]] bool WatchThisThread() const noexcept {
    return made_ && ::pthread_setspecific(key_, &calls) == 0;
  }

 private:
  pthread_key_t key_ = 0;
  bool made_ = false;
};

/// Made at the first call, which may come before objects of this file are set up.
ThreadEnds& AllThreadEnds() noexcept {
  static ThreadEnds ends;
  return ends;
}

}  // namespace

bool CallAtThreadEnd(Leave leave) noexcept {
  if (calls.count == kMostCallsAtThreadEnd || !AllThreadEnds().WatchThisThread()) return false;
  calls.leaves[static_cast<std::size_t>(calls.count++)] = leave;
  return true;
}

}  // namespace tessaret
