#include "core/binary_vr.h"

#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::AfterPut;
using test::Held;
using test::kFirst;
using test::kLast;
using test::kNoValue;
using test::MadeElement;
using test::Owned;
using test::ValueAt;
using test::WithNuls;

TEST(BinaryVR, FindsValuesByTheirWidth) {
  EXPECT_EQ(ValueAt<VrUS>("abcdef", 0), "ab");
  EXPECT_EQ(ValueAt<VrSS>("abcdef", 2), "ef");
  EXPECT_EQ(ValueAt<VrUL>("abcdefgh", 1), "efgh");
  EXPECT_EQ(ValueAt<VrSL>("abcdefgh", 1), "efgh");
  EXPECT_EQ(ValueAt<VrFL>("abcdefgh", 0), "abcd");
  EXPECT_EQ(ValueAt<VrFD>("abcdefghijklmnop", 1), "ijklmnop");
  EXPECT_EQ(ValueAt<VrAT>("abcdefgh", 1), "efgh");
  EXPECT_EQ(ValueAt<VrOB>("abc", 2), "c");
  EXPECT_EQ(ValueAt<VrOW>("abc", 1), "b");
}

TEST(BinaryVR, HasNoValueThatIsNotThereToItsLastByte) {
  EXPECT_EQ(ValueAt<VrUS>("abc", 1), kNoValue);
  EXPECT_EQ(ValueAt<VrUS>("abcd", 2), kNoValue);
  EXPECT_EQ(ValueAt<VrUS>("", 0), kNoValue);
  EXPECT_EQ(ValueAt<VrFD>("abcdefg", 0), kNoValue);
  for (const std::int32_t index : {-1, kFirst, kLast}) {
    EXPECT_EQ(ValueAt<VrUS>("abcd", index), kNoValue);
    EXPECT_EQ(ValueAt<VrFD>("abcdefgh", index), kNoValue);
  }
}

TEST(BinaryVR, HasNoValueWithoutData) {
  VR vr;
  vr.Length = 8;
  EXPECT_EQ(test::Got(VrUS(vr), 0), kNoValue);
  EXPECT_EQ(FindBinaryValue(vr, 1, 2), nullptr);
  EXPECT_TRUE(VrUS(vr).PutValue(0, "ab"));
  EXPECT_EQ(Held(vr), "ab");
}

TEST(BinaryVR, HasNoValueAtANegativeIndexHoweverLongItIs) {
  std::uint8_t byte = 0;
  // The place alone is asked for; -2147483648 taken for 2147483648 would lie within.
  VR vr(0, 0, 0xFFFFFFFE, &byte, false);
  EXPECT_EQ(FindBinaryValue(vr, kFirst, 1), nullptr);
  EXPECT_EQ(FindBinaryValue(vr, 0, 1), &byte);
}

TEST(BinaryVR, PutsAValueInItsPlace) {
  EXPECT_EQ(AfterPut<VrUS>("abcdef", 1, "XY"), "abXYef");
  EXPECT_EQ(AfterPut<VrFD>("abcdefgh", 0, "ABCDEFGH"), "ABCDEFGH");
  EXPECT_EQ(AfterPut<VrUS>("", 0, "XY"), "XY");
  EXPECT_EQ(AfterPut<VrUS>("ab", 1, "XY"), "abXY");
}

TEST(BinaryVR, BytesBetweenTheOldEndAndTheNewValueAreZero) {
  EXPECT_EQ(AfterPut<VrUS>("ab", 3, "XY"), WithNuls("ab\0\0\0\0XY"));
  EXPECT_EQ(AfterPut<VrUL>("", 1, "WXYZ"), WithNuls("\0\0\0\0WXYZ"));
  EXPECT_EQ(AfterPut<VrUS>("abc", 2, "XY"), WithNuls("abc\0XY"));
}

TEST(BinaryVR, AnOddRestIsOverwrittenByTheValueThatItBegins) {
  EXPECT_EQ(AfterPut<VrUS>("abc", 1, "XY"), "abXY");
  EXPECT_EQ(AfterPut<VrUS>("abc", 0, "XY"), "XYc");
}

TEST(BinaryVR, RefusesWhatCannotBeAValue) {
  EXPECT_EQ(AfterPut<VrUS>("abcd", -1, "XY"), kNoValue);
  EXPECT_EQ(AfterPut<VrUS>("abcd", kFirst, "XY"), kNoValue);
  EXPECT_EQ(AfterPut<VrUS>("abcd", kLast, "XY"), kNoValue);
  EXPECT_EQ(AfterPut<VrFD>("abcd", kLast, "ABCDEFGH"), kNoValue);
  EXPECT_EQ(AfterPut<VrUS>("abcd", 0, "X"), kNoValue);
  EXPECT_EQ(AfterPut<VrUS>("abcd", 0, "XYZ"), kNoValue);
  VR sequence;
  sequence.AddItem(new DICOMObject);
  EXPECT_FALSE(VrUS(sequence).PutValue(0, "XY"));
  EXPECT_EQ(sequence.Data, nullptr);
  sequence.ReplaceValue("ab", 2);
  EXPECT_FALSE(VrUS(sequence).PutValue(0, "XY"));
  EXPECT_EQ(Held(sequence), "ab");
}

