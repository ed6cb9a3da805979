// The inverse cosine transform of blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/quantisation_tables.h"

namespace tessaret::codecs {

/// Dequantised coefficients, row by row: numbers of 16 bits times numbers of 16 bits.
using DctBlock = std::array<std::int32_t, kBlockSize>;

/// Writes 8 rows of 8 samples of 12 bits, `stride` samples from row to row. In whole numbers, with the rounding that most decoders
/// have: the way of Loeffler, Ligtenberg and Moschytz with constants of 13 bits, and one bit more than samples between the passes.
void InverseDct12(const DctBlock& block, std::uint16_t* to, std::size_t stride);

/// The same where all coefficients but the first are 0.
void InverseFlatDct12(std::int32_t first, std::uint16_t* to, std::size_t stride);

}  // namespace tessaret::codecs
