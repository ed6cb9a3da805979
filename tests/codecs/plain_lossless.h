// Lossless JPEG by the letter of ITU-T T.81, H, bit by bit and without a thought of speed: what the coder is compared with.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace tessaret::codecs::test {

/// Entropy-coded bytes from bits written as 0 and 1; blanks between them are left out. The last byte is filled up with ones, and a 0
/// goes behind each byte of ones.
tessaret::test::Bytes Packed(std::string_view bits);

/// A marker segment, with its length.
tessaret::test::Bytes SegmentOf(std::uint8_t marker, const tessaret::test::Bytes& content);

/// A Huffman table: the counts of codes of 1 to 16 bits and what they stand for.
struct PlainTable {
  std::array<std::uint8_t, 16> counts{};
  std::vector<std::uint8_t> values{};

  /// As a DHT segment has it, behind class and id.
  [[nodiscard]] tessaret::test::Bytes Content() const;
  /// The code of a value, as 0 and 1.
  [[nodiscard]] std::string CodeOf(std::uint8_t value) const;
};

/// Codes of five bits for all seventeen categories.
PlainTable FlatTable();
/// Codes of 1 to 13 bits for categories `first`, `first` + 1 and so on, modulo 17, and of 16 bits for the last four.
PlainTable SteepTable(std::uint8_t first);

struct PlainImage {
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::uint32_t components = 1;
  std::uint32_t precision = 8;
  std::vector<std::uint32_t> samples{};  // by pixel

  [[nodiscard]] std::size_t Place(std::size_t y, std::size_t x, std::size_t component) const {
    return (y * columns + x) * components + component;
  }
};

struct PlainOptions {
  std::uint32_t predictor = 1;
  std::uint32_t pointTransform = 0;
  std::uint32_t rowsPerInterval = 0;  // 0: no restart markers
  bool isInterleaved = true;          // otherwise each component has a scan of its own
  std::vector<PlainTable> tables{};   // of the components in turn; none: FlatTable for all
};

/// The whole code stream, without the bits that the point transform drops.
tessaret::test::Bytes EncodePlainly(const PlainImage& image, const PlainOptions& options);

/// Of streams with all components in one scan, whatever coder made them. Throws std::runtime_error for what is wrong.
PlainImage DecodePlainly(const tessaret::test::Bytes& stream);

}  // namespace tessaret::codecs::test
