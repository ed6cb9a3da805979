// Values as people read them in a listing.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "character_sets.h"
#include "core/vr.h"

namespace tessaret::tool {

/// The type by which the value of `vr` is shown: its own; LO for a private creator that came without one.
VrCode ShownType(const VR& vr);

/// How many values the element holds; 0 for none.
std::uint32_t Multiplicity(const VR& vr);

/// The text of the value without what pads it. Requires: the type is one of text.
std::string_view UnpaddedText(const VR& vr);

std::string_view UnpaddedText(std::string_view bytes);

/// How many numbers or tags `length` bytes of this type are; nothing for other kinds, and where they are no whole number of them.
std::optional<std::size_t> NumberCount(VrCode type, std::size_t length);

/// Number `index` of the value, in its shortest decimal form, or "(gggg,eeee)" for a tag.
/// Requires: index < NumberCount.
std::string NumberText(VrCode type, const std::uint8_t* bytes, std::size_t index);
std::string NumberText(const VR& vr, std::uint32_t index);

/// The value in at most about `most` columns: text in brackets, decoded by `sets`, numbers between backslashes, bytes in hexadecimal.
/// Requires: `vr` has no items.
std::string ShownValue(const VR& vr, std::size_t most, const CharacterSets& sets);

}  // namespace tessaret::tool
