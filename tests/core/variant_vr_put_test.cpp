// Values as they go into elements.
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "core/binary_vr.h"
#include "core/dicom_object.h"
#include "core/variant_vr.h"
#include "tessaret/calendar.hpp"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::Held;
using test::kFirst;
using test::kLast;
using test::kNoValue;
using test::MadeElement;
using test::Owned;
using test::WithNuls;

using Type = VariantType;

constexpr const char* kRefused = "refused";

const VrCode kAllTypes[] = {
    type_code::AE, type_code::AS, type_code::AT, type_code::CS, type_code::DA,    type_code::DS,
    type_code::DT, type_code::FD, type_code::FL, type_code::IS, type_code::LO,    type_code::LT,
    type_code::OB, type_code::OF, type_code::OW, type_code::PN, type_code::SH,    type_code::SL,
    type_code::SS, type_code::ST, type_code::TM, type_code::UI, type_code::UL,    type_code::UN,
    type_code::US, type_code::UT, 0x7672,        0x3F3F,        type_code::kNone,
};

/// What an element that held `old` holds after the put; kRefused where that was refused and nothing changed.
std::string AfterPut(VrCode type, std::string_view old, const Variant& value,
                     std::int32_t index = 0) {
  const auto vr = Owned(type, old);
  const std::string before = Held(*vr);
  if (CVariantVR(vr.get()).VariantToVR(value, index)) return Held(*vr);
  return Held(*vr) == before && vr->TypeCode == type ? kRefused : "changed by a refusal";
}

template <class T>
std::string BytesOfNumber(T number) {
  return {reinterpret_cast<const char*>(&number), sizeof(T)};
}

Variant ByteArray(std::string_view bytes, Type type = Type::kByte) {
  VariantArray array(type, static_cast<std::uint32_t>(bytes.size()));
  std::copy(bytes.begin(), bytes.end(), static_cast<char*>(array.Data()));
  return array;
}

Variant DateOf(const Calendar& at) { return ToDate(at).value(); }

TEST(VariantToVR, AnEmptyValueClearsTheElement) {
  for (const VrCode type : kAllTypes) {
    for (const std::int32_t index : {0, 3, -1, kLast}) {
      EXPECT_EQ(AfterPut(type, "20010203", Variant(), index), kNoValue) << type;
    }
    const auto vr = Owned(type, std::string(100, 'x'));
    EXPECT_TRUE(CVariantVR(vr.get()).VariantToVR(Variant(), 0));
    EXPECT_EQ(vr->Length, 0u);
    EXPECT_TRUE(CVariantVR(vr.get()).VRToVariant(0).IsEmpty());
  }
}

TEST(VariantToVR, ClearingLeavesItemsAndBytesOfOthers) {
  MadeElement shared(type_code::UN, "shared");
  std::uint8_t* const bytes = shared->Data;
  shared->AddItem(new DICOMObject);
  EXPECT_TRUE(CVariantVR(&*shared).VariantToVR(Variant(), 0));
  EXPECT_EQ(shared->Data, nullptr);
  EXPECT_EQ(shared->ItemCount(), 1u);
  EXPECT_EQ(std::string(bytes, bytes + 6), "shared");
}

TEST(VariantToVR, ASequenceStaysAsItIs) {
  const Variant values[] = {Variant(), Variant(1), Variant("text"), ByteArray("ab")};
  for (const Variant& value : values) {
    MadeElement sequence(type_code::SQ, "bytes");
    sequence->AddItem(new DICOMObject);
    EXPECT_TRUE(CVariantVR(&*sequence).VariantToVR(value, 1));
    EXPECT_EQ(Held(*sequence), "bytes");
    EXPECT_EQ(sequence->ItemCount(), 1u);
  }
}

TEST(VariantToVR, AnElementWithItemsTakesNoValue) {
  const Variant values[] = {Variant(5), Variant("20010203"), Variant("1:2:3.4"), ByteArray("ab")};
  for (const VrCode type : kAllTypes) {
    for (const Variant& value : values) {
      VR vr;
      vr.TypeCode = type;
      vr.AddItem(new DICOMObject);
      EXPECT_FALSE(CVariantVR(&vr).VariantToVR(value, 0)) << type;
      EXPECT_EQ(vr.Data, nullptr);
      EXPECT_EQ(vr.ItemCount(), 1u);
    }
  }
}

