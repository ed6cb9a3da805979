// The marker segments of a JPEG-LS code stream (ISO/IEC 14495-1, C), read before the library that decodes sees any of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frame_format.h"

namespace tessaret::codecs {

/// How the samples of a pixel lie in the stream. The numbers are those of the stream.
enum class JpegLsInterleave : std::uint8_t { kPlanes = 0, kLines = 1, kPixels = 2 };

struct JpegLsHeader {
  static constexpr std::uint32_t kMostComponents = 4;

  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t components = 0;
  std::uint32_t precision = 0;                              // 2 to 16
  JpegLsInterleave interleave = JpegLsInterleave::kPlanes;  // kPlanes where there is one component
  std::size_t size = 0;  // bytes of the stream up to its end marker, that included
};

/// Throws CodecFailure where the segments are not those of one whole image: cut, out of order, with numbers outside of their
/// ranges, or with what is not supported.
JpegLsHeader ReadJpegLsHeader(Bytes stream);

}  // namespace tessaret::codecs
