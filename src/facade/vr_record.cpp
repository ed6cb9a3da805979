#include "facade/vr_record.h"

#include <limits>

namespace tessaret {
namespace {

template <class T, class Value>
Status Give(T* place, const Value& value) {
  if (place == nullptr) return kPointer;
  *place = value;
  return kOk;
}

}  // namespace

Ref<IVRRecord> CVRRecord::Of(const _VR_RECORD_TYPE& record) {
  auto made = Ref<CVRRecord>::Adopt(new CVRRecord);
  made->group_ = record.Group;
  made->element_ = record.Elem;
  made->length_ = record.len;
  made->type_ = record.TypeCode;
  if (record.pt != nullptr && record.len > 0)
    made->bytes_ = VariantArray::OfBytes(
        {reinterpret_cast<const std::uint8_t*>(record.pt), static_cast<std::size_t>(record.len)});
  return Ref<IVRRecord>(made.Get());
}

Status CVRRecord::get_Group(std::int32_t* pVal) { return Give(pVal, group_); }

Status CVRRecord::put_Group(std::int32_t newVal) {
  group_ = newVal;
  return kOk;
}

Status CVRRecord::get_Elem(std::int32_t* pVal) { return Give(pVal, element_); }

Status CVRRecord::put_Elem(std::int32_t newVal) {
  element_ = newVal;
  return kOk;
}

Status CVRRecord::get_TypeCode(std::int32_t* pVal) { return Give(pVal, std::int32_t{type_}); }

Status CVRRecord::put_TypeCode(std::int32_t newVal) {
  type_ = static_cast<std::uint16_t>(newVal);
  return kOk;
}

Status CVRRecord::get_len(std::int32_t* pVal) { return Give(pVal, length_); }

Status CVRRecord::get_pt(Variant* pVal) {
  try {
    return Give(pVal, bytes_);
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

Status CVRRecord::put_pt(const Variant& newVal) {
  const VariantArray* const array = newVal.AsArray();
  const bool isBytes = array != nullptr && array->Type() == VariantType::kByte &&
                       array->Bounds().size() == 1 &&
                       array->Count() <= std::numeric_limits<std::int32_t>::max();
  if (!isBytes && !newVal.IsEmpty()) return kTypeMismatch;
  try {
    bytes_ = newVal;
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
  length_ = isBytes ? static_cast<std::int32_t>(array->Count()) : 0;
  return kOk;
}

}  // namespace tessaret
