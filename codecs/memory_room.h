// For libraries that do not look whether they got the memory they asked for.
#pragma once

#include <cstdint>

namespace tessaret::codecs {

/// Throws std::bad_alloc where so many bytes are not to be had at once now. It holds none of them: what is asked for next will be there
/// unless somebody else takes it.
void RequireMemory(std::uint64_t bytes);

}  // namespace tessaret::codecs
