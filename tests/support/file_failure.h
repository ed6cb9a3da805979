// Counts and disturbs the library's file calls while it lives. One at a time in a process; its settings are made before the
// calls start, and the calls may then come from any thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "platform/file_calls.h"

namespace tessaret::test {

class FileFailure {
 public:
  FileFailure();
  FileFailure(const FileFailure&) = delete;
  FileFailure& operator=(const FileFailure&) = delete;
  ~FileFailure();

  /// Call number `nth` of its kind, counted from 1, fails with the system's error number `error`. With EINTR it is broken by
  /// a signal once.
  void FailCall(FileCall kind, int nth, int error) { kinds_[Index(kind)].Fail(nth, nth, error); }
  /// The calls of this kind from number `first` to number `last` fail.
  void FailCalls(FileCall kind, int first, int last, int error) {
    kinds_[Index(kind)].Fail(first, last, error);
  }
  /// Call number `nth` of any kind fails.
  void FailCall(int nth, int error) { all_.Fail(nth, nth, error); }
  /// Every call of any kind is broken by a signal once before it goes through.
  void InterruptEveryCall() { interruptsEvery_ = true; }
  /// Reads or writes move at most `most` bytes a call.
  void LimitCount(FileCall kind, std::size_t most) { kinds_[Index(kind)].most = most; }
  /// The disk takes `room` further bytes and is full then.
  void FillDiskAfter(std::uint64_t room) {
    diskFills_ = true;
    room_ = room;
  }
  /// `action` runs just before call number `nth` of its kind, which then goes on: what another process might do meanwhile.
  void RunBefore(FileCall kind, int nth, std::function<void()> action) {
    kinds_[Index(kind)].actionAt = nth;
    kinds_[Index(kind)].action = std::move(action);
  }
  /// The process is killed just before call number `nth` of any kind. For children.
  void KillAtCall(int nth) { killAt_ = nth; }

  /// How many calls there were, those that failed included. A call that was interrupted and repeated counts each time.
  [[nodiscard]] int Calls(FileCall kind) const { return kinds_[Index(kind)].calls; }
  [[nodiscard]] int Calls() const { return all_.calls; }

 private:
  static constexpr std::size_t kKinds = 32;  // more than FileCall has

  struct Plan {
    void Fail(int first, int last, int error) {
      firstToFail = first;
      lastToFail = last;
      errorToGive = error;
    }
    /// Counts a call. The error number with which it is to fail, or 0.
    int Count();

    std::atomic<int> calls = 0;
    int firstToFail = 0;
    int lastToFail = 0;
    int errorToGive = 0;
    std::size_t most = SIZE_MAX;
    int actionAt = 0;
    std::function<void()> action;
  };

  static std::size_t Index(FileCall kind) { return static_cast<std::size_t>(kind); }
  static int Hook(FileCall kind, std::size_t& count);
  int Answer(FileCall kind, std::size_t& count);
  int TakeRoom(std::size_t& count);

  Plan kinds_[kKinds];
  Plan all_;
  bool interruptsEvery_ = false;
  bool diskFills_ = false;
  std::atomic<std::uint64_t> room_ = 0;
  int killAt_ = 0;
};

}  // namespace tessaret::test
