// tessaret-bench: measures the library over input in a folder, one job a run. README.md tells the arguments.
#include <array>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

#include "core/module_dictionaries.h"
#include "jobs.h"
#include "make_input.h"
#include "store_server.h"

namespace tessaret::bench {
namespace {

enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kNotMine = 77 };

std::array<std::span<const Job>, 5> Families() {
  return {IoJobs(), DictionaryJobs(), ObjectJobs(), CodecJobs(), NetJobs()};
}

int Usage() {
  std::fputs(
      "usage: tessaret-bench list | make DIR [--short] | JOB DIR TMPDIR [PORT] |\n"
      "       tessaret-bench scp PORT null|disk DIR\n",
      stderr);
  return kUsage;
}

int List() {
  for (const auto family : Families()) {
    for (const Job& job : family) {
      std::printf("%.*s\n", static_cast<int>(job.name.size()), job.name.data());
    }
  }
  return kDone;
}

int Make(int count, char** arguments) {
  if (count != 2 && count != 3) return Usage();
  const bool isShort = count == 3;
  if (isShort && std::strcmp(arguments[2], "--short") != 0) return Usage();
  if (!StartDictionaries()) return kFailed;
  MakeInput(arguments[1], isShort ? InputSize::kShort : InputSize::kFull);
  return kDone;
}

int RunJob(int count, char** arguments) {
  if (count != 3 && count != 4) return Usage();
  for (const auto family : Families()) {
    for (const Job& job : family) {
      if (job.name != arguments[0]) continue;
      if (!StartDictionaries()) return kFailed;
      job.run({job, arguments[1], arguments[2], count == 4 ? arguments[3] : ""});
      return kDone;
    }
  }
  return kNotMine;
}

int Serve(int count, char** arguments) {
  if (count != 4) return Usage();
  const bool keeps = std::strcmp(arguments[2], "disk") == 0;
  if (!keeps && std::strcmp(arguments[2], "null") != 0) return Usage();
  if (!StartDictionaries()) return kFailed;
  RunStoreServer(arguments[1], keeps ? arguments[3] : "");
  return kFailed;
}

int Run(int count, char** arguments) {
  if (count == 0) return Usage();
  const std::string_view verb = arguments[0];
  if (verb == "list") return List();
  if (verb == "make") return Make(count, arguments);
  if (verb == "scp") return Serve(count, arguments);
  return RunJob(count, arguments);
}

}  // namespace
}  // namespace tessaret::bench

int main(int count, char** arguments) {
  try {
    return tessaret::bench::Run(count - 1, arguments + 1);
  } catch (const tessaret::bench::NotPossible& reason) {
    std::fprintf(stderr, "tessaret-bench: %s\n", reason.what());
    return tessaret::bench::kNotMine;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tessaret-bench: %s\n", error.what());
    return 1;
  }
}
