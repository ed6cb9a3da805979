// Elements of an object by value, as text, as bytes, and one after the other.
#include <cstring>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "component/report.h"
#include "facade/dcm_object_helpers.h"
#include "support/allocation_failure.h"

namespace tessaret::test {
namespace {

constexpr const char* kCannotConvert = "Error converting VARIANT to VR type";

Variant BytesValue(const Bytes& bytes) { return VariantArray::OfBytes(bytes); }

TEST(DCMObjectValues, AreThereOnceTheyWerePut) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x0010, "Doe^John"), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0010), "Doe^John");
  EXPECT_EQ(Put(object, 0x0028, 0x0010, std::int32_t{512}), kOk);
  EXPECT_EQ(Get(object, 0x0028, 0x0010).AsLong(), 512);
  EXPECT_EQ(Raw(object, 0x0028, 0x0010), (Bytes{0x00, 0x02}));
}

TEST(DCMObjectValues, AnElementThatIsNotThereIsEmptyWithoutAnError) {
  const auto object = NewObject();
  EXPECT_TRUE(Get(object, 0x0010, 0x0010).IsEmpty());
  EXPECT_TRUE(Get(object, 0x0010, 0x0010, 5, "PN").IsEmpty());
}

TEST(DCMObjectValues, OfGroupAndElementTheLow16BitsCount) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x00120010, -0x10000 + 0x0020, "id"), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
}

TEST(DCMObjectValues, ANewElementHasTheTypeThatIsGivenOrElseThatOfTheDictionary) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "a", "SH"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "SH");
  EXPECT_EQ(Put(object, 0x0010, 0x0030, "2001-02-03"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0030).type, "DA");
  // Only a text of exactly two letters is a type for a new element.
  EXPECT_EQ(Put(object, 0x0010, 0x0040, "F", "SHORT"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0040).type, "CS");
  EXPECT_EQ(Put(object, 0x0010, 0x1010, "025Y", "S"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x1010).type, "AS");
  EXPECT_EQ(Put(object, 0x0010, 0x1020, 1.5, std::int32_t{7}), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x1020).type, "DS");
}

TEST(DCMObjectValues, AnUnknownNewElementTakesBytes) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0009, 0x1001, BytesValue({1, 2, 3})), kOk);
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).type, "UN");
  EXPECT_EQ(Raw(object, 0x0009, 0x1001), (Bytes{1, 2, 3, 0}));
  EXPECT_FAILS_WITH(Put(object, 0x0009, 0x1002, "text"), kCannotConvert);
  EXPECT_FALSE(Describe(object, 0x0009, 0x1002).found.IsTrue());
}

TEST(DCMObjectValues, APutThatFailsChangesNothing) {
  const auto object = NewObject();
  EXPECT_FAILS_WITH(Put(object, 0x0028, 0x0010, "many"), kCannotConvert);
  EXPECT_FALSE(Describe(object, 0x0028, 0x0010).found.IsTrue());
  EXPECT_EQ(Put(object, 0x0028, 0x0010, std::int32_t{3}), kOk);
  EXPECT_FAILS_WITH(Put(object, 0x0028, 0x0010, "many"), kCannotConvert);
  EXPECT_EQ(Get(object, 0x0028, 0x0010).AsLong(), 3);
}

TEST(DCMObjectValues, AFailureNamesTheInterface) {
  const auto object = NewObject();
  const auto expect = [](Status status) {
    EXPECT_EQ(status, kException);
    EXPECT_EQ(LastWords().interface, IDCMObject::kId);
    ForgetLastWords();
  };
  expect(Put(object, 0x0028, 0x0010, "many"));
  expect(object->Load("/no/such/file", true));
  Variant bytes;
  String type;
  expect(object->GetVRData(0x0010, 0x0010, &type, &bytes));
}

