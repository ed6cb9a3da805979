#include "core/object_text.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "base/text.h"
#include "core/element_maker.h"
#include "support/bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::MadeElement;
using test::NewElement;

std::string TextOf(VrCode type, const Bytes& value) {
  MadeElement element(type, value);
  return VRValueToText(*element);
}

std::string TextOf(VrCode type, std::string_view text) { return TextOf(type, BytesOf(text)); }

std::size_t CountOf(std::string_view words, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(words); at != std::string_view::npos;
       at = text.find(words, at + 1)) {
    ++count;
  }
  return count;
}

TEST(VRValueToText, TrimsTexts) {
  using namespace std::string_view_literals;
  EXPECT_EQ(TextOf(type_code::LO, "  a b \n\0"sv), "a b");
  EXPECT_EQ(TextOf(type_code::UI, "1.2.840\0"sv), "1.2.840");
  EXPECT_EQ(TextOf(type_code::LO, "   "), "");
}

TEST(VRValueToText, CutsTextsBehind126CharactersAndTrimsThen) {
  EXPECT_EQ(TextOf(type_code::UT, std::string(127, 'a')), std::string(126, 'a'));
  EXPECT_EQ(TextOf(type_code::UT, std::string(125, 'a').append(" b")), std::string(125, 'a'));
}

TEST(VRValueToText, ShowsControlCharactersInATextAsDots) {
  using namespace std::string_view_literals;
  EXPECT_EQ(TextOf(type_code::LT, "one\r\ntwo\0three\x1B"sv), "one..two.three.");
}

TEST(VRValueToText, RemovesColonsAndPointsFromATime) {
  EXPECT_EQ(TextOf(type_code::TM, "12:30:15.250 "), "123015250");
  EXPECT_EQ(TextOf(type_code::TM, "12\n30"), "12.30")
      << "this point stands for a control character";
}

TEST(VRValueToText, RemovesPointsFromADate) {
  EXPECT_EQ(TextOf(type_code::DA, "1999.12.31"), "19991231");
  EXPECT_EQ(TextOf(type_code::DA, "12:31"), "12:31");
  EXPECT_EQ(TextOf(type_code::DA, ".1999.12.31-2000.01.31."), "19991231-20000131");
}

TEST(VRValueToText, LeavesThePointsOfOtherTexts) {
  EXPECT_EQ(TextOf(type_code::DT, "1999.12:31"), "1999.12:31");
  EXPECT_EQ(TextOf(type_code::DS, "1.5\\2.5"), "1.5\\2.5");
}

TEST(VRValueToText, ShowsNumbersAsALineOfATraceDoes) {
  using namespace type_code;
  EXPECT_EQ(TextOf(UL, Bytes{0xD2, 0x04, 0, 0}), "1234,0x4D2");
  EXPECT_EQ(TextOf(US, Bytes{0x00, 0x02, 1, 0}), "512,0x200");
  EXPECT_EQ(TextOf(SL, Bytes{0xFE, 0xFF, 0xFF, 0xFF}), "-2");
  EXPECT_EQ(TextOf(SS, Bytes{0xFE, 0xFF}), "-2");
  EXPECT_EQ(TextOf(FL, Bytes{0, 0, 0xC0, 0x3F}), "1.500000");
  EXPECT_EQ(TextOf(OF, Bytes{0, 0, 0xC0, 0x3F}), "1.500000");
  // 2.5 is 0x4004000000000000.
  EXPECT_EQ(TextOf(FD, Bytes{0, 0, 0, 0, 0, 0, 0x04, 0x40}), "2.500000l");
}

TEST(VRValueToText, ShowsOtherTypesInHexadecimal) {
  EXPECT_EQ(TextOf(type_code::OB, Bytes{1, 2, 3, 4, 0x41}), "01 02 03 04 41 |....A|");
  EXPECT_EQ(TextOf(type_code::kNone, "ab"), "61 62 |ab|");
  EXPECT_EQ(TextOf(type_code::US, Bytes{7}), "07 |.|");
}

TEST(VRValueToText, IsEmptyWithoutBytes) {
  EXPECT_EQ(TextOf(type_code::LO, Bytes{}), "(EMPTY)");
  EXPECT_EQ(TextOf(type_code::OB, Bytes{}), "(EMPTY)");
  VR claims(0x0009, 0x1001, 8, nullptr);
  EXPECT_EQ(VRValueToText(claims), "(EMPTY)");
}

