// One value that a thread keeps for its next use. It is gone at the thread's end, and who asks later, from the destructor
// of something that lives longer, is told so instead of meeting a dead object.
#pragma once

namespace tessaret {

/// The kept value of this thread for the use that `Tag` names, or null once the thread is ending.
template <class T, class Tag>
T* ThreadKept() {
  // Plain data, so that it can be read after the holder's end.
  static thread_local constinit bool gone = false;
  struct Holder {
    T value{};
    ~Holder() { gone = true; }
  };
  if (gone) return nullptr;
  static thread_local Holder holder;
  return &holder.value;
}

}  // namespace tessaret
