#include "tag_text.h"

#include <gtest/gtest.h>

namespace tessaret::tool {
namespace {

TEST(TagText, ATagIsWrittenInLowerCase) { EXPECT_EQ(TagText(0x7FE0, 0x0010), "(7fe0,0010)"); }

TEST(TagText, EveryUsualSpellingIsRead) {
  for (const char* text : {"(7FE0,0010)", "7fe0,0010", "7Fe00010"}) {
    EXPECT_EQ(ParseTag(text), TagKey{0x7FE00010}) << text;
  }
}

TEST(TagText, WhatIsNoTagIsNotTakenForOne) {
  for (const char* text : {"", "PatientName", "7fe0", "7fe0,001", "7fe0,00100", "(7fe00010",
                           "(7fe00010)", "7fe00,010", "50xx,3000", "7fe0 0010", "0x7fe00010"}) {
    EXPECT_EQ(ParseTag(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace tessaret::tool
