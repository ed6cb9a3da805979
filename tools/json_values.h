// Values of elements in the DICOM JSON model (DICOM PS3.18, annex F).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "character_sets.h"
#include "json_writer.h"
#include "tag.h"
#include "type_code.h"
#include "value_bytes.h"

namespace tessaret::tool {

/// "7FE00010".
std::string JsonTag(TagKey tag);

/// What becomes of numbers of DS and IS that are written as JSON has none, "+1" or ".5".
enum class DecimalText {
  kAsWritten,  // they are texts
  kByValue,    // they are numbers with the same digits
};

/// Writes the member "Value" with the values that `bytes` of this type are, or with number `only` of them, text decoded by `sets`, or
/// nothing where there are none. Numbers of 64 bits that a double cannot tell from their neighbours are text. False, with nothing
/// written, for types of bytes, OD and OF among them, and for what is no whole number of numbers: that is for WriteInlineBinary.
bool WriteValues(JsonWriter& json, VrCode type, ValueBytes& bytes, const CharacterSets& sets,
                 DecimalText decimals = DecimalText::kByValue,
                 std::optional<std::size_t> only = std::nullopt);

/// The member "InlineBinary" of bytes that come one part behind the other.
class InlineBinary {
 public:
  explicit InlineBinary(JsonWriter& json);
  void Add(std::span<const std::uint8_t> bytes);
  void Add(ValueBytes& bytes);
  void End();

 private:
  JsonWriter& json_;
  std::vector<std::uint8_t> waiting_;
};

/// The member "InlineBinary", in portions.
void WriteInlineBinary(JsonWriter& json, ValueBytes& bytes);

}  // namespace tessaret::tool
