// An element's record as an object, so that it can travel by name.
#pragma once

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "tessaret/idcm_object_manager.hpp"

namespace tessaret {

class CVRRecord final : public ComponentObject<CallableByName<IVRRecord>> {
 public:
  /// A copy of `record`, with a reference for the caller. Throws std::bad_alloc.
  static Ref<IVRRecord> Of(const _VR_RECORD_TYPE& record);

  Status get_Group(std::int32_t* pVal) override;
  Status put_Group(std::int32_t newVal) override;
  Status get_Elem(std::int32_t* pVal) override;
  Status put_Elem(std::int32_t newVal) override;
  Status get_TypeCode(std::int32_t* pVal) override;
  Status put_TypeCode(std::int32_t newVal) override;
  Status get_len(std::int32_t* pVal) override;
  Status get_pt(Variant* pVal) override;
  Status put_pt(const Variant& newVal) override;

 private:
  CVRRecord() : ComponentObject(nullptr) {}

  std::int32_t group_ = 0;
  std::int32_t element_ = 0;
  std::int32_t length_ = 0;
  std::uint16_t type_ = 0;
  Variant bytes_;  // empty, or an array of them
};

}  // namespace tessaret
