// What coefficients are to be multiplied by (ITU-T T.81, B.2.4.1), and the order in which streams have them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/bounded_reader.h"

namespace tessaret::codecs {

inline constexpr std::size_t kBlockSize = 64;

/// Row times 8 plus column of the coefficients of a block, in the order of streams.
inline constexpr std::array<std::uint8_t, kBlockSize> kZigzag = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,   //
    12, 19, 26, 33, 40, 48, 41, 34, 27, 20, 13, 6,  7,  14, 21, 28,  //
    35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23, 30, 37, 44, 51,  //
    58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

/// In the order of streams.
using Quantisation = std::array<std::uint16_t, kBlockSize>;

/// Those that segments have set so far, by id.
struct QuantisationTables {
  std::array<std::optional<Quantisation>, 4> tables;

  /// Takes the tables of a DQT segment. Throws CodecFailure where it is damaged, for ids above 3 and factors of 0.
  void Read(BoundedReader segment);

  /// Throws CodecFailure where no segment has set the table of this id.
  [[nodiscard]] const Quantisation& Require(std::uint8_t id) const;
};

/// The usual table for luminance (ITU-T T.81, K.1) at a quality of 1 to 100: at 50 as it is, at 100 all ones.
Quantisation LuminanceTable(std::uint32_t quality);

/// Bytes of the DQT segment of a table, from the marker on.
void AppendTable(const Quantisation& table, unsigned id, std::vector<std::uint8_t>& stream);

}  // namespace tessaret::codecs
