// What is to be done around a fork. A child has only the thread that made it: a lock that another one held stays locked there for ever,
// unless the thread that forks takes it first.
#pragma once

namespace tessaret {

/// From now on `before` is called in every thread that is about to fork, and `after` when it has, in the parent and in the child. Of
/// several the last one asked for comes first before, and last after. Not called any more once the library is unloaded. False without
/// memory for it.
bool CallAtFork(void (*before)() noexcept, void (*after)() noexcept) noexcept;

}  // namespace tessaret
