// The library's end: whether it is unloaded while the process goes on, or goes with the process.
#pragma once

namespace tessaret {

/// To be called before anything is kept that the library's end may free; the first call is the one that counts. One that comes before
/// main, from a library that the program is linked with, is too early: the end of the process then looks like unloading.
void WatchProcessEnd();

/// For functions of the attribute `destructor` without a priority, and for these alone. False where the library is unloaded: nobody
/// uses it any more, and what it keeps would be lost to the process. True where the process ends: other threads may still be at
/// work, and the system takes everything back.
bool DoesProcessEnd() noexcept;

}  // namespace tessaret
