#include "net/associate_pdus.h"

#include <algorithm>

#include "net/identifiers.h"
#include "net/pdu_trace.h"

namespace tessaret {
namespace {

// What stands between the length and the first item.
constexpr std::uint32_t kFixedBytes = 68;
// Type, reserved byte and length.
constexpr std::uint32_t kHeadBytes = 6;

void Trace(const AssociatePdu& pdu, bool isReading) {
  pdu_trace::Start(isReading, pdu.ItemType == 1 ? "AAssociateRQ (0x01)" : "AAssociateAC (0x02)",
                   pdu.ItemType);
  pdu_trace::PduHead(pdu.Reserved1, pdu.Length);
  pdu_trace::Field(1, "Protocol Version", 2, pdu.ProtocolVersion);
  pdu_trace::Field(1, "Reserved", 2, pdu.Reserved2);
  pdu_trace::Field(1, "Called AP Title", pdu.CalledApTitle.data());
  pdu_trace::Field(1, "Calling AP Title", pdu.CallingApTitle.data());
  pdu_trace::Field(1, "Reserved", pdu.Reserved3);
}

bool HasIdentifier(const std::vector<PresentationContext>& contexts, std::uint8_t identifier) {
  return std::any_of(contexts.begin(), contexts.end(), [&](const PresentationContext& context) {
    return context.PresentationContextID == identifier;
  });
}

/// What is left of a PDU: by its own count, which ends the reading, and by the bytes that were really read, beyond which nothing
/// is its own. They part where an item counts for something else than it takes.
class Left {
 public:
  Left(const Buffer& buffer, std::uint32_t count)
      : buffer_(buffer), end_(buffer.Position + count), counted_(count) {}
  [[nodiscard]] bool GoesOn() const { return counted_ > 0 && Bytes() != 0; }
  [[nodiscard]] bool EndsAtZero() const { return counted_ == 0; }
  /// Position comes round at 2^32, which the difference does not mind.
  [[nodiscard]] std::uint32_t Bytes() const { return end_ - buffer_.Position; }
  void Count(std::uint32_t bytes) { counted_ -= bytes; }

