// The boxes of a JP2 file (ISO/IEC 15444-1, I), in which some writers put a code stream.
#pragma once

#include "frame_format.h"

namespace tessaret::codecs {

/// The code stream in the boxes, with what follows it; all of `stream` where it does not begin as JP2 does.
Bytes CodeStreamOf(Bytes stream);

}  // namespace tessaret::codecs
