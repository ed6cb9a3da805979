// Work whose memory and time are measured, in a process of its own.
#pragma once

#include <cstdint>
#include <functional>

namespace tessaret::test {

struct Measured {
  int result = 0;                // of the work, or as ChildProcess::Wait tells it
  std::uint64_t peakGrowth = 0;  // most resident bytes beyond those at the start
  double seconds = 0;            // of processor time
};

/// Runs `work` in a child.
Measured RunMeasured(const std::function<int()>& work);

}  // namespace tessaret::test
