// A library with a copy of the library's end of its own, which library_end_test.cpp loads and unloads.
#include "platform/library_end.h"

namespace {

void (*tellEnd)(bool processEnds) = nullptr;

[[gnu::destructor]] void Tell() {
  if (tellEnd != nullptr) tellEnd(tessaret::DoesProcessEnd());
}

}  // namespace

extern "C" {

/// Has `tell` called when this library goes.
[[gnu::visibility("default")]] void TellHowItGoes(void (*tell)(bool processEnds)) {
  tessaret::WatchProcessEnd();
  tellEnd = tell;
}
}
