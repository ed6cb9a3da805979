// A code stream in memory as the JPEG library reads it.
#pragma once

#include "frame_format.h"
#include "jpeg/jpeg_library.h"

namespace tessaret::codecs {

/// Makes the library read `stream` by `source`, which must stay where it is. It ends the step (jpeg_library.h) where the stream ends before
/// its image does, and where restart markers are not in their places; the library's own sources make up an end, or pixels, instead.
void UseSource(jpeg_decompress_struct& library, jpeg_source_mgr& source, Bytes stream);

}  // namespace tessaret::codecs
