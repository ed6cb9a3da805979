#include "net/presentation_context.h"

#include "net/identifiers.h"
#include "net/pdu_trace.h"

namespace tessaret {
namespace {

constexpr std::uint32_t kHeadBytes = 4;
constexpr std::uint32_t kHeadBytesBehindType = 3;
// The identifier and three bytes beside it.
constexpr std::uint32_t kOwnBytes = 4;

void Trace(const PresentationContext& item, bool isReading) {
  pdu_trace::Start(isReading, "Presentation Context (0x20)", item.ItemType);
  pdu_trace::Head(3, item.Reserved1, item.Length);
  pdu_trace::Field(3, "Presentation Context ID", 1, item.PresentationContextID);
  pdu_trace::Field(3, "Reserved", 1, item.Reserved2);
  pdu_trace::Field(3, "Reserved", 1, item.Reserved3);
  pdu_trace::Field(3, "Reserved", 1, item.Reserved4);
}

void Trace(const PresentationContextAccept& item, bool isReading) {
  pdu_trace::Start(isReading, "Presentation Context Accept (0x21)", item.ItemType);
  pdu_trace::Head(3, item.Reserved1, item.Length);
  pdu_trace::Field(3, "Presentation Context ID", 1, item.PresentationContextID);
  pdu_trace::Field(3, "Reserved", 1, item.Reserved2);
  pdu_trace::Field(3, "Result", 1, item.Result);
  pdu_trace::Field(3, "Reserved", 1, item.Reserved4);
}

}  // namespace

PresentationContext::PresentationContext()
    : PresentationContextID(static_cast<std::uint8_t>(TakeOddIdentifier())) {}

std::uint32_t PresentationContext::Size() {
  std::uint32_t size = kOwnBytes + AbstractSyntax.Size();
  for (TransferSyntax syntax : TransferSyntaxes) size += syntax.Size();
  Length = static_cast<std::uint16_t>(size);
  return kHeadBytes + size;
}

bool PresentationContext::Write(Buffer& buffer) {
  if (Size() > kMostItemBytes) return false;
  Trace(*this, false);
  bool isWritten = buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
                   buffer.Write8(PresentationContextID) && buffer.Write8(Reserved2) &&
                   buffer.Write8(Reserved3) && buffer.Write8(Reserved4) &&
                   AbstractSyntax.Write(buffer);
  for (TransferSyntax syntax : TransferSyntaxes) isWritten = isWritten && syntax.Write(buffer);
  return isWritten;
}

bool PresentationContext::Read(Buffer& buffer) {
  return buffer.Read8(&ItemType) && ReadRest(buffer);
}

bool PresentationContext::ReadRest(Buffer& buffer, std::uint32_t room) {
  if (room < kHeadBytesBehindType + kOwnBytes) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length)) return false;
  if (Length > room - kHeadBytesBehindType || Length < kOwnBytes) return false;
  if (!buffer.Read8(&PresentationContextID) || !buffer.Read8(&Reserved2) ||
      !buffer.Read8(&Reserved3) || !buffer.Read8(&Reserved4)) {
    return false;
  }
  Trace(*this, true);
  std::uint32_t left = Length - kOwnBytes;
  if (left == 0) return true;
  std::uint8_t unseenType = 0;
  if (!buffer.Read8(&unseenType) || !AbstractSyntax.ReadRest(buffer, left - 1)) return false;
  left -= AbstractSyntax.Size();
  for (std::size_t count = TransferSyntaxes.size(); left != 0; ++count) {
    TransferSyntax syntax;
    if (count == kMostTransferSyntaxes || !buffer.Read8(&unseenType) ||
        !syntax.ReadRest(buffer, left - 1)) {
      return false;
    }
    left -= syntax.Size();
    TransferSyntaxes.push_back(syntax);
  }
  TransferSyntaxes.shrink_to_fit();
  return true;
}

PresentationContextAccept::PresentationContextAccept()
    : PresentationContextID(static_cast<std::uint8_t>(TakeIdentifier())) {}

std::uint32_t PresentationContextAccept::Size() {
  const std::uint32_t size = kOwnBytes + TransferSyntax.Size();
  Length = static_cast<std::uint16_t>(size);
  return kHeadBytes + size;
}

bool PresentationContextAccept::Write(Buffer& buffer) {
  Size();
  Trace(*this, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
         buffer.Write8(PresentationContextID) && buffer.Write8(Reserved2) &&
         buffer.Write8(Result) && buffer.Write8(Reserved4) && TransferSyntax.Write(buffer);
}

bool PresentationContextAccept::Read(Buffer& buffer) {
  return buffer.Read8(&ItemType) && ReadRest(buffer);
}

bool PresentationContextAccept::ReadRest(Buffer& buffer, std::uint32_t room) {
  if (room < kHeadBytesBehindType + kOwnBytes) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length)) return false;
  if (Length > room - kHeadBytesBehindType || Length < kOwnBytes) return false;
  if (!buffer.Read8(&PresentationContextID) || !buffer.Read8(&Reserved2) ||
      !buffer.Read8(&Result) || !buffer.Read8(&Reserved4)) {
    return false;
  }
  Trace(*this, true);
  const std::uint32_t left = Length - kOwnBytes;
  // A refusal may leave the transfer syntax out, which says nothing then.
  if (left == 0) return Result != 0;
  std::uint8_t unseenType = 0;
  if (!buffer.Read8(&unseenType) || !TransferSyntax.ReadRest(buffer, left - 1)) return false;
  return TransferSyntax.Size() == left;
}

}  // namespace tessaret