TEST(DCMObjectValues, AnEmptyValueLeavesTheElementWithoutBytes) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(Put(object, 0x0010, 0x0020, Variant()), kOk);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 0);
  EXPECT_EQ(Put(object, 0x0010, 0x0010, Variant()), kOk);
  EXPECT_TRUE(Describe(object, 0x0010, 0x0010).found.IsTrue());
}

TEST(DCMObjectValues, OfASequenceAreNoneAndPutNothing) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0008, 0x1140, "text"), kOk);
  EXPECT_EQ(Describe(object, 0x0008, 0x1140).type, "SQ");
  EXPECT_EQ(Describe(object, 0x0008, 0x1140).length, 0);
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("item").Get()), kOk);
  for (const Variant& value : {Variant("text"), Variant(), BytesValue({1, 2})}) {
    EXPECT_EQ(Put(object, 0x0008, 0x1140, value), kOk);
    EXPECT_EQ(Text(ItemOf(object, 0x0008, 0x1140, 0), 0x0010, 0x0020), "item");
    EXPECT_TRUE(Get(object, 0x0008, 0x1140).IsEmpty());
  }
  // Under another type its items stand in the way of a value.
  EXPECT_TRUE(Get(object, 0x0008, 0x1140, 0, "LO").IsEmpty());
  EXPECT_FAILS_WITH(Put(object, 0x0008, 0x1140, "text"), kCannotConvert);
  EXPECT_EQ(Text(ItemOf(object, 0x0008, 0x1140, 0), 0x0010, 0x0020), "item");
}

TEST(DCMObjectValues, ATypeThatIsGivenToReadByStays) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0009, 0x1001, BytesValue({0x34, 0x12})), kOk);
  EXPECT_EQ(Get(object, 0x0009, 0x1001, 0, "US").AsLong(), 0x1234);
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).type, "US");
  EXPECT_EQ(Get(object, 0x0009, 0x1001).AsLong(), 0x1234);
  // The first two letters count, and fewer are no type.
  EXPECT_EQ(Get(object, 0x0009, 0x1001, 0, "SSxx").AsShort(), 0x1234);
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).type, "SS");
  for (const Variant& none :
       {Variant(""), Variant("U"), Variant(String()), Variant(std::int32_t{1})})
    EXPECT_EQ(Get(object, 0x0009, 0x1001, 0, none).AsShort(), 0x1234);
}

TEST(DCMObjectValues, ATypeThatIsGivenToAPutCountsOnlyWhereThereIsNone) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "other", "SH"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "LO");
  CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode = type_code::kNone;
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "third", "SHxx"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "SH");
  // UN that is asked for is not what the dictionary says instead.
  CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode = type_code::kNone;
  EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, "UN", "fourth"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "UN");
}

TEST(DCMObjectValues, AnElementWithoutATypeIsFoundWithThatOfTheDictionary) {
  const auto object = ObjectOfPatient("id");
  VR& vr = *CoreOf(object)->GetVR(0x0010, 0x0020);
  vr.TypeCode = type_code::kNone;
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  EXPECT_EQ(vr.TypeCode, type_code::LO);
}

TEST(DCMObjectValues, HaveTheirPlaceAmongSeveral) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0008, 0x0008, "ORIGINAL"), kOk);
  EXPECT_EQ(Put(object, 0x0008, 0x0008, "PRIMARY", {}, 1), kOk);
  EXPECT_EQ(Text(object, 0x0008, 0x0008, 1), "PRIMARY");
  EXPECT_EQ(Put(object, 0x0008, 0x0008, "DERIVED", {}, 0), kOk);
  EXPECT_EQ(Raw(object, 0x0008, 0x0008), BytesOf("DERIVED\\PRIMARY"));
  EXPECT_EQ(Text(object, 0x0008, 0x0008, 2), "");
}

