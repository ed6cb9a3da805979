// JPEG by discrete cosine transform (ISO/IEC 10918-1) with samples of eight bits: baseline, extended and progressive.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// As FrameCoder::Decode. Three components become red, green and blue.
DecodedFrame DecodeDct8(Bytes stream, const FrameFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
