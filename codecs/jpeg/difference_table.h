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

  /// As Read, for one difference. Requires: the reader was filled.
  std::uint16_t ReadOne(BitReader& reader) const;

 private:
  static constexpr unsigned kLookup = 12;
  static constexpr unsigned kMostAtOnce = kLookup + kMostCategory - 1;

  /// The difference in a look-up's entry, which is not 0, and the bits that it was looked up by.
  static std::uint16_t DifferenceOf(std::uint32_t entry, std::uint64_t held) {
    // Its bits, highest; those of a negative one begin with 0 and are all turned round.
    const std::uint64_t bits = held << ((entry >> 8) & 63);
    const auto turn = ~static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> 63);
    const std::uint64_t size = (bits ^ turn) >> 1 >> ((entry >> 16) & 63);
    return static_cast<std::uint16_t>((size ^ turn) - turn);
  }
  [[nodiscard]] std::uint32_t EntryFor(std::uint64_t held) const {
    return entries_[held >> (64 - kLookup)];
  }
  [[gnu::noinline]] std::uint16_t ReadRare(BitReader& reader) const;

  HuffmanTable codes_;
  // By the next bits: how many the code and the difference take, the code alone, and 63 less the difference. 0 for rare ones.
  std::array<std::uint32_t, std::size_t{1} << kLookup> entries_{};
};

}  // namespace tessaret::codecs
