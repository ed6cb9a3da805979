#include "phantom.h"

#include <algorithm>
#include <cmath>

#include "synthetic.h"

namespace tessaret::bench {
namespace {

constexpr double kAir = 24;       // -1000 HU behind an intercept of -1024
constexpr double kTissue = 1064;  // 40 HU
constexpr double kLung = 224;
constexpr double kBone = 1700;
constexpr unsigned kNoise = 64;  // numbers that the noise goes through
constexpr int kLargest = 4095;

/// Maps an index to the middle of its voxel in -1 to 1.
double Centred(std::uint32_t index, std::uint32_t count) { return (2.0 * index + 1) / count - 1; }

/// How far out a point lies in an ellipsoid around (x0, y0); 1 on its surface.
double Ellipse(double x, double y, double width, double height) {
  return x * x / (width * width) + y * y / (height * height);
}

double Density(double x, double y, double z) {
  if (Ellipse(x, y, 0.85, 0.62 + 0.05 * z) > 1) return kAir;
  if (Ellipse(x, y - 0.4, 0.1, 0.1) < 1) return kBone + 200 * std::cos(50 * z);
  const double lung = Ellipse(std::fabs(x) - 0.42, y + 0.04, 0.27, 0.4) + z * z;
  if (lung < 1) return kLung + 50 * std::sin(20 * x) * std::sin(20 * y + 15 * z);
  return kTissue + 25 * std::sin(3 * x + z) + 20 * std::cos(4 * y - 2 * z);
}

}  // namespace

std::vector<std::uint16_t> MakePhantom(const VolumeSize& size) {
  std::vector<std::uint16_t> voxels;
  voxels.reserve(size.SlicePixels() * size.slices);
  Dice dice(size.slices);
  for (std::uint32_t slice = 0; slice < size.slices; ++slice) {
    const double z = Centred(slice, size.slices);
    for (std::uint32_t row = 0; row < size.rows; ++row) {
      const double y = Centred(row, size.rows);
      for (std::uint32_t column = 0; column < size.columns; ++column) {
        const double density = Density(Centred(column, size.columns), y, z);
        const int noise = static_cast<int>(dice.Below(kNoise)) - static_cast<int>(kNoise / 2);
        const int value = std::clamp(static_cast<int>(density) + noise, 0, kLargest);
        voxels.push_back(static_cast<std::uint16_t>(value));
      }
    }
  }
  return voxels;
}

}  // namespace tessaret::bench
