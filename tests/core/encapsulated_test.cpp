// Encapsulated pixel data: fragments become items, and items become fragments (DICOM PS3.5, A.4).
#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/memory_file.h"

namespace tessaret::test {
namespace {

/// The value of fragment `number` of the pixel data.
std::string FragmentText(const DICOMObject& object, std::uint32_t number) {
  return ValueText(At(ItemAt(object, 0x7FE0, 0x0010, number), 0xFFFE, 0xE000));
}

TEST(Encapsulated, FragmentsBecomeItemsWithTheOffsetTableFirst) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = DataSetBuilder(encoding)
                            .Fragments({{}, Pattern(10), Pattern(4, 7)})
                            .Element(0xFFFC, 0xFFFC, "OB", "x ");
    const Parsed parsed = Parse(encoding, bytes);
    ASSERT_TRUE(parsed.result);
    const VR& pixels = At(*parsed.object, 0x7FE0, 0x0010);
    EXPECT_EQ(pixels.Length, 0u);
    EXPECT_EQ(pixels.Data, nullptr);
    ASSERT_EQ(pixels.ItemCount(), 3u);
    const VR& table = At(ItemAt(*parsed.object, 0x7FE0, 0x0010, 0), 0xFFFE, 0xE000);
    EXPECT_EQ(table.Length, 0u);
    EXPECT_EQ(table.Data, nullptr);
    EXPECT_EQ(FragmentText(*parsed.object, 1), TextOf(Pattern(10)));
    EXPECT_EQ(FragmentText(*parsed.object, 2), TextOf(Pattern(4, 7)));
    for (std::uint32_t number = 0; number < 3; ++number) {
      const DICOMObject& item = ItemAt(*parsed.object, 0x7FE0, 0x0010, number);
      EXPECT_EQ(CountOf(item), 1u);
      EXPECT_NE(dynamic_cast<const DICOMDataObject*>(&item), nullptr);
    }
    EXPECT_EQ(ValueText(At(*parsed.object, 0xFFFC, 0xFFFC)), "x ");
  }
}

TEST(Encapsulated, AFragmentKnowsWhereItBegan) {
  const Parsed parsed =
      Parse(kExplicit, DataSetBuilder(kExplicit).Fragments({{}, Pattern(10), Pattern(4)}));
  // Head of 12 bytes; the table takes 8, the first fragment 18.
  const std::uint32_t starts[] = {12, 20, 38};
  for (std::uint32_t number = 0; number < 3; ++number) {
    EXPECT_EQ(At(ItemAt(*parsed.object, 0x7FE0, 0x0010, number), 0xFFFE, 0xE000).StreamPosition,
              starts[number]);
  }
}

TEST(Encapsulated, KeepsFragmentsOfOddLengthAndInAnyNumber) {
  std::vector<Bytes> fragments;
  for (std::size_t number = 0; number < 300; ++number) fragments.push_back(Pattern(number));
  const Parsed parsed = Parse(kExplicit, DataSetBuilder(kExplicit).Fragments(fragments));
  ASSERT_TRUE(parsed.result);
  ASSERT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 300u);
  for (std::uint32_t number = 0; number < 300; ++number) {
    EXPECT_EQ(FragmentText(*parsed.object, number), TextOf(fragments[number]));
  }
}

TEST(Encapsulated, NoFragmentsAtAllIsAnElementWithoutItems) {
  const Parsed parsed = Parse(kExplicit, DataSetBuilder(kExplicit).Fragments({}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Items, nullptr);
}

TEST(Encapsulated, PassesOverOtherTagsWithTheirValues) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x7FE0, 0x0010, "OB", kNoLength)
                          .Item(2)
                          .Raw({1, 2})
                          .Tag(0x0011, 0x0001)
                          .U32(4)
                          .Raw({9, 9, 9, 9})
                          .Tag(0xFFFE, 0xE00D)
                          .U32(0)
                          .Item(2)
                          .Raw({3, 4})
                          .EndSequence()
                          .Element(0xFFFC, 0xFFFC, "OB", "x ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  ASSERT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 2u);
  EXPECT_EQ(FragmentText(*parsed.object, 1), "\x03\x04");
  EXPECT_EQ(parsed.object->GetVR(0x0011, 0x0001), nullptr);
  EXPECT_EQ(ValueText(At(*parsed.object, 0xFFFC, 0xFFFC)), "x ");
}