TEST(DCMObjectValues, TextsOfOneValueKnowNoOther) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x4000, "comment"), kOk);
  constexpr const char* kWords = "Error: VR type ST,LT and UT have VM=1";
  Variant value(std::int32_t{5});
  EXPECT_FAILS_WITH(object->get_VR(0x0010, 0x4000, {}, 2, &value), kWords);
  EXPECT_EQ(value.AsLong(), 5);
  EXPECT_FAILS_WITH(Put(object, 0x0010, 0x4000, "more", {}, 1), kWords);
  EXPECT_EQ(Text(object, 0x0010, 0x4000), "comment");
  EXPECT_FAILS_WITH(Put(object, 0x4010, 0x1001, "new", "LT", 1), kWords);
  EXPECT_FALSE(Describe(object, 0x4010, 0x1001).found.IsTrue());
}

TEST(DCMObjectValues, AreCounted) {
  const auto object = NewObject();
  std::int32_t count = -7;
  EXPECT_EQ(object->get_VRMultiplicity(0x0008, 0x0008, &count), kOk);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(Put(object, 0x0008, 0x0008, "A\\B\\"), kOk);
  EXPECT_EQ(object->get_VRMultiplicity(0x0008, 0x0008, &count), kOk);
  EXPECT_EQ(count, 3);
}

TEST(DCMObjectDescriptions, TellOfAnElement) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0010, 0x0010, "Doe^John"), kOk);
  const Description name = Describe(object, 0x0010, 0x0010);
  EXPECT_EQ(name.found.value, -1);
  EXPECT_EQ(name.name, "Patient's Name");
  EXPECT_EQ(name.type, "PN");
  EXPECT_EQ(name.length, 8);
  EXPECT_EQ(name.count, 1);
}

TEST(DCMObjectDescriptions, CountNoValuesOfBytes) {
  const auto object = NewObject();
  for (const char* type : {"OB", "OW", "UN"}) {
    EXPECT_EQ(object->PutVRData(0x0009, 0x1001, type, BytesValue({1, 2})), kOk);
    EXPECT_EQ(Describe(object, 0x0009, 0x1001).count, 0) << type;
  }
  EXPECT_EQ(object->PutVRData(0x0009, 0x1001, "FD", BytesValue(Bytes(16))), kOk);
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).count, 1);
}

TEST(DCMObjectDescriptions, HaveALengthBelowZeroWhereItIsUndefined) {
  const auto object = NewObject();
  CoreOf(object)->Push(new VR(0x7FE0, 0x0010, kUndefinedLength, nullptr));
  EXPECT_EQ(Describe(object, 0x7FE0, 0x0010).length, -1);
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), Bytes());
}

TEST(DCMObjectDescriptions, OfUnknownTagsHaveNoText) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0009, 0x1001, BytesValue({1, 2})), kOk);
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).name, "");
  CoreOf(object)->GetVR(0x0009, 0x1001)->TypeCode = type_code::kNone;
  EXPECT_EQ(Describe(object, 0x0009, 0x1001).type, "UN");
}

TEST(DCMObjectDescriptions, OfWhatIsNotThereLeaveTheTextsAlone) {
  const Description none = Describe(NewObject(), 0x0010, 0x0010);
  EXPECT_EQ(none.found.value, 0);
  EXPECT_EQ(none.name, "untouched");
  EXPECT_EQ(none.type, "untouched");
  EXPECT_EQ(none.length, -7);
  EXPECT_EQ(none.count, 0);
}

TEST(DCMObjectRawText, GoesInAndComesOutAsItIs) {
  const auto object = NewObject();
  EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, "LO", " a\\b "), kOk);
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), BytesOf(" a\\b "));
  String type("mine"), text;
  EXPECT_EQ(object->GetVRRawString(0x0010, 0x0020, &type, &text), kOk);
  EXPECT_EQ(text.Narrow(), " a\\b ");
  EXPECT_EQ(type.Narrow(), "mine");
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 5);
}

