#include "core/tag.h"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(Tag, IsTheGroupTimes65536PlusTheElement) {
  EXPECT_EQ(MakeTagKey(0x0000, 0x0000), 0u);
  EXPECT_EQ(MakeTagKey(0x0002, 0x0010), 2u * 65536 + 16);
  EXPECT_EQ(MakeTagKey(0xFFFE, 0xE00D), 0xFFFEE00Du);
  EXPECT_EQ(MakeTagKey(0xFFFF, 0xFFFF), 0xFFFFFFFFu);
}

TEST(Tag, ComesApartIntoWhatItWasMadeOf) {
  for (const TagKey key : {0u, 0x00020010u, 0x7FE00010u, 0xFFFEE0DDu, 0xFFFFFFFFu, 0x0000FFFFu}) {
    EXPECT_EQ(MakeTagKey(GroupOf(key), ElementOf(key)), key);
  }
  EXPECT_EQ(GroupOf(0x7FE00010), 0x7FE0);
  EXPECT_EQ(ElementOf(0x7FE0ABCD), 0xABCD);
}

TEST(Tag, NamesTheTagsOfTheStandard) {
  EXPECT_EQ(kStructuralGroup, 0xFFFE);
  EXPECT_EQ(kItemElement, 0xE000);
  EXPECT_EQ(kItemDelimiterElement, 0xE00D);
  EXPECT_EQ(kSequenceDelimiterElement, 0xE0DD);
  EXPECT_EQ(kUndefinedLength, 0xFFFFFFFFu);
  EXPECT_EQ(kMetaGroupLengthTag, 0x00020000u);
  EXPECT_EQ(kTransferSyntaxTag, 0x00020010u);
  EXPECT_EQ(kPixelDataTag, 0x7FE00010u);
}

}  // namespace
}  // namespace tessaret
