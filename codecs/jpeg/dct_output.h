// From components to the samples of a frame.
#pragma once

#include <span>

#include "frame_format.h"
#include "jpeg/upsampling.h"

namespace tessaret::codecs {

/// Fills the frame with samples of 12 bits, one RowMaker for each; `isYcc`: three that are to be made red, green and blue
/// (ITU-T T.871, 7, with 2048 for 128).
void WriteDctRows(std::span<RowMaker> rows, bool isYcc, const FrameFormat& format,
                  MutableBytes frame);

}  // namespace tessaret::codecs
