// The bits of passes that are not coded by MQ (ISO/IEC 15444-1, D.6): a byte FF is followed by a bit 0 that is none of them.
#pragma once

#include <cstdint>

namespace tessaret::codecs {

class RawBits {
 public:
  /// Behind the segment stand bytes FF, as behind one for the MQ decoder; at its end all bits are 1.
  explicit RawBits(const std::uint8_t* segment) : at_(segment) {}

  std::uint32_t Decode() {
    if (left_ == 0) Next();
    --left_;
    return byte_ >> left_ & 1;
  }

 private:
  void Next() {
    const bool isAfterOnes = byte_ == 0xFF;
    left_ = isAfterOnes ? 7 : 8;
    if (isAfterOnes && *at_ > 0x8F) return;
    byte_ = *at_++;
  }

  const std::uint8_t* at_;
  std::uint32_t byte_ = 0;
  std::uint32_t left_ = 0;
};

}  // namespace tessaret::codecs
