#include "facade/object_manager_calls.h"

#include <memory>

#include "facade/data_set_handle.h"
#include "facade/vr_record.h"

namespace tessaret {
namespace {

IDcmObjectManager& ManagerOf(void* self) { return *static_cast<IDcmObjectManager*>(self); }

Status LongOf(const Variant& argument, std::int32_t& number) {
  return Passing<std::int32_t>::In(argument, number);
}

/// The interface that an argument has to have; null for an empty argument.
template <class Interface>
Status ObjectIn(const Variant& argument, Ref<Interface>& object) {
  if (argument.IsEmpty()) return kOk;
  if (!argument.Is(VariantType::kObject)) return kTypeMismatch;
  if (argument.AsObject() == nullptr) return kOk;
  return argument.AsObject()->QueryInterface(Interface::kId,
                                             reinterpret_cast<void**>(object.Receive()));
}

Status PassHandle(IDcmObjectManager& manager, IOwnDataSetHandle& handle, std::int32_t gives) {
  // A handle whose data set is gone must not pass for none.
  if (handle.Get() == nullptr || (gives != 0 && !handle.Owns())) return kInvalidArgument;
  if (gives == 0) {
    DICOMObject* shown = nullptr;
    manager.GetPtr(0, &shown);
    if (shown != handle.Get()) return manager.PutPtr(0, handle.Get());
    // What the object gives up and goes on showing would have no owner.
    if (manager.GetOwnership() == kOk) handle.TakeOver();
    return kOk;
  }
  handle.GiveUp();
  const Status status = manager.PutPtr(gives, handle.Get());
  if (Failed(status)) handle.TakeOver();
  return status;
}

/// Reads a record through its interface. `bytes` is what the record points to.
Status ReadRecord(IVRRecord& from, Variant& bytes, _VR_RECORD_TYPE& record) {
  std::int32_t type = 0;
  for (const Status status :
       {from.get_Group(&record.Group), from.get_Elem(&record.Elem), from.get_TypeCode(&type),
        from.get_len(&record.len), from.get_pt(&bytes)}) {
    if (Failed(status)) return status;
  }
  record.TypeCode = static_cast<std::uint16_t>(type);
  if (VariantArray* const array = bytes.AsArray()) {
    record.pt = static_cast<char*>(array->Data());
    record.len = static_cast<std::int32_t>(array->ByteCount());
  }
  return kOk;
}

}  // namespace

Status CallGetPtr(void* self, const MemberInfo&, Variant* arguments, std::uint32_t count,
                  Variant* result) {
  if (count != 1) return kBadCount;
  std::int32_t takes = 0;
  if (const Status status = LongOf(arguments[0], takes); Failed(status)) return status;
  IDcmObjectManager& manager = ManagerOf(self);
  DICOMObject* object = nullptr;
  const Status status = manager.GetPtr(takes, &object);
  if (Failed(status)) return status;
  Variant given;
  if (object != nullptr) {
    try {
      given = Variant(DataSetHandle::Of(object, takes != 0).Get());
    } catch (const std::bad_alloc&) {
      if (takes != 0) manager.SetOwner();
      throw;
    }
  }
  if (result != nullptr) *result = std::move(given);
  return status;
}

Status CallPutPtr(void* self, const MemberInfo&, Variant* arguments, std::uint32_t count,
                  Variant*) {
  if (count != 2) return kBadCount;
  std::int32_t gives = 0;
  if (const Status status = LongOf(arguments[0], gives); Failed(status)) return status;
  Ref<IOwnDataSetHandle> handle;
  if (const Status status = ObjectIn(arguments[1], handle); Failed(status)) return status;
  return handle ? PassHandle(ManagerOf(self), *handle, gives)
                : ManagerOf(self).PutPtr(gives, nullptr);
}

Status CallGetVR(void* self, const MemberInfo&, Variant* arguments, std::uint32_t count,
                 Variant* result) {
  if (count != 2) return kBadCount;
  std::int32_t tag[2];
  for (int at = 0; at < 2; ++at) {
    if (const Status status = LongOf(arguments[at], tag[at]); Failed(status)) return status;
  }
  _VR_RECORD_TYPE record;
  const Status status = ManagerOf(self).GetVR(tag[0], tag[1], &record);
  const std::unique_ptr<char[]> bytes(record.pt);
  if (Failed(status)) return status;
  const Ref<IVRRecord> given = CVRRecord::Of(record);
  if (result != nullptr) *result = Variant(given.Get());
  return status;
}

Status CallPutVR(void* self, const MemberInfo&, Variant* arguments, std::uint32_t count, Variant*) {
  if (count != 1) return kBadCount;
  Ref<IVRRecord> given;
  if (const Status status = ObjectIn(arguments[0], given); Failed(status)) return status;
  if (!given) return ManagerOf(self).PutVR(nullptr);
  Variant bytes;
  _VR_RECORD_TYPE record;
  if (const Status status = ReadRecord(*given, bytes, record); Failed(status)) return status;
  return ManagerOf(self).PutVR(&record);
}

}  // namespace tessaret