TEST(VariantToVR, TextTypesTakeWhatTurnsIntoText) {
  for (const VrCode type :
       {type_code::CS, type_code::LO, type_code::SH, type_code::UI, type_code::PN, type_code::AE}) {
    EXPECT_EQ(AfterPut(type, "", Variant("TEXT")), "TEXT") << type;
    EXPECT_EQ(AfterPut(type, "", Variant(42)), "42") << type;
    EXPECT_EQ(AfterPut(type, "", Variant(1.5)), "1.5") << type;
    EXPECT_EQ(AfterPut(type, "", Variant(true)), "True") << type;
    EXPECT_EQ(AfterPut(type, "", DateOf({2001, 2, 3, 0, 0, 0, 0})), "2001-02-03") << type;
    EXPECT_EQ(AfterPut(type, "one\\two", Variant("2"), 1), "one\\2") << type;
    EXPECT_EQ(AfterPut(type, "one", Variant("2"), 7), "one\\2") << type;
    EXPECT_EQ(AfterPut(type, "one", ByteArray("ab")), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "one", Variant(static_cast<IObject*>(nullptr))), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "one", Variant("2"), -1), kRefused) << type;
  }
  EXPECT_EQ(AfterPut(type_code::AS, "", Variant("031Y")), "031Y");
}

TEST(VariantToVR, FiveBackslashesStandBeforeTheSixthTextOfAnEmptyElement) {
  EXPECT_EQ(AfterPut(type_code::LO, "", Variant("text"), 5), "\\\\\\\\\\text");
}

TEST(VariantToVR, AUidIsCutTo64Characters) {
  const std::string uid = "1." + std::string(70, '2');
  EXPECT_EQ(AfterPut(type_code::UI, "", Variant(uid)), uid.substr(0, 64));
}

TEST(VariantToVR, ANameKeepsItsSeparatorsAndItsLength) {
  const std::string name = test::Many(70, 'D', "^John, the first");
  EXPECT_EQ(AfterPut(type_code::PN, "", Variant(name)), name);
  EXPECT_EQ(AfterPut(type_code::PN, "", Variant("Doe, John")), "Doe, John");
}

TEST(VariantToVR, AnIndexIntoATypeOfOneTextThrowsItsWords) {
  for (const VrCode type : {type_code::ST, type_code::LT, type_code::UT}) {
    EXPECT_EQ(AfterPut(type, "a\\b", Variant("c")), "c");
    const auto vr = Owned(type, "old");
    try {
      static_cast<void>(CVariantVR(vr.get()).VariantToVR(Variant("x"), 2));
      ADD_FAILURE() << type;
    } catch (const TypedValueError& error) {
      EXPECT_STREQ(error.what(), "Error: VR type ST,LT and UT have VM=1");
    }
    EXPECT_EQ(Held(*vr), "old");
  }
  EXPECT_EQ(AfterPut(type_code::ST, "", Variant(std::string(2000, 's'))), std::string(1024, 's'));
  EXPECT_EQ(AfterPut(type_code::LT, "", Variant(std::string(2000, 's'))), std::string(2000, 's'));
}

TEST(VariantToVR, WholeNumbersAreWrittenInDecimal) {
  EXPECT_EQ(AfterPut(type_code::IS, "", Variant(42)), "42");
  EXPECT_EQ(AfterPut(type_code::IS, "", Variant(kFirst)), "-2147483648");
  EXPECT_EQ(AfterPut(type_code::IS, "", Variant(" 7 ")), "7");
  EXPECT_EQ(AfterPut(type_code::IS, "", Variant(2.5)), "2");
  EXPECT_EQ(AfterPut(type_code::IS, "1\\2\\3", Variant(22), 1), "1\\22\\3");
  EXPECT_EQ(AfterPut(type_code::IS, "1", Variant("x")), kRefused);
  EXPECT_EQ(AfterPut(type_code::IS, "1", Variant("2x")), kRefused);
  EXPECT_EQ(AfterPut(type_code::IS, "1", Variant(3e9)), kRefused);
  EXPECT_EQ(AfterPut(type_code::IS, "1", Variant(std::nan(""))), kRefused);
  EXPECT_EQ(AfterPut(type_code::IS, "1", Variant(2), -1), kRefused);
}