TEST(DCMObjectRawText, KeepsBytesOfEveryKindAndCutsNothing) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  const auto object = NewObject();
  EXPECT_EQ(object->PutVRRawString(0x0008, 0x0060, "CS", String::FromNarrow(all)), kOk);
  EXPECT_EQ(Raw(object, 0x0008, 0x0060), BytesOf(all));
  String type, text;
  EXPECT_EQ(object->GetVRRawString(0x0008, 0x0060, &type, &text), kOk);
  EXPECT_EQ(text.Narrow(), all);
}

TEST(DCMObjectRawText, TakesTheTypeOfTheDictionaryWhereNoneIsGiven) {
  const auto object = NewObject();
  for (const char* none : {"", "S", "SHORT"}) {
    EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, none, "id"), kOk);
    EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "LO") << none;
    EXPECT_EQ(object->RemoveVR(0x0010, 0x0020, nullptr), kOk);
  }
  EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, "SH", "id"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "SH");
  // A type that is known stays.
  EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, "LO", "id2"), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "SH");
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), BytesOf("id2"));
}

TEST(DCMObjectRawText, GivesAnElementWithoutATypeTheOneThatIsNamed) {
  const auto object = ObjectOfPatient("id");
  VR& vr = *CoreOf(object)->GetVR(0x0010, 0x0020);
  for (const auto& [letters, type] :
       {std::pair("SHxx", type_code::SH), std::pair("S", type_code::LO),
        std::pair("", type_code::LO)}) {
    vr.TypeCode = type_code::kNone;
    EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, letters, "new"), kOk);
    EXPECT_EQ(vr.TypeCode, type) << letters;
  }
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), BytesOf("new"));
}

TEST(DCMObjectRawText, ANullTextLeavesNoBytes) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->PutVRRawString(0x0010, 0x0020, "LO", String()), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 0);
}

TEST(DCMObjectRawText, IsThereForTypesOfTextOnly) {
  const auto object = NewObject();
  String type, text("before");
  for (const char* each : {"AE", "AS", "CS", "DA", "DS", "DT", "IS", "LO", "LT", "PN", "SH", "ST",
                           "TM", "UI", "UN", "UT"}) {
    EXPECT_EQ(object->PutVRData(0x0009, 0x1001, each, BytesValue(BytesOf("abc"))), kOk);
    EXPECT_EQ(object->GetVRRawString(0x0009, 0x1001, &type, &text), kOk) << each;
    EXPECT_EQ(text.Narrow(), "abc");
  }
  for (const char* each : {"US", "SS", "UL", "SL", "FL", "FD", "AT", "OB", "OW", "SQ", "OF"}) {
    EXPECT_EQ(object->PutVRData(0x0009, 0x1001, each, BytesValue(BytesOf("abcd"))), kOk);
    EXPECT_FAILS_WITH(object->GetVRRawString(0x0009, 0x1001, &type, &text),
                      "Cannot convert VR to raw ASCII");
    EXPECT_EQ(text.Narrow(), "abc");
  }
}

TEST(DCMObjectRawText, OfAnElementWithoutATypeGoesByTheDictionary) {
  const auto object = NewObject();
  String type, text;
  EXPECT_EQ(object->PutVRData(0x0028, 0x0010, "", BytesValue({1, 2})), kOk);
  EXPECT_FAILS_WITH(object->GetVRRawString(0x0028, 0x0010, &type, &text),
                    "Cannot convert VR to raw ASCII");
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, "", BytesValue(BytesOf("id"))), kOk);
  EXPECT_EQ(object->GetVRRawString(0x0010, 0x0020, &type, &text), kOk);
  EXPECT_EQ(text.Narrow(), "id");
  EXPECT_EQ(CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode, type_code::LO);
}

