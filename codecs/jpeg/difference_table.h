// Differences out of the entropy-coded data of lossless JPEG (ITU-T T.81, H.1.2.2).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/bit_reader.h"
#include "jpeg/huffman_table.h"

namespace tessaret::codecs {

/// The most bits that a difference may have; one of so many is 32768 and stands without them.
inline constexpr unsigned kMostCategory = 16;

/// What one Huffman table makes of bits. A step takes the code and the difference's bits at once, and all but the look-up itself lies
/// aside of the chain from one step to the next.
class DifferenceTable {
 public:
  /// Throws CodecFailure for categories above kMostCategory.
  explicit DifferenceTable(const HuffmanSpec& spec);

  /// The next `count` differences, modulo 65536. Behind the end they are made up: the caller asks the reader. Throws
  /// CodecFailure for bits that are no code.
  void Read(BitReader& reader, std::uint16_t* to, std::size_t count) const;

  /// As Read, for one difference. Takes no more than kMostAtOnce bits, but for rare codes, for which it fills the reader.
  std::uint16_t Next(BitReader& reader) const {
    const std::uint64_t held = reader.Held();
    const std::uint32_t entry = entries_[held >> (64 - kLookup)];
    if (entry == 0) [[unlikely]]
      return NextRare(reader);
    reader.Drop(entry & 63);
    // The bits of the difference, highest; one that begins with 0 is negative and has all of them turned round.
    const std::uint64_t bits = held << ((entry >> 8) & 63);
    const auto turn = ~static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> 63);
    const std::uint64_t size = (bits ^ turn) >> 1 >> ((entry >> 16) & 63);
    return static_cast<std::uint16_t>((size ^ turn) - turn);
  }

  static constexpr unsigned kLookup = 12;
  static constexpr unsigned kMostAtOnce = kLookup + kMostCategory - 1;

 private:
  [[gnu::cold]] std::uint16_t NextRare(BitReader& reader) const {
    reader.Fill();
    const HuffmanTable::Code code = codes_.Find(reader.Peek(HuffmanSpec::kLongest));
    if (code.length == 0) FailCode();
    reader.Drop(code.length);
    if (code.value == kMostCategory) return 0x8000;
    if (code.value == 0) return 0;
    const std::uint32_t bits = reader.Take(code.value);
    const bool isNegative = bits >> (code.value - 1) == 0;
    return static_cast<std::uint16_t>(isNegative ? bits - (1u << code.value) + 1 : bits);
  }
  [[noreturn]] static void FailCode();

  HuffmanTable codes_;
  // By the next bits: how many the code and the difference take, the code alone, and 63 less the difference. 0 for rare ones.
  std::array<std::uint32_t, std::size_t{1} << kLookup> entries_{};
};

}  // namespace tessaret::codecs
