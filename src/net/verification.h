// The verification service (DICOM PS3.4, annex A).
#pragma once

#include "net/c_echo.h"

namespace tessaret {

class Verification : public CEchoRQ, public CEchoRSP {
 public:
  bool GetUID(UID& uid) override;
  /// Asks the peer for an echo. True when it answered, whatever the status.
  bool Write(PDU_Service* pdu);
  /// Answers a request that has been read; takes an answer that has been read as it is. False for anything else, and for another SOP
  /// class.
  bool Read(PDU_Service* pdu, DICOMCommandObject* command);
};

}  // namespace tessaret
