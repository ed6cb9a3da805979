// C-FIND (DICOM PS3.7, 9.3.2).
#pragma once

#include "net/query_message.h"

namespace tessaret {

class CFindRQ : public RequestOf<command_field::kFindRQ> {
 public:
  /// Sends the request and the identifier, which is popped empty. Nothing is sent where that cannot be encoded.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
};

class CFindRSP : public MessageOf<command_field::kFindRSP> {
 public:
  /// Answers the request, with a data set that is popped empty or null, and a comment of its very length, or none.
  bool Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
             DICOMDataObject* dataObject = nullptr, std::string_view comment = {});
};

}  // namespace tessaret
