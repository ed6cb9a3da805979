#include "core/vr.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include <gtest/gtest.h>

#include "core/dicom_object.h"
#include "object_maker.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::NewBytes;
using test::NewObject;
using test::NewSequence;
using test::NewVR;
using test::Outline;
using test::Pattern;
using test::TextOf;
using test::ValueOf;

constexpr TagKey kTag = MakeTagKey(0x0010, 0x0020);
constexpr TagKey kInner = MakeTagKey(0x0008, 0x0100);

TEST(VR, IsAPlainRecordWithItsFieldsInOrder) {
  static_assert(!std::is_polymorphic_v<VR>);
  static_assert(std::is_standard_layout_v<VR>);
  static_assert(std::is_same_v<decltype(VR::Group), std::uint16_t>);
  static_assert(std::is_same_v<decltype(VR::Element), std::uint16_t>);
  static_assert(std::is_same_v<decltype(VR::Length), std::uint32_t>);
  static_assert(std::is_same_v<decltype(VR::Data), std::uint8_t*>);
  static_assert(sizeof(VR::OwnsData) == 4 && sizeof(VR::Moved) == 4);
  static_assert(std::is_same_v<decltype(VR::Items), Array<DICOMObject*>*>);
  static_assert(std::is_same_v<decltype(VR::ValueTag), std::uint32_t>);
  static_assert(std::is_same_v<decltype(VR::TypeCode), std::uint16_t>);
  static_assert(std::is_same_v<decltype(VR::StreamPosition), std::uint32_t>);
  const std::size_t offsets[] = {offsetof(VR, Group),    offsetof(VR, Element),
                                 offsetof(VR, Length),   offsetof(VR, Data),
                                 offsetof(VR, OwnsData), offsetof(VR, Moved),
                                 offsetof(VR, Items),    offsetof(VR, ValueTag),
                                 offsetof(VR, TypeCode), offsetof(VR, StreamPosition)};
  EXPECT_TRUE(std::is_sorted(std::begin(offsets), std::end(offsets)));
}

TEST(VR, EmptyHasAllFieldsZeroButOwnsWhatItWillHold) {
  const VR vr{};
  EXPECT_EQ(vr.Group, 0);
  EXPECT_EQ(vr.Element, 0);
  EXPECT_EQ(vr.Length, 0u);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.OwnsData, 1u);
  EXPECT_EQ(vr.Moved, 0u);
  EXPECT_EQ(vr.Items, nullptr);
  EXPECT_EQ(vr.ValueTag, 0u);
  EXPECT_EQ(vr.TypeCode, 0);
  EXPECT_EQ(vr.StreamPosition, 0u);
}

TEST(VR, TakesAPointerAsItIs) {
  std::uint8_t bytes[] = {1, 2, 3};
  const VR vr(0x7FE0, 0x0010, 3, bytes, false);
  EXPECT_EQ(vr.Group, 0x7FE0);
  EXPECT_EQ(vr.Element, 0x0010);
  EXPECT_EQ(vr.Length, 3u);
  EXPECT_EQ(vr.Data, bytes);
  EXPECT_EQ(vr.OwnsData, 0u);
  EXPECT_EQ(vr.Moved, 0u);
  EXPECT_EQ(vr.Items, nullptr);
  EXPECT_EQ(vr.ValueTag, 0u);
  EXPECT_EQ(vr.TypeCode, 0);
  EXPECT_EQ(vr.StreamPosition, 0u);
}

TEST(VR, OwnsAPointerThatItTakesUnlessToldOtherwise) {
  auto* first = NewBytes({1, 2});
  auto* second = NewBytes({3, 4});
  const VR byDefault(0x0008, 0x0018, 2, first);
  const VR told(0x0008, 0x0018, 2, second, true);
  EXPECT_EQ(byDefault.Data, first);
  EXPECT_EQ(byDefault.OwnsData, 1u);
  EXPECT_EQ(told.Data, second);
  EXPECT_EQ(told.OwnsData, 1u);
}

TEST(VR, TakesNoPointerAsAnElementWithoutValue) {
  const VR vr(0x0008, 0x0018, 0, nullptr);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.Length, 0u);
}

TEST(VR, DoesNotTakeAPointerOfAnotherKindForTheOrderToAllocate) {
  // All of these would convert to the boolean `allocate` on their own.
  static_assert(!std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t,
                                         const std::uint8_t*>);
  static_assert(!std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, char*>);
  static_assert(
      !std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, const char*>);
  static_assert(!std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, void*>);
  static_assert(
      std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, std::uint8_t*>);
  static_assert(
      std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, std::nullptr_t>);
  static_assert(std::is_constructible_v<VR, std::uint16_t, std::uint16_t, std::uint32_t, bool>);
}

TEST(VR, AllocatesAnEvenLengthAsItIs) {
  for (const std::uint32_t length : {2u, 14u, 16u, 18u, 4096u}) {
    const VR vr(0x0010, 0x0020, length, true);
    EXPECT_EQ(vr.Length, length);
    ASSERT_NE(vr.Data, nullptr);
    EXPECT_EQ(vr.OwnsData, 1u);
    // All of it can be written.
    std::memset(vr.Data, 0x5A, length);
    EXPECT_EQ(vr.Data[length - 1], 0x5A);
  }
}

TEST(VR, RaisesAnOddLengthByOneAndPadsItWithNul) {
  for (const std::uint32_t length : {1u, 3u, 13u, 15u, 17u, 63u, 1023u}) {
    // Leaves bytes that are not 0 where the allocator takes the next block from.
    for (int times = 0; times < 4; ++times) {
      std::memset(std::make_unique<std::uint8_t[]>(length + 1).get(), 0xFF, length + 1);
    }
    const VR vr(0x0010, 0x0020, length, true);
    EXPECT_EQ(vr.Length, length + 1);
    ASSERT_NE(vr.Data, nullptr);
    EXPECT_EQ(vr.Data[length], 0) << length;
    std::memset(vr.Data, 0x5A, length);
  }
}

TEST(VR, MadeWithoutAllocationHasTheRaisedLengthAndNoData) {
  const VR odd(0x0010, 0x0020, 7, false);
  EXPECT_EQ(odd.Length, 8u);
  EXPECT_EQ(odd.Data, nullptr);
  EXPECT_EQ(odd.OwnsData, 1u);
  const VR even(0x0010, 0x0020, 8, false);
  EXPECT_EQ(even.Length, 8u);
  EXPECT_EQ(even.Data, nullptr);
}

TEST(VR, MadeWithALengthOfZeroHasNoData) {
  const VR vr(0x0010, 0x0020, 0, true);
  EXPECT_EQ(vr.Length, 0u);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.OwnsData, 1u);
}

