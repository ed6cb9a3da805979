// A priority queue that is kept as a binary min-heap in an Array: the children of position i lie at 2i+1 and 2i+2.
// Each step into the heap is a walk along the list, so it suits the few dozen groups of a data set, not bulk sorting.
#pragma once

#include <utility>

#include "base/array.h"

namespace tessaret {

template <class T>
struct CompareValues {
  bool operator()(const T& a, const T& b) const { return a < b; }
};

template <class T>
struct ComparePointees {
  bool operator()(const T& a, const T& b) const { return *a < *b; }
};

template <class T, class Less = CompareValues<T>>
class PQueue : public Array<T> {
 public:
  void Push(T value) {
    this->Add(std::move(value));
    SiftUp(this->ListLength - 1);
  }

  /// Takes the smallest value out into `value`; false, and `value` as it was, when the queue is empty.
  bool Pop(T& value) {
    if (this->ListLength == 0) return false;
    std::swap(value, this->First->value);
    std::swap(this->First->value, this->Last->value);
    this->RemoveAt(this->ListLength - 1);
    SiftDown();
    return true;
  }

 private:
  T& At(std::uint32_t index) { return this->Get(index)->value; }

  void SiftUp(std::uint32_t index) {
    while (index > 0) {
      const std::uint32_t parent = (index - 1) / 2;
      T& child = At(index);
      if (!less_(child, At(parent))) return;
      std::swap(child, At(parent));
      index = parent;
    }
  }

  void SiftDown() {
    std::uint32_t index = 0;
    for (;;) {
      std::uint32_t child = 2 * index + 1;
      if (child >= this->ListLength) return;
      if (child + 1 < this->ListLength && less_(At(child + 1), At(child))) ++child;
      if (!less_(At(child), At(index))) return;
      std::swap(At(child), At(index));
      index = child;
    }
  }

  [[no_unique_address]] Less less_;
};

/// The same over pointers, ordered by what they point to. The pointees stay the caller's.
template <class T>
using PQueueOfPtr = PQueue<T, ComparePointees<T>>;

}  // namespace tessaret