TEST(VariantToVR, DecimalNumbersAreWrittenWithSixDigitsBehindThePoint) {
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant(1.5)), "1.500000");
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant(-7)), "-7.000000");
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant("2.25")), "2.250000");
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant(1234567890.5)), "1234567890.50000");
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant(123456789012.5)), "123456789012.500");
  EXPECT_EQ(AfterPut(type_code::DS, "1\\2", Variant(1.5), 1), "1\\1.500000");
  EXPECT_EQ(AfterPut(type_code::DS, "1", Variant("1,5")), kRefused);
  EXPECT_EQ(AfterPut(type_code::DS, "1", Variant("1e999999")), kRefused);
  for (const double none : {std::nan(""), std::numeric_limits<double>::infinity(),
                            -std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(AfterPut(type_code::DS, "1", Variant(none)), kRefused);
  }
}

TEST(VariantToVR, ALongDecimalNumberIsCutTo16Characters) {
  EXPECT_EQ(AfterPut(type_code::DS, "", Variant(12345678901234567890.0)), "1234567890123456");
}

TEST(VariantToVR, NumbersOf16BitsTakeTheLowBitsOfALong) {
  for (const VrCode type : {type_code::US, type_code::AT, type_code::SS}) {
    EXPECT_EQ(AfterPut(type, "", Variant(258)), BytesOfNumber(std::uint16_t{258})) << type;
    EXPECT_EQ(AfterPut(type, "", Variant(0x12345)), BytesOfNumber(std::uint16_t{0x2345})) << type;
    EXPECT_EQ(AfterPut(type, "", Variant(-1)), "\xFF\xFF") << type;
    EXPECT_EQ(AfterPut(type, "abcd", Variant(" 258 "), 1), "ab" + BytesOfNumber(std::uint16_t{258}))
        << type;
    EXPECT_EQ(AfterPut(type, "ab", Variant(258), 2),
              WithNuls("ab\0\0") + BytesOfNumber(std::uint16_t{258}))
        << type;
  }
}

TEST(VariantToVR, NumbersOf32BitsTakeALong) {
  for (const VrCode type : {type_code::UL, type_code::SL}) {
    EXPECT_EQ(AfterPut(type, "", Variant(kFirst)), BytesOfNumber(kFirst)) << type;
    EXPECT_EQ(AfterPut(type, "abcdefgh", Variant(-2), 1), "abcd" + BytesOfNumber(-2)) << type;
    EXPECT_EQ(AfterPut(type, "abcd", Variant(4294967295.0)), kRefused) << type;
  }
}

TEST(VariantToVR, FloatingPointNumbersKeepTheirValue) {
  EXPECT_EQ(AfterPut(type_code::FL, "", Variant(0.1f)), BytesOfNumber(0.1f));
  EXPECT_EQ(AfterPut(type_code::FL, "", Variant("0.5")), BytesOfNumber(0.5f));
  EXPECT_EQ(AfterPut(type_code::FL, "abcd", Variant(1e300)), kRefused);
  EXPECT_EQ(AfterPut(type_code::FD, "", Variant(0.1)), BytesOfNumber(0.1));
  EXPECT_EQ(AfterPut(type_code::FD, "", Variant(7)), BytesOfNumber(7.0));
  EXPECT_EQ(AfterPut(type_code::FD, "abcdefgh", Variant(0.1), 1), "abcdefgh" + BytesOfNumber(0.1));
}

TEST(VariantToVR, NumbersRefuseWhatIsNone) {
  for (const VrCode type :
       {type_code::US, type_code::AT, type_code::SS, type_code::UL, type_code::SL, type_code::FL,
        type_code::FD, type_code::IS, type_code::DS}) {
    EXPECT_EQ(AfterPut(type, "12345678", Variant("x")), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "12345678", Variant("")), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "12345678", ByteArray("ab")), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "12345678", Variant(static_cast<IObject*>(nullptr))), kRefused);
    EXPECT_EQ(AfterPut(type, "12345678", Variant(1), -1), kRefused) << type;
    EXPECT_EQ(AfterPut(type, "12345678", Variant(1), kFirst), kRefused) << type;
  }
  for (const VrCode type : {type_code::US, type_code::AT, type_code::SS, type_code::UL,
                            type_code::SL, type_code::FL, type_code::FD}) {
    EXPECT_EQ(AfterPut(type, "12345678", Variant(1), kLast), kRefused) << type;
  }
}

