#include "messages.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/text.h"
#include "escape.h"
#include "interrupt.h"
#include "platform/file_calls.h"
#include "standard_streams.h"

namespace tessaret::tool {
namespace {

constexpr std::string_view kRed = "\x1b[31m";
constexpr std::string_view kYellow = "\x1b[33m";
constexpr std::string_view kPlain = "\x1b[0m";
constexpr std::string_view kClearLine = "\r\x1b[K";
constexpr auto kProgressPause = std::chrono::milliseconds(100);
constexpr std::uint64_t kBarWidth = 30;

/// Nobody can be told of a failure to tell.
void WriteWords(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void Messages::SetLoudness(const Loudness& loudness) {
  loudness_ = loudness;
  lively_ = !loudness.quiet && IsLivelyTerminal(STDERR_FILENO);
}

void Messages::Error(std::string_view subject, std::string_view words) {
  if (!IsInterrupted()) Say(kRed, subject, {}, words);
}

void Messages::Warn(std::string_view subject, std::string_view words) {
  if (SaysWarnings()) Say(kYellow, subject, "warning: ", words);
}

void Messages::Note(std::string_view subject, std::string_view words) {
  if (SaysNotes()) Say({}, subject, {}, words);
}

void Messages::Detail(std::string_view subject, std::string_view words) {
  if (loudness_.debug) Say({}, subject, {}, words);
}

void Messages::Say(std::string_view colour, std::string_view subject, std::string_view kind,
                   std::string_view words) {
  HideProgress();
  std::string line;
  const bool coloured = lively_ && !colour.empty();
  if (coloured) line += colour;
  line += "tessaret:";
  if (coloured) line += kPlain;
  line += ' ';
  line += Escaped(subject);
  line += ": ";
  line += kind;
  line += Escaped(words);
  line += '\n';
  WriteWords(line);
}

void Messages::ShowProgress(std::uint64_t done, std::uint64_t total, std::string_view unit) {
  if (!lively_) return;
  const auto now = std::chrono::steady_clock::now();
  if (progressShown_ && now - lastProgress_ < kProgressPause) return;
  lastProgress_ = now;
  progressShown_ = true;
  WriteWords(std::string(kClearLine) + ProgressBar(done, total, unit));
}

void Messages::HideProgress() {
  if (!progressShown_) return;
  progressShown_ = false;
  WriteWords(kClearLine);
}

std::string ProgressBar(std::uint64_t done, std::uint64_t total, std::string_view unit) {
  const auto doneText = std::to_string(done);
  if (total == 0) return doneText + ' ' + std::string(unit);
  done = std::min(done, total);
  const double share = static_cast<double>(done) / static_cast<double>(total);
  const auto filled = static_cast<std::size_t>(share * static_cast<double>(kBarWidth));
  const auto percent = static_cast<int>(share * 100);
  return '[' + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " +
         std::to_string(percent) + " %, " + doneText + " of " + std::to_string(total) + ' ' +
         std::string(unit);
}

}  // namespace tessaret::tool
