// The header of an RLE frame (DICOM PS3.5, G.5): how many segments there are and where they begin.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "frame_format.h"

namespace tessaret::codecs {

struct RleHeader {
  static constexpr std::size_t kSize = 64;
  static constexpr std::size_t kMostSegments = 15;

  std::uint32_t count = 0;
  std::array<std::uint32_t, kMostSegments> offsets{};  // from the header's first byte, ascending

  /// The bytes from a segment's begin to the next one's, or to the end.
  [[nodiscard]] Bytes Segment(Bytes stream, std::uint32_t index) const;
};

/// Throws CodecFailure where there is no header, where it names another number of segments than `expected`, and where segments lie
/// outside of the stream or not one behind the other.
RleHeader ReadRleHeader(Bytes stream, std::uint32_t expected);

/// Whether bytes look as the begin of an RLE frame does: the first of at most 15 segments directly behind the header.
bool LooksLikeRleHeader(Bytes bytes);

/// Writes kSize bytes.
void WriteRleHeader(const RleHeader& header, std::uint8_t* to);

}  // namespace tessaret::codecs
