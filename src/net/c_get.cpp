#include "net/c_get.h"

namespace tessaret {

bool CGetRQ::Write(PDU_Service* pdu, DICOMDataObject* dataObject) {
  return WriteQueryRequest(*this, pdu, {.field = command_field::kGetRQ}, dataObject, MessageID);
}

}  // namespace tessaret
