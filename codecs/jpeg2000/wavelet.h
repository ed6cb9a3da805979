// The inverse wavelet transforms (ISO/IEC 15444-1, F.3), in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "jpeg2000/tile_grid.h"

namespace tessaret::codecs {

/// Transforms 5/3 without loss (integers), or 9/7 (floats). Bands lie in the samples' own rectangle: of each resolution the next lower
/// one is in the upper left, HL right of it, LH below, HH below on the right. Where each resolution lies on its grid is told from the
/// least on; the last one is all of the samples.
template <class Sample>
class InverseWavelet {
 public:
  void Run(std::span<Sample> samples, std::span<const GridArea> resolutions);

 private:
  void RunRows(Sample* samples, std::size_t stride, const GridArea& lower, const GridArea& area);
  void RunColumns(Sample* samples, std::size_t stride, const GridArea& lower, const GridArea& area);

  std::vector<Sample> low_;
  std::vector<Sample> high_;
};

extern template class InverseWavelet<std::int32_t>;
extern template class InverseWavelet<float>;

}  // namespace tessaret::codecs
