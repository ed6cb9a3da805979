#include "component/variant_conversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "base/leading_number.h"
#include "base/text.h"
#include "tessaret/calendar.hpp"

namespace tessaret {
namespace {

/// A value on its way: every number, boolean and date is one of these, without loss.
struct Number {
  double value = 0;
  bool isDate = false;
  bool isBool = false;
};

bool EqualsIgnoringCase(std::string_view text, std::string_view lower) {
  return std::equal(text.begin(), text.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a - 'A' + 'a' : a) == b; });
}

/// ASCII text without blanks around it; nothing where other characters are in it, which no number has.
std::optional<std::string> PlainText(std::u16string_view units) {
  std::string text;
  text.reserve(units.size());
  for (const char16_t unit : units) {
    if (unit > 0x7E) return std::nullopt;
    text += static_cast<char>(unit);
  }
  return std::string(Trimmed(text));
}

std::optional<double> ParseNumber(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) return std::nullopt;
  // One too small for a double is 0, like one too small for a float. One too large is none, nor are the words for infinity.
  if (error == std::errc::result_out_of_range) value = LeadingDouble(text);
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<Number> NumberIn(std::u16string_view units, VariantType wanted) {
  const auto text = PlainText(units);
  if (!text) return std::nullopt;
  if (wanted == VariantType::kDate) {
    const auto date = ParseDate(*text);
    return date ? std::optional(Number{.value = date->days, .isDate = true}) : std::nullopt;
  }
  if (EqualsIgnoringCase(*text, "true")) return Number{.value = -1, .isBool = true};
  if (EqualsIgnoringCase(*text, "false")) return Number{.value = 0, .isBool = true};
  const auto value = ParseNumber(*text);
  return value ? std::optional(Number{.value = *value}) : std::nullopt;
}

std::optional<Number> NumberOf(const Variant& from, VariantType wanted) {
  if (from.IsArray()) return std::nullopt;
  switch (from.Type()) {
    case VariantType::kEmpty:
      return Number{};
    case VariantType::kShort:
      return Number{.value = static_cast<double>(from.AsShort())};
    case VariantType::kLong:
      return Number{.value = static_cast<double>(from.AsLong())};
    case VariantType::kFloat:
      return Number{.value = static_cast<double>(from.AsFloat())};
    case VariantType::kDouble:
      return Number{.value = from.AsDouble()};
    case VariantType::kDate:
      return Number{.value = from.AsDate().days, .isDate = true};
    case VariantType::kString:
      return NumberIn(from.AsString(), wanted);
    case VariantType::kBool:
      return Number{.value = static_cast<double>(from.AsBool().value), .isBool = true};
    case VariantType::kSignedByte:
      return Number{.value = static_cast<double>(from.AsSignedByte())};
    case VariantType::kByte:
      return Number{.value = static_cast<double>(from.AsByte())};
    case VariantType::kObject:
      break;
  }
  return std::nullopt;
}

/// Rounded as the interface promises, whatever the rounding mode of the process.
double RoundHalfToEven(double value) {
  const double below = std::floor(value);
  const double over = value - below;
  if (over < 0.5) return below;
  if (over > 0.5) return below + 1;
  return std::fmod(below, 2) == 0 ? below : below + 1;
}

template <class T>
Status ToWhole(double value, Variant& to) {
  const double rounded = RoundHalfToEven(value);
  constexpr double kLeast = std::numeric_limits<T>::min();
  constexpr double kMost = std::numeric_limits<T>::max();
  if (!(rounded >= kLeast && rounded <= kMost)) return kOverflow;
  to = Variant(static_cast<T>(rounded));
  return kOk;
}

/// From here on a number is nearer to what would be the next float than to the largest one.
constexpr double kTooLargeForFloat = 0x1.ffffffp127;

Status ToFloat(double value, Variant& to) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (std::isfinite(value) && std::fabs(value) >= kTooLargeForFloat) return kOverflow;
  if (std::isfinite(value)) value = std::clamp(value, -kLargest, kLargest);
  to = Variant(static_cast<float>(value));
  return kOk;
}

Status ToDateVariant(double days, Variant& to) {
  if (!ToCalendar({days})) return kOverflow;
  to = Variant(Date{days});
  return kOk;
}

