// Whether the entropy-coded data of a stream hold exactly its image.
#pragma once

#include "frame_format.h"
#include "jpeg/dct_survey.h"

namespace tessaret::codecs {

/// Throws CodecFailure where codes are none, blocks too long, data too short or too long, or scans missing. Of streams
/// with a wrong bit the JPEG library takes many for good that this refuses.
void CheckEntropy(Bytes stream, const DctSurvey& survey);

}  // namespace tessaret::codecs
