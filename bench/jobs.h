// The jobs of the measuring program, one table a family. A new family is a file with its table and a row in main.cpp.
#pragma once

#include <filesystem>
#include <span>
#include <stdexcept>
#include <string_view>

namespace tessaret::bench {

struct Job;

/// What a job is run with.
struct JobContext {
  const Job& job;
  std::filesystem::path data;     // folder of all input, only read
  std::filesystem::path scratch;  // folder for files that the job writes and takes away again
  std::string_view port = {};     // of the peer, for jobs that need one

  [[nodiscard]] std::filesystem::path Input() const;
};

/// Thrown by a job that this program cannot do here: something that it may do without is not installed.
struct NotPossible : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Job {
  std::string_view name;
  /// Does the job and prints its measures. Throws std::exception when it cannot.
  void (*run)(const JobContext& context);
  std::string_view input = {};  // the file or folder in `data` that it works on
};

inline std::filesystem::path JobContext::Input() const { return data / job.input; }

/// Files: load, header, free, save, round trip.
std::span<const Job> IoJobs();
/// The data dictionary: look-ups, and loading either form.
std::span<const Job> DictionaryJobs();
/// The public interface: making objects, reading elements, several threads.
std::span<const Job> ObjectJobs();
/// Codecs, through the engine: decode, encode.
std::span<const Job> CodecJobs();
/// The network, to a peer that listens.
std::span<const Job> NetJobs();

}  // namespace tessaret::bench
