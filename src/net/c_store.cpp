#include "net/c_store.h"

#include "net/command_elements.h"

namespace tessaret {

bool CStoreRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  UID uid;
  if (pdu == nullptr || dataObject == nullptr || !GetUID(uid)) return false;
  DICOMCommandObject command;
  MessageID = FillRequest(command, uid, command_field::kStoreRQ, data_set_type::kFollows);
  PutNumber16(command, 0x0000, command_element::kPriority, request_priority::kMedium);
  if (const VR* instance = dataObject->GetVR(0x0008, 0x0018)) {
    PutCopy(*instance, command, command_element::kSopInstance);
  }
  return pdu->Write(command, dataObject, uid);
}

bool CStoreRSP::Write(PDU_Service* pdu, DICOMCommandObject* request, std::uint16_t status) {
  if (pdu == nullptr || request == nullptr) return false;
  // A request that names none is answered as any other: its sender waits for that.
  const UID sopClass = UidOf(*request, 0x0000, command_element::kSopClass).value_or(UID());
  DICOMCommandObject response;
  MoveElement(*request, command_element::kSopClass, response, command_element::kSopClass);
  MoveElement(*request, command_element::kSopInstance, response, command_element::kSopInstance);
  PutNumber16(response, 0x0000, command_element::kCommandField, command_field::kStoreRSP);
  PutNumber16(response, 0x0000, command_element::kRespondedMessageID,
              CommandNumber(*request, command_element::kMessageID).value_or(0));
  PutNumber16(response, 0x0000, command_element::kDataSetType, data_set_type::kNone);
  PutNumber16(response, 0x0000, command_element::kStatus, status);
  return pdu->Respond(response, nullptr, sopClass);
}

bool CStoreRSP::Read(DICOMCommandObject& command) {
  ErrorComment.reset();
  if (!Test(command)) return false;
  Status = CommandNumber(command, command_element::kStatus).value_or(0);
  if (Status != 0) ErrorComment.reset(command.Remove(0x0000, command_element::kErrorComment));
  return true;
}

}  // namespace tessaret
