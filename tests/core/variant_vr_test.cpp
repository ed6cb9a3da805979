// Values as they come out of elements.
#include "core/variant_vr.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/binary_vr.h"
#include "core/dicom_object.h"
#include "tessaret/calendar.hpp"
#include "value_maker.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::kFirst;
using test::kLast;
using test::MadeElement;
using test::Owned;
using test::WithNuls;

using Type = VariantType;

constexpr VrCode kOtherTypes[] = {
    type_code::OB,          type_code::OW,          type_code::OF,
    type_code::UN,          type_code::SQ,          type_code::kNone,
    MakeTypeCode('O', 'D'), MakeTypeCode('?', '?'), MakeTypeCode('v', 'r')};

Variant Got(VrCode type, const Bytes& value, std::int32_t index = 0) {
  MadeElement vr(type, value);
  return CVariantVR(&*vr).VRToVariant(index);
}

Variant Got(VrCode type, std::string_view value, std::int32_t index = 0) {
  return Got(type, BytesOf(value), index);
}

/// The text of a string variant; says what it is where it is another.
std::string Text(const Variant& value) {
  return value.Is(Type::kString) ? value.ToString().Narrow()
                                 : "not a string but " + std::to_string(value.Tag());
}

std::uint32_t Multiplicity(VrCode type, std::string_view value) {
  MadeElement vr(type, value);
  return CVariantVR(&*vr).VRMultiplicity();
}

/// The numbers one behind the other.
template <class T>
Bytes NumberBytes(std::initializer_list<T> numbers) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(numbers.begin());
  return {first, first + numbers.size() * sizeof(T)};
}

TEST(Multiplicity, OfTextsIsOneMoreThanBackslashes) {
  for (const VrCode type :
       {type_code::AE, type_code::AS, type_code::CS, type_code::DA, type_code::DS, type_code::DT,
        type_code::IS, type_code::LO, type_code::PN, type_code::SH, type_code::TM, type_code::UI}) {
    EXPECT_EQ(Multiplicity(type, ""), 0u) << type;
    EXPECT_EQ(Multiplicity(type, "a"), 1u) << type;
    EXPECT_EQ(Multiplicity(type, "a\\"), 2u) << type;
    EXPECT_EQ(Multiplicity(type, "a\\b\\c"), 3u) << type;
    EXPECT_EQ(Multiplicity(type, std::string(65536, '\\')), 65537u) << type;
    VR unread;
    unread.TypeCode = type;
    unread.Length = 10;
    EXPECT_EQ(CVariantVR(&unread).VRMultiplicity(), 0u) << type;
    VR noBytes(0, 0, 0, new std::uint8_t[1]);
    noBytes.TypeCode = type;
    EXPECT_EQ(CVariantVR(&noBytes).VRMultiplicity(), 1u) << type;
  }
}

TEST(Multiplicity, OfNumbersGoesByTheLength) {
  const std::string bytes(17, 'x');
  for (const VrCode type : {type_code::US, type_code::SS, type_code::AT}) {
    EXPECT_EQ(Multiplicity(type, bytes), 8u) << type;
    EXPECT_EQ(Multiplicity(type, ""), 0u) << type;
    EXPECT_EQ(Multiplicity(type, "x"), 0u) << type;
  }
  for (const VrCode type : {type_code::UL, type_code::SL, type_code::FL}) {
    EXPECT_EQ(Multiplicity(type, bytes), 4u) << type;
    EXPECT_EQ(Multiplicity(type, "abc"), 0u) << type;
  }
  EXPECT_EQ(Multiplicity(0x7672, bytes), 2u);
  EXPECT_EQ(Multiplicity(0x7672, "abcdefg"), 0u);
}

TEST(Multiplicity, OfAllOthersIsOne) {
  for (const VrCode type :
       {type_code::FD, type_code::OB, type_code::OW, type_code::OF, type_code::UN, type_code::SQ,
        type_code::LT, type_code::ST, type_code::UT, type_code::kNone, MakeTypeCode('V', 'R')}) {
    for (const char* value : {"", "a\\b\\c", "0123456789abcdef"}) {
      EXPECT_EQ(Multiplicity(type, value), 1u) << type;
    }
  }
}

