#include "core/value_order.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "core/element_maker.h"
#include "core/rtc.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::MadeElement;
using test::NewElement;

const Bytes kSixteen = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

Bytes Swapped(VrCode type, const Bytes& value) {
  MadeElement element(type, value);
  SwapNumbers(*element);
  return {element->Data, element->Data + element->Length};
}

TEST(ValueOrder, WidthsAreThoseOfTheStandard) {
  for (const VrCode type : {type_code::AT, type_code::OW, type_code::SS, type_code::US}) {
    EXPECT_EQ(NumberWidth(type), 2u);
  }
  for (const VrCode type :
       {type_code::FL, type_code::OF, type_code::SL, type_code::UL, MakeTypeCode('O', 'L')}) {
    EXPECT_EQ(NumberWidth(type), 4u);
  }
  for (const VrCode type : {type_code::FD, MakeTypeCode('O', 'D'), MakeTypeCode('O', 'V'),
                            MakeTypeCode('S', 'V'), MakeTypeCode('U', 'V')}) {
    EXPECT_EQ(NumberWidth(type), 8u);
  }
}

TEST(ValueOrder, TextBytesSequencesAndWhatIsNotKnownHaveNoOrder) {
  for (const VrCode type :
       {type_code::AE, type_code::DS, type_code::LT, type_code::OB, type_code::PN, type_code::SQ,
        type_code::UI, type_code::UN, type_code::UT, type_code::kNone, MakeTypeCode('?', '?')}) {
    EXPECT_EQ(NumberWidth(type), 1u);
  }
}

TEST(ValueOrder, EachNumberOfAValueIsReversed) {
  EXPECT_EQ(Swapped(type_code::US, kSixteen),
            (Bytes{1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14}));
  EXPECT_EQ(Swapped(type_code::UL, kSixteen),
            (Bytes{3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12}));
  EXPECT_EQ(Swapped(type_code::FD, kSixteen),
            (Bytes{7, 6, 5, 4, 3, 2, 1, 0, 15, 14, 13, 12, 11, 10, 9, 8}));
}

TEST(ValueOrder, ATagIsTwoNumbers) {
  EXPECT_EQ(Swapped(type_code::AT, {0x00, 0x10, 0x00, 0x20}), (Bytes{0x10, 0, 0x20, 0}));
}

TEST(ValueOrder, ValuesWithoutOrderStay) {
  EXPECT_EQ(Swapped(type_code::OB, kSixteen), kSixteen);
  EXPECT_EQ(Swapped(type_code::UN, kSixteen), kSixteen);
  EXPECT_EQ(Swapped(type_code::LO, kSixteen), kSixteen);
}

TEST(ValueOrder, BytesThatMakeNoWholeNumberStay) {
  EXPECT_EQ(Swapped(type_code::US, {1, 2, 3}), (Bytes{2, 1, 3}));
  EXPECT_EQ(Swapped(type_code::UL, {1, 2, 3}), (Bytes{1, 2, 3}));
  EXPECT_EQ(Swapped(type_code::FD, {1, 2, 3, 4, 5, 6, 7, 8, 9}),
            (Bytes{8, 7, 6, 5, 4, 3, 2, 1, 9}));
}

TEST(ValueOrder, AnElementWithoutAValueStays) {
  VR vr(0x0028, 0x0010, 2, nullptr, false);
  vr.TypeCode = type_code::US;
  SwapNumbers(vr);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.Length, 2u);
}

