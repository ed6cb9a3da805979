// One data element with its raw bytes, exactly as they travel or are stored. Values are never interpreted here.
//
// A VR is allocated singly and owned by exactly one DICOMObject or, in flight, by the code that popped it. It owns its
// items and, while OwnsData is set, its bytes. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <span>

#include "base/array.h"
#include "core/tag.h"
#include "core/type_code.h"
#include "core/vr_pool.h"

namespace tessaret {

class DICOMObject;

using ItemArray = Array<DICOMObject*>;

/// A plain record without virtual operations: a large object holds hundreds of thousands of them.
struct VR {
  /// All fields 0, OwnsData true.
  VR() = default;

  /// Takes `data` as it is; with `ownsData` it must come from `new std::uint8_t[]`. Null with `length` 0 is an element
  /// without a value.
  VR(std::uint16_t group, std::uint16_t element, std::uint32_t length, std::uint8_t* data,
     bool ownsData = true)
      : Group(group), Element(element), Length(length), Data(data), OwnsData(ownsData ? 1 : 0) {}

  /// A new element of `length` bytes, an odd length raised by one (0xFFFFFFFF, which cannot be raised, is refused with
  /// std::bad_alloc). With `allocate` Data is a new array of that size, uninitialised but for the pad byte of an odd
  /// length, which is NUL; otherwise, and with `length` 0, Data is null. Throws std::bad_alloc when there is no memory
  /// for the bytes.
  VR(std::uint16_t group, std::uint16_t element, std::uint32_t length, bool allocate);

  /// Any other pointer would pass for the order to allocate.
  template <class T>
  VR(std::uint16_t group, std::uint16_t element, std::uint32_t length, const T* data) = delete;

  /// A copy in one of two depths: tag, Length, TypeCode and LacksTable are copied; Moved becomes true and StreamPosition 0. Deep:
  /// bytes and ValueTag are copied and OwnsData is true. Shallow: Data is shared, OwnsData false, ValueTag 0. A value that
  /// was stepped over stays that, with its start for its bytes. The items
  /// are new objects in both cases. Throws std::bad_alloc.
  VR(const VR& source, bool deep);

  /// The same for the element alone: Items stays null.
  struct WithoutItems {};
  VR(const VR& source, bool deep, WithoutItems);

  VR(const VR&) = delete;
  VR& operator=(const VR&) = delete;
  ~VR() {
    if (OwnsData != 0 && Data != Small) delete[](IsSteppedOver ? Start : Data);
    if (Items != nullptr) DestroyOwnItems();
  }

  /// Records come from a pool of their own.
  static void* operator new(std::size_t size) {
    return size == sizeof(VR) ? TakeVrBlock() : ::operator new(size);
  }
  static void operator delete(void* block, std::size_t size) noexcept {
    size == sizeof(VR) ? GiveVrBlock(block) : ::operator delete(block);
  }
  static void* operator new(std::size_t, void* place) noexcept { return place; }

  /// Frees the bytes if owned and destroys the items; Length, Data and OwnsData are 0 afterwards. Always true.
  bool Reset();

  /// Frees own bytes and items and takes Length, Data, OwnsData, TypeCode, Items and LacksTable from `source`, which is left with
  /// Length 0, Data and Items null, OwnsData false, Moved true. False, and nothing changes, for a null source, another
  /// tag, a source that this element hangs below, and without memory to find that out. Replacing an element by itself
  /// changes nothing and answers true. The source may hang below this element, and dies with what was here then; it may
  /// be a shallow copy of this element or of one below it: bytes that it, or what hangs below it, shares with what was
  /// here stay.
  bool ReplaceFrom(VR* source);

  /// Hands value and items over to `target`: pushes a new VR of this tag that takes Length, Data and OwnsData, then
  /// pushes every item. False, and nothing changes, when Length and Moved are both 0, when `target` is null, hangs below
  /// this element or refuses it, and without memory. An element that lies in `target` already stays there: true; with a
  /// tag that was changed in place it hands its value on to a new element of its present tag.
  bool MoveToObject(DICOMObject* target);

