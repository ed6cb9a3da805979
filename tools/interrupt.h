// An interrupt ends the tool in good order: what is being written is taken away again, files that are whole stay, and the exit
// code says which signal it was. A second one ends the tool at once.
#pragma once

#include <exception>

#include "exit_code.h"

namespace tessaret::tool {

/// From here on SIGINT, SIGTERM and SIGHUP, which a terminal sends when it goes, are noted, and from then on every file call of
/// the library fails, so that whatever runs comes to an end by its usual ways. SIGPIPE and SIGXFSZ, for a file that
/// grows beyond its limit, are ignored: a write says so.
void WatchForInterrupts();

/// True once the tool was interrupted. Loops without file calls ask now and then.
bool IsInterrupted();

/// What ends the tool then. Requires: IsInterrupted().
ExitCode InterruptExitCode();

/// Thrown by what notices an interrupt where there is nothing left to answer.
class Interrupted : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "interrupted"; }
};

inline void StopIfInterrupted() {
  if (IsInterrupted()) throw Interrupted();
}

}  // namespace tessaret::tool
