/// Events of objects that work in threads of their own: having them told.
///
/// What happens in such a thread waits until the thread that made the object pumps, and is told there and nowhere else, in the order in
/// which it happened. A host without a loop calls PumpEvents in one; a host with a loop of its own has it watch EventsDescriptor, and
/// calls PumpEvents(0) when that is readable. Each thread has its own of both.
/// An object that is gone tells nothing more; what waits for a thread that ends is dropped. In a child made by fork nothing is told of
/// objects that were made before.
#pragma once

#include <cstdint>

#include "tessaret/status.hpp"
#include "tessaret/tessaret.h"

namespace tessaret {

/// Tells what waits for the calling thread, and returns how many messages of other threads that were; most tell one event, some none.
/// Where nothing waits it waits for the first one: for so many milliseconds, not at all with 0, for ever below 0. Signals do not end the
/// wait. What happens while events are told is left for the next call. May be called from an event; then events may be told within one
/// another.
/// kException with words where the system has no descriptors left, kOutOfMemory.
inline std::int32_t PumpEvents(int timeoutMs) { return tessaret_pump(timeoutMs); }

/// What a loop watches for the calling thread: readable while events wait. It belongs to the library, which alone reads it and closes it
/// when the thread ends. Below 0 after a failure, as with PumpEvents.
inline int EventsDescriptor() { return tessaret_events_descriptor(); }

}  // namespace tessaret
