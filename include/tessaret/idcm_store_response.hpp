/// What the other node answered to a file. A further interface of class "Tessaret.DcmCStore".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// For hosts that want to know whether a node really took what it was sent: IDcmCStore counts every answer as sent, also a refusal. To
/// be asked within the events of IDcmCStore, about the file that the event is about, or after SendFiles. Every member answers kPointer
/// for a null place of the answer.
class IDcmStoreResponse : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02106};
  static constexpr const char* kName = "IDcmStoreResponse";

  /// The status of the answer (DICOM PS3.4, B.2.3): 0 for success, 0xB000 to 0xBFFF for a warning, by which the object was stored, and
  /// anything else for a failure. -1 where there was no answer.
  virtual Status get_ResponseStatus(Result<std::int32_t> pVal) = 0;

  /// The comment that came with a status that is not 0, (0000,0902); empty without one.
  virtual Status get_ResponseComment(Result<String> pVal) = 0;

  /// Why the last SendFiles made no association, in the words of the network: the system's for a link that could not be opened, the
  /// numbers of the refusal as texts, "No SOP Class proposed", "No Accepted presentation Context found", "Corrupt transmission
  /// reading AAssociateRQ". In SopError: why the association did not take the file, such as "SOP Class not supported [%s]" or "The
  /// peer has closed the link"; empty where the file itself is to blame. After IDcmVerification::Verify: why no association came
  /// about, or why the node did not answer on the one that did; empty where it answered.
  virtual Status get_AssociationError(Result<String> pVal) = 0;
};

}  // namespace tessaret
