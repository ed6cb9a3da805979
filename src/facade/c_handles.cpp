#include "facade/c_handles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <unordered_map>

#include "platform/at_fork.h"
#include "platform/fork_locks.h"
#include "platform/library_end.h"

namespace tessaret {
namespace {

// A handle is the address of the object's interface for calls by name.
IDispatch* ObjectAt(const tessaret_object* handle) {
  return reinterpret_cast<IDispatch*>(const_cast<tessaret_object*>(handle));
}

/// How many references the host has to each object. Of the many maps every address has its own, so that threads with objects of their
/// own seldom wait for one another.
class HandleCounts {
 public:
  struct alignas(64) Part {
    ForkLock lock;
    std::unordered_map<const tessaret_object*, std::uint64_t> counts;
  };

  [[nodiscard]] bool IsEmpty() const {
    return std::ranges::all_of(parts_, [](const Part& part) { return part.counts.empty(); });
  }
  Part& PartOf(const tessaret_object* handle) {
    // Objects lie at multiples of 16 bytes, often of 64.
    const auto address = reinterpret_cast<std::uintptr_t>(handle);
    return parts_[(address >> 4 ^ address >> 10) % parts_.size()];
  }
  void LockForFork() noexcept {
    for (Part& part : parts_) part.lock.LockForFork();
  }
  void UnlockAfterFork() noexcept {
    for (Part& part : parts_) part.lock.UnlockAfterFork();
  }

 private:
  std::array<Part, 32> parts_;
};

/// Null until they are made, with the first object that is given: who only looks something up needs no memory.
constinit std::atomic<HandleCounts*> theHandles = nullptr;

/// What the thread has locked while it forks.
thread_local constinit HandleCounts* lockedHere = nullptr;

/// Held while they are made.
constinit ForkLock making;

void LockForFork() noexcept {
  making.LockForFork();
  lockedHere = theHandles.load(std::memory_order_acquire);
  if (lockedHere != nullptr) lockedHere->LockForFork();
}

void UnlockAfterFork() noexcept {
  if (lockedHere != nullptr) lockedHere->UnlockAfterFork();
  making.UnlockAfterFork();
}

/// With the library, see WatchForks in platform/fork_locks.cpp.
[[gnu::constructor]] void WatchForks() noexcept { CallAtFork(&LockForFork, &UnlockAfterFork); }

// Not destroyed when the process ends: static objects of the host may still give back what they hold.
HandleCounts& Handles() {
  if (HandleCounts* const handles = theHandles.load(std::memory_order_acquire)) return *handles;
  const std::lock_guard lock(making);
  if (theHandles == nullptr) {
    WatchProcessEnd();
    theHandles = new HandleCounts;
  }
  return *theHandles;
}

/// Where the references to `handle` are counted; null where nothing was ever given.
HandleCounts::Part* PartOf(const tessaret_object* handle) noexcept {
  HandleCounts* const handles = theHandles.load(std::memory_order_acquire);
  return handles == nullptr ? nullptr : &handles->PartOf(handle);
}

[[gnu::destructor]] void GoWithTheLibrary() noexcept {
  if (DoesProcessEnd()) return;
  // A thread that forks meanwhile has them locked, and gives the locks back later: then they stay.
  const std::unique_lock held(making, std::try_to_lock);
  const HandleCounts* const handles = theHandles;
  // Who holds something still may come back.
  if (!held || handles == nullptr || !handles->IsEmpty()) return;
  theHandles = nullptr;
  delete handles;
}

}  // namespace

tessaret_object* GiveHandle(Ref<IDispatch> object) {
  if (!object) return nullptr;
  const auto* const handle = reinterpret_cast<const tessaret_object*>(object.Get());
  HandleCounts::Part& part = Handles().PartOf(handle);
  const std::lock_guard held(part.lock);
  ++part.counts[handle];
  return reinterpret_cast<tessaret_object*>(object.Detach());
}

Ref<IDispatch> HeldObject(const tessaret_object* handle) {
  HandleCounts::Part* const part = PartOf(handle);
  if (part == nullptr) return nullptr;
  const std::lock_guard held(part->lock);
  // Taken while the host's own reference cannot be given back.
  return Ref<IDispatch>(part->counts.contains(handle) ? ObjectAt(handle) : nullptr);
}

bool RetainHandle(const tessaret_object* handle) {
  HandleCounts::Part* const part = PartOf(handle);
  if (part == nullptr) return false;
  const std::lock_guard held(part->lock);
  const auto found = part->counts.find(handle);
  if (found == part->counts.end()) return false;
  ++found->second;
  ObjectAt(handle)->AddRef();
  return true;
}

bool ReleaseHandle(const tessaret_object* handle) {
  HandleCounts::Part* const part = PartOf(handle);
  if (part == nullptr) return false;
  {
    const std::lock_guard held(part->lock);
    const auto found = part->counts.find(handle);
    if (found == part->counts.end()) return false;
    if (--found->second == 0) part->counts.erase(found);
  }
  // Not under the lock: an object that dies may give others back.
  ObjectAt(handle)->Release();
  return true;
}

}  // namespace tessaret
