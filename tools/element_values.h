// The values of an element one by one, as scripts take them and as they are given on the command line.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "character_sets.h"
#include "keywords.h"
#include "type_code.h"

namespace tessaret::tool {

/// Bytes in hexadecimal between backslashes.
std::string Hexadecimal(std::span<const std::uint8_t> bytes);

/// Calls `take` with each value of a text of this type, decoded and without blanks at its end; never for no bytes.
void ForEachText(VrCode type, std::string_view bytes, const CharacterSets& sets,
                 const std::function<void(std::string_view)>& take);

struct GivenValue {
  std::vector<std::uint8_t> bytes;
  std::string failure;  // why the text is no value of the type; empty where it is
};

/// The bytes of values as people write them, with backslashes between: text in UTF-8, numbers in decimal, tags also as keywords, bytes in
/// hexadecimal. Text has an even length. Dates and times may have their separators: 2001-02-03, 14:05:06.25, 2001-02-03 14:05. Nothing is cut or rounded off:
/// what does not fit the type is a failure.
GivenValue ValueFrom(VrCode type, std::string_view text, const CharacterSets& sets,
                     Keywords& keywords);

}  // namespace tessaret::tool
