// The library's doubly linked list. Sequence items, stream chunks, presentation contexts and dictionary entries
// hang in one of these. A list owns its nodes and never what a stored pointer points to. One thread at a time.
#pragma once

#include <cstdint>
#include <utility>

namespace tessaret {

template <class T>
class Array {
 public:
  struct Node {
    T value;
    Node* next;
    Node* previous;
  };

  Array() = default;
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  virtual ~Array() { Clear(); }

  /// Appends at the tail. Throws std::bad_alloc and leaves the list as it was when there is no memory.
  void Add(T value) {
    Node* node = new Node{std::move(value), nullptr, Last};
    (Last != nullptr ? Last->next : First) = node;
    Last = node;
    ++ListLength;
  }

  /// The node at `index`, or null at or beyond ListLength. A forward scan costs one step an index, because the last
  /// node found is remembered; any other index is walked to from the nearer end.
  Node* Get(std::uint32_t index) {
    if (index >= ListLength) return nullptr;
    Node* node = nullptr;
    if (LastAccess != nullptr && index == LastAccessNumber + 1) {
      node = LastAccess->next;
    } else if (index < ListLength / 2) {
      node = WalkForward(index);
    } else {
      node = WalkBackward(index);
    }
    LastAccess = node;
    LastAccessNumber = index;
    return node;
  }

  /// Unlinks and frees the node at `index`; false when there is none. What the stored value points to is not touched.
  bool RemoveAt(std::uint32_t index) {
    Node* node = Get(index);
    if (node == nullptr) return false;
    (node->previous != nullptr ? node->previous->next : First) = node->next;
    (node->next != nullptr ? node->next->previous : Last) = node->previous;
    delete node;
    --ListLength;
    ForgetAccess();
    return true;
  }

  /// Moves all nodes of `other` behind the last one here, in order and without an allocation; `other` is then empty.
  void Splice(Array& other) noexcept {
    if (other.First == nullptr || &other == this) return;
    (Last != nullptr ? Last->next : First) = other.First;
    other.First->previous = Last;
    Last = other.Last;
    ListLength += other.ListLength;
    other.First = other.Last = nullptr;
    other.ListLength = 0;
    other.ForgetAccess();
  }

  /// Moves all nodes of `other` before the first one here, likewise.
  void SpliceFront(Array& other) noexcept {
    if (other.First == nullptr || &other == this) return;
    (First != nullptr ? First->previous : Last) = other.Last;
    other.Last->next = First;
    First = other.First;
    ListLength += other.ListLength;
    other.First = other.Last = nullptr;
    other.ListLength = 0;
    other.ForgetAccess();
    ForgetAccess();
  }

  /// Frees all nodes.
  void Clear() noexcept {
    while (First != nullptr) {
      Node* next = First->next;
      delete First;
      First = next;
    }
    Last = nullptr;
    ListLength = 0;
    ForgetAccess();
  }

  Node* First = nullptr;
  Node* Last = nullptr;
  Node* LastAccess = nullptr;
  std::uint32_t LastAccessNumber = 0;
  std::uint32_t ListLength = 0;
  std::uint32_t ClearType = 1;

 private:
  void ForgetAccess() noexcept {
    LastAccess = nullptr;
    LastAccessNumber = 0;
  }

  Node* WalkForward(std::uint32_t index) const {
    Node* node = First;
    for (std::uint32_t at = 0; at < index; ++at) node = node->next;
    return node;
  }

  Node* WalkBackward(std::uint32_t index) const {
    Node* node = Last;
    for (std::uint32_t at = ListLength - 1; at > index; --at) node = node->previous;
    return node;
  }
};

}  // namespace tessaret
