#include "net/p_data.h"

#include <algorithm>
#include <array>
#include <new>

#include "core/dump.h"
#include "core/trace.h"
#include "net/pdu_service.h"

namespace tessaret {
namespace {

// Length of the PDV, identifier and header stand before its bytes; the last two count as part of it.
constexpr std::uint32_t kPdvHeadBytes = 6;
constexpr std::uint32_t kPdvOwnBytes = 2;
constexpr std::uint32_t kPduHeadBytes = 6;

// What is gathered before it goes, in as many calls of the system as the stream has chunks for it.
constexpr std::int32_t kQueuedBytes = 1 << 16;

constexpr std::uint32_t kFirstRoom = 1 << 13;
// Room that is kept for the next message.
constexpr std::uint32_t kKeptRoom = 1 << 16;
// Memory grows with what has come: a PDV is read in portions.
constexpr std::uint32_t kPortion = 1 << 20;

}  // namespace

bool PDataTF::Write(PDU_Service& pdu) { return Queue(pdu) && pdu.Flush(); }

bool PDataTF::Queue(PDU_Service& pdu) {
  SetDataDumpFromEnvironment();
  Link = &pdu;
  VRBuffer.Link = &pdu;
  const std::uint32_t readLength = Length;
  bool isSent = true;
  while (isSent && VRBuffer.OutSize > 0) {
    const auto left = static_cast<std::uint32_t>(VRBuffer.OutSize);
    const std::uint32_t size = std::min(left, kFragmentBytes);
    MessageControl =
        size == left ? MessageControl | kLastFragment : MessageControl & kCommandFragment;
    isSent = QueueFragment(pdu, size) && (pdu.OutSize < kQueuedBytes || pdu.Flush());
  }
  Length = readLength;
  return isSent;
}

bool PDataTF::QueueFragment(PDU_Service& pdu, std::uint32_t size) {
  Length = size + kPdvHeadBytes;
  PDVLength = size + kPdvOwnBytes;
  std::array<std::uint8_t, kPduHeadBytes + kPdvHeadBytes> head{ItemType};
  StoreBig32(&head[2], Length);
  StoreBig32(&head[6], PDVLength);
  head[10] = MessagePresentationContextID;
  head[11] = MessageControl;
  if (IsDumping(kDumpData)) TraceFragment(head, size);
  if (!pdu.Write(head.data(), static_cast<std::uint32_t>(head.size()))) return false;
  while (size != 0) {
    BufferSpace& chunk = *VRBuffer.Outgoing.First->value;
    const std::uint32_t piece = std::min(size, chunk.Index - sentOfChunk_);
    const std::uint8_t* from = chunk.Data + sentOfChunk_;
    if (!pdu.Write(from, piece)) return false;
    sentOfChunk_ += piece;
    size -= piece;
    VRBuffer.OutSize -= static_cast<std::int32_t>(piece);
    if (sentOfChunk_ != chunk.Index) continue;
    sentOfChunk_ = 0;
    delete &chunk;
    VRBuffer.Outgoing.RemoveAt(0);
  }
  return true;
}

void PDataTF::TraceFragment(std::span<const std::uint8_t> head, std::uint32_t size) const {
  AppendToDump("WRITING PDATA Header\n");
  DumpHex(head.data(), head.size());
  // A trace may fail for nothing, want of memory included.
  std::array<std::uint8_t, kFragmentBytes> bytes;
  std::uint32_t count = 0;
  std::uint32_t skipped = sentOfChunk_;
  for (const auto* node = VRBuffer.Outgoing.First; count < size; node = node->next) {
    const BufferSpace& chunk = *node->value;
    const std::uint32_t piece = std::min(size - count, chunk.Index - skipped);
    std::copy_n(chunk.Data + skipped, piece, &bytes[count]);
    count += piece;
    skipped = 0;
  }
  DumpHex(bytes.data(), count);
}

bool PDataTF::ReadDynamic(PDU_Service& pdu) {
  Link = &pdu;
  VRBuffer.Link = &pdu;
  MsgStatus = 0;
  if (isWhole_) DropMessage();
  if (Length == 0) {
    if (!pdu.Read8(&Reserved1) || !pdu.Read32(&Length)) return false;
    if (Length > kMostMessageBytes) return FailToRead(Length);
  }
  while (Length != 0) {
    std::array<std::uint8_t, kPdvHeadBytes> head;
    if (Length < head.size() || pdu.Read(head.data(), kPdvHeadBytes) <= 0) {
      return FailToRead(kPdvHeadBytes);
    }
    PDVLength = LoadBig32(head.data());
    PresentationContextID = head[4];
    MsgHeader = head[5];
    if (PDVLength < kPdvOwnBytes || PDVLength > Length - 4) return FailToRead(PDVLength);
    if (!ReadFragment(pdu, PDVLength - kPdvOwnBytes)) return FailToRead(PDVLength - kPdvOwnBytes);
    Length -= PDVLength + 4;
    MessagePresentationContextID = PresentationContextID;
    if ((MsgHeader & kLastFragment) != 0) {
      MsgStatus = 1;
      EnterMessage();
      return true;
    }
  }
  return true;
}

bool PDataTF::FailToRead(std::uint32_t count) {
  DumpTrace(kDumpData, "ERROR Reading %d BYTES in PDataTF::ReadDynamic\n", static_cast<int>(count));
  return false;
}

bool PDataTF::ReadFragment(PDU_Service& pdu, std::uint32_t size) {
  if (receivedSize_ > MostBytes || size > MostBytes - receivedSize_) return false;
  while (size != 0) {
    const std::uint32_t portion = std::min(size, kPortion);
    std::uint8_t* to = Grow(portion);
    if (pdu.Read(to, portion) <= 0) return false;
    if (IsDumping(kDumpData)) DumpHex(to, portion);
    receivedSize_ += portion;
    size -= portion;
  }
  return true;
}

std::uint8_t* PDataTF::Grow(std::uint32_t count) {
  const std::uint32_t needed = receivedSize_ + count;
  if (needed > receivedRoom_) {
    const std::uint64_t room =
        std::clamp<std::uint64_t>(std::uint64_t{receivedRoom_} * 2, kFirstRoom, kMostMessageBytes);
    const std::uint64_t taken = std::max<std::uint64_t>(room, needed);
    // The system moves large blocks without copying them.
    auto* grown = static_cast<std::uint8_t*>(std::realloc(received_.get(), taken));
    if (grown == nullptr) throw std::bad_alloc();
    static_cast<void>(received_.release());
    received_.reset(grown);
    receivedRoom_ = static_cast<std::uint32_t>(taken);
  }
  return received_.get() + receivedSize_;
}

void PDataTF::EnterMessage() {
  isWhole_ = true;
  if (receivedSize_ == 0) return;
  auto chunk = std::make_unique<BufferSpace>();
  chunk->Size = receivedSize_;
  chunk->Data = received_.get();
  VRBuffer.Incoming.Add(chunk.get());
  chunk.release();
  VRBuffer.InSize = static_cast<std::int32_t>(receivedSize_);
}

void PDataTF::DropMessage() {
  VRBuffer.TakeIncoming(nullptr, VRBuffer.Available());
  isWhole_ = false;
  receivedSize_ = 0;
  if (receivedRoom_ <= kKeptRoom) return;
  received_.reset();
  receivedRoom_ = 0;
}

void PDataTF::Reset() {
  DropMessage();
  DropOutgoing();
  Length = 0;
  MsgStatus = 0;
  MessagePresentationContextID = 0;
}

void PDataTF::DropOutgoing() {
  while (VRBuffer.Outgoing.ListLength != 0) {
    delete VRBuffer.Outgoing.First->value;
    VRBuffer.Outgoing.RemoveAt(0);
  }
  VRBuffer.OutSize = 0;
  sentOfChunk_ = 0;
}

}  // namespace tessaret
