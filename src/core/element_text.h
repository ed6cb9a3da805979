// What a line of a trace and a line of an object's listing have in common: the type and the words for a tag, and the value of
// an element in a few characters. Everything here reads only what is there, whatever type and length an element claims.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/vr.h"

namespace tessaret {

class RTC;

/// What a dictionary knows of a tag.
struct TagWords {
  VrCode type = type_code::kNone;  // none for an unknown tag
  std::string description;
};

/// Asks `dictionary`; without one (null) every tag is UN and has no description.
TagWords LookUpTag(const RTC* dictionary, const VR& vr);

/// The type that `vr` is shown with: its own, or what the dictionary says where it has none.
inline VrCode ShownType(const VR& vr, const TagWords& words) {
  return vr.TypeCode == type_code::kNone ? words.type : vr.TypeCode;
}

/// The two letters, a dot for one that is not printable; "XX" for no type.
std::string TypeLetters(VrCode type);

/// How a value is shown.
enum class ValueForm {
  kEmpty,   // no bytes
  kText,    // characters
  kNumber,  // the first number
  kBytes,  // hexadecimal: all other types, and what is too short for the number that its type promises
};
ValueForm FormOfValue(const VR& vr, VrCode type);

inline constexpr std::string_view kEmptyValue = "(EMPTY)";

/// The first 126 characters of a text value as they are. The view lives as long as the value.
std::string_view FirstCharacters(const VR& vr);
/// `text` with a dot for each control character, so that it neither breaks the line nor steers a terminal. Bytes from 0x80
/// on may be letters of any character set and stay.
std::string WithoutControls(std::string_view text);
/// The first number of the value. Requires: FormOfValue is kNumber.
std::string NumberText(const VR& vr, VrCode type);
/// Up to 16 bytes in hexadecimal, each with a blank behind it, then the same as characters between bars.
std::string BytesText(const VR& vr);

/// Appends each byte as two hexadecimal digits and a blank.
void AppendHexadecimal(std::string& text, const std::uint8_t* bytes, std::size_t count);
/// Appends each byte as a character, a dot for one that is not printable.
void AppendCharacters(std::string& text, const std::uint8_t* bytes, std::size_t count);

}  // namespace tessaret
