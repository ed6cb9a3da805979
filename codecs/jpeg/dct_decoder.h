// JPEG by discrete cosine transform (ISO/IEC 10918-1): baseline, extended and progressive, of 8 and 12 bits.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// As FrameCoder::Decode. Three components become red, green and blue.
DecodedFrame DecodeDct(Bytes stream, const FrameFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
