// The storage of a dictionary once it is loaded: keys in ascending order and, parallel to them, what they stand for. Its
// size is settled when it is made.
#pragma once

#include <cstdint>
#include <memory>

namespace tessaret {

template <class KeyType, class ElementType>
class FixedArray {
 public:
  /// Room for `capacity` entries, none of them in use. Throws std::bad_alloc.
  explicit FixedArray(std::uint32_t capacity)
      : Capacity(capacity), Keys(new KeyType[capacity]()), Elements(new ElementType[capacity]()) {}

  /// Appends an entry and returns its slot. At the limit nothing is stored and the slot of the last entry is returned,
  /// null where there is none. The caller adds in ascending order of keys.
  ElementType* Add(KeyType key, const ElementType& element) {
    if (Count < Capacity) {
      Keys[Count] = key;
      Elements[Count] = element;
      ++Count;
    }
    return Count == 0 ? nullptr : &Elements[Count - 1];
  }

  const std::uint32_t Capacity;
  std::uint32_t Count = 0;
  const std::unique_ptr<KeyType[]> Keys;
  const std::unique_ptr<ElementType[]> Elements;
};

}  // namespace tessaret
