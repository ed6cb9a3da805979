// How many objects and locks keep the library in the process.
#pragma once

#include <cstdint>

namespace tessaret {

void CountObject() noexcept;
void UncountObject() noexcept;
std::int64_t ObjectCount() noexcept;

/// A host that wants the library to stay, though it holds no object, locks it.
void LockLibrary() noexcept;
void UnlockLibrary() noexcept;

/// True while no object exists and no lock is held.
bool MayUnload() noexcept;

}  // namespace tessaret
