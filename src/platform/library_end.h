// The library's end: whether it is unloaded while the process goes on, or goes with the process.
#pragma once

namespace tessaret {

/// For functions of the attribute `destructor` without a priority, and for these alone. False where the library is unloaded: then nobody uses it any more, and
/// what it keeps would be lost to the process. True where the process ends: other threads may still be at work, and the system
/// takes everything back.
bool DoesProcessEnd() noexcept;

}  // namespace tessaret
