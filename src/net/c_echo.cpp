#include "net/c_echo.h"

#include "net/command_elements.h"

namespace tessaret {

bool CEchoRQ::Write(PDU_Service* pdu) {
  UID uid;
  if (pdu == nullptr || !GetUID(uid)) return false;
  DICOMCommandObject command;
  MessageID = FillRequest(command, uid, command_field::kEchoRQ, data_set_type::kNone);
  return pdu->Write(command, uid);
}

bool CEchoRSP::Write(PDU_Service* pdu, DICOMCommandObject* request) {
  UID uid;
  if (pdu == nullptr || request == nullptr || !GetUID(uid)) return false;
  const auto asked = UidOf(*request, 0x0000, command_element::kSopClass);
  if (!asked || !(*asked == uid)) return false;
  DICOMCommandObject response;
  MoveElement(*request, command_element::kSopClass, response, command_element::kSopClass);
  MoveNumber(*request, command_element::kDataSetType, response, command_element::kDataSetType);
  MoveNumber(*request, command_element::kMessageID, response, command_element::kRespondedMessageID);
  PutNumber16(response, 0x0000, command_element::kCommandField, command_field::kEchoRSP);
  PutNumber16(response, 0x0000, command_element::kStatus, 0);
  return pdu->Respond(response, nullptr, uid);
}

}  // namespace tessaret
