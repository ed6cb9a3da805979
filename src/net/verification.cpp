#include "net/verification.h"

#include "net/command_elements.h"
#include "net/exchange.h"
#include "net/sop_classes.h"

namespace tessaret {

bool Verification::GetUID(UID& uid) {
  uid = UID(sop_class::kVerification);
  return true;
}

bool Verification::Write(PDU_Service* pdu) {
  if (pdu == nullptr) return false;
  Exchange exchange(*pdu);
  if (!exchange.HasBegun() || !CEchoRQ::Write(pdu)) return false;
  exchange.Expect(MessageID);
  DICOMCommandObject response;
  if (!exchange.Read(command_field::kEchoRSP, response)) return false;
  exchange.End();
  return true;
}

bool Verification::Read(PDU_Service* pdu, DICOMCommandObject* command) {
  if (pdu == nullptr || command == nullptr) return false;
  const auto asked = UidOf(*command, 0x0000, command_element::kSopClass);
  if (!asked || asked->View() != sop_class::kVerification) return false;
  if (CEchoRQ::Test(*command)) return CEchoRSP::Write(pdu, command);
  return CEchoRSP::Test(*command);
}

}  // namespace tessaret
