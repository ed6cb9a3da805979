#include "core/offset_table.h"

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

#include "base/text.h"
#include "core/object_maker.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;

struct MadeTable {
  explicit MadeTable(std::uint32_t frames)
      : vr(0xFFFE, 0xE000, static_cast<std::uint32_t>(OffsetTableSize(frames)), true),
        table(vr, frames) {}
  VR vr;
  OffsetTable table;
};

std::string Printed(const OffsetTable& table) {
  const test::TempFolder folder;
  std::FILE* file = std::fopen(folder.File("out").c_str(), "w");
  table.Print(::fileno(file));
  std::fclose(file);
  return test::ReadText(folder.File("out"));
}

TEST(OffsetTable, HasFourBytesAFrameFromTwoFramesOn) {
  EXPECT_EQ(OffsetTableSize(0), 0u);
  EXPECT_EQ(OffsetTableSize(1), 0u);
  EXPECT_EQ(OffsetTableSize(2), 8u);
  EXPECT_EQ(OffsetTableSize(0xFFFFFFFF), 0x3FFFFFFFCu);
}

TEST(OffsetTable, HoldsWhereEachFrameBeginsInLittleEndian) {
  MadeTable made(3);
  for (const std::uint32_t size : {0x1020u, 0x11u, 5u}) {
    ASSERT_TRUE(made.table.Begin());
    made.table.Add(size);
  }
  EXPECT_EQ(test::ValueOf(made.vr), (Bytes{0, 0, 0, 0, 0x20, 0x10, 0, 0, 0x31, 0x10, 0, 0}));
  EXPECT_EQ(Printed(made.table), "0 -> 0 0\n1 -> 4128 1020\n2 -> 4145 1031\n");
  EXPECT_FALSE(made.table.Begin()) << "the table is full";
}

TEST(OffsetTable, SaysAnOffsetUpToTheLastOf32Bits) {
  MadeTable made(4);
  ASSERT_TRUE(made.table.Begin());
  made.table.Add(0xFFFFFFFF);
  ASSERT_TRUE(made.table.Begin());
  EXPECT_EQ(Printed(made.table), "0 -> 0 0\n1 -> -1 FFFFFFFF\n");
  made.table.Add(1);
  EXPECT_FALSE(made.table.Begin());
  made.table.Add(0xFFFFFFFF);
  EXPECT_FALSE(made.table.Begin()) << "the sum does not wrap";
}

TEST(OffsetTable, PrintsAnyNumberOfFrames) {
  // Lines of up to 15 characters, far more than go into one write.
  constexpr std::uint32_t kFrames = 2000;
  MadeTable made(kFrames);
  std::string expected;
  for (std::uint32_t frame = 0; frame < kFrames; ++frame) {
    ASSERT_TRUE(made.table.Begin());
    made.table.Add(8);
    expected += Format("%u -> %u %X\n", frame, frame * 8, frame * 8);
  }
  EXPECT_EQ(Printed(made.table), expected);
}

TEST(OffsetTable, OfOneFrameIsEmptyAndPrintsNothing) {
  MadeTable made(1);
  EXPECT_TRUE(made.table.Begin());
  made.table.Add(100);
  EXPECT_EQ(made.vr.Data, nullptr);
  EXPECT_EQ(Printed(made.table), "");
}

}  // namespace
}  // namespace tessaret
