// What the exit codes say. --help, the man pages and the verbs all read this one table.
#pragma once

#include <csignal>
#include <string_view>

namespace tessaret::tool {

/// Scripts rely on the numbers: they do not change.
enum class ExitCode : int {
  kDone = 0,
  kInputFailed = 1,
  kUsage = 2,
  kNoAssociation = 3,
  kPeerFailed = 4,
  kOutputFailed = 5,
  kInterrupted = 128 + SIGINT,
  kTerminated = 128 + SIGTERM,
};

static_assert(static_cast<int>(ExitCode::kInterrupted) == 130);
static_assert(static_cast<int>(ExitCode::kTerminated) == 143);

struct ExitCodeRow {
  ExitCode code;
  std::string_view words;
};

inline constexpr ExitCodeRow kExitCodes[] = {
    {ExitCode::kDone, "done"},
    {ExitCode::kInputFailed, "some input failed, the rest is done"},
    {ExitCode::kUsage, "wrong usage"},
    {ExitCode::kNoAssociation, "no association"},
    {ExitCode::kPeerFailed, "the peer refused or failed the work"},
    {ExitCode::kOutputFailed, "output could not be written, standard output included"},
    {ExitCode::kInterrupted, "interrupted"},
    {ExitCode::kTerminated, "terminated"},
};

}  // namespace tessaret::tool
