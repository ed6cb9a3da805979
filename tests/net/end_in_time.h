// How soon a wait ends that another thread ends by closing the link.
#pragma once

#include <algorithm>
#include <functional>

#include "support/build_kind.h"

namespace tessaret::test {

/// A tenth of a second, and more where sanitizers slow all of it down.
inline constexpr double kEndInTime = kInstrumented ? 2.0 : 0.1;

/// What the library takes to end, where `once` answers how many seconds it took this time: the least of up to ten of them, since a
/// machine under load adds to each.
inline double LeastSecondsToEnd(const std::function<double()>& once) {
  double least = once();
  for (int turn = 0; turn < 9 && least >= kEndInTime; ++turn) least = std::min(least, once());
  return least;
}

}  // namespace tessaret::test
