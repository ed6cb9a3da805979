// Takes the time of a job and prints what was measured as a line of JSON on standard output, in the form that the programs
// share which are measured side by side.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string_view>

namespace tessaret::bench {

/// Wall clock that runs from when it is made.
class Stopwatch {
 public:
  [[nodiscard]] double Seconds() const {
    return std::chrono::duration<double>(Clock::now() - start_).count();
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_ = Clock::now();
};

/// One measure.
struct Measurement {
  std::string_view job;
  std::string_view peer = "tessaret";  // who did it
  std::string_view unit = "s";         // of what `repetition` answers
  std::uint64_t bytes = 0;  // that one repetition reads or writes, 0 where they say nothing
  std::uint64_t items = 1;  // files, objects or look-ups in one repetition
  /// Does the work once and answers what it took. Preparation and clean-up that are not to count stay out of the answer.
  std::function<double()> repetition;
  /// A sum over the result, asked for once at the end. Programs that did the same work have the same sum.
  std::function<double()> check = {};
};

/// Repeats, and prints all samples. The first repetition warms up and is no sample, unless it alone took over a quarter of
/// the budget. The environment says how many samples are wanted (BENCH_REPS, 3) and how many seconds they may take
/// (BENCH_BUDGET, 6); at least one is taken.
void Measure(const Measurement& measurement);

}  // namespace tessaret::bench
