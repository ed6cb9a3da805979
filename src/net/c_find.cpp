#include "net/c_find.h"

namespace tessaret {

bool CFindRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  if (dataObject == nullptr) return false;
  // Queries alone go with low priority, so that archives serve what somebody waits for at a screen first.
  const QueryRequest what{
      .field = command_field::kFindRQ, .priority = request_priority::kLow, .isSentAtOnce = true};
  return WriteQueryRequest(*this, pdu, what, dataObject, MessageID);
}

bool CFindRSP::Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
                     DICOMDataObject* dataObject, std::string_view comment) {
  return WriteQueryResponse(*this, pdu, request,
                            {command_field::kFindRSP, status, nullptr, comment}, dataObject);
}

}  // namespace tessaret
