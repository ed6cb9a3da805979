#include "core/vr_pool.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <new>
#include <utility>

#include "core/vr.h"
#include "platform/fork_locks.h"
#include "platform/thread_end.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TESSARET_PLAIN_VR_BLOCKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define TESSARET_PLAIN_VR_BLOCKS 1
#endif
#endif

namespace tessaret {

#ifdef TESSARET_PLAIN_VR_BLOCKS

void* TakeVrBlock() { return ::operator new(sizeof(VR)); }
void GiveVrBlock(void* block) noexcept { ::operator delete(block); }
void FreeVrBlocks() noexcept {}

#else

namespace {

/// What a free block holds.
struct FreeBlock {
  FreeBlock* next;       // in its list
  FreeBlock* nextBatch;  // of the first block of a list in the shared store
};
static_assert(sizeof(VR) >= sizeof(FreeBlock) && sizeof(VR) % alignof(FreeBlock) == 0);

constexpr std::uint32_t kBatch = 4096;
constexpr std::size_t kFirstSlab = std::size_t{64} * 1024;
constexpr std::size_t kLargestSlab = std::size_t{1024} * 1024;

struct SlabHead {
  SlabHead* next;
};
constexpr std::size_t kSlabHeadSize = 64;
// New memory that a thread gets at once: where each association has a thread, hundreds of them hold a few elements each.
constexpr std::size_t kPortion = 256 * sizeof(VR);

/// Full lists that any thread may take, and all memory that was ever taken, so that none of it is lost from sight.
struct Store {
  FreeBlock* batches = nullptr;
  SlabHead* slabs = nullptr;
  std::size_t nextSlab = kFirstSlab;
  std::uint8_t* fresh = nullptr;  // of the newest slab, in nobody's hands yet
  std::uint8_t* freshEnd = nullptr;
};
constinit Store store;

/// The blocks of one thread. Plain data, so that reaching it costs no more than an address.
struct Cache {
  FreeBlock* free = nullptr;
  std::uint32_t freeCount = kBatch;  // so that the first block that a thread frees leads to PassOn
  FreeBlock* spare =
      nullptr;  // a full list kept back, so that a thread on the edge of a batch does not go to the store
  std::uint8_t* fresh = nullptr;
  std::uint8_t* freshEnd = nullptr;
};
thread_local constinit Cache cache;

/// Set once the thread has handed its blocks on, or when that could not be arranged. Its cache then stays as it is when new, so that every further call takes
/// the slow way, where this is seen.
thread_local constinit bool gone = false;
thread_local constinit bool seenOff = false;

/// What is made and freed in a thread even later. Nobody would hand the blocks of one such thread on, so all of them share
/// these.
constinit Cache late;

void PutIntoStore(FreeBlock* batch) noexcept {
  if (batch == nullptr) return;
  const std::lock_guard lock(forkLocks.blocks);
  batch->nextBatch = store.batches;
  store.batches = batch;
}

/// Hands the lists of a thread that ends to the others. Unused fresh memory becomes blocks as well.
void LeaveThread() noexcept {
  for (; cache.fresh != cache.freshEnd; cache.fresh += sizeof(VR)) {
    cache.free = new (cache.fresh) FreeBlock{cache.free, nullptr};
  }
  PutIntoStore(cache.free);
  PutIntoStore(cache.spare);
  cache = {};
  gone = true;
}

/// A thread that only frees has lists to hand on as well. Where the system has no way left to see a thread off, nothing is
/// kept for it.
void SeeOffAtTheEndOfTheThread() noexcept {
  if (seenOff) return;
  seenOff = true;
  if (!CallAtThreadEnd(&LeaveThread)) gone = true;
}

void TakeSlab() {
  const std::size_t size = store.nextSlab;
  auto* slab = static_cast<std::uint8_t*>(::operator new(size));
  store.slabs = new (slab) SlabHead{store.slabs};
  store.nextSlab = std::min(size * 2, kLargestSlab);
  const std::size_t blocks = (size - kSlabHeadSize) / sizeof(VR);
  store.fresh = slab + kSlabHeadSize;
  store.freshEnd = store.fresh + blocks * sizeof(VR);
}

void TakeFresh(Cache& into) {
  if (store.fresh == store.freshEnd) TakeSlab();
  const auto left = static_cast<std::size_t>(store.freshEnd - store.fresh);
  into.fresh = store.fresh;
  into.freshEnd = into.fresh + std::min(left, kPortion);
  store.fresh = into.freshEnd;
}

void Refill(Cache& into) {
  if (into.spare != nullptr) {
    into.free = into.spare;
    into.freeCount = kBatch;
    into.spare = nullptr;
    return;
  }
  const std::lock_guard lock(forkLocks.blocks);
  if (store.batches == nullptr) {
    TakeFresh(into);
    return;
  }
  into.free = store.batches;
  store.batches = into.free->nextBatch;
  // A list from a thread that ended may be shorter or longer; the count only steers when it is passed on.
  into.freeCount = kBatch;
}

void PassOn(Cache& from) noexcept {
  PutIntoStore(from.spare);
  from.spare = from.free;
  from.free = nullptr;
  from.freeCount = 0;
}

/// Requires: the list is not empty.
void* TakeFromList(Cache& from) {
  FreeBlock* block = from.free;
  from.free = block->next;
  if (from.freeCount > 0) --from.freeCount;
  return block;
}

void PutIntoList(Cache& into, void* block) noexcept {
  into.free = new (block) FreeBlock{into.free, nullptr};
  ++into.freeCount;
}

void* TakeAny(Cache& from) {
  for (;;) {
    if (from.free != nullptr) return TakeFromList(from);
    if (from.fresh != from.freshEnd) {
      void* block = from.fresh;
      from.fresh += sizeof(VR);
      return block;
    }
    Refill(from);
  }
}

/// The ways of the few calls that the thread's list does not serve, apart, so that the others need no stack frame.
[[gnu::noinline]] void* TakeBeyondList() {
  SeeOffAtTheEndOfTheThread();
  if (gone) {
    const std::lock_guard lock(forkLocks.lateBlocks);
    return TakeAny(late);
  }
  return TakeAny(cache);
}

[[gnu::noinline]] void GiveToFullList(void* block) noexcept {
  SeeOffAtTheEndOfTheThread();
  if (gone) {
    const std::lock_guard lock(forkLocks.lateBlocks);
    if (late.freeCount >= kBatch) PassOn(late);
    return PutIntoList(late, block);
  }
  PassOn(cache);
  PutIntoList(cache, block);
}

}  // namespace

void* TakeVrBlock() {
  Cache& mine = cache;
  return mine.free == nullptr ? TakeBeyondList() : TakeFromList(mine);
}

void GiveVrBlock(void* block) noexcept {
  if (block == nullptr) return;
  Cache& mine = cache;
  if (mine.freeCount >= kBatch) return GiveToFullList(block);
  PutIntoList(mine, block);
}

void FreeVrBlocks() noexcept {
  cache = {};
  late = {};
  // A thread that forks meanwhile has it locked, and would meet a library that goes if it were waited for.
  const std::unique_lock lock(forkLocks.blocks, std::try_to_lock);
  store.batches = nullptr;
  store.nextSlab = kFirstSlab;
  store.fresh = store.freshEnd = nullptr;
  while (store.slabs != nullptr) ::operator delete(std::exchange(store.slabs, store.slabs->next));
}

#endif

}  // namespace tessaret
