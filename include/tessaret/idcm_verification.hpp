/// Asking another node whether it is there. A further interface of class "Tessaret.DcmCStore".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// For hosts that want to know before they send, and for those who set up nodes.
class IDcmVerification : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02107};
  static constexpr const char* kName = "IDcmVerification";

  /// Makes an association, sends a C-ECHO (DICOM PS3.4, annex A), and releases it. The arguments are those of IDcmCStore::SendFiles,
  /// and so are the failures where no association comes about. True when the node answered, whatever the status; false when it did not,
  /// and the association has ended. IDcmStoreResponse::get_AssociationError tells more of both.
  virtual Status Verify(const String& host, const String& port, const String& LocalAE,
                        const String& RemoteAE, std::int32_t TimeoutSecs,
                        Result<VariantBool> Answered) = 0;
};

}  // namespace tessaret
