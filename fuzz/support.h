// What the targets over data sets have in common: streams of kinds that the library does not have, the data dictionary,
// and equality of objects. A breach says in words what it is and ends the process, which is a finding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "core/data_set_coder.h"
#include "core/file_buffer.h"
#include "core/memory_buffer.h"

namespace tessaret::fuzz {

/// Ends the process with `claim` on standard error.
[[noreturn]] void EndWith(const char* claim);

/// Ends the process with `claim` on standard error unless it holds.
inline void Require(bool holds, const char* claim) {
  if (!holds) EndWith(claim);
}

/// The standard's data dictionary, or a few lines of it where the file is not there. Loaded once.
const RTC* StandardDictionary();

/// The first byte of an input chooses among ways to treat the rest.
struct Input {
  Input(const std::uint8_t* data, std::size_t size);
  [[nodiscard]] bool Option(unsigned bit) const { return (options >> bit & 1) != 0; }

  unsigned options = 0;
  std::span<const std::uint8_t> bytes;
};

/// A file and a block that have to be read through the stream's operations, because a descendant may read in its own way.
class PlainFileBuffer : public FileBuffer {};
class PlainMemoryBuffer : public MemoryBuffer {
 public:
  using MemoryBuffer::MemoryBuffer;
};

/// A block that states how much it holds.
class TotallingBuffer : public PlainMemoryBuffer {
 public:
  using PlainMemoryBuffer::PlainMemoryBuffer;
  std::int64_t Total() override { return SourceSize; }
};

/// Bytes that come at most `most` at a time. Unless `knowsSupply`, the stream cannot say how many there will be.
class DrippingBuffer : public Buffer {
 public:
  DrippingBuffer(std::span<const std::uint8_t> bytes, std::size_t most, bool knowsSupply)
      : bytes_(bytes), most_(most), knowsSupply_(knowsSupply) {}
  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  bool IsEnd() override { return bytes_.empty(); }
  std::uint32_t Available() override;
  std::uint64_t SuppliesAtMost() override;

 private:
  std::span<const std::uint8_t> bytes_;
  std::size_t most_;
  bool knowsSupply_;
};

/// Keeps what is written. Its chunks are small, so that what is written crosses from one into the next.
class CollectingBuffer : public Buffer {
 public:
  CollectingBuffer() { SetBreakSize(100); }
  int SendBinary(const void* data, std::uint32_t count) override;
  const std::vector<std::uint8_t>& Written();

 private:
  std::vector<std::uint8_t> bytes_;
};

/// A file that lies in memory, under a path. One for the whole run.
class MemoryFile {
 public:
  MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();
  void Hold(std::span<const std::uint8_t> bytes);
  [[nodiscard]] const char* Path() const { return path_; }

 private:
  int descriptor_;
  char path_[32];
};

/// The block as a stream. It is not written to.
inline std::uint8_t* BlockOf(std::span<const std::uint8_t> bytes) {
  return const_cast<std::uint8_t*>(bytes.data());
}

/// The same elements with the same tags, lengths, types, positions, bytes and items, to any depth.
void RequireSame(const DICOMObject& a, const DICOMObject& b);
void RequireSame(const ParseStop& a, const ParseStop& b);

/// What a reader leaves that steps over pixel data with more than `longest` bytes is what one leaves that reads it: the same in
/// everything but the bytes of those values, of which the first are the same.
void RequireSameBesides(const DICOMObject& whole, const DICOMObject& stepped,
                        std::uint32_t longest);
void RequireSame(std::span<const ParseOddity> a, std::span<const ParseOddity> b);

/// No element claims what its input cannot have held: all values together are no longer than it.
void RequireWithin(const DICOMObject& object, std::size_t inputSize);

}  // namespace tessaret::fuzz
