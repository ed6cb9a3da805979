// One value that a thread keeps for its next use. It is gone at the thread's end, and who asks later, from the destructor
// of something that lives longer, is told so instead of meeting a dead object.
#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include "platform/thread_end.h"

namespace tessaret {

/// What one thread keeps for one use. Plain data, so that it can be looked at after the value's end.
template <class T, class Tag>
class ThreadKeep {
 public:
  static T* Get() noexcept {
    if (value == nullptr && !gone) Make();
    return value;
  }

 private:
  static void Make() noexcept {
    gone = !CallAtThreadEnd(&Leave);
    if (!gone) value = ::new (static_cast<void*>(room)) T{};
  }
  static void Leave() noexcept {
    std::destroy_at(value);
    value = nullptr;
    gone = true;
  }

  alignas(T) static thread_local constinit std::byte room[sizeof(T)];
  static thread_local constinit T* value;
  static thread_local constinit bool gone;
};

template <class T, class Tag>
alignas(T) thread_local constinit std::byte ThreadKeep<T, Tag>::room[sizeof(T)]{};
template <class T, class Tag>
thread_local constinit T* ThreadKeep<T, Tag>::value = nullptr;
template <class T, class Tag>
thread_local constinit bool ThreadKeep<T, Tag>::gone = false;

/// The kept value of this thread for the use that `Tag` names, or null once the thread is ending, and where nothing can be
/// kept. Requires: a new T takes no memory and does not throw.
template <class T, class Tag>
T* ThreadKept() noexcept {
  return ThreadKeep<T, Tag>::Get();
}

}  // namespace tessaret
