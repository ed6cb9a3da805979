#include "phantom_uids.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace tessaret::tool {
namespace {

using Words = std::array<std::uint32_t, 4>;  // the most significant first

/// FNV-1a with 64 bits, from a given start.
std::uint64_t Hash(std::string_view text, std::uint64_t hash) {
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 0x100000001B3;
  }
  // The last characters have reached the upper bits of a plain FNV hardly at all.
  hash ^= hash >> 32;
  hash *= 0xD6E8FEB86659FD93;
  return hash ^ hash >> 32;
}

Words UuidOf(std::string_view description) {
  const std::uint64_t high = Hash(description, 0xCBF29CE484222325);
  const std::uint64_t low = Hash(description, high);
  Words words = {static_cast<std::uint32_t>(high >> 32), static_cast<std::uint32_t>(high),
                 static_cast<std::uint32_t>(low >> 32), static_cast<std::uint32_t>(low)};
  words[1] =
      (words[1] & 0xFFFF0FFF) | 0x8000;  // version 8: made by a rule of its own (RFC 9562, 5.8)
  words[2] = (words[2] & 0x3FFFFFFF) | 0x80000000;  // variant
  return words;
}

/// Divides by ten in place; the remainder.
std::uint32_t DivideByTen(Words& words) {
  std::uint64_t remainder = 0;
  for (std::uint32_t& word : words) {
    const std::uint64_t part = remainder << 32 | word;
    word = static_cast<std::uint32_t>(part / 10);
    remainder = part % 10;
  }
  return static_cast<std::uint32_t>(remainder);
}

}  // namespace

std::string UidOf(std::string_view description) {
  Words words = UuidOf(description);
  std::string digits;
  while (std::any_of(words.begin(), words.end(), [](std::uint32_t word) { return word != 0; })) {
    digits += static_cast<char>('0' + DivideByTen(words));
  }
  std::reverse(digits.begin(), digits.end());
  return "2.25." + digits;
}

}  // namespace tessaret::tool
