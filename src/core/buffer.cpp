#include "core/buffer.h"

#include <algorithm>
#include <array>
#include <memory>

namespace tessaret {
namespace {

constexpr std::uint32_t kLargestLowLevelRead = 1024;
// What InSize and OutSize can count.
constexpr std::uint32_t kMostWaiting = std::numeric_limits<std::int32_t>::max();
// The size to which an overfull chunk is followed, whatever BreakSize says.
constexpr std::uint32_t kFollowingChunk = 32600;

void FreeChunks(Array<BufferSpace*>& chunks) {
  for (auto* node = chunks.First; node != nullptr; node = node->next) delete node->value;
  chunks.Clear();
}

void FreeFirstChunk(Array<BufferSpace*>& chunks) {
  delete chunks.First->value;
  chunks.RemoveAt(0);
}

std::uint32_t PositiveOr(std::int32_t size, std::uint32_t otherwise) {
  return size > 0 ? static_cast<std::uint32_t>(size) : otherwise;
}

}  // namespace

BufferSpace::BufferSpace(std::uint32_t size) : Size(size), External(0) {
  if (size != 0) Data = new std::uint8_t[size];
}

BufferSpace::~BufferSpace() {
  if (External == 0) delete[] Data;
}

Buffer::~Buffer() {
  FreeChunks(Incoming);
  FreeChunks(Outgoing);
}

std::int64_t Buffer::ReadBinary(void*, std::uint32_t) { return -1; }
int Buffer::SendBinary(const void*, std::uint32_t) { return 0; }
bool Buffer::IsEnd() { return false; }
std::int64_t Buffer::Total() { return -1; }
std::uint32_t Buffer::Available() { return static_cast<std::uint32_t>(std::max(InSize, 0)); }
std::uint64_t Buffer::SuppliesAtMost() { return std::numeric_limits<std::uint64_t>::max(); }

void Buffer::AppendIncoming(const void* data, std::uint32_t count) {
  auto chunk = std::make_unique<BufferSpace>(count);
  if (count != 0) std::memcpy(chunk->Data, data, count);
  Incoming.Add(chunk.get());
  chunk.release();
  InSize += static_cast<std::int32_t>(count);
}

void Buffer::DropIncoming() {
  FreeChunks(Incoming);
  InSize = 0;
}

bool Buffer::PullChunk(std::uint32_t most) {
  std::array<std::uint8_t, kLargestLowLevelRead> block;
  const std::uint32_t ask =
      std::min({most, kLargestLowLevelRead, kMostWaiting - Buffer::Available()});
  if (ask == 0) return false;
  std::int64_t got = 0;
  while (got == 0) got = ReadBinary(block.data(), ask);
  if (got < 0) return false;
  AppendIncoming(block.data(), static_cast<std::uint32_t>(std::min<std::int64_t>(got, ask)));
  return true;
}

std::int64_t Buffer::Read(void* data, std::uint32_t count) {
  // InSize could not count what such a request would have to gather.
  if (count > kMostWaiting) return 0;
  while (Buffer::Available() < count) {
    // Bytes that waited before a request that cannot be met stay for a smaller one.
    if (!PullChunk(PositiveOr(BreakSize, kLargestLowLevelRead))) return 0;
  }
  if (count == 0) return 0;
  TakeIncoming(static_cast<std::uint8_t*>(data), count);
  return 1;
}

void Buffer::TakeIncoming(std::uint8_t* to, std::uint32_t count) {
  while (count > 0) {
    BufferSpace& chunk = *Incoming.First->value;
    const std::uint32_t taken = std::min(count, chunk.Size - chunk.Index);
    if (to != nullptr && taken != 0) {
      std::memcpy(to, chunk.Data + chunk.Index, taken);
      to += taken;
    }
    chunk.Index += taken;
    InSize -= static_cast<std::int32_t>(taken);
    Position += taken;
    count -= taken;
    if (chunk.Index == chunk.Size) FreeFirstChunk(Incoming);
  }
}

bool Buffer::Read8(std::uint8_t* value) { return Read(value, 1) > 0; }

bool Buffer::Read16(std::uint16_t* value) {
  std::array<std::uint8_t, 2> bytes{};
  if (!Read8(&bytes[0]) || !Read8(&bytes[1])) return false;
  *value = InEndian == kBigEndian ? LoadBig16(bytes.data()) : LoadLittle16(bytes.data());
  return true;
}

bool Buffer::Read32(std::uint32_t* value) {
  std::array<std::uint8_t, 4> bytes{};
  for (std::uint8_t& byte : bytes) {
    if (!Read8(&byte)) return false;
  }
  *value = InEndian == kBigEndian ? LoadBig32(bytes.data()) : LoadLittle32(bytes.data());
  return true;
}

BufferSpace& Buffer::OpenChunk(std::uint32_t size) {
  auto chunk = std::make_unique<BufferSpace>(size);
  Outgoing.Add(chunk.get());
  return *chunk.release();
}

bool Buffer::WriteAcrossChunks(const void* data, std::uint32_t count) {
  // No write that stays within a chunk can bring OutSize to its end, since room for whole chunks is kept here.
  const std::uint64_t opened = std::max(PositiveOr(BreakSize, kFollowingChunk), kFollowingChunk);
  if (static_cast<std::uint64_t>(std::max(OutSize, 0)) + count + opened > kMostWaiting)
    throw std::bad_alloc();
  if (Outgoing.ListLength == 0) OpenChunk(PositiveOr(BreakSize, kFollowingChunk));
  const auto* from = static_cast<const std::uint8_t*>(data);
  while (count > 0) {
    BufferSpace& chunk = *Outgoing.Last->value;
    const std::uint32_t room = chunk.Size - chunk.Index;
    if (room == 0) {
      OpenChunk(kFollowingChunk);
      continue;
    }
    const std::uint32_t taken = std::min(room, count);
    std::memcpy(chunk.Data + chunk.Index, from, taken);
    chunk.Index += taken;
    OutSize += static_cast<std::int32_t>(taken);
    from += taken;
    count -= taken;
    if (taken == room) OpenChunk(PositiveOr(BreakSize, kFollowingChunk));
  }
  return true;
}

bool Buffer::Write16(std::uint16_t value) {
  std::array<std::uint8_t, 2> bytes;
  OutEndian == kBigEndian ? StoreBig16(bytes.data(), value) : StoreLittle16(bytes.data(), value);
  return Write(bytes.data(), 2);
}

bool Buffer::Write32(std::uint32_t value) {
  std::array<std::uint8_t, 4> bytes;
  OutEndian == kBigEndian ? StoreBig32(bytes.data(), value) : StoreLittle32(bytes.data(), value);
  return Write(bytes.data(), 4);
}

bool Buffer::WriteSwapped16(const void* data, std::uint32_t count) {
  const auto* from = static_cast<const std::uint8_t*>(data);
  for (; count >= 2; count -= 2, from += 2) Write16(LoadLittle16(from));
  return Write(from, count);
}

bool Buffer::WriteSwapped32(const void* data, std::uint32_t count) {
  const auto* from = static_cast<const std::uint8_t*>(data);
  for (; count >= 4; count -= 4, from += 4) Write32(LoadLittle32(from));
  return Write(from, count);
}

void Buffer::QueueShared(const void* data, std::uint32_t count) {
  if (static_cast<std::uint64_t>(std::max(OutSize, 0)) + count + kFollowingChunk > kMostWaiting)
    throw std::bad_alloc();
  BufferSpace& chunk = OpenChunk(0);
  chunk.External = 1;
  // Outgoing bytes are only read.
  chunk.Data = static_cast<std::uint8_t*>(const_cast<void*>(data));
  chunk.Size = count;
  chunk.Index = count;
  OutSize += static_cast<std::int32_t>(count);
}

bool Buffer::WriteLong(const void* data, std::uint32_t count, bool shared) {
  if (shared && count >= shareSize_) {
    QueueShared(data, count);
    return true;
  }
  if (count < directWriteSize_) return Write(data, count);
  return Flush() && SendBinary(data, count) != 0;
}

bool Buffer::Flush() {
  while (Outgoing.ListLength != 0) {
    const BufferSpace& chunk = *Outgoing.First->value;
    if (chunk.Index != 0 && SendBinary(chunk.Data, chunk.Index) == 0) return false;
    OutSize -= static_cast<std::int32_t>(chunk.Index);
    FreeFirstChunk(Outgoing);
  }
  OutSize = 0;
  return true;
}

bool Buffer::Fill(std::uint32_t count) {
  if (count > kMostWaiting - Buffer::Available()) return false;
  const std::int64_t target = std::int64_t{InSize} + count;
  SetBreakSize(static_cast<std::int32_t>(count));
  while (InSize < target && !IsEnd()) {
    SetBreakSize(static_cast<std::int32_t>(target - InSize));
    if (!PullChunk(static_cast<std::uint32_t>(BreakSize))) return false;
  }
  return SetBreakSize(kDefaultBreakSize);
}

bool Buffer::SetBreakSize(std::int32_t size) {
  BreakSize = size;
  return true;
}

bool Buffer::SetInEndian(std::int32_t endian) {
  InEndian = endian;
  return true;
}

bool Buffer::SetOutEndian(std::int32_t endian) {
  OutEndian = endian;
  return true;
}

}  // namespace tessaret
