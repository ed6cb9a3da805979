/// Receives objects that other systems send over HTTP. Class "Tessaret.XDIConsumer".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/idcm_object.hpp"
#include "tessaret/ixdi_domain.hpp"
#include "tessaret/server_type.hpp"

namespace tessaret {

/// A small server: whatever object is posted to its port comes as an event on the thread that made this, which has to call PumpEvents
/// (tessaret/pump.hpp) for them. Making it fails with "Cannot create proxy window" where events cannot be carried.
class IXDIConsumer : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F0200B};
  static constexpr const char* kName = "IXDIConsumer";

  /// Succeeds and does nothing.
  virtual Status Connect(IXDIDomain* XDIDom, const String& AETitle, _EnumServerType method) = 0;

  /// Succeeds and does nothing: no object is fetched, and no event follows.
  virtual Status Retrieve(const String& StudyInstanceUID, const String& SeriesInstanceUID,
                          const String& SOPInstanceUID, std::int32_t frame) = 0;

  /// Succeeds and does nothing; the server goes on listening.
  virtual Status Disconnect() = 0;

  /// Starts the server on `port`, a number as text; one that listens already starts anew. Empty: the port of the user's settings,
  /// then that of "vandrel.ini" beside the library, then 8080. May come from any thread. Fails with "Cannot create HTTP Server"
  /// for want of memory; a port that is in use comes as OnError.
  virtual Status Listen(const String& port) = 0;
};

/// Events of that class. They come on the thread that made the object, while it pumps.
class _IXDIConsumerEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F0300B};
  static constexpr const char* kName = "_IXDIConsumerEvents";

  /// An object came, of whatever kind. `DDO` is new, and the sink's to keep; `XDIDom` is null.
  virtual Status OnKOS(IDCMObject* DDO, IXDIDomain* XDIDom) = 0;

  /// Not told by this version.
  virtual Status OnObject(IDCMObject* DDO) = 0;

  /// Something failed, in words.
  virtual Status OnError(const String& Msg) = 0;
};

}  // namespace tessaret
