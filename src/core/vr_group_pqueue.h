// The elements of one group, smallest tag first, with the count of bytes that they take when they are written. It
// stores pointers: the elements stay the caller's. One thread at a time.
#pragma once

#include <cstdint>
#include <memory>

#include "base/pqueue.h"
#include "core/vr.h"

namespace tessaret {

/// Orders elements by group, then by element.
struct CompareTags {
  bool operator()(const VR* a, const VR* b) const { return a->Key() < b->Key(); }
};

class VRGroupPQueue : private PQueue<VR*, CompareTags> {
 public:
  explicit VRGroupPQueue(std::uint16_t group = 0) : Group(group) {}

  /// Adds `element` and its bytes to Size: 8 for a head, its Length, and 1 more when that is odd. False, with nothing
  /// changed, for null, for an element of another group and without memory.
  bool Push(VR* element);

  /// Takes the element with the smallest tag out and its bytes off Size; null when there is none.
  VR* Pop();

  /// Makes GroupLengthVR, the element (Group,0000) of type UL whose value is Size as it stands, in place of an earlier
  /// one. False, and the earlier one stays, without memory.
  bool MakeGroupLength();

  /// Queues are ordered by their groups.
  friend bool operator<(const VRGroupPQueue& a, const VRGroupPQueue& b) {
    return a.Group < b.Group;
  }

  using Array<VR*>::ListLength;

  std::uint16_t Group;
  std::uint32_t Size = 0;  // modulo 2^32
  std::unique_ptr<VR> GroupLengthVR;
};

}  // namespace tessaret
