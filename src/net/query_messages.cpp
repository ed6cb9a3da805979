#include "net/query_messages.h"

#include <cstring>
#include <memory>
#include <string>

#include "net/command_elements.h"

namespace tessaret {
namespace {

constexpr std::uint16_t kMediumPriority = 0;
// Queries alone go with low priority, so that archives serve what somebody waits for at a screen first.
constexpr std::uint16_t kFindPriority = 2;

std::uint16_t DataSetTypeFor(const DICOMDataObject* dataObject) {
  return dataObject == nullptr ? data_set_type::kNone : data_set_type::kFollows;
}

/// What every response of a query has, with the Message ID under both tags.
void FillResponse(DICOMCommandObject& response, const DICOMCommandObject& request,
                  std::uint16_t field, std::uint16_t status, const DICOMDataObject* dataObject) {
  CopyElement(request, response, command_element::kSopClass);
  CopyElement(request, response, command_element::kInitiator);
  CopyElement(request, response, command_element::kReceiver);
  const std::uint16_t messageID = CommandNumber(request, command_element::kMessageID).value_or(0);
  PutNumber16(response, 0x0000, command_element::kCommandField, field);
  PutNumber16(response, 0x0000, command_element::kMessageID, messageID);
  PutNumber16(response, 0x0000, command_element::kRespondedMessageID, messageID);
  PutNumber16(response, 0x0000, command_element::kPriority,
              CommandNumber(request, command_element::kPriority).value_or(0));
  PutNumber16(response, 0x0000, command_element::kDataSetType, DataSetTypeFor(dataObject));
  PutNumber16(response, 0x0000, command_element::kStatus, status);
}

void PutCounters(DICOMCommandObject& response, const RetrieveCounters& counters) {
  PutNumber16(response, 0x0000, command_element::kRemaining, counters.remaining);
  PutNumber16(response, 0x0000, command_element::kCompleted, counters.completed);
  PutNumber16(response, 0x0000, command_element::kFailed, counters.failed);
  PutNumber16(response, 0x0000, command_element::kWarning, counters.warning);
}

/// Kept at its very length; writers pad it.
void PutComment(DICOMCommandObject& response, std::string_view comment) {
  if (comment.empty()) return;
  auto bytes = std::make_unique<std::uint8_t[]>(comment.size());
  std::memcpy(bytes.get(), comment.data(), comment.size());
  auto vr = std::make_unique<VR>(std::uint16_t{0x0000}, command_element::kErrorComment,
                                 static_cast<std::uint32_t>(comment.size()), bytes.get());
  bytes.release();
  vr->TypeCode = type_code::LO;
  response.Push(vr.get());
  vr.release();
}

struct RetrieveResponse {
  std::uint16_t field;
  std::uint16_t status;
  const RetrieveCounters* counters;
  std::string_view comment;
};

bool WriteResponse(DimseMessage& message, PDU_Service* pdu, const DICOMCommandObject* request,
                   const RetrieveResponse& what, DICOMDataObject* dataObject) {
  UID uid;
  if (pdu == nullptr || request == nullptr || !message.GetUID(uid)) return false;
  DICOMCommandObject response;
  FillResponse(response, *request, what.field, what.status, dataObject);
  if (what.counters != nullptr) PutCounters(response, *what.counters);
  PutComment(response, what.comment);
  return pdu->Respond(response, dataObject, uid);
}

std::uint16_t MessageIdOf(const DICOMCommandObject& command) {
  return CommandNumber(command, command_element::kMessageID).value_or(0);
}

}  // namespace

bool CFindRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  UID uid;
  if (pdu == nullptr || dataObject == nullptr || !GetUID(uid)) return false;
  DICOMCommandObject command;
  FillRequest(command, uid, command_field::kFindRQ, data_set_type::kFollows);
  PutNumber16(command, 0x0000, command_element::kPriority, kFindPriority);
  MessageID = MessageIdOf(command);
  return pdu->Write(command, uid) && pdu->Write(*dataObject, uid);
}

bool CFindRQ::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                   DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kFindRQ, pdu, dataObject);
}

bool CFindRQ::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kFindRQ);
}

bool CFindRSP::Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
                     DICOMDataObject* dataObject, std::string_view comment) {
  return WriteResponse(*this, pdu, request, {command_field::kFindRSP, status, nullptr, comment},
                       dataObject);
}

bool CFindRSP::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                    DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kFindRSP, pdu, dataObject);
}

bool CFindRSP::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kFindRSP);
}

bool CMoveRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject, std::string_view destinationAE) {
  UID uid;
  if (pdu == nullptr || dataObject == nullptr || !GetUID(uid)) return false;
  DICOMCommandObject command;
  FillRequest(command, uid, command_field::kMoveRQ, data_set_type::kFollows);
  PutNumber16(command, 0x0000, command_element::kPriority, kMediumPriority);
  std::string destination(destinationAE);
  if (destination.size() % 2 != 0) destination += ' ';
  PutBytes(command, 0x0000, command_element::kDestination, type_code::AE, destination);
  MessageID = MessageIdOf(command);
  return pdu->Write(command, uid) && pdu->Write(*dataObject, uid);
}

bool CMoveRQ::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                   DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kMoveRQ, pdu, dataObject);
}

bool CMoveRQ::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kMoveRQ);
}

bool CMoveRSP::Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
                     const RetrieveCounters& counters, DICOMDataObject* dataObject,
                     std::string_view comment) {
  return WriteResponse(*this, pdu, request, {command_field::kMoveRSP, status, &counters, comment},
                       dataObject);
}

bool CMoveRSP::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                    DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kMoveRSP, pdu, dataObject);
}

bool CMoveRSP::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kMoveRSP);
}

bool CGetRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  UID uid;
  if (pdu == nullptr || !GetUID(uid)) return false;
  DICOMCommandObject command;
  FillRequest(command, uid, command_field::kGetRQ, DataSetTypeFor(dataObject));
  PutNumber16(command, 0x0000, command_element::kPriority, kMediumPriority);
  MessageID = MessageIdOf(command);
  return pdu->Write(command, uid) && (dataObject == nullptr || pdu->Write(*dataObject, uid));
}

bool CGetRQ::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                  DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kGetRQ, pdu, dataObject);
}

bool CGetRQ::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kGetRQ);
}

bool CGetRSP::Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
                    const RetrieveCounters& counters, DICOMDataObject* dataObject,
                    std::string_view comment) {
  return WriteResponse(*this, pdu, request, {command_field::kGetRSP, status, &counters, comment},
                       dataObject);
}

bool CGetRSP::Read(const DICOMCommandObject& command, PDU_Service* pdu,
                   DICOMDataObject* dataObject) {
  return ReadMessage(command, command_field::kGetRSP, pdu, dataObject);
}

bool CGetRSP::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kGetRSP);
}

bool CCancelRQ::Write(PDU_Service* pdu, std::uint16_t messageID) {
  if (pdu == nullptr) return false;
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, command_element::kCommandField, command_field::kCancelRQ);
  PutNumber16(command, 0x0000, command_element::kRespondedMessageID, messageID);
  PutNumber16(command, 0x0000, command_element::kDataSetType, data_set_type::kNone);
  return pdu->Write(command, pdu->PDataTF.MessagePresentationContextID);
}

bool CCancelRQ::Read(PDU_Service* pdu, DICOMCommandObject& command) {
  if (pdu == nullptr || !pdu->HasInput()) return false;
  return pdu->Read(command) != 0 && Test(command);
}

bool CCancelRQ::Test(const DICOMCommandObject& command) {
  return HasCommandField(command, command_field::kCancelRQ);
}

}  // namespace tessaret
