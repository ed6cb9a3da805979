// Makes `new` run out of memory at a chosen moment, and counts what it hands out. For the thread that asks only, so other
// threads go on undisturbed. Works in programs that link the target tessaret_allocation_failure, which replaces the global
// operators; what C functions allocate with malloc is not seen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace tessaret::test {

/// While it lives, allocation number `nth` of this thread, counted from 1, fails with std::bad_alloc (null where the nothrow
/// form was asked); those before and behind it succeed. One at a time in a thread.
class AllocationFailure {
 public:
  explicit AllocationFailure(std::uint64_t nth);
  AllocationFailure(const AllocationFailure&) = delete;
  AllocationFailure& operator=(const AllocationFailure&) = delete;
  ~AllocationFailure();

  /// True once the chosen allocation was asked for, and failed.
  [[nodiscard]] bool Happened() const;
};

/// What this thread allocated since the watch was made.
class AllocationWatch {
 public:
  AllocationWatch();

  /// How often memory was asked for, in vain included.
  [[nodiscard]] std::uint64_t Count() const;
  /// Blocks allocated less blocks freed; below 0 when older ones were freed.
  [[nodiscard]] std::int64_t Outstanding() const;
  /// The most bytes that this thread's blocks held at one time since any watch of it was made last, beyond what they held when this
  /// one was made. Blocks count for all that they have room for.
  [[nodiscard]] std::int64_t MostBytes() const;
  /// What they hold now, beyond that.
  [[nodiscard]] std::int64_t Bytes() const;
  /// The size of the largest block asked for since any watch of this thread was made last, in bytes.
  [[nodiscard]] std::size_t LargestRequest() const;

 private:
  std::uint64_t askedBefore_;
  std::uint64_t takenBefore_;
  std::uint64_t freedBefore_;
  std::int64_t bytesBefore_;
};

/// Runs `scenario` again and again, with its first allocation failing, then its second, and so on until it comes through
/// without meeting the failure. How many allocations that were. The scenario catches what it expects to be thrown. `check`
/// looks at what is left each time, with memory again.
template <class Scenario, class Check>
std::uint64_t FailEveryAllocation(Scenario&& scenario, Check&& check) {
  for (std::uint64_t nth = 1;; ++nth) {
    bool happened = false;
    {
      const AllocationFailure failure(nth);
      scenario();
      happened = failure.Happened();
    }
    check();
    if (!happened) return nth - 1;
  }
}

template <class Scenario>
std::uint64_t FailEveryAllocation(Scenario&& scenario) {
  return FailEveryAllocation(std::forward<Scenario>(scenario), [] {});
}

}  // namespace tessaret::test