TEST(DCMObjectRawText, OfWhatIsNotThereIsAnEmptyText) {
  const auto object = NewObject();
  String type, text("before");
  EXPECT_EQ(object->GetVRRawString(0x0028, 0x0010, &type, &text), kOk);
  EXPECT_FALSE(text.IsNull());
  EXPECT_EQ(text.Narrow(), "");
  EXPECT_EQ(Put(object, 0x0010, 0x0020, Variant()), kOk);
  text = "before";
  EXPECT_EQ(object->GetVRRawString(0x0010, 0x0020, &type, &text), kOk);
  EXPECT_EQ(text.Narrow(), "");
}

TEST(DCMObjectBytes, GoInAndComeOutAsTheyAre) {
  const auto object = NewObject();
  EXPECT_EQ(object->PutVRData(0x7FE0, 0x0010, "OW", BytesValue({1, 2, 3})), kOk);
  EXPECT_EQ(Describe(object, 0x7FE0, 0x0010).length, 3);
  String type;
  Variant value;
  EXPECT_EQ(object->GetVRData(0x7FE0, 0x0010, &type, &value), kOk);
  EXPECT_EQ(type.Narrow(), "OW");
  ASSERT_NE(value.AsArray(), nullptr);
  EXPECT_EQ(value.Tag(), 0x2011);
  ASSERT_EQ(value.AsArray()->Bounds().size(), 1u);
  EXPECT_EQ(value.AsArray()->Bounds()[0], (ArrayBound{0, 3}));
  EXPECT_EQ(Raw(object, 0x7FE0, 0x0010), (Bytes{1, 2, 3}));
}

TEST(DCMObjectBytes, ReplaceTypeAndValueOfAnElementThatIsThere) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, "UNknown", BytesValue({9})), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "UN");
  EXPECT_EQ(Raw(object, 0x0010, 0x0020), (Bytes{9}));
}

TEST(DCMObjectBytes, WithoutLettersTheTypeIsNone) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, "", BytesValue({9})), kOk);
  EXPECT_EQ(CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode, 0);
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, "U", BytesValue({9})), kOk);
  EXPECT_EQ(CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode, 'U' << 8);
  // Of what is more than a byte no type has a letter: U+014C is not L.
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, u"\u014CO", BytesValue({9})), kOk);
  EXPECT_EQ(CoreOf(object)->GetVR(0x0010, 0x0020)->TypeCode, MakeTypeCode('?', 'O'));
}

TEST(DCMObjectBytes, MayBeNone) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->PutVRData(0x0010, 0x0020, "LO", BytesValue({})), kOk);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).length, 0);
  String type;
  Variant value(std::int32_t{5});
  EXPECT_EQ(object->GetVRData(0x0010, 0x0020, &type, &value), kOk);
  EXPECT_EQ(type.Narrow(), "LO");
  EXPECT_TRUE(value.IsEmpty());
}

TEST(DCMObjectBytes, LowerBoundsOfAnArrayDoNotMatter) {
  const ArrayBound bounds[] = {{-5, 2}};
  VariantArray array(VariantType::kByte, bounds);
  array.Entries<std::uint8_t>()[0] = 7;
  array.Entries<std::uint8_t>()[1] = 8;
  const auto object = NewObject();
  EXPECT_EQ(object->PutVRData(0x0009, 0x1001, "UN", Variant(array)), kOk);
  EXPECT_EQ(Raw(object, 0x0009, 0x1001), (Bytes{7, 8}));
}

TEST(DCMObjectBytes, AreTakenFromVectorsOfBytesOnly) {
  const auto object = NewObject();
  const ArrayBound square[] = {{0, 2}, {0, 2}};
  for (const Variant& other : {Variant(), Variant("text"), Variant(std::uint8_t{1}),
                               Variant(VariantArray(VariantType::kShort, 2)),
                               Variant(VariantArray(VariantType::kSignedByte, 2))}) {
    EXPECT_FAILS_WITH(object->PutVRData(0x0009, 0x1001, "UN", other), "Only BYTE vectors allowed");
  }
  EXPECT_FAILS_WITH(
      object->PutVRData(0x0009, 0x1001, "UN", Variant(VariantArray(VariantType::kByte, square))),
      "PutVRData: Only 1 dim BYTE vectors allowed");
  EXPECT_FAILS_WITH(object->PutVRData(0x0009, 0x1001, "UN", Variant(VariantArray())),
                    "PutVRData: Only 1 dim BYTE vectors allowed");
  EXPECT_FALSE(Describe(object, 0x0009, 0x1001).found.IsTrue());
}

