// JPEG baseline (ISO/IEC 10918-1): samples of eight bits by discrete cosine transform.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_coder.h"

namespace tessaret::codecs {

/// Throws CodecFailure for formats that EncodeDct8 does not take.
void RequireDct8(const FrameFormat& format);

/// One component, or three: those of RGB are transformed, those of YBR_FULL taken as they are, and the last two get every second
/// column only.
std::vector<std::uint8_t> EncodeDct8(Bytes frame, const FrameFormat& format, std::uint32_t quality);

}  // namespace tessaret::codecs
