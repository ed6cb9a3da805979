#include "core/dump.h"

#include <string>

#include <gtest/gtest.h>

#include "base/text.h"
#include "core/element_maker.h"
#include "core/trace.h"
#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::MadeElement;

constexpr VrCode kType = type_code::LO;

/// The part of the line behind the type, for an element of (0009,1001).
std::string ValueOf(VrCode type, const Bytes& value) {
  MadeElement element(type, value);
  const std::string line = ElementLine(*element, nullptr);
  const std::string before = Format("(0000)[0009,1001][%6d][%c%c]:", static_cast<int>(value.size()),
                                    FirstLetter(type), SecondLetter(type));
  EXPECT_EQ(line.substr(0, before.size()), before);
  return line.substr(before.size());
}

std::string ValueOf(VrCode type, std::string_view text) { return ValueOf(type, BytesOf(text)); }

TEST(ElementLine, StandsInItsColumns) {
  MadeElement element(0x0008, 0x0016, type_code::UI, BytesOf("1.2.840.10008.5.1.4.1.1.2"));
  element->StreamPosition = 0x84;
  EXPECT_EQ(ElementLine(*element, nullptr),
            "(0084)[0008,0016][    25][UI]:|1.2.840.10008.5.1.4.1.1.2|");
}

TEST(ElementLine, LetsLargePositionsAndLengthsGrowOutOfTheirColumns) {
  VR pixels(0x7FE0, 0x0010, 1234567, nullptr);
  pixels.StreamPosition = 0xFEDCBA98;
  pixels.TypeCode = type_code::OW;
  EXPECT_EQ(ElementLine(pixels, nullptr), "(FEDCBA98)[7FE0,0010][1234567][OW]:|(EMPTY)|");
}

TEST(ElementLine, ShowsAnUndefinedLengthAsMinusOne) {
  VR pixels(0x7FE0, 0x0010, kUndefinedLength, nullptr);
  pixels.TypeCode = type_code::OB;
  EXPECT_EQ(ElementLine(pixels, nullptr), "(0000)[7FE0,0010][    -1][OB]:|(EMPTY)|");
}

TEST(ElementLine, ShowsAnElementOfNoTypeAsUnWithoutADictionary) {
  MadeElement element(type_code::kNone, "ab");
  EXPECT_EQ(ElementLine(*element, nullptr), "(0000)[0009,1001][     2][UN]:61 62 |ab|");
  const DumpService service{nullptr};
  EXPECT_EQ(ElementLine(*element, &service), "(0000)[0009,1001][     2][UN]:'' 61 62 |ab|");
  EXPECT_EQ(element->TypeCode, type_code::kNone) << "showing an element leaves it as it is";
}

TEST(ElementLine, TakesTypeAndDescriptionFromTheDictionaryOfTheService) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"Patient's Name\"}\n");
  const DumpService service{dictionary.get()};
  MadeElement name(0x0010, 0x0010, type_code::kNone, BytesOf("Doe^Jane"));
  EXPECT_EQ(ElementLine(*name, &service),
            "(0000)[0010,0010][     8][PN]:'Patient's Name' |Doe^Jane|");
  EXPECT_EQ(name->TypeCode, type_code::kNone);
  // A type of its own stays, whatever the dictionary says.
  name->TypeCode = type_code::US;
  EXPECT_EQ(ElementLine(*name, &service),
            "(0000)[0010,0010][     8][US]:'Patient's Name' |28484,0x6F44|");
}

TEST(ElementLine, HasXxForATypeThatTheDictionaryDoesNotKnow) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"Patient's Name\"}\n");
  const DumpService service{dictionary.get()};
  MadeElement element(type_code::kNone, "ab");
  EXPECT_EQ(ElementLine(*element, &service), "(0000)[0009,1001][     2][XX]:'' 61 62 |ab|");
}

