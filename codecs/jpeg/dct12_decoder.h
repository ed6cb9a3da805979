// JPEG by discrete cosine transform (ISO/IEC 10918-1) with samples of twelve bits.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// As FrameCoder::Decode. Three components become red, green and blue.
DecodedFrame DecodeDct12(Bytes stream, const FrameFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
