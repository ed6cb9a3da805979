// Bits out of entropy-coded data (ITU-T T.81, F.2.2.5).
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

/// The next bits of some bytes and where those behind them are. Small, and its address is never taken: it stays in registers.
struct ReadyBits {
  std::uint64_t held = 0;  // the next bit is the highest
  unsigned count =
      0;  // how many of them are ready; below these there are zeros, or bits that are what they should be
  const std::uint8_t* at = nullptr;

  /// Makes at least 56 bits ready. Requires: there are 8 more bytes.
  void Fill() {
    std::uint64_t next;
    std::memcpy(&next, at, sizeof next);
    held |= __builtin_bswap64(next) >> count;
    at += (63 - count) / 8;
    count |= 56;
  }

  void Drop(unsigned bits) {
    held <<= bits;
    count -= bits;
  }
};

/// The bits of some bytes, the highest of each byte first. Behind the end come zeros, without end: whoever reads asks IsOverrun now
/// and then.
class BitReader {
 public:
  /// How many bits Fill makes ready at least.
  static constexpr unsigned kFilled = 56;

  explicit BitReader(Bytes bytes) : end_(bytes.data() + bytes.size()), ready_{0, 0, bytes.data()} {}

  void Fill() {
    if (CanFillFast(ready_)) [[likely]] {
      ready_.Fill();
    } else {
      FillAtEnd();
    }
  }

  /// The next `count` bits, 1 to 32. Requires: as many are ready, as for Drop.
  [[nodiscard]] std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(ready_.held >> (64 - count));
  }
  void Drop(unsigned count) { ready_.Drop(count); }
  std::uint32_t Take(unsigned count) {
    const std::uint32_t bits = Peek(count);
    Drop(count);
    return bits;
  }

  /// For loops that want the bits in registers: what is ready, to be put back when the loop ends.
  [[nodiscard]] ReadyBits Ready() const { return ready_; }
  void PutBack(ReadyBits ready) { ready_ = ready; }
  [[nodiscard]] bool CanFillFast(const ReadyBits& ready) const { return HasBytes(ready, 8); }
  /// Whether there are as many behind those that are ready.
  [[nodiscard]] bool HasBytes(const ReadyBits& ready, std::ptrdiff_t count) const {
    return end_ - ready.at >= count;
  }

  /// Whether bits were dropped that are not there.
  [[nodiscard]] bool IsOverrun() const { return made_ > ready_.count; }

  /// Throws CodecFailure where bits are missing, or where there are more than fill up a byte: all that is left are ones, or less than
  /// a byte of anything.
  void RequireUsedUp() const;

 private:
  void FillAtEnd();

  const std::uint8_t* end_;
  ReadyBits ready_;
  std::uint64_t made_ = 0;  // zeros made up behind the end, so far
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
