// The bits of a packet's header (ISO/IEC 15444-1, B.10.1): a byte FF is followed by a bit 0 that is none of them.
#pragma once

#include <cstdint>

#include "failure.h"
#include "frame_format.h"

namespace tessaret::codecs {

class PacketBits {
 public:
  explicit PacketBits(Bytes data) : data_(data) {}

  /// Throws CodecFailure where the data end before that, as all do here.
  bool Read() {
    if (left_ == 0) Next();
    --left_;
    return (byte_ >> left_ & 1) != 0;
  }

  /// At most 32 bits.
  std::uint32_t Read(std::uint32_t count) {
    std::uint32_t value = 0;
    while (count-- > 0) value = value << 1 | (Read() ? 1U : 0U);
    return value;
  }

  /// How many bytes the header takes, once all of its bits were read.
  std::size_t End() {
    // An FF is never the last byte.
    if (byte_ == 0xFF) Next();
    return at_;
  }

 private:
  void Next() {
    if (at_ == data_.size()) Fail("the code stream ends within a packet");
    left_ = byte_ == 0xFF ? 7 : 8;
    byte_ = data_[at_++];
  }

  Bytes data_;
  std::size_t at_ = 0;
  std::uint32_t byte_ = 0;
  std::uint32_t left_ = 0;
};

}  // namespace tessaret::codecs
