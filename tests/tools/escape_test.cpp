#include "escape.h"

#include <gtest/gtest.h>

namespace tessaret::tool {
namespace {

TEST(Escape, PlainTextStaysAsItIs) {
  EXPECT_EQ(Escaped("Doe^John"), "Doe^John");
  EXPECT_EQ(Escaped(""), "");
  EXPECT_EQ(Escaped("a\\b"), "a\\b");
}

TEST(Escape, LettersOfAllLanguagesStay) {
  EXPECT_EQ(Escaped("M\xC3\xBCller"), "M\xC3\xBCller");  // u with diaeresis, U+00FC
  EXPECT_EQ(Escaped("\xE5\xB1\xB1\xE7\x94\xB0"), "\xE5\xB1\xB1\xE7\x94\xB0");  // two Han characters
  EXPECT_EQ(Escaped("\xF0\x9F\xA9\xBB"), "\xF0\x9F\xA9\xBB");                  // U+1FA7B
}

TEST(Escape, ControlCharactersOfC0AreShownAsNumbers) {
  EXPECT_EQ(Escaped("\x1b[31m"), "\\x1b[31m");
  EXPECT_EQ(Escaped(std::string_view("\0\r\n\t", 4)), "\\x00\\x0d\\x0a\\x09");
}

TEST(Escape, DeleteAndC1AreShownAsNumbers) {
  EXPECT_EQ(Escaped("\x7f"), "\\x7f");
  EXPECT_EQ(Escaped("\xC2\x9B"
                    "31m"),
            "\\xc2\\x9b31m");                  // U+009B, what a terminal takes for ESC [
  EXPECT_EQ(Escaped("\xC2\xA0"), "\xC2\xA0");  // U+00A0 is the first that is none
}

TEST(Escape, WhatTurnsTheDirectionOfReadingIsShownAsNumbers) {
  EXPECT_EQ(Escaped("\xE2\x80\xAE"
                    "txt"),
            "\\xe2\\x80\\xaetxt");                        // U+202E
  EXPECT_EQ(Escaped("\xE2\x81\xA6"), "\\xe2\\x81\\xa6");  // U+2066
  EXPECT_EQ(Escaped("\xE2\x81\xA9"), "\\xe2\\x81\\xa9");  // U+2069
  EXPECT_EQ(Escaped("\xE2\x80\xA8"), "\\xe2\\x80\\xa8");  // U+2028, a line separator
}

TEST(Escape, BytesThatAreNoUtf8AreShownAsNumbers) {
  EXPECT_EQ(Escaped("M\xFCller"), "M\\xfcller");
  EXPECT_EQ(Escaped("\x9b"
                    "31m"),
            "\\x9b31m");
  EXPECT_EQ(Escaped("\xC3"), "\\xc3");                             // cut
  EXPECT_EQ(Escaped("\xC0\xAF"), "\\xc0\\xaf");                    // longer than need be
  EXPECT_EQ(Escaped("\xED\xA0\x80"), "\\xed\\xa0\\x80");           // half of a surrogate pair
  EXPECT_EQ(Escaped("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // above U+10FFFF
}

TEST(Escape, ALongTextIsCutToItsColumns) {
  EXPECT_EQ(Escaped("0123456789", 10), "0123456789");
  EXPECT_EQ(Escaped("0123456789a", 10), "0123456...");
}

TEST(Escape, ACutFallsBetweenWholeCharactersAndWholeEscapes) {
  EXPECT_EQ(Escaped("\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC", 4), "\xC3\xBC...");
  EXPECT_EQ(Escaped("\x01\x01\x01", 9), "\\x01...");
}

TEST(Escape, AHugeTextIsNotGoneThroughForAShortPiece) {
  const std::string huge(std::size_t{1} << 28, 'x');
  EXPECT_EQ(Escaped(huge, 5), "xx...");
}

TEST(Escape, ColumnsAreCharacters) {
  EXPECT_EQ(Columns("abc"), 3u);
  EXPECT_EQ(Columns("\xC3\xBC\xE5\xB1\xB1"), 2u);
}

}  // namespace
}  // namespace tessaret::tool
