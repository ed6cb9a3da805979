// Text from outside made fit for a terminal or a report: nothing in it can move the cursor, change colours, break a line or
// turn round the order in which the rest is read.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace tessaret::tool {

/// One character of UTF-8.
struct Utf8Character {
  char32_t code = 0;
  std::size_t size = 0;  // in bytes; 0: the bytes are no UTF-8
};

/// The first character of `text`. Requires: `text` is not empty.
Utf8Character FirstCharacter(std::string_view text);

bool IsUtf8(std::string_view text);

/// "\x1b".
std::string HexEscape(char byte);

inline constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

/// `text` with each byte of a control character, and each byte that is no UTF-8, as "\x1b". Control characters are C0, DEL, C1,
/// and those that separate lines or change the direction of writing. What would take more than `most` columns is cut at
/// a whole character and ends in "..."; only as much of `text` is looked at as is needed for that.
std::string Escaped(std::string_view text, std::size_t most = kNoLimit);

/// How many columns a text without control characters takes, each character counting as one.
std::size_t Columns(std::string_view text);

}  // namespace tessaret::tool