TEST(VRToVariant, AnElementWithoutBytesIsEmptyWhateverItsType) {
  for (std::uint32_t type = 0; type <= 0xFFFF; ++type) {
    VR vr;
    vr.TypeCode = static_cast<VrCode>(type);
    for (const std::int32_t index : {0, 2, -1, kFirst, kLast}) {
      ASSERT_TRUE(CVariantVR(&vr).VRToVariant(index).IsEmpty()) << type;
    }
    vr.Length = 8;
    ASSERT_TRUE(CVariantVR(&vr).VRToVariant(0).IsEmpty()) << type;
    std::uint8_t bytes[] = {'1', '2'};
    VR noLength(0, 0, 0, bytes, false);
    noLength.TypeCode = static_cast<VrCode>(type);
    ASSERT_TRUE(CVariantVR(&noLength).VRToVariant(0).IsEmpty()) << type;
  }
}

TEST(VRToVariant, NoElementIsEmptyAndHasNoValues) {
  CVariantVR none(nullptr);
  EXPECT_TRUE(none.VRToVariant(0).IsEmpty());
  EXPECT_EQ(none.VRMultiplicity(), 0u);
  EXPECT_FALSE(none.VariantToVR(Variant(1), 0));
  EXPECT_FALSE(none.VariantToVR(Variant(), 0));
  EXPECT_FALSE(none.VariantToVR(Variant(VariantArray(Type::kByte, 2u)), 0));
  for (const VrCode type : {type_code::LO, type_code::US, type_code::DA, type_code::SQ}) {
    CVariantVR toldType(nullptr, type);
    EXPECT_TRUE(toldType.VRToVariant(0).IsEmpty()) << type;
    EXPECT_EQ(toldType.VRMultiplicity(), 0u) << type;
    EXPECT_FALSE(toldType.VariantToVR(Variant(1), 0)) << type;
  }
}

TEST(VRToVariant, TextComesWithoutItsPadding) {
  for (const VrCode type : {type_code::AE, type_code::AS, type_code::CS, type_code::LO,
                            type_code::SH, type_code::UI, type_code::PN}) {
    EXPECT_EQ(Text(Got(type, " one \\two ", 0)), " one") << type;
    EXPECT_EQ(Text(Got(type, " one \\two ", 1)), "two") << type;
    EXPECT_EQ(Text(Got(type, "   ", 0)), "") << type;
    EXPECT_EQ(Text(Got(type, WithNuls("1.2.3\0"), 0)), "1.2.3") << type;
  }
}

TEST(VRToVariant, TextThatIsNotThereIsAStringWithNothingInIt) {
  for (const VrCode type : {type_code::LO, type_code::PN, type_code::UI}) {
    for (const std::int32_t index : {1, 2, kLast, -1, kFirst}) {
      EXPECT_EQ(Text(Got(type, "one", index)), "") << type;
      EXPECT_FALSE(Got(type, "one", index).ToString().IsNull());
    }
  }
}

TEST(VRToVariant, NamesKeepTheirSeparators) {
  EXPECT_EQ(Text(Got(type_code::PN, "Doe^John^^Dr \\Roe^Jane", 0)), "Doe^John^^Dr");
  EXPECT_EQ(Text(Got(type_code::PN, "Doe^John^^Dr \\Roe^Jane", 1)), "Roe^Jane");
}

TEST(VRToVariant, BytesOfTextComeOutUnchanged) {
  std::string bytes;
  for (int byte = 1; byte <= 0xFF; ++byte) {
    if (byte != '\\') bytes += static_cast<char>(byte);
  }
  EXPECT_EQ(Text(Got(type_code::LO, bytes)), bytes);
}

