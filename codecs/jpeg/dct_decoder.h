// JPEG by discrete cosine transform, by whatever decoder the stream asks for.
#pragma once

#include "frame_coder.h"

namespace tessaret::codecs {

/// As FrameCoder::Decode.
DecodedFrame DecodeDct(Bytes stream, const FrameFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
