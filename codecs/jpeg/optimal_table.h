// The Huffman tables that give the shortest code streams (ITU-T T.81, K.2).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "jpeg/huffman_table.h"

namespace tessaret::codecs {

/// For values that come so often, by value, at most 256. There is a code for each that comes at all, none of more than 16 bits and none of
/// ones alone.
HuffmanSpec OptimalTable(std::span<const std::uint64_t> frequencies);

struct HuffmanCode {
  std::uint16_t bits = 0;
  std::uint8_t length = 0;  // 0: the table has none for the value
};

/// The codes of a table, by value.
std::array<HuffmanCode, 256> CodesOf(const HuffmanSpec& listed);

/// Bytes of the DHT segment of a table, from the marker on.
void AppendTable(const HuffmanSpec& listed, unsigned tableClass, unsigned id,
                 std::vector<std::uint8_t>& stream);

}  // namespace tessaret::codecs
