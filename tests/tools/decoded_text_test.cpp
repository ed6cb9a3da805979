#include "decoded_text.h"

#include <gtest/gtest.h>

#include "support/build_kind.h"

namespace tessaret::tool {
namespace {

constexpr VrCode kName = type_code::PN;
constexpr VrCode kLongText = type_code::LT;

std::string Decoded(const char* sets, VrCode type, std::string_view bytes) {
  return DecodedText(CharacterSets(sets), type, bytes);
}

// The names below are those of DICOM PS3.5, annexes H to K, with the bytes that stand there.

TEST(DecodedText, TheJapaneseNameOfAnnexH31) {
  EXPECT_EQ(
      Decoded(
          "\\ISO 2022 IR 87", kName,
          "Yamada^Tarou=\x1b$B;3ED\x1b(B^\x1b$BB@O:\x1b(B=\x1b$B$d$^$@\x1b(B^\x1b$B$?$m$&\x1b(B"),
      "Yamada^Tarou=\u5c71\u7530^\u592a\u90ce=\u3084\u307e\u3060^\u305f\u308d\u3046");
}

TEST(DecodedText, TheJapaneseNameOfAnnexH32) {
  EXPECT_EQ(Decoded("ISO 2022 IR 13\\ISO 2022 IR 87", kName,
                    "\xd4\xcf\xc0\xde^\xc0\xdb\xb3=\x1b$B;3ED\x1b(J^\x1b$BB@O:\x1b(J="
                    "\x1b$B$d$^$@\x1b(J^\x1b$B$?$m$&\x1b(J"),
            "\uff94\uff8f\uff80\uff9e^\uff80\uff9b\uff73=\u5c71\u7530^\u592a\u90ce="
            "\u3084\u307e\u3060^\u305f\u308d\u3046");
}

TEST(DecodedText, TheKoreanNameOfAnnexI) {
  EXPECT_EQ(Decoded("\\ISO 2022 IR 149", kName,
                    "Hong^Gildong=\x1b$)C\xfb\xf3^\x1b$)C\xd1\xce\xd4\xd7="
                    "\x1b$)C\xc8\xab^\x1b$)C\xb1\xe6\xb5\xbf"),
            "Hong^Gildong=\u6d2a^\u5409\u6d1e=\ud64d^\uae38\ub3d9");
}

TEST(DecodedText, TheChineseNamesOfAnnexJ) {
  EXPECT_EQ(Decoded("ISO_IR 192", kName, "Wang^XiaoDong=\xe7\x8e\x8b^\xe5\xb0\x8f\xe6\x9d\xb1="),
            "Wang^XiaoDong=\u738b^\u5c0f\u6771=");
  for (const char* sets : {"GB18030", "GBK"}) {
    EXPECT_EQ(Decoded(sets, kName, "Wang^XiaoDong=\xcd\xf5^\xd0\xa1\xb6\xab="),
              "Wang^XiaoDong=\u738b^\u5c0f\u4e1c=");
  }
}

TEST(DecodedText, TheChineseNameAndTheLinesOfAnnexK) {
  const char* sets = "\\ISO 2022 IR 58";
  EXPECT_EQ(Decoded(sets, kName, "Zhang^XiaoDong=\x1b$)A\xd5\xc5^\x1b$)A\xd0\xa1\xb6\xab="),
            "Zhang^XiaoDong=\u5f20^\u5c0f\u4e1c=");
  EXPECT_EQ(
      Decoded(sets, kLongText,
              "1. \x1b$)A\xb5\xda\xd2\xbb\xd0\xd0\xce\xc4\xd7\xd6\xa1\xa3\r\n"
              "2. \x1b$)A\xb5\xda\xb6\xfe\xd0\xd0\xce\xc4\xd7\xd6\xa1\xa3\r\n"),
      "1. \u7b2c\u4e00\u884c\u6587\u5b57\u3002\r\n2. \u7b2c\u4e8c\u884c\u6587\u5b57\u3002\r\n");
}

TEST(DecodedText, NamesInOneByte) {
  struct Row {
    const char* sets;
    const char* bytes;
    const char* text;
  };
  constexpr Row kRows[] = {
      {"ISO_IR 100", "Buc^J\xe9r\xf4me", "Buc^J\u00e9r\u00f4me"},
      {"ISO_IR 101", "Wa\xb3\xeasa", "Wa\u0142\u0119sa"},
      {"ISO_IR 109", "\xc6\xfe", "\u0108\u015d"},
      {"ISO_IR 110", "\xa2", "\u0138"},
      {"ISO_IR 144", "\xbb\xee\xda\x63\x65\xdc\xd1yp\xd3",
       "\u041b\u044e\u043ace\u043c\u0431yp\u0433"},
      {"ISO_IR 127", "\xe2\xc8\xc7\xe6\xea^\xe4\xe6\xd2\xc7\xd1",
       "\u0642\u0628\u0627\u0646\u064a^\u0644\u0646\u0632\u0627\u0631"},
      {"ISO_IR 126", "\xc4\xe9\xef\xed\xf5\xf3\xe9\xef\xf2",
       "\u0394\u03b9\u03bf\u03bd\u03c5\u03c3\u03b9\u03bf\u03c2"},
      {"ISO_IR 138", "\xf9\xf8\xe5\xef^\xe3\xe1\xe5\xf8\xe4",
       "\u05e9\u05e8\u05d5\u05df^\u05d3\u05d1\u05d5\u05e8\u05d4"},
      {"ISO_IR 148", "\xc7\xf0", "\u00c7\u011f"},
      {"ISO_IR 203", "\xa4\xbd", "\u20ac\u0153"},
      {"ISO_IR 166", "\xb9\xd2\xc2", "\u0e19\u0e32\u0e22"},
      {"ISO_IR 13", "\xd4\xcf", "\uff94\uff8f"},
  };
  for (const Row& row : kRows) EXPECT_EQ(Decoded(row.sets, kName, row.bytes), row.text) << row.sets;
}

TEST(DecodedText, TheSupplementarySetOfJapaneseHasItsOwnEscape) {
  // JIS X 0212, 0x3021: U+4E02.
  EXPECT_EQ(Decoded("\\ISO 2022 IR 159", kName, "\x1b$(D0!\x1b(B^a"), "\u4e02^a");
}

TEST(DecodedText, WhatWasSwitchedEndsWithALineAComponentAndAValue) {
  const char* sets = "ISO 2022 IR 100\\ISO 2022 IR 126";
  // 0xE4 is a with diaeresis in the first set and delta in the second.
  EXPECT_EQ(Decoded(sets, kLongText, "\x1b-F\xe4 \xe4\n\xe4"), "\u03b4 \u03b4\n\u00e4");
  for (const char* end : {"\r", "\f", "\t", "\x01"}) {
    EXPECT_EQ(Decoded(sets, kLongText, std::string("\x1b-F\xe4") + end + "\xe4"),
              std::string("\u03b4") + end + "\u00e4");
  }
  EXPECT_EQ(Decoded(sets, kName, "\x1b-F\xe4^\xe4=\x1b-F\xe4=\xe4\\\xe4"),
            "\u03b4^\u00e4=\u03b4=\u00e4\\\u00e4");
  EXPECT_EQ(Decoded(sets, type_code::LO, "\x1b-F\xe4^=\xe4\\\xe4"), "\u03b4^=\u03b4\\\u00e4");
  // No delimiter in a text that has one value.
  EXPECT_EQ(Decoded(sets, kLongText, "\x1b-F\xe4\\\xe4"), "\u03b4\\\u03b4");
}

TEST(DecodedText, BytesOfPairsAreNoDelimiters) {
  // 0x5C is the second byte of U+65EC in JIS X 0208 and of U+616D in GBK.
  const auto japanese =
      DecodedValues(CharacterSets("\\ISO 2022 IR 87"), type_code::LO, "\x1b$B=\\\x1b(B\\b");
  EXPECT_EQ(japanese, (std::vector<std::string>{"\u65ec", "b"}));
  const auto chinese = DecodedValues(CharacterSets("GBK"), type_code::LO, "\x91\x5c\\b");
  EXPECT_EQ(chinese, (std::vector<std::string>{"\u616d", "b"}));
}

TEST(DecodedText, CharactersOfGb18030HaveUpToFourBytes) {
  // U+00E4 and U+1F600, and a digit that is none of them behind a pair.
  EXPECT_EQ(Decoded("GB18030", kName,
                    "\x81\x30\x8a\x31\x94\x39\xfc\x36\xcd\xf5"
                    "0"),
            "\u00e4\U0001f600\u738b0");
  // GBK has two at most.
  EXPECT_EQ(Decoded("GBK", kName, "\x81\x30\x8a\x36"), "\\x810\\x8a6");
}

TEST(DecodedText, BytesThatAreNoCharactersAreShown) {
  EXPECT_EQ(Decoded("ISO_IR 192", kName, "a\xff\xc3"), "a\\xff\\xc3");
  EXPECT_EQ(Decoded("ISO_IR 6", kName, "a\xe4"), "a\\xe4");
  EXPECT_EQ(Decoded("ISO_IR 100", kName, "a\x85"), "a\\x85");
  EXPECT_EQ(Decoded("ISO_IR 127", kName, "\xa1"), "\\xa1");
  EXPECT_EQ(Decoded("ISO_IR 13", kName, "\xe0"), "\\xe0");
  EXPECT_EQ(Decoded("GB18030", kName, "\x81"), "\\x81");
  EXPECT_EQ(Decoded("GBK", kName, "\x80"), "\\x80");
  EXPECT_EQ(Decoded("GB18030", kName, "\xff\x30"), "\\xff0");
  EXPECT_EQ(Decoded("\\ISO 2022 IR 149", kName, "\xc8\xab"), "\\xc8\\xab");
  EXPECT_EQ(Decoded("\\ISO 2022 IR 149", kName, "\x1b$)C\xc8"), "\\xc8");
  EXPECT_EQ(Decoded("\\ISO 2022 IR 87", kName, "\x1b$B;"), "\\x3b");
  EXPECT_EQ(Decoded("Latin 9", kName, "\xa4"), "\\xa4");
}

TEST(DecodedText, EscapesThatAreNotUnderstoodStay) {
  EXPECT_EQ(Decoded("\\ISO 2022 IR 87", kName, "a\x1b[31m"), "a\x1b[31m");
  // Where no extensions are named there are no escapes.
  EXPECT_EQ(Decoded("ISO_IR 100", kName, "\x1b-F\xe4"), "\x1b-F\u00e4");
}

TEST(DecodedText, TwoPlacesOfRomajiAreOthersThanInAscii) {
  EXPECT_EQ(Decoded("ISO_IR 13", kLongText, "\\~"), "\u00a5\u203e");
  EXPECT_EQ(Decoded("ISO_IR 13", type_code::LO, "a\\~"), "a\\\u203e");
  EXPECT_EQ(Decoded("ISO 2022 IR 13\\ISO 2022 IR 87", kLongText, "\x1b(B\\~"), "\\~");
}

TEST(DecodedText, OnlyTheTypesOfTextAreDecoded) {
  for (const VrCode type : {type_code::SH, type_code::LO, type_code::ST, kLongText, type_code::UT,
                            kName, MakeTypeCode('U', 'C')}) {
    EXPECT_EQ(Decoded("ISO_IR 100", type, "\xe4"), "\u00e4");
  }
  for (const VrCode type : {type_code::AE, type_code::CS, type_code::UI, type_code::DA,
                            type_code::UN, type_code::OB, MakeTypeCode('U', 'R')}) {
    EXPECT_EQ(Decoded("ISO_IR 100", type, "\xe4"), "\xe4");
  }
}

TEST(DecodedText, WithoutANamedSetTheBytesStay) {
  EXPECT_EQ(Decoded("", kName, "\xe4\x1b-F\xff"), "\xe4\x1b-F\xff");
}

TEST(DecodedText, NotMuchMoreThanIsAskedForIsDecoded) {
  const std::string text(1000, '\xe4');
  EXPECT_EQ(DecodedText(CharacterSets("ISO_IR 100"), kLongText, text, 9).size(), 2 * 10U);
  EXPECT_LE(DecodedText({}, kLongText, text, 9).size(), 40U);
  // What switches takes no room.
  std::string switched;
  for (int count = 0; count < 10; ++count) switched += "\x1b-F\xe4";
  EXPECT_EQ(Columns(DecodedText(CharacterSets("\\ISO 2022 IR 126"), kLongText, switched, 9)), 10U);
}

TEST(DecodedText, AThousandSetsAreNamed) {
  std::string sets = "\\ISO 2022 IR 87";
  for (int count = 0; count < 1000; ++count) sets += "\\ISO 2022 IR 100";
  // What switches is looked at; the list of what may come is not.
  EXPECT_EQ(Decoded(sets.c_str(), kName, "\x1b-A\xe4=\x1b$B;3"), "\u00e4=\u5c71");
  EXPECT_EQ(CharacterSets(sets).Unknown(), "");
  EXPECT_EQ(CharacterSets(sets + "\\Latin 9").Unknown(), "Latin 9");
}

TEST(DecodedText, ANameOfMegabytesIsDecodedOnceThrough) {
  constexpr std::size_t kCharacters = test::kInstrumented ? 200'000 : 10'000'000;
  const std::string text = Decoded("ISO_IR 100", kName, std::string(kCharacters, '\xe4'));
  // Two bytes of UTF-8 for each.
  ASSERT_EQ(text.size(), 2 * kCharacters);
  EXPECT_EQ(text.find_first_not_of("\u00e4"), std::string::npos);
  // A component a byte: each one ends what was switched.
  const std::string carets(kCharacters, '^');
  EXPECT_EQ(Decoded("\\ISO 2022 IR 87", kName, carets), carets);
}

TEST(EncodedText, WhatWasDecodedIsWrittenAgain) {
  struct Row {
    const char* sets;
    const char* text;
    const char* bytes;
  };
  constexpr Row kRows[] = {
      {"ISO_IR 192", "M\u00fcller\\\u738b", "M\xc3\xbcller\\\xe7\x8e\x8b"},
      {"ISO_IR 100", "M\u00fcller", "M\xfcller"},
      {"ISO_IR 144", "\u041b", "\xbb"},
      {"GB18030", "\u738b", "\xcd\xf5"},
      {"ISO_IR 13", "\uff94\u203e", "\xd4~"},
      {"", "plain", "plain"},
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(EncodedText(CharacterSets(row.sets), type_code::LO, row.text), row.bytes) << row.sets;
  }
}

TEST(EncodedText, WhatASetDoesNotHaveIsRefused) {
  EXPECT_EQ(EncodedText(CharacterSets("ISO_IR 100"), kName, "\u738b"), std::nullopt);
  EXPECT_EQ(EncodedText(CharacterSets(), kName, "\u00fc"), std::nullopt);
  EXPECT_EQ(EncodedText(CharacterSets("ISO_IR 13"), kLongText, "~"), std::nullopt);
  EXPECT_EQ(EncodedText(CharacterSets("ISO_IR 192"), kName, "\xff"), std::nullopt);
  EXPECT_EQ(EncodedText(CharacterSets("ISO_IR 192"), type_code::CS, "\u00fc"), std::nullopt);
  EXPECT_EQ(EncodedText(CharacterSets("\\ISO 2022 IR 87"), kName, "\u5c71"), std::nullopt);
}

}  // namespace
}  // namespace tessaret::tool