 private:
  const Buffer& buffer_;
  std::uint32_t end_;
  std::int64_t counted_;
};

template <class Item>
bool ReadItem(Buffer& buffer, Item& item, Left& left) {
  const std::uint32_t before = left.Bytes() + 1;  // the type byte was read
  if (!item.ReadRest(buffer, left.Bytes())) return false;
  left.Count(before - left.Bytes());
  return true;
}

template <class Context>
bool ReadContext(Buffer& buffer, std::vector<Context>& contexts, Left& left) {
  if (contexts.size() == kMostPresentationContexts) return false;
  contexts.emplace_back();
  if (ReadItem(buffer, contexts.back(), left)) return true;
  // What could not be read to its end is no proposal.
  contexts.pop_back();
  return false;
}

/// Skips an item as if its length had four bytes, where the standard has two, and counts two bytes too few for it: a request with
/// one never ends at zero. Where the length goes, the PDU's own stands no longer.
bool SkipItem(Buffer& buffer, std::uint8_t type, AssociatePdu& pdu, Left& left) {
  DumpTrace(kDumpPdu, "\t\t\tUNKNOWN Item %2.2X\n", type);
  if (left.Bytes() < 5 || !buffer.Read8(&pdu.Reserved1) || !buffer.Read32(&pdu.Length)) {
    return false;
  }
  if (pdu.Length > left.Bytes()) return false;
  left.Count(pdu.Length + 4);
  return SkipBytes(buffer, pdu.Length);
}

bool ReadItem(Buffer& buffer, std::uint8_t type, AAssociateRQ& request, Left& left) {
  switch (type) {
    case item_type::kApplicationContext:
      return ReadItem(buffer, request.ApplicationContext, left);
    case item_type::kPresentationContext:
      return ReadContext(buffer, request.PresentationContexts, left);
    case item_type::kUserInformation:
      return ReadItem(buffer, request.UserInformation, left);
    default:
      return SkipItem(buffer, type, request, left);
  }
}

bool ReadItem(Buffer& buffer, std::uint8_t type, AAssociateAC& answer, Left& left) {
  switch (type) {
    case item_type::kApplicationContext:
      return ReadItem(buffer, answer.ApplicationContext, left);
    case item_type::kPresentationContextAccept:
      return ReadContext(buffer, answer.PresentationContexts, left);
    case item_type::kUserInformation:
      if (!answer.UserInformation.ReadRest(buffer, left.Bytes())) return false;
      // Counts for what was kept of it, which is not what it took where something optional was left out.
      left.Count(answer.UserInformation.Size());
      return true;
    default:
      return false;
  }
}

/// Reads the items of a PDU. True where they fill it exactly.
template <class Pdu>
bool ReadItems(Buffer& buffer, Pdu& pdu) {
  Left left(buffer, pdu.Length - kFixedBytes);
  bool isSound = true;
  while (isSound && left.GoesOn()) {
    std::uint8_t type = 0;
    isSound = buffer.Read8(&type) && ReadItem(buffer, type, pdu, left);
  }
  // Nobody waits again for a peer that has ended, or sent nothing for too long.
  if (!isSound && buffer.IsEnd()) return false;
  const bool isExact = isSound && left.EndsAtZero();
  // What follows the PDU is found, whatever stood in it.
  return SkipBytes(buffer, left.Bytes()) && isExact;
}

/// Whether the lengths of all items can be written. Forgets what was skipped, which is not there to be written.
template <class Pdu>
bool AreLengthsWritable(Pdu& pdu) {
  pdu.UserInformation.UnknownItemBytes = 0;
  bool isWritable = pdu.UserInformation.Size() <= kMostItemBytes;
  for (auto& context : pdu.PresentationContexts) {
    isWritable = isWritable && context.Size() <= kMostItemBytes;
  }
  return isWritable;
}

}  // namespace

ApTitle MakeApTitle(std::string_view text) {
  ApTitle title{};
  std::fill_n(title.begin(), kApTitleBytes, ' ');
  std::copy_n(text.begin(), std::min(text.size(), kApTitleBytes), title.begin());
  return title;
}

bool AssociatePdu::ReadHead(Buffer& buffer) {
  if (!buffer.Read8(&Reserved1) || !buffer.Read32(&Length)) return false;
  if (Length < kFixedBytes || Length > kMostAssociateBytes) return false;
  if (!buffer.Read16(&ProtocolVersion) || !buffer.Read16(&Reserved2) ||
      buffer.Read(CalledApTitle.data(), kApTitleBytes) <= 0 ||
      buffer.Read(CallingApTitle.data(), kApTitleBytes) <= 0 ||
      buffer.Read(Reserved3.data(), static_cast<std::uint32_t>(Reserved3.size())) <= 0) {
    return false;
  }
  CalledApTitle.back() = '\0';
  CallingApTitle.back() = '\0';
  Trace(*this, true);
  return true;
}

bool AssociatePdu::WriteHead(Buffer& buffer) const {
  Trace(*this, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write32(Length) &&
         buffer.Write16(ProtocolVersion) && buffer.Write16(Reserved2) &&
         buffer.Write(CalledApTitle.data(), kApTitleBytes) &&
         buffer.Write(CallingApTitle.data(), kApTitleBytes) &&
         buffer.Write(Reserved3.data(), static_cast<std::uint32_t>(Reserved3.size()));
}

std::uint32_t AssociatePdu::SizeWithoutContexts() {
  return kFixedBytes + ApplicationContext.Size() + UserInformation.Size();
}

int AAssociateRQ::AddPresentationContext(PresentationContext context) {
  if (PresentationContexts.size() >= kMostPresentationContexts) return 0;
  // Other threads take from the same counter, and its low byte comes round again.
  while (HasIdentifier(PresentationContexts, context.PresentationContextID)) {
    context.PresentationContextID = static_cast<std::uint8_t>(TakeOddIdentifier());
  }
  PresentationContexts.push_back(std::move(context));
  return 1;
}

std::uint32_t AAssociateRQ::Size() {
  Length = SizeWithoutContexts();
  for (PresentationContext& context : PresentationContexts) Length += context.Size();
  return kHeadBytes + Length;
}

bool AAssociateRQ::IsWritable() { return AreLengthsWritable(*this); }

bool AAssociateRQ::Write(Buffer& buffer) {
  if (!IsWritable()) return false;
  Size();
  bool isWritten = WriteHead(buffer) && ApplicationContext.Write(buffer);
  for (PresentationContext& context : PresentationContexts) {
    isWritten = isWritten && context.Write(buffer);
  }
  return isWritten && UserInformation.Write(buffer) && buffer.Flush();
}

bool AAssociateRQ::Read(Buffer& buffer) { return ReadHead(buffer) && ReadItems(buffer, *this); }

std::uint32_t AAssociateAC::Size() {
  Length = SizeWithoutContexts();
  for (PresentationContextAccept& context : PresentationContexts) Length += context.Size();
  return kHeadBytes + Length;
}

bool AAssociateAC::Write(Buffer& buffer) {
  if (!AreLengthsWritable(*this)) return false;
  Size();
  bool isWritten = WriteHead(buffer) && ApplicationContext.Write(buffer);
  for (PresentationContextAccept& context : PresentationContexts) {
    isWritten = isWritten && context.Write(buffer);
  }
  return isWritten && UserInformation.Write(buffer) && buffer.Flush();
}

bool AAssociateAC::Read(Buffer& buffer) { return ReadHead(buffer) && ReadItems(buffer, *this); }

}  // namespace tessaret
