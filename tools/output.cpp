#include "output.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

#include "interrupt.h"
#include "platform/file_calls.h"

namespace tessaret::tool {
namespace {

constexpr std::size_t kPortion = std::size_t{64} * 1024;

/// Waits until a descriptor that does not block takes bytes again.
void WaitForRoom() {
  struct pollfd waited = {STDOUT_FILENO, POLLOUT, 0};
  ::poll(&waited, 1, -1);
}

}  // namespace

OutputError::OutputError(int error) : std::runtime_error(SystemErrorText(error)), number_(error) {}

void Output::Write(std::string_view text) {
  if (text.size() < kPortion) {
    waiting_ += text;
    if (waiting_.size() >= kPortion) Flush();
    return;
  }
  Flush();
  used_ = true;
  Send(text);
}

void Output::Flush() {
  if (waiting_.empty()) return;
  used_ = true;
  const std::string bytes = std::move(waiting_);
  waiting_.clear();
  Send(bytes);
}

void Output::Send(std::string_view bytes) {
  while (!bytes.empty()) {
    StopIfInterrupted();
    const ssize_t written = ::write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      WaitForRoom();
    } else if (errno != EINTR) {
      throw OutputError(errno);
    }
  }
}

void Output::Close() {
  Flush();
  if (!used_) return;
  used_ = false;
  if (::close(STDOUT_FILENO) != 0 && errno != EINTR) throw OutputError(errno);
}

}  // namespace tessaret::tool