TEST(ObjectToText, IsEmptyForAnEmptyObject) {
  EXPECT_EQ(ObjectToText(DICOMObject(), 0, nullptr), "");
}

TEST(ObjectToText, HasALineForEachElementInTheOrderOfTags) {
  const auto dictionary = test::DictionaryOf(
      "{0x0010 0x0010 PN \"Patient's Name\"}\n"
      "{0x0028 0x0010 US \"Rows\"}\n");
  DICOMObject object;
  object.Push(NewElement(0x0028, 0x0010, type_code::US, Bytes{0x00, 0x02}));
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "Doe^Jane "));
  object.Push(NewElement(0x0011, 0x0001, type_code::OB, Bytes{}));
  EXPECT_EQ(ObjectToText(object, 0, dictionary.get()),
            "(0010,0010) 'PN' [     9] 'Patient's Name' : Doe^Jane\n"
            "(0011,0001) 'OB' [     0] '' : (EMPTY)\n"
            "(0028,0010) 'US' [     2] 'Rows' : 512,0x200\n");
}

TEST(ObjectToText, HasNoDescriptionsWithoutADictionary) {
  DICOMObject object;
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "Doe"));
  EXPECT_EQ(ObjectToText(object, 0, nullptr), "(0010,0010) 'PN' [     3] '' : Doe\n");
}

TEST(ObjectToText, ShowsAnElementOfNoTypeWithTheTypeOfTheDictionary) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"Patient's Name\"}\n");
  DICOMObject object;
  object.Push(NewElement(0x0010, 0x0010, type_code::kNone, "Doe"));
  object.Push(NewElement(0x0011, 0x1010, type_code::kNone, "Doe"));
  EXPECT_EQ(ObjectToText(object, 0, dictionary.get()),
            "(0010,0010) 'PN' [     3] 'Patient's Name' : Doe\n"
            "(0011,1010) 'XX' [     3] '' : 44 6F 65 |Doe|\n");
  EXPECT_EQ(ObjectToText(object, 0, nullptr),
            "(0010,0010) 'UN' [     3] '' : 44 6F 65 |Doe|\n"
            "(0011,1010) 'UN' [     3] '' : 44 6F 65 |Doe|\n");
  EXPECT_EQ(object.GetVR(0x0010, 0x0010)->TypeCode, type_code::kNone);
}

TEST(ObjectToText, StartsEveryLineWithItsDepth) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "Doe"));
  EXPECT_EQ(ObjectToText(object, 1, nullptr),
            "> (0008,0060) 'CS' [     2] '' : MR\n"
            "> (0010,0010) 'PN' [     3] '' : Doe\n");
  EXPECT_EQ(ObjectToText(object, 3, nullptr),
            ">>> (0008,0060) 'CS' [     2] '' : MR\n"
            ">>> (0010,0010) 'PN' [     3] '' : Doe\n");
  EXPECT_EQ(ObjectToText(object, -1, nullptr), ObjectToText(object, 0, nullptr));
}

TEST(ObjectToText, SetsItemsInBelowTheirSequence) {
  const auto dictionary = test::DictionaryOf(
      "{0x0008 0x0060 CS \"Modality\"}\n"
      "{0x0008 0x1140 SQ \"Referenced Image Sequence\"}\n");
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, Bytes{}));
  auto* first = new DICOMObject;
  first->Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
  first->Push(NewElement(0x0009, 0x0001, type_code::SQ, Bytes{}));
  auto* inner = new DICOMObject;
  inner->Push(NewElement(0x0008, 0x0060, type_code::CS, "CT"));
  first->Push(inner);
  object.Push(first);
  object.Push(new DICOMObject);
  object.Push(NewElement(0x0028, 0x0010, type_code::US, Bytes{1, 0}));
  EXPECT_EQ(ObjectToText(object, 0, dictionary.get()),
            "(0008,1140) 'SQ' 2 items 'Referenced Image Sequence'\n"
            "#start item 1\n"
            "> (0008,0060) 'CS' [     2] 'Modality' : MR\n"
            "> (0009,0001) 'SQ' 1 items ''\n"
            "> #start item 1\n"
            ">> (0008,0060) 'CS' [     2] 'Modality' : CT\n"
            "> #end item 1\n"
            "> End sequence (0009,0001)\n"
            "#end item 1\n"
            "#start item 2\n"
            "#end item 2\n"
            "End sequence (0008,1140)\n"
            "(0028,0010) 'US' [     2] '' : 1,0x1\n");
}

