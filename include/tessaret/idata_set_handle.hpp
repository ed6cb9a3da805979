/// A data set of the core, for hosts that work by name.
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// A data set for calls by name. IDcmObjectManager.GetPtr gives one, and PutPtr takes it.
class IDataSetHandle : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02103};
  static constexpr const char* kName = "IDataSetHandle";

  /// Whether the data set still exists.
  virtual Status get_IsAlive(Result<VariantBool> pVal) = 0;
};

}  // namespace tessaret
