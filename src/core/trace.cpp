#include "core/trace.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <optional>

#include "platform/file_calls.h"
#include "platform/fork_locks.h"
#include "platform/hold_cancellation.h"

namespace tessaret {

constinit std::atomic<std::uint32_t> DumpFlags{0};

namespace {

constexpr const char* kUsualFile = "DcmServiceDump.log";

using FileName = std::optional<std::string>;

/// With its lock held. Never destroyed: a connection may still trace while the process ends.
FileName& DumpFile() {
  static FileName& file = *new FileName;
  return file;
}

// A trace stands between a system call and the look at its error number.
class ErrnoKeeper {
 public:
  ErrnoKeeper() : kept_(errno) {}
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;
  ~ErrnoKeeper() { errno = kept_; }

 private:
  const int kept_;
};

void Append(std::string_view text) {
  // Nothing leaves a trace, not even a thread that is cancelled.
  const HoldCancellation hold;
  const std::string path = GetDumpFile();
  // A named pipe that nobody reads must not stop the work, nor a terminal become this process's own.
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY;
  const FileResult opened = OpenFile(path.c_str(), kFlags, 0600);
  if (!opened.Ok()) return;
  const int descriptor = static_cast<int>(opened.value);
  WriteAll(descriptor, text.data(), text.size());
  CloseFile(descriptor);
}

void AppendFormatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  std::array<char, 1024> brief;
  const int length = std::vsnprintf(brief.data(), brief.size(), format, arguments);
  if (length >= 0 && static_cast<std::size_t>(length) < brief.size()) {
    AppendToDump({brief.data(), static_cast<std::size_t>(length)});
  } else if (length > 0) {
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, again);
    AppendToDump(text);
  }
  va_end(again);
}

std::string LocalTimeText() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  if (::localtime_r(&now, &parts) == nullptr) return {};
  std::array<char, 256> text;
  return {text.data(), std::strftime(text.data(), text.size(), "%c", &parts)};
}

void SetFlagIfPresent(const char* variable, std::uint32_t bit) {
  if (std::getenv(variable) != nullptr) SetDumpFlag(bit, true);
}

}  // namespace

void SetDumpFlag(std::uint32_t bits, bool on) {
  if (on) {
    DumpFlags.fetch_or(bits, std::memory_order_relaxed);
  } else {
    DumpFlags.fetch_and(~bits, std::memory_order_relaxed);
  }
}

void SetSocketDumpFromEnvironment() { SetFlagIfPresent("DCM_DUMP_SOCKET", kDumpSocket); }

void SetDataDumpFromEnvironment() { SetFlagIfPresent("DCM_DUMP_PDATA", kDumpData); }

void SetDumpFile(const char* path) {
  FileName named;
  if (path != nullptr) named = path;
  const std::lock_guard lock(forkLocks.dumpFile);
  DumpFile().swap(named);
}

std::string GetDumpFile() {
  const std::lock_guard lock(forkLocks.dumpFile);
  return DumpFile().value_or(kUsualFile);
}

void AppendToDump(std::string_view text) noexcept {
  const ErrnoKeeper keeper;
  try {
    Append(text);
  } catch (...) {
    // Without memory for the file's name there is no trace, and the work goes on.
  }
}

void DumpTrace(std::uint32_t bits, const char* format, ...) noexcept {
  if (!IsDumping(bits)) return;
  const ErrnoKeeper keeper;
  std::va_list arguments;
  va_start(arguments, format);
  try {
    AppendFormatted(format, arguments);
  } catch (...) {
    // As above: a text that finds no memory is not traced.
  }
  va_end(arguments);
}

void DumpTimeStamped(std::string_view text) noexcept {
  const ErrnoKeeper keeper;
  try {
    AppendToDump(LocalTimeText().append(" : ").append(text).append("\n"));
  } catch (...) {
    // As above.
  }
}

}  // namespace tessaret
