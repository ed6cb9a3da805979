#include "base/byte_order.h"

#include <array>
#include <cstdint>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;

TEST(ByteOrder, LoadsFollowTheStatedOrder) {
  const std::array<std::uint8_t, 4> bytes = {0x12, 0x34, 0x56, 0x78};
  EXPECT_EQ(LoadLittle16(bytes.data()), 0x3412);
  EXPECT_EQ(LoadBig16(bytes.data()), 0x1234);
  EXPECT_EQ(LoadLittle32(bytes.data()), 0x78563412u);
  EXPECT_EQ(LoadBig32(bytes.data()), 0x12345678u);
}

TEST(ByteOrder, StoresFollowTheStatedOrder) {
  Bytes bytes(12, 0);
  StoreLittle16(&bytes[0], 0x1234);
  StoreBig16(&bytes[2], 0x1234);
  StoreLittle32(&bytes[4], 0x12345678);
  StoreBig32(&bytes[8], 0x12345678);
  EXPECT_EQ(bytes, (Bytes{0x34, 0x12, 0x12, 0x34, 0x78, 0x56, 0x34, 0x12, 0x12, 0x34, 0x56, 0x78}));
}

TEST(ByteOrder, AddressesNeedNoAlignment) {
  Bytes bytes(16, 0);
  for (std::size_t at = 0; at < 8; ++at) {
    StoreBig32(&bytes[at], 0xA1B2C3D4);
    EXPECT_EQ(LoadBig32(&bytes[at]), 0xA1B2C3D4u) << at;
    EXPECT_EQ(LoadLittle32(&bytes[at]), 0xD4C3B2A1u) << at;
    EXPECT_EQ(LoadBig16(&bytes[at]), 0xA1B2) << at;
    EXPECT_EQ(LoadLittle16(&bytes[at]), 0xB2A1) << at;
  }
}

TEST(ByteOrder, SwapOf16BitUnitsLeavesAnOddLastByte) {
  Bytes bytes = {1, 2, 3, 4, 5};
  SwapBytes16(bytes.data(), bytes.size());
  EXPECT_EQ(bytes, (Bytes{2, 1, 4, 3, 5}));
}

TEST(ByteOrder, SwapOf32BitUnitsLeavesUpToThreeLastBytes) {
  Bytes bytes = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  SwapBytes32(bytes.data(), bytes.size());
  EXPECT_EQ(bytes, (Bytes{4, 3, 2, 1, 8, 7, 6, 5, 9, 10, 11}));
}

TEST(ByteOrder, SwapOfLessThanAUnitChangesNothing) {
  SwapBytes16(nullptr, 0);
  SwapBytes32(nullptr, 0);
  Bytes bytes = {1, 2, 3};
  SwapBytes16(bytes.data(), 1);
  SwapBytes32(bytes.data(), 3);
  EXPECT_EQ(bytes, (Bytes{1, 2, 3}));
}

TEST(ByteOrder, SwapOfAnUnalignedRunTouchesNothingAroundIt) {
  Bytes bytes = {0xEE, 1, 2, 3, 4, 0xEE};
  SwapBytes32(&bytes[1], 4);
  EXPECT_EQ(bytes, (Bytes{0xEE, 4, 3, 2, 1, 0xEE}));
  SwapBytes16(&bytes[1], 4);
  EXPECT_EQ(bytes, (Bytes{0xEE, 3, 4, 1, 2, 0xEE}));
}

TEST(ByteOrder, SwapOfALongRunSwapsEveryUnitAndUndoesItself) {
  // Long enough for vector code, with a rest behind the last whole vector.
  const Bytes before = test::Pattern(4 * 1021 + 3);
  Bytes swapped = before;
  SwapBytes32(swapped.data(), swapped.size());
  for (std::size_t at = 0; at + 4 <= before.size(); at += 4) {
    for (std::size_t byte = 0; byte < 4; ++byte) {
      ASSERT_EQ(swapped[at + byte], before[at + 3 - byte]) << at;
    }
  }
  SwapBytes32(swapped.data(), swapped.size());
  EXPECT_EQ(swapped, before);
  SwapBytes16(swapped.data(), swapped.size());
  for (std::size_t at = 0; at + 2 <= before.size(); at += 2) {
    ASSERT_EQ(swapped[at], before[at + 1]) << at;
    ASSERT_EQ(swapped[at + 1], before[at]) << at;
  }
  EXPECT_EQ(swapped.back(), before.back());
}

}  // namespace
}  // namespace tessaret
