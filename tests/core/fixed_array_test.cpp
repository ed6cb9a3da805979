#include "core/fixed_array.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(FixedArray, HoldsNothingAtFirst) {
  const FixedArray<std::uint32_t, int> array(3);
  EXPECT_EQ(array.Capacity, 3u);
  EXPECT_EQ(array.Count, 0u);
}

TEST(FixedArray, KeepsKeysAndElementsInParallel) {
  FixedArray<std::uint32_t, int> array(2);
  EXPECT_EQ(array.Add(7, 70), &array.Elements[0]);
  EXPECT_EQ(array.Add(9, 90), &array.Elements[1]);
  EXPECT_EQ(array.Count, 2u);
  EXPECT_EQ(array.Keys[0], 7u);
  EXPECT_EQ(array.Keys[1], 9u);
  EXPECT_EQ(array.Elements[0], 70);
  EXPECT_EQ(array.Elements[1], 90);
}

TEST(FixedArray, AtItsLimitGivesTheLastSlotAndStoresNothing) {
  FixedArray<std::uint32_t, int> array(2);
  array.Add(7, 70);
  array.Add(9, 90);
  EXPECT_EQ(array.Add(11, 110), &array.Elements[1]);
  EXPECT_EQ(array.Count, 2u);
  EXPECT_EQ(array.Keys[1], 9u);
  EXPECT_EQ(array.Elements[1], 90);
}

TEST(FixedArray, WithoutCapacityHasNoSlotToGive) {
  FixedArray<std::uint32_t, int> array(0);
  EXPECT_EQ(array.Add(1, 1), nullptr);
  EXPECT_EQ(array.Count, 0u);
}

}  // namespace
}  // namespace tessaret
