// Something to do when a thread ends. An object of the thread does for most of it, but not for what a thread first does while it
// ends: the destructors of its keys run when all its objects are gone, and none is set up any more.
#pragma once

namespace tessaret {

/// Has `leave` called at the end of the calling thread, behind the destructors of all its objects; asked again from then on,
/// once more. For the thread that unloads the library or ends the process it is called then, behind all static objects; not for
/// others that are still there. False where
/// the system has nothing left to call it by, or kMostCallsAtThreadEnd wait already: then nothing may be kept for the thread
/// that only `leave` would free.
bool CallAtThreadEnd(void (*leave)() noexcept) noexcept;

inline constexpr int kMostCallsAtThreadEnd = 16;

}  // namespace tessaret
