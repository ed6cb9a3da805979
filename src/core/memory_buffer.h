// A block of memory as a stream, read in place.
#pragma once

#include "core/linked_buffer.h"

namespace tessaret {

class MemoryBuffer : public LinkedBuffer {
 public:
  /// Enters the whole block as one external chunk, readable at once. With `ownsSource` the block comes from
  /// `new std::uint8_t[]` and is freed by the destructor; otherwise it is the caller's and must outlive this.
  /// Of a block of 2^31 bytes or more the chunk is the first 2^31 - 1, since InSize counts them; the rest comes through
  /// ReadBinary. Null is an empty block. Throws std::bad_alloc, with the block still the caller's.
  MemoryBuffer(std::uint8_t* source, std::uint32_t size, bool ownsSource,
               std::int32_t inEndian = kLittleEndian);
  ~MemoryBuffer() override;

  /// Copies from Source at SourceIndex, a short count at the end; -1 when there is nothing left, which the constructor
  /// has brought about already for all but the longest blocks.
  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  /// Does nothing: memory is not written to. 0.
  int SendBinary(const void* data, std::uint32_t count) override;
  std::uint64_t SuppliesAtMost() override;

  /// What waits, for a reader that takes it in place; null when some of it has been moved into other chunks, or when a
  /// descendant may read in its own way.
  const std::uint8_t* LendBlock() const;

  std::uint8_t* Source;
  std::uint32_t SourceSize;
  std::uint32_t SourceIndex;
  std::uint32_t OwnsSource;  // not 0: Source is freed here
};

}  // namespace tessaret
