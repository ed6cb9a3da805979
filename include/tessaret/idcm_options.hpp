/// Settings of the library as a whole. Class "Tessaret.DCMOptions".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

class IDCMOptions : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02005};
  static constexpr const char* kName = "IDCMOptions";

  /// Whether lookup tables for monitors of a certain kind are to be used. The value is kept for hosts; the library itself does not
  /// draw by it. It is read from the user's settings when the library starts and when the class is first used.
  virtual Status get_UseTotokuLUT(Result<VariantBool> pVal) = 0;

  /// Sets it for the process, and in the user's settings where these can be written. True is exactly -1. The value that is set
  /// already is not written again.
  virtual Status put_UseTotokuLUT(VariantBool newVal) = 0;
};

/// Events of that class: none.
class _IDCMOptionsEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03005};
  static constexpr const char* kName = "_IDCMOptionsEvents";
};

}  // namespace tessaret
