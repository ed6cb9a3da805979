// From what wavelets give for each component to samples of a frame (ISO/IEC 15444-1, G).
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "frame_format.h"
#include "jpeg2000/tile_grid.h"

namespace tessaret::codecs {

/// The samples of a tile's component, of which only one kind is there.
struct SamplePlane {
  bool isReversible = true;
  std::vector<std::int32_t> integers;
  std::vector<float> reals;
};

/// Turns the first three planes, where there are as many, back into red, green and blue. Throws CodecFailure where they are of
/// different kinds.
void TransformColoursBack(std::span<SamplePlane> planes);

struct SampleFormat {
  std::uint32_t precision = 8;
  bool isSigned = false;
  std::uint32_t bytes = 1;  // 1 or 2
};

/// Writes the planes to `area` of a frame of so many columns, as patterns of `precision` bits.
void WriteSamples(std::span<const SamplePlane> planes, const GridArea& area, std::uint32_t columns,
                  const SampleFormat& format, MutableBytes frame);

}  // namespace tessaret::codecs