TEST(ElementLine, HoldsTheLongestDescriptionWhole) {
  const std::string description(1023, 'd');
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"" + description + "\"}\n");
  const DumpService service{dictionary.get()};
  MadeElement name(0x0010, 0x0010, type_code::PN, BytesOf("x"));
  EXPECT_EQ(ElementLine(*name, &service),
            "(0000)[0010,0010][     1][PN]:'" + description + "' |x|");
}

TEST(ElementLine, TakesNoDescriptionForAFormat) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"100%s of %n\"}\n");
  const DumpService service{dictionary.get()};
  MadeElement name(0x0010, 0x0010, type_code::PN, BytesOf("%s%n"));
  EXPECT_EQ(ElementLine(*name, &service), "(0000)[0010,0010][     4][PN]:'100%s of %n' |%s%n|");
}

TEST(ElementLine, ShowsADotForALetterThatIsNotPrintable) {
  MadeElement element(MakeTypeCode('\x01', 'q'), "x");
  EXPECT_EQ(ElementLine(*element, nullptr), "(0000)[0009,1001][     1][.q]:78 |x|");
  element->TypeCode = 0x0041;
  EXPECT_EQ(ElementLine(*element, nullptr), "(0000)[0009,1001][     1][.A]:78 |x|");
}

TEST(ElementLine, IsEmptyForAnElementWithoutBytes) {
  for (const VrCode type : {type_code::LO, type_code::US, type_code::OB, type_code::SQ}) {
    EXPECT_EQ(ValueOf(type, Bytes{}), "|(EMPTY)|") << type;
  }
  // Bytes that are there count for nothing with a length of 0.
  MadeElement element(kType, "abc");
  element->Length = 0;
  EXPECT_EQ(ElementLine(*element, nullptr), "(0000)[0009,1001][     0][LO]:|(EMPTY)|");
}

TEST(ElementLine, ShowsTextTypesAsText) {
  using namespace type_code;
  for (const VrCode type : {UI, UT, ST, SH, PN, TM, LT, IS, LO, DA, DS, DT, AE, CS}) {
    EXPECT_EQ(ValueOf(type, "10.30:15 "), "|10.30:15 |") << FirstLetter(type) << SecondLetter(type);
  }
}

TEST(ElementLine, ShowsTypesThatItHasNoWordForAsBytes) {
  using namespace type_code;
  for (const VrCode type :
       {AS, AT, OB, OW, SQ, UN, MakeTypeCode('U', 'C'), MakeTypeCode('O', 'D')}) {
    EXPECT_EQ(ValueOf(type, "045Y"), "30 34 35 59 |045Y|")
        << FirstLetter(type) << SecondLetter(type);
  }
}

TEST(ElementLine, CutsATextBehind126Characters) {
  const std::string exact = std::string(125, 'a') + "z";
  EXPECT_EQ(ValueOf(kType, exact), "|" + exact + "|");
  EXPECT_EQ(ValueOf(kType, exact + "b"), "|" + exact + "|");
  EXPECT_EQ(ValueOf(type_code::UT, exact + std::string(100000, 'b')), "|" + exact + "|");
}

TEST(ElementLine, DropsThePaddingOfATextAndKeepsItsBlanks) {
  using namespace std::string_view_literals;
  EXPECT_EQ(ValueOf(type_code::UI, "1.2.3\0"sv), "|1.2.3|");
  EXPECT_EQ(ValueOf(type_code::UI, "1.2\0\0\0"sv), "|1.2|");
  EXPECT_EQ(ValueOf(kType, " ab "), "| ab |");
  EXPECT_EQ(ValueOf(kType, "\0\0"sv), "||");
}

TEST(ElementLine, ShowsControlCharactersOfATextAsDots) {
  using namespace std::string_view_literals;
  EXPECT_EQ(ValueOf(type_code::LT, "a\r\nb\tc\x1B[2J\x7F\0d"sv), "|a..b.c.[2J..d|");
  // Letters of other character sets are no controls.
  EXPECT_EQ(ValueOf(type_code::PN, "M\xC3\xBCller \xE4\x9B"), "|M\xC3\xBCller \xE4\x9B|");
}