TEST(VRToVariant, ALoneTextIsTheWholeValue) {
  for (const VrCode type : {type_code::ST, type_code::LT, type_code::UT}) {
    EXPECT_EQ(Text(Got(type, "C:\\data  ")), "C:\\data") << type;
    EXPECT_EQ(Text(Got(type, WithNuls("text \0"))), "text") << type;
    EXPECT_EQ(Text(Got(type, "two\r\nlines\r\n  ")), "two\r\nlines\r\n") << type;
    EXPECT_EQ(Text(Got(type, WithNuls("a\0b\0"))), WithNuls("a\0b")) << type;
    for (const std::int32_t index : {1, 2, -1, kLast, kFirst}) {
      try {
        static_cast<void>(Got(type, "text", index));
        ADD_FAILURE() << type;
      } catch (const TypedValueError& error) {
        EXPECT_STREQ(error.what(), "Error: VR type ST,LT and UT have VM=1");
      }
    }
  }
}

TEST(VRToVariant, WholeNumbersInTextAreRead) {
  const auto number = [](std::string_view text, std::int32_t index = 0) {
    const Variant value = Got(type_code::IS, text, index);
    EXPECT_TRUE(value.Is(Type::kLong)) << text;
    return value.AsLong();
  };
  EXPECT_EQ(number("42 "), 42);
  EXPECT_EQ(number(" -7"), -7);
  EXPECT_EQ(number("1\\2\\3", 2), 3);
  EXPECT_EQ(number("12mm"), 12);
  EXPECT_EQ(number("mm"), 0);
  EXPECT_EQ(number("1\\\\3", 1), 0);
  EXPECT_EQ(number("99999999999"), 2147483647);
  EXPECT_EQ(number("-99999999999"), std::numeric_limits<std::int32_t>::min());
}

