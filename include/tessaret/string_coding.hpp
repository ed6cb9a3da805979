/// How String goes to and from its narrow forms. Included by tessaret/string.hpp.
#pragma once

#include "tessaret/string.hpp"

namespace tessaret {
namespace coding {

/// Added to a byte that is part of no UTF-8 character: a low surrogate that follows no high one.
inline constexpr char16_t kStrayByte = 0xDC00;
inline constexpr char16_t kFirstStrayUnit = 0xDC80;
inline constexpr char16_t kLastStrayUnit = 0xDCFF;
inline constexpr char32_t kReplacement = 0xFFFD;

/// One character of a text, and how many bytes or units of it that takes.
struct Character {
  char32_t code = 0;
  std::size_t size = 0;
};

constexpr bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// The character at the start of `text`, which is not empty (RFC 3629). Size 0 where its first byte begins none: a stray
/// byte, one that is cut short, a longer form than needed, a surrogate, beyond U+10FFFF.
constexpr Character FirstOfUtf8(std::string_view text) {
  const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const char32_t lead = byteAt(0);
  if (lead < 0x80) return {lead, 1};
  const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < size) return {};
  char32_t code = lead & (0x7Fu >> size);
  for (std::size_t at = 1; at < size; ++at) {
    if ((byteAt(at) & 0xC0) != 0x80) return {};
    code = code << 6 | (byteAt(at) & 0x3Fu);
  }
  constexpr char32_t kFirstOfSize[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kFirstOfSize[size] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return {};
  return {code, size};
}

/// The character at the start of `units`, which is not empty. A surrogate without its other half is itself.
constexpr Character FirstOfUnits(std::u16string_view units) {
  const char32_t first = units[0];
  if (!IsHighSurrogate(first) || units.size() < 2 || !IsLowSurrogate(units[1])) return {first, 1};
  return {0x10000 + ((first - 0xD800) << 10) + (units[1] - 0xDC00u), 2};
}

constexpr bool IsStrayByte(char32_t code) {
  return code >= kFirstStrayUnit && code <= kLastStrayUnit;
}

inline void AppendUtf8(std::string& to, char32_t code) {
  if (code < 0x80) {
    to += static_cast<char>(code);
  } else if (code < 0x800) {
    to += {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
  } else if (code < 0x10000) {
    to += {static_cast<char>(0xE0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3F)),
           static_cast<char>(0x80 | (code & 0x3F))};
  } else {
    to += {static_cast<char>(0xF0 | code >> 18), static_cast<char>(0x80 | (code >> 12 & 0x3F)),
           static_cast<char>(0x80 | (code >> 6 & 0x3F)), static_cast<char>(0x80 | (code & 0x3F))};
  }
}

}  // namespace coding

inline String String::FromUtf8(std::string_view utf8) {
  String made;
  // A character never takes more units than bytes.
  std::u16string units;
  units.reserve(utf8.size());
  while (!utf8.empty()) {
    const coding::Character next = coding::FirstOfUtf8(utf8);
    if (next.size == 0) {
      units += static_cast<char16_t>(coding::kStrayByte + static_cast<unsigned char>(utf8[0]));
      utf8.remove_prefix(1);
      continue;
    }
    if (next.code < 0x10000) {
      units += static_cast<char16_t>(next.code);
    } else {
      units += static_cast<char16_t>(0xD800 + ((next.code - 0x10000) >> 10));
      units += static_cast<char16_t>(0xDC00 + ((next.code - 0x10000) & 0x3FF));
    }
    utf8.remove_prefix(next.size);
  }
  made.Assign(units);
  return made;
}

inline std::string String::Narrow() const {
  std::string bytes;
  bytes.reserve(Length());
  for (std::u16string_view rest = View(); !rest.empty();) {
    const coding::Character next = coding::FirstOfUnits(rest);
    const bool isByte = next.code <= 0xFF || coding::IsStrayByte(next.code);
    bytes += isByte ? static_cast<char>(next.code & 0xFF) : '?';
    rest.remove_prefix(next.size);
  }
  return bytes;
}

inline std::string String::Utf8() const {
  std::string bytes;
  bytes.reserve(Length());
  for (std::u16string_view rest = View(); !rest.empty();) {
    const coding::Character next = coding::FirstOfUnits(rest);
    if (coding::IsStrayByte(next.code)) {
      bytes += static_cast<char>(next.code & 0xFF);
    } else {
      const bool isHalf = next.code >= 0xD800 && next.code <= 0xDFFF;
      coding::AppendUtf8(bytes, isHalf ? coding::kReplacement : next.code);
    }
    rest.remove_prefix(next.size);
  }
  return bytes;
}

}  // namespace tessaret
