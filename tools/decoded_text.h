// Text of data elements as UTF-8, by the character sets of its data set.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "character_sets.h"
#include "escape.h"
#include "type_code.h"

namespace tessaret::tool {

/// Whether (0008,0005) counts for texts of this type.
bool IsInCharacterSet(VrCode type);

/// The values of a text of this type as UTF-8, between its backslashes where the type has several values. A byte that is part of no
/// character is there as "\x9f". Escape sequences that are understood are gone; what they switch ends with the value, with a line and
/// any other control character, and in a PN with "^" and "=".
/// A type that (0008,0005) does not count for, and text for which no set is named, come with their bytes as they are.
/// A little more than `most` characters is enough: what comes behind may be left out.
std::vector<std::string> DecodedValues(const CharacterSets& sets, VrCode type,
                                       std::string_view bytes, std::size_t most = kNoLimit);

/// Calls `take` with one of them after the other: all at once take many times the room of their bytes.
void ForEachDecodedValue(const CharacterSets& sets, VrCode type, std::string_view bytes,
                         const std::function<void(std::string_view)>& take,
                         std::size_t most = kNoLimit);

/// The same with backslashes between them.
std::string DecodedText(const CharacterSets& sets, VrCode type, std::string_view bytes,
                        std::size_t most = kNoLimit);

/// `text`, UTF-8, in the sets that count at the start of a value. Nothing where it cannot be written so: escape sequences are not made.
std::optional<std::string> EncodedText(const CharacterSets& sets, VrCode type,
                                       std::string_view text);

}  // namespace tessaret::tool
