// C-MOVE (DICOM PS3.7, 9.3.4).
#pragma once

#include "net/query_message.h"

namespace tessaret {

class CMoveRQ : public RequestOf<command_field::kMoveRQ> {
 public:
  /// Sends the request, and then the identifier, which is popped empty. Where that cannot be encoded the link is closed, for the peer
  /// waits for it.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject, std::string_view destinationAE);
};

class CMoveRSP : public RetrieveResponse<command_field::kMoveRSP> {};

}  // namespace tessaret
