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

/// What one Huffman table makes of bits. A look-up takes one difference or two; all but the look-up and a shift lies aside of the
/// chain from one to the next, which is what decoding waits for.
class DifferenceTable {
 public:
  /// `count` tells about how many differences there are to be read.
  DifferenceTable(const HuffmanSpec& listed, std::uint64_t count);

  /// The next `count` differences, modulo 65536. Behind the end they are made up: the caller asks the reader. Throws
  /// CodecFailure for bits that are no code, and for categories above kMostCategory.
  void Read(BitReader& reader, std::uint16_t* to, std::size_t count) const;

  /// As Read, for one difference. Requires: the reader was filled.
  std::uint16_t ReadOne(BitReader& reader) const;

 private:
  static constexpr unsigned kLookup = 12;
  /// Entries that take more bits are left out, so that two of them leave enough for a look-up.
  static constexpr unsigned kMostBits = (BitReader::kFilled - kLookup) / 2;

  /// What some bits begin with: a difference, and another one where both are whole among the bits looked up. From bit 0 on: how many
  /// bits that takes, those of the first code, 63 less those of the first difference, how many differences there are (a byte each), the
  /// second one. 0: to be looked up in another way.
  using Entry = std::uint64_t;

  [[nodiscard]] Entry EntryFor(std::uint64_t held) const {
    return entries_[held >> (64 - kLookup)];
  }
  void AddSingles(const HuffmanSpec& listed);
  void AddSeconds();
  [[nodiscard]] Entry WithSecond(Entry entry, std::uint64_t held) const;
  [[gnu::noinline]] std::uint16_t ReadRare(BitReader& reader) const;

  HuffmanTable codes_;
  std::array<Entry, std::size_t{1} << kLookup> entries_{};  // by the next bits
};

}  // namespace tessaret::codecs
