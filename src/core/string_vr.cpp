#include "core/string_vr.h"

#include <algorithm>

#include "base/text.h"
#include "component/variant_conversion.h"

namespace tessaret {
namespace {

constexpr char kSeparator = '\\';

bool IsPadding(char c) { return c == ' ' || c == '\0'; }

/// How many bytes stand before the padding at the end.
std::size_t UnpaddedSize(std::string_view text) {
  while (!text.empty() && IsPadding(text.back())) text.remove_suffix(1);
  return text.size();
}

std::string_view WithoutSpaceAtEnd(std::string_view text) {
  while (!text.empty() && (IsSpace(text.back()) || text.back() == '\0')) text.remove_suffix(1);
  return text;
}

std::string_view WithoutPaddingAtEnd(std::string_view text) {
  return text.substr(0, UnpaddedSize(text));
}

/// `old` with text number `index`, which it has, replaced by `text`.
std::string WithTextReplaced(std::string_view old, std::int32_t index, std::string_view text) {
  const std::string_view present = NthText(old, index).value_or(old.substr(old.size()));
  const auto begin = static_cast<std::size_t>(present.data() - old.data());
  std::string value;
  value.reserve(old.size() - present.size() + text.size());
  value += old.substr(0, begin);
  value += text;
  value += old.substr(begin + present.size());
  return value;
}

/// Cuts whole blocks from the front of `text` in which the separator number `wanted`, from 1, does not lie. How many separators went
/// with them. Hosts read the values of an element one by one, each from its beginning: counting in blocks makes the way to the last of
/// thousands some microseconds.
std::int32_t SkipBlocks(std::string_view& text, std::int32_t wanted) {
  constexpr std::size_t kBlock = 256;
  std::int32_t skipped = 0;
  while (text.size() > kBlock) {
    const auto block = text.substr(0, kBlock);
    const auto count =
        static_cast<std::int32_t>(std::count(block.begin(), block.end(), kSeparator));
    // No sum of the two: a value of 2 GiB has more separators than an index can say.
    if (count >= wanted - skipped) break;
    skipped += count;
    text.remove_prefix(kBlock);
  }
  return skipped;
}

/// `old`, then `separators` backslashes, then `text`.
std::string WithTextBehind(std::string_view old, std::uint64_t separators, std::string_view text) {
  std::string value;
  value.reserve(old.size() + separators + text.size());
  value += old;
  value.append(separators, kSeparator);
  value += text;
  return value;
}

/// The text that `value` stands for, with one byte a character, cut to `limit` unless that is 0.
std::optional<std::string> TextOf(const Variant& value, std::uint32_t limit) {
  Variant text;
  if (Failed(ConvertVariant(value, VariantType::kString, text))) return std::nullopt;
  std::string bytes = text.ToString().Narrow();
  if (limit != 0 && bytes.size() > limit) bytes.resize(limit);
  return bytes;
}

std::string WithoutDots(std::string_view text) {
  std::string kept(text);
  std::erase(kept, '.');
  return kept;
}

}  // namespace

std::uint64_t CountTexts(std::string_view text) {
  if (text.empty()) return 0;
  return 1 + static_cast<std::uint64_t>(std::count(text.begin(), text.end(), kSeparator));
}

std::optional<std::string_view> NthText(std::string_view text, std::int32_t index) {
  if (index < 0) return std::nullopt;
  index -= SkipBlocks(text, index);
  for (; index > 0; --index) {
    const std::size_t separator = text.find(kSeparator);
    if (separator == std::string_view::npos) return std::nullopt;
    text.remove_prefix(separator + 1);
  }
  return text.substr(0, text.find(kSeparator));
}

std::optional<std::string_view> NthTextUnpadded(std::string_view text, std::int32_t index) {
  const auto found = NthText(text, index);
  return found ? std::optional(WithoutPaddingAtEnd(*found)) : std::nullopt;
}

bool VR_XXMULTISTRING::PutText(VR& element, VrCode type, const Variant& value, std::int32_t index) {
  const VrProperties& properties = PropertiesOf(type);
  const bool isLone = properties.kind == ValueKind::kLoneText;
  if (isLone && index != 0) throw TypedValueError(kLoneTextWords);
  if (index < 0) return false;
  const auto text = TextOf(value, properties.limit);
  if (!text) return false;
  if (isLone) return StoreValue(element, *text);
  const std::string_view old = ValueText(element);
  const std::uint64_t count = CountTexts(old);
  const auto place = static_cast<std::uint32_t>(index);
  if (place < count) return StoreValue(element, WithTextReplaced(old, index, *text));
  if (count != 0) return StoreValue(element, WithTextBehind(WithoutSpaceAtEnd(old), 1, *text));
  return place <= kMostSkippedValues && StoreValue(element, WithTextBehind({}, place, *text));
}

void VR_XXSTRING::ToWire(std::uint32_t count, std::uint8_t* data) const {
  while (count > 0 && (data[count - 1] == ' ' || data[count - 1] == 0)) data[--count] = ' ';
}

void VR_XXSTRING::FromWire(std::uint32_t count, std::uint8_t* data) const {
  if (count == 0) return;
  const std::size_t kept = UnpaddedSize({reinterpret_cast<const char*>(data), count});
  const std::size_t end = std::max<std::size_t>(kept, 1);
  if (end < count) data[end] = 0;
}

bool VR_XXSTRING::GetValue(std::int32_t index, std::string& out) const {
  const std::string_view value = ValueText(Record());
  const auto found = value.empty() ? std::nullopt : NthText(value, index);
  if (!found) return false;
  std::string text(*found);
  FromWire(static_cast<std::uint32_t>(text.size()), reinterpret_cast<std::uint8_t*>(text.data()));
  text.resize(std::min(text.find('\0'), text.size()));
  out = std::move(text);
  return true;
}

bool VR_XXSTRING::PutValue(std::int32_t index, std::string_view in) {
  if (index < 0 || in.size() > kLongestValue) return false;
  const std::uint32_t width = ValueWidth();
  // A date may be longer than its width says, a range of dates is not.
  if (width != 0) in = in.substr(0, PropertiesOf(GetTypeCode()).limit);
  std::string block(in);
  block.resize(std::max<std::size_t>(block.size(), width), ' ');
  ToWire(static_cast<std::uint32_t>(block.size()), reinterpret_cast<std::uint8_t*>(block.data()));

  VR& vr = Record();
  const std::string_view old = ValueText(vr);
  const std::uint64_t count = CountTexts(old);
  const auto place = static_cast<std::uint32_t>(index);
  if (place < count) return StoreValue(vr, WithTextReplaced(old, index, block));
  if (place - count > kMostSkippedValues) return false;
  const std::uint64_t separators = count == 0 ? place : place - count + 1;
  return StoreValue(vr, WithTextBehind(WithoutPaddingAtEnd(old), separators, block));
}

bool VrDA::GetValue(std::int32_t index, std::string& out) const {
  std::string text;
  if (!VrOf::GetValue(index, text)) return false;
  out = text.size() == 8 ? std::move(text) : WithoutDots(text);
  return true;
}

bool VrDA::PutValue(std::int32_t index, std::string_view in) {
  return VrOf::PutValue(index, WithoutDots(in).substr(0, PropertiesOf(type_code::DA).limit));
}

void VrUI::ToWire(std::uint32_t count, std::uint8_t* data) const {
  while (count > 0 && (data[count - 1] == ' ' || data[count - 1] == 0)) data[--count] = 0;
}

}  // namespace tessaret
