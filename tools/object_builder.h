// Makes data sets by hand: each call adds an element with its value in the form that the standard wants.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "tag.h"
#include "type_code.h"

namespace tessaret::tool {

/// An element that is text and always the same.
struct TextRow {
  TagKey tag;
  VrCode type;
  std::string_view text;
};

class ObjectBuilder {
 public:
  /// Adds to `object`. What fails in the library throws CallError here.
  explicit ObjectBuilder(Ref<IDCMObject> object) : object_(std::move(object)) {}

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
  void Bytes(TagKey tag, VrCode type, std::vector<std::uint8_t> bytes);
  /// Appends an item to a sequence, which is made if need be, for its elements to be added.
  ObjectBuilder Item(TagKey sequence);
  void EmptySequence(TagKey tag);

 private:
  void Add(TagKey tag, VrCode type, std::span<const std::uint8_t> bytes);
  template <class T>
  void AddNumbers(TagKey tag, VrCode type, std::initializer_list<T> numbers);

  Ref<IDCMObject> object_;
};

/// A number as DS writes it: the shortest form that reads back to the same, or else the closest of 16 characters.
std::string DecimalString(double number);

}  // namespace tessaret::tool
