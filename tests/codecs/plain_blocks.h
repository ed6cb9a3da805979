// Code blocks of JPEG 2000 by the letter of ISO/IEC 15444-1, C and D, one coefficient at a time: what the block decoder is compared with.
#pragma once

#include <cstdint>
#include <vector>

#include "jpeg2000/block_decoder.h"

namespace tessaret::codecs::test {

/// The decoder of the flow charts of C.3, with a state for each context.
class PlainMq {
 public:
  explicit PlainMq(Bytes segment);

  struct Context {
    std::uint32_t row = 0;  // of table C.2
    std::uint32_t likely = 0;
  };
  std::uint32_t Decode(Context& context);

 private:
  [[nodiscard]] std::uint32_t ByteAt(std::size_t at) const;
  void ByteIn();
  void Renormalise();

  Bytes segment_;
  std::size_t at_ = 0;
  std::uint32_t c_ = 0;
  std::uint32_t a_ = 0;
  std::uint32_t ct_ = 0;
};

/// The encoder of the flow charts of C.2: all decisions of one segment, each with its context.
struct PlainDecision {
  std::uint32_t context = 0;
  std::uint32_t symbol = 0;
};
std::vector<std::uint8_t> EncodePlainly(const std::vector<PlainDecision>& decisions,
                                        std::vector<PlainMq::Context> contexts);

/// Twice the coefficients with their signs, row by row, with what is not known taken for a half. The shape's band and style count.
std::vector<std::int64_t> DecodePlainly(const BlockShape& shape,
                                        const std::vector<BlockPart>& parts);

}  // namespace tessaret::codecs::test
