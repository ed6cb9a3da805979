// C-ECHO (DICOM PS3.7, 9.3.5).
#pragma once

#include "net/dimse_message.h"

namespace tessaret {

class CEchoRQ : public virtual DimseMessage {
 public:
  bool Write(PDU_Service* pdu);
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);
};

class CEchoRSP : public virtual DimseMessage {
 public:
  /// Answers with status 0, taking elements out of the request. False for a request of another SOP class.
  bool Write(PDU_Service* pdu, DICOMCommandObject* request);
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);
};

}  // namespace tessaret
