// Building and cutting of byte text. Nothing here looks at the process's locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessaret {

/// printf into a string. Not for floating point, whose point follows the locale: see FormatFixed.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

/// `value` with six digits behind a point, as "%f" gives in the C locale; "nan", "-nan", "inf" and "-inf" where due.
std::string FormatFixed(double value);

/// True for the bytes that a listing may show as they are: 0x20 to 0x7E.
constexpr bool IsPrintable(std::uint8_t byte) { return byte >= 0x20 && byte <= 0x7E; }

/// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// The value of a hexadecimal digit of either case, or -1.
constexpr int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// True when both are the same but for the case of ASCII letters.
bool IsSameIgnoringCase(std::string_view a, std::string_view b);

/// `text` without white space and NULs at either end.
std::string_view Trimmed(std::string_view text);

}  // namespace tessaret
