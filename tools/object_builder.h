// Makes data sets by hand: each call adds an element with its value in the form that the standard wants.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "core/dicom_object.h"
#include "core/type_code.h"

namespace tessaret::tool {

/// An element that is text and always the same.
struct TextRow {
  TagKey tag;
  VrCode type;
  std::string_view text;
};

class ObjectBuilder {
 public:
  /// Adds to `object`, which is not owned.
  explicit ObjectBuilder(DICOMObject& object) : object_(object) {}

  /// Text padded to an even length: UI by a NUL, others by a blank.
  void Text(TagKey tag, VrCode type, std::string_view text);
  /// Several at once.
  template <std::size_t count>
  void Texts(const TextRow (&rows)[count]) {
    for (const TextRow& row : rows) Text(row.tag, row.type, row.text);
  }
  /// Numbers as DS, each in at most 16 characters.
  void Decimals(TagKey tag, std::initializer_list<double> numbers);
  void Integer(TagKey tag, std::int64_t number);  // IS
  void Unsigned16(TagKey tag, std::initializer_list<std::uint16_t> numbers);
  void Unsigned32(TagKey tag, std::initializer_list<std::uint32_t> numbers);
  void Float64(TagKey tag, double number);
  /// A tag as a value.
  void TagValue(TagKey tag, TagKey value);
  void Bytes(TagKey tag, VrCode type, const std::vector<std::uint8_t>& bytes);
  /// Appends an item to a sequence, which is made if need be, for its elements to be added.
  ObjectBuilder Item(TagKey sequence);
  void EmptySequence(TagKey tag);

 private:
  void Add(TagKey tag, VrCode type, const void* bytes, std::size_t size, char pad);

  DICOMObject& object_;
};

/// A number as DS writes it: the shortest form that reads back to the same, or else the closest of 16 characters.
std::string DecimalString(double number);

}  // namespace tessaret::tool
