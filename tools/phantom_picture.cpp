#include "phantom_picture.h"

#include <algorithm>
#include <cmath>

#include "base/byte_order.h"
#include "base/checked.h"
#include "interrupt.h"

namespace tessaret::tool {
namespace {

/// Where the unit vectors of the patient go in an oblique series: the turn by the quaternion (8, 1, 2, 1), whose matrix is
/// made of whole numbers over 70.
constexpr double kTurnDivisor = 70;
constexpr Vector3 kTurnedRow{60 / kTurnDivisor, 20 / kTurnDivisor, -30 / kTurnDivisor};
constexpr Vector3 kTurnedColumn{-12 / kTurnDivisor, 66 / kTurnDivisor, 20 / kTurnDivisor};
constexpr Vector3 kTurnedNormal{34 / kTurnDivisor, -12 / kTurnDivisor, 60 / kTurnDivisor};

/// Gaps of an uneven series as parts of the spacing. Their mean is 1.
constexpr double kUnevenGaps[] = {1, 1.25, 0.75, 1.5, 1, 0.5};

/// Centre and half axes as parts of half the extent.
struct Ellipsoid {
  Material material;
  Vector3 centre;
  Vector3 half;
};

/// The later ones lie in the earlier ones and hide them.
constexpr Ellipsoid kEllipsoids[] = {
    {Material::kSkin, {0, 0, 0}, {0.86, 0.94, 1.40}},
    {Material::kBone, {0, 0, 0}, {0.80, 0.88, 1.32}},
    {Material::kBrain, {0, 0, 0}, {0.72, 0.80, 1.22}},
    {Material::kVentricle, {0.12, 0.10, 0}, {0.12, 0.34, 0.80}},
    {Material::kVentricle, {-0.12, 0.10, 0}, {0.12, 0.30, 0.70}},
    {Material::kRod, {0.40, -0.42, 0.10}, {0.08, 0.08, 1.10}},
};
/// Its z is a part of half the stack, so that its upper and lower slices differ however many they are.
constexpr Ellipsoid kBall = {Material::kBall, {-0.36, 0.30, 0.40}, {0.14, 0.14, 0.45}};

double Square(double value) { return value * value; }

bool Holds(const Ellipsoid& ellipsoid, const Vector3& part) {
  return Square((part.x - ellipsoid.centre.x) / ellipsoid.half.x) +
             Square((part.y - ellipsoid.centre.y) / ellipsoid.half.y) +
             Square((part.z - ellipsoid.centre.z) / ellipsoid.half.z) <=
         1;
}

std::vector<double> SliceOffsets(const PhantomShape& shape) {
  std::vector<double> offsets;
  double offset = -(shape.slices - 1) * shape.spacing.z / 2;
  for (int slice = 0; slice < shape.slices; ++slice) {
    offsets.push_back(offset);
    const double gap =
        shape.uneven ? kUnevenGaps[static_cast<std::size_t>(slice) % std::size(kUnevenGaps)] : 1;
    offset += gap * shape.spacing.z;
  }
  return offsets;
}

PhantomScale ScaleOf(const PhantomShape& shape) {
  PhantomScale scale;
  scale.halfStack = shape.slices * shape.spacing.z / 2;
  scale.half.x = shape.size * shape.spacing.x / 2;
  scale.half.y = shape.size * shape.spacing.y / 2;
  scale.half.z = std::max(scale.halfStack, std::min(scale.half.x, scale.half.y));
  return scale;
}

/// `from` plus `direction` times `length`.
Vector3 Along(const Vector3& from, const Vector3& direction, double length) {
  return {from.x + direction.x * length, from.y + direction.y * length,
          from.z + direction.z * length};
}

double GreyOf(const PhantomSample& sample, const GreyScale& scale) {
  const double ramp = sample.material == Material::kBrain ? sample.ramp * scale.rampHeight : 0;
  return scale.values[static_cast<std::size_t>(sample.material)] + ramp;
}

/// Calls `put(sample)` for each pixel, row by row.
template <class Put>
void ForEachPixel(const PhantomGeometry& geometry, int slice, Put put) {
  for (int row = 0; row < geometry.Shape().size; ++row) {
    StopIfInterrupted();
    for (int column = 0; column < geometry.Shape().size; ++column) {
      put(SampleAt(geometry.PointAt(slice, row, column), geometry.Scale()));
    }
  }
}

std::size_t PixelCount(const PhantomGeometry& geometry) {
  const auto size = static_cast<std::size_t>(geometry.Shape().size);
  return size * size;
}

}  // namespace

PhantomGeometry::PhantomGeometry(const PhantomShape& shape)
    : shape_(shape),
      row_(shape.oblique ? kTurnedRow : Vector3{1, 0, 0}),
      column_(shape.oblique ? kTurnedColumn : Vector3{0, 1, 0}),
      normal_(shape.oblique ? kTurnedNormal : Vector3{0, 0, 1}),
      scale_(ScaleOf(shape)),
      offsets_(SliceOffsets(shape)) {}

Vector3 PhantomGeometry::PointAt(int slice, int row, int column) const {
  const double middle = (shape_.size - 1) / 2.0;
  Vector3 point = Along({}, normal_, SliceOffset(slice));
  point = Along(point, row_, (column - middle) * shape_.spacing.x);
  return Along(point, column_, (row - middle) * shape_.spacing.y);
}

PhantomSample SampleAt(const Vector3& point, const PhantomScale& scale) {
  const Vector3 part{point.x / scale.half.x, point.y / scale.half.y, point.z / scale.half.z};
  PhantomSample sample;
  sample.ramp = std::clamp((part.x + part.y + part.z + 3) / 6, 0.0, 1.0);
  for (const Ellipsoid& ellipsoid : kEllipsoids) {
    if (Holds(ellipsoid, part)) sample.material = ellipsoid.material;
  }
  if (Holds(kBall, {part.x, part.y, point.z / scale.halfStack})) sample.material = kBall.material;
  return sample;
}

std::vector<std::uint8_t> DrawGrey16(const PhantomGeometry& geometry, int slice,
                                     const GreyScale& scale) {
  std::vector<std::uint8_t> pixels(PixelCount(geometry) * 2);
  std::uint8_t* at = pixels.data();
  ForEachPixel(geometry, slice, [&](const PhantomSample& sample) {
    StoreLittle16(at, SaturatingCast<std::uint16_t>(std::lround(GreyOf(sample, scale))));
    at += 2;
  });
  return pixels;
}

std::vector<std::uint8_t> DrawGrey8(const PhantomGeometry& geometry, int slice,
                                    const GreyScale& scale) {
  std::vector<std::uint8_t> pixels;
  pixels.reserve(PixelCount(geometry));
  ForEachPixel(geometry, slice, [&](const PhantomSample& sample) {
    pixels.push_back(SaturatingCast<std::uint8_t>(std::lround(GreyOf(sample, scale))));
  });
  return pixels;
}

std::vector<std::uint8_t> DrawColour(const PhantomGeometry& geometry, int slice,
                                     const Colour (&colours)[kMaterials]) {
  std::vector<std::uint8_t> pixels;
  pixels.reserve(PixelCount(geometry) * 3);
  ForEachPixel(geometry, slice, [&](const PhantomSample& sample) {
    const Colour& colour = colours[static_cast<std::size_t>(sample.material)];
    const double light = sample.material == Material::kBrain ? 0.5 + sample.ramp / 2 : 1;
    for (const std::uint8_t part : {colour.red, colour.green, colour.blue}) {
      pixels.push_back(SaturatingCast<std::uint8_t>(std::lround(part * light)));
    }
  });
  return pixels;
}

}  // namespace tessaret::tool
