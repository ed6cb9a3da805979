#include "value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "base/byte_order.h"
#include "core/tag.h"
#include "core/value_order.h"
#include "escape.h"
#include "tag_text.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

template <class T>
T Load(const std::uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

template <class T>
std::string Decimal(const std::uint8_t* bytes) {
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), Load<T>(bytes)).ptr;
  return {text.data(), end};
}

std::string TagValue(const std::uint8_t* bytes) {
  return TagText(LoadLittle16(bytes), LoadLittle16(bytes + 2));
}

struct NumberForm {
  ValueKind kind;
  std::uint32_t width;
  std::string (*text)(const std::uint8_t* bytes);
};

constexpr std::uint32_t kTagWidth = 4;

constexpr NumberForm kNumberForms[] = {
    {ValueKind::kInteger, 2, &Decimal<std::int16_t>},
    {ValueKind::kInteger, 4, &Decimal<std::int32_t>},
    {ValueKind::kInteger, 8, &Decimal<std::int64_t>},
    {ValueKind::kUnsigned, 2, &Decimal<std::uint16_t>},
    {ValueKind::kUnsigned, 4, &Decimal<std::uint32_t>},
    {ValueKind::kUnsigned, 8, &Decimal<std::uint64_t>},
    {ValueKind::kFloat, 4, &Decimal<float>},
    {ValueKind::kFloat, 8, &Decimal<double>},
    {ValueKind::kTag, kTagWidth, &TagValue},
};

/// The form of the numbers of `vr`; null for other kinds of value, and for one that is no whole number of them.
const NumberForm* FormOf(const VR& vr) {
  const ValueKind kind = KindOf(vr.TypeCode);
  const std::uint32_t width = kind == ValueKind::kTag ? kTagWidth : NumberWidth(vr.TypeCode);
  const auto* form = std::find_if(
      std::begin(kNumberForms), std::end(kNumberForms),
      [&](const NumberForm& each) { return each.kind == kind && each.width == width; });
  return form == std::end(kNumberForms) || vr.Length % width != 0 ? nullptr : form;
}

bool IsText(VrCode type) {
  const ValueKind kind = KindOf(type);
  return kind == ValueKind::kText || kind == ValueKind::kUid;
}

bool IsPrivateCreator(const VR& vr) {
  return vr.Group % 2 == 1 && vr.Element >= 0x0010 && vr.Element <= 0x00FF;
}

constexpr std::string_view kCut = "...";

/// Joins what `text(index)` gives with backslashes, cut at `most` columns.
template <class Text>
std::string Joined(std::uint32_t count, std::size_t most, Text text) {
  std::string joined;
  for (std::uint32_t index = 0; index < count; ++index) {
    std::string next = index == 0 ? "" : "\\";
    next += text(index);
    const std::size_t reserve = index + 1 < count ? kCut.size() + 1 : 0;
    if (joined.size() + next.size() + reserve > most && index > 0)
      return joined.append("\\").append(kCut);
    joined += next;
  }
  return joined;
}

std::string HexByte(std::uint8_t byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  return {kDigits[byte >> 4], kDigits[byte & 0xF]};
}

}  // namespace

VrCode ShownType(const VR& vr) {
  const bool untyped = vr.TypeCode == type_code::UN || vr.TypeCode == type_code::kNone;
  return untyped && IsPrivateCreator(vr) ? type_code::LO : vr.TypeCode;
}

std::string_view UnpaddedText(const VR& vr) {
  if (vr.Data == nullptr) return {};
  std::string_view text(reinterpret_cast<const char*>(vr.Data), vr.Length);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  return text;
}

std::uint32_t Multiplicity(const VR& vr) {
  if (vr.Length == 0 && vr.Items == nullptr) return 0;
  const VrTraits* traits = FindTraits(ShownType(vr));
  if (traits == nullptr || !traits->severalValues || vr.Data == nullptr) return 1;
  if (const NumberForm* form = FormOf(vr); form != nullptr) return vr.Length / form->width;
  if (!IsText(traits->type)) return 1;
  const std::string_view text(reinterpret_cast<const char*>(vr.Data), vr.Length);
  return static_cast<std::uint32_t>(std::count(text.begin(), text.end(), '\\')) + 1;
}

std::string NumberText(const VR& vr, std::uint32_t index) {
  const NumberForm* form = FormOf(vr);
  return form->text(vr.Data + std::size_t{index} * form->width);
}

std::string ShownValue(const VR& vr, std::size_t most) {
  if (vr.Length == 0) return "(no value available)";
  if (vr.Data == nullptr) return "(not loaded)";
  if (IsText(ShownType(vr))) return '[' + Escaped(UnpaddedText(vr), most) + ']';
  if (const NumberForm* form = FormOf(vr); form != nullptr) {
    return Joined(vr.Length / form->width, most,
                  [&](std::uint32_t index) { return NumberText(vr, index); });
  }
  return Joined(vr.Length, most, [&](std::uint32_t index) { return HexByte(vr.Data[index]); });
}

}  // namespace tessaret::tool