TEST(ValueOrder, AnObjectIsTurnedRoundWithAllThatIsNestedInIt) {
  DICOMObject object;
  object.Push(NewElement(0x0028, 0x0010, type_code::US, Bytes{1, 2}));
  object.Push(NewElement(0x0040, 0xA730, type_code::SQ, Bytes{}));
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0028, 0x0011, type_code::US, Bytes{3, 4}));
  item->Push(NewElement(0x0040, 0xA730, type_code::SQ, Bytes{}));
  auto inner = std::make_unique<DICOMObject>();
  inner->Push(NewElement(0x0018, 0x9087, type_code::FD, Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  const VR* deepest = inner->GetFirstVR();
  const VR* nested = item->GetFirstVR();
  ASSERT_TRUE(item->Push(inner.release()));
  ASSERT_TRUE(object.Push(item.release()));

  SwapNumbers(object);

  EXPECT_EQ(object.GetUINT16(0x0028, 0x0010), 0x0102);
  EXPECT_EQ(Bytes(nested->Data, nested->Data + 2), (Bytes{4, 3}));
  EXPECT_EQ(Bytes(deepest->Data, deepest->Data + 8), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
}

TEST(ValueOrder, ANullItemIsPassedOver) {
  DICOMObject object;
  object.Push(NewElement(0x0040, 0xA730, type_code::SQ, Bytes{}));
  VR& sequence = *object.GetFirstVR();
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0028, 0x0011, type_code::US, Bytes{3, 4}));
  ASSERT_TRUE(object.Push(item.release()));
  sequence.Items->Add(nullptr);
  SwapNumbers(object);
  EXPECT_EQ(sequence.GetItem(0)->GetUINT16(0x0028, 0x0011), 0x0304);
  EXPECT_EQ(sequence.GetItem(1), nullptr);
}

TEST(ValueOrder, TheMetaHeaderIsLittleEndianInEveryFile) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0000, type_code::UL, Bytes{1, 2, 3, 4}));
  SwapNumbers(object);
  const VR* vr = object.GetVR(0x0002, 0x0000);
  EXPECT_EQ(Bytes(vr->Data, vr->Data + 4), (Bytes{1, 2, 3, 4}));
}

Bytes ValueAt(const DICOMObject& object, std::uint16_t group, std::uint16_t element) {
  const VR* vr = object.GetVR(group, element);
  return {vr->Data, vr->Data + vr->Length};
}

TEST(ValueOrder, ForABigEndianStreamNumbersAreTurnedByTheTypeTheyGoOutWith) {
  RTC dictionary;
  const std::string text = "#\n{0x0028 0x0106 US \"Smallest\"}\n{0x0028 0x3006 US \"Table\"}\n";
  ASSERT_TRUE(dictionary.AttachBytes(text.data(), text.size()));
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0001, type_code::OW, Bytes{1, 2}));
  object.Push(NewElement(0x0009, 0x0001, type_code::UN, Bytes{1, 2}));
  object.Push(NewElement(0x0028, 0x0101, type_code::US, Bytes{1, 2}));
  object.Push(NewElement(0x0028, 0x0106, type_code::UN, Bytes{1, 2}));
  object.Push(NewElement(0x0028, 0x3006, type_code::UN, Bytes(65536, 7)));
  object.GetVR(0x0028, 0x3006)->Data[0] = 1;
  object.Push(NewElement(0x0040, 0xA730, type_code::SQ, Bytes{}));
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0028, 0x0106, type_code::kNone, Bytes{1, 2}));
  const DICOMObject& nested = *item;
  ASSERT_TRUE(object.Push(item.release()));

  TurnForBigEndian(object, &dictionary);

  EXPECT_EQ(ValueAt(object, 0x0002, 0x0001), (Bytes{1, 2}));
  EXPECT_EQ(ValueAt(object, 0x0009, 0x0001), (Bytes{1, 2}));
  EXPECT_EQ(ValueAt(object, 0x0028, 0x0101), (Bytes{2, 1}));
  EXPECT_EQ(ValueAt(object, 0x0028, 0x0106), (Bytes{2, 1}));
  EXPECT_EQ(ValueAt(object, 0x0028, 0x3006)[0], 1) << "too long for the length of US: it stays UN";
  EXPECT_EQ(ValueAt(nested, 0x0028, 0x0106), (Bytes{2, 1}));
  EXPECT_EQ(object.GetVR(0x0028, 0x0106)->TypeCode, type_code::UN) << "the writer names it";

  TurnForBigEndian(object, nullptr);
  EXPECT_EQ(ValueAt(object, 0x0028, 0x0101), (Bytes{1, 2}));
  EXPECT_EQ(ValueAt(object, 0x0028, 0x0106), (Bytes{2, 1}))
      << "without a dictionary it goes out as UN";
}

