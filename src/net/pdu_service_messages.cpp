// How objects travel over an association.
#include <new>

#include "base/text.h"
#include "core/element_writer.h"
#include "core/memory_buffer.h"
#include "core/trace.h"
#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/pdu_service.h"

namespace tessaret {
namespace {

/// The rows of the table of syntaxes in their order, those added at run time behind; `visit` answers whether to go on.
template <class Visit>
void ForEachSyntax(Visit visit) {
  const TransferSyntaxCodec* row = FixedTransferSyntaxes();
  for (std::uint32_t left = FixedTransferSyntaxCount(); left != 0; --left, ++row) {
    if (!visit(*row)) return;
  }
  for (auto* node = AddedTransferSyntaxes().First; node != nullptr; node = node->next) {
    if (!visit(node->value)) return;
  }
}

/// What an unexpected PDU of each type is called, by its type.
constexpr const char* kUnexpectedWords[] = {
    nullptr,
    "Got unexpected A-ASSCIATE-RQ, sending A-Abort-RQ",
    "Got unexpected A-ASSCIATE-AC, sending A-Abort-RQ",
    "Got unexpected A-ASSCIATE-RJ, sending A-Abort-RQ",
};

namespace pdu_type {
constexpr std::uint8_t kData = 4;
constexpr std::uint8_t kReleaseRQ = 5;
constexpr std::uint8_t kReleaseRP = 6;
constexpr std::uint8_t kAbort = 7;
}  // namespace pdu_type

/// Whether a long value might lie in bytes that the object itself has, which is emptied before they are sent.
bool HasLongBytes(const DICOMObject& object, std::int32_t depth = 0) {
  // One that is nested so deeply will not be written.
  if (depth > kMaxNesting) return true;
  return !object.Elements.ForEachWhile([&](const VR& vr) {
    if (vr.OwnsData != 0 && vr.Length >= MessageBuffer::kLeastShared) return false;
    const ItemArray::Node* node = vr.Items == nullptr ? nullptr : vr.Items->First;
    for (; node != nullptr; node = node->next) {
      if (node->value != nullptr && HasLongBytes(*node->value, depth + 1)) return false;
    }
    return true;
  });
}

}  // namespace

bool PDU_Service::EncodeAs(std::int32_t code, DICOMObject& object, Buffer& buffer) {
  switch (code) {
    case kImplicitLittle:
      return ImplicitLittleOut(object, buffer);
    case kExplicitLittle:
      CallLongValuesUnknown(object);
      return ExplicitLittleOut(object, buffer);
    case kExplicitBig:
      CallLongValuesUnknown(object);
      return ExplicitBigOut(object, buffer);
    default:
      return false;
  }
}

bool PDU_Service::ParseOutgoing(DICOMObject& object, Buffer& buffer, std::uint8_t contextID) {
  const PresentationContextAccept* found = nullptr;
  for (const PresentationContextAccept& context : AAssociateAC.PresentationContexts) {
    if (context.PresentationContextID != contextID) continue;
    // An identifier may have been answered twice, and data go by what was accepted.
    const bool isAccepted = context.Result == 0;
    if (found == nullptr || found->TransferSyntax.IsEmpty() || isAccepted) found = &context;
    if (isAccepted) break;
  }
  if (found == nullptr || found->TransferSyntax.IsEmpty()) {
    return Fail(Format("Bad Presentation Context ID[0x%X]", contextID)) != 0;
  }
  const auto code = FindTransferSyntax(found->TransferSyntax.View());
  if (!code) {
    return Fail(Format("Bad Transfer Syntax[%s], codec not found",
                       found->TransferSyntax.Text.data())) != 0;
  }
  return EncodeAs(*code, object, buffer);
}

std::uint8_t PDU_Service::ParseOutgoingForClass(DICOMObject& object, Buffer& buffer,
                                                const UID& abstractSyntax) {
  std::uint8_t contextID = 0;
  std::int32_t code = 0;
  const auto take = [&](const TransferSyntaxCodec& row) {
    contextID = ContextIDFor(abstractSyntax, UID(row.UID));
    code = row.Code;
    return contextID == 0;
  };
  if (const auto own = UidOf(object, 0x0002, 0x0010)) {
    ForEachSyntax(
        [&](const TransferSyntaxCodec& row) { return own->View() != row.UID || take(row); });
  }
  if (contextID == 0) ForEachSyntax(take);
  if (contextID == 0) {
    Fail(Format("Cannot find Presentation Context for [%s]", abstractSyntax.Text.data()));
    return 0;
  }
  return EncodeAs(code, object, buffer) ? contextID : std::uint8_t{0};
}

std::uint8_t PDU_Service::ParseOutgoingAny(DICOMObject& object, Buffer& buffer) {
  std::uint8_t contextID = 0;
  std::int32_t code = 0;
  ForEachSyntax([&](const TransferSyntaxCodec& row) {
    contextID = ContextIDForTransfer(UID(row.UID));
    code = row.Code;
    return contextID == 0;
  });
  return contextID != 0 && EncodeAs(code, object, buffer) ? contextID : std::uint8_t{0};
}

bool PDU_Service::ParseIncoming(std::uint8_t contextID, Buffer& buffer, DICOMObject& object) {
  UID syntax;
  if (!TransferSyntaxOf(contextID, syntax)) return false;
  const auto code = FindTransferSyntax(syntax.View());
  if (!code) return false;
  bool isRead = false;
  switch (*code) {
    case kImplicitLittle:
      isRead = ImplicitLittleIn(buffer, object);
      break;
    case kExplicitLittle:
      isRead = ExplicitLittleIn(buffer, object);
      break;
    case kExplicitBig:
      isRead = ExplicitBigIn(buffer, object);
      break;
    default:
      break;
  }
  // Afterwards, so that the caller knows how the data came whatever they say themselves.
  PutUid(object, 0x0002, 0x0010, syntax.View());
  return isRead;
}

bool PDU_Service::EncodeCommand(DICOMCommandObject& commandObject, tessaret::PDataTF& data) {
  PutNumber32(commandObject, 0x0000, 0x0000, CommandGroupLength(commandObject));
  return ImplicitLittleOut(commandObject, data.VRBuffer);
}

std::uint8_t PDU_Service::ContextToWrite(const UID& sopClass) {
  const std::uint8_t contextID = ContextIDFor(sopClass);
  if (contextID == 0) Fail(Format("SOP Class not supported [%s]", sopClass.Text.data()));
  return contextID;
}

bool PDU_Service::Write(DICOMDataObject& dataObject, const UID& sopClass) {
  const std::uint8_t contextID = ContextToWrite(sopClass);
  if (contextID == 0) return false;
  const bool wasOpen = Link.Connected != 0;
  PDataTF.DropOutgoing();
  PDataTF.MessageControl = 0;
  return ParseOutgoing(dataObject, PDataTF.VRBuffer, contextID) && Send(contextID, wasOpen);
}

bool PDU_Service::Write(DICOMCommandObject& commandObject, const UID& sopClass) {
  const std::uint8_t contextID = ContextToWrite(sopClass);
  return contextID != 0 && Write(commandObject, contextID);
}

bool PDU_Service::Write(DICOMCommandObject& commandObject, std::uint8_t contextID) {
  const bool wasOpen = Link.Connected != 0;
  PDataTF.DropOutgoing();
  PDataTF.MessageControl = kCommandFragment;
  return EncodeCommand(commandObject, PDataTF) && Send(contextID, wasOpen);
}

bool PDU_Service::Write(std::uint8_t contextID) { return Send(contextID, Link.Connected != 0); }

bool PDU_Service::Send(std::uint8_t contextID, bool wasOpen) {
  PDataTF.MessagePresentationContextID = contextID;
  return Sends(wasOpen, [&] { return PDataTF.Write(*this); });
}

bool PDU_Service::Write(DICOMCommandObject& commandObject, DICOMDataObject* dataObject,
                        const UID& sopClass) {
  const std::uint8_t contextID = ContextToWrite(sopClass);
  return contextID != 0 && WriteBoth(commandObject, dataObject, contextID);
}

bool PDU_Service::Respond(DICOMCommandObject& commandObject, DICOMDataObject* dataObject,
                          const UID& sopClass) {
  const bool isAccepted = IsAccepted(sopClass);
  for (const PresentationContextAccept& context : AcceptedContexts) {
    if (context.PresentationContextID != PDataTF.MessagePresentationContextID) continue;
    if (isAccepted && !(context.AbstractSyntax == sopClass)) continue;
    return WriteBoth(commandObject, dataObject, context.PresentationContextID);
  }
  return Write(commandObject, dataObject, sopClass);
}

bool PDU_Service::WriteBoth(DICOMCommandObject& commandObject, DICOMDataObject* dataObject,
                            std::uint8_t contextID) {
  const bool wasOpen = Link.Connected != 0;
  tessaret::PDataTF command;
  tessaret::PDataTF data;
  if (dataObject != nullptr && !HasLongBytes(*dataObject) && !HasLongBytes(commandObject)) {
    data.VRBuffer.ShareLongValues();
  }
  // The data first, so that nothing has gone where they cannot be encoded.
  if (dataObject != nullptr && !ParseOutgoing(*dataObject, data.VRBuffer, contextID)) return false;
  if (!EncodeCommand(commandObject, command)) return false;
  command.MessageControl = kCommandFragment;
  command.MessagePresentationContextID = contextID;
  data.MessagePresentationContextID = contextID;
  PDataTF.MessagePresentationContextID = contextID;
  return Sends(wasOpen, [&] { return command.Queue(*this) && data.Queue(*this) && Flush(); });
}

template <class Work>
bool PDU_Service::Sends(bool wasOpen, Work work) {
  if (OrCloseLink(work)) return true;
  if (wasOpen) Fail(Link.Connected == 0 ? kClosedHere : Link.GetLastError());
  // A message that went in part is the end of the link, and nothing of it may go on a later one.
  CloseLink();
  return false;
}

std::uint8_t PDU_Service::Read(DICOMObject& object) {
  if (Link.Connected == 0) return 0;
  SetDataDumpFromEnvironment();
  PDataTF.MsgStatus = 0;
  try {
    return ReadMessage(object);
  } catch (const std::bad_alloc&) {
    SetError("Not enough memory for the data received, sending A-Abort-RQ");
    Abort();
    return 0;
  } catch (...) {
    // A descendant's stream has thrown, or the thread is being cancelled. Part of a message may be lost, and a release would be
    // waited for.
    CloseLink();
    throw;
  }
}

std::uint8_t PDU_Service::ReadMessage(DICOMObject& object) {
  if (PDataTF.Length != 0) {
    if (!PDataTF.ReadDynamic(*this)) {
      Fail("Error reading data from network");
      return 0;
    }
    if (PDataTF.MsgStatus == 1) {
      return Decode(object, "Error parsing DICOM Data, sending AAbortRQ");
    }
  }
  for (;;) {
    std::uint8_t type = 0;
    if (!Read8(&type)) return EndOfLink();
    if (type != pdu_type::kData) return ActOn(type);
    if (!PDataTF.ReadDynamic(*this)) {
      Fail("Error reading P-DATA-TF from network");
      return 0;
    }
    if (PDataTF.MsgStatus > 0) {
      return Decode(object, "Error parsing P-DATA-TF Payload, sending A-Abort-RQ");
    }
  }
}

std::uint8_t PDU_Service::EndOfLink() {
  NoteEndOfLink();
  CloseLink();
  return 0;
}

void PDU_Service::NoteEndOfLink() {
  if (Link.Error == 0) {
    Fail(Link.Connected == 0 ? kClosedHere : "The peer has closed the link");
    return;
  }
  Fail(Link.GetLastError());
  WriteAbort();
}

std::uint8_t PDU_Service::ActOn(std::uint8_t type) {
  switch (type) {
    case pdu_type::kReleaseRQ:
      // The link stays for the caller to close.
      if (!AReleaseRQ.Read(*this)) return 0;
      // One that was received may have any type, and reserved bytes.
      AReleaseRP = tessaret::AReleaseRP();
      AReleaseRP.Write(*this);
      return 0;
    case pdu_type::kReleaseRP:
      // One of an association before may have had any type.
      AReleaseRP = tessaret::AReleaseRP();
      AReleaseRP.Read(*this);
      CloseLink();
      return 0;
    case pdu_type::kAbort:
      AAbortRQ.Read(*this);
      CloseLink();
      return 0;
    default:
      break;
  }
  const bool isKnown = type != 0 && type < std::size(kUnexpectedWords);
  Fail(isKnown ? kUnexpectedWords[type]
               : Format("DUL: Received unknown item type %X, sending A-Abort-RQ", type));
  Abort();
  return 0;
}

std::uint8_t PDU_Service::Decode(DICOMObject& object, const char* wordsOnFailure) {
  const std::span<std::uint8_t> message = PDataTF.Message();
  bool isRead = false;
  {
    // The message alone: a value that claims more must not take it from the link.
    MemoryBuffer bytes(message.data(), static_cast<std::uint32_t>(message.size()), false);
    const bool isCommand = (PDataTF.MsgHeader & kCommandFragment) != 0;
    isRead = isCommand ? ImplicitLittleIn(bytes, object)
                       : ParseIncoming(PDataTF.MessagePresentationContextID, bytes, object);
  }
  PDataTF.DropMessage();
  // No context has the identifier 0, which means none to callers.
  if (isRead && PDataTF.MessagePresentationContextID != 0) {
    return PDataTF.MessagePresentationContextID;
  }
  Fail(wordsOnFailure);
  Abort();
  return 0;
}

void PDU_Service::Abort() {
  WriteAbort();
  CloseLink();
}

void PDU_Service::WriteAbort() {
  // The numbers of one that was received are not ours.
  AAbortRQ = tessaret::AAbortRQ();
  Attempt([&] { AAbortRQ.Write(*this); });
}

}  // namespace tessaret
