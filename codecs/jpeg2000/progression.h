// The order in which a tile's packets come (ISO/IEC 15444-1, B.12).
#pragma once

#include <functional>

#include "jpeg2000/coding_parameters.h"
#include "jpeg2000/tile_layout.h"

namespace tessaret::codecs {

/// Calls for each packet of the tile, by its precinct, whose `layersRead` is its layer and is counted on, until `each` says that there
/// is no other.
void ForPackets(const CodingParameters& parameters, TileLayout& tile,
                const std::function<bool(Precinct&)>& each);

}  // namespace tessaret::codecs
