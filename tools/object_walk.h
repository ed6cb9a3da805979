// A walk through an object and everything nested in it, in the order of a file, on a flat stack.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include <tessaret/tessaret.hpp>

#include "listing.h"

namespace tessaret::tool {

/// The data set that a walk goes through at the moment: the object, or an item in it.
class DataSet {
 public:
  DataSet(const Listing& listing, Ref<IDCMObject> object)
      : listing_(listing), begin_(0), level_(0), object_(std::move(object)) {}
  /// The item in the row before `begin`, number `index` of `sequence` in `parent`, which lives as long.
  DataSet(DataSet& parent, TagKey sequence, std::uint32_t index, std::size_t begin)
      : listing_(parent.listing_),
        begin_(begin),
        level_(parent.level_ + 1),
        parent_(&parent),
        sequence_(sequence),
        index_(index) {}

  /// Behind the public interface; what nobody asks for is never made. Throws CallError.
  IDCMObject& Object();
  IDcmFile& File();

  /// Calls `visit(element)` for each of its elements, in the order of their tags, until that answers false.
  template <class Visit>
  void ForEach(Visit visit) const {
    for (std::size_t row = begin_; IsHere(row); row = listing_.Behind(row)) {
      if (!visit(listing_.At(row))) return;
    }
  }
  [[nodiscard]] std::optional<Element> Find(TagKey tag) const;
  /// The element behind one of its own.
  [[nodiscard]] std::optional<Element> Next(const Element& element) const;
  [[nodiscard]] std::size_t Count() const;

 private:
  [[nodiscard]] bool IsHere(std::size_t row) const {
    return row < listing_.Rows() && listing_.Level(row) == level_ && !listing_.IsItem(row);
  }

  const Listing& listing_;
  std::size_t begin_;  // the row of its first element
  int level_;
  DataSet* parent_ = nullptr;
  TagKey sequence_ = 0;
  std::uint32_t index_ = 0;
  Ref<IDCMObject> object_;
  Ref<IDcmFile> file_;
};

/// What a walk meets. Levels count from 0; an item and its elements are one level below their sequence.
class ObjectVisitor {
 public:
  virtual ~ObjectVisitor() = default;

  /// An element without items. `owner` is the data set that it is in.
  virtual void OnElement(const Element& element, DataSet& owner, int level) = 0;
  /// An element with items, fragments of pixel data included; its items follow, and then its end.
  virtual void OnSequence(const Element& sequence, DataSet& owner, int level) = 0;
  virtual void OnSequenceEnd(const Element& sequence, DataSet& owner, int level) = 0;
  /// Item number `index` of `sequence`, counted from 0; its elements follow, and then its end.
  virtual void OnItem(const Element& sequence, std::uint32_t index, DataSet& item, int level) = 0;
  virtual void OnItemEnd(const Element& sequence, int level) = 0;
};

/// Shows all of `listing` to `visitor`. `object` is what it lists. Throws Interrupted, CallError and what the visitor throws.
void WalkObject(const Listing& listing, const Ref<IDCMObject>& object, ObjectVisitor& visitor);

}  // namespace tessaret::tool
