// Finding a tag among sorted keys. The index is a hash table that is derived from the keys once and then only read, so any
// number of threads may look up at the same time. The plain search needs no table: it serves where there is no index, and
// in the tests it is the measure of the index.
#pragma once

#include <cstdint>
#include <vector>

#include "core/tag.h"
#include "core/type_code.h"

namespace tessaret {

/// The position of `key` among the `count` ascending `keys`, or -1. Of equal keys the first. A binary search whose step
/// halves, and a walk along the keys from where it stops.
std::int64_t SearchKeys(const TagKey* keys, std::uint32_t count, TagKey key);

class TagIndex {
 public:
  /// Derives the table of `count` keys and their types. Of equal keys the first counts. False, with the index empty, for
  /// more than 65535 keys and for keys that crowd so much that look-ups would be slow; a real dictionary is neither. Throws
  /// std::bad_alloc.
  bool Build(const TagKey* keys, const VrCode* types, std::uint32_t count);

  [[nodiscard]] bool IsBuilt() const { return !slots_.empty(); }

  /// The position of `key`, or -1. Requires: IsBuilt().
  [[nodiscard]] std::int64_t Find(TagKey key) const { return std::int64_t{SlotOf(key).next} - 1; }

  /// The type of `key`, or none. A reader asks for each element: the type lies in the slot, so that one line of the
  /// processor's cache is all that an answer needs. Requires: IsBuilt().
  [[nodiscard]] VrCode TypeOf(TagKey key) const { return SlotOf(key).type; }

 private:
  struct Slot {
    TagKey key;
    std::uint16_t next;  // the position plus one; 0 in a free slot
    VrCode type;         // none in a free slot
  };

  /// The slot of `key`, or a free one.
  [[nodiscard]] const Slot& SlotOf(TagKey key) const {
    for (std::uint32_t at = HomeOf(key);; at = (at + 1) & mask_) {
      const Slot& slot = slots_[at];
      if (slot.key == key || slot.next == 0) return slot;
    }
  }

  [[nodiscard]] std::uint32_t HomeOf(TagKey key) const { return (key * kScatter) >> shift_; }
  bool Insert(Slot entry);
  [[nodiscard]] std::uint32_t LongestRun() const;

  /// 2^32 divided by the golden ratio: neighbouring tags come to lie far apart.
  static constexpr std::uint32_t kScatter = 0x9E3779B1;

  // A power of two, at least twice the number of keys: a free one ends each search soon, and the table stays small enough
  // for the processor to keep it at hand between two files.
  std::vector<Slot> slots_;
  std::uint32_t mask_ = 0;
  std::uint32_t shift_ = 31;
};

}  // namespace tessaret
