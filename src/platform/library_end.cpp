#include "platform/library_end.h"

namespace tessaret {
namespace {

constinit bool processEnds = false;

// When the process ends, static objects go before the functions of the attribute `destructor` are called, and behind them when the
// library alone does.
struct LastWitness {
  LastWitness() noexcept = default;
  LastWitness(const LastWitness&) = delete;
  LastWitness& operator=(const LastWitness&) = delete;
  ~LastWitness() { processEnds = true; }
};
const LastWitness witness;

}  // namespace

bool DoesProcessEnd() noexcept { return processEnds; }

}  // namespace tessaret
