#include "platform/large_pages.h"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

namespace tessaret {
namespace {

constexpr std::uintptr_t kLargePage = 2u << 20;
constexpr std::size_t kWorthwhile = 4u << 20;

}  // namespace

void PreferLargePages(void* block, std::size_t size) noexcept {
  if (size < kWorthwhile) return;
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t begin = (address + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t end = (address + size) & ~(kLargePage - 1);
  if (end <= begin) return;
  const int before = errno;
  ::madvise(static_cast<char*>(block) + (begin - address), end - begin, MADV_HUGEPAGE);
  errno = before;
}

}  // namespace tessaret
