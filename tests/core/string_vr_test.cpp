#include "core/string_vr.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "support/build_kind.h"
#include "tessaret/variant.hpp"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::AfterPut;
using test::FromWire;
using test::Held;
using test::kFirst;
using test::kLast;
using test::kNoValue;
using test::Owned;
using test::ToWire;
using test::ValueAt;
using test::WithNuls;

/// What an element that held `old` tells of the put, as AfterPut does.
std::string AfterPutText(VrCode type, std::string_view old, std::int32_t index,
                         const Variant& value) {
  const auto vr = Owned(type, old);
  const std::string before = Held(*vr);
  const bool isTaken = VR_XXMULTISTRING::PutText(*vr, type, value, index);
  return test::OutcomeOf(isTaken, *vr, before);
}

TEST(NthText, RunsFromBackslashToBackslash) {
  EXPECT_EQ(NthText("one\\two\\three", 0), "one");
  EXPECT_EQ(NthText("one\\two\\three", 1), "two");
  EXPECT_EQ(NthText("one\\two\\three", 2), "three");
  EXPECT_EQ(NthText("one\\two\\three", 3), std::nullopt);
  EXPECT_EQ(NthText("one\\", 1), "");
  EXPECT_EQ(NthText("\\\\x", 1), "");
  EXPECT_EQ(NthText("", 0), "");
  EXPECT_EQ(NthText("", 1), std::nullopt);
}

TEST(NthText, FindsEveryValueOfALongTextAsAPlainWalkDoes) {
  // Values of 0 to 300 bytes, so that separators lie at every place of a block, and at its borders.
  std::string text;
  std::vector<std::string> values;
  for (std::size_t at = 0; at < 600; ++at) {
    values.push_back(std::string(at * at % 301, static_cast<char>('a' + at % 26)));
    text += (at == 0 ? "" : "\\") + values.back();
  }
  for (std::size_t at = 0; at < values.size(); ++at)
    ASSERT_EQ(NthText(text, static_cast<std::int32_t>(at)), values[at]) << at;
  EXPECT_EQ(NthText(text, 600), std::nullopt);
  const std::string separators(1025, '\\');
  EXPECT_EQ(NthText(separators, 1025), "");
  EXPECT_EQ(NthText(separators, 1026), std::nullopt);
}

/// The last index there is. A sanitizer looks at each of that many separators for half a minute, and is shown some fewer.
constexpr std::int32_t kFarIndex = test::kInstrumented ? 1 << 26 : kLast;

