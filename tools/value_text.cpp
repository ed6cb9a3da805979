#include "value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "base/byte_order.h"
#include "decoded_text.h"
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

constexpr NumberForm kNumberForms[] = {
    {ValueKind::kInteger, 2, &Decimal<std::int16_t>},
    {ValueKind::kInteger, 4, &Decimal<std::int32_t>},
    {ValueKind::kInteger, 8, &Decimal<std::int64_t>},
    {ValueKind::kUnsigned, 2, &Decimal<std::uint16_t>},
    {ValueKind::kUnsigned, 4, &Decimal<std::uint32_t>},
    {ValueKind::kUnsigned, 8, &Decimal<std::uint64_t>},
    {ValueKind::kFloat, 4, &Decimal<float>},
    {ValueKind::kFloat, 8, &Decimal<double>},
    {ValueKind::kTag, 4, &TagValue},
};

/// The form of the numbers of a type; null for other kinds of value.
const NumberForm* FormOf(VrCode type) {
  const VrTraits* traits = FindTraits(type);
  if (traits == nullptr || traits->width == 0) return nullptr;
  const auto* form =
      std::find_if(std::begin(kNumberForms), std::end(kNumberForms), [&](const NumberForm& each) {
        return each.kind == traits->kind && each.width == traits->width;
      });
  return form == std::end(kNumberForms) ? nullptr : form;
}

bool IsText(VrCode type) {
  const ValueKind kind = KindOf(type);
  return kind == ValueKind::kText || kind == ValueKind::kUid;
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

VrCode ShownType(TagKey tag, VrCode type) {
  const bool untyped = type == type_code::UN || type == type_code::kNone;
  return untyped && IsPrivateCreator(tag) ? type_code::LO : type;
}

std::string_view UnpaddedText(std::string_view text) {
  while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) text.remove_suffix(1);
  return text;
}

std::optional<std::size_t> NumberCount(VrCode type, std::size_t length) {
  const NumberForm* form = FormOf(type);
  if (form == nullptr || length % form->width != 0) return std::nullopt;
  return length / form->width;
}

std::string NumberText(VrCode type, const std::uint8_t* bytes, std::size_t index) {
  const NumberForm* form = FormOf(type);
  return form->text(bytes + index * form->width);
}

std::string NumberText(VrCode type, ValueBytes& bytes, std::size_t index) {
  const NumberForm* form = FormOf(type);
  return form->text(bytes.At(static_cast<std::uint32_t>(index) * form->width, form->width));
}

ValueBytes& ShownValue::Bytes() {
  if (!bytes_) bytes_.emplace(owner_.File(), element_.tag, element_.length);
  return *bytes_;
}

bool ShownValue::IsHere() {
  if (element_.hasValue) return true;
  const bool holdsBytes = element_.length != 0 && element_.type != type_code::SQ;
  return holdsBytes && Bytes().HasFirst();
}

std::string_view ShownValue::Text() { return UnpaddedText(Bytes().Text()); }

std::uint32_t ShownValue::Multiplicity() {
  if (element_.length == 0 && element_.items == 0) return 0;
  const VrTraits* traits = FindTraits(ShownType(element_));
  if (traits == nullptr || !traits->severalValues || !element_.hasValue) return 1;
  if (const auto count = NumberCount(element_.type, element_.length))
    return static_cast<std::uint32_t>(*count);
  if (!IsText(traits->type)) return 1;
  const std::string_view text = Bytes().Text();
  return static_cast<std::uint32_t>(std::count(text.begin(), text.end(), '\\')) + 1;
}

std::string ShownValue::Shown(std::size_t most, const CharacterSets& sets) {
  if (element_.length == 0) return "(no value available)";
  if (!IsHere()) return "(not loaded)";
  if (const VrCode type = ShownType(element_); IsText(type))
    return '[' + Escaped(DecodedText(sets, type, Text(), most), most) + ']';
  return Joined(Parts(), most, PartText());
}

std::uint32_t ShownValue::Parts() const {
  const auto count = NumberCount(element_.type, element_.length);
  return count ? static_cast<std::uint32_t>(*count) : element_.length;
}

std::function<std::string(std::uint32_t)> ShownValue::PartText() {
  if (NumberCount(element_.type, element_.length))
    return [this](std::uint32_t index) { return NumberText(element_.type, Bytes(), index); };
  return [this](std::uint32_t index) { return HexByte(*Bytes().At(index, 1)); };
}

std::size_t ShownValue::Show(Output& output, std::size_t most, const CharacterSets& sets) {
  const bool isInParts = element_.hasValue && !IsText(ShownType(element_));
  if (most != kNoLimit || !isInParts || element_.length == 0) {
    const std::string shown = Shown(most, sets);
    output.Write(shown);
    return Columns(shown);
  }
  std::size_t columns = 0;
  const auto text = PartText();
  for (std::uint32_t index = 0, count = Parts(); index < count; ++index) {
    const std::string part = (index == 0 ? "" : "\\") + text(index);
    output.Write(part);
    columns += part.size();
  }
  return columns;
}

}  // namespace tessaret::tool
