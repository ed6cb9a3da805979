// Elements as plain records.
#include <cstring>
#include <memory>

#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

Status CDCMObject::GetVR(std::int32_t Group, std::int32_t Element, _VR_RECORD_TYPE* record) {
  if (record == nullptr) return kPointer;
  return Answer([&] {
    const VR* const vr = Find(Group, Element);
    std::unique_ptr<char[]> bytes;
    if (vr != nullptr && vr->Data != nullptr && vr->Length != 0) {
      bytes.reset(new char[vr->Length]);
      std::memcpy(bytes.get(), vr->Data, vr->Length);
    }
    record->Group = vr == nullptr ? -1 : vr->Group;
    record->Elem = vr == nullptr ? -1 : vr->Element;
    record->len = vr == nullptr ? 0 : static_cast<std::int32_t>(vr->Length);
    if (vr != nullptr) record->TypeCode = vr->TypeCode;
    record->pt = bytes.release();
    return kOk;
  });
}

Status CDCMObject::PutVR(_VR_RECORD_TYPE* record) {
  return Answer([&] {
    if (record == nullptr || Object.Get() == nullptr) return kOk;
    if (record->len < 0) return kInvalidArgument;
    const TagKey tag = KeyOf(record->Group, record->Elem);
    const auto length = static_cast<std::uint32_t>(record->len);
    const std::string_view bytes(record->pt, record->pt == nullptr ? 0 : length);
    const Status status =
        PutBytes(Object.Get()->GetVR(GroupOf(tag), ElementOf(tag)), tag, record->TypeCode, bytes);
    // A record may state a length without bytes, as an element has whose pixels were not loaded.
    if (Succeeded(status) && record->pt == nullptr)
      Object.Get()->GetVR(GroupOf(tag), ElementOf(tag))->Length = length;
    return status;
  });
}

}  // namespace tessaret
