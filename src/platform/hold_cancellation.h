// A thread that is to be cancelled lives on while this does: for calls in functions that nothing may leave early, destructors
// and those that swallow every failure.
#pragma once

#include <pthread.h>

namespace tessaret {

class HoldCancellation {
 public:
  HoldCancellation() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
  HoldCancellation(const HoldCancellation&) = delete;
  HoldCancellation& operator=(const HoldCancellation&) = delete;
  ~HoldCancellation() { ::pthread_setcancelstate(before_, nullptr); }

 private:
  int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace tessaret
