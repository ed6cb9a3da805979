// Reads the bits of a JPEG-LS scan (ISO/IEC 14495-1, A.1 and C.3): most significant first, a byte FF is followed by a bit 0 that is
// none of them.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "failure.h"
#include "frame_format.h"

namespace tessaret::codecs {

class JpegLsBits {
 public:
  explicit JpegLsBits(Bytes data) : at_(data.data()), end_(data.data() + data.size()) {}

  /// At most 32 bits as a number. Throws CodecFailure where the data end before that, as all do here.
  std::uint32_t Read(std::uint32_t count) {
    if (count == 0) return 0;
    Need(count);
    const auto value = static_cast<std::uint32_t>(cache_ >> (kCacheBits - count));
    Drop(count);
    return value;
  }

  bool ReadBit() {
    Need(1);
    const bool bit = static_cast<std::int64_t>(cache_) < 0;
    Drop(1);
    return bit;
  }

  /// The number of bits 0 up to the next bit 1, which is read too. No code has more than 56 of them: that many are ahead of what
  /// does not fit, a number of 7 bits or more, where a code has at most 64.
  std::uint32_t ReadZeros() {
    if (valid_ < kSureBits) Fill();
    const auto zeros = static_cast<std::uint32_t>(std::countl_zero(cache_));
    if (zeros >= valid_ || zeros >= kSureBits) FailAtZeros();
    Drop(zeros + 1);
    return zeros;
  }

  /// Throws CodecFailure where there is more than what fills up the last byte.
  void RequireEnd() {
    Fill();
    // An FF at the end is followed by a byte of its own, which has 7 bits.
    if (at_ != end_ || valid_ >= 8 || cache_ != 0) {
      Fail("the code stream has more than the frame");
    }
  }

 private:
  static constexpr std::uint32_t kCacheBits = 64;
  static constexpr std::uint32_t kSureBits = 57;  // after a Fill, where there are so many

  void Need(std::uint32_t count) {
    if (valid_ >= count) return;
    Fill();
    if (valid_ < count) Fail("the code stream ends before the frame does");
  }

  void Drop(std::uint32_t count) {
    cache_ <<= count;
    valid_ -= count;
  }

  [[noreturn]] void FailAtZeros() const {
    Fail(at_ == end_ ? "the code stream ends before the frame does"
                     : "a code of the code stream is too long");
  }

  void Fill() {
    if (valid_ > kCacheBits - 8) return;
    if (end_ - at_ >= 8 && !isAfterOnes_) {
      std::uint64_t next;
      std::memcpy(&next, at_, sizeof next);
      // Whether no byte of these is FF.
      constexpr std::uint64_t kEachLow = 0x0101010101010101;
      if (((~next - kEachLow) & next & (kEachLow << 7)) == 0) {
        cache_ |= __builtin_bswap64(next) >> valid_;
        const std::uint32_t bytes = (kCacheBits - valid_) / 8;
        at_ += bytes;
        valid_ += 8 * bytes;
        // Bits of a byte that is not counted yet must not be there twice.
        if (valid_ < kCacheBits) cache_ &= ~std::uint64_t{0} << (kCacheBits - valid_);
        return;
      }
    }
    while (valid_ <= kCacheBits - 8 && at_ != end_) {
      const std::uint32_t width = isAfterOnes_ ? 7 : 8;
      const std::uint64_t byte = *at_++;
      cache_ |= byte << (kCacheBits - valid_ - width);
      valid_ += width;
      isAfterOnes_ = byte == 0xFF;
    }
  }

  const std::uint8_t* at_;
  const std::uint8_t* end_;
  std::uint64_t cache_ = 0;  // the next bits, from the highest on; 0 below them
  std::uint32_t valid_ = 0;  // how many
  bool isAfterOnes_ = false;
};

}  // namespace tessaret::codecs
