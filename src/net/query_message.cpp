#include "net/query_message.h"

#include <cstring>
#include <memory>
#include <string>

#include "net/command_elements.h"

namespace tessaret {
namespace {

std::uint16_t DataSetTypeFor(const DICOMDataObject* dataObject) {
  return dataObject == nullptr ? data_set_type::kNone : data_set_type::kFollows;
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

void PutDestination(DICOMCommandObject& command, std::string_view title) {
  std::string destination(title);
  if (destination.size() % 2 != 0) destination += ' ';
  PutBytes(command, 0x0000, command_element::kDestination, type_code::AE, destination);
}

void FillResponse(DICOMCommandObject& response, const DICOMCommandObject& request,
                  const QueryResponse& what, const DICOMDataObject* dataObject) {
  CopyElement(request, response, command_element::kSopClass);
  CopyElement(request, response, command_element::kInitiator);
  CopyElement(request, response, command_element::kReceiver);
  const std::uint16_t messageID = CommandNumber(request, command_element::kMessageID).value_or(0);
  PutNumber16(response, 0x0000, command_element::kCommandField, what.field);
  PutNumber16(response, 0x0000, command_element::kMessageID, messageID);
  PutNumber16(response, 0x0000, command_element::kRespondedMessageID, messageID);
  PutNumber16(response, 0x0000, command_element::kPriority,
              CommandNumber(request, command_element::kPriority).value_or(0));
  PutNumber16(response, 0x0000, command_element::kDataSetType, DataSetTypeFor(dataObject));
  PutNumber16(response, 0x0000, command_element::kStatus, what.status);
  if (what.counters != nullptr) PutCounters(response, *what.counters);
  PutComment(response, what.comment);
}

/// The peer waits for the identifier, and would take whatever comes next for it: where it cannot go, the link is closed.
bool WriteIdentifier(PDU_Service& pdu, DICOMDataObject& identifier, const UID& sopClass) {
  try {
    if (pdu.Write(identifier, sopClass)) return true;
  } catch (...) {
    pdu.Link.Close();
    throw;
  }
  pdu.Link.Close();
  return false;
}

}  // namespace

bool WriteQueryRequest(DimseMessage& message, PDU_Service* pdu, const QueryRequest& what,
                       DICOMDataObject* identifier, std::uint16_t& messageID) {
  UID uid;
  if (pdu == nullptr || !message.GetUID(uid)) return false;
  DICOMCommandObject command;
  messageID = FillRequest(command, uid, what.field, DataSetTypeFor(identifier));
  PutNumber16(command, 0x0000, command_element::kPriority, what.priority);
  if (what.destination) PutDestination(command, *what.destination);
  if (what.isSentAtOnce) return pdu->Write(command, identifier, uid);
  return pdu->Write(command, uid) &&
         (identifier == nullptr || WriteIdentifier(*pdu, *identifier, uid));
}

bool WriteQueryResponse(DimseMessage& message, PDU_Service* pdu, const DICOMCommandObject* request,
                        const QueryResponse& what, DICOMDataObject* dataObject) {
  UID uid;
  if (pdu == nullptr || request == nullptr || !message.GetUID(uid)) return false;
  DICOMCommandObject response;
  FillResponse(response, *request, what, dataObject);
  return pdu->Respond(response, dataObject, uid);
}

}  // namespace tessaret
