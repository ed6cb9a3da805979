#include "core/type_code.h"

#include <string>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

TEST(TypeCode, IsTheFirstLetterTimes256PlusTheSecond) {
  EXPECT_EQ(MakeTypeCode('A', 'E'), 'A' * 256 + 'E');
  EXPECT_EQ(MakeTypeCode('\xFF', '\xFE'), 0xFFFE);
  EXPECT_EQ(MakeTypeCode('\0', '\0'), 0);
}

TEST(TypeCode, GivesItsLettersBack) {
  for (const char* letters : {"AE", "SQ", "UT", "??", "\xFF\x80"}) {
    const VrCode code = MakeTypeCode(letters[0], letters[1]);
    EXPECT_EQ(FirstLetter(code), letters[0]);
    EXPECT_EQ(SecondLetter(code), letters[1]);
  }
}

TEST(TypeCode, EveryNameStandsForItsLetters) {
  using namespace type_code;
  const struct {
    VrCode code;
    const char* letters;
  } kRows[] = {{AE, "AE"}, {AS, "AS"}, {AT, "AT"}, {CS, "CS"}, {DA, "DA"}, {DS, "DS"}, {DT, "DT"},
               {FD, "FD"}, {FL, "FL"}, {IS, "IS"}, {LO, "LO"}, {LT, "LT"}, {OB, "OB"}, {OF, "OF"},
               {OW, "OW"}, {PN, "PN"}, {SH, "SH"}, {SL, "SL"}, {SQ, "SQ"}, {SS, "SS"}, {ST, "ST"},
               {TM, "TM"}, {UI, "UI"}, {UL, "UL"}, {UN, "UN"}, {US, "US"}, {UT, "UT"}};
  for (const auto& row : kRows) {
    EXPECT_EQ(row.code, row.letters[0] * 256 + row.letters[1]) << row.letters;
  }
  EXPECT_EQ(kNone, 0);
  EXPECT_EQ(AE, 0x4145);
  EXPECT_EQ(OB, 0x4F42);
  EXPECT_EQ(OW, 0x4F57);
  EXPECT_EQ(SQ, 0x5351);
  EXPECT_EQ(UI, 0x5549);
  EXPECT_EQ(UL, 0x554C);
  EXPECT_EQ(UN, 0x554E);
  EXPECT_EQ(UT, 0x5554);
}

}  // namespace
}  // namespace tessaret
