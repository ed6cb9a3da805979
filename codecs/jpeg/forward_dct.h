// The cosine transform of blocks.
#pragma once

#include <array>

#include "jpeg/quantisation_tables.h"

namespace tessaret::codecs {

using SampleBlock = std::array<float, kBlockSize>;

/// Samples around 0, row by row, become coefficients (ITU-T T.81, A.3.3), row by row.
SampleBlock ForwardDct(const SampleBlock& samples);

}  // namespace tessaret::codecs
