#include "facade/data_set_handle.h"

namespace tessaret {

Ref<IObject> DataSetHandle::Of(DICOMObject* object, bool owns) {
  auto* made = new DataSetHandle(object);
  if (owns) made->TakeOver();
  return Ref<IObject>::Adopt(made->Own());
}

DataSetHandle::~DataSetHandle() {
  if (owns_) delete object_.Get();
}

void DataSetHandle::GiveUp() {
  owns_ = false;
  object_.SetHolder(ObjectHolder::kSomebody);
}

void DataSetHandle::TakeOver() {
  owns_ = true;
  // Nobody else may take it while a script holds it.
  object_.SetHolder(ObjectHolder::kFacade);
}

Status DataSetHandle::get_IsAlive(VariantBool* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = Get() != nullptr;
  return kOk;
}

}  // namespace tessaret
