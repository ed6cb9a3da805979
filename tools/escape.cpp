#include "escape.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace tessaret::tool {
namespace {

struct CodeRange {
  char32_t first;
  char32_t last;
};

constexpr CodeRange kControls[] = {
    {0x00, 0x1F},      // C0
    {0x7F, 0x9F},      // DEL and C1
    {0x2028, 0x202E},  // line and paragraph separators, embedding and overriding of the direction
    {0x2066, 0x2069},  // isolation of the direction
};

bool IsControl(char32_t code) {
  return std::any_of(std::begin(kControls), std::end(kControls), [code](const CodeRange& range) {
    return range.first <= code && code <= range.last;
  });
}

constexpr std::size_t kEscapeColumns = 4;
constexpr std::string_view kCut = "...";

/// The number of bytes that the lead byte promises; 0 for a byte that leads nothing.
std::size_t PromisedSize(std::uint8_t lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2 || lead > 0xF4) return 0;
  return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
}

}  // namespace

Utf8Character FirstCharacter(std::string_view text) {
  const auto lead = static_cast<std::uint8_t>(text[0]);
  const std::size_t size = PromisedSize(lead);
  if (size == 1) return {lead, 1};
  if (size == 0 || size > text.size()) return {};
  constexpr std::uint8_t kLeadBits[] = {0, 0, 0x1F, 0x0F, 0x07};
  auto code = static_cast<char32_t>(lead & kLeadBits[size]);
  for (std::size_t at = 1; at < size; ++at) {
    const auto byte = static_cast<std::uint8_t>(text[at]);
    if ((byte & 0xC0) != 0x80) return {};
    code = code << 6 | (byte & 0x3F);
  }
  constexpr char32_t kFirstOfSize[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kFirstOfSize[size] || code > 0x10FFFF || surrogate) return {};
  return {code, size};
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t size = FirstCharacter(text).size;
    if (size == 0) return false;
    text.remove_prefix(size);
  }
  return true;
}

std::string HexEscape(char byte) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto value = static_cast<std::uint8_t>(byte);
  return {'\\', 'x', kDigits[value >> 4], kDigits[value & 0xF]};
}

std::string Escaped(std::string_view text, std::size_t most) {
  std::string shown;
  std::size_t columns = 0;
  std::size_t cutAt = 0;  // how much of `shown` leaves room for the mark of a cut
  while (!text.empty()) {
    const Utf8Character next = FirstCharacter(text);
    const std::size_t size = std::max<std::size_t>(next.size, 1);
    const bool escaped = next.size == 0 || IsControl(next.code);
    columns += escaped ? size * kEscapeColumns : 1;
    if (columns > most) return shown.substr(0, cutAt).append(kCut);
    if (escaped) {
      for (const char byte : text.substr(0, size)) shown += HexEscape(byte);
    } else {
      shown += text.substr(0, size);
    }
    if (columns + kCut.size() <= most) cutAt = shown.size();
    text.remove_prefix(size);
  }
  return shown;
}

std::size_t Columns(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<std::uint8_t>(byte) & 0xC0) != 0x80;
  }));
}

}  // namespace tessaret::tool
