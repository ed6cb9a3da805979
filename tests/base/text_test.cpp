#include "base/text.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(Format, PutsValuesIntoTheText) {
  EXPECT_EQ(Format("(%4.4X)[%6d] %s", 0x2Au, -1, "x"), "(002A)[    -1] x");
  EXPECT_EQ(Format("plain %%"), "plain %");
}

TEST(Format, GivesTextsOfAnyLengthWhole) {
  const std::string words(100000, 'w');
  EXPECT_EQ(Format("<%s>", words.c_str()), "<" + words + ">");
  EXPECT_EQ(Format("%s", ""), "");
}

TEST(Format, KeepsANulThatAValuePutsIn) { EXPECT_EQ(Format("a%cb", 0), std::string("a\0b", 3)); }

TEST(FormatFixed, GivesSixDigitsBehindThePoint) {
  EXPECT_EQ(FormatFixed(0), "0.000000");
  EXPECT_EQ(FormatFixed(-0.0), "-0.000000");
  EXPECT_EQ(FormatFixed(1.5), "1.500000");
  EXPECT_EQ(FormatFixed(-1234567.125), "-1234567.125000");
  EXPECT_EQ(FormatFixed(1e-7), "0.000000");
}

// 2^-7 = 0.0078125 and its odd multiples lie half way between two numbers of six digits; ties go to the even digit.
TEST(FormatFixed, RoundsTheExactValueWithTiesToTheEvenDigit) {
  EXPECT_EQ(FormatFixed(0.0078125), "0.007812");
  EXPECT_EQ(FormatFixed(3 * 0.0078125), "0.023438");
  // The doubles beside these are 0.99999950000000004... and 0.00000049999999999...
  EXPECT_EQ(FormatFixed(0.9999995), "1.000000");
  EXPECT_EQ(FormatFixed(0.0000005), "0.000000");
}

TEST(FormatFixed, GivesTheLargestDoubleWhole) {
  const std::string text = FormatFixed(-std::numeric_limits<double>::max());
  // 1.797...e308 has 309 digits before its point.
  EXPECT_EQ(text.size(), 1 + 309 + 1 + 6u);
  EXPECT_EQ(text.substr(0, 19), "-179769313486231570");
  EXPECT_EQ(text.substr(text.size() - 7), ".000000");
}

TEST(FormatFixed, NamesWhatIsNoNumber) {
  const double infinity = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(FormatFixed(infinity), "inf");
  EXPECT_EQ(FormatFixed(-infinity), "-inf");
  EXPECT_EQ(FormatFixed(nan), "nan");
  EXPECT_EQ(FormatFixed(-nan), "-nan");
}

TEST(IsPrintable, IsTrueFromBlankToTilde) {
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_EQ(IsPrintable(static_cast<std::uint8_t>(byte)), byte >= 32 && byte <= 126) << byte;
  }
}

TEST(IsSpace, KnowsTheSixBlanksAndNoOther) {
  const std::string_view blanks = " \t\n\v\f\r";
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    EXPECT_EQ(IsSpace(c), blanks.find(c) != std::string_view::npos) << code;
  }
}

TEST(HexDigit, KnowsDigitsOfEitherCaseAndNoOther) {
  const std::string_view lower = "0123456789abcdef";
  const std::string_view upper = "0123456789ABCDEF";
  for (int code = 0; code < 256; ++code) {
    const char c = static_cast<char>(code);
    int expected = -1;
    if (lower.find(c) != std::string_view::npos) expected = static_cast<int>(lower.find(c));
    if (upper.find(c) != std::string_view::npos) expected = static_cast<int>(upper.find(c));
    EXPECT_EQ(HexDigit(c), expected) << code;
  }
}

TEST(IsSameIgnoringCase, LooksAtAsciiLettersOnly) {
  EXPECT_TRUE(IsSameIgnoringCase("Tessaret.AZ", "tESSARET.az"));
  EXPECT_TRUE(IsSameIgnoringCase("", ""));
  EXPECT_FALSE(IsSameIgnoringCase("ab", "abc"));
  EXPECT_FALSE(IsSameIgnoringCase("abc", "ab"));
  EXPECT_FALSE(IsSameIgnoringCase("@[", "`{"));
  EXPECT_FALSE(IsSameIgnoringCase("\xC4", "\xE4"));
}

TEST(Trimmed, CutsBlanksAndNulsAtBothEndsOnly) {
  using namespace std::string_view_literals;
  EXPECT_EQ(Trimmed(" \t\r\n\v\f\0a b\0c \0"sv), "a b\0c"sv);
  EXPECT_EQ(Trimmed("ab"), "ab");
  EXPECT_EQ(Trimmed("  \0 "sv), "");
  EXPECT_EQ(Trimmed(""), "");
  EXPECT_EQ(Trimmed({}), "");
}

TEST(Trimmed, LeavesBytesAbove127) {
  // NO-BREAK SPACE of Latin-1 and letters of UTF-8 are no blanks here, whatever the locale says.
  EXPECT_EQ(Trimmed("\xA0\xC3\xA9\xA0"), "\xA0\xC3\xA9\xA0");
}

}  // namespace
}  // namespace tessaret