/// An object with pixel data of this type.
std::unique_ptr<DICOMObject> WithPixels(std::uint8_t bits, VrCode type) {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewElement(0x0028, 0x0100, type_code::US, Bytes{bits, 0}));
  object->Push(NewElement(0x7FE0, 0x0010, type, Bytes{1, 2, 3, 4}));
  return object;
}

TEST(ValueOrder, ForABigEndianStreamPixelsAreBytesOrWords) {
  struct Row {
    std::uint8_t bits;
    VrCode before, after;
  };
  // What is called by one of the two names stays that.
  constexpr Row kRows[] = {
      {8, type_code::OB, type_code::OB},    {16, type_code::OB, type_code::OB},
      {8, type_code::OW, type_code::OW},    {16, type_code::OW, type_code::OW},
      {8, type_code::kNone, type_code::OB}, {9, type_code::kNone, type_code::OW},
      {8, type_code::UN, type_code::OB},    {16, type_code::UN, type_code::OW},
      {8, type_code::US, type_code::OB},
  };
  for (const Row& row : kRows) {
    const auto object = WithPixels(row.bits, row.before);
    TurnForBigEndian(*object, nullptr);
    EXPECT_EQ(object->GetVR(0x7FE0, 0x0010)->TypeCode, row.after);
    EXPECT_EQ(ValueAt(*object, 0x7FE0, 0x0010),
              (row.after == type_code::OW ? Bytes{2, 1, 4, 3} : Bytes{1, 2, 3, 4}));
  }
}

TEST(ValueOrder, WidePixelsThatAreCalledBytesAreWords) {
  const auto after = [](std::uint8_t bits, VrCode type) {
    const auto object = WithPixels(bits, type);
    CallWidePixelsWords(*object);
    EXPECT_EQ(ValueAt(*object, 0x7FE0, 0x0010), (Bytes{1, 2, 3, 4}));
    return object->GetVR(0x7FE0, 0x0010)->TypeCode;
  };
  EXPECT_EQ(after(8, type_code::OB), type_code::OB);
  EXPECT_EQ(after(9, type_code::OB), type_code::OW);
  EXPECT_EQ(after(16, type_code::OB), type_code::OW);
  EXPECT_EQ(after(8, type_code::OW), type_code::OW);
  EXPECT_EQ(after(16, type_code::UN), type_code::UN);
}

TEST(ValueOrder, FragmentsAndMissingPixelsHaveNoNameOfTheirOwn) {
  const auto compressed = WithPixels(16, type_code::OB);
  compressed->GetVR(0x7FE0, 0x0010)->AddItem(new DICOMObject);
  CallWidePixelsWords(*compressed);
  EXPECT_EQ(compressed->GetVR(0x7FE0, 0x0010)->TypeCode, type_code::OB);
  compressed->GetVR(0x7FE0, 0x0010)->TypeCode = type_code::SQ;
  TurnForBigEndian(*compressed, nullptr);
  EXPECT_EQ(compressed->GetVR(0x7FE0, 0x0010)->TypeCode, type_code::SQ);
  DICOMObject empty;
  CallWidePixelsWords(empty);
  TurnForBigEndian(empty, nullptr);
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(ValueOrder, NestingOfAHundredThousandLevelsNeedsNoStack) {
  constexpr int kLevels = 100000;
  DICOMObject object;
  DICOMObject* level = &object;
  for (int count = 0; count < kLevels; ++count) {
    level->Push(NewElement(0x0040, 0xA730, type_code::SQ, Bytes{}));
    auto* next = new DICOMObject;
    ASSERT_TRUE(level->Push(next));
    level = next;
  }
  level->Push(NewElement(0x0028, 0x0010, type_code::US, Bytes{1, 2}));
  SwapNumbers(object);
  EXPECT_EQ(level->GetUINT16(0x0028, 0x0010), 0x0102);
}

}  // namespace
}  // namespace tessaret
