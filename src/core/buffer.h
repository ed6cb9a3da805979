// The one abstraction of a byte stream beneath everything DICOM: a file, a block of memory, a socket, a nested element.
// Incoming bytes wait in chunks until somebody reads them, outgoing bytes wait in chunks until a flush; descendants
// differ in where bytes really come from and go to. The destructor never flushes. One thread at a time.
#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

#include "base/array.h"
#include "base/byte_order.h"

namespace tessaret {

/// One chunk of bytes.
struct BufferSpace {
  BufferSpace() = default;
  /// `size` bytes of its own. Throws std::bad_alloc.
  explicit BufferSpace(std::uint32_t size);
  BufferSpace(const BufferSpace&) = delete;
  BufferSpace& operator=(const BufferSpace&) = delete;
  ~BufferSpace();

  std::uint32_t Size = 0;      // capacity in bytes
  std::uint32_t Index = 0;     // incoming: bytes consumed; outgoing: bytes filled
  std::uint32_t External = 1;  // not 0: Data belongs to somebody else
  std::uint8_t* Data = nullptr;
};

inline constexpr std::int32_t kDefaultBreakSize = 32600;
inline constexpr std::int32_t kLittleEndian = 1;
inline constexpr std::int32_t kBigEndian = 2;

class Buffer {
 public:
  Buffer() = default;
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  /// Frees all chunks of both directions, but not the bytes of external ones.
  virtual ~Buffer();

  /// Low-level read of up to `count` bytes. The number read; 0 when nothing has come yet and the caller is to call
  /// again; -1 at the end or on an error, which is what a bare Buffer answers.
  virtual std::int64_t ReadBinary(void* data, std::uint32_t count);
  /// Low-level write of `count` bytes. Not 0 on success; a bare Buffer answers 0.
  virtual int SendBinary(const void* data, std::uint32_t count);
  /// True when no more bytes will ever come.
  virtual bool IsEnd();
  /// How many bytes the stream holds in all, -1 when it does not say. The readers check lengths against it.
  virtual std::int64_t Total();
  /// Reads `count` bytes out of the chunks, pulling more through ReadBinary. 1 on success; 0 when the stream ended
  /// first, with what has come still waiting, for a `count` of 0, and for one of 2^31 or more, which cannot wait at
  /// once.
  virtual std::int64_t Read(void* data, std::uint32_t count);
  /// How many bytes can be read now.
  virtual std::uint32_t Available();
  /// The most that this stream can still supply, when it knows; otherwise the largest number. No promise that as much
  /// will come: it lets a reader refuse a length that cannot be true before memory is taken for it.
  virtual std::uint64_t SuppliesAtMost();

  /// Byte, and numbers in the order of InEndian, one byte after the other. False when the stream ended.
  bool Read8(std::uint8_t* value);
  bool Read16(std::uint16_t* value);
  bool Read32(std::uint32_t* value);

  /// Appends bytes to the outgoing chunks. True. Throws std::bad_alloc, also when more would wait than OutSize can
  /// count with a chunk to spare: a message is never cut short.
  bool Write(const void* data, std::uint32_t count) {
    BufferSpace* last = Outgoing.Last == nullptr ? nullptr : Outgoing.Last->value;
    if (last == nullptr || last->Size - last->Index <= count) return WriteAcrossChunks(data, count);
    if (count != 0) std::memcpy(last->Data + last->Index, data, count);
    last->Index += count;
    OutSize += static_cast<std::int32_t>(count);
    return true;
  }
  /// Numbers in the order of OutEndian.
  bool Write8(std::uint8_t value) { return Write(&value, 1); }
  bool Write16(std::uint16_t value);
  bool Write32(std::uint32_t value);
  /// `count` bytes as 16 or 32 bit host numbers in the order of OutEndian; a rest that makes no whole number goes as it
  /// is.
  bool WriteSwapped16(const void* data, std::uint32_t count);
  bool WriteSwapped32(const void* data, std::uint32_t count);

  /// Writes a long value. A stream to a file sends what waits and then the bytes from where they lie; a message queues bytes that
  /// are `shared`, and so stay where they are until it is sent, without a copy; every other stream queues them as Write does. False
  /// when a chunk could not be sent.
  bool WriteLong(const void* data, std::uint32_t count, bool shared = false);

  /// Sends what waits when this stream goes to a file and much is waiting; otherwise nothing. False when that failed.
  bool FlushIfMuchWaits() {
    return OutSize < kMuchWaiting || directWriteSize_ == kNeverDirect || Flush();
  }

  /// Hands the outgoing chunks to SendBinary and frees them. False at the first one that could not be sent, which stays
  /// with those behind it.
  bool Flush();
  /// Makes at least `count` further bytes wait in Incoming, or all that come before the end. False when ReadBinary
  /// answered -1, with what came until then waiting, and at once when more would wait than InSize can count.
  bool Fill(std::uint32_t count);

  /// Takes `count` bytes that wait in Incoming out of their chunks, into `to` or, with null, nowhere.
  /// Requires: count <= InSize.
  void TakeIncoming(std::uint8_t* to, std::uint32_t count);

  bool SetBreakSize(std::int32_t size);
  bool SetInEndian(std::int32_t endian);
  bool SetOutEndian(std::int32_t endian);

  std::int32_t BreakSize =
      kDefaultBreakSize;  // size of the outgoing chunk to open, limit of one low-level read
  std::int32_t InEndian = kLittleEndian;
  std::int32_t OutEndian = kLittleEndian;
  std::int32_t InSize = 0;     // bytes waiting in Incoming
  std::int32_t OutSize = 0;    // bytes waiting in Outgoing
  std::uint32_t Position = 0;  // bytes consumed by Read, modulo 2^32
  Array<BufferSpace*> Incoming;
  Array<BufferSpace*> Outgoing;

 protected:
  static constexpr std::uint32_t kNeverDirect = std::numeric_limits<std::uint32_t>::max();

  /// Values at least this long go straight to SendBinary. Set by streams for which that is no visible difference.
  std::uint32_t directWriteSize_ = kNeverDirect;
  /// Shared values at least this long are queued where they lie. Set by streams that are flushed while those are there.
  std::uint32_t shareSize_ = kNeverDirect;

  /// Appends `count` bytes as a chunk of their own to Incoming.
  void AppendIncoming(const void* data, std::uint32_t count);
  /// Drops the chunks that wait to be read.
  void DropIncoming();

 private:
  // What may wait for a file before it is sent, so that memory does not grow with the object.
  static constexpr std::int32_t kMuchWaiting = 1 << 20;

  bool WriteAcrossChunks(const void* data, std::uint32_t count);
  BufferSpace& OpenChunk(std::uint32_t size);
  void QueueShared(const void* data, std::uint32_t count);
  /// Reads one chunk of at most `most` bytes through ReadBinary. False at the end.
  bool PullChunk(std::uint32_t most);
};

}  // namespace tessaret
