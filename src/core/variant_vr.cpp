#include "core/variant_vr.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/checked.h"
#include "base/leading_number.h"
#include "base/text.h"
#include "component/variant_conversion.h"
#include "core/binary_vr.h"
#include "core/string_vr.h"
#include "core/time_text.h"
#include "tessaret/calendar.hpp"

namespace tessaret {
namespace {

Variant TextVariant(std::string_view text) { return String::FromNarrow(text); }

Variant TextAt(const VR& vr, std::int32_t index) {
  return TextVariant(NthTextUnpadded(ValueText(vr), index).value_or(std::string_view()));
}

/// The whole value: a backslash in it is a character like any other.
Variant LoneText(const VR& vr, std::int32_t index) {
  if (index != 0) throw TypedValueError(VR_XXMULTISTRING::kLoneTextWords);
  std::string_view text = ValueText(vr);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  return TextVariant(text);
}

Variant IntegerAt(const VR& vr, std::int32_t index) {
  const auto text = NthText(ValueText(vr), index);
  return text ? Variant(LeadingLong(*text)) : Variant();
}

Variant DecimalAt(const VR& vr, std::int32_t index) {
  const auto text = NthText(ValueText(vr), index);
  return text ? Variant(LeadingDouble(*text)) : Variant();
}

/// Value number `index` of numbers of the type Stored, as Outside.
template <class Stored, class Outside>
Variant NumberAt(const VR& vr, std::int32_t index) {
  const auto number = BinaryValue<Stored>(vr, index);
  return number ? Variant(static_cast<Outside>(*number)) : Variant();
}

Variant AllBytes(const VR& vr) {
  try {
    return VariantArray::OfBytes({vr.Data, vr.Length});
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::optional<std::int32_t> LongOf(const Variant& value) {
  Variant number;
  if (Failed(ConvertVariant(value, VariantType::kLong, number))) return std::nullopt;
  return number.AsLong();
}

std::optional<double> DoubleOf(const Variant& value) {
  Variant number;
  if (Failed(ConvertVariant(value, VariantType::kDouble, number))) return std::nullopt;
  return number.AsDouble();
}

std::optional<float> FloatOf(const Variant& value) {
  Variant number;
  if (Failed(ConvertVariant(value, VariantType::kFloat, number))) return std::nullopt;
  return number.AsFloat();
}

std::optional<Calendar> CalendarOf(const Variant& value) {
  Variant date;
  if (Failed(ConvertVariant(value, VariantType::kDate, date))) return std::nullopt;
  return ToCalendar(date.AsDate());
}

/// Puts the low bytes of a whole number through a view of its type.
template <class View, class Stored>
bool PutLong(VR& vr, const Variant& value, std::int32_t index) {
  const auto number = LongOf(value);
  return number && View(vr).PutNumber(index, static_cast<Stored>(*number));
}

/// Puts `text`, where there is one, through a view of its type.
template <class View>
bool PutTextValue(VR& vr, const std::optional<std::string>& text, std::int32_t index) {
  return text && View(vr).PutValue(index, *text);
}

std::optional<std::string> DateTextOf(const Variant& value) {
  const auto at = CalendarOf(value);
  return at ? std::optional(DicomDate(*at)) : std::nullopt;
}

std::optional<std::string> DateTimeTextOf(const Variant& value) {
  const auto at = CalendarOf(value);
  return at ? std::optional(DicomDateTime(*at)) : std::nullopt;
}

std::optional<std::string> TimeTextOf(const Variant& value) {
  if (value.Is(VariantType::kString)) return DicomTimeOf(value.ToString().Narrow());
  const auto at = CalendarOf(value);
  return at ? std::optional(DicomTime(*at)) : std::nullopt;
}

}  // namespace

std::uint32_t CVariantVR::VRMultiplicity() const {
  if (vr_ == nullptr) return 0;
  switch (PropertiesOf(TypeCode).count) {
    case ValueCount::kOne:
      return 1;
    case ValueCount::kBackslashes: {
      if (vr_->Data == nullptr) return 0;
      const std::uint64_t count = std::max<std::uint64_t>(CountTexts(ValueText(*vr_)), 1);
      return SaturatingCast<std::uint32_t>(count);
    }
    case ValueCount::kPairs:
      return vr_->Length / 2;
    case ValueCount::kFours:
      return vr_->Length / 4;
    case ValueCount::kEights:
      return vr_->Length / 8;
  }
  return 1;
}

Variant CVariantVR::VRToVariant(std::int32_t index) {
  if (vr_ == nullptr || vr_->Length == 0 || vr_->Data == nullptr) return {};
  switch (PropertiesOf(TypeCode).kind) {
    case ValueKind::kText:
      return TextAt(*vr_, index);
    case ValueKind::kLoneText:
      return LoneText(*vr_, index);
    case ValueKind::kInteger:
      return IntegerAt(*vr_, index);
    case ValueKind::kDecimal:
      return DecimalAt(*vr_, index);
    case ValueKind::kDate:
      return DateAt(index);
    case ValueKind::kDateTime:
      return DateTimeAt(index);
    case ValueKind::kTime:
      return TimeAt(index);
    case ValueKind::kUnsigned16:
      return NumberAt<std::uint16_t, std::int32_t>(*vr_, index);
    case ValueKind::kSigned16:
      return NumberAt<std::int16_t, std::int16_t>(*vr_, index);
    case ValueKind::kUnsigned32:
      // So that all 32 bits keep their value: a long has a sign.
      return NumberAt<std::uint32_t, double>(*vr_, index);
    case ValueKind::kSigned32:
      return NumberAt<std::int32_t, std::int32_t>(*vr_, index);
    case ValueKind::kFloat:
      return NumberAt<float, float>(*vr_, index);
    case ValueKind::kDouble:
      return NumberAt<double, double>(*vr_, index);
    case ValueKind::kSequence:
    case ValueKind::kBytes:
      break;
  }
  return AllBytes(*vr_);
}

Variant CVariantVR::DateAt(std::int32_t index) {
  std::string text;
  if (!VrDA(*vr_).GetValue(index, text)) return {};
  const auto date = DateIn(text);
  return date ? Variant(*date) : Variant();
}

Variant CVariantVR::DateTimeAt(std::int32_t index) {
  std::string text;
  if (!VrDT(*vr_).GetValue(index, text)) return {};
  const auto date = DateTimeIn(text);
  return date ? Variant(*date) : Variant();
}

Variant CVariantVR::TimeAt(std::int32_t index) {
  std::string text;
  if (!VrTM(*vr_).GetValue(index, text)) return {};
  const auto time = TimeForPeople(text);
  return time ? TextVariant(*time) : Variant();
}

bool CVariantVR::VariantToVR(const Variant& value, std::int32_t index) {
  if (vr_ == nullptr) return false;
  const ValueKind kind = PropertiesOf(TypeCode).kind;
  if (kind == ValueKind::kSequence) return true;
  if (value.IsEmpty()) {
    vr_->ReplaceValue(nullptr, 0);
    return true;
  }
  switch (kind) {
    case ValueKind::kText:
    case ValueKind::kLoneText:
      return VR_XXMULTISTRING::PutText(*vr_, TypeCode, value, index);
    case ValueKind::kInteger:
      return PutInteger(value, index);
    case ValueKind::kDecimal:
      return PutDecimal(value, index);
    case ValueKind::kDate:
      return PutTextValue<VrDA>(*vr_, DateTextOf(value), index);
    case ValueKind::kDateTime:
      return PutTextValue<VrDT>(*vr_, DateTimeTextOf(value), index);
    case ValueKind::kTime:
      return PutTextValue<VrTM>(*vr_, TimeTextOf(value), index);
    case ValueKind::kUnsigned16:
      return PutLong<VrUS, std::uint16_t>(*vr_, value, index);
    case ValueKind::kSigned16:
      return PutLong<VrSS, std::int16_t>(*vr_, value, index);
    case ValueKind::kUnsigned32:
      return PutLong<VrUL, std::uint32_t>(*vr_, value, index);
    case ValueKind::kSigned32:
      return PutLong<VrSL, std::int32_t>(*vr_, value, index);
    case ValueKind::kFloat: {
      const auto number = FloatOf(value);
      return number && VrFL(*vr_).PutNumber(index, *number);
    }
    case ValueKind::kDouble: {
      const auto number = DoubleOf(value);
      return number && VrFD(*vr_).PutNumber(index, *number);
    }
    case ValueKind::kSequence:
    case ValueKind::kBytes:
      break;
  }
  return PutBytes(value);
}

bool CVariantVR::PutInteger(const Variant& value, std::int32_t index) {
  const auto number = LongOf(value);
  return number &&
         VR_XXMULTISTRING::PutText(*vr_, TypeCode, TextVariant(std::to_string(*number)), index);
}

bool CVariantVR::PutDecimal(const Variant& value, std::int32_t index) {
  const auto number = DoubleOf(value);
  // Words would be stored for what is no number.
  if (!number || !std::isfinite(*number)) return false;
  return VR_XXMULTISTRING::PutText(*vr_, TypeCode, TextVariant(FormatFixed(*number)), index);
}

bool CVariantVR::PutBytes(const Variant& value) {
  const VariantArray* const array = value.AsArray();
  if (array == nullptr || array->Bounds().size() != 1) return false;
  if (array->Type() != VariantType::kByte && array->Type() != VariantType::kSignedByte)
    return false;
  const std::span<const std::uint8_t> bytes = array->Bytes();
  return StoreValue(*vr_, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                    Padding::kToEven);
}

}  // namespace tessaret
