// A code stream in memory as the JPEG library reads it.
#pragma once

#include "frame_format.h"
#include "jpeg/jpeg_library.h"

namespace tessaret::codecs {

/// Ends the step (jpeg_library.h) where the stream ends before its image does, and where restart markers are not in their places;
/// the library's own sources make up an end, or pixels, instead. Must stay where it is while it is in use.
struct MemorySource {
  jpeg_source_mgr manager{};
  Bytes rest;  // what has not been handed to the library
};

void UseSource(jpeg_decompress_struct& library, MemorySource& source, Bytes stream);

}  // namespace tessaret::codecs
