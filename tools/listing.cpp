#include "listing.h"

#include <algorithm>

#include "class_object.h"

namespace tessaret::tool {
namespace {

template <class T>
std::span<const T> EntriesOf(const Variant& column) {
  const VariantArray* array = column.AsArray();
  return array == nullptr ? std::span<const T>() : array->Entries<T>();
}

}  // namespace

Listing::Listing(IDCMObject& object) : columns_(7) {
  std::int32_t rows = 0;
  Variant* const at = columns_.data();
  Require(FileOf(object)->GetListing(at, at + 1, at + 2, at + 3, at + 4, at + 5, at + 6, &rows));
  levels_ = EntriesOf<std::int32_t>(columns_[0]);
  tags_ = EntriesOf<double>(columns_[1]);
  types_ = EntriesOf<std::int32_t>(columns_[2]);
  lengths_ = EntriesOf<double>(columns_[3]);
  offsets_ = EntriesOf<double>(columns_[4]);
  haveValues_ = EntriesOf<VariantBool>(columns_[5]);
  items_ = EntriesOf<std::int32_t>(columns_[6]);
}

Element Listing::At(std::size_t row) const {
  Element element;
  element.tag = Tag(row);
  element.type = Type(row);
  element.length = lengths_[row] < 0 ? kUndefinedLength : static_cast<std::uint32_t>(lengths_[row]);
  element.offset = static_cast<std::uint32_t>(offsets_[row]);
  element.hasValue = haveValues_[row].IsTrue();
  element.items = static_cast<std::uint32_t>(items_[row]);
  element.row = row;
  return element;
}

std::size_t Listing::Behind(std::size_t row) const {
  std::size_t at = row + 1;
  while (at < Rows() && levels_[at] > levels_[row]) ++at;
  return at;
}

std::optional<Element> Listing::FindOnTop(TagKey tag) const {
  for (std::size_t row = 0; row < Rows(); ++row) {
    if (levels_[row] == 0 && Tag(row) == tag) return At(row);
  }
  return std::nullopt;
}

std::size_t Listing::CountOnTop() const {
  return static_cast<std::size_t>(std::ranges::count(levels_, 0));
}

}  // namespace tessaret::tool
