// Bits into entropy-coded data (ITU-T T.81, F.1.2.3).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/byte_order.h"
#include "frame_format.h"

namespace tessaret::codecs {

/// Puts bits one behind the other, the highest of each byte first, without stuffing.
class BitWriter {
 public:
  /// Bytes behind those written so far that may be overwritten.
  static constexpr std::size_t kSlack = 8;

  explicit BitWriter(std::uint8_t* to) : to_(to) {}

  /// The lowest `count` bits, 0 to 32, above which there are only zeros.
  void Put(std::uint64_t bits, unsigned count) {
    count_ += count;
    held_ |= bits << 1 << (63 - count_);
    const std::uint64_t swapped = __builtin_bswap64(held_);
    std::memcpy(to_, &swapped, sizeof swapped);
    to_ += count_ / 8;
    held_ <<= count_ & ~7u;
    count_ &= 7;
  }

  /// Fills the last byte up with ones. The first byte that was not written.
  std::uint8_t* Finish() {
    const unsigned count = (8 - count_) & 7;
    Put((1u << count) - 1, count);
    return to_;
  }

 private:
  std::uint8_t* to_;
  std::uint64_t held_ = 0;  // highest first
  unsigned count_ = 0;      // bits of held_, below 8
};

/// Appends entropy-coded bytes with a 0 behind each that would pass for the begin of a marker.
void AppendStuffed(Bytes bytes, std::vector<std::uint8_t>& stream);

}  // namespace tessaret::codecs
