// Wakes a thread that waits, or a loop of the host that waits for many things at once: a descriptor that is readable from a Wake to
// the next Clear.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>

namespace tessaret {

/// When a wait is over; never without a value.
using Deadline = std::optional<std::chrono::steady_clock::time_point>;

/// That many milliseconds from now; below 0 never.
Deadline DeadlineIn(int milliseconds);

/// What is left until then, rounded up, as poll takes it: never below 0, and -1 for ever.
int MillisecondsTo(const Deadline& deadline);

class WakePipe {
 public:
  WakePipe() noexcept;
  WakePipe(const WakePipe&) = delete;
  WakePipe& operator=(const WakePipe&) = delete;
  ~WakePipe();

  /// False where the system has no descriptors left. Programs that are executed do not get them. Called once, before all else.
  [[nodiscard]] bool Open() noexcept;
  /// For poll and its like. Stays this object's.
  [[nodiscard]] int Descriptor() const noexcept { return ends_[0]; }
  /// False in a child of fork: there it is the parent's still, and not to be touched.
  [[nodiscard]] bool IsOfThisProcess() const noexcept;

  void Wake() noexcept;
  void Clear() noexcept;
  /// Waits until it is readable; false when the deadline passes first. Signals do not end it.
  bool Wait(const Deadline& deadline) const;

 private:
  const pid_t process_;
  int ends_[2] = {-1, -1};
};

}  // namespace tessaret
