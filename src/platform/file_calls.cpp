#include "platform/file_calls.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "platform/hold_cancellation.h"
#include "platform/repeated_call.h"

namespace tessaret {
namespace {

FileCallHook fileCallHook = nullptr;

std::atomic<bool> isCancelled = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may use nothing else");

bool CanBeCancelled(FileCall call) {
  switch (call) {
    case FileCall::kOpen:
    case FileCall::kRead:
    case FileCall::kWrite:
    case FileCall::kSync:
    case FileCall::kRename:
    case FileCall::kLink:
      return true;
    case FileCall::kClose:
    case FileCall::kSeek:
    case FileCall::kStat:
    case FileCall::kRemove:
    case FileCall::kMode:
    case FileCall::kLock:
      break;
  }
  return false;
}

/// The error with which a call is to fail that was not made yet, or 0.
int Refused(FileCall call, std::size_t& count) {
  if (AreFileCallsCancelled() && CanBeCancelled(call)) return ECANCELED;
  return fileCallHook == nullptr ? 0 : fileCallHook(call, count);
}

// Linux moves at most this much in one call.
constexpr std::size_t kMostBytesACall = 0x7FFFF000;

template <class Call>
FileResult Run(FileCall kind, std::size_t& count, Call call) {
  return RepeatedCall([&] { return Refused(kind, count); }, call);
}

template <class Call>
FileResult Run(FileCall kind, Call call) {
  std::size_t unused = 0;
  return Run(kind, unused, call);
}

// With these the system ends a process that writes to a pipe without a reader or beyond the size that a file may have. They
// concern the write and not the host, so the write fails instead.
constexpr int kSignalsOfWrites[] = {SIGPIPE, SIGXFSZ};

/// Holds the signals of writes back from this thread while it lives.
class WriteSignals {
 public:
  WriteSignals() {
    ::sigemptyset(&held_);
    for (const int each : kSignalsOfWrites) ::sigaddset(&held_, each);
    ::pthread_sigmask(SIG_BLOCK, &held_, &before_);
  }
  WriteSignals(const WriteSignals&) = delete;
  WriteSignals& operator=(const WriteSignals&) = delete;
  ~WriteSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  /// Takes away what a write that failed, if only after some of its bytes, has raised. Where the host holds a signal back
  /// itself, it stays for the host.
  void Take() const {
    const int error = errno;
    sigset_t ours = held_;
    for (const int each : kSignalsOfWrites) {
      if (::sigismember(&before_, each) == 1) ::sigdelset(&ours, each);
    }
    const timespec noWait{};
    while (::sigtimedwait(&ours, nullptr, &noWait) > 0 || errno == EINTR) continue;
    errno = error;
  }

 private:
  sigset_t held_;
  sigset_t before_;
};

// strerror_r comes in two kinds; the overload that fits picks the answer.
[[maybe_unused]] const char* ErrorWords(int, const char* buffer) { return buffer; }
[[maybe_unused]] const char* ErrorWords(const char* words, const char*) { return words; }

}  // namespace

void CancelFileCalls(bool cancel) noexcept { isCancelled.store(cancel, std::memory_order_relaxed); }

bool AreFileCallsCancelled() noexcept { return isCancelled.load(std::memory_order_relaxed); }

void SetFileCallHook(FileCallHook hook) { fileCallHook = hook; }

FileResult OpenFile(const char* path, int flags, mode_t mode) {
  return Run(FileCall::kOpen, [&] { return ::open(path, flags | O_CLOEXEC, mode); });
}

FileResult DuplicateDescriptor(int descriptor) {
  return Run(FileCall::kOpen, [&] { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0); });
}

FileResult CloseFile(int descriptor) {
  // To close is where destructors call the system, and nothing may leave one of these, not even a thread that is cancelled.
  const HoldCancellation hold;
  std::size_t unused = 0;
  const int refused = fileCallHook == nullptr ? 0 : fileCallHook(FileCall::kClose, unused);
  // Linux frees the descriptor even when close is broken by a signal: a second try could close somebody else's.
  const int answer = ::close(descriptor);
  if (refused != 0 && refused != EINTR) return {-1, refused};
  return answer == 0 || errno == EINTR ? FileResult{} : FileResult{-1, errno};
}

