// The 16-bit strings of the public interface and their narrow forms.
#include "tessaret/string.hpp"

#include <gtest/gtest.h>

namespace tessaret {
namespace {

std::u16string Units(const String& string) { return std::u16string(string.View()); }

TEST(String, NullIsNotEmptyButEqualsIt) {
  const String null;
  const String empty("");
  EXPECT_TRUE(null.IsNull());
  EXPECT_FALSE(empty.IsNull());
  EXPECT_TRUE(null.IsEmpty());
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(null, empty);
  EXPECT_EQ(null.Units()[0], u'\0');
  EXPECT_TRUE(String(static_cast<const char*>(nullptr)).IsNull());
  EXPECT_TRUE(String(static_cast<const char16_t*>(nullptr)).IsNull());
  EXPECT_TRUE(String(nullptr).IsNull());
  EXPECT_TRUE(String(null).IsNull());
  EXPECT_FALSE(String(empty).IsNull());
  EXPECT_EQ(null.Utf8(), "");
  EXPECT_EQ(null.Narrow(), "");
}

TEST(String, ComesFromUtf8OfEveryLength) {
  // One to four bytes a character; the last is U+1D11E, whose 16-bit form is the pair D834 DD1E.
  const String string("a\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9E");
  EXPECT_EQ(Units(string), std::u16string({u'a', 0x00E4, 0x20AC, 0xD834, 0xDD1E}));
  EXPECT_EQ(string.Length(), 5u);
  EXPECT_EQ(string.Utf8(), "a\xC3\xA4\xE2\x82\xAC\xF0\x9D\x84\x9E");
}

TEST(String, TheFirstAndLastCharacterOfEachLengthComeThrough) {
  for (const char* utf8 :
       {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
        "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    const String string(utf8);
    EXPECT_EQ(string.Utf8(), utf8);
    EXPECT_EQ(string.Length(), std::string_view(utf8).size() == 4 ? 2u : 1u);
  }
}

TEST(String, ABytesThatIsNoUtf8ComesBackAsItWas) {
  // A stray continuation, a cut character, an overlong one, a surrogate, beyond the last character, a byte that never occurs.
  for (const char* bytes :
       {"\x80", "\xC3", "a\xE2\x82", "\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF",
        "\xE0\x80\x80", "\xF0\x80\x80\x80", "\xC3(", "M\xFCller"}) {
    const String string(bytes);
    EXPECT_EQ(string.Utf8(), bytes);
    EXPECT_EQ(string.Narrow(), bytes);
  }
  EXPECT_EQ(Units(String("M\xFCller")), std::u16string({u'M', 0xDCFC, u'l', u'l', u'e', u'r'}));
}

TEST(String, EveryByteComesThroughTheNarrowForm) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const String string = String::FromNarrow(bytes);
  ASSERT_EQ(string.Length(), 256u);
  for (std::size_t byte = 0; byte < 256; ++byte) EXPECT_EQ(string.Units()[byte], byte);
  EXPECT_EQ(string.Narrow(), bytes);
  EXPECT_EQ(String(string.Utf8()), string);
}

TEST(String, WhatTheNarrowFormCannotHoldIsAQuestionMark) {
  EXPECT_EQ(String("\xC3\xBF|\xC4\x80|\xE2\x82\xAC|\xF0\x9D\x84\x9E|").Narrow(), "\xFF|?|?|?|");
}

TEST(String, AHalfOfAPairBecomesTheReplacementCharacter) {
  EXPECT_EQ(String(std::u16string({u'a', 0xD834, u'b'})).Utf8(),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(String(std::u16string({0xD834})).Utf8(), "\xEF\xBF\xBD");
  EXPECT_EQ(String(std::u16string({0xDD1E})).Utf8(), "\xEF\xBF\xBD");
  EXPECT_EQ(String(std::u16string({0xD834})).Narrow(), "?");
}

TEST(String, HoldsZerosAndEndsWithOne) {
  const String string(std::u16string_view(u"a\0b", 3));
  EXPECT_EQ(string.Length(), 3u);
  EXPECT_EQ(string.Units()[3], u'\0');
  EXPECT_EQ(string.Utf8(), std::string("a\0b", 3));
  EXPECT_EQ(string.Narrow(), std::string("a\0b", 3));
  EXPECT_EQ(String(std::string("a\0b", 3)), string);
}

TEST(String, CopiesAreDeepAndMovesFree) {
  String first("one");
  const char16_t* units = first.Units();
  String copy(first);
  EXPECT_NE(copy.Units(), units);
  EXPECT_EQ(copy, first);
  const String moved(std::move(first));
  EXPECT_EQ(moved.Units(), units);
  copy = moved;
  EXPECT_EQ(copy.Utf8(), "one");
  const String& same = copy;
  copy = same;
  EXPECT_EQ(copy.Utf8(), "one");
  copy = String();
  EXPECT_TRUE(copy.IsNull());
}

TEST(String, IsOrderedByItsUnits) {
  EXPECT_LT(String("a"), String("b"));
  EXPECT_LT(String("a"), String("aa"));
  EXPECT_GT(String("b"), String("aa"));
  EXPECT_NE(String("a"), String("A"));
  EXPECT_EQ(String(u"abc"), String("abc"));
}

}  // namespace
}  // namespace tessaret
