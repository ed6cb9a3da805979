#include "platform/wake_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "platform/hold_cancellation.h"

namespace tessaret {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

int MillisecondsTo(const Deadline& deadline) {
  if (!deadline) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
  constexpr auto kMost = decltype(left){std::numeric_limits<int>::max()};
  return static_cast<int>(std::clamp(left, decltype(left){0}, kMost));
}

Deadline DeadlineIn(int milliseconds) {
  if (milliseconds < 0) return std::nullopt;
  return Clock::now() + std::chrono::milliseconds(milliseconds);
}

WakePipe::WakePipe() noexcept : process_(::getpid()) {}

bool WakePipe::IsOfThisProcess() const noexcept { return process_ == ::getpid(); }

bool WakePipe::Open() noexcept { return ::pipe2(ends_, O_CLOEXEC | O_NONBLOCK) == 0; }

WakePipe::~WakePipe() {
  const HoldCancellation held;
  for (const int end : ends_) {
    if (end != -1) ::close(end);
  }
}

void WakePipe::Wake() noexcept {
  const HoldCancellation held;
  const char byte = 0;
  // A full pipe is readable all the same.
  while (::write(ends_[1], &byte, 1) == -1 && errno == EINTR) {
  }
}

void WakePipe::Clear() noexcept {
  const HoldCancellation held;
  char bytes[64];
  for (;;) {
    const ssize_t got = ::read(ends_[0], bytes, sizeof bytes);
    if (got == 0 || (got == -1 && errno != EINTR)) return;
  }
}

bool WakePipe::Wait(const Deadline& deadline) const {
  pollfd ready{.fd = ends_[0], .events = POLLIN, .revents = 0};
  for (;;) {
    const int answer = ::poll(&ready, 1, MillisecondsTo(deadline));
    if (answer > 0) return (ready.revents & POLLIN) != 0;
    if (answer == 0 && MillisecondsTo(deadline) == 0) return false;
    if (answer == -1 && errno != EINTR) return false;
  }
}

}  // namespace tessaret
