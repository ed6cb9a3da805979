#include "support/file_failure.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

namespace tessaret::test {
namespace {

FileFailure* active = nullptr;

}  // namespace

FileFailure::FileFailure() {
  if (active != nullptr) throw std::logic_error("two file failures at once");
  active = this;
  SetFileCallHook(Hook);
}

FileFailure::~FileFailure() {
  SetFileCallHook(nullptr);
  active = nullptr;
}

int FileFailure::Plan::Count() {
  const int number = ++calls;
  return number >= firstToFail && number <= lastToFail ? errorToGive : 0;
}

int FileFailure::Hook(FileCall kind, std::size_t& count) { return active->Answer(kind, count); }

int FileFailure::Answer(FileCall kind, std::size_t& count) {
  const int failAny = all_.Count();
  if (all_.calls == killAt_) ::kill(::getpid(), SIGKILL);
  Plan& plan = kinds_[Index(kind)];
  const int failKind = plan.Count();
  if (plan.calls == plan.actionAt) plan.action();
  if (failAny != 0) return failAny;
  if (failKind != 0) return failKind;
  if (interruptsEvery_ && plan.calls % 2 == 1) return EINTR;
  count = std::min(count, plan.most);
  return kind == FileCall::kWrite && diskFills_ ? TakeRoom(count) : 0;
}

int FileFailure::TakeRoom(std::size_t& count) {
  if (room_ == 0 && count > 0) return ENOSPC;
  count = static_cast<std::size_t>(std::min<std::uint64_t>(count, room_));
  room_ -= count;
  return 0;
}

}  // namespace tessaret::test
