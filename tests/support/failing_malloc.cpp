#include "support/failing_malloc.h"

#include <cerrno>
#include <cstddef>

extern "C" {
// What the C library's own functions call, under the names that it exports for such as this.
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace tessaret::test {
namespace {

constinit thread_local std::uint64_t countdown = 0;  // 0: none fails
constinit thread_local bool happened = false;
constinit thread_local std::int64_t outstanding = 0;

bool Fails() {
  if (countdown == 0 || --countdown != 0) return false;
  happened = true;
  errno = ENOMEM;
  return true;
}

void* Counted(void* block) {
  if (block != nullptr) ++outstanding;
  return block;
}

}  // namespace

MallocFailure::MallocFailure(std::uint64_t nth) {
  happened = false;
  countdown = nth;
}

MallocFailure::~MallocFailure() { countdown = 0; }

bool MallocFailure::Happened() const { return happened; }

std::int64_t OutstandingBlocks() { return outstanding; }

}  // namespace tessaret::test

using tessaret::test::Counted;
using tessaret::test::Fails;

extern "C" {

void* malloc(std::size_t size) { return Fails() ? nullptr : Counted(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) {
  return Fails() ? nullptr : Counted(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) {
  if (Fails()) return nullptr;
  void* moved = __libc_realloc(block, size);
  if (block == nullptr) return Counted(moved);
  if (moved == nullptr && size == 0) --tessaret::test::outstanding;
  return moved;
}

void* memalign(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : Counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* made = memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

void free(void* block) {
  if (block != nullptr) --tessaret::test::outstanding;
  __libc_free(block);
}

}  // extern "C"