TEST(DCMObjectBytes, OfWhatIsNotThereAreAnError) {
  const auto object = NewObject();
  String type("before");
  Variant value(std::int32_t{5});
  EXPECT_FAILS_WITH(object->GetVRData(0x0010, 0x0020, &type, &value), "Non existing VR");
  EXPECT_EQ(type.Narrow(), "before");
  EXPECT_EQ(value.AsLong(), 5);
}

TEST(DCMObjectBytes, WithoutMemoryThereAreWords) {
  const auto object = NewObject();
  ASSERT_EQ(object->PutVRData(0x7FE0, 0x0010, "OW", BytesValue(Bytes(100000))), kOk);
  String type;
  Variant value;
  Status status = kOk;
  {
    const AllocationFailure failure(2);  // the first one is the text of the type
    status = object->GetVRData(0x7FE0, 0x0010, &type, &value);
  }
  EXPECT_FAILS_WITH(status, "Not enough memory for VR Data");
  EXPECT_TRUE(value.IsEmpty());
}

TEST(DCMObjectBytes, ThatFindNoMemoryLeaveTheElementAsItWas) {
  const auto object = ObjectOfPatient("id");
  const Variant bytes = BytesValue(Bytes(1000, 1));
  const String type("OB");
  std::uint64_t failures = 0;
  FailEveryAllocation(
      [&] {
        if (object->PutVRData(0x0010, 0x0020, type, bytes) == kOutOfMemory) ++failures;
      },
      [&] {
        const bool isNew = Raw(object, 0x0010, 0x0020).size() == 1000;
        EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, isNew ? "OB" : "LO");
        EXPECT_EQ(Raw(object, 0x0010, 0x0020), isNew ? Bytes(1000, 1) : BytesOf("id"));
      });
  EXPECT_GT(failures, 0u);
  EXPECT_EQ(Describe(object, 0x0010, 0x0020).type, "OB");
}

TEST(DCMObjectWalk, GoesByTheOrderOfTags) {
  const auto object = NewObject();
  EXPECT_EQ(Put(object, 0x0028, 0x0010, std::int32_t{1}), kOk);
  EXPECT_EQ(Put(object, 0x0008, 0x0060, "MR"), kOk);
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "id"), kOk);
  std::int32_t group = 0;
  std::int32_t element = 0;
  VariantBool found;
  EXPECT_EQ(object->GetFirstVR(&group, &element, &found), kOk);
  EXPECT_EQ(found.value, -1);
  EXPECT_EQ(std::pair(group, element), std::pair(0x0008, 0x0060));
  EXPECT_EQ(object->GetNextVR(&group, &element, &found), kOk);
  EXPECT_EQ(std::pair(group, element), std::pair(0x0010, 0x0020));
  EXPECT_EQ(object->GetNextVR(&group, &element, &found), kOk);
  EXPECT_EQ(std::pair(group, element), std::pair(0x0028, 0x0010));
  EXPECT_EQ(object->GetNextVR(&group, &element, &found), kOk);
  EXPECT_EQ(found.value, 0);
  EXPECT_EQ(std::pair(group, element), std::pair(0x0028, 0x0010));
}

TEST(DCMObjectWalk, FromATagThatIsNotThereEnds) {
  const auto object = ObjectOfPatient("id");
  std::int32_t group = 0x0008;
  std::int32_t element = 0x0060;
  VariantBool found = true;
  EXPECT_EQ(object->GetNextVR(&group, &element, &found), kOk);
  EXPECT_EQ(found.value, 0);
  EXPECT_EQ(std::pair(group, element), std::pair(0x0008, 0x0060));
}

