// Calls of IDcmObjectManager by name: pointers to data sets travel as handles, records as objects.
#pragma once

#include "component/call_by_name.h"
#include "core/dicom_object.h"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret {

template <>
struct Passing<DICOMObject*> {
  static constexpr std::uint16_t kTag = static_cast<std::uint16_t>(VariantType::kObject);
  static constexpr const char* kInterface = IDataSetHandle::kName;
};
template <>
struct Passing<DICOMObject> : Passing<DICOMObject*> {};
template <>
struct Passing<_VR_RECORD_TYPE> {
  static constexpr std::uint16_t kTag = static_cast<std::uint16_t>(VariantType::kObject);
  static constexpr const char* kInterface = IVRRecord::kName;
};

// As CallMember, for the members of IDcmObjectManager with such arguments; `self` is one of them.
Status CallGetPtr(void* self, const MemberInfo& member, Variant* arguments, std::uint32_t count,
                  Variant* result);
Status CallPutPtr(void* self, const MemberInfo& member, Variant* arguments, std::uint32_t count,
                  Variant* result);
Status CallGetVR(void* self, const MemberInfo& member, Variant* arguments, std::uint32_t count,
                 Variant* result);
Status CallPutVR(void* self, const MemberInfo& member, Variant* arguments, std::uint32_t count,
                 Variant* result);

}  // namespace tessaret
