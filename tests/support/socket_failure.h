// Counts and disturbs the library's socket calls while it lives. One at a time in a process; its settings are made before the calls
// start, and the calls may then come from any thread.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <functional>

#include "platform/socket_calls.h"

namespace tessaret::test {

class SocketFailure {
 public:
  SocketFailure() {
    active_ = this;
    SetSocketCallHook(Hook);
  }
  SocketFailure(const SocketFailure&) = delete;
  SocketFailure& operator=(const SocketFailure&) = delete;
  ~SocketFailure() {
    SetSocketCallHook(nullptr);
    active_ = nullptr;
  }

  /// Calls of this kind from number `first` to number `last`, counted from 1, fail with the system's error number.
  void FailCalls(SocketCall kind, int first, int last, int error) {
    Plan& plan = PlanOf(kind);
    plan.first = first;
    plan.last = last;
    plan.error = error;
  }
  void FailCall(SocketCall kind, int nth, int error) { FailCalls(kind, nth, nth, error); }
  /// Every call is broken by a signal once before it goes through.
  void InterruptEveryCall() { interruptsEvery_ = true; }
  /// Sends or receives move at most `most` bytes a call.
  void LimitCount(SocketCall kind, std::size_t most) { PlanOf(kind).most = most; }
  /// `action` runs just before call number `nth` of its kind.
  void RunBefore(SocketCall kind, int nth, std::function<void()> action) {
    PlanOf(kind).actionAt = nth;
    PlanOf(kind).action = std::move(action);
  }

  /// How many calls there were, those that failed included.
  [[nodiscard]] int Calls(SocketCall kind) { return PlanOf(kind).calls; }

 private:
  struct Plan {
    std::atomic<int> calls = 0;
    int first = 0;
    int last = 0;
    int error = 0;
    std::size_t most = SIZE_MAX;
    int actionAt = 0;
    std::function<void()> action;
  };

  Plan& PlanOf(SocketCall kind) { return plans_[static_cast<std::size_t>(kind)]; }

  static int Hook(SocketCall kind, std::size_t& count) {
    Plan& plan = active_->PlanOf(kind);
    const int number = ++plan.calls;
    if (number == plan.actionAt) plan.action();
    if (number >= plan.first && number <= plan.last) return plan.error;
    if (active_->interruptsEvery_ && number % 2 == 1) return EINTR;
    count = std::min(count, plan.most);
    return 0;
  }

  static inline SocketFailure* active_ = nullptr;
  std::array<Plan, 16> plans_;  // more than SocketCall has
  bool interruptsEvery_ = false;
};

}  // namespace tessaret::test
