// Samples of eight bits, by the JPEG library.
#pragma once

#include "frame_format.h"
#include "jpeg/dct_survey.h"

namespace tessaret::codecs {

/// Fills the frame, three components as red, green and blue. Throws CodecFailure for damage that the library sees; it forgives what
/// CheckEntropy does not.
void DecodeDct8(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                MutableBytes frame);

}  // namespace tessaret::codecs
