// Values as people read them in a listing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/vr.h"

namespace tessaret::tool {

/// The type by which the value of `vr` is shown: its own; LO for a private creator that came without one.
VrCode ShownType(const VR& vr);

/// How many values the element holds; 0 for none.
std::uint32_t Multiplicity(const VR& vr);

/// The text of the value without what pads it. Requires: the type is one of text.
std::string_view UnpaddedText(const VR& vr);

/// Number `index` of the value, in its shortest decimal form, or "(gggg,eeee)" for a tag.
/// Requires: the kind of the type is a number or a tag, and index < Length / NumberWidth.
std::string NumberText(const VR& vr, std::uint32_t index);

/// The value in at most about `most` columns: text in brackets, numbers between backslashes, bytes in hexadecimal. Requires:
/// `vr` has no items.
std::string ShownValue(const VR& vr, std::size_t most);

}  // namespace tessaret::tool
