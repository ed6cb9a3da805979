// Makes malloc and its kin run out of memory at a chosen moment, for the thread that asks only. In a program that has this file all
// libraries allocate through it, those written in C too. Not for sanitizers, which have a malloc of their own.
#pragma once

#include <cstdint>
#include <utility>

namespace tessaret::test {

/// While it lives, the `nth` call of this thread, counted from 1, gives null; those before and behind it succeed.
class MallocFailure {
 public:
  explicit MallocFailure(std::uint64_t nth);
  MallocFailure(const MallocFailure&) = delete;
  MallocFailure& operator=(const MallocFailure&) = delete;
  ~MallocFailure();

  /// True once the chosen call was made, and failed.
  [[nodiscard]] bool Happened() const;
};

/// Blocks that this thread allocated less those that it freed.
std::int64_t OutstandingBlocks();

/// Runs `scenario` with its first call failing, then its second, and so on until it comes through without meeting the failure. How
/// many calls that were. `check` looks at what is left each time, with memory again.
template <class Scenario, class Check>
std::uint64_t FailEveryMalloc(Scenario&& scenario, Check&& check) {
  for (std::uint64_t nth = 1;; ++nth) {
    bool happened = false;
    {
      const MallocFailure failure(nth);
      scenario();
      happened = failure.Happened();
    }
    check();
    if (!happened) return nth - 1;
  }
}

}  // namespace tessaret::test
