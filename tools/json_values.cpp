#include "json_values.h"

#include <algorithm>
#include <array>

#include "base/text.h"
#include "decoded_text.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

constexpr std::uint32_t kPortion = ValueBytes::kPortion;

std::string Base64(std::span<const std::uint8_t> bytes) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t count = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t bits = 0;
    for (std::size_t part = 0; part < 3; ++part) {
      bits = bits << 8 | (part < count ? bytes[at + part] : 0u);
    }
    for (std::size_t letter = 0; letter < 4; ++letter) {
      text += letter <= count ? kLetters[bits >> (18 - 6 * letter) & 0x3F] : '=';
    }
  }
  return text;
}

std::string_view WithoutBlanksAround(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

void WriteName(JsonWriter& json, std::string_view name) {
  constexpr std::array<std::string_view, 3> kGroups = {"Alphabetic", "Ideographic", "Phonetic"};
  json.BeginObject();
  for (const std::string_view group : kGroups) {
    const std::size_t end = group == kGroups.back() ? std::string_view::npos : name.find('=');
    if (!name.substr(0, end).empty()) json.Member(group, name.substr(0, end));
    if (end == std::string_view::npos) break;
    name.remove_prefix(end + 1);
  }
  json.EndObject();
}

/// A decimal number as JSON writes it, with the same digits: "+.5" as "0.5" and "007." as "7". Other text as it is.
std::string JsonNumber(std::string_view text) {
  const bool isNegative = text.starts_with('-');
  std::string_view digits = text;
  if (text.starts_with('+') || isNegative) digits.remove_prefix(1);
  if (digits.starts_with('-')) return std::string(text);
  while (digits.size() > 1 && digits[0] == '0' && digits[1] >= '0' && digits[1] <= '9')
    digits.remove_prefix(1);
  std::string number = isNegative ? "-" : "";
  const bool hasDigits = digits.substr(0, digits.find_first_of("eE")).find_first_of("0123456789") !=
                         std::string_view::npos;
  if (!hasDigits) return std::string(text);
  if (digits.starts_with('.')) number += '0';
  number += digits;
  const std::size_t point = number.find('.');
  const bool isBare =
      point != std::string::npos &&
      (point + 1 == number.size() || number[point + 1] == 'e' || number[point + 1] == 'E');
  if (isBare) number.erase(point, 1);
  return IsJsonNumber(number) ? number : std::string(text);
}

void WriteText(JsonWriter& json, VrCode type, std::string_view value, DecimalText decimals) {
  const bool number = type == type_code::DS || type == type_code::IS;
  const std::string_view bare = WithoutBlanksAround(value);
  if (bare.empty()) {
    json.Null();
  } else if (type == type_code::PN) {
    WriteName(json, value);
  } else if (const std::string text =
                 decimals == DecimalText::kByValue ? JsonNumber(bare) : std::string(bare);
             number && IsJsonNumber(text)) {
    json.Raw(text);
  } else {
    json.String(number ? bare : value);
  }
}

void WriteTexts(JsonWriter& json, VrCode type, std::string_view text, const CharacterSets& sets,
                DecimalText decimals, std::optional<std::size_t> only) {
  if (text.empty()) return;
  json.Key("Value").BeginArray();
  const bool hasSeveral = FindTraits(type)->severalValues;
  std::size_t index = 0;
  ForEachDecodedValue(sets, type, text, [&](std::string_view value) {
    if (only.value_or(index) != index++) return;
    if (!hasSeveral) {
      json.String(value);
    } else {
      WriteText(json, type, UnpaddedText(value), decimals);
    }
  });
  json.EndArray();
}

/// "7FE00010" of "(7fe0,0010)".
std::string JsonTagOf(const std::string& text) {
  std::string digits = text.substr(1, 4) + text.substr(6, 4);
  for (char& digit : digits) {
    if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
  }
  return digits;
}

/// Whether every reader of JSON gets the number that is meant. Infinities and what is not a number have no form in it, and many
/// readers hold every number as a double.
bool IsSafeNumber(VrCode type, const std::string& text) {
  const ValueKind kind = KindOf(type);
  if (kind == ValueKind::kTag || !IsJsonNumber(text)) return false;
  constexpr std::string_view kMost = "9007199254740991";  // 2^53 - 1
  const std::string_view digits = std::string_view(text).substr(text.starts_with('-') ? 1 : 0);
  return kind == ValueKind::kFloat || digits.size() < kMost.size() ||
         (digits.size() == kMost.size() && digits <= kMost);
}

void WriteNumbers(JsonWriter& json, VrCode type, ValueBytes& bytes, std::size_t count,
                  std::optional<std::size_t> only) {
  const bool tag = KindOf(type) == ValueKind::kTag;
  json.Key("Value").BeginArray();
  const std::size_t end = only ? std::min(count, *only + 1) : count;
  for (std::size_t index = only.value_or(0); index < end; ++index) {
    const std::string text = NumberText(type, bytes, index);
    if (IsSafeNumber(type, text)) {
      json.Raw(text);
    } else {
      // What is not a number has no sign that means anything.
      json.String(tag ? JsonTagOf(text) : text == "-nan" ? "nan" : text);
    }
  }
  json.EndArray();
}

}  // namespace

std::string JsonTag(TagKey tag) { return Format("%04X%04X", GroupOf(tag), ElementOf(tag)); }

bool WriteValues(JsonWriter& json, VrCode type, ValueBytes& bytes, const CharacterSets& sets,
                 DecimalText decimals, std::optional<std::size_t> only) {
  const ValueKind kind = KindOf(type);
  if (kind == ValueKind::kText || kind == ValueKind::kUid) {
    WriteTexts(json, type, UnpaddedText(bytes.Text()), sets, decimals, only);
    return true;
  }
  if (kind == ValueKind::kFloat && !FindTraits(type)->severalValues) return false;
  const auto count = NumberCount(type, bytes.Size());
  if (count && *count > 0) WriteNumbers(json, type, bytes, *count, only);
  return count.has_value();
}

InlineBinary::InlineBinary(JsonWriter& json) : json_(json) { json_.Key("InlineBinary").Raw("\""); }

void InlineBinary::Add(std::span<const std::uint8_t> bytes) {
  waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
  // What makes no whole group of three stays for the next part.
  const std::size_t whole = waiting_.size() / 3 * 3;
  if (whole < kPortion) return;
  json_.More(Base64(std::span(waiting_).first(whole)));
  waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(whole));
}

void InlineBinary::Add(ValueBytes& bytes) {
  for (std::uint32_t at = 0; at < bytes.Size();) {
    const std::uint32_t count = std::min(kPortion, bytes.Size() - at);
    Add({bytes.At(at, count), count});
    at += count;
  }
}

void InlineBinary::End() {
  json_.More(Base64(waiting_));
  json_.More("\"");
}

void WriteInlineBinary(JsonWriter& json, ValueBytes& bytes) {
  InlineBinary binary(json);
  binary.Add(bytes);
  binary.End();
}

}  // namespace tessaret::tool
