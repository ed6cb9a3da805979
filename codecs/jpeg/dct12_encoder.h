// JPEG extended (ISO/IEC 10918-1): samples of twelve bits by discrete cosine transform.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_coder.h"

namespace tessaret::codecs {

/// Throws CodecFailure for formats that EncodeDct12 does not take: one gray sample of 9 to 12 bits in 16, unsigned.
void RequireDct12(const FrameFormat& format);

/// Throws CodecFailure where a sample has more than 12 bits.
std::vector<std::uint8_t> EncodeDct12(Bytes frame, const FrameFormat& format,
                                      std::uint32_t quality);

}  // namespace tessaret::codecs
