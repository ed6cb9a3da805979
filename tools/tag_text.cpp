#include "tag_text.h"

#include "base/text.h"

namespace tessaret::tool {

std::string TagText(std::uint16_t group, std::uint16_t element) {
  // Every line of a listing begins with one.
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "(0000,0000)";
  for (std::size_t at = 0; at < 4; ++at) {
    const std::size_t shift = 12 - 4 * at;
    text[1 + at] = kDigits[group >> shift & 0xF];
    text[6 + at] = kDigits[element >> shift & 0xF];
  }
  return text;
}

std::optional<TagKey> ParseTag(std::string_view text) {
  constexpr std::size_t kDigits = 8;
  constexpr std::size_t kComma = 4;
  if (text.starts_with('(') && text.ends_with(')')) {
    text = text.substr(1, text.size() - 2);
    if (text.size() != kDigits + 1) return std::nullopt;
  }
  std::string digits(text);
  if (digits.size() == kDigits + 1 && digits[kComma] == ',') digits.erase(kComma, 1);
  if (digits.size() != kDigits) return std::nullopt;
  TagKey tag = 0;
  for (const char digit : digits) {
    const int value = HexDigit(digit);
    if (value < 0) return std::nullopt;
    tag = tag << 4 | static_cast<TagKey>(value);
  }
  return tag;
}

}  // namespace tessaret::tool
