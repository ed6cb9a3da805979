// A call of the system that is made anew when a signal broke it, with a failure told as the error number.
#pragma once

#include <cerrno>
#include <cstdint>

#include "platform/file_calls.h"

namespace tessaret {

/// Asks `refused` before each call for the error number with which it is to fail without being made, 0 to make it. `call` answers below
/// 0, and leaves errno, when it fails.
template <class Refused, class Call>
FileResult RepeatedCall(Refused refused, Call call) {
  for (;;) {
    const int refusal = refused();
    if (refusal == EINTR) continue;
    if (refusal != 0) return {-1, refusal};
    const std::int64_t value = call();
    if (value >= 0) return {value, 0};
    if (errno != EINTR) return {-1, errno};
  }
}

}  // namespace tessaret