/// More separators than that index, 2 GiB and a little more, which take 4 MiB of memory: the same ones all along.
class ManySeparators {
 public:
  ManySeparators() {
    const int file = ::memfd_create("separators", 0);
    const std::string piece(kPiece, '\\');
    isMade_ = file >= 0 && at_ != MAP_FAILED &&
              ::write(file, piece.data(), kPiece) == static_cast<ssize_t>(kPiece);
    for (std::size_t begin = 0; isMade_ && begin < kSize; begin += kPiece) {
      isMade_ = ::mmap(static_cast<char*>(at_) + begin, kPiece, PROT_READ, MAP_SHARED | MAP_FIXED,
                       file, 0) != MAP_FAILED;
    }
    if (file >= 0) ::close(file);
  }
  ManySeparators(const ManySeparators&) = delete;
  ManySeparators& operator=(const ManySeparators&) = delete;
  ~ManySeparators() {
    if (at_ != MAP_FAILED) ::munmap(at_, kSize);
  }
  /// Empty where the system gives no room for it.
  [[nodiscard]] std::string_view Text() const {
    return isMade_ ? std::string_view(static_cast<const char*>(at_), kSize) : std::string_view();
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{1} << 22;
  static constexpr std::size_t kSize = kFarIndex + kPiece;

  void* at_ = ::mmap(nullptr, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  bool isMade_ = false;
};

TEST(NthText, FindsTheLastIndexInMoreTextsThanAnIndexCanSay) {
  const ManySeparators separators;
  ASSERT_FALSE(separators.Text().empty()) << "no 2 GiB of addresses";
  // Text number n stands behind n separators.
  const auto found = NthText(separators.Text(), kFarIndex);
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(*found, "");
  EXPECT_EQ(found->data() - separators.Text().data(), std::ptrdiff_t{kFarIndex});
}

TEST(NthText, HasNoValueAtAnImpossibleIndex) {
  for (const std::int32_t index : {-1, kFirst, kLast}) {
    EXPECT_EQ(NthText("one\\two", index), std::nullopt);
  }
}

TEST(NthTextUnpadded, CutsPaddingAtTheEndOnly) {
  EXPECT_EQ(NthTextUnpadded(" one  \\ two ", 0), " one");
  EXPECT_EQ(NthTextUnpadded(" one  \\ two ", 1), " two");
  EXPECT_EQ(NthTextUnpadded("   \\x", 0), "");
  EXPECT_EQ(NthTextUnpadded(WithNuls("1.2\0"), 0), "1.2");
  EXPECT_EQ(NthTextUnpadded(WithNuls("1.2 \0 "), 0), "1.2");
  EXPECT_EQ(NthTextUnpadded(WithNuls("a\0b"), 0), WithNuls("a\0b"));
  EXPECT_EQ(NthTextUnpadded("tab\t", 0), "tab\t");
  EXPECT_EQ(NthTextUnpadded("x", 1), std::nullopt);
}

TEST(CountTexts, IsOneMoreThanBackslashes) {
  EXPECT_EQ(CountTexts(""), 0u);
  EXPECT_EQ(CountTexts("a"), 1u);
  EXPECT_EQ(CountTexts("a\\"), 2u);
  EXPECT_EQ(CountTexts(std::string(65536, '\\')), 65537u);
}

TEST(PutText, ReplacesATextWhereItStands) {
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\two\\three", 0, "1"), "1\\two\\three");
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\two\\three", 1, "2"), "one\\2\\three");
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\two\\three", 2, "third"), "one\\two\\third");
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\\\three", 1, "2"), "one\\2\\three");
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\", 1, "2"), "one\\2");
  EXPECT_EQ(AfterPutText(type_code::LO, "one \\two ", 0, "1"), "1\\two ");
}

TEST(PutText, AppendsBehindOneBackslashHoweverHighTheIndexIs) {
  for (const std::int32_t index : {1, 2, 5, kLast}) {
    EXPECT_EQ(AfterPutText(type_code::LO, "one", index, "more"), "one\\more");
  }
  EXPECT_EQ(AfterPutText(type_code::UI, WithNuls("1.2\0"), 1, "1.3"), "1.2\\1.3");
  EXPECT_EQ(AfterPutText(type_code::LO, WithNuls("one \t\r\n\0 "), 1, "two"), "one\\two");
  EXPECT_EQ(AfterPutText(type_code::LO, "  ", 1, "two"), "\\two");
}

TEST(PutText, InAnEmptyElementBackslashesStandForWhatIsMissing) {
  EXPECT_EQ(AfterPutText(type_code::LO, "", 0, "text"), "text");
  EXPECT_EQ(AfterPutText(type_code::LO, "", 5, "text"), "\\\\\\\\\\text");
  EXPECT_EQ(AfterPutText(type_code::LO, "", 65535, "x"), test::Many(65535, '\\', "x"));
  EXPECT_EQ(AfterPutText(type_code::LO, "", 65536, "x"), kNoValue);
  EXPECT_EQ(AfterPutText(type_code::LO, "", kLast, "x"), kNoValue);
}

TEST(PutText, RefusesANegativeIndex) {
  EXPECT_EQ(AfterPutText(type_code::LO, "one", -1, "x"), kNoValue);
  EXPECT_EQ(AfterPutText(type_code::LO, "one", kFirst, "x"), kNoValue);
  EXPECT_EQ(AfterPutText(type_code::LO, "", -1, "x"), kNoValue);
}

TEST(PutText, LeavesOddLengthsOdd) {
  const auto vr = Owned(type_code::LO);
  ASSERT_TRUE(VR_XXMULTISTRING::PutText(*vr, type_code::LO, "abc", 0));
  EXPECT_EQ(vr->Length, 3u);
}

TEST(PutText, CutsToTheLimitOfTheType) {
  const std::pair<VrCode, std::size_t> limits[] = {
      {type_code::AE, 16}, {type_code::AS, 4},    {type_code::CS, 16}, {type_code::DA, 10},
      {type_code::DS, 16}, {type_code::DT, 26},   {type_code::IS, 12}, {type_code::LO, 64},
      {type_code::SH, 16}, {type_code::ST, 1024}, {type_code::TM, 16}, {type_code::UI, 64}};
  for (const auto& [type, limit] : limits) {
    const std::string most(limit, '7');
    EXPECT_EQ(AfterPutText(type, "", 0, most), most) << type;
    EXPECT_EQ(AfterPutText(type, "", 0, most + "8"), most) << type;
    EXPECT_EQ(AfterPutText(type, "", 0, most.substr(1)), most.substr(1)) << type;
    if (type == type_code::ST) continue;
    EXPECT_EQ(AfterPutText(type, "1\\2\\3", 1, most + "8"), "1\\" + most + "\\3") << type;
    EXPECT_EQ(AfterPutText(type, "1", 4, most + "8"), "1\\" + most) << type;
    EXPECT_EQ(AfterPutText(type, "", 2, most + "8"), "\\\\" + most) << type;
  }
}

TEST(PutText, OtherTypesHaveNoLimit) {
  const std::string text(70000, 'x');
  for (const VrCode type : {type_code::LT, type_code::UT, type_code::PN}) {
    EXPECT_EQ(AfterPutText(type, "", 0, text), text) << type;
  }
}

TEST(PutText, RefusesAnIndexIntoATypeOfOneText) {
  for (const VrCode type : {type_code::ST, type_code::LT, type_code::UT}) {
    for (const std::int32_t index : {1, -1, kLast}) {
      const auto vr = Owned(type, "old");
      try {
        VR_XXMULTISTRING::PutText(*vr, type, "new", index);
        ADD_FAILURE() << type;
      } catch (const TypedValueError& error) {
        EXPECT_STREQ(error.what(), "Error: VR type ST,LT and UT have VM=1");
      }
      EXPECT_EQ(Held(*vr), "old");
      // The index is looked at before the value.
      EXPECT_THROW(
          VR_XXMULTISTRING::PutText(*vr, type, VariantArray(VariantType::kByte, 2u), index),
          TypedValueError);
    }
  }
}

TEST(PutText, ABackslashInATypeOfOneTextIsACharacter) {
  EXPECT_EQ(AfterPutText(type_code::LT, "C:\\old", 0, "D:\\new"), "D:\\new");
}

TEST(PutText, ABackslashInOtherTextSeparates) {
  EXPECT_EQ(AfterPutText(type_code::LO, "one\\two", 0, "a\\b"), "a\\b\\two");
}

TEST(PutText, StoresOneByteACharacter) {
  EXPECT_EQ(AfterPutText(type_code::LO, "", 0, String(u"\u00E9\u0416")), "\xE9?");
  EXPECT_EQ(AfterPutText(type_code::LO, "", 0, String(std::u16string_view(u"a\0b", 3))),
            WithNuls("a\0b"));
  EXPECT_EQ(AfterPutText(type_code::LO, "old", 0, String()), test::kEmptied);
}

TEST(PutText, TakesWhatTurnsIntoText) {
  EXPECT_EQ(AfterPutText(type_code::LO, "", 0, Variant(12)), "12");
  EXPECT_EQ(AfterPutText(type_code::LO, "", 0, Variant(1.5)), "1.5");
  EXPECT_EQ(AfterPutText(type_code::LO, "old", 0, Variant(VariantArray(VariantType::kByte, 2u))),
            kNoValue);
}

TEST(PutText, RefusesAnElementWithItems) {
  VR sequence;
  sequence.AddItem(new DICOMObject);
  EXPECT_FALSE(VR_XXMULTISTRING::PutText(sequence, type_code::LO, "x", 0));
  EXPECT_EQ(sequence.Data, nullptr);
}

TEST(PutText, TakesAnElementWithoutDataForEmpty) {
  VR vr;
  vr.Length = 8;
  EXPECT_TRUE(VR_XXMULTISTRING::PutText(vr, type_code::LO, "x", 1));
  EXPECT_EQ(Held(vr), "\\x");
}

TEST(StringVR, ToTheWireNulsAtTheEndBecomeBlanks) {
  EXPECT_EQ(ToWire<VrLO>(WithNuls("ab\0\0")), "ab  ");
  EXPECT_EQ(ToWire<VrLO>(WithNuls("ab\0 \0")), "ab   ");
  EXPECT_EQ(ToWire<VrLO>(WithNuls("\0a\0b\0")), WithNuls("\0a\0b "));
  EXPECT_EQ(ToWire<VrLO>(WithNuls("\0\0")), "  ");
  EXPECT_EQ(ToWire<VrLO>(""), "");
}

TEST(StringVR, FromTheWireTheTextIsTerminatedBehindItsLastCharacter) {
  EXPECT_EQ(FromWire<VrLO>("ab  "), WithNuls("ab\0 "));
  EXPECT_EQ(FromWire<VrLO>("ab"), "ab");
  EXPECT_EQ(FromWire<VrLO>("a b "), WithNuls("a b\0"));
  EXPECT_EQ(FromWire<VrLO>("   "), WithNuls(" \0 "));
  EXPECT_EQ(FromWire<VrLO>(" "), " ");
  EXPECT_EQ(FromWire<VrLO>(""), "");
}

TEST(VrUI, ToTheWireBlanksAtTheEndBecomeNuls) {
  EXPECT_EQ(ToWire<VrUI>("1.2  "), WithNuls("1.2\0\0"));
  EXPECT_EQ(ToWire<VrUI>(WithNuls("1.2 \0")), WithNuls("1.2\0\0"));
  EXPECT_EQ(ToWire<VrUI>("1 2"), "1 2");
  EXPECT_EQ(ToWire<VrUI>("  "), WithNuls("\0\0"));
  EXPECT_EQ(FromWire<VrUI>("1.2 "), WithNuls("1.2\0"));
}

TEST(StringVR, GivesAValueWithoutItsPadding) {
  EXPECT_EQ(ValueAt<VrLO>("one \\two  ", 0), "one");
  EXPECT_EQ(ValueAt<VrLO>("one \\two  ", 1), "two");
  EXPECT_EQ(ValueAt<VrLO>("one", 1), kNoValue);
  EXPECT_EQ(ValueAt<VrLO>("one", -1), kNoValue);
  EXPECT_EQ(ValueAt<VrLO>("one", kLast), kNoValue);
  EXPECT_EQ(ValueAt<VrLO>("one\\", 1), "");
  EXPECT_EQ(ValueAt<VrLO>("   ", 0), " ");
  EXPECT_EQ(ValueAt<VrLO>("", 0), kNoValue);
  EXPECT_EQ(ValueAt<VrUI>(WithNuls("1.2\0"), 0), "1.2");
  EXPECT_EQ(ValueAt<VrLO>(WithNuls("ab\0cd"), 0), "ab");
}

TEST(StringVR, PutsAValueInItsPlaceAndKeepsTheRest) {
  EXPECT_EQ(AfterPut<VrTM>("0930\\1000\\1100", 0, "08"), "08\\1000\\1100");
  EXPECT_EQ(AfterPut<VrTM>("0930\\1000\\1100", 1, "10"), "0930\\10\\1100");
  EXPECT_EQ(AfterPut<VrTM>("0930\\1000\\1100", 2, "11"), "0930\\1000\\11");
  EXPECT_EQ(AfterPut<VrTM>("0930", 0, "101112.5"), "101112.5");
}

TEST(StringVR, PutsBackslashesForValuesThatAreMissing) {
  EXPECT_EQ(AfterPut<VrTM>("0930", 1, "10"), "0930\\10");
  EXPECT_EQ(AfterPut<VrTM>("0930", 3, "10"), "0930\\\\\\10");
  EXPECT_EQ(AfterPut<VrTM>("0930 ", 1, "10"), "0930\\10");
  EXPECT_EQ(AfterPut<VrTM>("", 0, "10"), "10");
  EXPECT_EQ(AfterPut<VrTM>("", 2, "10"), "\\\\10");
  EXPECT_EQ(AfterPut<VrTM>("09\\", 1, "10"), "09\\10");
  EXPECT_EQ(AfterPut<VrLO>(WithNuls("one\t \0"), 1, "two"), "one\t\\two");
}

TEST(StringVR, WhatWasPutIsThereAgain) {
  for (const std::int32_t index : {0, 1, 2, 7}) {
    const auto vr = Owned(type_code::TM, "09\\10");
    ASSERT_TRUE(VrTM(*vr).PutValue(index, "1112"));
    EXPECT_EQ(test::Got(VrTM(*vr), index), "1112");
  }
}

TEST(StringVR, RefusesAnImpossibleIndex) {
  for (const std::int32_t index : {-1, kFirst, kLast, 65537}) {
    EXPECT_EQ(AfterPut<VrTM>("09", index, "10"), kNoValue) << index;
  }
  EXPECT_EQ(AfterPut<VrTM>("09", 65536, "10"), "09" + test::Many(65536, '\\', "10"));
  EXPECT_EQ(AfterPut<VrTM>("", 65535, "10"), test::Many(65535, '\\', "10"));
  EXPECT_EQ(AfterPut<VrTM>("", 65536, "10"), kNoValue);
}

TEST(StringVR, RefusesATextThatNoElementCanHold) {
  const auto vr = Owned(type_code::LO, "old");
  // The length alone is looked at.
  EXPECT_FALSE(VrLO(*vr).PutValue(0, std::string_view("x", std::size_t{kLongestValue} + 1)));
  EXPECT_EQ(Held(*vr), "old");
}

TEST(StringVR, TakesATextFromItsOwnBytes) {
  const auto vr = Owned(type_code::LO, "one\\two");
  EXPECT_TRUE(VrLO(*vr).PutValue(0, ValueText(*vr).substr(4)));
  EXPECT_EQ(Held(*vr), "two\\two");
  EXPECT_TRUE(VrLT(*vr).PutValue(0, ValueText(*vr).substr(1, 4)));
  EXPECT_EQ(Held(*vr), "wo\\t");
}

TEST(StringVR, FillsValuesOfAWidthWithBlanksAndCutsThemToTheirLimit) {
  EXPECT_EQ(AfterPut<VrAE>("", 0, "STORE"), "STORE           ");
  EXPECT_EQ(AfterPut<VrAE>("", 0, std::string(20, 'A')), std::string(16, 'A'));
  EXPECT_EQ(AfterPut<VrAS>("", 0, "03"), "03  ");
  EXPECT_EQ(AfterPut<VrAS>("", 0, "0301Y"), "0301");
  EXPECT_EQ(AfterPut<VrDA>("", 0, "2001"), "2001    ");
  EXPECT_EQ(AfterPut<VrLO>("", 0, "abc"), "abc");
  // Values without a width are not cut.
  const std::string text(100, '7');
  EXPECT_EQ(AfterPut<VrLO>("", 0, text), text);
  EXPECT_EQ(AfterPut<VrTM>("", 0, text), text);
  EXPECT_EQ(AfterPut<VrDT>("", 0, text), text);
  EXPECT_EQ(AfterPut<VrAE>("A\\B", 0, WithNuls("X\0")), "X               \\B");
}

TEST(VrDA, ReadsOldDatesWithoutTheirDots) {
  EXPECT_EQ(ValueAt<VrDA>("1999.12.31", 0), "19991231");
  EXPECT_EQ(ValueAt<VrDA>("20010203", 0), "20010203");
  EXPECT_EQ(ValueAt<VrDA>("1999.1.1", 0), "1999.1.1");
  EXPECT_EQ(ValueAt<VrDA>("20010203\\1999.12.31", 1), "19991231");
  EXPECT_EQ(ValueAt<VrDA>("20010203", 1), kNoValue);
}

TEST(VrDA, PutsDatesWithoutDotsInTenCharactersAtMost) {
  EXPECT_EQ(AfterPut<VrDA>("", 0, "1999.12.31"), "19991231");
  EXPECT_EQ(AfterPut<VrDA>("", 0, "1.9.9.9.1.2.3.1"), "19991231");
  EXPECT_EQ(AfterPut<VrDA>("", 0, "19991231-2000"), "19991231-2");
  EXPECT_EQ(AfterPut<VrDA>("19990101", 1, "20010203"), "19990101\\20010203");
}

TEST(StringVR, IsLinearInLongValues) {
  const auto vr = Owned(type_code::LO, std::string(16'000'000, '\\'));
  EXPECT_EQ(CountTexts(ValueText(*vr)), 16'000'001u);
  EXPECT_EQ(test::Got(VrLO(*vr), 15'999'999), "");
  EXPECT_TRUE(VR_XXMULTISTRING::PutText(*vr, type_code::LO, "x", 15'999'999));
  EXPECT_EQ(test::Got(VrLO(*vr), 15'999'999), "x");
}

}  // namespace
}  // namespace tessaret
