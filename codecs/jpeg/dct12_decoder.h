// Samples of twelve bits, which the JPEG library does not decode.
#pragma once

#include "frame_format.h"
#include "jpeg/dct_survey.h"

namespace tessaret::codecs {

/// Fills the frame, three components as red, green and blue. Throws CodecFailure for damage.
void DecodeDct12(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                 MutableBytes frame);

}  // namespace tessaret::codecs
