// The life of an object, and who owns its data set.
#include "facade/dcm_object.h"

#include <utility>

#include "core/module_dictionaries.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

CDCMObject::CDCMObject(IObject* outer) : ComponentObject(outer) {
  Replace(std::make_unique<DICOMObject>());
}

CDCMObject::CDCMObject(const Showing& what)
    : ComponentObject(nullptr), Object(what.object), Parent(what.parent) {}

CDCMObject::~CDCMObject() { LetGo(); }

Ref<IDCMObject> CDCMObject::Wrap(DICOMObject* object, bool copy, IDCMObject* parent) {
  if (!copy) return Ref<IDCMObject>::Adopt(new CDCMObject(Showing{object, parent}));
  std::unique_ptr<DICOMObject> own(object->Clone(true));
  if (!own) throw std::bad_alloc();
  auto* made = new CDCMObject(Showing{own.get(), parent});
  static_cast<void>(own.release());
  made->BecomeOwner(made->Object);
  return Ref<IDCMObject>::Adopt(made);
}

void CDCMObject::LetGo() noexcept {
  // References to this may go with what is destroyed, and lead back here.
  DICOMObject* const owned = Owner ? Object.Get() : nullptr;
  Object = ObjectWatch();
  Remember(nullptr);
  delete owned;
  LeaveParent();
}

void CDCMObject::LeaveParent() noexcept {
  if (!Parent) return;
  // A parent that dies leaves its own here instead of dying one stack frame deeper: walks go down any number of levels.
  static thread_local Ref<IDCMObject>* nextToLeave = nullptr;
  if (nextToLeave != nullptr && !*nextToLeave) {
    *nextToLeave = std::move(Parent);
    return;
  }
  Ref<IDCMObject> next;
  Ref<IDCMObject>* const outer = std::exchange(nextToLeave, &next);
  for (Ref<IDCMObject> leaving = std::move(Parent); leaving;
       leaving = std::exchange(next, nullptr)) {
    leaving = nullptr;
  }
  nextToLeave = outer;
}

void CDCMObject::Replace(std::unique_ptr<DICOMObject> object) {
  ObjectWatch watch(object.get());
  LetGo();
  static_cast<void>(object.release());
  BecomeOwner(std::move(watch));
}

void CDCMObject::BecomeOwner(ObjectWatch object) noexcept {
  Object = std::move(object);
  Object.SetHolder(ObjectHolder::kFacade);
  Owner = true;
}

void CDCMObject::Remember(VR* vr) noexcept {
  CurrentVR = vr;
  if (vr != nullptr) currentRevision_ = Object.Get()->Revision;
}

VR* CDCMObject::Find(std::int32_t group, std::int32_t element, VrCode letters) {
  DICOMObject* const object = Object.Get();
  if (object == nullptr) return nullptr;
  const TagKey tag = KeyOf(group, element);
  const bool isCurrent =
      CurrentVR != nullptr && currentRevision_ == object->Revision && CurrentVR->Key() == tag;
  VR* const vr = isCurrent ? CurrentVR : object->GetVR(GroupOf(tag), ElementOf(tag));
  if (vr == nullptr) return nullptr;
  Remember(vr);
  if (vr->TypeCode == type_code::kNone) {
    vr->TypeCode = letters;
    if (letters == type_code::kNone) ModuleDictionary().RunTimeClass(vr);
  }
  return vr;
}

VR& CDCMObject::Add(std::unique_ptr<VR> vr) {
  if (!Object.Get()->Push(vr.get())) throw std::bad_alloc();
  Remember(vr.get());
  return *vr.release();
}

Status CDCMObject::Clear() {
  return Answer([this] {
    Remember(nullptr);
    if (DICOMObject* const object = Object.Get()) {
      object->Reset();
    } else {
      Replace(std::make_unique<DICOMObject>());
    }
    return kOk;
  });
}

Status CDCMObject::copy(IDCMObject** pVal) {
  if (pVal == nullptr) return kPointer;
  return Answer([&] {
    DICOMObject* const object = Object.Get();
    *pVal = object != nullptr ? Wrap(object, true).Detach() : new CDCMObject(nullptr);
    return kOk;
  });
}

Status CDCMObject::Set(IDCMObject* source) {
  if (source == nullptr) return kPointer;
  return Answer([&] {
    Ref<IDcmObjectManager> manager;
    Status status =
        source->QueryInterface(IDcmObjectManager::kId, reinterpret_cast<void**>(manager.Receive()));
    if (Failed(status)) return status;
    DICOMObject* object = nullptr;
    status = manager->GetPtr(0, &object);
    if (Failed(status)) return status;
    // Copied before the data set that is here goes: it may be the source, or hold it.
    auto own = std::make_unique<DICOMObject>();
    if (object != nullptr && !own->CopyFrom(*object)) throw std::bad_alloc();
    Replace(std::move(own));
    return kOk;
  });
}

Status CDCMObject::GetOwnership() {
  if (!Owner) return kFalse;
  Owner = false;
  if (Object.Get() != nullptr) Object.SetHolder(ObjectHolder::kSomebody);
  return kOk;
}

Status CDCMObject::SetOwner() {
  if (Owner) return kFalse;
  if (Object.Get() != nullptr) {
    if (Object.Holder() != ObjectHolder::kSomebody) return kFalse;
    Object.SetHolder(ObjectHolder::kFacade);
  }
  Owner = true;
  return kOk;
}

Status CDCMObject::GetPtr(std::int32_t takes, DICOMObject** pVal) {
  if (pVal == nullptr) return kPointer;
  if (takes != 0 && GetOwnership() != kOk) return kFalse;
  *pVal = Object.Get();
  return kOk;
}

Status CDCMObject::PutPtr(std::int32_t gives, DICOMObject* newVal) {
  return Answer([&] {
    if (newVal != nullptr && newVal == Object.Get()) {
      if (gives != 0) return Owner || SetOwner() == kOk ? kOk : kInvalidArgument;
      GetOwnership();
      return kOk;
    }
    ObjectWatch watch(newVal);
    if (newVal != nullptr && gives != 0 && watch.Holder() != ObjectHolder::kSomebody)
      return kInvalidArgument;
    // It may be an item of the data set that goes.
    LetGo();
    Object = std::move(watch);
    Owner = gives != 0;
    if (Owner && Object.Get() != nullptr) Object.SetHolder(ObjectHolder::kFacade);
    return kOk;
  });
}

}  // namespace tessaret
