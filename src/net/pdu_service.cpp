#include "net/pdu_service.h"

#include <algorithm>

#include "core/trace.h"
#include "platform/hold_cancellation.h"

namespace tessaret {
namespace {

// What is received at once where less is asked for.
constexpr std::size_t kAheadBytes = std::size_t{1} << 16;

template <class Item>
void AddOnce(std::vector<Item>& list, const UID& uid) {
  const bool isThere = std::any_of(list.begin(), list.end(), [&](const Item& item) {
    return static_cast<const UID&>(item) == uid;
  });
  if (!isThere) list.emplace_back(uid.View());
}

}  // namespace

PDU_Service::PDU_Service() {
  InEndian = kBigEndian;
  OutEndian = kBigEndian;
  SetDataDumpFromEnvironment();
}

PDU_Service::~PDU_Service() {
  const HoldCancellation hold;
  if (Link.Connected != 0) Close();
  ForgetStream();
  AttachDictionary(nullptr, false);
}

std::int64_t PDU_Service::ReadBinary(void* data, std::uint32_t count) {
  const std::int64_t got = Link.Read(data, count);
  // Nothing will come over a link that is closed, and callers would ask for ever.
  return got == 0 ? -1 : got;
}

int PDU_Service::SendBinary(const void* data, std::uint32_t count) {
  return Link.Send(data, count);
}

std::int64_t PDU_Service::Read(void* data, std::uint32_t count) {
  if (count == 0) return 0;
  auto* to = static_cast<std::uint8_t*>(data);
  while (count != 0) {
    if (InSize > 0) {
      const std::uint32_t taken = std::min(count, Available());
      TakeIncoming(to, taken);
      to += taken;
      count -= taken;
    } else if (count >= kAheadBytes) {
      const std::int64_t got = ReadBinary(to, count);
      hasEnded_ = got < 0;
      if (hasEnded_) return 0;
      to += got;
      count -= static_cast<std::uint32_t>(got);
      Position += static_cast<std::uint32_t>(got);
    } else if (!ReceiveAhead()) {
      return 0;
    }
  }
  return 1;
}

bool PDU_Service::ReceiveAhead() {
  ahead_.resize(kAheadBytes);
  auto chunk = std::make_unique<BufferSpace>();
  std::int64_t got = 0;
  while (got == 0) got = ReadBinary(ahead_.data(), static_cast<std::uint32_t>(ahead_.size()));
  hasEnded_ = got < 0;
  if (hasEnded_) return false;
  chunk->Data = ahead_.data();
  chunk->Size = static_cast<std::uint32_t>(got);
  Incoming.Add(chunk.get());
  chunk.release();
  InSize = static_cast<std::int32_t>(got);
  return true;
}

void PDU_Service::ForgetStream() {
  hasEnded_ = false;
  DropIncoming();
  while (Outgoing.ListLength != 0) {
    delete Outgoing.First->value;
    Outgoing.RemoveAt(0);
  }
  OutSize = 0;
  AbandonedMessages.clear();
  HasDataSetToDrop = false;
  PDataTF.Reset();
}

void PDU_Service::CloseLink() noexcept {
  Link.Close();
  ForgetStream();
}

int PDU_Service::Fail(const char* words) noexcept {
  SetError(words);
  return 0;
}

bool PDU_Service::HasInput() { return Link.Connected != 0 && (InSize > 0 || Link.HasInput()); }

void PDU_Service::AttachDictionary(const RTC* dictionary, bool owned) {
  if (OwnsDictionary != 0 && Dictionary != dictionary) delete Dictionary;
  Dictionary = dictionary;
  OwnsDictionary = owned ? 1 : 0;
}

void PDU_Service::AddAbstractSyntax(const UID& uid) { AddOnce(ProposedAbstractSyntaxes, uid); }

void PDU_Service::AddTransferSyntax(const UID& uid) { AddOnce(ProposedTransferSyntaxes, uid); }

void PDU_Service::SetApplicationContext(const UID& uid) {
  ownRequest_.Set(AAssociateRQ, &AssociatePdu::ApplicationContext, ApplicationContext(uid.View()));
}

void PDU_Service::SetCallingTitle(std::string_view title) {
  ownRequest_.Set(AAssociateRQ, &AssociatePdu::CallingApTitle, MakeApTitle(title));
}

void PDU_Service::SetCalledTitle(std::string_view title) {
  ownRequest_.Set(AAssociateRQ, &AssociatePdu::CalledApTitle, MakeApTitle(title));
}

void PDU_Service::FillImplementationClass(ImplementationClass& item) {
  item.Set(kImplementationClass);
}

void PDU_Service::FillImplementationVersion(ImplementationVersion& item) {
  item.Set(kImplementationVersion);
}

void PDU_Service::FillTransferSyntaxes(PresentationContext& context) {
  AddTransferSyntax(UID("1.2.840.10008.1.2"));
  context.TransferSyntaxes = ProposedTransferSyntaxes;
}

std::uint8_t PDU_Service::ContextIDFor(const UID& abstractSyntax) const {
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (context.AbstractSyntax == abstractSyntax) return context.PresentationContextID;
  }
  return 0;
}

std::uint8_t PDU_Service::ContextIDFor(const UID& abstractSyntax, const UID& transferSyntax) const {
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (context.AbstractSyntax == abstractSyntax && context.TransferSyntax == transferSyntax) {
      return context.PresentationContextID;
    }
  }
  return 0;
}

std::uint8_t PDU_Service::ContextIDForTransfer(const UID& transferSyntax) const {
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (context.TransferSyntax == transferSyntax) return context.PresentationContextID;
  }
  return 0;
}

bool PDU_Service::TransferSyntaxOf(std::uint8_t contextID, UID& transferSyntax) const {
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (context.PresentationContextID != contextID) continue;
    transferSyntax = context.TransferSyntax;
    return true;
  }
  return false;
}

bool PDU_Service::IsAccepted(const UID& abstractSyntax) const {
  return ContextIDFor(abstractSyntax) != 0;
}

int PDU_Service::AddAcceptedContext(const UID& abstractSyntax, const UID& transferSyntax) {
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (!(context.AbstractSyntax == abstractSyntax)) continue;
    PresentationContextAccept further = context;
    further.TransferSyntax.Set(transferSyntax.View());
    AcceptedContexts.push_back(further);
    return 1;
  }
  return 0;
}

}  // namespace tessaret
