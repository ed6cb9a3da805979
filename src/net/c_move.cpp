#include "net/c_move.h"

namespace tessaret {

bool CMoveRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject, std::string_view destinationAE) {
  if (dataObject == nullptr) return false;
  const QueryRequest what{.field = command_field::kMoveRQ, .destination = destinationAE};
  return WriteQueryRequest(*this, pdu, what, dataObject, MessageID);
}

}  // namespace tessaret