TEST(VariantToVR, ADateIsWrittenAsADay) {
  EXPECT_EQ(AfterPut(type_code::DA, "", DateOf({2001, 2, 3, 23, 59, 59, 999})), "20010203");
  EXPECT_EQ(AfterPut(type_code::DA, "", Variant("2001-02-03")), "20010203");
  EXPECT_EQ(AfterPut(type_code::DA, "", Variant("20010203")), "20010203");
  EXPECT_EQ(AfterPut(type_code::DA, "19991231\\x", Variant("20010203"), 1), "19991231\\20010203");
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant("20010203"), 3), "19991231\\\\\\20010203");
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant("yesterday")), kRefused);
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant("20010229")), kRefused);
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant(1e9)), kRefused);
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", ByteArray("ab")), kRefused);
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant("20010203"), -1), kRefused);
  EXPECT_EQ(AfterPut(type_code::DA, "19991231", Variant("20010203"), kLast), kRefused);
}

TEST(VariantToVR, ADateWithATimeIsWrittenWithSixDigitsOfFraction) {
  EXPECT_EQ(AfterPut(type_code::DT, "", DateOf({2001, 2, 3, 14, 5, 6, 250})),
            "20010203140506.250000");
  EXPECT_EQ(AfterPut(type_code::DT, "", DateOf({2001, 2, 3, 14, 5, 6, 7})),
            "20010203140506.007000");
  EXPECT_EQ(AfterPut(type_code::DT, "", Variant("2001-02-03 14:05")), "20010203140500.000000");
  EXPECT_EQ(AfterPut(type_code::DT, "2001", Variant("soon")), kRefused);
}

TEST(VariantToVR, ATimeIsWrittenFromFourNumbersOrADate) {
  EXPECT_EQ(AfterPut(type_code::TM, "", Variant("14:05:06.250")), "140506.250");
  EXPECT_EQ(AfterPut(type_code::TM, "", Variant("9:3:0.0")), "090300.0");
  EXPECT_EQ(AfterPut(type_code::TM, "", DateOf({2001, 2, 3, 14, 5, 6, 250})), "140506.250");
  EXPECT_EQ(AfterPut(type_code::TM, "", Variant(0.5)), "120000.0");
  EXPECT_EQ(AfterPut(type_code::TM, "08\\09", Variant("14:05:06.0"), 1), "08\\140506.0");
  EXPECT_EQ(AfterPut(type_code::TM, "08", Variant("140506.250")), kRefused);
  EXPECT_EQ(AfterPut(type_code::TM, "08", Variant("")), kRefused);
  EXPECT_EQ(AfterPut(type_code::TM, "08", Variant(1e9)), kRefused);
}

TEST(VariantToVR, ATimeThatWasReadNeedsAFractionToBePutBack) {
  const auto vr = Owned(type_code::TM, "0930");
  CVariantVR values(vr.get());
  const std::string read = values.VRToVariant(0).ToString().Narrow();
  EXPECT_FALSE(values.VariantToVR(Variant(read), 0));
  EXPECT_TRUE(values.VariantToVR(Variant(read + ".0"), 0));
  EXPECT_EQ(Held(*vr), "093000.0");
}

TEST(VariantToVR, DatesComeBackTheSame) {
  for (const char* day : {"20010203", "19000101", "18000229", "01000101", "99991231", "20000229"}) {
    const auto vr = Owned(type_code::DA, day);
    CVariantVR values(vr.get());
    const Variant date = values.VRToVariant(0);
    // 1800 was no leap year.
    ASSERT_EQ(date.Is(Type::kDate), std::string(day) != "18000229") << day;
    if (date.IsEmpty()) continue;
    ASSERT_TRUE(values.VariantToVR(Variant(), 0));
    ASSERT_TRUE(values.VariantToVR(date, 0));
    EXPECT_EQ(Held(*vr), day);
  }
  for (const char* moment : {"20010203140506.250000", "18991229060000.001000",
                             "01000101235959.999000", "99991231235959.999000"}) {
    const auto vr = Owned(type_code::DT, moment);
    CVariantVR values(vr.get());
    ASSERT_TRUE(values.VariantToVR(values.VRToVariant(0), 0));
    EXPECT_EQ(Held(*vr), moment);
  }
}

