// Values of elements in the DICOM JSON model (DICOM PS3.18, annex F).
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "character_sets.h"
#include "core/type_code.h"
#include "json_writer.h"

namespace tessaret::tool {

/// "7FE00010".
std::string JsonTag(std::uint16_t group, std::uint16_t element);

/// What becomes of numbers of DS and IS that are written as JSON has none, "+1" or ".5".
enum class DecimalText {
  kAsWritten,  // they are texts
  kByValue,    // they are numbers with the same digits
};

/// Writes the member "Value" with the values that `bytes` of this type are, text decoded by `sets`, or nothing where there are none.
/// False, with nothing written, for types of bytes and for what is no whole number of numbers: that is for WriteInlineBinary.
bool WriteValues(JsonWriter& json, VrCode type, std::span<const std::uint8_t> bytes,
                 const CharacterSets& sets, DecimalText decimals = DecimalText::kByValue);

/// The member "InlineBinary", in portions.
void WriteInlineBinary(JsonWriter& json, std::span<const std::uint8_t> bytes);

}  // namespace tessaret::tool
