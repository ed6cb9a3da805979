// What is to be known of a stream before anything is decoded.
#pragma once

#include "frame_format.h"
#include "jpeg/dct_layout.h"
#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {

struct DctSurvey {
  FrameHeader header;
  DctLayout layout;
  bool isYcc = false;  // three components, of luminance and chrominance
};

/// Walks over all segments up to the end of the image. Throws CodecFailure where one of them is damaged or the end is not there, for
/// more scans than any image needs, other kinds than those by cosine transform and Huffman codes, another shape than the data
/// set's, and for fewer bytes than the blocks take at least. Entropy-coded data are not looked at.
DctSurvey SurveyDct(Bytes stream, const FrameFormat& format);

}  // namespace tessaret::codecs