TEST(Encapsulated, TheDelimiterEndsWhateverLengthItStates) {
  for (const std::uint32_t length : {0u, 77u, 0xFFFFFFFFu}) {
    const Bytes bytes = DataSetBuilder(kExplicit)
                            .Head(0x7FE0, 0x0010, "OB", kNoLength)
                            .Item(0)
                            .Tag(0xFFFE, 0xE0DD)
                            .U32(length)
                            .Element(0xFFFC, 0xFFFC, "OB", "x ");
    const Parsed parsed = Parse(kExplicit, bytes);
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(ValueText(At(*parsed.object, 0xFFFC, 0xFFFC)), "x ");
  }
}

TEST(Encapsulated, AMissingDelimiterAtTheEndIsNoFailure) {
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OB", kNoLength).Item(0).Item(2).Raw({1, 2});
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 2u);
  // But fragments may have been cut off there, for which the end of the stream is noted: 12 + 8 + 8 + 2 bytes.
  EXPECT_EQ(parsed.stop, (ParseStop{Why::kMissingEnd, 30, 0, 0}));
  EXPECT_TRUE(parsed.oddities.empty());
}

TEST(Encapsulated, AMissingDelimiterAtTheEndOfADefinedLengthIsNotTheEndOfTheStream) {
  const Bytes item =
      DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OB", kNoLength).Item(0).Item(2).Raw({1, 2});
  const auto length = static_cast<std::uint32_t>(item.size());
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x0088, 0x0200, "SQ", length + 8).Item(length).Raw(item);
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(parsed.stop, ParseStop());
}

TEST(Encapsulated, ACutFragmentEndsTheParseAndLeavesThoseBeforeIt) {
  const Bytes whole = DataSetBuilder(kExplicit).Fragments({{}, Pattern(10)});
  const std::size_t begin = 12 + 8;
  for (std::size_t size = begin + 1; size < begin + 18; ++size) {
    const Parsed parsed =
        Parse(kExplicit, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.stop.why, Why::kTruncated);
    EXPECT_EQ(parsed.stop.position, begin);
    EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 1u);
  }
}

TEST(Encapsulated, OnlyPixelDataHoldsFragments) {
  // Any other element of undefined length holds data sets: what a fragment would be is read as one.
  const Bytes item = DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", "A ");
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x7FE0, 0x0011, "OB", kNoLength)
                          .Item(10)
                          .Raw(item)
                          .EndSequence();
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(ItemAt(*parsed.object, 0x7FE0, 0x0011, 0)), "(0010,0010)");
}

TEST(Encapsulated, ReadsFragmentsWithinAnItemToo) {
  for (const Lengths lengths : {Lengths::kDefined, Lengths::kUndefined}) {
    const Bytes icon = DataSetBuilder(kExplicit).Fragments({{}, Pattern(6)});
    const Bytes bytes = DataSetBuilder(kExplicit)
                            .Sequence(0x0088, 0x0200, lengths, lengths, {icon})
                            .Element(0x0090, 0x0010, "LO", "x ");
    const Parsed parsed = Parse(kExplicit, bytes);
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(FragmentText(ItemAt(*parsed.object, 0x0088, 0x0200, 0), 1), TextOf(Pattern(6)));
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0090, 0x0010)), "x ");
  }
}

