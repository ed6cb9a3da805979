#include "core/typed_vr.h"

#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "core/binary_vr.h"
#include "core/dicom_object.h"
#include "core/string_vr.h"
#include "object_maker.h"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::AfterPut;
using test::BytesOf;
using test::Got;
using test::Held;
using test::kNoValue;
using test::NewBytes;
using test::Owned;
using test::ValueAt;

TEST(TypedVR, AnElementOfItsOwnIsMadeAsAnElementIs) {
  const VrLO empty;
  EXPECT_EQ(empty.Record().Length, 0u);
  EXPECT_EQ(empty.Record().Data, nullptr);
  EXPECT_EQ(empty.Record().OwnsData, 1u);

  auto* bytes = NewBytes(BytesOf("AB"));
  const VrLO taken(0x0008, 0x0070, 2, bytes);
  EXPECT_EQ(taken.Record().Key(), MakeTagKey(0x0008, 0x0070));
  EXPECT_EQ(taken.Record().Data, bytes);
  EXPECT_EQ(taken.Record().OwnsData, 1u);

  std::uint8_t lent[] = {'C', 'D'};
  const VrLO shown(0x0008, 0x0070, 2, lent, false);
  EXPECT_EQ(shown.Record().OwnsData, 0u);
  EXPECT_EQ(Got(shown, 0), "CD");

  const VrUS made(0x0028, 0x0010, 3, true);
  EXPECT_EQ(made.Record().Length, 4u);
  EXPECT_EQ(made.Record().Data[3], 0);
  EXPECT_EQ(made.Record().TypeCode, type_code::US);
  const VrUS unmade(0x0028, 0x0010, 4, false);
  EXPECT_EQ(unmade.Record().Data, nullptr);
}

TEST(TypedVR, DoesNotTakeAPointerOfAnotherKindForTheOrderToAllocate) {
  static_assert(!std::is_constructible_v<VrLO, std::uint16_t, std::uint16_t, std::uint32_t,
                                         const std::uint8_t*>);
  static_assert(!std::is_constructible_v<VrLO, std::uint16_t, std::uint16_t, std::uint32_t, char*>);
  static_assert(!std::is_copy_constructible_v<VrLO>);
}

TEST(TypedVR, AViewLeavesTheTypeOfItsElement) {
  const auto vr = Owned(type_code::PN, "Doe^John");
  VrLO view(*vr);
  EXPECT_EQ(&view.Record(), vr.get());
  EXPECT_EQ(view.GetTypeCode(), type_code::LO);
  EXPECT_TRUE(view.Put("Roe^Jane"));
  EXPECT_EQ(vr->TypeCode, type_code::PN);
  EXPECT_EQ(Held(*vr), "Roe^Jane");
}

TEST(TypedVR, GetAndPutAreAboutTheFirstValue) {
  const auto vr = Owned(type_code::LO, "one\\two");
  VrLO view(*vr);
  std::string text;
  EXPECT_TRUE(view.Get(text));
  EXPECT_EQ(text, "one");
  EXPECT_TRUE(view.Put("1"));
  EXPECT_EQ(Held(*vr), "1\\two");
}

TEST(TypedVR, ALoneTextIsTheWholeValue) {
  EXPECT_EQ(ValueAt<VrLT>("C:\\data ", 0), "C:\\data ");
  EXPECT_EQ(ValueAt<VrST>("a\\b", 1), kNoValue);
  EXPECT_EQ(ValueAt<VrST>("a\\b", -1), kNoValue);
  EXPECT_EQ(ValueAt<VrST>("", 0), kNoValue);
  EXPECT_EQ(AfterPut<VrLT>("a\\b", 0, "c"), "c");
  EXPECT_EQ(AfterPut<VrLT>("a\\b", 1, "c"), kNoValue);
  EXPECT_EQ(AfterPut<VrST>("a\\b", -1, "c"), kNoValue);
}

TEST(TypedVR, ASequenceHasNoValues) {
  EXPECT_EQ(ValueAt<VrSQ>("abcd", 0), kNoValue);
  EXPECT_EQ(AfterPut<VrSQ>("abcd", 0, "c"), kNoValue);
}

TEST(TypedVR, TheRootLeavesTheBytesOfTheStream) {
  EXPECT_EQ(test::ToWire<VrLT>("a  "), "a  ");
  EXPECT_EQ(test::FromWire<VrST>("a  "), "a  ");
}

TEST(StoreValue, RefusesWhatAnElementCannotHold) {
  VR sequence;
  sequence.AddItem(new DICOMObject);
  EXPECT_FALSE(StoreValue(sequence, "ab"));
  EXPECT_EQ(sequence.ItemCount(), 1u);
  EXPECT_EQ(sequence.Data, nullptr);
  const auto vr = Owned(type_code::LO, "ab");
  // The length alone is looked at.
  EXPECT_FALSE(StoreValue(*vr, std::string_view("x", std::size_t{kLongestValue} + 1)));
  EXPECT_EQ(Held(*vr), "ab");
}

TEST(ReplaceValue, KeepsShortValuesInTheElement) {
  const auto vr = Owned(type_code::LO, std::string(100, 'x'));
  vr->ReplaceValue("abc", 3);
  EXPECT_EQ(vr->Data, vr->Small);
  EXPECT_EQ(Held(*vr), "abc");
  vr->ReplaceValue(std::string(32, 'y').data(), 32);
  EXPECT_EQ(vr->Data, vr->Small);
  vr->ReplaceValue(std::string(33, 'z').data(), 33);
  EXPECT_NE(vr->Data, vr->Small);
  EXPECT_EQ(Held(*vr), std::string(33, 'z'));
  EXPECT_EQ(vr->OwnsData, 1u);
}

TEST(ReplaceValue, RaisesAnOddLengthWhereTold) {
  const auto vr = Owned(type_code::OB, "");
  vr->ReplaceValue("abc", 3, true);
  EXPECT_EQ(Held(*vr), test::WithNuls("abc\0"));
  vr->ReplaceValue("abcd", 4, true);
  EXPECT_EQ(Held(*vr), "abcd");
  EXPECT_THROW(vr->ReplaceValue("x", kUndefinedLength, true), std::bad_alloc);
  EXPECT_EQ(Held(*vr), "abcd");
}

TEST(ReplaceValue, TakesBytesOfTheValueThatItReplaces) {
  const auto small = Owned(type_code::LO, "");
  small->ReplaceValue("abcdef", 6);
  small->ReplaceValue(small->Data + 2, 3);
  EXPECT_EQ(Held(*small), "cde");
  const auto large = Owned(type_code::LO, std::string(50, 'p') + std::string(50, 'q'));
  large->ReplaceValue(large->Data + 50, 40);
  EXPECT_EQ(Held(*large), std::string(40, 'q'));
}

TEST(ReplaceValue, KeepsItemsAndBytesOfOthers) {
  test::MadeElement shared(type_code::OB, "shared");
  std::uint8_t* const bytes = shared->Data;
  shared->AddItem(new DICOMObject);
  shared->ReplaceValue("new", 3);
  EXPECT_EQ(std::string(bytes, bytes + 6), "shared");
  EXPECT_EQ(shared->ItemCount(), 1u);
  EXPECT_EQ(shared->OwnsData, 1u);
  EXPECT_EQ(shared->TypeCode, type_code::OB);
  shared->ReplaceValue(nullptr, 0);
  EXPECT_EQ(shared->Data, nullptr);
  EXPECT_EQ(shared->Length, 0u);
}

}  // namespace
}  // namespace tessaret