TEST(VR, RefusesTheOneLengthThatCannotBeRaised) {
  EXPECT_THROW(VR(0x0010, 0x0020, 0xFFFFFFFF, true), std::bad_alloc);
  EXPECT_THROW(VR(0x0010, 0x0020, 0xFFFFFFFF, false), std::bad_alloc);
  EXPECT_EQ(VR(0x0010, 0x0020, 0xFFFFFFFE, false).Length, 0xFFFFFFFE);
  EXPECT_EQ(VR(0x0010, 0x0020, 0xFFFFFFFD, false).Length, 0xFFFFFFFE);
}

/// An element as the parsers make one: short values lie in the record.
std::unique_ptr<VR> Parsed(const Bytes& value) {
  auto vr = std::make_unique<VR>(GroupOf(kTag), ElementOf(kTag),
                                 static_cast<std::uint32_t>(value.size()), nullptr);
  if (value.empty()) return vr;
  vr->AllocateValue();
  std::copy(value.begin(), value.end(), vr->Data);
  return vr;
}

TEST(VR, AParsedValueLiesInTheRecordWhenItIsShort) {
  for (const std::size_t size : {1u, 2u, 31u, 32u, 33u, 1000u}) {
    const auto vr = Parsed(Pattern(size));
    EXPECT_EQ(vr->Data == vr->Small, size <= 32) << size;
    EXPECT_EQ(vr->OwnsData, 1u);
    EXPECT_EQ(ValueOf(*vr), Pattern(size));
  }
}

TEST(VR, AParsedValueIsCopiedResetReplacedAndMovedLikeAnyOther) {
  for (const std::size_t size : {1u, 31u, 32u, 33u, 1000u}) {
    auto source = Parsed(Pattern(size));
    const VR deep(*source, true);
    {
      const VR shallow(*source, false);
      EXPECT_EQ(shallow.Data, source->Data);
      EXPECT_EQ(shallow.OwnsData, 0u);
    }
    const auto target = Parsed(Pattern(20, 9));
    EXPECT_TRUE(target->ReplaceFrom(source.get()));
    EXPECT_EQ(source->Data, nullptr);
    source = Parsed(Pattern(3));
    EXPECT_TRUE(source->ReplaceFrom(target.get()));
    EXPECT_EQ(ValueOf(*source), Pattern(size));
    DICOMObject object;
    EXPECT_TRUE(source->MoveToObject(&object));
    EXPECT_EQ(source->Data, nullptr);
    source.reset();
    EXPECT_EQ(ValueOf(*object.GetFirstVR()), Pattern(size));
    EXPECT_EQ(object.GetFirstVR()->OwnsData, 1u);
    EXPECT_TRUE(object.GetFirstVR()->Reset());
    EXPECT_EQ(object.GetFirstVR()->Data, nullptr);
    EXPECT_EQ(ValueOf(deep), Pattern(size));
  }
}

TEST(VR, TakeDataHandsOutAnArrayThatOutlivesTheElement) {
  for (const std::size_t size : {1u, 32u, 33u, 1000u}) {
    auto parsed = Parsed(Pattern(size));
    const std::unique_ptr<std::uint8_t[]> fromParsed(parsed->TakeData());
    EXPECT_EQ(parsed->Data, nullptr);
    EXPECT_EQ(parsed->Length, 0u);
    parsed.reset();
    EXPECT_EQ(Bytes(fromParsed.get(), fromParsed.get() + size), Pattern(size));

    auto* own = NewBytes(Pattern(size));
    VR owner(0x0010, 0x0020, static_cast<std::uint32_t>(size), own);
    const std::unique_ptr<std::uint8_t[]> fromOwner(owner.TakeData());
    EXPECT_EQ(fromOwner.get(), own);

    VR borrower(0x0010, 0x0020, static_cast<std::uint32_t>(size), own, false);
    const std::unique_ptr<std::uint8_t[]> fromBorrower(borrower.TakeData());
    EXPECT_NE(fromBorrower.get(), own);
    EXPECT_EQ(Bytes(fromBorrower.get(), fromBorrower.get() + size), Pattern(size));
  }
}

TEST(VR, TakeDataOfNothingIsNull) {
  VR vr(0x0010, 0x0020, 12, nullptr);
  EXPECT_EQ(vr.TakeData(), nullptr);
  EXPECT_EQ(vr.Length, 0u);
}

TEST(VR, ManyRecordsLieApartAndKeepWhatIsWrittenIntoThem) {
  constexpr std::uint32_t kCount = 20000;
  std::vector<std::unique_ptr<VR>> all;
  for (int round = 0; round < 3; ++round) {
    for (std::uint32_t at = 0; at < kCount; ++at) {
      all.push_back(std::make_unique<VR>());
      ASSERT_EQ(reinterpret_cast<std::uintptr_t>(all.back().get()) % alignof(VR), 0u);
      all.back()->Length = at;
      std::memset(all.back()->Small, static_cast<int>(at % 251), sizeof(VR::Small));
    }
    for (std::uint32_t at = 0; at < kCount; ++at) {
      ASSERT_EQ(all[at]->Length, at);
      ASSERT_EQ(all[at]->Small[0], at % 251);
      ASSERT_EQ(all[at]->Small[15], at % 251);
    }
    // Every second one is freed first, so that the next round finds their places in another order.
    for (std::uint32_t at = 0; at < kCount; at += 2) all[at].reset();
    all.clear();
  }
}

TEST(VR, KeyPutsTheGroupAboveTheElement) {
  EXPECT_EQ(VR(0x7FE0, 0x0010, 0, nullptr).Key(), 0x7FE00010u);
  EXPECT_EQ(VR(0xFFFF, 0xFFFE, 0, nullptr).Key(), 0xFFFFFFFEu);
}

/// An element in which every field has a value of its own.
std::unique_ptr<VR> Marked(const Bytes& value) {
  std::unique_ptr<VR> vr(NewVR(kTag, value, type_code::OW));
  vr->ValueTag = 0x12345678;
  vr->StreamPosition = 99;
  return vr;
}

TEST(VR, DeepCopyHasBytesOfItsOwn) {
  for (const std::size_t size : {1u, 2u, 32u, 33u, 300u}) {
    const auto source = Marked(Pattern(size));
    const VR copy(*source, true);
    EXPECT_EQ(copy.Key(), kTag);
    EXPECT_EQ(copy.TypeCode, type_code::OW);
    EXPECT_EQ(copy.Length, size);
    EXPECT_EQ(copy.OwnsData, 1u);
    ASSERT_NE(copy.Data, source->Data);
    EXPECT_EQ(ValueOf(copy), Pattern(size));
    source->Data[0] ^= 0xFF;
    EXPECT_EQ(ValueOf(copy), Pattern(size));
  }
}

