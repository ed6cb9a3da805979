#include "element_values.h"

#include <gtest/gtest.h>

#include "time_values.h"

namespace tessaret::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

GivenValue From(VrCode type, std::string_view text, const char* sets = "") {
  Keywords keywords(Create<IDcmDictionary>("Tessaret.DcmDictionary"));
  return ValueFrom(type, text, CharacterSets(sets), keywords);
}

/// The stored text without what fills it up, or the words of the failure.
std::string Stored(VrCode type, std::string_view text, const char* sets = "") {
  const GivenValue given = From(type, text, sets);
  if (!given.failure.empty()) return given.failure;
  EXPECT_EQ(given.bytes.size() % 2, 0U);
  std::string stored(given.bytes.begin(), given.bytes.end());
  if (stored.ends_with(type == type_code::UI ? '\0' : ' ')) stored.pop_back();
  return stored;
}

/// Two long texts with `between` between them.
std::string TwoOf64(char between) {
  std::string text(129, 'x');
  text[64] = between;
  return text;
}

TEST(GivenValues, TextsStayAsTheyAre) {
  EXPECT_EQ(Stored(type_code::LO, "a\\b\\"), "a\\b\\");
  EXPECT_EQ(Stored(type_code::LT, "a\\b"), "a\\b");
  EXPECT_EQ(Stored(type_code::PN, "Doe^John"), "Doe^John");
  EXPECT_EQ(Stored(type_code::LO, ""), "");
}

TEST(GivenValues, NothingIsCut) {
  EXPECT_EQ(Stored(type_code::SH, "12345678901234567"), "17 characters are more than the 16 of SH");
  EXPECT_EQ(Stored(type_code::DS, "1.23456789012345678"),
            "19 characters are more than the 16 of DS");
  EXPECT_EQ(Stored(type_code::LO, TwoOf64('\\')).size(), 129U);
  // Characters are counted, and of a name each of its forms.
  std::string umlauts;
  for (int count = 0; count < 16; ++count) umlauts += "\u00fc";
  EXPECT_EQ(Stored(type_code::SH, umlauts, "ISO_IR 192").size(), 32U);
  EXPECT_EQ(Stored(type_code::PN, TwoOf64('=')).size(), 129U);
  EXPECT_EQ(Stored(type_code::PN, std::string(65, 'x')),
            "65 characters are more than the 64 of PN");
}

TEST(GivenValues, TextIsWrittenInItsCharacterSet) {
  EXPECT_EQ(Stored(type_code::PN, "M\u00fcller", "ISO_IR 100"), "M\xfcller");
  EXPECT_EQ(Stored(type_code::PN, "M\u00fcller"),
            "\"M\u00fcller\" cannot be written in the character set of (0008,0005)");
  EXPECT_EQ(Stored(type_code::CS, "\u00fc", "ISO_IR 100"),
            "\"\u00fc\" has characters that this type does not take");
}

TEST(GivenValues, ControlCharactersStandInRunningTextOnly) {
  for (const VrCode type : {type_code::LT, type_code::ST, type_code::UT})
    EXPECT_EQ(Stored(type, "a\tb\r\n\fc"), "a\tb\r\n\fc");
  const std::string words = " has control characters, which this type does not take";
  for (const VrCode type : {type_code::LO, type_code::SH, type_code::PN, type_code::CS,
                            type_code::AE, type_code::UC, type_code::UR}) {
    for (const char* text : {"a\tb", "a\nb", "\rab", "ab\f",
                             "a\x1f"
                             "b"})
      EXPECT_EQ(Stored(type, text), '"' + std::string(text) + '"' + words);
  }
  for (const char* text : {"a\x1b[31m", "a\x07", "a\x0b", "a\x7f"})
    EXPECT_EQ(Stored(type_code::LT, text), '"' + std::string(text) + '"' + words);
}

