// Decodes lossless JPEG (ITU-T T.81, H, with Huffman codes).
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// As FrameCoder::Decode.
DecodedFrame DecodeLosslessJpeg(Bytes stream, const FrameFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
