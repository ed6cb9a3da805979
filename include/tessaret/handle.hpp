/// Drawing surfaces and windows, as the public interface names them.
#pragma once

#include <cstdint>

namespace tessaret {

/// A drawing surface, a bitmap or a window by its number; 0 is none. It is a number of 32 bits and no pointer, so that it travels by
/// name like any other number (no type of a Variant holds 64 bits whole), fits what window systems call a window, and is looked up
/// where it is used: one that names nothing is refused with words instead of being followed into memory.
/// Surfaces belong to whoever made them and are never freed by who is handed their number.
using Handle = std::int32_t;

}  // namespace tessaret
