#include "base/bounded_reader.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;

constexpr std::uint64_t kHuge = std::numeric_limits<std::uint64_t>::max();

TEST(BoundedReader, ReadsNumbersInTurn) {
  const Bytes bytes = {0x01, 0x34, 0x12, 0x78, 0x56, 0x34, 0x12};
  BoundedReader reader(bytes.data(), bytes.size());
  EXPECT_EQ(reader.U8(), 0x01);
  EXPECT_EQ(reader.Little16(), 0x1234);
  EXPECT_EQ(reader.Left(), 4u);
  EXPECT_EQ(reader.Little32(), 0x12345678u);
  EXPECT_EQ(reader.Left(), 0u);
}

TEST(BoundedReader, ANumberThatIsCutOffIsNotReadAndMovesNothing) {
  const Bytes bytes = {1, 2, 3};
  BoundedReader reader(bytes.data(), bytes.size());
  EXPECT_EQ(reader.Little32(), std::nullopt);
  EXPECT_EQ(reader.Left(), 3u);
  EXPECT_EQ(reader.Little16(), 0x0201);
  EXPECT_EQ(reader.Little16(), std::nullopt);
  EXPECT_EQ(reader.U8(), 3);
  EXPECT_EQ(reader.U8(), std::nullopt);
}

TEST(BoundedReader, AnEmptyOneGivesNothing) {
  BoundedReader reader;
  EXPECT_EQ(reader.Left(), 0u);
  EXPECT_TRUE(reader.Need(0));
  EXPECT_FALSE(reader.Need(1));
  EXPECT_EQ(reader.U8(), std::nullopt);
  EXPECT_EQ(reader.NulText(), std::nullopt);
  EXPECT_TRUE(reader.Skip(0));
  EXPECT_FALSE(reader.Skip(1));
  EXPECT_TRUE(reader.Copy(nullptr, 0));
  const std::optional<BoundedReader> part = reader.Sub(0);
  ASSERT_TRUE(part);
  EXPECT_EQ(part->Left(), 0u);
}

TEST(BoundedReader, SkipGoesToTheEndAndNotPastIt) {
  const Bytes bytes = {1, 2, 3, 4};
  BoundedReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(reader.Skip(5));
  EXPECT_FALSE(reader.Skip(kHuge));
  EXPECT_TRUE(reader.Skip(3));
  EXPECT_EQ(*reader.Here(), 4);
  EXPECT_TRUE(reader.Skip(1));
  EXPECT_EQ(reader.Left(), 0u);
}

TEST(BoundedReader, CopyGivesAllOrNothing) {
  const Bytes bytes = {1, 2, 3, 4};
  BoundedReader reader(bytes.data(), bytes.size());
  Bytes taken(4, 0xEE);
  EXPECT_FALSE(reader.Copy(taken.data(), 5));
  EXPECT_EQ(taken, Bytes(4, 0xEE));
  EXPECT_TRUE(reader.Copy(taken.data(), 3));
  EXPECT_EQ(taken, (Bytes{1, 2, 3, 0xEE}));
  EXPECT_EQ(reader.Left(), 1u);
}

TEST(BoundedReader, ASubRangeEndsWhereItWasToldTo) {
  const Bytes bytes = {1, 2, 3, 4, 5};
  BoundedReader reader(bytes.data(), bytes.size());
  std::optional<BoundedReader> part = reader.Sub(3);
  ASSERT_TRUE(part);
  EXPECT_EQ(part->Left(), 3u);
  EXPECT_EQ(part->Little16(), 0x0201);
  EXPECT_EQ(part->Little16(), std::nullopt);
  EXPECT_EQ(part->U8(), 3);
  EXPECT_EQ(reader.Left(), 2u);
  EXPECT_EQ(reader.U8(), 4);
}

TEST(BoundedReader, ASubRangeThatReachesPastTheEndIsRefusedAndMovesNothing) {
  const Bytes bytes = {1, 2};
  BoundedReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(reader.Sub(3));
  EXPECT_FALSE(reader.Sub(kHuge));
  EXPECT_EQ(reader.Left(), 2u);
}

TEST(BoundedReader, TextGoesToItsNulAndTheNulIsSteppedOver) {
  const Bytes bytes = test::BytesOf(std::string_view("ab\0\0c", 5));
  BoundedReader reader(bytes.data(), bytes.size());
  EXPECT_EQ(reader.NulText(), "ab");
  EXPECT_EQ(reader.NulText(), "");
  EXPECT_EQ(reader.NulText(), std::nullopt) << "a text without its NUL is cut off";
  EXPECT_EQ(reader.Left(), 1u);
  EXPECT_EQ(reader.U8(), 'c');
}

}  // namespace
}  // namespace tessaret
