#include "core/vr_group_pqueue.h"

#include "base/byte_order.h"

namespace tessaret {
namespace {

std::uint32_t WrittenSize(const VR& element) { return 8 + element.Length + (element.Length & 1); }

}  // namespace

bool VRGroupPQueue::Push(VR* element) {
  if (element == nullptr || element->Group != Group) return false;
  try {
    PQueue::Push(element);
  } catch (const std::bad_alloc&) {
    return false;
  }
  Size += WrittenSize(*element);
  return true;
}

VR* VRGroupPQueue::Pop() {
  VR* element = nullptr;
  if (!PQueue::Pop(element)) return nullptr;
  Size -= WrittenSize(*element);
  return element;
}

bool VRGroupPQueue::MakeGroupLength() {
  try {
    auto made = std::make_unique<VR>(Group, std::uint16_t{0}, 4u, true);
    made->TypeCode = type_code::UL;
    StoreLittle32(made->Data, Size);
    GroupLengthVR = std::move(made);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace tessaret