TEST(DCMObjectWalk, OfAnEmptyObjectEndsAtOnce) {
  std::int32_t group = 5;
  std::int32_t element = 6;
  VariantBool found = true;
  EXPECT_EQ(NewObject()->GetFirstVR(&group, &element, &found), kOk);
  EXPECT_EQ(found.value, 0);
  EXPECT_EQ(std::pair(group, element), std::pair(5, 6));
}

TEST(DCMObjectRemoval, TakesOneElementOut) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(Put(object, 0x0008, 0x0060, "MR"), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "id");
  VariantBool removed = VariantBool::Of(77);
  EXPECT_EQ(object->RemoveVR(0x0010, 0x0020, &removed), kOk);
  EXPECT_EQ(removed.value, 77);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(Text(object, 0x0008, 0x0060), "MR");
  EXPECT_EQ(object->RemoveVR(0x0010, 0x0020, nullptr), kOk);
}

TEST(DCMObjectRemoval, WhatWasFoundBeforeIsNotFoundInItsPlace) {
  // The element found last is remembered; here it dies by every way there is.
  const auto object = ObjectOfPatient("first");
  const auto look = [&] { return Text(object, 0x0010, 0x0020); };
  EXPECT_EQ(look(), "first");
  EXPECT_EQ(object->RemoveVR(0x0010, 0x0020, nullptr), kOk);
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "second"), kOk);
  EXPECT_EQ(look(), "second");
  EXPECT_EQ(object->Clear(), kOk);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "third"), kOk);
  EXPECT_EQ(look(), "third");
  EXPECT_EQ(object->Set(ObjectOfPatient("fourth").Get()), kOk);
  EXPECT_EQ(look(), "fourth");
  CoreOf(object)->Push(new VR(0x0010, 0x0020, 0, nullptr));
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  delete CoreOf(object)->Pop();
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
}

TEST(DCMObjectRemoval, WhatWasFoundBeforeIsNotFoundWhereItLivesOnElsewhere) {
  const auto object = ObjectOfPatient("first");
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "first");
  const std::unique_ptr<VR> taken(CoreOf(object)->Remove(0x0010, 0x0020));
  ASSERT_NE(taken, nullptr);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
  // Neither in another data set that takes the place of its own, from which as little was ever taken.
  const auto one = ObjectOfPatient("one");
  const auto other = NewObject();
  EXPECT_EQ(ManagerOf(object)->PutPtr(0, CoreOf(one)), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "one");
  EXPECT_EQ(ManagerOf(object)->PutPtr(0, CoreOf(other)), kOk);
  EXPECT_TRUE(Get(object, 0x0010, 0x0020).IsEmpty());
}

TEST(DCMObjectRemoval, OfOneViewIsSeenByTheOther) {
  const auto object = NewObject();
  EXPECT_EQ(object->putref_Sequence(0x0008, 0x1140, 0, ObjectOfPatient("id").Get()), kOk);
  const auto one = ItemOf(object, 0x0008, 0x1140, 0);
  const auto other = ItemOf(object, 0x0008, 0x1140, 0);
  EXPECT_EQ(Text(one, 0x0010, 0x0020), "id");
  EXPECT_EQ(other->RemoveVR(0x0010, 0x0020, nullptr), kOk);
  EXPECT_TRUE(Get(one, 0x0010, 0x0020).IsEmpty());
}

TEST(DCMObjectClear, RemovesEverything) {
  const auto object = ObjectOfPatient("id");
  EXPECT_EQ(object->Clear(), kOk);
  VariantBool found = true;
  std::int32_t group = 0;
  std::int32_t element = 0;
  EXPECT_EQ(object->GetFirstVR(&group, &element, &found), kOk);
  EXPECT_FALSE(found.IsTrue());
  EXPECT_EQ(Put(object, 0x0010, 0x0020, "again"), kOk);
  EXPECT_EQ(Text(object, 0x0010, 0x0020), "again");
}

