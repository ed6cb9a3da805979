// C-GET (DICOM PS3.7, 9.3.3).
#pragma once

#include "net/query_message.h"

namespace tessaret {

class CGetRQ : public RequestOf<command_field::kGetRQ> {
 public:
  /// Sends the request, and then the identifier, which is popped empty or null. Where that cannot be encoded the link is closed, for the peer
  /// waits for it.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
};

class CGetRSP : public RetrieveResponse<command_field::kGetRSP> {};

}  // namespace tessaret