TEST(VR, DeepCopyKeepsTheValueTag) { EXPECT_EQ(VR(*Marked({1, 2}), true).ValueTag, 0x12345678u); }

TEST(VR, ShallowCopySharesTheBytesAndOwnsNothing) {
  for (const std::size_t size : {1u, 32u, 33u, 300u}) {
    const auto source = Marked(Pattern(size));
    {
      const VR copy(*source, false);
      EXPECT_EQ(copy.Key(), kTag);
      EXPECT_EQ(copy.TypeCode, type_code::OW);
      EXPECT_EQ(copy.Length, size);
      EXPECT_EQ(copy.Data, source->Data);
      EXPECT_EQ(copy.OwnsData, 0u);
      EXPECT_EQ(copy.ValueTag, 0u);
    }
    // The copy died without the bytes.
    EXPECT_EQ(ValueOf(*source), Pattern(size));
    EXPECT_EQ(source->OwnsData, 1u);
  }
}

TEST(VR, CopyCountsAsMovedAndWasReadFromNoStream) {
  const auto source = Marked({1, 2});
  for (const bool deep : {true, false}) {
    const VR copy(*source, deep);
    EXPECT_EQ(copy.Moved, 1u);
    EXPECT_EQ(copy.StreamPosition, 0u);
  }
  EXPECT_EQ(source->Moved, 0u);
  EXPECT_EQ(source->StreamPosition, 99u);
}

TEST(VR, DeepCopyOfABorrowedValueOwnsItsBytes) {
  std::uint8_t bytes[] = {5, 6};
  const VR source(0x0010, 0x0020, 2, bytes, false);
  const VR copy(source, true);
  EXPECT_EQ(copy.OwnsData, 1u);
  EXPECT_NE(copy.Data, bytes);
  EXPECT_EQ(ValueOf(copy), (Bytes{5, 6}));
}

TEST(VR, DeepCopyWithoutLengthOrWithoutDataHasNoData) {
  // A sequence keeps the length that was read for it, and has no bytes.
  const VR lengthOnly(0x0040, 0xA730, 120, nullptr);
  const VR copyOfLength(lengthOnly, true);
  EXPECT_EQ(copyOfLength.Length, 120u);
  EXPECT_EQ(copyOfLength.Data, nullptr);
  EXPECT_EQ(copyOfLength.OwnsData, 1u);

  std::uint8_t byte = 7;
  const VR dataOnly(0x0040, 0xA730, 0, &byte, false);
  const VR copyOfData(dataOnly, true);
  EXPECT_EQ(copyOfData.Length, 0u);
  EXPECT_EQ(copyOfData.Data, nullptr);
}

TEST(VR, CopyOfAnElementWithoutItemsHasNone) {
  const auto source = Marked({1});
  EXPECT_EQ(VR(*source, true).Items, nullptr);
  EXPECT_EQ(VR(*source, false).Items, nullptr);
}

TEST(VR, CopyOfAnEmptyListOfItemsIsAnEmptyListOfItsOwn) {
  VR source(0x0040, 0xA730, 0, nullptr);
  source.Items = new ItemArray;
  for (const bool deep : {true, false}) {
    const VR copy(source, deep);
    ASSERT_NE(copy.Items, nullptr);
    EXPECT_NE(copy.Items, source.Items);
    EXPECT_EQ(copy.ItemCount(), 0u);
  }
}

std::unique_ptr<VR> NestedSequence() {
  return std::unique_ptr<VR>(NewSequence(
      kTag, {NewObject({NewVR(kInner, "one")}),
             NewObject({NewSequence(kInner, {NewObject({NewVR(kTag, "deep")}), NewObject({})})}),
             NewObject({NewVR(kInner, "three"), NewVR(kTag, "four")})}));
}

constexpr const char* kNestedItems[] = {"8.256=one", "8.256=[16.32=deep][]",
                                        "8.256=three 16.32=four"};

void ExpectNestedItems(VR& vr) {
  ASSERT_EQ(vr.ItemCount(), 3u);
  for (std::uint32_t at = 0; at < 3; ++at) EXPECT_EQ(Outline(*vr.GetItem(at)), kNestedItems[at]);
}

TEST(VR, CopyHasNewItemsInTheSameOrder) {
  const auto source = NestedSequence();
  for (const bool deep : {true, false}) {
    VR copy(*source, deep);
    ExpectNestedItems(copy);
    for (std::uint32_t at = 0; at < 3; ++at) EXPECT_NE(copy.GetItem(at), source->GetItem(at));
    EXPECT_NE(copy.GetItem(1)->GetFirstVR()->GetItem(0),
              source->GetItem(1)->GetFirstVR()->GetItem(0));
  }
  ExpectNestedItems(*source);
}

TEST(VR, DeepCopyIsIndependentOfTheSourceAtEveryDepth) {
  auto source = NestedSequence();
  VR copy(*source, true);
  source->GetItem(0)->GetFirstVR()->Data[0] = 'X';
  source->GetItem(1)->GetFirstVR()->GetItem(0)->GetFirstVR()->Data[0] = 'X';
  source->GetItem(2)->Push(NewVR(MakeTagKey(0x0012, 0x0010), "new"));
  ExpectNestedItems(copy);
  source.reset();
  ExpectNestedItems(copy);
}

TEST(VR, ShallowCopySharesTheBytesAtEveryDepthButNoItem) {
  const auto source = NestedSequence();
  VR copy(*source, false);
  const VR* sourceDeep = source->GetItem(1)->GetFirstVR()->GetItem(0)->GetFirstVR();
  const VR* copyDeep = copy.GetItem(1)->GetFirstVR()->GetItem(0)->GetFirstVR();
  EXPECT_NE(copyDeep, sourceDeep);
  EXPECT_EQ(copyDeep->Data, sourceDeep->Data);
  EXPECT_EQ(copyDeep->OwnsData, 0u);
  delete copy.PopFirstItem();
  EXPECT_EQ(copy.ItemCount(), 2u);
  ExpectNestedItems(*source);
}

TEST(VR, CopiedItemsArePlainObjectsWhateverTheSourceHad) {
  VR source(0x0040, 0xA730, 0, nullptr);
  source.AddItem(new DICOMDataObject);
  VR copy(source, true);
  const DICOMObject& item = *copy.GetItem(0);
  EXPECT_EQ(typeid(item), typeid(DICOMObject));
}

TEST(VR, CloneIsACopyOnTheHeap) {
  const auto source = Marked(Pattern(40));
  const std::unique_ptr<VR> deep(source->Clone(true));
  EXPECT_NE(deep->Data, source->Data);
  EXPECT_EQ(ValueOf(*deep), Pattern(40));
  EXPECT_EQ(deep->ValueTag, 0x12345678u);
  EXPECT_EQ(deep->Moved, 1u);
  const std::unique_ptr<VR> shallow(source->Clone(false));
  EXPECT_EQ(shallow->Data, source->Data);
  EXPECT_EQ(shallow->OwnsData, 0u);
  EXPECT_EQ(shallow->ValueTag, 0u);
}

