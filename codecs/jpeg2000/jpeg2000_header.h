// The headers of a JPEG 2000 code stream (ISO/IEC 15444-1, A), read before the library that decodes sees any of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame_format.h"

namespace tessaret::codecs {

struct Jpeg2000Header {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t components = 0;
  std::uint32_t precision = 0;  // of all components
  bool isSigned = false;        // of all components
  bool isTransformed = false;   // the first three components are a transform of red, green and blue
  bool isReversible = true;     // no wavelet transform of the stream loses anything
  std::uint64_t codeBlocks = 0;  // about how many at most, be they empty
  Bytes codeStream;              // from its start to the end of its last tile part
};

/// Throws CodecFailure where `stream` is neither a code stream nor a file with one, or is not whole: cut, without some tile, with
/// numbers outside of their ranges, or with more tiles, packets or code blocks than its bytes can hold.
Jpeg2000Header ReadJpeg2000Header(Bytes stream);

}  // namespace tessaret::codecs
