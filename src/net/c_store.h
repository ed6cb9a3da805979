// C-STORE (DICOM PS3.7, 9.3.1).
#pragma once

#include <memory>

#include "net/dimse_message.h"

namespace tessaret {

class CStoreRQ : public RequestOf<command_field::kStoreRQ> {
 public:
  /// Sends the request and `dataObject`, which is popped empty.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
};

class CStoreRSP : public MessageOf<command_field::kStoreRSP> {
 public:
  /// The status of the response read last.
  virtual std::uint16_t GetStatus() { return Status; }

  /// Answers with `status`, taking elements out of the request, whose SOP class it is about.
  bool Write(PDU_Service* pdu, DICOMCommandObject* request, std::uint16_t status);
  /// Takes Status, 0 where there is none, and of a status that is not 0 the comment, out of the response. True for a response of this
  /// kind, whatever its status.
  bool Read(DICOMCommandObject& command);

  std::uint16_t Status = 0;
  std::unique_ptr<VR> ErrorComment;  // (0000,0902), or null
};

}  // namespace tessaret
