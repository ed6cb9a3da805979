#include "platform/library_end.h"

namespace tessaret {
namespace {

constinit bool processEnds = false;

/// When the process ends, what was made since main began goes before any function of the attribute `destructor` is called, and
/// behind those of the library when that alone is unloaded.
struct Witness {
  Witness() noexcept = default;
  Witness(const Witness&) = delete;
  Witness& operator=(const Witness&) = delete;
  ~Witness() { processEnds = true; }
};

}  // namespace

void WatchProcessEnd() { static const Witness witness; }

bool DoesProcessEnd() noexcept { return processEnds; }

}  // namespace tessaret
