#include "core/memory_buffer.h"

#include <algorithm>
#include <memory>
#include <typeinfo>

namespace tessaret {
namespace {

constexpr std::uint32_t kLargestChunk = 0x7FFFFFFF;

}  // namespace

MemoryBuffer::MemoryBuffer(std::uint8_t* source, std::uint32_t size, bool ownsSource,
                           std::int32_t inEndian)
    : Source(source),
      SourceSize(source == nullptr ? 0 : size),
      SourceIndex(std::min(SourceSize, kLargestChunk)),
      OwnsSource(ownsSource ? 1 : 0) {
  InEndian = inEndian;
  auto chunk = std::make_unique<BufferSpace>();
  chunk->Size = SourceIndex;
  chunk->Data = Source;
  Incoming.Add(chunk.get());
  chunk.release();
  InSize = static_cast<std::int32_t>(SourceIndex);
}

MemoryBuffer::~MemoryBuffer() {
  if (OwnsSource != 0) delete[] Source;
}

std::int64_t MemoryBuffer::ReadBinary(void* data, std::uint32_t count) {
  if (SourceIndex >= SourceSize) return -1;
  const std::uint32_t taken = std::min(count, SourceSize - SourceIndex);
  if (taken != 0) std::memcpy(data, Source + SourceIndex, taken);
  SourceIndex += taken;
  return taken;
}

int MemoryBuffer::SendBinary(const void*, std::uint32_t) { return 0; }

const std::uint8_t* MemoryBuffer::LendBlock() const {
  const bool whole = Incoming.ListLength == 1 && Incoming.First->value->Data == Source &&
                     SourceIndex == SourceSize;
  return whole && typeid(*this) == typeid(MemoryBuffer) ? Source + Incoming.First->value->Index
                                                        : nullptr;
}

std::uint64_t MemoryBuffer::SuppliesAtMost() {
  return std::uint64_t{Available()} + (SourceSize - std::min(SourceIndex, SourceSize));
}

}  // namespace tessaret
