// Huffman tables as JPEG streams carry them (ITU-T T.81, B.2.4.2 and C).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/bounded_reader.h"

namespace tessaret::codecs {

/// How many codes there are of each length, and what they stand for, the shortest first.
struct HuffmanSpec {
  static constexpr std::size_t kLongest = 16;

  std::array<std::uint8_t, kLongest> counts{};  // of lengths 1 to 16
  std::array<std::uint8_t, 256> values{};
  std::size_t size = 0;  // how many values there are: the sum of the counts

  /// Throws CodecFailure where a value is above `most`.
  void RequireValues(std::uint32_t most) const;

  bool operator==(const HuffmanSpec&) const = default;
};

/// Those that segments have set so far, by id.
struct HuffmanSpecs {
  std::array<std::optional<HuffmanSpec>, 4> dc;  // and those of lossless streams
  std::array<std::optional<HuffmanSpec>, 4> ac;

  /// Takes the tables of a DHT segment. Throws CodecFailure where it is damaged, for other classes than 0 and 1, ids above 3, and
  /// tables that have more codes of a length than there can be.
  void Read(BoundedReader segment);
};

/// Throws CodecFailure where no segment has set the table of this id.
const HuffmanSpec& RequireTable(const std::array<std::optional<HuffmanSpec>, 4>& known,
                                std::uint8_t id);

/// Finds codes.
class HuffmanTable {
 public:
  struct Code {
    std::uint8_t length = 0;  // 0: there is no such code
    std::uint8_t value = 0;
  };

  explicit HuffmanTable(const HuffmanSpec& listed);

  /// The code with which these 16 bits begin.
  [[nodiscard]] Code Find(std::uint32_t bits) const {
    const Code code = short_[bits >> (HuffmanSpec::kLongest - kShort)];
    return code.length != 0 ? code : FindLong(bits);
  }

 private:
  static constexpr std::size_t kShort = 9;

  [[nodiscard]] Code FindLong(std::uint32_t bits) const;

  std::array<Code, std::size_t{1} << kShort> short_{};
  // Of each length: from which 16 bits on codes are longer, and the value's place less the code, modulo 2^32.
  std::array<std::uint32_t, HuffmanSpec::kLongest> limits_{};
  std::array<std::uint32_t, HuffmanSpec::kLongest> places_{};
  std::array<std::uint8_t, 256> values_;
};

}  // namespace tessaret::codecs
