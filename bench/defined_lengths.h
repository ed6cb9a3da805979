// The explicit little endian form with the length of every sequence and item stated. The library's own writer leaves them
// undefined, so that it need not measure ahead; files of others come in both forms.
#pragma once

#include <cstdint>
#include <vector>

#include "core/vr.h"

namespace tessaret::bench {

/// `element` with all that is nested in it.
std::vector<std::uint8_t> EncodeWithDefinedLengths(const VR& element);

}  // namespace tessaret::bench
