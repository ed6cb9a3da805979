#include "element_values.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "base/byte_order.h"
#include "base/text.h"
#include "decoded_text.h"
#include "tag_path.h"
#include "time_values.h"
#include "uid.h"
#include "value_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

bool IsText(VrCode type) {
  return KindOf(type) == ValueKind::kText || KindOf(type) == ValueKind::kUid;
}

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

GivenValue Failure(std::string words) { return {{}, std::move(words)}; }

std::vector<std::string_view> Parts(std::string_view text) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = text.find('\\');
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

template <class Number>
bool ParseAll(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

template <class Number>
void Append(std::vector<std::uint8_t>& to, Number number) {
  std::uint8_t bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  to.insert(to.end(), bytes, bytes + sizeof number);
}

/// False for what is no number of this type.
template <class Number>
bool AppendNumber(std::vector<std::uint8_t>& to, std::string_view text) {
  Number number{};
  if (!ParseAll(text, number)) return false;
  Append(to, number);
  return true;
}

struct NumberRow {
  VrCode type;
  bool (*append)(std::vector<std::uint8_t>& to, std::string_view text);
  const char* words;
};

constexpr NumberRow kNumbers[] = {
    {type_code::US, &AppendNumber<std::uint16_t>, "a whole number from 0 to 65535"},
    {type_code::SS, &AppendNumber<std::int16_t>, "a whole number from -32768 to 32767"},
    {type_code::UL, &AppendNumber<std::uint32_t>, "a whole number from 0 to 4294967295"},
    {type_code::SL, &AppendNumber<std::int32_t>, "a whole number from -2147483648 to 2147483647"},
    {MakeTypeCode('U', 'V'), &AppendNumber<std::uint64_t>, "a whole number of 64 bits from 0"},
    {MakeTypeCode('S', 'V'), &AppendNumber<std::int64_t>, "a whole number of 64 bits"},
    {type_code::FL, &AppendNumber<float>, "a number"},
    {type_code::OF, &AppendNumber<float>, "a number"},
    {type_code::FD, &AppendNumber<double>, "a number"},
    {MakeTypeCode('O', 'D'), &AppendNumber<double>, "a number"},
};

GivenValue NumbersFrom(const NumberRow& row, std::string_view text) {
  GivenValue given;
  for (const std::string_view part : Parts(text)) {
    if (!row.append(given.bytes, part)) return Failure(Quoted(part) + " is not " + row.words);
  }
  return given;
}

GivenValue TagsFrom(std::string_view text, Keywords& keywords) {
  GivenValue given;
  for (const std::string_view part : Parts(text)) {
    const TagPath path = ParseTagPath(part, keywords);
    if (!path.failure.empty()) return Failure(path.failure);
    if (path.steps.size() != 1) return Failure(Quoted(part) + " is not one tag");
    Append(given.bytes, GroupOf(path.Tag()));
    Append(given.bytes, ElementOf(path.Tag()));
  }
  return given;
}

GivenValue BytesFrom(std::string_view text) {
  GivenValue given;
  for (const std::string_view part : Parts(text)) {
    if (part.size() % 2 != 0 || part.empty())
      return Failure(Quoted(part) + " is not bytes of two hexadecimal digits");
    for (std::size_t at = 0; at < part.size(); at += 2) {
      const int high = HexDigit(part[at]);
      const int low = HexDigit(part[at + 1]);
      if (high < 0 || low < 0) return Failure(Quoted(part) + " is not bytes in hexadecimal digits");
      given.bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
  }
  return given;
}

bool IsWholeNumber(std::string_view text) {
  std::int32_t number = 0;
  return ParseAll(text.starts_with('+') ? text.substr(1) : text, number) && !text.starts_with("+-");
}

bool IsDecimal(std::string_view text) {
  double number = 0;
  return ParseAll(text.starts_with('+') ? text.substr(1) : text, number) &&
         text.find_first_not_of("+-.0123456789eE") == std::string_view::npos &&
         !text.starts_with("+-");
}

bool IsAge(std::string_view text) {
  return text.size() == 4 &&
         text.substr(0, 3).find_first_not_of("0123456789") == std::string_view::npos &&
         std::string_view("DWMY").find(text[3]) != std::string_view::npos;
}

std::string WithoutChange(std::string_view text, bool (*isOne)(std::string_view)) {
  return isOne(text) ? std::string(text) : std::string();
}

struct FormRow {
  VrCode type;
  /// The value as it is stored; empty for what is none.
  std::string (*store)(std::string_view text);
  const char* words;
};

constexpr FormRow kForms[] = {
    {type_code::AS, [](std::string_view text) { return WithoutChange(text, &IsAge); },
     "an age: 3 digits and D, W, M or Y"},
    {type_code::DA, &DateValue, "a date: YYYYMMDD or YYYY-MM-DD"},
    {type_code::DS, [](std::string_view text) { return WithoutChange(text, &IsDecimal); },
     "a decimal number"},
    {type_code::DT, &DateTimeValue,
     "a date and time: YYYYMMDDHHMMSS.FFFFFF or YYYY-MM-DD HH:MM:SS"},
    {type_code::IS, [](std::string_view text) { return WithoutChange(text, &IsWholeNumber); },
     "a whole number from -2147483648 to 2147483647"},
    {type_code::TM, &TimeValue, "a time: HHMMSS.FFFFFF or HH:MM:SS"},
    {type_code::UI, [](std::string_view text) { return WithoutChange(text, &IsUid); },
     "a UID: numbers without leading zeros, with points between"},
};

/// Lines and their like stand in running text only (DICOM PS3.5, 6.1.3); escape sequences are not made.
bool IsControlOutOfPlace(VrCode type, char c) {
  const bool isRunningText =
      type == type_code::LT || type == type_code::ST || type == type_code::UT;
  if (isRunningText && std::string_view("\t\n\f\r").find(c) != std::string_view::npos) return false;
  return (c >= '\0' && c < ' ') || c == '\x7F';
}

/// The longest of what `text` has between `delimiter`, in characters.
std::size_t LongestPart(std::string_view text, char delimiter) {
  std::size_t longest = 0;
  for (;;) {
    const std::size_t end = text.find(delimiter);
    longest = std::max(longest, Columns(text.substr(0, end)));
    if (end == std::string_view::npos) return longest;
    text.remove_prefix(end + 1);
  }
}

/// One value of a text as it is stored, in UTF-8; `failure` says why it is none.
std::string StoredText(VrCode type, std::string_view value, std::string& failure) {
  if (value.empty()) return {};
  std::string stored(value);
  const auto* form = std::find_if(std::begin(kForms), std::end(kForms),
                                  [&](const FormRow& row) { return row.type == type; });
  if (form != std::end(kForms)) {
    stored = form->store(value);
    if (stored.empty()) failure = Quoted(value) + " is not " + form->words;
  }
  if (failure.empty() &&
      std::ranges::any_of(stored, [&](char c) { return IsControlOutOfPlace(type, c); }))
    failure = Quoted(value) + " has control characters, which this type does not take";
  if (failure.empty() && type == type_code::CS &&
      std::ranges::any_of(stored, [](char c) { return c >= 'a' && c <= 'z'; }))
    failure = Quoted(value) + " has small letters, which this type does not take";
  if (failure.empty() && type == type_code::PN && std::ranges::count(stored, '=') > 2)
    failure = Quoted(value) + " has more than the three forms of a name";
  const VrTraits& traits = *FindTraits(type);
  const std::size_t length = LongestPart(stored, type == type_code::PN ? '=' : '\0');
  if (failure.empty() && traits.most != 0 && length > traits.most) {
    failure = Format("%zu characters are more than the %u of %c%c", length, unsigned{traits.most},
                     FirstLetter(type), SecondLetter(type));
  }
  return stored;
}

GivenValue TextFrom(VrCode type, std::string_view text, const CharacterSets& sets) {
  const bool hasSeveral = FindTraits(type)->severalValues;
  std::string stored;
  for (const std::string_view value : hasSeveral ? Parts(text) : std::vector{text}) {
    GivenValue given;
    stored += StoredText(type, value, given.failure) + '\\';
    if (!given.failure.empty()) return given;
  }
  stored.pop_back();
  const auto bytes = EncodedText(sets, type, stored);
  if (!bytes) {
    return Failure(IsInCharacterSet(type)
                       ? Quoted(text) + " cannot be written in the character set of (0008,0005)"
                       : Quoted(text) + " has characters that this type does not take");
  }
  GivenValue given{{bytes->begin(), bytes->end()}, {}};
  // Texts are filled with a blank, where the writers would take a NUL (DICOM PS3.5, 6.2).
  if (given.bytes.size() % 2 != 0) given.bytes.push_back(type == type_code::UI ? '\0' : ' ');
  return given;
}

}  // namespace

std::string Hexadecimal(std::span<const std::uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(3 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += '\\';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

void ForEachText(VrCode type, std::string_view bytes, const CharacterSets& sets,
                 const std::function<void(std::string_view)>& take) {
  if (bytes.empty()) return;
  ForEachDecodedValue(sets, type, UnpaddedText(bytes),
                      [&](std::string_view value) { take(UnpaddedText(value)); });
}

GivenValue ValueFrom(VrCode type, std::string_view text, const CharacterSets& sets,
                     Keywords& keywords) {
  if (text.empty()) return {};
  if (IsText(type)) return TextFrom(type, text, sets);
  if (KindOf(type) == ValueKind::kTag) return TagsFrom(text, keywords);
  if (type == type_code::SQ)
    return Failure("a sequence takes no value: name an element of an item");
  const auto* row = std::find_if(std::begin(kNumbers), std::end(kNumbers),
                                 [&](const NumberRow& each) { return each.type == type; });
  return row != std::end(kNumbers) ? NumbersFrom(*row, text) : BytesFrom(text);
}

}  // namespace tessaret::tool
