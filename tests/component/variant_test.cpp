// The values of the public interface: what they own, and how they turn into one another.
#include "tessaret/variant.hpp"

#include <cfenv>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "component/variant_conversion.h"

namespace tessaret {
namespace {

using Type = VariantType;

/// Counts its references and never dies.
class CountedObject final : public IObject {
 public:
  Status QueryInterface(const InterfaceId& id, void** object) override {
    *object = id == IObject::kId ? this : nullptr;
    if (*object == nullptr) return kNoInterface;
    AddRef();
    return kOk;
  }
  std::uint32_t AddRef() override { return ++references; }
  std::uint32_t Release() override { return --references; }

  std::uint32_t references = 1;
};

/// `from` as `type`, where that is to succeed.
Variant Changed(Variant from, Type type) {
  EXPECT_EQ(from.ChangeType(type), kOk);
  EXPECT_TRUE(from.Is(type));
  return from;
}

std::string Text(const Variant& from) { return Changed(from, Type::kString).ToString().Utf8(); }

/// How turning `from` into `type` fails, having shown that nothing changed.
Status Refusal(const Variant& from, Type type) {
  Variant value = from;
  const Status status = value.ChangeType(type);
  EXPECT_EQ(value.Tag(), from.Tag());
  EXPECT_EQ(value.AsString(), from.AsString());
  EXPECT_EQ(value.AsLong(), from.AsLong());
  return status;
}

TEST(Variant, HoldsWhatItWasMadeFrom) {
  EXPECT_TRUE(Variant().IsEmpty());
  EXPECT_EQ(Variant(std::int16_t{-5}).AsShort(), -5);
  EXPECT_EQ(Variant(100000).AsLong(), 100000);
  EXPECT_EQ(Variant(0.5f).AsFloat(), 0.5f);
  EXPECT_EQ(Variant(0.1).AsDouble(), 0.1);
  EXPECT_EQ(Variant(true).AsBool().value, -1);
  EXPECT_EQ(Variant(false).AsBool().value, 0);
  EXPECT_EQ(Variant(VariantBool::Of(7)).AsBool().value, 7);
  EXPECT_EQ(Variant(Date{2.5}).AsDate().days, 2.5);
  EXPECT_EQ(Variant("x\xC3\xA4").AsString(), u"x\u00E4");
  EXPECT_EQ(Variant(std::uint8_t{200}).AsByte(), 200);
  EXPECT_EQ(Variant(std::int8_t{-100}).AsSignedByte(), -100);
  EXPECT_EQ(Variant(VariantArray(Type::kLong, 3)).AsArray()->Count(), 3u);
}

TEST(VariantBool, IsTrueAtMinusOneOnly) {
  EXPECT_EQ(VariantBool(true).value, -1);
  EXPECT_EQ(VariantBool(false).value, 0);
  EXPECT_TRUE(VariantBool(true).IsTrue());
  EXPECT_FALSE(VariantBool::Of(1).IsTrue());
  EXPECT_TRUE(static_cast<bool>(VariantBool::Of(1)));
  EXPECT_FALSE(static_cast<bool>(VariantBool()));
  static_assert(!std::is_constructible_v<VariantBool, int>);
  static_assert(!std::is_constructible_v<VariantBool, const char*>);
  static_assert(!std::is_constructible_v<Variant, const int*>);
}

TEST(Variant, HasTheNumbersOfTheInterface) {
  EXPECT_EQ(Variant().Tag(), 0);
  EXPECT_EQ(Variant(std::int16_t{1}).Tag(), 2);
  EXPECT_EQ(Variant(1).Tag(), 3);
  EXPECT_EQ(Variant(1.0f).Tag(), 4);
  EXPECT_EQ(Variant(1.0).Tag(), 5);
  EXPECT_EQ(Variant(Date{}).Tag(), 7);
  EXPECT_EQ(Variant("").Tag(), 8);
  EXPECT_EQ(Variant(static_cast<IObject*>(nullptr)).Tag(), 9);
  EXPECT_EQ(Variant(true).Tag(), 11);
  EXPECT_EQ(Variant(std::int8_t{1}).Tag(), 16);
  EXPECT_EQ(Variant(std::uint8_t{1}).Tag(), 17);
  EXPECT_EQ(Variant(VariantArray(Type::kByte, 1)).Tag(), 0x2011);
  EXPECT_EQ(Variant(VariantArray(Type::kLong, 1)).Tag(), 0x2003);
  EXPECT_EQ(Variant(VariantArray(Type::kFloat, 1)).Tag(), 0x2004);
}

TEST(Variant, AskedForAnotherTypeItGivesNothing) {
  const Variant value(5);
  EXPECT_EQ(value.AsShort(), 0);
  EXPECT_EQ(value.AsDouble(), 0);
  EXPECT_EQ(value.AsString(), u"");
  EXPECT_TRUE(value.ToString().IsNull());
  EXPECT_EQ(value.AsObject(), nullptr);
  EXPECT_EQ(value.AsArray(), nullptr);
  const Variant array(VariantArray(Type::kLong, 3));
  EXPECT_EQ(array.AsLong(), 0);
  EXPECT_FALSE(array.Is(Type::kLong));
}

TEST(Variant, OwnsItsTextAndItsArray) {
  Variant text("one");
  const Variant copy = text;
  EXPECT_NE(copy.AsString().data(), text.AsString().data());
  EXPECT_EQ(copy.AsString(), u"one");
  text = Variant(VariantArray(Type::kLong, 2));
  text.AsArray()->Entries<std::int32_t>()[1] = 7;
  Variant other = text;
  other.AsArray()->Entries<std::int32_t>()[1] = 8;
  EXPECT_EQ(text.AsArray()->Entries<std::int32_t>()[1], 7);
  other = std::move(text);
  EXPECT_EQ(other.AsArray()->Entries<std::int32_t>()[1], 7);
  other.Clear();
  EXPECT_TRUE(other.IsEmpty());
  other.Clear();
}

TEST(Variant, HasTheTypeOfTheArrayThatItHoldsNow) {
  Variant value(VariantArray(Type::kLong, 3));
  *value.AsArray() = VariantArray(Type::kByte, 2);
  EXPECT_EQ(value.Type(), Type::kByte);
  EXPECT_EQ(value.Tag(), kArrayFlag | 17);
  EXPECT_FALSE(value.Is(Type::kByte)) << "that is one value";
  const Variant copy = value;
  EXPECT_EQ(copy.Type(), Type::kByte);
  const VariantArray taken = std::move(*value.AsArray());
  EXPECT_EQ(value.Type(), value.AsArray()->Type()) << "whatever is left";
  EXPECT_EQ(value.ChangeType(Type::kByte), kTypeMismatch);
}

TEST(Variant, ANullStringStaysNull) {
  const Variant null{String()};
  EXPECT_TRUE(null.Is(Type::kString));
  EXPECT_TRUE(null.ToString().IsNull());
  const Variant copy =
      null;  // NOLINT(performance-unnecessary-copy-initialization): that is what is tried
  EXPECT_TRUE(copy.ToString().IsNull());
  EXPECT_FALSE(Variant("").ToString().IsNull());
}

TEST(Variant, HoldsAReferenceToItsObjectAsLongAsItLives) {
  CountedObject object;
  {
    Variant first(&object);
    EXPECT_EQ(object.references, 2u);
    Variant second = first;
    EXPECT_EQ(object.references, 3u);
    const Variant third = std::move(first);
    EXPECT_EQ(object.references, 3u);
    second = Variant(1);
    EXPECT_EQ(object.references, 2u);
    EXPECT_EQ(third.AsObject(), &object);
  }
  EXPECT_EQ(object.references, 1u);
}

/// Clears the value that held it when its last reference goes.
class ClearingObject final : public IObject {
 public:
  Status QueryInterface(const InterfaceId&, void** object) override {
    *object = nullptr;
    return kNoInterface;
  }
  std::uint32_t AddRef() override { return static_cast<std::uint32_t>(++references); }
  std::uint32_t Release() override {
    if (--references == 0) {
      sawItself = holder->AsObject() != nullptr;
      holder->Clear();
    }
    return 0;
  }

