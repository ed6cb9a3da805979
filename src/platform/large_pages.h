// Large pages for large values. Most of the time that filling fresh memory takes goes into page faults.
#pragma once

#include <cstddef>

namespace tessaret {

/// Asks the system to back the block with large pages where it offers them, before anything is written there. Blocks below
/// 4 MiB are left alone. Never fails: without large pages the block works as it is.
void PreferLargePages(void* block, std::size_t size) noexcept;

}  // namespace tessaret
