// Pieces of marker segments as streams have them.
#pragma once

#include <cstdint>
#include <vector>

#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {

/// Two bytes, the higher first.
void AppendNumber(std::uint32_t number, std::vector<std::uint8_t>& stream);

void AppendMarker(Marker marker, std::vector<std::uint8_t>& stream);

}  // namespace tessaret::codecs
