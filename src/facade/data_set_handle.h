// A data set of the core as an object, so that it can travel by name: scripts hold this in place of a pointer.
#pragma once

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "core/object_watch.h"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret {

/// By this a handle is told from anything else that has its public interface.
class IOwnDataSetHandle : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02181};

  /// The data set while it lives.
  virtual DICOMObject* Get() = 0;
  /// Whether the handle destroys it.
  virtual bool Owns() = 0;
  /// Gives the data set up, for somebody to take over. Requires: Owns().
  virtual void GiveUp() = 0;
  /// Takes it over from whoever holds it. Requires: it is there.
  virtual void TakeOver() = 0;
};

class DataSetHandle final
    : public ComponentObject<CallableByName<IDataSetHandle>, IOwnDataSetHandle> {
 public:
  /// A reference for the caller. With `owns` the handle takes `object` over. Throws std::bad_alloc, with `object` still the caller's.
  static Ref<IObject> Of(DICOMObject* object, bool owns);

  Status get_IsAlive(VariantBool* pVal) override;
  DICOMObject* Get() override { return object_.Get(); }
  bool Owns() override { return owns_; }
  void GiveUp() override;
  void TakeOver() override;

 private:
  explicit DataSetHandle(DICOMObject* object) : ComponentObject(nullptr), object_(object) {}
  ~DataSetHandle() override;

  ObjectWatch object_;
  bool owns_ = false;
};

}  // namespace tessaret
