// What the verbs need to know of each value representation (DICOM PS3.5, 6.2).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "type_code.h"

namespace tessaret::tool {

enum class ValueKind {
  kText,
  kUid,
  kInteger,
  kUnsigned,
  kFloat,
  kTag,
  kBytes,
  kSequence,
};

struct VrTraits {
  VrCode type;
  ValueKind kind;
  bool severalValues;  // a backslash or the width of a number separates values
  bool longLength;     // the standard gives it a 32-bit length in the explicit form
  std::uint8_t width;  // bytes of one number or tag; 0 for other kinds
  std::uint16_t
      most;  // characters that one value may have, of a PN each of its three forms; 0: as many as there are
};

/// The row of a type; null for letters that the standard does not know.
const VrTraits* FindTraits(VrCode type);

/// The type of two letters; none for any other text.
constexpr VrCode TypeCodeOf(std::string_view letters) {
  return letters.size() == 2 ? MakeTypeCode(letters[0], letters[1]) : type_code::kNone;
}

/// The kind of a type, kBytes for an unknown one.
ValueKind KindOf(VrCode type);

/// True for the types that have a 32-bit length by the standard but a 16-bit one in this library's readers and writers.
bool IsLongByTheStandardOnly(VrCode type);

/// Whether a value of `length` bytes can be written in the explicit form by this library as what it is. Otherwise it has to become UN,
/// which has 32 bits for its length (DICOM PS3.5, 6.2.2).
bool FitsExplicitForm(VrCode type, std::size_t length);

}  // namespace tessaret::tool
