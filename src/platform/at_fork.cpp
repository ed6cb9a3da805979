#include "platform/at_fork.h"

#include <pthread.h>

namespace tessaret {

bool CallAtFork(void (*before)() noexcept, void (*after)() noexcept) noexcept {
  return ::pthread_atfork(before, after, after) == 0;
}

}  // namespace tessaret
