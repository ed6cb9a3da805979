// The request that cancels a C-FIND, C-MOVE or C-GET (DICOM PS3.7, 9.3.2.3, 9.3.3.3 and 9.3.4.3).
#pragma once

#include "net/dimse_message.h"

namespace tessaret {

/// What a provider finds that looks for a cancel between its responses.
enum class Interruption {
  kNone,    // nothing has come, or something else
  kCancel,  // of the request that is being answered
  kEnd,     // the association was released, aborted or closed, or fails: no response may follow
};

class CCancelRQ : public MessageOf<command_field::kCancelRQ> {
 public:
  /// Cancels the request with this identifier, on the presentation context of the last message. False where there was none yet.
  static bool Write(PDU_Service* pdu, std::uint16_t messageID);
  /// Looks for a cancel without waiting. False at once where nothing has come; otherwise one command is read into `command`, and the
  /// answer tells whether it is one.
  static bool Read(PDU_Service* pdu, DICOMCommandObject& command);
  /// Looks in the same way, and tells whether the association goes on. Responses still go in the context of their request.
  static Interruption Look(PDU_Service& pdu);
};

class CFindCancelRQ : public CCancelRQ {};
class CMoveCancelRQ : public CCancelRQ {};
class CGetCancelRQ : public CCancelRQ {};

}  // namespace tessaret
