// A file that lies in memory only and has a path all the same, for tests that load many small files.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

#include "support/bytes.h"

namespace tessaret::test {

class MemoryFile {
 public:
  MemoryFile() : descriptor_(::memfd_create("tessaret-test", MFD_CLOEXEC)) {
    if (descriptor_ < 0) throw std::runtime_error("no file in memory");
  }
  explicit MemoryFile(const Bytes& bytes) : MemoryFile() { Fill(bytes); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile() { ::close(descriptor_); }

  /// Replaces what is in it.
  void Fill(const Bytes& bytes) {
    const auto size = static_cast<off_t>(bytes.size());
    if (::ftruncate(descriptor_, 0) != 0 ||
        ::pwrite(descriptor_, bytes.data(), bytes.size(), 0) != size) {
      throw std::runtime_error("cannot fill a file in memory");
    }
  }
  /// Makes it as long as this, with zeros that take no room where nothing was written.
  void Resize(std::uint64_t size) {
    if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0)
      throw std::runtime_error("cannot resize");
  }
  [[nodiscard]] std::string Path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }
  [[nodiscard]] int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

}  // namespace tessaret::test
