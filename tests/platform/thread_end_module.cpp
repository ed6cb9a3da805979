// A library with a copy of the thread ends of its own, which thread_end_test.cpp loads and unloads.
#include <pthread.h>

#include "platform/thread_end.h"

namespace {

int* callCount = nullptr;
bool* servedWhileUnloaded = nullptr;

void CountCall() noexcept { ++*callCount; }

/// Runs behind the library's own last step, which is linked after this file. The key it gave back is then another's.
[[gnu::destructor(101)]] void AskBehindTheEnd() {
  if (servedWhileUnloaded == nullptr) return;
  pthread_key_t key = 0;
  int value = 0;
  ::pthread_key_create(&key, nullptr);
  ::pthread_setspecific(key, &value);
  *servedWhileUnloaded =
      tessaret::CallAtThreadEnd(&CountCall) || ::pthread_getspecific(key) != &value;
  ::pthread_key_delete(key);
}

}  // namespace

extern "C" {

/// Counts in `count`, which the caller keeps, when the calling thread ends or unloads this library.
[[gnu::visibility("default")]] bool CountThisThreadsEnd(int* count) {
  callCount = count;
  return tessaret::CallAtThreadEnd(&CountCall);
}

/// `served` becomes true where a call asked for behind the library's end is taken, or touches a key that is another's.
[[gnu::visibility("default")]] void AskWhenUnloaded(bool* served) { servedWhileUnloaded = served; }
}