TEST(ObjectToText, CountsTheItemsOfEachSequenceFromOne) {
  DICOMObject object;
  for (const std::uint16_t element : {std::uint16_t{0x1140}, std::uint16_t{0x1150}}) {
    object.Push(NewElement(0x0008, element, type_code::SQ, Bytes{}));
    object.Push(new DICOMObject);
    object.Push(new DICOMObject);
  }
  const std::string items =
      "#start item 1\n#end item 1\n"
      "#start item 2\n#end item 2\n";
  EXPECT_EQ(ObjectToText(object, 0, nullptr),
            "(0008,1140) 'SQ' 2 items ''\n" + items + "End sequence (0008,1140)\n" +  //
                "(0008,1150) 'SQ' 2 items ''\n" + items + "End sequence (0008,1150)\n");
}

TEST(ObjectToText, CallsEveryElementWithItemsASequence) {
  DICOMObject object;
  object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, Bytes{}));
  auto* fragment = new DICOMObject;
  fragment->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{0xFF, 0xD8}));
  object.Push(fragment);
  EXPECT_EQ(ObjectToText(object, 0, nullptr),
            "(7FE0,0010) 'SQ' 1 items ''\n"
            "#start item 1\n"
            "> (FFFE,E000) 'UN' [     2] '' : FF D8 |..|\n"
            "#end item 1\n"
            "End sequence (7FE0,0010)\n");
}

TEST(ObjectToText, TakesASequenceWithoutItemsForAnElementWithoutValue) {
  DICOMObject object;
  VR* sequence = NewElement(0x0008, 0x1140, type_code::SQ, Bytes{});
  sequence->Items = new ItemArray;
  object.Push(sequence);
  EXPECT_EQ(ObjectToText(object, 0, nullptr), "(0008,1140) 'SQ' [     0] '' : (EMPTY)\n");
}

TEST(ObjectToText, TakesANullItemForAnEmptyOne) {
  DICOMObject object;
  VR* sequence = NewElement(0x0008, 0x1140, type_code::SQ, Bytes{});
  sequence->Items = new ItemArray;
  sequence->Items->Add(nullptr);
  object.Push(sequence);
  EXPECT_EQ(ObjectToText(object, 0, nullptr),
            "(0008,1140) 'SQ' 1 items ''\n#start item 1\n#end item 1\nEnd sequence (0008,1140)\n");
}

TEST(ObjectToText, ReachesEveryElementEvenIfATagWasChangedInPlace) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x0001, type_code::CS, "A"));
  object.Push(NewElement(0x0008, 0x0002, type_code::CS, "B"));
  object.Push(NewElement(0x0008, 0x0003, type_code::CS, "C"));
  // The second one now bears the tag of the first.
  object.GetVR(0x0008, 0x0002)->Element = 0x0001;
  EXPECT_EQ(ObjectToText(object, 0, nullptr),
            "(0008,0001) 'CS' [     1] '' : A\n"
            "(0008,0001) 'CS' [     1] '' : B\n"
            "(0008,0003) 'CS' [     1] '' : C\n");
}

TEST(ObjectToText, TakesNoValueAndNoDescriptionForAFormat) {
  const auto dictionary = test::DictionaryOf("{0x0010 0x0010 PN \"%s %n\"}\n");
  DICOMObject object;
  object.Push(NewElement(0x0010, 0x0010, type_code::PN, "100%s%n"));
  EXPECT_EQ(ObjectToText(object, 0, dictionary.get()),
            "(0010,0010) 'PN' [     7] '%s %n' : 100%s%n\n");
}

/// An object with `levels` sequences of one item each, one inside the other.
std::unique_ptr<DICOMObject> Chain(int levels) {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewElement(0x0010, 0x0010, type_code::PN, "innermost"));
  for (int level = 0; level < levels; ++level) {
    auto outer = std::make_unique<DICOMObject>();
    outer->Push(NewElement(0x0008, 0x1140, type_code::SQ, Bytes{}));
    outer->Push(object.release());
    object = std::move(outer);
  }
  return object;
}

