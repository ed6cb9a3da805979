// The codes of quantised coefficients in sequential scans (ITU-T T.81, F.2.2).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/huffman_table.h"

namespace tessaret::codecs {

/// The value that `count` bits, 1 to 16, stand for: those that begin with 0 are negative.
inline std::int32_t SignedValue(std::uint32_t bits, unsigned count) {
  const auto value = static_cast<std::int32_t>(bits);
  return (bits >> (count - 1)) != 0 ? value : value - (std::int32_t{1} << count) + 1;
}

[[noreturn]] void FailNoCode();

/// Differences of first coefficients.
class DcCodes {
 public:
  explicit DcCodes(const HuffmanSpec& listed);

  /// `Bits` has Peek, Drop and Take as BitReader does. Requires: 32 bits are ready. Throws CodecFailure for bits that are no code.
  template <class Bits>
  std::int32_t Read(Bits& bits) const {
    const HuffmanTable::Code code = table_.Find(bits.Peek(16));
    if (code.length == 0) FailNoCode();
    bits.Drop(code.length);
    return code.value == 0 ? 0 : SignedValue(bits.Take(code.value), code.value);
  }

 private:
  HuffmanTable table_;
};

/// All other coefficients.
class AcCodes {
 public:
  /// Zeros before a value other than 0. Value 0 with kEndRun: no more in this block; with 15: sixteen zeros.
  struct Code {
    std::int16_t value = 0;
    std::uint8_t run = 0;
    std::uint8_t length = 0;  // with the bits of the value
  };
  static constexpr std::uint8_t kEndRun = 64;
  /// Codes that take no more are found in one step.
  static constexpr unsigned kShort = 11;

  explicit AcCodes(const HuffmanSpec& listed);

  /// As DcCodes::Read.
  template <class Bits>
  Code Read(Bits& bits) const {
    Code code = Short(bits.Peek(kShort));
    if (code.length == 0) [[unlikely]] {
      code = FindAny(bits.Peek(32));
      if (code.length == 0) FailNoCode();
    }
    bits.Drop(code.length);
    return code;
  }

  /// The code with which kShort bits begin; length 0 where it is longer, or none.
  [[nodiscard]] Code Short(std::uint32_t bits) const { return short_[bits]; }

 private:
  /// The code with which 32 bits begin; length 0 for none.
  [[nodiscard]] Code FindAny(std::uint32_t bits) const;

  HuffmanTable table_;
  std::array<Code, std::size_t{1} << kShort> short_{};
};

}  // namespace tessaret::codecs