TEST(VR, ResetLeavesNoValueNoItemsAndNoOwnership) {
  const auto vr = NestedSequence();
  vr->Length = 4;
  vr->Data = NewBytes({1, 2, 3, 4});
  EXPECT_TRUE(vr->Reset());
  EXPECT_EQ(vr->Length, 0u);
  EXPECT_EQ(vr->Data, nullptr);
  EXPECT_EQ(vr->OwnsData, 0u);
  EXPECT_EQ(vr->Items, nullptr);
  EXPECT_EQ(vr->Key(), kTag);
  EXPECT_EQ(vr->TypeCode, type_code::SQ);
  EXPECT_TRUE(vr->Reset());
}

TEST(VR, ResetLeavesABorrowedValueAlone) {
  std::uint8_t bytes[] = {5, 6};
  VR vr(0x0010, 0x0020, 2, bytes, false);
  vr.Reset();
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(bytes[0], 5);
}

TEST(VR, ReplaceFromTakesValueTypeAndItems) {
  VR target(0x0010, 0x0020, 2, NewBytes({1, 2}));
  target.ValueTag = 1;
  target.StreamPosition = 2;
  target.AddItem(NewObject({NewVR(kInner, "old")}));
  auto* bytes = NewBytes({3, 4, 5});
  VR source(0x0010, 0x0020, 3, bytes);
  source.TypeCode = type_code::UT;
  source.ValueTag = 3;
  source.StreamPosition = 4;
  source.AddItem(NewObject({NewVR(kInner, "new")}));
  ItemArray* items = source.Items;

  EXPECT_TRUE(target.ReplaceFrom(&source));
  EXPECT_EQ(target.Length, 3u);
  EXPECT_EQ(target.Data, bytes);
  EXPECT_EQ(target.OwnsData, 1u);
  EXPECT_EQ(target.TypeCode, type_code::UT);
  EXPECT_EQ(target.Items, items);
  EXPECT_EQ(Outline(*target.GetItem(0)), "8.256=new");
  // Neither of these two goes along.
  EXPECT_EQ(target.ValueTag, 1u);
  EXPECT_EQ(target.StreamPosition, 2u);
  EXPECT_EQ(target.Moved, 0u);

  EXPECT_EQ(source.Length, 0u);
  EXPECT_EQ(source.Data, nullptr);
  EXPECT_EQ(source.Items, nullptr);
  EXPECT_EQ(source.OwnsData, 0u);
  EXPECT_EQ(source.Moved, 1u);
  EXPECT_EQ(source.TypeCode, type_code::UT);
}

TEST(VR, ReplaceFromTakesABorrowedValueAsBorrowed) {
  std::uint8_t bytes[] = {5, 6};
  VR source(0x0010, 0x0020, 2, bytes, false);
  VR target(0x0010, 0x0020, 2, NewBytes({1, 2}));
  EXPECT_TRUE(target.ReplaceFrom(&source));
  EXPECT_EQ(target.Data, bytes);
  EXPECT_EQ(target.OwnsData, 0u);
}

TEST(VR, ReplaceFromTakesShortValuesToo) {
  for (const std::size_t size : {1u, 8u, 31u, 32u, 33u}) {
    const std::unique_ptr<VR> original(NewVR(kTag, Pattern(size)));
    std::unique_ptr<VR> source(original->Clone(true));
    VR target(0x0010, 0x0020, 0, nullptr);
    EXPECT_TRUE(target.ReplaceFrom(source.get()));
    EXPECT_EQ(source->Data, nullptr);
    source.reset();
    EXPECT_EQ(ValueOf(target), Pattern(size));
  }
}

TEST(VR, ReplaceFromNothingOrFromAnotherTagChangesNothing) {
  VR target(0x0010, 0x0020, 2, NewBytes({1, 2}));
  for (const TagKey other : {MakeTagKey(0x0010, 0x0021), MakeTagKey(0x0011, 0x0020)}) {
    const std::unique_ptr<VR> source(NewVR(other, "text"));
    EXPECT_FALSE(target.ReplaceFrom(source.get()));
    EXPECT_EQ(TextOf(*source), "text");
    EXPECT_EQ(source->Moved, 0u);
  }
  EXPECT_FALSE(target.ReplaceFrom(nullptr));
  EXPECT_EQ(ValueOf(target), (Bytes{1, 2}));
}

TEST(VR, ReplaceFromItselfChangesNothing) {
  VR vr(0x0010, 0x0020, 2, NewBytes({1, 2}));
  vr.AddItem(NewObject({NewVR(kInner, "item")}));
  EXPECT_TRUE(vr.ReplaceFrom(&vr));
  EXPECT_EQ(ValueOf(vr), (Bytes{1, 2}));
  EXPECT_EQ(vr.OwnsData, 1u);
  EXPECT_EQ(vr.Moved, 0u);
  EXPECT_EQ(vr.ItemCount(), 1u);
}

// Content items hold content items under the same tag, and one may take the place of the one around it.
TEST(VR, ReplaceFromAnElementThatHangsBelowItTakesItBeforeTheRestGoes) {
  VR* inner = NewSequence(kTag, {NewObject({NewVR(kInner, "kept")})});
  inner->Data = NewBytes({7, 8});
  inner->Length = 2;
  const std::unique_ptr<VR> outer(NewSequence(kTag, {NewObject({inner}), NewObject({})}));
  EXPECT_TRUE(outer->ReplaceFrom(inner));
  EXPECT_EQ(ValueOf(*outer), (Bytes{7, 8}));
  ASSERT_EQ(outer->ItemCount(), 1u);
  EXPECT_EQ(Outline(*outer->GetItem(0)), "8.256=kept");
}

// It would come to hang below itself, and nobody would own it.
TEST(VR, ReplaceFromAnElementThatItHangsBelowIsRefused) {
  VR* inner = NewSequence(kTag, {NewObject({NewVR(kInner, "kept")})});
  VR* between = NewSequence(kInner, {NewObject({}), NewObject({inner})});
  const std::unique_ptr<VR> outer(NewSequence(
      kTag, {NewObject({NewVR(kInner, "first")}), NewObject({between, NewVR(kTag, "like")})}));
  EXPECT_FALSE(inner->ReplaceFrom(outer.get()));
  EXPECT_EQ(outer->Moved, 0u);
  EXPECT_EQ(Outline(*outer->GetItem(0)), "8.256=first");
  EXPECT_EQ(Outline(*outer->GetItem(1)), "8.256=[][16.32=[8.256=kept]] 16.32=like");
}

