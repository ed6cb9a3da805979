// How soon a wait ends that another thread ends by closing the link.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "support/build_kind.h"

namespace tessaret::test {

/// A tenth of a second, and more where sanitizers slow all of it down.
inline constexpr double kEndInTime = kInstrumented ? 2.0 : 0.1;
/// What a machine under load may add to it, and far less than any wait that goes on to its own end.
inline constexpr double kEndUnderLoad = kInstrumented ? 5.0 : 2.0;
/// The least that such a wait has to last, for a test that can tell the two apart.
inline constexpr int kLongWait = 10;  // seconds

/// Checks what the library takes to end, where `once` answers how many seconds that were this time: the best of several turns is in
/// time, and none comes near the wait's own end, as one would that was not told.
inline void ExpectEndInTime(const std::string& name, const std::function<double()>& once) {
  static_assert(kEndUnderLoad <= kLongWait / 2.0);
  double least = kLongWait;
  for (int turn = 0; turn < 5 || (turn < 10 && least >= kEndInTime); ++turn) {
    const double seconds = once();
    EXPECT_LT(seconds, kEndUnderLoad) << name << ", turn " << turn;
    least = std::min(least, seconds);
    if (seconds >= kEndUnderLoad) return;
  }
  EXPECT_LT(least, kEndInTime) << name;
}

/// When another thread closed something, and what it took from there to the end.
class MomentOfClose {
 public:
  using Clock = std::chrono::steady_clock;

  void Note() { closed_ = Clock::now(); }
  /// The thread that noted it has ended.
  [[nodiscard]] double SecondsUntil(Clock::time_point end) const {
    return std::chrono::duration<double>(end - closed_).count();
  }

 private:
  Clock::time_point closed_;
};

}  // namespace tessaret::test
