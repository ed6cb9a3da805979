#include "platform/thread_end.h"

#include <pthread.h>

#include <array>
#include <atomic>

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

pthread_key_t key = 0;
// Outside of any object, so that it can be asked however late in the process.
constinit std::atomic<bool> hasKey = false;

bool MakeKey() noexcept {
  hasKey = ::pthread_key_create(&key, &CallAll) == 0;
  return hasKey;
}

/// The key goes with the library, so that no thread calls what has been unloaded: behind all static objects, which may still
/// end threads. Without the priority it would go before them where the library is unloaded.
[[gnu::destructor(101)]] void ForgetKey() noexcept {
  if (!hasKey.exchange(false)) return;
  CallAll(nullptr);
  ::pthread_key_delete(key);
}

bool WatchThisThread() noexcept {
  static const bool made = MakeKey();
  return made && hasKey && ::pthread_setspecific(key, &calls) == 0;
}

}  // namespace

bool CallAtThreadEnd(Leave leave) noexcept {
  if (calls.count == kMostCallsAtThreadEnd || !WatchThisThread()) return false;
  calls.leaves[static_cast<std::size_t>(calls.count++)] = leave;
  return true;
}

}  // namespace tessaret