TEST(ElementLine, ShowsTheFirstOfItsNumbers) {
  using namespace type_code;
  EXPECT_EQ(ValueOf(UL, Bytes{0xD2, 0x04, 0, 0, 1, 0, 0, 0}), "|1234,0x4D2|");
  EXPECT_EQ(ValueOf(UL, Bytes{0xFF, 0xFF, 0xFF, 0xFF}), "|4294967295,0xFFFFFFFF|");
  EXPECT_EQ(ValueOf(US, Bytes{0x00, 0x02, 9, 9}), "|512,0x200|");
  EXPECT_EQ(ValueOf(US, Bytes{0xFE, 0xFF}), "|65534,0xFFFE|");
  EXPECT_EQ(ValueOf(SL, Bytes{0xFE, 0xFF, 0xFF, 0xFF}), "|-2|");
  EXPECT_EQ(ValueOf(SL, Bytes{0, 0, 0, 0x80}), "|-2147483648|");
  EXPECT_EQ(ValueOf(SS, Bytes{0x00, 0x80, 1, 0}), "|-32768|");
  EXPECT_EQ(ValueOf(SS, Bytes{0xFF, 0x7F}), "|32767|");
}

// 1.5 is 0x3FC00000 as a float; -0.1 is 0xBFB999999999999A as a double.
TEST(ElementLine, ShowsFractionsWithSixDigitsAndADoubleWithALetterBehindIt) {
  using namespace type_code;
  EXPECT_EQ(ValueOf(FL, Bytes{0, 0, 0xC0, 0x3F}), "|1.500000|");
  EXPECT_EQ(ValueOf(OF, Bytes{0, 0, 0xC0, 0x3F, 1, 2, 3, 4}), "|1.500000|");
  EXPECT_EQ(ValueOf(FD, Bytes{0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0xB9, 0xBF}), "|-0.100000l|");
  EXPECT_EQ(ValueOf(FL, Bytes{0, 0, 0xC0, 0x7F}), "|nan|");
  EXPECT_EQ(ValueOf(FD, Bytes{0, 0, 0, 0, 0, 0, 0xF0, 0xFF}), "|-infl|");
}

TEST(ElementLine, ShowsANumberThatIsCutShortAsBytes) {
  using namespace type_code;
  EXPECT_EQ(ValueOf(US, Bytes{0x41}), "41 |A|");
  EXPECT_EQ(ValueOf(SS, Bytes{0xFF}), "FF |.|");
  EXPECT_EQ(ValueOf(UL, Bytes{1, 2, 3}), "01 02 03 |...|");
  EXPECT_EQ(ValueOf(SL, Bytes{1, 2, 3}), "01 02 03 |...|");
  EXPECT_EQ(ValueOf(FL, Bytes{0, 0, 0xC0}), "00 00 C0 |...|");
  EXPECT_EQ(ValueOf(OF, Bytes{0, 0, 0xC0}), "00 00 C0 |...|");
  EXPECT_EQ(ValueOf(FD, Bytes{1, 2, 3, 4, 5, 6, 7}), "01 02 03 04 05 06 07 |.......|");
}

TEST(ElementLine, ShowsFiveBytesOfABinaryElementOfFiveWithoutFilling) {
  EXPECT_EQ(ValueOf(type_code::OB, Bytes{0x00, 0x41, 0x7E, 0x7F, 0xFF}), "00 41 7E 7F FF |.A~..|");
}

TEST(ElementLine, ShowsAtMostSixteenBytesOfABinaryElement) {
  const std::string sixteen = "30 31 32 33 34 35 36 37 38 39 3A 3B 3C 3D 3E 3F |0123456789:;<=>?|";
  EXPECT_EQ(ValueOf(type_code::OB, "0123456789:;<=>?"), sixteen);
  EXPECT_EQ(ValueOf(type_code::OB, "0123456789:;<=>?@"), sixteen);
}