  int references = 0;
  bool sawItself = false;
  Variant* holder = nullptr;
};

TEST(Variant, IsEmptyAlreadyWhileItsObjectDies) {
  ClearingObject object;
  Variant value(&object);
  object.holder = &value;
  value.Clear();
  EXPECT_EQ(object.references, 0);
  EXPECT_FALSE(object.sawItself);
  value = Variant(&object);
  value = Variant(5);
  EXPECT_EQ(object.references, 0);
  EXPECT_FALSE(object.sawItself);
}

TEST(Ref, HoldsOneReference) {
  CountedObject object;
  {
    Ref<IObject> first(&object);
    EXPECT_EQ(object.references, 2u);
    Ref<IObject> second = first;
    EXPECT_EQ(object.references, 3u);
    second = nullptr;
    EXPECT_EQ(object.references, 2u);
    Ref<IObject> moved = std::move(first);
    EXPECT_EQ(object.references, 2u);
    EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): what is left is what is asked
    const Ref<IObject> again = moved.As<IObject>();
    EXPECT_EQ(object.references, 3u);
    EXPECT_EQ(again, moved);
    object.AddRef();
    *moved.Receive() = &object;
    EXPECT_EQ(object.references, 3u);
    moved.Detach()->Release();
    EXPECT_FALSE(moved);
  }
  EXPECT_EQ(object.references, 1u);
  EXPECT_FALSE(Ref<IObject>().As<IObject>());
}

TEST(VariantConversion, WholeNumbersFitOrOverflow) {
  EXPECT_EQ(Changed(Variant(-32768), Type::kShort).AsShort(), -32768);
  EXPECT_EQ(Refusal(Variant(-32769), Type::kShort), kOverflow);
  EXPECT_EQ(Refusal(Variant(32768), Type::kShort), kOverflow);
  EXPECT_EQ(Changed(Variant(255), Type::kByte).AsByte(), 255);
  EXPECT_EQ(Refusal(Variant(256), Type::kByte), kOverflow);
  EXPECT_EQ(Refusal(Variant(-1), Type::kByte), kOverflow);
  EXPECT_EQ(Changed(Variant(-128), Type::kSignedByte).AsSignedByte(), -128);
  EXPECT_EQ(Refusal(Variant(128), Type::kSignedByte), kOverflow);
  EXPECT_EQ(Changed(Variant(2147483647.0), Type::kLong).AsLong(), 2147483647);
  EXPECT_EQ(Changed(Variant(2147483647.4), Type::kLong).AsLong(), 2147483647);
  EXPECT_EQ(Refusal(Variant(2147483647.5), Type::kLong), kOverflow);
  EXPECT_EQ(Changed(Variant(-2147483648.5), Type::kLong).AsLong(),
            std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(Refusal(Variant(-2147483649.0), Type::kLong), kOverflow);
  EXPECT_EQ(Refusal(Variant(std::nan("")), Type::kLong), kOverflow);
  EXPECT_EQ(Refusal(Variant(std::numeric_limits<double>::infinity()), Type::kLong), kOverflow);
}

TEST(VariantConversion, NumbersOfEveryWidthKeepTheirValue) {
  EXPECT_EQ(Changed(Variant(std::int16_t{-300}), Type::kLong).AsLong(), -300);
  EXPECT_EQ(Changed(Variant(std::int8_t{-100}), Type::kLong).AsLong(), -100);
  EXPECT_EQ(Changed(Variant(std::uint8_t{200}), Type::kShort).AsShort(), 200);
  EXPECT_EQ(Changed(Variant(-70000), Type::kDouble).AsDouble(), -70000);
  EXPECT_EQ(Changed(Variant(0.5f), Type::kDouble).AsDouble(), 0.5);
  EXPECT_EQ(Refusal(Variant(std::int8_t{-1}), Type::kByte), kOverflow);
  EXPECT_EQ(Refusal(Variant(std::uint8_t{128}), Type::kSignedByte), kOverflow);
}

TEST(VariantConversion, HalvesGoToTheEvenNumber) {
  EXPECT_EQ(Changed(Variant(0.5), Type::kLong).AsLong(), 0);
  EXPECT_EQ(Changed(Variant(1.5), Type::kLong).AsLong(), 2);
  EXPECT_EQ(Changed(Variant(2.5), Type::kLong).AsLong(), 2);
  EXPECT_EQ(Changed(Variant(-0.5), Type::kLong).AsLong(), 0);
  EXPECT_EQ(Changed(Variant(-1.5), Type::kLong).AsLong(), -2);
  EXPECT_EQ(Changed(Variant(-2.5), Type::kLong).AsLong(), -2);
  EXPECT_EQ(Changed(Variant(2.51f), Type::kShort).AsShort(), 3);
  EXPECT_EQ(Changed(Variant(-1.4), Type::kShort).AsShort(), -1);
}

TEST(VariantConversion, WholeNumbersDoNotFollowTheRoundingOfTheProcess) {
  const int former = std::fegetround();
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    ASSERT_EQ(std::fesetround(mode), 0);
    EXPECT_EQ(Changed(Variant(1.6), Type::kLong).AsLong(), 2);
    EXPECT_EQ(Changed(Variant(1.4), Type::kLong).AsLong(), 1);
    EXPECT_EQ(Changed(Variant(-1.6), Type::kLong).AsLong(), -2);
    EXPECT_EQ(Changed(Variant(2.5), Type::kLong).AsLong(), 2);
  }
  std::fesetround(former);
}

TEST(VariantConversion, TheTextOfTheLargestFloatIsThatFloatAgain) {
  // Its shortest text, 3.4028235e+38, is a little more than it is.
  Variant value(-std::numeric_limits<float>::max());
  ASSERT_EQ(value.ChangeType(VariantType::kString), kOk);
  ASSERT_EQ(value.ChangeType(VariantType::kFloat), kOk);
  EXPECT_EQ(value.AsFloat(), -std::numeric_limits<float>::max());
  // Half a step further is none any more: 2^128 - 2^103.
  Variant next(std::nextafter(0x1.ffffffp127, 0.0));
  EXPECT_EQ(next.ChangeType(VariantType::kFloat), kOk);
  EXPECT_EQ(next.AsFloat(), std::numeric_limits<float>::max());
  Variant large(0x1.ffffffp127);
  EXPECT_EQ(large.ChangeType(VariantType::kFloat), kOverflow);
}

TEST(VariantConversion, FloatingPointKeepsWhatItCan) {
  EXPECT_EQ(Changed(Variant(0.1), Type::kFloat).AsFloat(), 0.1f);
  EXPECT_EQ(Refusal(Variant(1e39), Type::kFloat), kOverflow);
  EXPECT_EQ(Refusal(Variant(-1e39), Type::kFloat), kOverflow);
  EXPECT_EQ(Changed(Variant(std::numeric_limits<double>::infinity()), Type::kFloat).AsFloat(),
            std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(Changed(Variant(std::nan("")), Type::kFloat).AsFloat()));
  EXPECT_EQ(Changed(Variant(0.1f), Type::kDouble).AsDouble(), double{0.1f});
  EXPECT_EQ(Changed(Variant(-7), Type::kDouble).AsDouble(), -7);
}

TEST(VariantConversion, TrueIsMinusOneAndAnyNumberButZero) {
  EXPECT_EQ(Changed(Variant(true), Type::kLong).AsLong(), -1);
  EXPECT_EQ(Changed(Variant(true), Type::kByte).AsByte(), 255);
  EXPECT_EQ(Changed(Variant("true"), Type::kByte).AsByte(), 255);
  EXPECT_EQ(Changed(Variant(false), Type::kByte).AsByte(), 0);
  EXPECT_EQ(Changed(Variant(true), Type::kDouble).AsDouble(), -1);
  EXPECT_EQ(Changed(Variant(2), Type::kBool).AsBool().value, -1);
  EXPECT_EQ(Changed(Variant(0.1), Type::kBool).AsBool().value, -1);
  EXPECT_EQ(Changed(Variant(0), Type::kBool).AsBool().value, 0);
  EXPECT_EQ(Changed(Variant("TRUE"), Type::kBool).AsBool().value, -1);
  EXPECT_EQ(Changed(Variant(" false "), Type::kBool).AsBool().value, 0);
  EXPECT_EQ(Changed(Variant("FALSE"), Type::kBool).AsBool().value, 0);
  EXPECT_EQ(Changed(Variant("2"), Type::kBool).AsBool().value, -1);
  EXPECT_EQ(Changed(Variant("true"), Type::kLong).AsLong(), -1);
  EXPECT_EQ(Refusal(Variant("yes"), Type::kBool), kTypeMismatch);
  // A number that is there already stays, whatever it is.
  EXPECT_EQ(Changed(Variant(VariantBool::Of(7)), Type::kBool).AsBool().value, 7);
}

TEST(VariantConversion, TextIsReadAsADecimalNumber) {
  EXPECT_EQ(Changed(Variant("-12"), Type::kLong).AsLong(), -12);
  EXPECT_EQ(Changed(Variant(" +12\t"), Type::kLong).AsLong(), 12);
  EXPECT_EQ(Changed(Variant("2.5"), Type::kLong).AsLong(), 2);
  EXPECT_EQ(Changed(Variant("-12.5e3"), Type::kDouble).AsDouble(), -12500);
  EXPECT_EQ(Changed(Variant(".5"), Type::kDouble).AsDouble(), 0.5);
  EXPECT_EQ(Changed(Variant("5."), Type::kDouble).AsDouble(), 5);
  for (const char* text : {"", " ", "x", "12x", "1,5", "+-1", "++1", "--1", "0x10", "inf", "nan",
                           "-infinity", "nan(1)", "1 2", "\xC3\xA4", "\xD9\xA1", "\xC4\xB1"}) {
    EXPECT_EQ(Refusal(Variant(text), Type::kDouble), kTypeMismatch) << text;
    EXPECT_EQ(Refusal(Variant(text), Type::kLong), kTypeMismatch) << text;
  }
  EXPECT_EQ(Refusal(Variant("40000"), Type::kShort), kOverflow);
  EXPECT_EQ(Refusal(Variant("1e400"), Type::kDouble), kTypeMismatch);
  EXPECT_EQ(Refusal(Variant("-1e400"), Type::kDouble), kTypeMismatch);
  EXPECT_EQ(Refusal(Variant("1e-400x"), Type::kDouble), kTypeMismatch);
}

TEST(VariantConversion, TextOfANumberTooSmallForItsTypeIsZero) {
  for (const char* text : {"1e-400", "-1e-400", "+1e-99999999999", "0.1e-50"}) {
    EXPECT_EQ(Changed(Variant(text), Type::kFloat).AsFloat(), 0) << text;
    EXPECT_EQ(Changed(Variant(text), Type::kLong).AsLong(), 0) << text;
  }
  EXPECT_EQ(Changed(Variant("1e-400"), Type::kDouble).AsDouble(), 0);
  // The smallest double, 2^-1074, is none of them.
  EXPECT_EQ(Changed(Variant("4.9406564584124654e-324"), Type::kDouble).AsDouble(), 0x1p-1074);
}

TEST(VariantConversion, NumbersBecomeTheirShortestText) {
  EXPECT_EQ(Text(Variant(std::int16_t{-5})), "-5");
  EXPECT_EQ(Text(Variant(-2147483647)), "-2147483647");
  EXPECT_EQ(Text(Variant(1.5)), "1.5");
  EXPECT_EQ(Text(Variant(0.1)), "0.1");
  EXPECT_EQ(Text(Variant(0.1f)), "0.1");
  EXPECT_EQ(Text(Variant(1e100)), "1e+100");
  EXPECT_EQ(Text(Variant(true)), "True");
  EXPECT_EQ(Text(Variant(false)), "False");
  EXPECT_EQ(Text(Variant(std::uint8_t{255})), "255");
  EXPECT_EQ(Text(Variant(std::int8_t{-1})), "-1");
}

TEST(VariantConversion, EmptyBecomesNothingOfAnyType) {
  EXPECT_EQ(Changed(Variant(), Type::kLong).AsLong(), 0);
  EXPECT_EQ(Changed(Variant(), Type::kBool).AsBool().value, 0);
  EXPECT_EQ(Changed(Variant(), Type::kDate).AsDate().days, 0);
  EXPECT_EQ(Text(Variant()), "");
  EXPECT_FALSE(Changed(Variant(), Type::kString).ToString().IsNull());
}

TEST(VariantConversion, TextIsReadAsADateInItsForms) {
  // 2001-02-03 is day 36925.
  for (const char* text : {"2001-02-03", "2001/02/03", "2001.02.03", "20010203", " 2001-02-03 "}) {
    EXPECT_EQ(Changed(Variant(text), Type::kDate).AsDate().days, 36925) << text;
  }
  EXPECT_EQ(Changed(Variant("2001-02-03 06:00"), Type::kDate).AsDate().days, 36925.25);
  EXPECT_EQ(Changed(Variant("20010203T12:00:00"), Type::kDate).AsDate().days, 36925.5);
  EXPECT_EQ(Changed(Variant("18:00"), Type::kDate).AsDate().days, 0.75);
  EXPECT_EQ(Changed(Variant("00:00:00.25"), Type::kDate).AsDate().days, 250 / 86'400'000.0);
  for (const char* text : {"00:00:00.123", "00:00:00.123456", "00:00:00.12399999999999999999"})
    EXPECT_EQ(Changed(Variant(text), Type::kDate).AsDate().days, 123 / 86'400'000.0) << text;
  for (const char* text :
       {"", "2001", "2001-02", "2001-2-3", "2001-02/03", "2001-02-30", "2001-02-03x",
        "2001-02-03 6:00", "2001-02-03 06", "2001-02-03 06:00:", "2001-02-03 06:00:00.",
        "2001-02-03 24:00", "2001-02-03  06:00", "06:00x", "1:00", "x", "36925"}) {
    EXPECT_EQ(Refusal(Variant(text), Type::kDate), kTypeMismatch) << text;
    EXPECT_EQ(ParseDate(text), std::nullopt) << text;
  }
  EXPECT_EQ(ParseDate("2001-02-03 "), std::nullopt);
}

TEST(VariantConversion, DatesBecomeNumbersAndText) {
  EXPECT_EQ(Changed(Variant(Date{36925.5}), Type::kDouble).AsDouble(), 36925.5);
  EXPECT_EQ(Changed(Variant(36925), Type::kDate).AsDate().days, 36925);
  EXPECT_EQ(Refusal(Variant(1e7), Type::kDate), kOverflow);
  EXPECT_EQ(Refusal(Variant(std::nan("")), Type::kDate), kOverflow);
  EXPECT_EQ(Text(Variant(Date{36925})), "2001-02-03");
  EXPECT_EQ(Text(Variant(Date{36925.25})), "2001-02-03 06:00:00");
  EXPECT_EQ(Text(Variant(Date{36925 + 250 / 86'400'000.0})), "2001-02-03 00:00:00.250");
  EXPECT_EQ(Text(Variant(Date{1e7})), "1e+07");
}

TEST(VariantConversion, ObjectsAndArraysStayWhatTheyAre) {
  CountedObject object;
  EXPECT_EQ(Refusal(Variant(&object), Type::kLong), kTypeMismatch);
  EXPECT_EQ(Refusal(Variant(&object), Type::kString), kTypeMismatch);
  EXPECT_EQ(Changed(Variant(&object), Type::kObject).AsObject(), &object);
  EXPECT_EQ(Refusal(Variant(5), Type::kObject), kTypeMismatch);
  EXPECT_EQ(Refusal(Variant(5), Type::kEmpty), kTypeMismatch);
  EXPECT_EQ(Refusal(Variant(5), static_cast<Type>(99)), kTypeMismatch);
  const Variant array(VariantArray(Type::kLong, 1));
  EXPECT_EQ(Refusal(array, Type::kLong), kTypeMismatch);
  EXPECT_EQ(Refusal(array, Type::kString), kTypeMismatch);
  EXPECT_EQ(tessaret_variant_change_type(nullptr, 3), kPointer);
}

TEST(VariantConversion, ConvertsBesideTheSource) {
  const Variant from("12");
  Variant to(true);
  EXPECT_EQ(ConvertVariant(from, Type::kShort, to), kOk);
  EXPECT_EQ(to.AsShort(), 12);
  EXPECT_EQ(from.AsString(), u"12");
  EXPECT_EQ(ConvertVariant(Variant("x"), Type::kShort, to), kTypeMismatch);
  EXPECT_EQ(to.AsShort(), 12);
  EXPECT_EQ(ConvertVariant(from, Type::kString, to), kOk);
  EXPECT_EQ(to.AsString(), u"12");
}

TEST(VariantArray, KeepsBoundsTypeAndEntries) {
  const std::vector<ArrayBound> bounds = {{1, 3}, {-2, 2}};
  VariantArray array(Type::kDouble, bounds);
  EXPECT_EQ(array.Type(), Type::kDouble);
  ASSERT_EQ(array.Bounds().size(), 2u);
  EXPECT_EQ(array.Bounds()[1], (ArrayBound{-2, 2}));
  EXPECT_EQ(array.Count(), 6u);
  EXPECT_EQ(array.ByteCount(), 48u);
  for (const double entry : array.Entries<double>()) EXPECT_EQ(entry, 0);
  // An entry of another size cannot be had.
  EXPECT_TRUE(array.Entries<std::int32_t>().empty());
}

TEST(VariantArray, HoldsBytes) {
  const std::uint8_t bytes[] = {1, 2, 255};
  const VariantArray array = VariantArray::OfBytes(bytes);
  EXPECT_EQ(array.Type(), Type::kByte);
  ASSERT_EQ(array.Bounds().size(), 1u);
  EXPECT_EQ(array.Bounds()[0], (ArrayBound{0, 3}));
  EXPECT_EQ(array.Bytes()[2], 255);
  const VariantArray none = VariantArray::OfBytes({});
  EXPECT_EQ(none.Bounds().size(), 1u);
  EXPECT_EQ(none.Count(), 0u);
  EXPECT_EQ(none.Data(), nullptr);
}

TEST(VariantArray, MayHaveNoEntriesOrNoDimensions) {
  EXPECT_EQ(VariantArray().Count(), 0u);
  EXPECT_EQ(VariantArray(Type::kLong, std::vector<ArrayBound>{}).Count(), 0u);
  EXPECT_EQ(VariantArray(Type::kLong, std::vector<ArrayBound>{{0, 5}, {0, 0}}).Count(), 0u);
  // Wherever the dimension without entries stands, the others need no memory.
  constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
  for (const std::vector<ArrayBound>& bounds :
       {std::vector<ArrayBound>{{0, 0}, {0, kMost}, {0, kMost}, {0, kMost}},
        std::vector<ArrayBound>{{0, kMost}, {0, kMost}, {0, kMost}, {0, 0}}}) {
    const VariantArray array(Type::kDouble, bounds);
    EXPECT_EQ(array.Count(), 0u);
    EXPECT_EQ(array.Bounds().size(), 4u);
  }
  const VariantArray copy = VariantArray(Type::kLong, 0);
  EXPECT_EQ(VariantArray(copy).Count(), 0u);
}

TEST(VariantArray, RefusesWhatNoMemoryHolds) {
  constexpr std::uint32_t kMost = std::numeric_limits<std::uint32_t>::max();
  EXPECT_THROW(
      VariantArray(Type::kByte, std::vector<ArrayBound>{{0, kMost}, {0, kMost}, {0, kMost}}),
      std::bad_alloc);
  EXPECT_THROW(VariantArray(Type::kDouble, std::vector<ArrayBound>{{0, kMost}, {0, kMost}}),
               std::bad_alloc);
  EXPECT_THROW(VariantArray(Type::kString, 1), std::bad_alloc);
  EXPECT_THROW(VariantArray(Type::kEmpty, 1), std::bad_alloc);
}

}  // namespace
}  // namespace tessaret
