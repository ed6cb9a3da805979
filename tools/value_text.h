// Values as people read them in a listing.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "character_sets.h"
#include "object_walk.h"
#include "output.h"
#include "value_bytes.h"

namespace tessaret::tool {

/// The type by which the value of an element is shown: its own; LO for a private creator that came without one.
VrCode ShownType(TagKey tag, VrCode type);
inline VrCode ShownType(const Element& element) { return ShownType(element.tag, element.type); }

/// Text without what pads it.
std::string_view UnpaddedText(std::string_view bytes);

/// How many numbers or tags `length` bytes of this type are; nothing for other kinds, and where they are no whole number of them.
std::optional<std::size_t> NumberCount(VrCode type, std::size_t length);

/// Number `index` of the value, in its shortest decimal form, or "(gggg,eeee)" for a tag.
/// Requires: index < NumberCount.
std::string NumberText(VrCode type, const std::uint8_t* bytes, std::size_t index);
std::string NumberText(VrCode type, ValueBytes& bytes, std::size_t index);

/// The value of an element without items, looked at only as far as is asked for.
class ShownValue {
 public:
  /// `element` is one of `owner`; both outlive this.
  ShownValue(const Element& element, DataSet& owner) : element_(element), owner_(owner) {}

  /// How many values there are; 0 for none.
  std::uint32_t Multiplicity();

  /// The text without what pads it, which is here as long as this. Requires: the type is one of text.
  std::string_view Text();

  /// Whether any of its bytes are here: its beginning is where it was stepped over.
  bool IsHere();

  /// Writes it in at most about `most` columns, which it answers: text in brackets, decoded by `sets`, numbers between backslashes,
  /// bytes in hexadecimal. Numbers and bytes go out one by one where there is no limit.
  std::size_t Show(Output& output, std::size_t most, const CharacterSets& sets);

 private:
  std::string Shown(std::size_t most, const CharacterSets& sets);
  /// How many numbers or bytes there are, and the text of each.
  [[nodiscard]] std::uint32_t Parts() const;
  std::function<std::string(std::uint32_t)> PartText();
  ValueBytes& Bytes();

  const Element& element_;
  DataSet& owner_;
  std::optional<ValueBytes> bytes_;
};

}  // namespace tessaret::tool