TEST(HexListing, HasNoLineForNoBytes) { EXPECT_EQ(HexListing(nullptr, 0), ""); }

TEST(HexListing, FillsAShortLineWithBlanks) {
  // 31 bytes are missing: 93 blanks.
  EXPECT_EQ(HexListing("A", 1), "000000-000000 41 " + std::string(93, ' ') + "| A|\n");
}

TEST(HexListing, Puts32BytesOnALine) {
  EXPECT_EQ(HexListing("ABCDEFGHIJKLMNOPQRSTUVWXYZ\t\n\r\x7F\xFF.", 32),
            "000000-000031 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 57 58 "
            "59 5A 09 0A 0D 7F FF 2E | ABCDEFGHIJKLMNOPQRSTUVWXYZ......|\n");
}

TEST(HexListing, Puts33BytesOnTwoLinesWithTheSecondFilled) {
  const Bytes bytes(33, 0x30);
  std::string row;
  for (int at = 0; at < 32; ++at) row += "30 ";
  EXPECT_EQ(HexListing(bytes.data(), bytes.size()),
            "000000-000031 " + row + "| " + std::string(32, '0') + "|\n" +  //
                "000032-000032 30 " + std::string(93, ' ') + "| 0|\n");
}

TEST(HexListing, LetsOffsetsGrowOutOfTheirColumns) {
  const Bytes bytes(1000033, 0x30);
  const std::string text = HexListing(bytes.data(), bytes.size());
  EXPECT_NE(text.find("\n999968-999999 30 "), std::string::npos);
  EXPECT_NE(text.find("\n1000000-1000031 30 "), std::string::npos);
  EXPECT_NE(text.find("\n1000032-1000032 30  "), std::string::npos);
}

/// The functions that write, with a file of the test's own.
class Dump : public testing::Test {
 protected:
  Dump() : path_(folder_.File("trace")) { SetDumpFile(path_.c_str()); }
  ~Dump() override { SetDumpFile(nullptr); }

  test::TempFolder folder_;
  std::string path_;
};

TEST_F(Dump, AppendsTheLineOfAnElement) {
  MadeElement element(kType, "a");
  DumpVR(*element, nullptr);
  const DumpService service{nullptr};
  DumpVR(*element, &service);
  EXPECT_EQ(test::ReadText(path_),
            "(0000)[0009,1001][     1][LO]:|a|\n"
            "(0000)[0009,1001][     1][LO]:'' |a|\n");
}

TEST_F(Dump, AppendsAHexadecimalListing) {
  DumpHex("A", 1);
  DumpHex("B", 1);
  EXPECT_EQ(test::ReadText(path_), "000000-000000 41 " + std::string(93, ' ') + "| A|\n" +
                                       "000000-000000 42 " + std::string(93, ' ') + "| B|\n");
}

TEST_F(Dump, WithoutMemoryALineIsLostAndNothingIsThrown) {
  MadeElement element(kType, std::string(100, 'a'));
  const Bytes bytes(100, 0x41);
  const std::uint64_t allocations = test::FailEveryAllocation([&] {
    DumpVR(*element, nullptr);
    DumpHex(bytes.data(), bytes.size());
  });
  EXPECT_GT(allocations, 2u);
  // The last round met no failure.
  const std::string last = ElementLine(*element, nullptr) + '\n' + HexListing(bytes.data(), 100);
  const std::string text = test::ReadText(path_);
  ASSERT_GE(text.size(), last.size());
  EXPECT_EQ(text.substr(text.size() - last.size()), last);
}

TEST_F(Dump, MakesNoFileForNoBytes) {
  DumpHex("", 0);
  EXPECT_EQ(folder_.Listing(), "");
}

}  // namespace
}  // namespace tessaret
