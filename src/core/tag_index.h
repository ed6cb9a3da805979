// Finding a tag among sorted keys. The index is a hash table that is derived from the keys once and then only read, so any
// number of threads may look up at the same time. The plain search needs no table: it serves where there is no index, and
// in the tests it is the measure of the index.
#pragma once

#include <cstdint>
#include <vector>

#include "core/tag.h"

namespace tessaret {

/// The position of `key` among the `count` ascending `keys`, or -1. Of equal keys the first. A binary search whose step
/// halves, and a walk along the keys from where it stops.
std::int64_t SearchKeys(const TagKey* keys, std::uint32_t count, TagKey key);

class TagIndex {
 public:
  /// Derives the table. Of equal keys the first counts. False, with the index empty, for keys that crowd so much that
  /// look-ups would be slow; no keys of a real dictionary do. Throws std::bad_alloc.
  bool Build(const TagKey* keys, std::uint32_t count);

  [[nodiscard]] bool IsBuilt() const { return !slots_.empty(); }

  /// The position of `key`, or -1. Requires: IsBuilt().
  [[nodiscard]] std::int64_t Find(TagKey key) const {
    for (std::uint32_t at = HomeOf(key);; at = (at + 1) & mask_) {
      const Slot& slot = slots_[at];
      if (slot.next == 0) return -1;
      if (slot.key == key) return std::int64_t{slot.next} - 1;
    }
  }

 private:
  struct Slot {
    TagKey key;
    std::uint32_t next;  // the position plus one; 0 in a free slot
  };

  [[nodiscard]] std::uint32_t HomeOf(TagKey key) const { return (key * kScatter) >> shift_; }
  bool Insert(TagKey key, std::uint32_t position);

  /// 2^32 divided by the golden ratio: neighbouring tags come to lie far apart.
  static constexpr std::uint32_t kScatter = 0x9E3779B1;

  // A power of two, at least three times the number of keys: a free one ends each search soon.
  std::vector<Slot> slots_;
  std::uint32_t mask_ = 0;
  std::uint32_t shift_ = 31;
};

}  // namespace tessaret
