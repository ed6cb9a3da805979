// Decodes the coefficients of a code block from its passes (ISO/IEC 15444-1, D).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "frame_format.h"
#include "jpeg2000/block_contexts.h"
#include "jpeg2000/mq_decoder.h"

namespace tessaret::codecs {

/// How a block's passes are coded; the bits of table A.19.
enum BlockStyle : std::uint32_t {
  kBypass = 1,
  kResetContexts = 2,
  kTerminateAll = 4,
  kVerticallyCausal = 8,
  kPredictableEnds = 16,  // tells nothing that has to be known
  kSegmentSymbols = 32,
  kHighThroughput = 64,
};

/// The pass at which a run of passes ends that are coded together, and of which this one is.
std::uint32_t EndOfPasses(std::uint32_t pass, std::uint32_t style);

/// A block may have so many at most; a coefficient then has its sign, these, and a half.
inline constexpr std::uint32_t kMostPlanes = 30;

struct BlockShape {
  std::uint32_t width = 0;   // at most 1024
  std::uint32_t height = 0;  // at most 1024; both together 4096 coefficients
  std::uint32_t planes = 0;  // of bits, at most kMostPlanes
  std::uint32_t style = 0;
  Band band = Band::kLowLow;
};

/// Bytes that belong to passes, which may be some of those that are coded together.
struct BlockPart {
  Bytes bytes;
  std::uint32_t passes = 0;
};

/// Large, and of use for any number of blocks one after the other.
class BlockDecoder {
 public:
  /// What Coefficients() are once the block's passes were decoded. Passes of planes that there are none of tell nothing. Throws CodecFailure
  /// where a segment symbol is wrong.
  void Decode(const BlockShape& shape, std::span<const BlockPart> parts);

  /// Four rows at a time lie column by column: [row / 4][column][row % 4]. The highest bit is the sign, the others are twice the size,
  /// with what is not known taken for a half.
  [[nodiscard]] const std::uint32_t* Coefficients() const { return coefficients_.data(); }

 private:
  void Begin(const BlockShape& shape);
  void ResetContexts();
  template <bool kIsCausal>
  void DecodeMqPasses(std::uint32_t pass, std::uint32_t end);
  template <bool kIsCausal>
  void DecodeRawPasses(std::uint32_t pass, std::uint32_t end);
  template <bool kIsCausal, class Bits>
  void DecodeSignificance(Bits& bits, std::uint32_t plane);
  template <class Bits>
  void DecodeRefinement(Bits& bits, std::uint32_t plane);
  template <bool kIsCausal>
  void DecodeCleanup(MqDecoder& mq, std::uint32_t plane);
  void CheckSegmentSymbol(MqDecoder& mq, std::uint32_t pass);

  static constexpr std::size_t kMostCoefficients = 4096;
  /// A column of four rows each, with one more on each side.
  static constexpr std::size_t kMostColumns = std::size_t{1024 + 2} * 3;

  BlockShape shape_;
  std::uint32_t passes_ = 0;  // that there are
  std::size_t stride_ = 0;    // of strips of four rows
  const SignificanceContexts* significance_ = nullptr;
  std::array<MqContext, kBlockContexts> contexts_;
  std::array<std::uint64_t, kMostColumns> flags_;
  std::array<std::uint32_t, kMostCoefficients> coefficients_;
  std::vector<std::uint8_t> segment_;
};

}  // namespace tessaret::codecs