TEST(VR, ReplaceFromItsOwnShallowCopyKeepsTheBytes) {
  for (const std::size_t size : {4u, 64u}) {
    const std::unique_ptr<VR> vr(NewVR(kTag, Pattern(size)));
    std::unique_ptr<VR> copy(vr->Clone(false));
    EXPECT_TRUE(vr->ReplaceFrom(copy.get()));
    copy.reset();
    EXPECT_EQ(ValueOf(*vr), Pattern(size));
    EXPECT_EQ(vr->OwnsData, 1u);
  }
}

TEST(VR, ReplaceFromItsOwnShallowCopyKeepsTheBytesInItems) {
  for (const std::size_t size : {4u, 32u, 64u}) {
    const auto inner = [size](std::uint32_t seed) {
      std::unique_ptr<VR> vr = Parsed(Pattern(size, seed));
      return vr.release();
    };
    const std::unique_ptr<VR> vr(NewSequence(
        kTag, {NewObject({inner(1)}),
               NewObject({NewSequence(kInner, {NewObject({}), NewObject({inner(2)})})})}));
    vr->Data = NewBytes(Pattern(50));
    vr->Length = 50;
    std::unique_ptr<VR> copy(vr->Clone(false));
    EXPECT_TRUE(vr->ReplaceFrom(copy.get()));
    copy.reset();
    EXPECT_EQ(ValueOf(*vr), Pattern(50));
    ASSERT_EQ(vr->ItemCount(), 2u);
    const VR* first = vr->GetItem(0)->GetFirstVR();
    const VR* second = vr->GetItem(1)->GetFirstVR()->GetItem(1)->GetFirstVR();
    EXPECT_EQ(ValueOf(*first), Pattern(size, 1));
    EXPECT_EQ(ValueOf(*second), Pattern(size, 2));
    for (const VR* each : {static_cast<const VR*>(vr.get()), first, second}) {
      EXPECT_EQ(each->OwnsData, 1u);
    }
  }
}

TEST(VR, ReplaceFromAShallowCopyOfWhatHangsBelowItKeepsTheBytes) {
  for (const std::size_t size : {4u, 64u}) {
    const std::unique_ptr<VR> vr(
        NewSequence(kTag, {NewObject({Parsed(Pattern(size)).release()}), NewObject({})}));
    std::unique_ptr<VR> copy(vr->GetItem(0)->GetFirstVR()->Clone(false));
    EXPECT_TRUE(vr->ReplaceFrom(copy.get()));
    copy.reset();
    EXPECT_EQ(ValueOf(*vr), Pattern(size));
    EXPECT_EQ(vr->OwnsData, 1u);
    EXPECT_EQ(vr->Items, nullptr);
  }
}

TEST(VR, ReplaceFromTwoShallowCopiesInOneSourceKeepsTheBytesOfBoth) {
  for (const std::size_t size : {4u, 64u}) {
    const std::unique_ptr<VR> vr(NewSequence(kTag, {NewObject({Parsed(Pattern(size)).release()})}));
    std::unique_ptr<VR> copy(vr->Clone(false));
    copy->AddItem(vr->GetItem(0)->Clone(false));
    EXPECT_TRUE(vr->ReplaceFrom(copy.get()));
    copy.reset();
    ASSERT_EQ(vr->ItemCount(), 2u);
    for (std::uint32_t at = 0; at < 2; ++at) {
      EXPECT_EQ(ValueOf(*vr->GetItem(at)->GetFirstVR()), Pattern(size));
    }
  }
}

// What stays together keeps its owner.
TEST(VR, ReplaceFromAnElementBelowItLeavesWhatItSharesWithinItself) {
  VR* original = NewVR(kInner, Pattern(64));
  VR* inner = NewSequence(kTag, {NewObject({original}), NewObject({original->Clone(false)})});
  const std::unique_ptr<VR> outer(NewSequence(kTag, {NewObject({inner})}));
  EXPECT_TRUE(outer->ReplaceFrom(inner));
  ASSERT_EQ(outer->ItemCount(), 2u);
  EXPECT_EQ(outer->GetItem(0)->GetFirstVR(), original);
  EXPECT_EQ(original->OwnsData, 1u);
  EXPECT_EQ(outer->GetItem(1)->GetFirstVR()->OwnsData, 0u);
  EXPECT_EQ(outer->GetItem(1)->GetFirstVR()->Data, original->Data);
}

TEST(VR, ReplaceFromAnElementBelowItTakesBytesThatItsOwnItemsShare) {
  for (const std::size_t size : {4u, 64u}) {
    VR* inner = Parsed(Pattern(size)).release();
    VR* sharer = inner->Clone(false);
    sharer->Element = ElementOf(kInner);
    inner->AddItem(NewObject({sharer}));
    const std::unique_ptr<VR> outer(NewSequence(inner->Key(), {NewObject({inner})}));
    EXPECT_TRUE(outer->ReplaceFrom(inner));
    EXPECT_EQ(outer->OwnsData, 1u);
    EXPECT_EQ(ValueOf(*outer->GetItem(0)->GetFirstVR()), Pattern(size));
    delete outer->PopFirstItem();
    EXPECT_EQ(ValueOf(*outer), Pattern(size));
  }
}

TEST(VR, ReplaceFromItsShallowCopyWhereItBorrowsFromItsOwnItemKeepsTheBytes) {
  VR* owner = NewVR(kInner, Pattern(64));
  VR vr(GroupOf(kTag), ElementOf(kTag), 64, owner->Data, false);
  vr.AddItem(NewObject({owner}));
  const std::unique_ptr<VR> copy(vr.Clone(false));
  EXPECT_TRUE(vr.ReplaceFrom(copy.get()));
  EXPECT_EQ(ValueOf(vr), Pattern(64));
  EXPECT_EQ(ValueOf(*vr.GetItem(0)->GetFirstVR()), Pattern(64));
}

TEST(VR, ReplaceFromLeavesWhatIsBorrowedElsewhere) {
  std::uint8_t bytes[] = {5, 6};
  VR target(0x0010, 0x0020, 2, NewBytes({1, 2}));
  VR source(0x0010, 0x0020, 0, nullptr);
  source.AddItem(NewObject({new VR(0x0008, 0x0100, 2, bytes, false)}));
  EXPECT_TRUE(target.ReplaceFrom(&source));
  EXPECT_EQ(target.GetItem(0)->GetFirstVR()->Data, bytes);
  EXPECT_EQ(target.GetItem(0)->GetFirstVR()->OwnsData, 0u);
}