TEST(VariantToVR, AllOtherTypesTakeAnArrayOfBytesAsTheWholeValue) {
  for (const VrCode type : {type_code::OB, type_code::OW, type_code::OF, type_code::UN,
                            VrCode{0x7672}, VrCode{0x3F3F}, type_code::kNone}) {
    for (const std::int32_t index : {0, 5, -1, kLast}) {
      EXPECT_EQ(AfterPut(type, "old value", ByteArray("even"), index), "even") << type;
      EXPECT_EQ(AfterPut(type, "old value", ByteArray("odd"), index), WithNuls("odd\0")) << type;
    }
    EXPECT_EQ(AfterPut(type, "old", ByteArray("ab", Type::kSignedByte)), "ab") << type;
    EXPECT_EQ(AfterPut(type, "old", ByteArray("")), kNoValue) << type;
    const std::string large(100001, 'x');
    EXPECT_EQ(AfterPut(type, "old", ByteArray(large)), large + '\0') << type;
  }
}

TEST(VariantToVR, AllOtherTypesTakeNothingElse) {
  const std::array<ArrayBound, 2> square = {ArrayBound{0, 2}, ArrayBound{0, 2}};
  const std::array<ArrayBound, 1> shifted = {ArrayBound{-7, 2}};
  const Variant values[] = {Variant(1),
                            Variant("text"),
                            Variant(std::uint8_t{1}),
                            Variant(static_cast<IObject*>(nullptr)),
                            Variant(VariantArray(Type::kShort, 2u)),
                            Variant(VariantArray(Type::kBool, 2u)),
                            Variant(VariantArray()),
                            Variant(VariantArray(Type::kByte, square))};
  for (const VrCode type : {type_code::OB, type_code::OW, type_code::UN, VrCode{0x3F3F}}) {
    for (const Variant& value : values) {
      EXPECT_EQ(AfterPut(type, "old", value), kRefused) << type << " " << value.Tag();
    }
    EXPECT_EQ(AfterPut(type, "old", Variant(VariantArray(Type::kByte, shifted))), WithNuls("\0\0"));
  }
}

TEST(VariantToVR, ShortValuesLieInTheElement) {
  for (const VrCode type : {type_code::LO, type_code::DS, type_code::US, type_code::OB}) {
    const auto vr = Owned(type);
    const Variant value = type == type_code::OB ? ByteArray("ab") : Variant(1);
    ASSERT_TRUE(CVariantVR(vr.get()).VariantToVR(value, 0));
    EXPECT_EQ(vr->Data, vr->Small);
    EXPECT_EQ(vr->OwnsData, 1u);
  }
}

TEST(VariantToVR, DoesNotWriteIntoBytesOfOthers) {
  for (const VrCode type : {type_code::LO, type_code::US, type_code::FD, type_code::DA}) {
    MadeElement shared(type, "20010203");
    std::uint8_t* const bytes = shared->Data;
    ASSERT_TRUE(CVariantVR(&*shared).VariantToVR(Variant(7), 0));
    EXPECT_NE(shared->Data, bytes);
    EXPECT_EQ(std::string(bytes, bytes + 8), "20010203");
  }
}

TEST(VariantToVR, PutsByTheTypeThatItIsToldAndLeavesTheElements) {
  const auto vr = Owned(type_code::UN, "");
  EXPECT_TRUE(CVariantVR(vr.get(), type_code::DS).VariantToVR(Variant(1.5), 0));
  EXPECT_EQ(Held(*vr), "1.500000");
  EXPECT_EQ(vr->TypeCode, type_code::UN);
  // A type of one text, which has another limit and no second value.
  const auto text = Owned(type_code::ST, "");
  EXPECT_TRUE(CVariantVR(text.get(), type_code::SH).VariantToVR(Variant(std::string(20, 's')), 0));
  EXPECT_EQ(Held(*text), std::string(16, 's'));
  EXPECT_TRUE(CVariantVR(text.get(), type_code::SH).VariantToVR(Variant("two"), 1));
  EXPECT_TRUE(CVariantVR(text.get(), type_code::IS).VariantToVR(Variant(3), 2));
  EXPECT_TRUE(CVariantVR(text.get(), type_code::DS).VariantToVR(Variant(4), 3));
  EXPECT_EQ(Held(*text), std::string(16, 's') + "\\two\\3\\4.000000");
}

}  // namespace
}  // namespace tessaret