TEST(GivenValues, NumbersAreInTheRangeOfTheirType) {
  EXPECT_EQ(From(type_code::US, "0\\65535").bytes, (Bytes{0, 0, 0xFF, 0xFF}));
  EXPECT_EQ(From(type_code::SS, "-2").bytes, (Bytes{0xFE, 0xFF}));
  EXPECT_EQ(From(type_code::UL, "4294967295").bytes, (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(From(type_code::FL, "0.5").bytes, (Bytes{0, 0, 0, 0x3F}));
  EXPECT_EQ(From(type_code::FD, "-1").bytes, (Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0xBF}));
  EXPECT_EQ(From(MakeTypeCode('U', 'V'), "18446744073709551615").bytes, Bytes(8, 0xFF));
  EXPECT_EQ(Stored(type_code::US, "65536"), "\"65536\" is not a whole number from 0 to 65535");
  EXPECT_EQ(Stored(type_code::US, "-1"), "\"-1\" is not a whole number from 0 to 65535");
  EXPECT_EQ(Stored(type_code::SL, "1.5"),
            "\"1.5\" is not a whole number from -2147483648 to 2147483647");
  EXPECT_EQ(Stored(type_code::FL, "1e39"), "\"1e39\" is not a number");
  EXPECT_EQ(Stored(type_code::FD, "1,5"), "\"1,5\" is not a number");
  EXPECT_EQ(Stored(type_code::US, "1\\"), "\"\" is not a whole number from 0 to 65535");
}

TEST(GivenValues, NumbersInTextKeepTheirDigits) {
  EXPECT_EQ(Stored(type_code::DS, "0.0000001\\1e-7\\+5\\"), "0.0000001\\1e-7\\+5\\");
  EXPECT_EQ(Stored(type_code::DS, "nan"), "\"nan\" is not a decimal number");
  EXPECT_EQ(Stored(type_code::DS, "1,5"), "\"1,5\" is not a decimal number");
  EXPECT_EQ(Stored(type_code::IS, "-2147483648"), "-2147483648");
  EXPECT_EQ(Stored(type_code::IS, "2147483648"),
            "\"2147483648\" is not a whole number from -2147483648 to 2147483647");
  EXPECT_EQ(Stored(type_code::IS, "1.0"),
            "\"1.0\" is not a whole number from -2147483648 to 2147483647");
}

TEST(GivenValues, TagsAreTagsOrKeywordsAndBytesHexadecimal) {
  EXPECT_EQ(From(type_code::AT, "PatientName\\(7fe0,0010)").bytes,
            (Bytes{0x10, 0, 0x10, 0, 0xE0, 0x7F, 0x10, 0}));
  EXPECT_EQ(Stored(type_code::AT, "Nobody"), "no element has the keyword \"Nobody\"");
  EXPECT_EQ(From(type_code::OB, "00\\ff").bytes, (Bytes{0, 0xFF}));
  EXPECT_EQ(From(type_code::UN, "00FF").bytes, (Bytes{0, 0xFF}));
  EXPECT_EQ(Stored(type_code::OB, "0"), "\"0\" is not bytes of two hexadecimal digits");
  EXPECT_EQ(Stored(type_code::OB, "0g"), "\"0g\" is not bytes in hexadecimal digits");
}

TEST(GivenValues, AgesAndUidsHaveTheirForm) {
  EXPECT_EQ(Stored(type_code::AS, "030Y"), "030Y");
  EXPECT_EQ(Stored(type_code::AS, "30"), "\"30\" is not an age: 3 digits and D, W, M or Y");
  EXPECT_EQ(Stored(type_code::UI, "1.2\\2.25.3"), "1.2\\2.25.3");
  for (const char* none : {".1", "1.", "1..2", "1.a"})
    EXPECT_NE(From(type_code::UI, none).failure, "") << none;
}

TEST(GivenValues, ASequenceTakesNone) {
  EXPECT_EQ(Stored(type_code::SQ, "x"), "a sequence takes no value: name an element of an item");
}

TEST(TimeValues, Dates) {
  for (const char* text : {"20010203", "2001-02-03", "2001.02.03"})
    EXPECT_EQ(DateValue(text), "20010203");
  EXPECT_EQ(DateValue("20240229"), "20240229");
  for (const char* none : {"", "2001", "200102", "20010229", "20011301", "2001-2-3", "20010203x",
                           "03.02.2001", "2001-02.03", "00000101", "2001-0203"})
    EXPECT_EQ(DateValue(none), "") << none;
}

TEST(TimeValues, Times) {
  EXPECT_EQ(TimeValue("14"), "14");
  EXPECT_EQ(TimeValue("14:05"), "1405");
  EXPECT_EQ(TimeValue("14:05:06"), "140506");
  EXPECT_EQ(TimeValue("14:05:06.250"), "140506.250");
  EXPECT_EQ(TimeValue("140506.25"), "140506.25");
  EXPECT_EQ(TimeValue("235960"), "235960");
  for (const char* none : {"", "1", "24", "1460", "140561", "1405.5", "140506.", "140506.1234567",
                           "14:0506", "2:05", "14:05:06,5", "14:", "14:05:"})
    EXPECT_EQ(TimeValue(none), "") << none;
}

TEST(TimeValues, DatesWithTimes) {
  for (const char* text : {"2001", "200102", "20010203", "2001020314", "20010203140506.250",
                           "2001+0100", "20010203140506-0500"})
    EXPECT_EQ(DateTimeValue(text), text);
  EXPECT_EQ(DateTimeValue("2001-02-03"), "20010203");
  EXPECT_EQ(DateTimeValue("2001-02-03 14:05"), "200102031405");
  EXPECT_EQ(DateTimeValue("2001-02-03T14:05:06.5"), "20010203140506.5");
  EXPECT_EQ(DateTimeValue("2001-02-03T14:05:06 +01:00"), "20010203140506+0100");
  for (const char* none : {"", "20010230", "2001-02-03 ", "2001-02-03 25:00", "2001x",
                           "20010203140506+2500", "2001-02-", "2001-02-03 14:"})
    EXPECT_EQ(DateTimeValue(none), "") << none;
}

TEST(TimeValues, OffsetsAreThoseOfPlacesOnEarth) {
  for (const char* text : {"2001+0000", "2001+1400", "2001-1200", "2001-0001"})
    EXPECT_EQ(DateTimeValue(text), text);
  for (const char* none : {"2001-0000", "2001+1401", "2001-1201", "2001-1300", "2001+0060"})
    EXPECT_EQ(DateTimeValue(none), "") << none;
}

TEST(TextsOfValues, AreThoseThatCanBeGiven) {
  using Texts = std::vector<std::string>;
  const auto texts = [](VrCode type, std::string_view bytes) {
    Texts values;
    ForEachText(type, bytes, CharacterSets("ISO_IR 100"),
                [&](std::string_view value) { values.emplace_back(value); });
    return values;
  };
  EXPECT_EQ(texts(type_code::LO, "a \\M\xfc "), (Texts{"a", "M\u00fc"}));
  EXPECT_EQ(texts(type_code::LT, "a\\b "), (Texts{"a\\b"}));
  EXPECT_EQ(texts(type_code::UI, std::string_view("1.2\0", 4)), (Texts{"1.2"}));
  EXPECT_EQ(texts(type_code::LO, " "), (Texts{""}));
  EXPECT_EQ(texts(type_code::LO, ""), Texts());
}

}  // namespace
}  // namespace tessaret::tool