  /// True when `object` is an item of this element, at any depth; and without memory to look further.
  [[nodiscard]] bool MightHold(const DICOMObject& object) const;

  /// 0 when there are no Items.
  [[nodiscard]] std::uint32_t ItemCount() const;

  /// The item at `index`, which stays owned here; null at or beyond ItemCount().
  DICOMObject* GetItem(std::uint32_t index);

  /// Appends `item` and takes it over. False, and the item stays with the caller, when there is no memory or it is
  /// null. Requires: this element does not hang below it.
  bool AddItem(DICOMObject* item);

  /// Takes the first item out for the caller to own; null when there is none. The emptied list is destroyed.
  DICOMObject* PopFirstItem();

  /// A heap copy, see the copying constructor; null when there is no memory.
  [[nodiscard]] VR* Clone(bool deep) const;

  /// Destroys the items and their list.
  void DestroyOwnItems() noexcept;
  /// Lets go of the start of a value that was stepped over, which is then one that is not here. Requires: it was.
  void DropStart() noexcept;
  /// Takes Length, Data and OwnsData, or Start, from `source`, whose Data is null afterwards. Requires: this has no value.
  void TakeValue(VR& source) noexcept;

  /// Makes Data a place for `Length` bytes that this element owns, uninitialised; short values lie in Small.
  /// Requires: Data is null and Length is not 0. Throws std::bad_alloc.
  void AllocateValue() {
    Data = Length <= sizeof(Small) ? Small : new std::uint8_t[Length];
    OwnsData = 1;
  }

  /// Hands the bytes out as an array for the caller to free with array delete, a copy where they are not this element's
  /// own array; Data is null and Length 0 afterwards. Null when there are none. The one way to take bytes away from an
  /// element. Throws std::bad_alloc with nothing changed.
  std::uint8_t* TakeData();

  /// Frees the bytes if owned and makes a copy of `length` bytes at `bytes` the value, which this element owns; `length` 0
  /// leaves no Data. With `toEven` an odd length is raised by a NUL. `bytes` may lie in the present value. Items and type
  /// stay. Throws std::bad_alloc, for a length that cannot be raised too, with nothing changed.
  void ReplaceValue(const void* bytes, std::uint32_t length, bool toEven = false);

  /// The first bytes of the value: all that are here, which are all that there are unless they were stepped over.
  [[nodiscard]] std::span<const std::uint8_t> FirstBytes() const {
    if (IsSteppedOver) return {Start, Length < kStartSize ? Length : kStartSize};
    return {Data, Data == nullptr ? 0 : Length};
  }

  [[nodiscard]] TagKey Key() const { return MakeTagKey(Group, Element); }

  std::uint16_t Group = 0;    // host order
  std::uint16_t Element = 0;  // host order
  // Bytes in Data; of a sequence the length as read, 0 when it was undefined.
  std::uint32_t Length = 0;
  std::uint8_t* Data = nullptr;  // value bytes, not terminated
  // Not 0: Data is freed with array delete when this dies, unless it is Small.
  std::uint32_t OwnsData = 1;
  // Set on the source of a hand-over and on a copy; MoveToObject looks at it.
  std::uint32_t Moved = 0;
  ItemArray* Items = nullptr;  // null for an element that is not a sequence
  std::uint32_t ValueTag = 0;  // travels with the bytes of a deep copy
  VrCode TypeCode = type_code::kNone;
  // Set on compressed pixel data whose first item, the offset table, was taken out: all its items are fragments.
  bool LacksTable = false;
  // Set on a value whose bytes were stepped over when it was read: Data is null, Length as read, and Start there.
  bool IsSteppedOver = false;
  // Offset of the first tag byte in the stream read; 0 when made in memory.
  std::uint32_t StreamPosition = 0;
  union {
    // Where a short value that was parsed lies, so that it costs no allocation.
    std::uint8_t Small[32];
    // An array of kStartSize bytes with the first ones of a value that was stepped over; owned as Data is.
    std::uint8_t* Start;
  };

  // Enough for whatever shows the beginning of a value.
  static constexpr std::uint32_t kStartSize = 256;
};

}  // namespace tessaret
