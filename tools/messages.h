// Words for the person at the shell, on standard error: "tessaret: SUBJECT: WORDS", a line each. They never hold values of a
// data set. The progress bar lives here too, since it must make way for every line.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessaret::tool {

/// How much is said.
struct Loudness {
  bool quiet = false;    // errors only
  bool verbose = false;  // also what is being done
  bool debug = false;    // also what helps to find a fault
};

class Messages {
 public:
  Messages() = default;
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;
  ~Messages() { HideProgress(); }

  void SetLoudness(const Loudness& loudness);

  /// Whether warnings and notes are said at all.
  [[nodiscard]] bool SaysWarnings() const { return !loudness_.quiet; }
  [[nodiscard]] bool SaysNotes() const { return loudness_.verbose || loudness_.debug; }

  /// Something failed. Silent once the tool was interrupted: what fails then fails for that reason.
  void Error(std::string_view subject, std::string_view words);
  /// Something is odd, and the work goes on. Not with `quiet`.
  void Warn(std::string_view subject, std::string_view words);
  /// What is being done; with `verbose` or `debug`.
  void Note(std::string_view subject, std::string_view words);
  /// With `debug`.
  void Detail(std::string_view subject, std::string_view words);

  /// Shows how far the work is, on a terminal and not too often. `total` 0: not known.
  void ShowProgress(std::uint64_t done, std::uint64_t total, std::string_view unit);
  void HideProgress();

 private:
  void Say(std::string_view colour, std::string_view subject, std::string_view kind,
           std::string_view words);

  Loudness loudness_;
  bool lively_ = false;
  bool progressShown_ = false;
  std::chrono::steady_clock::time_point lastProgress_;
};

/// "[####      ] 40 %, 4 of 10 files".
std::string ProgressBar(std::uint64_t done, std::uint64_t total, std::string_view unit);

}  // namespace tessaret::tool
