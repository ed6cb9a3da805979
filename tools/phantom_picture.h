// The picture of the phantom: nested ellipsoids, a linear ramp within, and two markers off centre, so that no flip, turn or shift
// goes unseen. It is an object in patient space (x to the left, y to the back, z to the head, in mm), and an image is what
// its pixel centres meet there: a series cut in another direction shows the same object.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tessaret::tool {

struct Vector3 {
  double x = 0;
  double y = 0;
  double z = 0;
};

/// What the user may choose.
struct PhantomShape {
  int size = 256;  // rows and columns
  int slices = 20;
  Vector3 spacing{1, 1, 1};  // mm from column to column, from row to row, from slice to slice
  bool uneven = false;       // gaps between slices vary
  bool oblique = false;      // the series is turned about all three axes
};

/// The size of the object in mm. A series that is neither uneven nor oblique shows all of it that is in its few or many slices.
struct PhantomScale {
  Vector3
      half;  // half of the extent of the head; z is never small, so that thin stacks can be turned too
  double halfStack = 0;  // half the height of the stack of slices, in which the ball lies
};

/// Where the pixels of a series lie in patient space. The centre of the series is the origin.
class PhantomGeometry {
 public:
  explicit PhantomGeometry(const PhantomShape& shape);

  /// Unit vectors: along a row to higher columns, along a column to higher rows, and from slice to slice.
  [[nodiscard]] Vector3 RowDirection() const { return row_; }
  [[nodiscard]] Vector3 ColumnDirection() const { return column_; }
  [[nodiscard]] Vector3 Normal() const { return normal_; }

  /// How far the slice is from the centre of the series along the normal, in mm.
  [[nodiscard]] double SliceOffset(int slice) const {
    return offsets_[static_cast<std::size_t>(slice)];
  }
  /// The centre of the first pixel of a slice.
  [[nodiscard]] Vector3 Position(int slice) const { return PointAt(slice, 0, 0); }
  /// The centre of a pixel.
  [[nodiscard]] Vector3 PointAt(int slice, int row, int column) const;

  /// The scale of the object.
  [[nodiscard]] const PhantomScale& Scale() const { return scale_; }
  [[nodiscard]] const PhantomShape& Shape() const { return shape_; }

 private:
  PhantomShape shape_;
  Vector3 row_;
  Vector3 column_;
  Vector3 normal_;
  PhantomScale scale_;
  std::vector<double> offsets_;
};

/// What the object is made of, from the outside inwards.
enum class Material : std::uint8_t { kAir, kSkin, kBone, kBrain, kVentricle, kBall, kRod };
inline constexpr std::size_t kMaterials = 7;

struct PhantomSample {
  Material material = Material::kAir;
  double ramp = 0;  // from 0 at the right front lower end to 1 at the left back upper end
};

/// What is at `point` in an object of that scale.
PhantomSample SampleAt(const Vector3& point, const PhantomScale& scale);

/// The value of each material, and what the ramp adds to the brain at its upper end.
struct GreyScale {
  double values[kMaterials];
  double rampHeight;
};

struct Colour {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
};

/// 16-bit pixels of one slice, row by row, little endian: the grey value of each sample, rounded. Throws Interrupted.
std::vector<std::uint8_t> DrawGrey16(const PhantomGeometry& geometry, int slice,
                                     const GreyScale& scale);
/// 8-bit pixels, likewise.
std::vector<std::uint8_t> DrawGrey8(const PhantomGeometry& geometry, int slice,
                                    const GreyScale& scale);
/// Three bytes a pixel. `colours` has one for each material; the ramp makes the brain brighter.
std::vector<std::uint8_t> DrawColour(const PhantomGeometry& geometry, int slice,
                                     const Colour (&colours)[kMaterials]);

}  // namespace tessaret::tool