template <class T>
std::string ShortestText(T value) {
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

String TextOf(const Variant& from) {
  switch (from.Type()) {
    case VariantType::kShort:
      return ShortestText(from.AsShort());
    case VariantType::kLong:
      return ShortestText(from.AsLong());
    case VariantType::kFloat:
      return ShortestText(from.AsFloat());
    case VariantType::kDouble:
      return ShortestText(from.AsDouble());
    case VariantType::kDate:
      return DateText(from.AsDate());
    case VariantType::kBool:
      return from.AsBool() ? "True" : "False";
    case VariantType::kSignedByte:
      return ShortestText(int{from.AsSignedByte()});
    case VariantType::kByte:
      return ShortestText(int{from.AsByte()});
    case VariantType::kEmpty:
    case VariantType::kString:
    case VariantType::kObject:
      break;
  }
  return "";
}

Status ConvertNumber(const Number& number, VariantType type, Variant& to) {
  switch (type) {
    case VariantType::kShort:
      return ToWhole<std::int16_t>(number.value, to);
    case VariantType::kLong:
      return ToWhole<std::int32_t>(number.value, to);
    case VariantType::kSignedByte:
      return ToWhole<std::int8_t>(number.value, to);
    case VariantType::kByte:
      // True is all ones, in any width.
      return number.isBool && number.value != 0 ? ToWhole<std::uint8_t>(255, to)
                                                : ToWhole<std::uint8_t>(number.value, to);
    case VariantType::kFloat:
      return ToFloat(number.value, to);
    case VariantType::kDouble:
      to = Variant(number.value);
      return kOk;
    case VariantType::kDate:
      return ToDateVariant(number.value, to);
    case VariantType::kBool:
      to = Variant(number.value != 0);
      return kOk;
    case VariantType::kEmpty:
    case VariantType::kString:
    case VariantType::kObject:
      break;
  }
  return kTypeMismatch;
}

/// Takes `count` digits, exactly; nothing where there are fewer.
std::optional<int> TakeDigits(std::string_view& text, std::size_t count) {
  if (text.size() < count) return std::nullopt;
  int value = 0;
  for (const char c : text.substr(0, count)) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  text.remove_prefix(count);
  return value;
}

bool TakeChar(std::string_view& text, char c) {
  if (!text.starts_with(c)) return false;
  text.remove_prefix(1);
  return true;
}

/// Year, month and day in one of the four forms.
bool TakeDay(std::string_view& text, Calendar& at) {
  const auto year = TakeDigits(text, 4);
  if (!year) return false;
  const char separator =
      text.starts_with('-') || text.starts_with('/') || text.starts_with('.') ? text[0] : '\0';
  if (separator != '\0') text.remove_prefix(1);
  const auto month = TakeDigits(text, 2);
  if (!month || (separator != '\0' && !TakeChar(text, separator))) return false;
  const auto day = TakeDigits(text, 2);
  if (!day) return false;
  at.year = *year;
  at.month = *month;
  at.day = *day;
  return true;
}

/// The digits behind the point, to the nearest millisecond below.
bool TakeFraction(std::string_view& text, Calendar& at) {
  int weight = 100;
  std::size_t digits = 0;
  for (; !text.empty() && text[0] >= '0' && text[0] <= '9'; text.remove_prefix(1), ++digits) {
    at.millisecond += (text[0] - '0') * weight;
    weight /= 10;
  }
  return digits > 0;
}

bool TakeTime(std::string_view& text, Calendar& at) {
  const auto hour = TakeDigits(text, 2);
  if (!hour || !TakeChar(text, ':')) return false;
  const auto minute = TakeDigits(text, 2);
  if (!minute) return false;
  at.hour = *hour;
  at.minute = *minute;
  if (!TakeChar(text, ':')) return true;
  const auto second = TakeDigits(text, 2);
  if (!second) return false;
  at.second = *second;
  return !TakeChar(text, '.') || TakeFraction(text, at);
}

}  // namespace

std::optional<Date> ParseDate(std::string_view text) {
  Calendar at;
  const bool isTimeAlone = text.size() > 2 && text[2] == ':';
  if (!isTimeAlone) {
    if (!TakeDay(text, at)) return std::nullopt;
    if (text.empty()) return ToDate(at);
    if (!TakeChar(text, ' ') && !TakeChar(text, 'T')) return std::nullopt;
  }
  if (!TakeTime(text, at) || !text.empty()) return std::nullopt;
  return ToDate(at);
}

std::string DateText(Date date) {
  const auto at = ToCalendar(date);
  if (!at) return ShortestText(date.days);
  std::string text = Format("%04d-%02d-%02d", at->year, at->month, at->day);
  if (at->hour + at->minute + at->second + at->millisecond == 0) return text;
  text += Format(" %02d:%02d:%02d", at->hour, at->minute, at->second);
  if (at->millisecond != 0) text += Format(".%03d", at->millisecond);
  return text;
}

Status ConvertVariant(const Variant& from, VariantType type, Variant& to) {
  if (from.Is(type)) {
    if (&from != &to) to = from;
    return kOk;
  }
  if (from.IsArray()) return kTypeMismatch;
  if (type == VariantType::kString) {
    if (from.Is(VariantType::kObject)) return kTypeMismatch;
    to = Variant(TextOf(from));
    return kOk;
  }
  const auto number = NumberOf(from, type);
  return number ? ConvertNumber(*number, type, to) : kTypeMismatch;
}

}  // namespace tessaret

std::int32_t tessaret_variant_change_type(void* variant, std::uint16_t type) {
  if (variant == nullptr) return tessaret::kPointer;
  auto& value = *static_cast<tessaret::Variant*>(variant);
  try {
    return tessaret::ConvertVariant(value, static_cast<tessaret::VariantType>(type), value);
  } catch (const std::bad_alloc&) {
    return tessaret::kOutOfMemory;
  }
}
