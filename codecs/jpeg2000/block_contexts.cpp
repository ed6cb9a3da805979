#include "jpeg2000/block_contexts.h"

#include <algorithm>

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t Bit(std::uint32_t bits, std::uint32_t at) { return bits >> at & 1; }

/// ISO/IEC 15444-1, table D.1: of low-pass bands, with the two directions exchanged for HL.
constexpr std::uint8_t AlongContext(std::uint32_t along, std::uint32_t across,
                                    std::uint32_t diagonal) {
  if (along == 2) return 8;
  if (along == 1) return across >= 1 ? 7 : diagonal >= 1 ? 6 : 5;
  if (across == 2) return 4;
  if (across == 1) return 3;
  return static_cast<std::uint8_t>(std::min(diagonal, 2U));
}

constexpr std::uint8_t DiagonalContext(std::uint32_t straight, std::uint32_t diagonal) {
  if (diagonal >= 3) return 8;
  if (diagonal == 2) return straight >= 1 ? 7 : 6;
  if (diagonal == 1) return static_cast<std::uint8_t>(3 + std::min(straight, 2U));
  return static_cast<std::uint8_t>(std::min(straight, 2U));
}

constexpr SignificanceContexts MakeSignificance(Band band) {
  SignificanceContexts contexts{};
  for (std::uint32_t bits = 0; bits < contexts.size(); ++bits) {
    const std::uint32_t vertical = Bit(bits, 1) + Bit(bits, 7);
    const std::uint32_t horizontal = Bit(bits, 3) + Bit(bits, 5);
    const std::uint32_t diagonal = Bit(bits, 0) + Bit(bits, 2) + Bit(bits, 6) + Bit(bits, 8);
    switch (band) {
      case Band::kLowLow:
      case Band::kLowHigh:
        contexts[bits] = AlongContext(horizontal, vertical, diagonal);
        break;
      case Band::kHighLow:
        contexts[bits] = AlongContext(vertical, horizontal, diagonal);
        break;
      case Band::kHighHigh:
        contexts[bits] = DiagonalContext(horizontal + vertical, diagonal);
        break;
    }
  }
  return contexts;
}

constexpr std::array<SignificanceContexts, 4> kSignificance = {
    MakeSignificance(Band::kLowLow), MakeSignificance(Band::kHighLow),
    MakeSignificance(Band::kLowHigh), MakeSignificance(Band::kHighHigh)};

/// ISO/IEC 15444-1, table D.2: what two neighbours add up to.
constexpr int Contribution(std::uint32_t bits, std::uint32_t one, std::uint32_t other) {
  const auto of = [bits](std::uint32_t at) {
    return Bit(bits, at + 1) == 0 ? 0 : Bit(bits, at) == 0 ? 1 : -1;
  };
  return std::clamp(of(one) + of(other), -1, 1);
}

/// ISO/IEC 15444-1, table D.3
constexpr std::array<std::uint8_t, 256> MakeSigns() {
  std::array<std::uint8_t, 256> contexts{};
  for (std::uint32_t bits = 0; bits < contexts.size(); ++bits) {
    int horizontal = Contribution(bits, 2, 4);
    int vertical = Contribution(bits, 0, 6);
    const bool isTurned = horizontal < 0 || (horizontal == 0 && vertical < 0);
    if (isTurned) {
      horizontal = -horizontal;
      vertical = -vertical;
    }
    const int context = kFirstSign + (horizontal == 0 ? vertical : 3 + vertical);
    contexts[bits] = static_cast<std::uint8_t>(context | (isTurned ? kSignIsTurned : 0));
  }
  return contexts;
}

}  // namespace

constinit const std::array<std::uint8_t, 256> kSignContexts = MakeSigns();

const SignificanceContexts& SignificanceContextsOf(Band band) {
  return kSignificance[static_cast<std::size_t>(band)];
}

}  // namespace tessaret::codecs