/// A value of 1000 bytes that was stepped over and begins with `first`.
VR* NewSteppedOver(TagKey key, std::uint8_t first) {
  VR* vr = NewVR(key);
  vr->Length = 1000;
  vr->Start = new std::uint8_t[VR::kStartSize]{first};
  vr->IsSteppedOver = true;
  return vr;
}

void ExpectSteppedOver(const VR& vr, std::uint8_t first) {
  EXPECT_TRUE(vr.IsSteppedOver);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.Length, 1000u);
  ASSERT_EQ(vr.FirstBytes().size(), VR::kStartSize);
  EXPECT_EQ(vr.FirstBytes()[0], first);
}

void ExpectNothing(const VR& vr) {
  EXPECT_FALSE(vr.IsSteppedOver);
  EXPECT_EQ(vr.Length, 0u);
  EXPECT_TRUE(vr.FirstBytes().empty());
}

TEST(VR, FirstBytesAreAllThatAreHere) {
  const std::unique_ptr<VR> vr(NewVR(kTag, Pattern(1000)));
  EXPECT_EQ(vr->FirstBytes().data(), vr->Data);
  EXPECT_EQ(vr->FirstBytes().size(), 1000u);
  vr->Reset();
  vr->Length = 4;  // a value that was not loaded
  EXPECT_TRUE(vr->FirstBytes().empty());
  const std::unique_ptr<VR> over(NewSteppedOver(kTag, 7));
  ExpectSteppedOver(*over, 7);
  over->Length = 10;
  EXPECT_EQ(over->FirstBytes().size(), 10u);
}

TEST(VR, CopiesOfWhatWasSteppedOverAreThatToo) {
  std::unique_ptr<VR> source(NewSteppedOver(kTag, 7));
  const std::unique_ptr<VR> deep(source->Clone(true));
  {
    const std::unique_ptr<VR> shallow(source->Clone(false));
    ExpectSteppedOver(*shallow, 7);
    EXPECT_EQ(shallow->Start, source->Start);
  }
  ExpectSteppedOver(*source, 7);
  source.reset();
  ExpectSteppedOver(*deep, 7);
}

TEST(VR, WhatWasSteppedOverIsHandedOnAsThat) {
  const std::unique_ptr<VR> source(NewSteppedOver(kTag, 7));
  const std::unique_ptr<VR> taker(NewSteppedOver(kTag, 8));
  ASSERT_TRUE(taker->ReplaceFrom(source.get()));
  ExpectSteppedOver(*taker, 7);
  ExpectNothing(*source);
  DICOMObject target;
  ASSERT_TRUE(taker->MoveToObject(&target));
  ExpectNothing(*taker);
  ExpectSteppedOver(*target.GetVR(GroupOf(kTag), ElementOf(kTag)), 7);
}

TEST(VR, ReplaceFromItsOwnShallowCopyKeepsTheStartOfWhatWasSteppedOver) {
  const std::unique_ptr<VR> vr(NewSteppedOver(kTag, 7));
  const std::unique_ptr<VR> copy(vr->Clone(false));
  ASSERT_TRUE(vr->ReplaceFrom(copy.get()));
  ExpectSteppedOver(*vr, 7);
}

TEST(VR, LosesItsMarkWithItsValue) {
  const std::unique_ptr<VR> reset(NewSteppedOver(kTag, 7));
  reset->Reset();
  ExpectNothing(*reset);
  const std::unique_ptr<VR> taken(NewSteppedOver(kTag, 7));
  EXPECT_EQ(taken->TakeData(), nullptr);
  ExpectNothing(*taken);
  const std::unique_ptr<VR> replaced(NewSteppedOver(kTag, 7));
  replaced->ReplaceValue("abc", 3);
  EXPECT_FALSE(replaced->IsSteppedOver);
  EXPECT_EQ(TextOf(*replaced), "abc");
  replaced->ReplaceFrom(std::unique_ptr<VR>(NewVR(kTag, "some longer text than lies in it")).get());
  EXPECT_FALSE(replaced->IsSteppedOver);
}

TEST(VR, ReplaceFromAnElementThatItHangsBelowUnderAFormerTagIsRefused) {
  VR* inner = NewVR(kInner, "kept");
  const std::unique_ptr<VR> outer(NewSequence(kTag, {NewObject({inner, NewVR(kTag, "like")})}));
  inner->Group = GroupOf(kTag);
  inner->Element = ElementOf(kTag);
  EXPECT_FALSE(inner->ReplaceFrom(outer.get()));
  EXPECT_EQ(TextOf(*inner), "kept");
  EXPECT_EQ(outer->ItemCount(), 1u);
}

TEST(VR, MoveToTheObjectThatHoldsItUnderAFormerTagHandsTheValueToTheNewOne) {
  VR* vr = NewSequence(kInner, {NewObject({NewVR(kTag, "item")})});
  vr->Data = NewBytes(Pattern(64));
  vr->Length = 64;
  DICOMObject object;
  object.Push(vr);
  vr->Group = GroupOf(kTag);
  vr->Element = ElementOf(kTag);
  EXPECT_TRUE(vr->MoveToObject(&object));
  VR* moved = object.GetVR(GroupOf(kTag), ElementOf(kTag));
  ASSERT_NE(moved, nullptr);
  ASSERT_NE(moved, vr);
  EXPECT_EQ(ValueOf(*moved), Pattern(64));
  ASSERT_EQ(moved->ItemCount(), 1u);
  EXPECT_EQ(object.GetVR(GroupOf(kInner), ElementOf(kInner)), vr);
  EXPECT_EQ(vr->Length, 0u);
  EXPECT_EQ(vr->Items, nullptr);
}

TEST(VR, MoveToObjectHandsTheValueToANewElementInTheTarget) {
  auto* bytes = NewBytes({3, 4, 5});
  VR source(0x0010, 0x0020, 3, bytes);
  source.TypeCode = type_code::UT;
  DICOMObject target;
  EXPECT_TRUE(source.MoveToObject(&target));
  EXPECT_EQ(source.Length, 0u);
  EXPECT_EQ(source.Data, nullptr);
  EXPECT_EQ(source.OwnsData, 0u);
  const VR* moved = target.GetVR(0x0010, 0x0020);
  ASSERT_NE(moved, nullptr);
  EXPECT_NE(moved, &source);
  EXPECT_EQ(moved->Length, 3u);
  EXPECT_EQ(moved->Data, bytes);
  EXPECT_EQ(moved->OwnsData, 1u);
  EXPECT_EQ(moved->Moved, 0u);
  EXPECT_EQ(moved->TypeCode, type_code::UT);
  EXPECT_EQ(target.LastPushedVR, moved);
}

