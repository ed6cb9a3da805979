/// A set of nodes that exchange documents. Class "Tessaret.XDIDomain".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// What is known of the nodes of one domain. No domain is filled yet: every property succeeds and leaves its output as it was, which
/// by name gives 0 and empty text.
class IXDIDomain : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F0200A};
  static constexpr const char* kName = "IXDIDomain";

  /// How many nodes there are.
  virtual Status get_NumPeers(Result<std::int32_t> pVal) = 0;

  /// The title of node `Idx`.
  virtual Status get_AETitle(std::int32_t Idx, Result<String> pVal) = 0;

  /// Where node `Idx` gives objects over HTTP.
  virtual Status get_WadoURL(std::int32_t Idx, Result<String> pVal) = 0;

  /// The name or address of node `Idx`.
  virtual Status get_DicomHost(std::int32_t Idx, Result<String> pVal) = 0;

  /// The port of node `Idx`, as text like every port.
  virtual Status get_DicomPort(std::int32_t Idx, Result<String> pVal) = 0;

  /// The index of the node with this title.
  virtual Status get_PeerIdx(const String& AETitle, Result<std::int32_t> pVal) = 0;
};

}  // namespace tessaret