TEST(DCMObjectValues, PointersThatLeadNowhereAreRefused) {
  const auto object = ObjectOfPatient("id");
  std::int32_t number = 0;
  VariantBool truth;
  String text;
  Variant value;
  EXPECT_EQ(object->get_VR(0x0010, 0x0020, {}, 0, nullptr), kPointer);
  EXPECT_EQ(object->get_VRMultiplicity(0x0010, 0x0020, nullptr), kPointer);
  EXPECT_EQ(object->copy(nullptr), kPointer);
  EXPECT_EQ(object->Set(nullptr), kPointer);
  EXPECT_EQ(object->get_SequencesCount(0x0010, 0x0020, nullptr), kPointer);
  EXPECT_EQ(object->get_Sequence(0x0010, 0x0020, 0, nullptr), kPointer);
  EXPECT_EQ(object->GetVRDescr(1, 2, nullptr, &text, &number, &number, &truth), kPointer);
  EXPECT_EQ(object->GetVRDescr(1, 2, &text, nullptr, &number, &number, &truth), kPointer);
  EXPECT_EQ(object->GetVRDescr(1, 2, &text, &text, nullptr, &number, &truth), kPointer);
  EXPECT_EQ(object->GetVRDescr(1, 2, &text, &text, &number, nullptr, &truth), kPointer);
  EXPECT_EQ(object->GetVRDescr(1, 2, &text, &text, &number, &number, nullptr), kPointer);
  EXPECT_EQ(object->GetVRRawString(1, 2, nullptr, nullptr), kPointer);
  EXPECT_EQ(object->GetVRRawString(1, 2, nullptr, &text), kOk);
  EXPECT_EQ(object->GetFirstVR(nullptr, &number, &truth), kPointer);
  EXPECT_EQ(object->GetFirstVR(&number, nullptr, &truth), kPointer);
  EXPECT_EQ(object->GetFirstVR(&number, &number, nullptr), kPointer);
  EXPECT_EQ(object->GetNextVR(nullptr, &number, &truth), kPointer);
  EXPECT_EQ(object->GetNextVR(&number, nullptr, &truth), kPointer);
  EXPECT_EQ(object->GetNextVR(&number, &number, nullptr), kPointer);
  EXPECT_EQ(object->Translate(String(), nullptr), kPointer);
  EXPECT_EQ(object->GetVRData(1, 2, nullptr, &value), kPointer);
  EXPECT_EQ(object->GetVRData(1, 2, &text, nullptr), kPointer);
  EXPECT_EQ(ManagerOf(object)->GetPtr(0, nullptr), kPointer);
  EXPECT_EQ(ManagerOf(object)->GetVR(1, 2, nullptr), kPointer);
}

TEST(DCMObjectValues, MembersThatAreStillToComeSaySo) {
  const auto object = NewObject();
  VariantBool truth = VariantBool::Of(77);
  Variant value;
  std::int32_t number = 77;
  const auto expect = [](Status status) {
    EXPECT_EQ(status, static_cast<Status>(0x80004001u));
    EXPECT_EQ(LastError().text, "This is not available in this version");
    EXPECT_EQ(LastError().source, "Tessaret.DCMObject");
    ASSERT_TRUE(Create<IDCMOptions>("Tessaret.DCMOptions"));
  };
  expect(object->IntersectPlane(nullptr, true, &truth, &value, &value, &truth));
  expect(object->CreateSecondaryCapture(nullptr, {}));
  expect(object->AddOverlay(&number, 0, 0, 1, 1, "G", "text"));
  EXPECT_EQ(truth.value, 77);
  EXPECT_EQ(number, 77);
}

}  // namespace
}  // namespace tessaret::test