FileResult ReadSome(int descriptor, void* data, std::size_t count) {
  count = std::min(count, kMostBytesACall);
  return Run(FileCall::kRead, count, [&] { return ::read(descriptor, data, count); });
}

FileResult WriteSome(int descriptor, const void* data, std::size_t count) {
  count = std::min(count, kMostBytesACall);
  const WriteSignals signals;
  return Run(FileCall::kWrite, count, [&] {
    const ssize_t written = ::write(descriptor, data, count);
    // A pipe that loses its reader in the middle of a write answers with what went, and raises the signal all the same.
    if (written < static_cast<ssize_t>(count)) signals.Take();
    return written;
  });
}

FileResult WriteAll(int descriptor, const void* data, std::size_t count) {
  const char* at = static_cast<const char*>(data);
  while (count > 0) {
    const FileResult written = WriteSome(descriptor, at, count);
    if (!written.Ok()) return written;
    if (written.value == 0) return {-1, ENOSPC};
    at += written.value;
    count -= static_cast<std::size_t>(written.value);
  }
  return {};
}

FileResult SeekFile(int descriptor, std::uint64_t offset) {
  return Run(FileCall::kSeek,
             [&] { return ::lseek(descriptor, static_cast<off_t>(offset), SEEK_SET); });
}

FileResult TellFile(int descriptor) {
  return Run(FileCall::kSeek, [&] { return ::lseek(descriptor, 0, SEEK_CUR); });
}

FileResult StatDescriptor(int descriptor, struct stat& status) {
  return Run(FileCall::kStat, [&] { return ::fstat(descriptor, &status); });
}

FileResult StatPath(const char* path, struct stat& status) {
  return Run(FileCall::kStat, [&] { return ::stat(path, &status); });
}

FileResult SyncFile(int descriptor) {
  const FileResult synced = Run(FileCall::kSync, [&] { return ::fsync(descriptor); });
  return synced.error == EINVAL || synced.error == ENOTSUP ? FileResult{} : synced;
}

FileResult RenameFile(const char* from, const char* to) {
  return Run(FileCall::kRename, [&] { return std::rename(from, to); });
}

FileResult LinkFile(const char* from, const char* to) {
  return Run(FileCall::kLink, [&] { return ::link(from, to); });
}

FileResult RemoveFile(const char* path) {
  return Run(FileCall::kRemove, [&] { return ::unlink(path); });
}

FileResult SetFileMode(int descriptor, mode_t mode) {
  return Run(FileCall::kMode, [&] { return ::fchmod(descriptor, mode); });
}

FileResult SetFileOwner(int descriptor, uid_t user, gid_t group) {
  return Run(FileCall::kMode, [&] { return ::fchown(descriptor, user, group); });
}

FileResult CopyAccessList(const char* from, int to) {
  constexpr const char* kList = "system.posix_acl_access";
  // No list is longer than what the system takes as one attribute.
  constexpr std::size_t kLongest = std::size_t{64} * 1024;
  const std::unique_ptr<char[]> list(new (std::nothrow) char[kLongest]);
  if (!list) return {0, ENOMEM};
  const FileResult read =
      Run(FileCall::kMode, [&] { return ::getxattr(from, kList, list.get(), kLongest); });
  const auto size = static_cast<std::size_t>(read.value);
  if (read.Ok())
    return Run(FileCall::kMode, [&] { return ::fsetxattr(to, kList, list.get(), size, 0); });
  if (read.error == ENOTSUP) return {};
  if (read.error != ENODATA) return read;
  // It may have one from its directory.
  const FileResult removed = Run(FileCall::kMode, [&] { return ::fremovexattr(to, kList); });
  return removed.error == ENODATA ? FileResult{} : removed;
}

FileResult LockFile(int descriptor) {
  return Run(FileCall::kLock, [&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); });
}

bool HasNul(const std::string& path) { return std::strlen(path.c_str()) != path.size(); }

std::string SystemErrorText(int error) {
  std::array<char, 256> room{};
  return SystemErrorText(error, room);
}

const char* SystemErrorText(int error, std::span<char> room) {
  return ErrorWords(strerror_r(error, room.data(), room.size()), room.data());
}

}  // namespace tessaret
