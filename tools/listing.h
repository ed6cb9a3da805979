// The table of all elements of an object with everything nested in it, asked for once and looked at often.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "tag.h"
#include "type_code.h"

namespace tessaret::tool {

inline constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

struct Element {
  TagKey tag = 0;
  VrCode type = type_code::kNone;
  std::uint32_t length = 0;  // bytes of its value
  std::uint32_t offset = 0;  // where it stood among the bytes that were read
  bool hasValue = false;     // its bytes are there
  std::uint32_t items = 0;   // or fragments
  std::size_t row = 0;
};

/// As the object was when this was made.
class Listing {
 public:
  /// Nothing.
  Listing() = default;
  /// Throws CallError and std::bad_alloc.
  explicit Listing(IDCMObject& object);
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  Listing(Listing&&) = default;
  Listing& operator=(Listing&&) = default;
  ~Listing() = default;

  /// Items have rows too, each before those of its elements.
  [[nodiscard]] std::size_t Rows() const { return levels_.size(); }
  [[nodiscard]] bool IsItem(std::size_t row) const { return items_[row] < 0; }
  /// 0 for the elements of the object; an item and its elements are one level below their sequence.
  [[nodiscard]] int Level(std::size_t row) const { return levels_[row]; }
  /// Requires: it is no item.
  [[nodiscard]] Element At(std::size_t row) const;
  [[nodiscard]] TagKey Tag(std::size_t row) const { return static_cast<TagKey>(tags_[row]); }
  [[nodiscard]] VrCode Type(std::size_t row) const { return static_cast<VrCode>(types_[row]); }

  /// The first row behind that of an element and all that is in it.
  [[nodiscard]] std::size_t Behind(std::size_t row) const;

  /// Calls `visit(element)` for the elements of the object itself, in the order of their tags.
  template <class Visit>
  void ForEachOnTop(Visit visit) const {
    for (std::size_t row = 0; row < Rows(); ++row) {
      if (levels_[row] == 0) visit(At(row));
    }
  }
  [[nodiscard]] std::optional<Element> FindOnTop(TagKey tag) const;
  /// How many elements the object itself has.
  [[nodiscard]] std::size_t CountOnTop() const;

 private:
  std::vector<Variant> columns_;
  // Into these.
  std::span<const std::int32_t> levels_;
  std::span<const double> tags_;
  std::span<const std::int32_t> types_;
  std::span<const double> lengths_;
  std::span<const double> offsets_;
  std::span<const VariantBool> haveValues_;
  std::span<const std::int32_t> items_;
};

}  // namespace tessaret::tool