TEST(VRToVariant, DecimalNumbersInTextAreRead) {
  const auto number = [](std::string_view text, std::int32_t index = 0) {
    const Variant value = Got(type_code::DS, text, index);
    EXPECT_TRUE(value.Is(Type::kDouble)) << text;
    return value.AsDouble();
  };
  EXPECT_EQ(number("1.5 "), 1.5);
  EXPECT_EQ(number("1\\-2.5e3", 1), -2500.0);
  EXPECT_EQ(number("1,5"), 1.0);
  EXPECT_EQ(number("1.5mm"), 1.5);
  EXPECT_EQ(number("nan"), 0.0);
  EXPECT_EQ(number("1e999999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(number(std::string(1000, '1').insert(1, ".")), 1.1111111111111112);
}

TEST(VRToVariant, ANumberThatIsNotThereIsEmpty) {
  for (const VrCode type :
       {type_code::IS, type_code::DS, type_code::DA, type_code::DT, type_code::TM, type_code::US,
        type_code::SS, type_code::AT, type_code::UL, type_code::SL, type_code::FL, type_code::FD}) {
    for (const std::int32_t index : {-1, kFirst, kLast, 9}) {
      EXPECT_TRUE(Got(type, "20010203", index).IsEmpty()) << type << " " << index;
    }
  }
  EXPECT_TRUE(Got(type_code::US, "abc", 1).IsEmpty());
  EXPECT_TRUE(Got(type_code::FD, "abcdefg").IsEmpty());
  EXPECT_TRUE(Got(type_code::UL, "abc").IsEmpty());
}

TEST(VRToVariant, NumbersOfTheMachineHaveTheirTypes) {
  const Variant us = Got(type_code::US, NumberBytes<std::uint16_t>({1, 65535}), 1);
  EXPECT_TRUE(us.Is(Type::kLong));
  EXPECT_EQ(us.AsLong(), 65535);
  const Variant ss = Got(type_code::SS, NumberBytes<std::int16_t>({1, -32768}), 1);
  EXPECT_TRUE(ss.Is(Type::kShort));
  EXPECT_EQ(ss.AsShort(), -32768);
  const Variant ul = Got(type_code::UL, NumberBytes<std::uint32_t>({1, 0xFFFFFFFF}), 1);
  EXPECT_TRUE(ul.Is(Type::kDouble));
  EXPECT_EQ(ul.AsDouble(), 4294967295.0);
  const Variant sl = Got(type_code::SL, NumberBytes<std::int32_t>({1, kFirst}), 1);
  EXPECT_TRUE(sl.Is(Type::kLong));
  EXPECT_EQ(sl.AsLong(), kFirst);
  const Variant fl = Got(type_code::FL, NumberBytes<float>({1, 0.1f}), 1);
  EXPECT_TRUE(fl.Is(Type::kFloat));
  EXPECT_EQ(fl.AsFloat(), 0.1f);
  const Variant fd = Got(type_code::FD, NumberBytes<double>({1, 0.1}), 1);
  EXPECT_TRUE(fd.Is(Type::kDouble));
  EXPECT_EQ(fd.AsDouble(), 0.1);
}

TEST(VRToVariant, ATagIsTwoNumbers) {
  const Bytes tag = NumberBytes<std::uint16_t>({0x7FE0, 0x0010});
  EXPECT_EQ(Got(type_code::AT, tag, 0).AsLong(), 0x7FE0);
  EXPECT_EQ(Got(type_code::AT, tag, 1).AsLong(), 0x0010);
  EXPECT_TRUE(Got(type_code::AT, tag, 1).Is(Type::kLong));
  EXPECT_TRUE(Got(type_code::AT, tag, 2).IsEmpty());
}

TEST(VRToVariant, ADayBecomesADate) {
  const auto expected = ToDate({.year = 2001, .month = 2, .day = 3});
  const Variant date = Got(type_code::DA, "20010203");
  EXPECT_TRUE(date.Is(Type::kDate));
  EXPECT_EQ(date.AsDate(), expected);
  EXPECT_EQ(Got(type_code::DA, "2001.02.03").AsDate(), expected);
  EXPECT_EQ(Got(type_code::DA, "19991231\\20010203 ", 1).AsDate(), expected);
  EXPECT_TRUE(Got(type_code::DA, "20010229").IsEmpty());
  EXPECT_TRUE(Got(type_code::DA, "        ").IsEmpty());
}

TEST(VRToVariant, ADayWithATimeBecomesADate) {
  const Variant date = Got(type_code::DT, "20010203140506.250000");
  EXPECT_TRUE(date.Is(Type::kDate));
  EXPECT_EQ(date.AsDate(), ToDate({2001, 2, 3, 14, 5, 6, 250}));
  EXPECT_TRUE(Got(type_code::DT, "now").IsEmpty());
}

TEST(VRToVariant, ATimeBecomesAStringWithColons) {
  EXPECT_EQ(Text(Got(type_code::TM, "0930")), "09:30:00");
  EXPECT_EQ(Text(Got(type_code::TM, "140506.999 ")), "14:05:06");
  EXPECT_EQ(Text(Got(type_code::TM, "0930\\1015", 1)), "10:15:00");
  EXPECT_TRUE(Got(type_code::TM, "noon").IsEmpty());
}

TEST(VRToVariant, AllOtherTypesAreTheirBytesWhateverTheIndex) {
  const Bytes bytes = {0, 1, 2, 0x5C, 0xFF};
  for (const VrCode type : kOtherTypes) {
    for (const std::int32_t index : {0, 1, -1, kLast, kFirst}) {
      const Variant value = Got(type, bytes, index);
      ASSERT_EQ(value.Tag(), 0x2011) << type;
      const VariantArray& array = *value.AsArray();
      ASSERT_EQ(array.Bounds().size(), 1u);
      EXPECT_EQ(array.Bounds()[0], (ArrayBound{0, 5}));
      EXPECT_EQ(Bytes(array.Bytes().begin(), array.Bytes().end()), bytes);
    }
  }
}

TEST(VRToVariant, ConvertsByTheTypeThatItIsToldAndLeavesTheElements) {
  const auto vr = Owned(type_code::UN, "Doe^John");
  EXPECT_EQ(Text(CVariantVR(vr.get(), type_code::PN).VRToVariant(0)), "Doe^John");
  EXPECT_EQ(CVariantVR(vr.get(), type_code::US).VRMultiplicity(), 4u);
  EXPECT_EQ(CVariantVR(vr.get()).VRMultiplicity(), 1u);
  EXPECT_EQ(vr->TypeCode, type_code::UN);
}

}  // namespace
}  // namespace tessaret
