// Encodes lossless JPEG (ITU-T T.81, H, with Huffman codes), by predictor 1 and with the table that suits the frame best.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

/// The whole code stream. Requires: 8 or 16 bits are allocated.
std::vector<std::uint8_t> EncodeLosslessJpeg(Bytes frame, const FrameFormat& format);

}  // namespace tessaret::codecs
