// Values of the public interface turned into one another. Whatever is turned has the type that was asked for, what fails leaves the
// value alone, whole numbers and texts that come back are what they were, and dates that are written are read again.
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "component/variant_conversion.h"
#include "tessaret/calendar.hpp"
#include "tessaret/variant.hpp"

namespace {

using namespace tessaret;

void Require(bool holds) {
  if (!holds) std::abort();
}

constexpr VariantType kTypes[] = {
    VariantType::kEmpty,  VariantType::kShort,      VariantType::kLong,   VariantType::kFloat,
    VariantType::kDouble, VariantType::kDate,       VariantType::kString, VariantType::kObject,
    VariantType::kBool,   VariantType::kSignedByte, VariantType::kByte,
};

/// The number that the first bytes are, in memory order.
template <class T>
T NumberIn(std::string_view bytes) {
  T number{};
  std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof(number)));
  return number;
}

Variant ValueOf(VariantType type, std::string_view bytes) {
  switch (type) {
    case VariantType::kEmpty:
      return {};
    case VariantType::kShort:
      return NumberIn<std::int16_t>(bytes);
    case VariantType::kLong:
      return NumberIn<std::int32_t>(bytes);
    case VariantType::kFloat:
      return NumberIn<float>(bytes);
    case VariantType::kDouble:
      return NumberIn<double>(bytes);
    case VariantType::kDate:
      return Date{NumberIn<double>(bytes)};
    case VariantType::kString:
      return String(bytes);
    case VariantType::kObject:
      return Variant(static_cast<IObject*>(nullptr));
    case VariantType::kBool:
      return VariantBool::Of(NumberIn<std::int16_t>(bytes));
    case VariantType::kSignedByte:
      return NumberIn<std::int8_t>(bytes);
    case VariantType::kByte:
      return NumberIn<std::uint8_t>(bytes);
  }
  return {};
}

/// The same value of the same type, bit by bit.
bool IsSame(const Variant& a, const Variant& b) {
  if (a.Tag() != b.Tag()) return false;
  const auto ofFloat = [](float x) { return std::bit_cast<std::uint32_t>(x); };
  const auto ofDouble = [](double x) { return std::bit_cast<std::uint64_t>(x); };
  return a.AsShort() == b.AsShort() && a.AsLong() == b.AsLong() &&
         ofFloat(a.AsFloat()) == ofFloat(b.AsFloat()) &&
         ofDouble(a.AsDouble()) == ofDouble(b.AsDouble()) &&
         ofDouble(a.AsDate().days) == ofDouble(b.AsDate().days) && a.AsString() == b.AsString() &&
         a.ToString().IsNull() == b.ToString().IsNull() && a.AsObject() == b.AsObject() &&
         a.AsBool() == b.AsBool() && a.AsByte() == b.AsByte() &&
         a.AsSignedByte() == b.AsSignedByte();
}

bool IsWhole(VariantType type) {
  return type == VariantType::kShort || type == VariantType::kLong ||
         type == VariantType::kSignedByte || type == VariantType::kByte;
}

/// A number that went to `to` and back is what it was.
void CheckTheWayBack(const Variant& value, const Variant& changed) {
  const bool exact = changed.Is(VariantType::kDouble) || changed.Is(VariantType::kString) ||
                     IsWhole(changed.Type());
  if (!IsWhole(value.Type()) || !exact) return;
  Variant back = changed;
  Require(back.ChangeType(value.Type()) == kOk);
  Require(IsSame(back, value));
}

/// The shortest form of a floating number reads back the same.
void CheckText(const Variant& value, const Variant& text) {
  const bool isFloat = value.Is(VariantType::kFloat) && std::isfinite(value.AsFloat());
  const bool isDouble = value.Is(VariantType::kDouble) && std::isfinite(value.AsDouble());
  if (!isFloat && !isDouble) return;
  Variant back = text;
  Require(back.ChangeType(value.Type()) == kOk);
  Require(isFloat ? back.AsFloat() == value.AsFloat() : back.AsDouble() == value.AsDouble());
}

void CheckDate(std::string_view text) {
  const auto date = ParseDate(text);
  if (!date) return;
  const auto again = ParseDate(DateText(*date));
  Require(again && std::abs(again->days - date->days) * 86400e3 < 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const VariantType from = kTypes[data[0] % std::size(kTypes)];
  const VariantType to = kTypes[data[1] % std::size(kTypes)];
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  const Variant value = ValueOf(from, bytes);
  Variant changed = value;
  const Status status = changed.ChangeType(to);
  if (Failed(status)) {
    Require(status == kTypeMismatch || status == kOverflow);
    Require(IsSame(changed, value));
  } else {
    Require(changed.Is(to));
    CheckTheWayBack(value, changed);
    if (to == VariantType::kString) CheckText(value, changed);
  }
  CheckDate(bytes);
  const String text(bytes);
  Require(text.Utf8() == bytes);
  const String narrow = String::FromNarrow(bytes);
  Require(narrow.Narrow() == bytes);
  return 0;
}