TEST(ObjectToText, OpensAsManyLevelsAsItPromises) {
  const std::string text = ObjectToText(*Chain(kDeepestListedLevel), 0, nullptr);
  EXPECT_EQ(CountOf("#start item 1\n", text), 1000u);
  EXPECT_EQ(CountOf("innermost\n", text), 1u);
  EXPECT_EQ(CountOf("...\n", text), 0u);
}

TEST(ObjectToText, NamesASequenceBelowTheDeepestLevelAndLeavesItsItemsOut) {
  const std::string text = ObjectToText(*Chain(kDeepestListedLevel + 1), 0, nullptr);
  EXPECT_EQ(CountOf("#start item 1\n", text), 1000u);
  EXPECT_EQ(CountOf("innermost\n", text), 0u);
  const std::string prefix(1000, '>');
  const std::string lines =
      Format("\n%s (0008,1140) 'SQ' 1 items ''\n%s ...\n%s End sequence (0008,1140)\n",
             prefix.c_str(), prefix.c_str(), prefix.c_str());
  EXPECT_EQ(CountOf(lines, text), 1u);
}

TEST(ObjectToText, EndsOnAnObjectDeeperThanAnyStack) {
  const std::string text = ObjectToText(*Chain(100000), 0, nullptr);
  EXPECT_EQ(CountOf("...\n", text), 1u);
  // Each of 1,000 levels has four lines with a prefix of at most 1,002 characters and at most 30 others.
  EXPECT_LT(text.size(), 1001u * 4 * (1002 + 30));
}

TEST(ObjectToText, CountsTheDeepestLevelFromTheDepthThatItStartsWith) {
  const int start = kDeepestListedLevel - 1;
  EXPECT_EQ(CountOf("innermost\n", ObjectToText(*Chain(1), start, nullptr)), 1u);
  const std::string text = ObjectToText(*Chain(2), start, nullptr);
  EXPECT_EQ(CountOf("innermost\n", text), 0u);
  EXPECT_EQ(CountOf("> ...\n", text), 1u);
}

TEST(ListObject, HandsOutTheTextLineByLine) {
  const auto chain = Chain(3);
  std::string text;
  std::size_t lines = 0;
  ListObject(*chain, 2, nullptr, [&](std::string_view line) {
    ++lines;
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    text += line;
    return true;
  });
  // Four lines around each of three items, and the innermost element.
  EXPECT_EQ(lines, 3u * 4 + 1);
  EXPECT_EQ(text, ObjectToText(*chain, 2, nullptr));
}

TEST(ListObject, LetsItsSinkEndTheListing) {
  const auto chain = Chain(3);
  std::size_t lines = 0;
  ListObject(*chain, 0, nullptr, [&](std::string_view) { return ++lines < 5; });
  EXPECT_EQ(lines, 5u);
  const LineSink fails = [&](std::string_view) -> bool {
    if (++lines == 10) throw std::runtime_error("enough");
    return true;
  };
  EXPECT_THROW(ListObject(*chain, 0, nullptr, fails), std::runtime_error);
  EXPECT_EQ(lines, 10u);
}

TEST(ListElement, BeginsWithAnyLine) {
  const auto chain = Chain(3);
  const VR* const sequence = chain->Elements.Find(0x00081140);
  ASSERT_NE(sequence, nullptr);
  const std::string all = ObjectToText(*chain, 0, nullptr);
  std::size_t begin = 0;
  for (std::size_t first = 0; first <= 3u * 4 + 1; ++first) {
    std::string text;
    ListElement(*sequence, first, nullptr, [&](std::string_view line) {
      text += line;
      return true;
    });
    EXPECT_EQ(text, all.substr(begin)) << first;
    begin = all.find('\n', begin) + 1;
  }
}

TEST(ObjectToText, CountsTheItemsOfALongSequence) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, Bytes{}));
  for (int item = 0; item < 10000; ++item) object.Push(new DICOMObject);
  const std::string text = ObjectToText(object, 0, nullptr);
  EXPECT_EQ(text.substr(0, 60), "(0008,1140) 'SQ' 10000 items ''\n#start item 1\n#end item 1\n#s");
  EXPECT_NE(text.find("#start item 10000\n#end item 10000\nEnd sequence (0008,1140)\n"),
            std::string::npos);
}

}  // namespace
}  // namespace tessaret
