// The elements of a data set in ascending key order. It stores pointers and owns nothing.
//
// Streams deliver tags in order, so the plain form is a sorted array that appends in constant time, hands out its first
// entry in constant time, and moves a few entries where one comes late. An array in which a late entry would have to move
// many others turns into a tree, so that no order of tags from outside makes filling it more than n log n.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "core/tag.h"

namespace tessaret {

struct VR;

class ElementMap {
 public:
  struct Entry {
    TagKey key;
    VR* vr;
  };

  /// The place for `key`: the pointer stored under it, or null when the key is new. Throws std::bad_alloc, with nothing
  /// changed, when there is no memory.
  VR** FindOrInsert(TagKey key) {
    if (tree_ || (!flat_.empty() && flat_.back().key >= key)) return InsertLate(key);
    if (flat_.size() == flat_.capacity()) Reserve(kFirstRoom);
    flat_.push_back({key, nullptr});
    return &flat_.back().vr;
  }

  /// Stores `vr` under a `key` above all others, if there is room for it; false, with nothing changed, otherwise.
  bool TryAppend(TagKey key, VR* vr) {
    if (tree_ || flat_.size() == flat_.capacity()) return false;
    if (!flat_.empty() && flat_.back().key >= key) return false;
    flat_.push_back({key, vr});
    return true;
  }

  /// The element stored under `key`, or null.
  [[nodiscard]] VR* Find(TagKey key) const;

  /// The element with the lowest key, or null.
  [[nodiscard]] VR* First() const;

  /// The element with the next key after that of a stored `key`; null for the last and for a key that is not stored.
  [[nodiscard]] VR* NextAfter(TagKey key) const;

  /// Takes the element with the lowest key out; null when empty.
  VR* PopFirst() noexcept;

  /// Takes the element under `key` out; null when there is none.
  VR* Remove(TagKey key) noexcept;

  [[nodiscard]] std::size_t Size() const { return tree_ ? tree_->size() : flat_.size() - head_; }
  [[nodiscard]] bool IsEmpty() const { return Size() == 0; }

  /// Whether every element is stored under its own key. Not so where a tag was changed in place.
  [[nodiscard]] bool IsInOrder() const;

  /// Makes room for `count` further elements that come in order.
  void Reserve(std::size_t count);

  /// Forgets all entries and gives their memory back.
  void Clear() noexcept;

  ElementMap() = default;
  ElementMap(const ElementMap&) = delete;
  ElementMap& operator=(const ElementMap&) = delete;
  ~ElementMap() { Clear(); }

  /// Calls `visit(VR&)` for every element in key order. `visit` must not change this map.
  template <class Visit>
  void ForEach(Visit&& visit) const {
    ForEachWhile([&visit](VR& vr) {
      visit(vr);
      return true;
    });
  }

  /// The same until a visit answers false; then the answer is false.
  template <class Visit>
  bool ForEachWhile(Visit&& visit) const {
    if (tree_) {
      for (const auto& [key, vr] : *tree_) {
        if (!visit(*vr)) return false;
      }
      return true;
    }
    for (std::size_t at = head_; at < flat_.size(); ++at) {
      if (!visit(*flat_[at].vr)) return false;
    }
    return true;
  }

 private:
  using Tree = std::map<TagKey, VR*>;

  /// An item of a sequence has about three elements; a vector would take memory for one, for two and for four of them.
  static constexpr std::size_t kFirstRoom = 4;

  /// The index of the first entry whose key is not below `key`.
  [[nodiscard]] std::size_t LowerBound(TagKey key) const;
  [[nodiscard]] bool Holds(std::size_t index, TagKey key) const {
    return index < flat_.size() && flat_[index].key == key;
  }
  VR** InsertLate(TagKey key);
  void BecomeTree();
  bool TryToBecomeTree() noexcept;
  void DropPopped() noexcept;

  std::vector<Entry> flat_;     // in use while tree_ is null
  std::size_t head_ = 0;        // entries before it have been popped
  std::unique_ptr<Tree> tree_;  // in use once set, until Clear
};

}  // namespace tessaret
