// C-ECHO (DICOM PS3.7, 9.3.5).
#pragma once

#include "net/dimse_message.h"

namespace tessaret {

class CEchoRQ : public RequestOf<command_field::kEchoRQ> {
 public:
  bool Write(PDU_Service* pdu);
};

class CEchoRSP : public MessageOf<command_field::kEchoRSP> {
 public:
  /// Answers with status 0, taking elements out of the request. False for a request of another SOP class.
  bool Write(PDU_Service* pdu, DICOMCommandObject* request);
};

}  // namespace tessaret