TEST(VR, MoveToObjectHandsABorrowedValueOverAsBorrowed) {
  std::uint8_t bytes[] = {5, 6};
  VR source(0x0010, 0x0020, 2, bytes, false);
  DICOMObject target;
  EXPECT_TRUE(source.MoveToObject(&target));
  EXPECT_EQ(target.GetFirstVR()->Data, bytes);
  EXPECT_EQ(target.GetFirstVR()->OwnsData, 0u);
}

TEST(VR, MoveToObjectHandsAllItemsOverInOrder) {
  const auto source = NestedSequence();
  source->Length = 60;
  DICOMObject* first = source->GetItem(0);
  first->SequenceBytes = 100;
  DICOMObject target;
  EXPECT_TRUE(source->MoveToObject(&target));
  EXPECT_EQ(source->Items, nullptr);
  ExpectNestedItems(*target.GetFirstVR());
  EXPECT_EQ(target.GetFirstVR()->Length, 60u);
  EXPECT_EQ(target.GetFirstVR()->GetItem(0), first);
  // 16 for the sequence, 16 for each of three items and what is nested in the first.
  EXPECT_EQ(target.SequenceBytes, 16u + 3 * 16u + 100u);
}

TEST(VR, MoveToObjectFreesAnEmptyListOfItems) {
  VR source(0x0040, 0xA730, 60, nullptr);
  source.Items = new ItemArray;
  DICOMObject target;
  EXPECT_TRUE(source.MoveToObject(&target));
  EXPECT_EQ(source.Items, nullptr);
  EXPECT_EQ(target.GetFirstVR()->Items, nullptr);
}

TEST(VR, MoveToObjectWithoutLengthNeedsTheMarkOfAMove) {
  DICOMObject target;
  VR empty(0x0010, 0x0020, 0, nullptr);
  EXPECT_FALSE(empty.MoveToObject(&target));
  EXPECT_TRUE(target.IsEmpty());
  empty.Moved = 1;
  EXPECT_TRUE(empty.MoveToObject(&target));
  EXPECT_NE(target.GetVR(0x0010, 0x0020), nullptr);
  EXPECT_EQ(target.GetFirstVR()->Length, 0u);

  // A sequence of undefined length that was never copied has neither.
  const auto sequence = NestedSequence();
  DICOMObject other;
  EXPECT_FALSE(sequence->MoveToObject(&other));
  EXPECT_TRUE(other.IsEmpty());
  ExpectNestedItems(*sequence);
  const std::unique_ptr<VR> copy(sequence->Clone(true));
  EXPECT_TRUE(copy->MoveToObject(&other));
  ExpectNestedItems(*other.GetFirstVR());
}

TEST(VR, MoveToObjectASecondTimeLeavesWhatWasMoved) {
  VR source(0x0010, 0x0020, 2, NewBytes({1, 2}));
  DICOMObject target;
  EXPECT_TRUE(source.MoveToObject(&target));
  EXPECT_FALSE(source.MoveToObject(&target));
  EXPECT_EQ(ValueOf(*target.GetFirstVR()), (Bytes{1, 2}));
}

TEST(VR, MoveToNoObjectChangesNothing) {
  VR source(0x0010, 0x0020, 2, NewBytes({1, 2}));
  EXPECT_FALSE(source.MoveToObject(nullptr));
  EXPECT_EQ(ValueOf(source), (Bytes{1, 2}));
  EXPECT_EQ(source.OwnsData, 1u);
}

TEST(VR, MoveToObjectReplacesTheElementOfThisTagThere) {
  DICOMObject target;
  target.Push(NewSequence(kTag, {NewObject({NewVR(kInner, "old")})}));
  VR source(0x0010, 0x0020, 2, NewBytes({1, 2}));
  EXPECT_TRUE(source.MoveToObject(&target));
  EXPECT_EQ(test::KeysOf(target), std::vector{kTag});
  EXPECT_EQ(ValueOf(*target.GetFirstVR()), (Bytes{1, 2}));
  EXPECT_EQ(target.GetFirstVR()->ItemCount(), 0u);
}

TEST(VR, MoveToTheObjectThatHoldsItLeavesItThere) {
  DICOMObject object;
  VR* element = NewSequence(kTag, {NewObject({NewVR(kInner, "item")})});
  element->Length = 2;
  element->Data = NewBytes({1, 2});
  object.Push(element);
  EXPECT_TRUE(element->MoveToObject(&object));
  EXPECT_EQ(object.GetFirstVR(), element);
  EXPECT_EQ(Outline(object), "16.32=\x01\x02[8.256=item]");
}

TEST(VR, MoveToTheObjectInWhichItHangsReplacesTheSequenceAroundIt) {
  DICOMObject object;
  VR* inner = NewSequence(kTag, {NewObject({NewVR(kInner, "kept")})});
  inner->Data = NewBytes({7, 8});
  inner->Length = 2;
  object.Push(NewSequence(kTag, {NewObject({inner}), NewObject({})}));
  EXPECT_TRUE(inner->MoveToObject(&object));
  EXPECT_EQ(Outline(object), "16.32=\x07\x08[8.256=kept]");
}

