#include "net/c_cancel.h"

#include "net/command_elements.h"

namespace tessaret {

bool CCancelRQ::Write(PDU_Service* pdu, std::uint16_t messageID) {
  if (pdu == nullptr || pdu->PDataTF.MessagePresentationContextID == 0) return false;
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, command_element::kCommandField, command_field::kCancelRQ);
  PutNumber16(command, 0x0000, command_element::kRespondedMessageID, messageID);
  PutNumber16(command, 0x0000, command_element::kDataSetType, data_set_type::kNone);
  return pdu->Write(command, pdu->PDataTF.MessagePresentationContextID);
}

bool CCancelRQ::Read(PDU_Service* pdu, DICOMCommandObject& command) {
  if (pdu == nullptr || !pdu->HasInput()) return false;
  return pdu->Read(command) != 0 && IsCommand(*pdu) && Test(command);
}

Interruption CCancelRQ::Look(PDU_Service& pdu) {
  if (pdu.Link.Connected == 0) return Interruption::kEnd;
  if (!pdu.HasInput()) return Interruption::kNone;
  const std::uint8_t contextID = pdu.PDataTF.MessagePresentationContextID;
  DICOMCommandObject command;
  if (pdu.Read(command) == 0) return Interruption::kEnd;
  pdu.PDataTF.MessagePresentationContextID = contextID;
  return IsCommand(pdu) && Test(command) ? Interruption::kCancel : Interruption::kNone;
}

}  // namespace tessaret
