#include "character_sets.h"

#include <gtest/gtest.h>

namespace tessaret::tool {
namespace {

TEST(CharacterSets, WithoutAValueNothingIsNamed) {
  for (const char* value : {"", " ", "  "}) EXPECT_TRUE(CharacterSets(value).IsUnnamed());
  EXPECT_TRUE(CharacterSets().IsUnnamed());
  EXPECT_FALSE(CharacterSets("ISO_IR 100").IsUnnamed());
  EXPECT_FALSE(CharacterSets("\\ISO 2022 IR 87").IsUnnamed());
}

TEST(CharacterSets, EveryDefinedTermIsKnown) {
  for (const char* value :
       {"ISO_IR 6",        "ISO_IR 100",      "ISO_IR 101",      "ISO_IR 109",
        "ISO_IR 110",      "ISO_IR 144",      "ISO_IR 127",      "ISO_IR 126",
        "ISO_IR 138",      "ISO_IR 148",      "ISO_IR 203",      "ISO_IR 13",
        "ISO_IR 166",      "ISO_IR 192",      "GB18030",         "GBK",
        "ISO 2022 IR 6",   "ISO 2022 IR 100", "ISO 2022 IR 101", "ISO 2022 IR 109",
        "ISO 2022 IR 110", "ISO 2022 IR 144", "ISO 2022 IR 127", "ISO 2022 IR 126",
        "ISO 2022 IR 138", "ISO 2022 IR 148", "ISO 2022 IR 203", "ISO 2022 IR 13",
        "ISO 2022 IR 166", "ISO 2022 IR 87",  "ISO 2022 IR 159", "ISO 2022 IR 149",
        "ISO 2022 IR 58"}) {
    EXPECT_EQ(CharacterSets(value).Unknown(), "") << value;
  }
  EXPECT_EQ(CharacterSets("ISO_IR 100\\Latin 9 ").Unknown(), "Latin 9");
  // A copy of the sets goes with every item of a file.
  EXPECT_EQ(CharacterSets(std::string(64, 'x')).Unknown(), std::string(64, 'x'));
  EXPECT_EQ(CharacterSets(std::string(1'000'000, 'x')).Unknown(),
            std::string(64, 'x').append("..."));
}

TEST(CharacterSets, NamesThatAreWrittenALittleWrongAreKnown) {
  for (const char* value :
       {"ISO IR 100", "ISO-IR 100", "iso_ir_100", "ISO_IR  100", " ISO_IR 100 "}) {
    const CharacterSets sets(value);
    ASSERT_NE(sets.High(), nullptr) << value;
    EXPECT_EQ(sets.High()->name, "100") << value;
  }
}

TEST(CharacterSets, ExtensionsComeWithSeveralValuesOrTheirName) {
  EXPECT_FALSE(CharacterSets("ISO_IR 100").HasExtensions());
  EXPECT_TRUE(CharacterSets("ISO 2022 IR 100").HasExtensions());
  EXPECT_TRUE(CharacterSets("\\ISO 2022 IR 149").HasExtensions());
  // Bytes of these make other characters.
  EXPECT_FALSE(CharacterSets("ISO_IR 192\\ISO 2022 IR 87").HasExtensions());
  EXPECT_FALSE(CharacterSets("GB18030\\ISO 2022 IR 87").HasExtensions());
}

TEST(CharacterSets, TheFirstValueCountsAtTheStartOfATextAndAsciiWithoutIt) {
  const CharacterSets japanese("ISO 2022 IR 13\\ISO 2022 IR 87");
  EXPECT_EQ(japanese.Low()->name, "14");
  EXPECT_EQ(japanese.High()->name, "13");
  const CharacterSets korean("\\ISO 2022 IR 149");
  EXPECT_EQ(korean.Low()->name, "6");
  EXPECT_EQ(korean.High(), nullptr);
}

TEST(CharacterSets, EscapesLeadToTheirSets) {
  EXPECT_EQ(FindEscape("$B;3")->name, "87");
  EXPECT_EQ(FindEscape("$(D;3")->name, "159");
  EXPECT_EQ(FindEscape("$)C")->name, "149");
  EXPECT_EQ(FindEscape("(B")->name, "6");
  EXPECT_EQ(FindEscape("(J")->name, "14");
  EXPECT_EQ(FindEscape("-T")->name, "166");
  for (const char* none : {"", "$", "$)", "[31m", "(K"}) EXPECT_EQ(FindEscape(none), nullptr);
}

}  // namespace
}  // namespace tessaret::tool
