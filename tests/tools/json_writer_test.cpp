#include "json_writer.h"

#include <gtest/gtest.h>

namespace tessaret::tool {
namespace {

TEST(JsonString, QuotesBackslashesAndControlsAreEscaped) {
  EXPECT_EQ(JsonString("a\"b\\c"), "\"a\\\"b\\\\c\"");
  EXPECT_EQ(JsonString("\n\r\t"), "\"\\n\\r\\t\"");
  EXPECT_EQ(JsonString(std::string_view("\0\x1b\x7f", 3)), "\"\\u0000\\u001b\\u007f\"");
}

TEST(JsonString, Utf8StaysButForWhatSteersATerminal) {
  EXPECT_EQ(JsonString("M\xC3\xBCller"), "\"M\xC3\xBCller\"");
  EXPECT_EQ(JsonString("\xC2\x9B"), "\"\\u009b\"");
  EXPECT_EQ(JsonString("\xE2\x80\xAE"), "\"\\u202e\"");
}

TEST(JsonString, OtherBytesAreTakenForLatin1) {
  EXPECT_EQ(JsonString("M\xFCller"), "\"M\xC3\xBCller\"");  // 0xFC is U+00FC
  EXPECT_EQ(JsonString("\x9B\xFF"), "\"\\u009b\xC3\xBF\"");
}

TEST(JsonNumber, WhatJsonTakesForANumber) {
  for (const char* text : {"0", "-0", "12", "-1.5", "0.25", "1e3", "1E-3", "1.0e+10"}) {
    EXPECT_TRUE(IsJsonNumber(text)) << text;
  }
}

TEST(JsonNumber, WhatDecimalStringsMayHoldAndJsonMayNot) {
  for (const char* text :
       {"", "-", "+1", "01", ".5", "1.", "1e", "1e+", "nan", "inf", "1 ", "1,5", "0x1"}) {
    EXPECT_FALSE(IsJsonNumber(text)) << text;
  }
}

}  // namespace
}  // namespace tessaret::tool
