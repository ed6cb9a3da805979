#include "jpeg/forward_dct.h"

#include <cmath>
#include <cstddef>
#include <numbers>

namespace tessaret::codecs {
namespace {

/// cosines[x][u]: what sample x gives to coefficient u of a row.
using Cosines = std::array<std::array<float, 8>, 8>;

Cosines MakeCosines() {
  Cosines cosines;
  for (std::size_t x = 0; x < 8; ++x) {
    for (std::size_t u = 0; u < 8; ++u) {
      const double angle = static_cast<double>((2 * x + 1) * u) * std::numbers::pi / 16;
      cosines[x][u] = static_cast<float>(std::cos(angle) / (u == 0 ? std::sqrt(8.0) : 2.0));
    }
  }
  return cosines;
}

/// Rows transformed, and turned to be columns.
SampleBlock TransformRows(const SampleBlock& from, const Cosines& cosines) {
  SampleBlock to;
  for (std::size_t y = 0; y < 8; ++y) {
    std::array<float, 8> sums{};
    for (std::size_t x = 0; x < 8; ++x) {
      for (std::size_t u = 0; u < 8; ++u) sums[u] += from[8 * y + x] * cosines[x][u];
    }
    for (std::size_t u = 0; u < 8; ++u) to[8 * u + y] = sums[u];
  }
  return to;
}

}  // namespace

SampleBlock ForwardDct(const SampleBlock& samples) {
  static const Cosines cosines = MakeCosines();
  return TransformRows(TransformRows(samples, cosines), cosines);
}

}  // namespace tessaret::codecs