TEST(Encapsulated, RefusesAFragmentAboveTheTotalOfTheStreamWithWords) {
  for (const auto& [length, words] :
       {std::pair{200u, "VR(FFFE,E000) Length[200] > [100] available bytes"},
        std::pair{0xFFFFFFFFu, "VR(FFFE,E000) Length[-1] > [100] available bytes"}}) {
    Bytes bytes =
        DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OB", kNoLength).Item(0).Item(length);
    TotallingBuffer buffer(bytes, 100);
    const Parsed parsed = ParseFrom(buffer, kExplicit);
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.error, words);
    EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 1u);
  }
}

TEST(Encapsulated, FragmentsNeedAnElementToLandIn) {
  Bytes bytes = DataSetBuilder(kExplicit).Item(2).Raw({1, 2}).EndSequence();
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DICOMDataObject object;
  DataSetCoder coder;
  EXPECT_FALSE(coder.ReadEncapsulated(buffer, object));
  EXPECT_EQ(coder.LastStop().why, Why::kOrphanItem);
}

TEST(Encapsulated, ReadsByItselfIntoTheElementPushedLast) {
  Bytes bytes = DataSetBuilder(kBig).Item(2).Raw({1, 2}).EndSequence();
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false, kBigEndian);
  DICOMDataObject object;
  object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, ""));
  EXPECT_TRUE(DataSetCoder().ReadEncapsulated(buffer, object));
  EXPECT_EQ(FragmentText(object, 0), "\x01\x02");
}

// Writing.

DICOMObject* FragmentItem(const Bytes& value) {
  auto* item = new DICOMObject;
  item->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, value));
  return item;
}

TEST(Encapsulated, WritesFragmentsAndTheDelimiterInEachEncoding) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, ""));
    object.Push(FragmentItem({}));
    object.Push(FragmentItem(Pattern(10)));
    EXPECT_EQ(Encode(encoding, object),
              DataSetBuilder(encoding).Fragments({{}, Pattern(10)}).Done());
  }
}

TEST(Encapsulated, WritesTheTypeThatThePixelDataHasIfItsLengthFieldIsLong) {
  for (const auto& [type, letters] :
       {std::pair{type_code::OB, "OB"}, std::pair{type_code::OW, "OW"}}) {
    DICOMObject object;
    object.Push(NewElement(0x7FE0, 0x0010, type, ""));
    object.Push(FragmentItem({1, 2}));
    EXPECT_EQ(Encode(kExplicit, object), DataSetBuilder(kExplicit)
                                             .Head(0x7FE0, 0x0010, letters, kNoLength)
                                             .Item(2)
                                             .Raw({1, 2})
                                             .EndSequence()
                                             .Done());
  }
  // An undefined length does not fit into a short field.
  DICOMObject object;
  object.Push(NewElement(0x7FE0, 0x0010, type_code::US, ""));
  object.Push(FragmentItem({1, 2}));
  EXPECT_EQ(Encode(kExplicit, object), DataSetBuilder(kExplicit).Fragments({{1, 2}}).Done());
}

TEST(Encapsulated, WritesNothingForAnItemWithoutAFragmentAndOnlyThatOfOneWithMore) {
  ItemArray items;
  items.Add(new DICOMObject);
  auto* withMore = new DICOMObject;
  withMore->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  withMore->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{1, 2}));
  items.Add(withMore);
  auto* withOther = new DICOMObject;
  withOther->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  items.Add(withOther);
  CollectingBuffer buffer;
  EXPECT_TRUE(DataSetCoder().WriteEncapsulated(items, buffer));
  EXPECT_EQ(buffer.Written(), DataSetBuilder(kExplicit).Item(2).Raw({1, 2}).EndSequence().Done());
  EXPECT_EQ(items.ListLength, 3u);
  EXPECT_TRUE(withMore->IsEmpty());
  EXPECT_TRUE(withOther->IsEmpty());
  DestroyItems(items);
}

