// Bits out of entropy-coded data (ITU-T T.81, F.2.2.5).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/byte_order.h"
#include "frame_format.h"

namespace tessaret::codecs {

/// The bits of some bytes, the highest of each byte first. Behind the end come zeros, without end: whoever reads asks IsOverrun now
/// and then. No call leaves the address of the object anywhere, so that a copy in a loop stays in registers.
class BitReader {
 public:
  explicit BitReader(Bytes bytes) : at_(bytes.data()), end_(bytes.data() + bytes.size()) {}

  /// Has at least 56 bits ready.
  void Fill() {
    if (end_ - at_ >= 8) [[likely]] {
      held_ |= __builtin_bswap64(Load64(at_)) >> count_;
      at_ += (63 - count_) / 8;
      count_ |= 56;
    } else {
      *this = FilledAtEnd(*this);
    }
  }

  /// Bits that are ready, the next one highest. Those below the ones that Fill made ready may be 0 or what they should be.
  [[nodiscard]] std::uint64_t Held() const { return held_; }
  /// The next `count` bits, 1 to 32. Requires: as many are ready, as for Drop.
  [[nodiscard]] std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(held_ >> (64 - count));
  }
  void Drop(unsigned count) {
    held_ <<= count;
    count_ -= count;
  }
  std::uint32_t Take(unsigned count) {
    const std::uint32_t bits = Peek(count);
    Drop(count);
    return bits;
  }

  /// Whether bits were dropped that are not there.
  [[nodiscard]] bool IsOverrun() const { return made_ > count_; }

  /// Throws CodecFailure where bits are missing, or where there are more than fill up a byte: all that is left are ones, or less than
  /// a byte of anything.
  void RequireUsedUp() const;

 private:
  static std::uint64_t Load64(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, sizeof value);
    return value;
  }
  static BitReader FilledAtEnd(BitReader reader);

  std::uint64_t held_ = 0;
  unsigned count_ = 0;      // bits of held_ that are ready
  std::uint64_t made_ = 0;  // zeros made up behind the end, so far
  const std::uint8_t* at_;
  const std::uint8_t* end_;
};

/// The entropy-coded data of one scan, without what was stuffed in, cut at restart markers.
class EntropyData {
 public:
  /// `rest` is all that follows the scan header. Throws CodecFailure where no marker ends the data, where restart markers are missing,
  /// too many or out of order: there have to be `intervals` - 1.
  EntropyData(Bytes rest, std::uint64_t intervals);

  [[nodiscard]] std::size_t Intervals() const { return ends_.size(); }
  [[nodiscard]] Bytes Interval(std::size_t index) const {
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    return {bytes_.get() + begin, ends_[index] - begin};
  }
  /// Bytes of `rest` up to the marker that ends the data.
  [[nodiscard]] std::size_t Length() const { return length_; }

 private:
  std::unique_ptr<std::uint8_t[]> bytes_;
  std::vector<std::size_t> ends_;  // of intervals, in bytes_
  std::size_t length_ = 0;
};

}  // namespace tessaret::codecs