TEST(BinaryVR, RefusesAValueBehindTheLongestLengthBeforeItLooksAtTheBytes) {
  std::uint8_t byte = 0;
  VR vr(0, 0, 0xFFFFFFFE, &byte, false);
  // It would end at 2147483648 * 2 = 0x100000000.
  EXPECT_FALSE(VrUS(vr).PutValue(kLast, "XY"));
  EXPECT_EQ(vr.Data, &byte);
  EXPECT_EQ(vr.Length, 0xFFFFFFFE);
}

TEST(BinaryVR, LeavesOnlySoManyValuesEmpty) {
  const auto vr = Owned(type_code::US, "ab");
  EXPECT_FALSE(VrUS(*vr).PutValue(65537, "XY"));
  EXPECT_EQ(Held(*vr), "ab");
  EXPECT_TRUE(VrUS(*vr).PutValue(65536, "XY"));
  EXPECT_EQ(vr->Length, 65537u * 2);
  EXPECT_EQ(Held(*vr), "ab" + test::Many(65535u * 2, '\0', "XY"));
  // Values are counted, not bytes.
  EXPECT_EQ(AfterPut<VrFD>("", 65535, "ABCDEFGH"), test::Many(65535u * 8, '\0', "ABCDEFGH"));
  EXPECT_EQ(AfterPut<VrFD>("", 65536, "ABCDEFGH"), kNoValue);
}

TEST(BinaryVR, DoesNotWriteIntoBytesOfOthers) {
  MadeElement shared(type_code::US, "abcd");
  std::uint8_t* const bytes = shared->Data;
  EXPECT_TRUE(VrUS(*shared).PutValue(0, "XY"));
  EXPECT_EQ(Held(*shared), "XYcd");
  EXPECT_EQ(std::string(bytes, bytes + 4), "abcd");
}

TEST(BinaryVR, WritesOwnBytesWhereTheyStand) {
  const auto vr = Owned(type_code::US, std::string(100, 'a'));
  const std::uint8_t* const bytes = vr->Data;
  EXPECT_TRUE(VrUS(*vr).PutValue(49, "XY"));
  EXPECT_EQ(vr->Data, bytes);
  EXPECT_EQ(Held(*vr), test::Many(98, 'a', "XY"));
}

TEST(BinaryVR, TakesAValueFromItsOwnBytes) {
  const auto vr = Owned(type_code::UL, "abcdefgh");
  EXPECT_TRUE(VrUL(*vr).PutValue(0, std::string_view(Held(*vr)).substr(2, 4)));
  EXPECT_EQ(Held(*vr), "cdefefgh");
  EXPECT_TRUE(VrUL(*vr).PutValue(0, ValueText(*vr).substr(2, 4)));
  EXPECT_EQ(Held(*vr), "efefefgh");
  EXPECT_TRUE(VrUL(*vr).PutValue(3, ValueText(*vr).substr(4, 4)));
  EXPECT_EQ(Held(*vr), WithNuls("efefefgh\0\0\0\0efgh"));
}

TEST(BinaryVR, NumbersLieInTheOrderOfTheMachine) {
  const auto vr = Owned(type_code::UL);
  EXPECT_TRUE(VrUL(*vr).PutNumber(0, std::uint32_t{0x01020304}));
  std::uint32_t number = 0;
  std::memcpy(&number, vr->Data, sizeof(number));
  EXPECT_EQ(number, 0x01020304u);
  EXPECT_EQ(BinaryValue<std::uint32_t>(*vr, 0), 0x01020304u);
  EXPECT_EQ(BinaryValue<std::uint32_t>(*vr, 1), std::nullopt);
  EXPECT_FALSE(VrUL(*vr).PutNumber(0, std::uint16_t{1}));
}

TEST(BinaryVR, BytesOfNumbersGoToTheWireAsTheyAre) {
  EXPECT_EQ(test::ToWire<VrUS>("abcd"), "abcd");
  EXPECT_EQ(test::FromWire<VrFD>("abcdefgh"), "abcdefgh");
}

TEST(VrAT, ReversesEachWholeUnit) {
  EXPECT_EQ(test::ToWire<VrAT>("abcdefgh"), "dcbahgfe");
  EXPECT_EQ(test::FromWire<VrAT>("abcdefgh"), "dcbahgfe");
  EXPECT_EQ(test::ToWire<VrAT>("abcdefg"), "dcbaefg");
  EXPECT_EQ(test::ToWire<VrAT>("abc"), "abc");
  EXPECT_EQ(test::ToWire<VrAT>(""), "");
}

TEST(VrOX, FollowsItsCode) {
  const auto vr = Owned(type_code::kNone, "abcd");
  VrOX view(*vr);
  EXPECT_EQ(view.ValueWidth(), 2u);
  EXPECT_EQ(test::Got(view, 1), "cd");
  view.Code = type_code::OB;
  EXPECT_EQ(view.GetTypeCode(), type_code::OB);
  EXPECT_EQ(view.ValueWidth(), 1u);
  EXPECT_EQ(test::Got(view, 1), "b");
}

TEST(VrXS, FollowsItsCode) {
  const auto vr = Owned(type_code::kNone, "\xFE\xFF");
  VrXS view(*vr);
  EXPECT_EQ(view.Number(0), 65534);
  EXPECT_EQ(view.Number(1), std::nullopt);
  view.Code = type_code::SS;
  EXPECT_EQ(view.GetTypeCode(), type_code::SS);
  EXPECT_EQ(view.Number(0), -2);
  EXPECT_EQ(view.ValueWidth(), 2u);
}

}  // namespace
}  // namespace tessaret
