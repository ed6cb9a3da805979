// What methods that pack without a bound, as runs of equal pixels, can be asked for.
#pragma once

#include <cstdint>

#include "frame_format.h"

namespace tessaret::codecs {

/// Throws CodecFailure, with the numbers, where a frame is large and `stream` bytes are next to nothing for it.
void RequirePlausibleSize(std::uint64_t stream, const FrameFormat& format);

}  // namespace tessaret::codecs
