// Streams of the kinds that the library itself does not have: such as read in their own way, give their bytes in small pieces,
// state their size, or keep what is written. A reader takes none of them for a file or a block that it can read in place.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/file_buffer.h"
#include "core/memory_buffer.h"
#include "support/bytes.h"

namespace tessaret::test {

/// A block of memory that has to be read through the stream's operations.
class PlainMemoryBuffer : public MemoryBuffer {
 public:
  using MemoryBuffer::MemoryBuffer;
};

/// A file that has to be read through the stream's operations.
class PlainFileBuffer : public FileBuffer {};

/// A file that gives at most `most` bytes a read.
class DrippingFileBuffer : public FileBuffer {
 public:
  explicit DrippingFileBuffer(std::uint32_t most = 1) : most_(most) {}
  std::int64_t ReadBinary(void* data, std::uint32_t count) override {
    return FileBuffer::ReadBinary(data, std::min(count, most_));
  }

 private:
  std::uint32_t most_;
};

/// Bytes that come as from a peer: at most `most` at a time, after an answer that nothing has come yet. Knows nothing about its
/// size unless told.
class DrippingBuffer : public Buffer {
 public:
  explicit DrippingBuffer(Bytes bytes, std::uint32_t most = 1)
      : bytes_(std::move(bytes)), most_(most) {}

  std::int64_t ReadBinary(void* data, std::uint32_t count) override {
    if (at_ == bytes_.size()) return -1;
    waited_ = !waited_;
    if (waited_) return 0;
    const std::size_t given = std::min<std::size_t>({count, most_, bytes_.size() - at_});
    std::memcpy(data, bytes_.data() + at_, given);
    at_ += given;
    return static_cast<std::int64_t>(given);
  }
  bool IsEnd() override { return at_ == bytes_.size(); }
  std::uint32_t Available() override {
    return static_cast<std::uint32_t>(bytes_.size() - at_) + Buffer::Available();
  }

 private:
  Bytes bytes_;
  std::uint32_t most_;
  std::size_t at_ = 0;
  bool waited_ = false;
};

/// A block of memory that states a total.
class TotallingBuffer : public MemoryBuffer {
 public:
  TotallingBuffer(Bytes& bytes, std::int64_t total)
      : MemoryBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false),
        total_(total) {}
  std::int64_t Total() override { return total_; }

 private:
  std::int64_t total_;
};

/// Keeps what is written.
class CollectingBuffer : public Buffer {
 public:
  int SendBinary(const void* data, std::uint32_t count) override {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    sent_.insert(sent_.end(), bytes, bytes + count);
    return 1;
  }
  /// All that was written, flushed.
  const Bytes& Written() {
    Flush();
    return sent_;
  }

 private:
  Bytes sent_;
};

}  // namespace tessaret::test
