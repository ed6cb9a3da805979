#include "net/storage.h"

#include "net/command_elements.h"
#include "net/contained.h"
#include "net/dimse_status.h"
#include "net/exchange.h"

namespace tessaret {

bool UnknownStorage::GetUID(UID&) { return false; }

std::uint32_t UnknownStorage::StoreObject(DICOMDataObject*) { return 0; }

bool UnknownStorage::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  if (pdu == nullptr) return false;
  Exchange exchange(*pdu);
  return exchange.HasBegun() && CStoreRQ::Write(pdu, dataObject) && ReadResponse(exchange);
}

bool UnknownStorage::ReadResponse(PDU_Service* pdu) {
  if (pdu == nullptr) return false;
  Exchange exchange(*pdu);
  return exchange.HasBegun() && ReadResponse(exchange);
}

bool UnknownStorage::ReadResponse(Exchange& exchange) {
  exchange.Expect(MessageID);
  DICOMCommandObject response;
  if (!exchange.Read(command_field::kStoreRSP, response)) return false;
  exchange.End();
  return CStoreRSP::Read(response);
}

bool UnknownStorage::Read(PDU_Service* pdu, DICOMCommandObject* command,
                          DICOMDataObject* dataObject) {
  if (pdu == nullptr || command == nullptr || dataObject == nullptr) return false;
  if (!CStoreRQ::Test(*command)) return CStoreRSP::Read(*command);
  if (!CStoreRQ::Read(*command, pdu, dataObject)) return false;
  const std::uint32_t status = Contained(std::uint32_t{dimse_status::kUnableToProcess},
                                         [&] { return StoreObject(dataObject); });
  return CStoreRSP::Write(pdu, command, static_cast<std::uint16_t>(status));
}

bool TypedStorage::GetUID(UID& uid) {
  uid = uid_;
  return true;
}

bool TypedStorage::Read(PDU_Service* pdu, DICOMCommandObject* command,
                        DICOMDataObject* dataObject) {
  if (command == nullptr) return false;
  const auto asked = UidOf(*command, 0x0000, command_element::kSopClass);
  return asked && *asked == uid_ && UnknownStorage::Read(pdu, command, dataObject);
}

}  // namespace tessaret
