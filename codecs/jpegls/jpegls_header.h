// The marker segments of a JPEG-LS code stream (ISO/IEC 14495-1, C), and where its coded samples lie.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame_format.h"

namespace tessaret::codecs {

/// How the samples of a pixel lie in the stream. The numbers are those of the stream.
enum class JpegLsInterleave : std::uint8_t { kPlanes = 0, kLines = 1, kPixels = 2 };

/// What the coding of a scan's samples goes by; all are within their ranges.
struct JpegLsParameters {
  std::int32_t maximum = 0;   // of all samples, 1 to 65535
  std::int32_t nearness = 0;  // by how much samples may be off, at most 255 and half of the maximum
  std::array<std::int32_t, 3> thresholds{};  // ascending
  std::int32_t reset = 0;                    // when counters are halved, 3 to 32767
};

/// Samples of one component, or of all.
struct JpegLsScan {
  std::uint32_t components = 0;
  JpegLsInterleave interleave = JpegLsInterleave::kPlanes;  // kPlanes where there is one component
  JpegLsParameters parameters;
  Bytes data;  // to the next marker
};

struct JpegLsHeader {
  static constexpr std::uint32_t kMostComponents = 4;

  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t components = 0;
  std::uint32_t precision = 0;  // 2 to 16
  std::uint32_t scanCount = 0;
  std::array<JpegLsScan, kMostComponents> scans;  // in the order of components, each in one of them
};

/// Throws CodecFailure where the segments are not those of one whole image: cut, out of order, with numbers outside of their
/// ranges, or with what is not supported.
JpegLsHeader ReadJpegLsHeader(Bytes stream);

}  // namespace tessaret::codecs
