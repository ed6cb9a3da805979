#include "component/object_count.h"

#include <atomic>

namespace tessaret {
namespace {

constinit std::atomic<std::int64_t> objects = 0;
constinit std::atomic<std::int64_t> locks = 0;

}  // namespace

void CountObject() noexcept { objects.fetch_add(1, std::memory_order_relaxed); }
void UncountObject() noexcept { objects.fetch_sub(1, std::memory_order_release); }
std::int64_t ObjectCount() noexcept { return objects.load(std::memory_order_acquire); }

void LockLibrary() noexcept { ++locks; }

void UnlockLibrary() noexcept {
  // One unlock too many must not open the library for those who hold a lock.
  std::int64_t held = locks.load();
  while (held > 0 && !locks.compare_exchange_weak(held, held - 1)) {
  }
}

bool MayUnload() noexcept { return ObjectCount() == 0 && locks.load() == 0; }

}  // namespace tessaret
