// A block of memory behind whose last byte nothing may be touched: in any build that ends the process.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

namespace tessaret::test {

class GuardedBlock {
 public:
  /// Room for `most` bytes.
  explicit GuardedBlock(std::size_t most) {
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    room_ = (most + page - 1) / page * page;
    mappedSize_ = room_ + page;
    void* mapped =
        ::mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    mapped_ = static_cast<std::uint8_t*>(mapped);
    if (::mprotect(mapped_ + room_, page, PROT_NONE) != 0) throw std::bad_alloc();
  }
  GuardedBlock(const GuardedBlock&) = delete;
  GuardedBlock& operator=(const GuardedBlock&) = delete;
  ~GuardedBlock() { ::munmap(mapped_, mappedSize_); }

  /// Puts the bytes at the end. Where the first of them lies, until the next call. Requires: there is room for them.
  std::uint8_t* Put(const std::uint8_t* bytes, std::size_t count) {
    std::uint8_t* const at = mapped_ + room_ - count;
    std::copy_n(bytes, count, at);
    return at;
  }

 private:
  std::size_t room_ = 0;
  std::size_t mappedSize_ = 0;
  std::uint8_t* mapped_ = nullptr;
};

}  // namespace tessaret::test
