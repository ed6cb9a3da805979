#include "support/allocation_failure.h"

#include <malloc.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tessaret::test {
namespace {

struct Tally {
  std::uint64_t asked = 0;
  std::uint64_t taken = 0;
  std::uint64_t freed = 0;
  std::size_t largest = 0;
  std::int64_t bytes = 0;
  std::int64_t mostBytes = 0;
  std::uint64_t untilFailure =
      0;  // allocations to go, the failing one included; 0: none is to fail
  bool happened = false;
};

constinit thread_local Tally tally;

bool Refused(std::size_t size) {
  ++tally.asked;
  tally.largest = std::max(tally.largest, size);
  if (tally.untilFailure == 0 || --tally.untilFailure > 0) return false;
  tally.happened = true;
  errno = ENOMEM;  // as malloc leaves it
  return true;
}

std::int64_t RoomOf(void* block) { return static_cast<std::int64_t>(::malloc_usable_size(block)); }

void* Counted(void* block) noexcept {
  if (block == nullptr) return nullptr;
  ++tally.taken;
  tally.bytes += RoomOf(block);
  tally.mostBytes = std::max(tally.mostBytes, tally.bytes);
  return block;
}

void* Take(std::size_t size) noexcept {
  return Refused(size) ? nullptr : Counted(std::malloc(std::max<std::size_t>(size, 1)));
}

void* Take(std::size_t size, std::align_val_t alignment) noexcept {
  if (Refused(size)) return nullptr;
  const auto boundary = static_cast<std::size_t>(alignment);
  if (size > SIZE_MAX - boundary) return nullptr;
  // aligned_alloc asks for a whole multiple of the alignment.
  const std::size_t blocks = (std::max<std::size_t>(size, 1) + boundary - 1) / boundary;
  return Counted(std::aligned_alloc(boundary, blocks * boundary));
}

void* OrThrow(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void Give(void* block) noexcept {
  if (block == nullptr) return;
  ++tally.freed;
  tally.bytes -= RoomOf(block);
  std::free(block);
}

}  // namespace

AllocationFailure::AllocationFailure(std::uint64_t nth) {
  tally.happened = false;
  tally.untilFailure = nth;
}

AllocationFailure::~AllocationFailure() { tally.untilFailure = 0; }

bool AllocationFailure::Happened() const { return tally.happened; }

AllocationWatch::AllocationWatch()
    : askedBefore_(tally.asked),
      takenBefore_(tally.taken),
      freedBefore_(tally.freed),
      bytesBefore_(tally.bytes) {
  tally.largest = 0;
  tally.mostBytes = tally.bytes;
}

std::uint64_t AllocationWatch::Count() const { return tally.asked - askedBefore_; }

std::int64_t AllocationWatch::Outstanding() const {
  return static_cast<std::int64_t>(tally.taken - takenBefore_) -
         static_cast<std::int64_t>(tally.freed - freedBefore_);
}

std::int64_t AllocationWatch::MostBytes() const { return tally.mostBytes - bytesBefore_; }

std::int64_t AllocationWatch::Bytes() const { return tally.bytes - bytesBefore_; }

std::size_t AllocationWatch::LargestRequest() const { return tally.largest; }

}  // namespace tessaret::test

using tessaret::test::Give;
using tessaret::test::OrThrow;
using tessaret::test::Take;

void* operator new(std::size_t size) { return OrThrow(Take(size)); }
void* operator new[](std::size_t size) { return OrThrow(Take(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return OrThrow(Take(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return OrThrow(Take(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Take(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return Take(size, alignment);
}

void operator delete(void* block) noexcept { Give(block); }
void operator delete[](void* block) noexcept { Give(block); }
void operator delete(void* block, std::size_t) noexcept { Give(block); }
void operator delete[](void* block, std::size_t) noexcept { Give(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Give(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Give(block); }
void operator delete(void* block, std::align_val_t) noexcept { Give(block); }
void operator delete[](void* block, std::align_val_t) noexcept { Give(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Give(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { Give(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { Give(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
  Give(block);
}
