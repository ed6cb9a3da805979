// What the library knows of each value representation: the one table behind typed values.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "core/type_code.h"

namespace tessaret {

/// What the values of a type are outside.
enum class ValueKind : std::uint8_t {
  kText,        // texts, separated by backslashes
  kLoneText,    // one text, in which a backslash is a character like any other
  kInteger,     // whole numbers in decimal
  kDecimal,     // numbers in decimal
  kDate,        // year, month, day
  kDateTime,    // the same with a time of day
  kTime,        // a time of day
  kUnsigned16,  // numbers of the machine, from here on
  kSigned16,
  kUnsigned32,
  kSigned32,
  kFloat,
  kDouble,
  kSequence,  // no values, but items
  kBytes,     // anything else: all bytes together
};

/// How many values an element has.
enum class ValueCount : std::uint8_t {
  kOne,          // whatever is in it
  kBackslashes,  // one more than backslashes
  kPairs,        // one for every 2 bytes
  kFours,        // one for every 4 bytes
  kEights,       // one for every 8 bytes
};

struct VrProperties {
  VrCode code;
  std::uint32_t width;  // bytes of one value; 0 where it varies
  std::uint32_t limit;  // the most characters that a text is stored with; 0 for no limit
  ValueKind kind;
  ValueCount count;
};

/// Ordered by code, so that a row is found by halving.
inline constexpr VrProperties kVrProperties[] = {
    // code, width, limit, kind, count
    {type_code::AE, 16, 16, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::AS, 4, 4, ValueKind::kText, ValueCount::kBackslashes},
    // A value is 4 bytes wide where it is put on the wire; outside, its two halves are two numbers.
    {type_code::AT, 4, 0, ValueKind::kUnsigned16, ValueCount::kPairs},
    {type_code::CS, 0, 16, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::DA, 8, 10, ValueKind::kDate, ValueCount::kBackslashes},
    {type_code::DS, 0, 16, ValueKind::kDecimal, ValueCount::kBackslashes},
    {type_code::DT, 0, 26, ValueKind::kDateTime, ValueCount::kBackslashes},
    // Counts as one value whatever its length is; each of its values can still be reached.
    {type_code::FD, 8, 0, ValueKind::kDouble, ValueCount::kOne},
    {type_code::FL, 4, 0, ValueKind::kFloat, ValueCount::kFours},
    {type_code::IS, 0, 12, ValueKind::kInteger, ValueCount::kBackslashes},
    {type_code::LO, 0, 64, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::LT, 0, 0, ValueKind::kLoneText, ValueCount::kOne},
    {type_code::OB, 1, 0, ValueKind::kBytes, ValueCount::kOne},
    {type_code::OF, 0, 0, ValueKind::kBytes, ValueCount::kOne},
    {type_code::OW, 1, 0, ValueKind::kBytes, ValueCount::kOne},
    {type_code::PN, 0, 0, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::SH, 0, 16, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::SL, 4, 0, ValueKind::kSigned32, ValueCount::kFours},
    {type_code::SQ, 0, 0, ValueKind::kSequence, ValueCount::kOne},
    {type_code::SS, 2, 0, ValueKind::kSigned16, ValueCount::kPairs},
    {type_code::ST, 0, 1024, ValueKind::kLoneText, ValueCount::kOne},
    {type_code::TM, 0, 16, ValueKind::kTime, ValueCount::kBackslashes},
    {type_code::UI, 0, 64, ValueKind::kText, ValueCount::kBackslashes},
    {type_code::UL, 4, 0, ValueKind::kUnsigned32, ValueCount::kFours},
    {type_code::UN, 0, 0, ValueKind::kBytes, ValueCount::kOne},
    {type_code::US, 2, 0, ValueKind::kUnsigned16, ValueCount::kPairs},
    {type_code::UT, 0, 0, ValueKind::kLoneText, ValueCount::kOne},
    // No type of the standard: bytes that count in eights.
    {MakeTypeCode('v', 'r'), 0, 0, ValueKind::kBytes, ValueCount::kEights},
};
static_assert(std::is_sorted(std::begin(kVrProperties), std::end(kVrProperties),
                             [](const VrProperties& a, const VrProperties& b) {
                               return a.code < b.code;
                             }));
static_assert(MakeTypeCode('v', 'r') == 0x7672);

/// The row of a type that has none: bytes.
inline constexpr VrProperties kOtherProperties = {type_code::kNone, 0, 0, ValueKind::kBytes,
                                                  ValueCount::kOne};

constexpr const VrProperties& PropertiesOf(VrCode code) {
  const auto* const row =
      std::lower_bound(std::begin(kVrProperties), std::end(kVrProperties), code,
                       [](const VrProperties& at, VrCode wanted) { return at.code < wanted; });
  return row != std::end(kVrProperties) && row->code == code ? *row : kOtherProperties;
}

}  // namespace tessaret
