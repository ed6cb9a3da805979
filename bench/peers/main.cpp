// The main function of the programs that measure other software at the jobs of tessaret-bench.
#include <cstdio>
#include <exception>
#include <string_view>

#include "jobs.h"
#include "peer_jobs.h"

namespace tessaret::bench {
namespace {

enum ExitCode : int { kDone = 0, kFailed = 1, kUsage = 2, kNotMine = 77 };

int Run(int count, char** arguments) {
  if (count == 1 && std::string_view(arguments[0]) == "list") {
    for (const Job& job : PeerJobs()) std::puts(job.name.data());
    return kDone;
  }
  if (count != 3) {
    std::fputs("usage: PROGRAM list | JOB DIR TMPDIR\n", stderr);
    return kUsage;
  }
  for (const Job& job : PeerJobs()) {
    const JobContext context{job, arguments[1], arguments[2]};
    if (job.name != arguments[0]) continue;
    if (!std::filesystem::exists(context.Input())) return kNotMine;
    job.run(context);
    return kDone;
  }
  return kNotMine;
}

}  // namespace
}  // namespace tessaret::bench

int main(int count, char** arguments) {
  try {
    return tessaret::bench::Run(count - 1, arguments + 1);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", arguments[0], error.what());
    return tessaret::bench::kFailed;
  }
}
