#include "json_writer.h"

#include <gtest/gtest.h>

#include "standard_output.h"

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

/// An array of a number and `text`.
std::string Written(const std::string& text) {
  return StandardOutputOf(
      [&](Output& output) { JsonWriter(output).BeginArray().Number(1).String(text).EndArray(); });
}

TEST(JsonWriter, LongTextGoesOutInPartsOfWholeCharacters) {
  // The first part ends within the character, at one of its bytes.
  for (std::size_t before = 65530; before < 65540; ++before) {
    const std::string text =
        std::string(before, 'x') + "\xF0\x9F\x98\x80" + std::string(70000, 'y');
    EXPECT_EQ(Written(text), "[1,\"" + text + "\"]") << before;
  }
  // Latin-1 as a whole, though its beginning is UTF-8.
  std::string latin;
  std::string expected;
  for (int count = 0; count < 40000; ++count) {
    latin += "\xC3\xA4";
    expected += "\u00c3\u00a4";
  }
  EXPECT_EQ(Written(latin + '\xFF'), "[1,\"" + expected + "\u00ff\"]");
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
