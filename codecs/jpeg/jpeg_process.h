// Which of the JPEG processes made a code stream, whatever the transfer syntax says.
#pragma once

#include "frame_format.h"

namespace tessaret::codecs {

enum class JpegProcess { kUnknown, kDct, kLossless, kJpegLs };

/// By the frame header; kUnknown where there is none, and for processes that nothing here decodes. Looks at no more than the segments
/// before it.
JpegProcess ProcessOf(Bytes stream);

}  // namespace tessaret::codecs
