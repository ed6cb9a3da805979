#include <cmath>
#include <set>

#include <gtest/gtest.h>

#include "messages.h"
#include "object_builder.h"
#include "phantom_picture.h"
#include "phantom_uids.h"

namespace tessaret::tool {
namespace {

double Dot(const Vector3& a, const Vector3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Vector3 Cross(const Vector3& a, const Vector3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

PhantomShape Oblique() {
  PhantomShape shape;
  shape.oblique = true;
  return shape;
}

TEST(PhantomGeometry, TheDirectionsOfAnObliqueSeriesAreUnitVectorsAtRightAngles) {
  const PhantomGeometry geometry(Oblique());
  const Vector3 row = geometry.RowDirection();
  const Vector3 column = geometry.ColumnDirection();
  // The sums have three products each: a few units in the last place of 1.
  EXPECT_NEAR(Dot(row, row), 1, 1e-15);
  EXPECT_NEAR(Dot(column, column), 1, 1e-15);
  EXPECT_NEAR(Dot(row, column), 0, 1e-15);
  const Vector3 normal = Cross(row, column);
  EXPECT_NEAR(normal.x, geometry.Normal().x, 1e-15);
  EXPECT_NEAR(normal.y, geometry.Normal().y, 1e-15);
  EXPECT_NEAR(normal.z, geometry.Normal().z, 1e-15);
}

TEST(PhantomGeometry, TheSeriesIsCentredOnTheOrigin) {
  PhantomShape shape;
  shape.size = 64;
  shape.slices = 5;
  shape.spacing = {0.5, 2, 3};
  const PhantomGeometry geometry(shape);
  const Vector3 first = geometry.PointAt(0, 0, 0);
  const Vector3 last = geometry.PointAt(4, 63, 63);
  EXPECT_EQ(first.x, -15.75);  // 31.5 steps of 0.5
  EXPECT_EQ(first.y, -63);     // 31.5 steps of 2
  EXPECT_EQ(first.z, -6);      // 2 steps of 3
  EXPECT_EQ(last.x, 15.75);
  EXPECT_EQ(last.y, 63);
  EXPECT_EQ(last.z, 6);
}

TEST(PhantomGeometry, UnevenGapsVaryAndKeepTheirMean) {
  PhantomShape shape;
  shape.slices = 7;
  shape.uneven = true;
  shape.spacing.z = 2;
  const PhantomGeometry geometry(shape);
  std::set<double> gaps;
  for (int slice = 1; slice < 7; ++slice)
    gaps.insert(geometry.SliceOffset(slice) - geometry.SliceOffset(slice - 1));
  EXPECT_GT(gaps.size(), 3u);
  EXPECT_GT(*gaps.begin(), 0);
  EXPECT_NEAR(geometry.SliceOffset(6) - geometry.SliceOffset(0), 12,
              1e-12);  // six gaps of 2 in the mean
}

/// Materials of a slice, row by row.
std::vector<Material> MaterialsOf(const PhantomGeometry& geometry, int slice) {
  std::vector<Material> materials;
  for (int row = 0; row < geometry.Shape().size; ++row) {
    for (int column = 0; column < geometry.Shape().size; ++column) {
      materials.push_back(
          SampleAt(geometry.PointAt(slice, row, column), geometry.Scale()).material);
    }
  }
  return materials;
}

TEST(PhantomPicture, EverySliceDiffersFromItsMirrorImages) {
  for (const int slices : {1, 3, 40}) {
    PhantomShape shape;
    shape.size = 48;
    shape.slices = slices;
    const PhantomGeometry geometry(shape);
    for (int slice = 0; slice < slices; ++slice) {
      const std::vector<Material> upright = MaterialsOf(geometry, slice);
      std::vector<Material> leftRight;
      std::vector<Material> upDown;
      std::vector<Material> turned(upright.rbegin(), upright.rend());
      for (int row = 0; row < 48; ++row) {
        const auto begin = upright.begin() + row * 48;
        leftRight.insert(leftRight.end(), std::make_reverse_iterator(begin + 48),
                         std::make_reverse_iterator(begin));
        upDown.insert(upDown.begin(), begin, begin + 48);
      }
      EXPECT_NE(upright, leftRight) << slice << " of " << slices;
      EXPECT_NE(upright, upDown) << slice << " of " << slices;
      EXPECT_NE(upright, turned) << slice << " of " << slices;
    }
  }
}

TEST(PhantomPicture, ASeriesDiffersFromTheOneInReverseOrder) {
  for (const int slices : {2, 3, 20}) {
    PhantomShape shape;
    shape.size = 48;
    shape.slices = slices;
    const PhantomGeometry geometry(shape);
    EXPECT_NE(MaterialsOf(geometry, 0), MaterialsOf(geometry, slices - 1)) << slices;
  }
}

TEST(PhantomPicture, AnObliqueSeriesShowsTheSameObject) {
  PhantomShape upright;
  PhantomShape oblique = Oblique();
  const PhantomGeometry a(upright);
  const PhantomGeometry b(oblique);
  for (int row = 0; row < 256; row += 15) {
    const Vector3 point = b.PointAt(12, row, 140);
    EXPECT_EQ(SampleAt(point, a.Scale()).material, SampleAt(point, b.Scale()).material);
    EXPECT_EQ(SampleAt(point, a.Scale()).ramp, SampleAt(point, b.Scale()).ramp);
  }
}

TEST(PhantomPicture, PixelsAreTheGreyValuesOfTheirMaterials) {
  PhantomShape shape;
  shape.size = 16;
  shape.slices = 1;
  const PhantomGeometry geometry(shape);
  const GreyScale scale = {{7, 1000, 2000, 3000, 4000, 5000, 600}, 0};
  const std::vector<std::uint8_t> pixels = DrawGrey16(geometry, 0, scale);
  const std::vector<Material> materials = MaterialsOf(geometry, 0);
  ASSERT_EQ(pixels.size(), 512u);
  for (std::size_t at = 0; at < materials.size(); ++at) {
    const int value = pixels[2 * at] + 256 * pixels[2 * at + 1];
    EXPECT_EQ(value, scale.values[static_cast<std::size_t>(materials[at])]);
  }
}

TEST(DecimalString, IsTheShortestThatReadsBackOrSixteenCharacters) {
  EXPECT_EQ(DecimalString(1), "1");
  EXPECT_EQ(DecimalString(-31.5), "-31.5");
  EXPECT_EQ(DecimalString(0.1), "0.1");
  for (const double number : {60.0 / 70, -12.0 / 70, 1e-5 / 3, -123456.0 / 7, 1e21 / 7}) {
    const std::string text = DecimalString(number);
    EXPECT_LE(text.size(), 16u) << text;
    EXPECT_NEAR(std::stod(text) / number, 1, 1e-9)
        << text;  // sign, "0." and "e-06" leave ten digits at least
  }
}

TEST(PhantomUid, IsAUuidInDecimalsBelowItsRoot) {
  std::set<std::string> uids;
  for (int number = 0; number < 1000; ++number) {
    const std::string uid = UidOf("instance " + std::to_string(number));
    EXPECT_EQ(uid.rfind("2.25.", 0), 0u);
    EXPECT_LE(uid.size(), 44u);  // 2^128 has 39 digits
    EXPECT_NE(uid[5], '0');
    EXPECT_EQ(uid.find_first_not_of("0123456789", 5), std::string::npos);
    uids.insert(uid);
  }
  EXPECT_EQ(uids.size(), 1000u);
  EXPECT_EQ(UidOf("instance 1"), UidOf("instance 1"));
}

TEST(ProgressBar, SaysHowFarTheWorkIs) {
  EXPECT_EQ(ProgressBar(0, 4, "files"), "[                              ] 0 %, 0 of 4 files");
  EXPECT_EQ(ProgressBar(2, 4, "files"), "[###############               ] 50 %, 2 of 4 files");
  EXPECT_EQ(ProgressBar(9, 4, "files"), "[##############################] 100 %, 9 of 4 files");
  EXPECT_EQ(ProgressBar(7, 0, "files"), "7 files");
}

}  // namespace
}  // namespace tessaret::tool
