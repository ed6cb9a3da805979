#include "facade/data_set_handle.h"

namespace tessaret {

Ref<IObject> DataSetHandle::Of(DICOMObject* object, bool owns) {
  auto* made = new DataSetHandle(object);
  made->owns_ = owns;
  return Ref<IObject>::Adopt(made->Own());
}

DataSetHandle::~DataSetHandle() {
  if (owns_) delete object_.Get();
}

Status DataSetHandle::get_IsAlive(VariantBool* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = Get() != nullptr;
  return kOk;
}

}  // namespace tessaret