TEST(Encapsulated, WritesNothingForAnItemThatIsNull) {
  DICOMObject object;
  object.Push(NewElement(0x7FE0, 0x0010, type_code::OB, ""));
  auto fragment = std::make_unique<DICOMObject>();
  fragment->Push(NewElement(0xFFFE, 0xE000, type_code::kNone, Bytes{1, 2}));
  auto* items = new ItemArray;
  At(object, 0x7FE0, 0x0010).Items = items;
  items->Add(nullptr);
  items->Add(fragment.release());
  items->Add(nullptr);
  const MemoryFile file;
  EXPECT_TRUE(DataSetCoder().SaveKeeping(file.Path().c_str(), 1, object));
  EXPECT_EQ(ReadBytes(file.Path()), DataSetBuilder(kImplicit).Fragments({{1, 2}}).Done());
  EXPECT_EQ(Encode(kExplicit, object), DataSetBuilder(kExplicit).Fragments({{1, 2}}).Done());
}

TEST(Encapsulated, WritesAFragmentOfOddLengthAsItIs) {
  ItemArray items;
  items.Add(FragmentItem({1, 2, 3}));
  CollectingBuffer buffer;
  EXPECT_TRUE(DataSetCoder().WriteEncapsulated(items, buffer));
  EXPECT_EQ(buffer.Written(),
            DataSetBuilder(kExplicit).Item(3).Raw({1, 2, 3}).EndSequence().Done());
  DestroyItems(items);
}

TEST(Encapsulated, AnEmptyListIsTheDelimiterAlone) {
  ItemArray items;
  CollectingBuffer buffer;
  EXPECT_TRUE(DataSetCoder().WriteEncapsulated(items, buffer));
  EXPECT_EQ(buffer.Written(), DataSetBuilder(kExplicit).EndSequence().Done());
}

TEST(Encapsulated, RefusesAFragmentThatHasALengthAndNoBytes) {
  ItemArray items;
  auto* item = new DICOMObject;
  item->Push(new VR(0xFFFE, 0xE000, 10, nullptr));
  items.Add(item);
  CollectingBuffer buffer;
  DataSetCoder coder;
  EXPECT_FALSE(coder.WriteEncapsulated(items, buffer));
  EXPECT_STREQ(coder.ErrorText(), "VR(FFFE,E000) has a length but no value");
  DestroyItems(items);
}

TEST(Encapsulated, RefusesAFragmentWhoseLengthWouldReadAsUndefined) {
  std::uint8_t byte = 7;
  ItemArray items;
  auto* item = new DICOMObject;
  item->Push(new VR(0xFFFE, 0xE000, 0xFFFFFFFF, &byte, false));
  items.Add(item);
  CollectingBuffer buffer;
  DataSetCoder coder;
  EXPECT_FALSE(coder.WriteEncapsulated(items, buffer));
  EXPECT_STREQ(coder.ErrorText(), "VR(FFFE,E000) is too long to be written");
  EXPECT_TRUE(buffer.Written().empty());
  DestroyItems(items);
}

TEST(Encapsulated, WhatIsReadIsWrittenAgainByteForByte) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = DataSetBuilder(encoding)
                            .Element(0x0010, 0x0010, "PN", "A ")
                            .Fragments({Pattern(8), Pattern(100), {}, Pattern(40000)});
    const Parsed parsed = Parse(
        encoding, bytes, DictionaryOf("(0010,0010) VR=\"PN\"\n(7FE0,0010) VR=\"OB\"\n").get());
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(Encode(encoding, *parsed.object), bytes);
  }
}

TEST(Encapsulated, ImplicitFragmentsAreReadWithoutADictionary) {
  const Parsed parsed = Parse(kImplicit, DataSetBuilder(kImplicit).Fragments({{}, {1, 2}}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).TypeCode, type_code::kNone);
  EXPECT_EQ(FragmentText(*parsed.object, 1), "\x01\x02");
}

}  // namespace
}  // namespace tessaret::test
