#include "core/element_text.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/byte_order.h"
#include "base/text.h"
#include "core/rtc.h"

namespace tessaret {
namespace {

constexpr std::size_t kMostCharacters = 126;
constexpr std::size_t kMostBytes = 16;

constexpr VrCode kTextTypes[] = {
    type_code::UI, type_code::UT, type_code::ST, type_code::SH, type_code::PN,
    type_code::TM, type_code::LT, type_code::IS, type_code::LO, type_code::DA,
    type_code::DS, type_code::DT, type_code::AE, type_code::CS,
};

std::string UnsignedLongText(const std::uint8_t* value) {
  const unsigned long number = LoadLittle32(value);
  return Format("%lu,0x%lX", number, number);
}

std::string UnsignedShortText(const std::uint8_t* value) {
  const unsigned number = LoadLittle16(value);
  return Format("%d,0x%X", static_cast<int>(number), number);
}

std::string SignedLongText(const std::uint8_t* value) {
  return Format("%ld", static_cast<long>(static_cast<std::int32_t>(LoadLittle32(value))));
}

std::string SignedShortText(const std::uint8_t* value) {
  return Format("%d", static_cast<std::int16_t>(LoadLittle16(value)));
}

std::string FloatText(const std::uint8_t* value) {
  float number;
  std::memcpy(&number, value, sizeof number);
  return FormatFixed(static_cast<double>(number));
}

// The letter l behind the number is meant: readers of these traces know it.
std::string DoubleText(const std::uint8_t* value) {
  double number;
  std::memcpy(&number, value, sizeof number);
  return FormatFixed(number) + 'l';
}

struct NumberType {
  VrCode type;
  std::uint32_t width;  // bytes of one number
  std::string (*text)(const std::uint8_t* value);
};

constexpr NumberType kNumberTypes[] = {
    {type_code::UL, 4, UnsignedLongText}, {type_code::US, 2, UnsignedShortText},
    {type_code::SL, 4, SignedLongText},   {type_code::SS, 2, SignedShortText},
    {type_code::FL, 4, FloatText},        {type_code::OF, 4, FloatText},
    {type_code::FD, 8, DoubleText},
};

const NumberType* FindNumberType(VrCode type) {
  const auto* row = std::find_if(std::begin(kNumberTypes), std::end(kNumberTypes),
                                 [type](const NumberType& each) { return each.type == type; });
  return row == std::end(kNumberTypes) ? nullptr : row;
}

bool IsTextType(VrCode type) {
  return std::find(std::begin(kTextTypes), std::end(kTextTypes), type) != std::end(kTextTypes);
}

char Shown(std::uint8_t byte) { return IsPrintable(byte) ? static_cast<char>(byte) : '.'; }

}  // namespace

TagWords LookUpTag(const RTC* dictionary, const VR& vr) {
  if (dictionary == nullptr) return {type_code::UN, {}};
  std::array<char, kDescriptionBuffer> description{};
  const VrCode type = dictionary->RunTimeClass(vr.Group, vr.Element, description.data());
  return {type, description.data()};
}

std::string TypeLetters(VrCode type) {
  if (type == type_code::kNone) return "XX";
  return {Shown(static_cast<std::uint8_t>(FirstLetter(type))),
          Shown(static_cast<std::uint8_t>(SecondLetter(type)))};
}

ValueForm FormOfValue(const VR& vr, VrCode type) {
  if (vr.FirstBytes().empty()) return ValueForm::kEmpty;
  if (IsTextType(type)) return ValueForm::kText;
  const NumberType* number = FindNumberType(type);
  return number != nullptr && vr.Length >= number->width ? ValueForm::kNumber : ValueForm::kBytes;
}

std::string_view FirstCharacters(const VR& vr) {
  const auto bytes = vr.FirstBytes();
  return {reinterpret_cast<const char*>(bytes.data()), std::min(bytes.size(), kMostCharacters)};
}

std::string WithoutControls(std::string_view text) {
  std::string shown(text);
  std::replace_if(
      shown.begin(), shown.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '.');
  return shown;
}

std::string NumberText(const VR& vr, VrCode type) {
  return FindNumberType(type)->text(vr.FirstBytes().data());
}

std::string BytesText(const VR& vr) {
  const auto bytes = vr.FirstBytes();
  const std::size_t count = std::min(bytes.size(), kMostBytes);
  std::string text;
  AppendHexadecimal(text, bytes.data(), count);
  text += '|';
  AppendCharacters(text, bytes.data(), count);
  text += '|';
  return text;
}

void AppendHexadecimal(std::string& text, const std::uint8_t* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (std::size_t at = 0; at < count; ++at) {
    text += kDigits[bytes[at] >> 4];
    text += kDigits[bytes[at] & 0xF];
    text += ' ';
  }
}

void AppendCharacters(std::string& text, const std::uint8_t* bytes, std::size_t count) {
  for (std::size_t at = 0; at < count; ++at) text += Shown(bytes[at]);
}

}  // namespace tessaret
