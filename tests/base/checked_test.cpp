#include "base/checked.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

constexpr std::uint32_t kMost32 = 0xFFFFFFFFu;
constexpr std::uint64_t kMost64 = 0xFFFFFFFFFFFFFFFFu;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(CheckedAdd, GivesTheSumUpToTheLargestNumber) {
  EXPECT_EQ(CheckedAdd<std::uint32_t>(0, 0), 0u);
  EXPECT_EQ(CheckedAdd<std::uint32_t>(kMost32 - 5, 5), kMost32);
  EXPECT_EQ(CheckedAdd<std::int32_t>(-3, 2), -1);
}

TEST(CheckedAdd, GivesNothingOnePastEitherEnd) {
  EXPECT_EQ(CheckedAdd<std::uint32_t>(kMost32, 1), std::nullopt);
  EXPECT_EQ(CheckedAdd<std::uint64_t>(kMost64, kMost64), std::nullopt);
  EXPECT_EQ(CheckedAdd<std::int32_t>(std::numeric_limits<std::int32_t>::max(), 1), std::nullopt);
  EXPECT_EQ(CheckedAdd<std::int32_t>(std::numeric_limits<std::int32_t>::min(), -1), std::nullopt);
}

TEST(CheckedAdd, WatchesTypesNarrowerThanInt) {
  EXPECT_EQ(CheckedAdd<std::uint16_t>(65000, 535), 65535);
  EXPECT_EQ(CheckedAdd<std::uint16_t>(65000, 536), std::nullopt);
}

TEST(CheckedMultiply, GivesTheProductUpToTheLargestNumber) {
  EXPECT_EQ(CheckedMultiply<std::uint32_t>(65537, 65535), kMost32);
  EXPECT_EQ(CheckedMultiply<std::uint32_t>(kMost32, 0), 0u);
  EXPECT_EQ(CheckedMultiply<std::int64_t>(-4, 5), -20);
}

TEST(CheckedMultiply, GivesNothingWhenTheProductDoesNotFit) {
  EXPECT_EQ(CheckedMultiply<std::uint32_t>(65536, 65536), std::nullopt);
  EXPECT_EQ(CheckedMultiply<std::uint64_t>(1ull << 32, 1ull << 32), std::nullopt);
  EXPECT_EQ(CheckedMultiply<std::int32_t>(std::numeric_limits<std::int32_t>::min(), -1),
            std::nullopt);
}

TEST(CheckedProduct, MultipliesAllFactors) {
  // Columns, rows, samples, bytes and frames of an image.
  constexpr std::uint64_t kSide = 65535;
  constexpr std::uint64_t kFrames = 1000;
  EXPECT_EQ(CheckedProduct(kSide, kSide, std::uint64_t{3}, std::uint64_t{2}, kFrames),
            std::uint64_t{4294836225} * 6000);
  EXPECT_EQ(CheckedProduct(kFrames), 1000u);
}

TEST(CheckedProduct, GivesNothingWhenAnyStepOverflowsEvenIfALaterFactorIsZero) {
  EXPECT_EQ((CheckedProduct<std::uint32_t>(65536u, 65536u, 1u)), std::nullopt);
  EXPECT_EQ((CheckedProduct<std::uint32_t>(65536u, 65536u, 0u)), std::nullopt);
  EXPECT_EQ((CheckedProduct<std::uint32_t>(0u, 65536u, 65536u)), 0u);
}

TEST(SaturatingCast, KeepsWhatFitsAndClampsTheRest) {
  EXPECT_EQ(SaturatingCast<std::uint8_t>(255), 255);
  EXPECT_EQ(SaturatingCast<std::uint8_t>(256), 255);
  EXPECT_EQ(SaturatingCast<std::uint8_t>(-1), 0);
  EXPECT_EQ(SaturatingCast<std::int16_t>(-32769), -32768);
  EXPECT_EQ(SaturatingCast<std::int16_t>(40000u), 32767);
  EXPECT_EQ(SaturatingCast<std::int32_t>(kMost64), 2147483647);
  EXPECT_EQ(SaturatingCast<std::uint64_t>(std::numeric_limits<std::int64_t>::min()), 0u);
  EXPECT_EQ(SaturatingCast<std::int64_t>(kMost64), std::numeric_limits<std::int64_t>::max());
}

TEST(SaturatingFromFloat, CutsTowardsZero) {
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(2.999), 2);
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(-2.999), -2);
  EXPECT_EQ(SaturatingFromFloat<std::uint8_t>(-0.5), 0);
  EXPECT_EQ(SaturatingFromFloat<std::uint8_t>(254.999), 254);
}

TEST(SaturatingFromFloat, ClampsToTheEndsOfTheRange) {
  EXPECT_EQ(SaturatingFromFloat<std::uint8_t>(255.0), 255);
  EXPECT_EQ(SaturatingFromFloat<std::uint8_t>(255.9), 255);
  EXPECT_EQ(SaturatingFromFloat<std::uint8_t>(1e300), 255);
  EXPECT_EQ(SaturatingFromFloat<std::int16_t>(-32768.9), -32768);
  EXPECT_EQ(SaturatingFromFloat<std::int16_t>(-1e300), -32768);
  EXPECT_EQ(SaturatingFromFloat<std::uint32_t>(-1.0), 0u);
}

TEST(SaturatingFromFloat, GivesTheEndsForInfinityAndZeroForNaN) {
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(kInfinity), 2147483647);
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(-kInfinity),
            std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(kNaN), 0);
  EXPECT_EQ(SaturatingFromFloat<std::uint16_t>(-kNaN), 0);
  // What the processor makes of it, not what the compiler works out beforehand.
  volatile double measured = kNaN;
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(measured), 0);
  EXPECT_EQ(SaturatingFromFloat<std::int64_t>(measured), 0);
}

// 2^31 and 2^63 are doubles, the largest integers below them are not all: 2^63 - 1024 is the double just below 2^63.
TEST(SaturatingFromFloat, IsExactAtPowersOfTwoWhereTheLargestIntegerIsNoDouble) {
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(2147483647.0), 2147483647);
  EXPECT_EQ(SaturatingFromFloat<std::int32_t>(2147483648.0), 2147483647);
  EXPECT_EQ(SaturatingFromFloat<std::uint32_t>(4294967295.0), kMost32);
  EXPECT_EQ(SaturatingFromFloat<std::uint32_t>(4294967296.0), kMost32);
  EXPECT_EQ(SaturatingFromFloat<std::int64_t>(std::ldexp(1.0, 63)),
            std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(SaturatingFromFloat<std::int64_t>(std::ldexp(1.0, 63) - 1024),
            std::numeric_limits<std::int64_t>::max() - 1023);
  EXPECT_EQ(SaturatingFromFloat<std::int64_t>(-std::ldexp(1.0, 63)),
            std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(SaturatingFromFloat<std::uint64_t>(std::ldexp(1.0, 64)), kMost64);
  EXPECT_EQ(SaturatingFromFloat<std::uint64_t>(std::ldexp(1.0, 64) - 2048), kMost64 - 2047);
}

}  // namespace
}  // namespace tessaret