TEST(VR, MoveToAnObjectThatHangsBelowItIsRefused) {
  DICOMObject* deep = NewObject({NewVR(kInner, "deep")});
  DICOMObject* middle = NewObject({NewSequence(kTag, {NewObject({}), deep})});
  VR sequence(GroupOf(kTag), ElementOf(kTag), 4, NewBytes({1, 2, 3, 4}));
  sequence.AddItem(NewObject({NewVR(kInner, "first")}));
  sequence.AddItem(middle);
  DICOMObject forwarder;
  forwarder.PushTarget = deep;
  for (DICOMObject* target : {sequence.GetItem(0), middle, deep, &forwarder}) {
    EXPECT_FALSE(sequence.MoveToObject(target));
    EXPECT_EQ(ValueOf(sequence), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(sequence.OwnsData, 1u);
    ASSERT_EQ(sequence.ItemCount(), 2u);
    EXPECT_EQ(Outline(*sequence.GetItem(0)), "8.256=first");
    EXPECT_EQ(Outline(*sequence.GetItem(1)), "16.32=[][8.256=deep]");
  }
}

TEST(VR, MoveToATargetThatForwardsTakesValueAndItemsToTheEndOfTheWay) {
  DICOMObject end;
  DICOMObject middle;
  middle.Push(NewVR(kInner, "here before it forwarded"));
  middle.PushTarget = &end;
  const auto source = NestedSequence();
  source->Length = 60;
  EXPECT_TRUE(source->MoveToObject(&middle));
  // Nothing may end up in the element that was pushed last before.
  EXPECT_EQ(Outline(middle), "8.256=here before it forwarded");
  ASSERT_NE(end.GetVR(0x0010, 0x0020), nullptr);
  ExpectNestedItems(*end.GetFirstVR());
  EXPECT_EQ(end.SequenceBytes, 16u + 3 * 16u);
  EXPECT_EQ(middle.SequenceBytes, 0u);
}

TEST(VR, MoveToObjectGoesThroughThePushOfTheTarget) {
  class Counter : public DICOMObject {
   public:
    bool Push(DICOMObject* item) override {
      ++items;
      return DICOMObject::Push(item);
    }
    bool Push(VR* element) override {
      ++elements;
      return DICOMObject::Push(element);
    }
    int items = 0;
    int elements = 0;
  };
  Counter target;
  const auto source = NestedSequence();
  source->Length = 60;
  EXPECT_TRUE(source->MoveToObject(&target));
  EXPECT_EQ(target.elements, 1);
  EXPECT_EQ(target.items, 3);
}

TEST(VR, MoveToATargetWhosePushPutsElementsElsewhereTakesTheItemsThereToo) {
  class Diverter : public DICOMObject {
   public:
    using DICOMObject::Push;
    bool Push(VR* element) override { return elsewhere.Push(element); }
    DICOMObject elsewhere;
  };
  Diverter target;
  target.DICOMObject::Push(NewVR(kInner, "here before"));
  const auto source = NestedSequence();
  source->Length = 60;
  EXPECT_TRUE(source->MoveToObject(&target));
  EXPECT_EQ(Outline(target), "8.256=here before");
  ExpectNestedItems(*target.elsewhere.GetFirstVR());
}

TEST(VR, MoveToATargetThatRefusesLeavesEverything) {
  class Refuser : public DICOMObject {
   public:
    using DICOMObject::Push;
    bool Push(VR*) override { return false; }
  };
  Refuser target;
  const auto source = NestedSequence();
  source->Length = 2;
  source->Data = NewBytes({1, 2});
  source->LacksTable = true;
  EXPECT_FALSE(source->MoveToObject(&target));
  EXPECT_TRUE(source->LacksTable);
  EXPECT_EQ(ValueOf(*source), (Bytes{1, 2}));
  EXPECT_EQ(source->OwnsData, 1u);
  ExpectNestedItems(*source);
}

TEST(VR, WithoutItemsCountsNoneAndGivesNone) {
  VR vr(0x0040, 0xA730, 0, nullptr);
  EXPECT_EQ(vr.ItemCount(), 0u);
  EXPECT_EQ(vr.GetItem(0), nullptr);
  EXPECT_EQ(vr.PopFirstItem(), nullptr);
  EXPECT_EQ(vr.Items, nullptr);
}

TEST(VR, AddItemMakesTheListOnFirstUseAndAppends) {
  VR vr(0x0040, 0xA730, 0, nullptr);
  auto* first = new DICOMObject;
  auto* second = new DICOMObject;
  EXPECT_TRUE(vr.AddItem(first));
  ASSERT_NE(vr.Items, nullptr);
  EXPECT_TRUE(vr.AddItem(second));
  EXPECT_EQ(vr.ItemCount(), 2u);
  EXPECT_EQ(vr.GetItem(0), first);
  EXPECT_EQ(vr.GetItem(1), second);
  EXPECT_EQ(vr.GetItem(2), nullptr);
}

TEST(VR, AddItemOfNothingIsRefused) {
  VR vr(0x0040, 0xA730, 0, nullptr);
  EXPECT_FALSE(vr.AddItem(nullptr));
  EXPECT_EQ(vr.Items, nullptr);
}

TEST(VR, PopFirstItemHandsItemsOutInOrderAndEndsTheList) {
  VR vr(0x0040, 0xA730, 0, nullptr);
  auto* first = new DICOMObject;
  auto* second = new DICOMObject;
  vr.AddItem(first);
  vr.AddItem(second);
  const std::unique_ptr<DICOMObject> firstOut(vr.PopFirstItem());
  EXPECT_EQ(firstOut.get(), first);
  EXPECT_NE(vr.Items, nullptr);
  EXPECT_EQ(vr.ItemCount(), 1u);
  EXPECT_EQ(vr.GetItem(0), second);
  const std::unique_ptr<DICOMObject> secondOut(vr.PopFirstItem());
  EXPECT_EQ(secondOut.get(), second);
  EXPECT_EQ(vr.Items, nullptr);
  EXPECT_EQ(vr.PopFirstItem(), nullptr);
}

TEST(VR, PopFirstItemOfAnEmptyListEndsTheList) {
  VR vr(0x0040, 0xA730, 0, nullptr);
  vr.Items = new ItemArray;
  EXPECT_EQ(vr.PopFirstItem(), nullptr);
  EXPECT_EQ(vr.Items, nullptr);
}

TEST(VR, TheLackOfAnOffsetTableGoesWhereTheFragmentsGo) {
  const auto make = [] {
    auto vr = std::make_unique<VR>(0x7FE0, 0x0010, 2, NewBytes({1, 2}));
    vr->AddItem(new DICOMObject);
    vr->LacksTable = true;
    return vr;
  };
  EXPECT_FALSE(VR().LacksTable);
  EXPECT_TRUE(VR(*make(), true).LacksTable);
  EXPECT_TRUE(VR(*make(), false).LacksTable);

  const auto source = make();
  VR target(0x7FE0, 0x0010, 0, nullptr);
  EXPECT_TRUE(target.ReplaceFrom(source.get()));
  EXPECT_TRUE(target.LacksTable);
  EXPECT_FALSE(source->LacksTable);
  VR other(0x7FE0, 0x0010, 0, nullptr);
  EXPECT_TRUE(target.ReplaceFrom(&other));
  EXPECT_FALSE(target.LacksTable);

  const auto moving = make();
  DICOMObject object;
  EXPECT_TRUE(moving->MoveToObject(&object));
  EXPECT_TRUE(object.GetFirstVR()->LacksTable);
  EXPECT_FALSE(moving->LacksTable);

  const auto popped = make();
  const std::unique_ptr<DICOMObject> item(popped->PopFirstItem());
  EXPECT_FALSE(popped->LacksTable) << "there are no fragments any more";
  const auto reset = make();
  EXPECT_TRUE(reset->Reset());
  EXPECT_FALSE(reset->LacksTable);
}

TEST(VR, AForwardLoopOverManyItemsIsLinear) {
  // A walk from an end for each index would be 10^10 steps.
  constexpr std::uint32_t kItems = 200000;
  VR vr(0x0040, 0xA730, 0, nullptr);
  for (std::uint32_t at = 0; at < kItems; ++at) vr.AddItem(new DICOMObject);
  std::uint32_t found = 0;
  for (std::uint32_t at = 0; at < vr.ItemCount(); ++at)
    found += vr.GetItem(at) != nullptr ? 1u : 0u;
  EXPECT_EQ(found, kItems);
}

}  // namespace
}  // namespace tessaret
