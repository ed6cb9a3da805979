// The packing of bytes by runs that RLE segments use (DICOM PS3.5, G.3).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

/// Unpacks one segment piece by piece.
class PackBitsReader {
 public:
  /// The most bytes that one code of a segment stands for.
  static constexpr std::size_t kLongestRun = 128;
  /// What `to` must have behind the bytes asked for.
  static constexpr std::size_t kSlack = kLongestRun + 16;

  explicit PackBitsReader(Bytes segment)
      : at_(segment.data()), end_(segment.data() + segment.size()) {}

  /// Writes whole codes from `to` on until there are `count` bytes or more, and says how many there are: less than `count` where the
  /// segment ends, at most kLongestRun - 1 more. Up to kSlack bytes behind `count` may be overwritten.
  std::size_t Read(std::uint8_t* to, std::size_t count);

 private:
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

/// Appends the packed form of `bytes`. Rows are packed one by one, for no run may go beyond a row.
void PackBits(Bytes bytes, std::vector<std::uint8_t>& packed);

}  // namespace tessaret::codecs
