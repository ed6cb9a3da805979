#include "core/value_order.h"

#include <algorithm>
#include <vector>

#include "base/byte_order.h"

namespace tessaret {
namespace {

struct WidthOfType {
  VrCode type;
  std::uint32_t width;
};

constexpr WidthOfType kWidths[] = {
    {type_code::AT, 2},          {type_code::OW, 2},          {type_code::SS, 2},
    {type_code::US, 2},          {type_code::FL, 4},          {type_code::OF, 4},
    {MakeTypeCode('O', 'L'), 4}, {type_code::SL, 4},          {type_code::UL, 4},
    {type_code::FD, 8},          {MakeTypeCode('O', 'D'), 8}, {MakeTypeCode('O', 'V'), 8},
    {MakeTypeCode('S', 'V'), 8}, {MakeTypeCode('U', 'V'), 8},
};

void SwapBytes64(std::uint8_t* data, std::size_t length) {
  for (std::size_t at = 0; length - at >= 8; at += 8) std::reverse(data + at, data + at + 8);
}

}  // namespace

std::uint32_t NumberWidth(VrCode type) {
  const auto* row = std::find_if(std::begin(kWidths), std::end(kWidths),
                                 [type](const WidthOfType& each) { return each.type == type; });
  return row == std::end(kWidths) ? 1 : row->width;
}

void SwapNumbers(VR& vr) {
  if (vr.Data == nullptr) return;
  switch (NumberWidth(vr.TypeCode)) {
    case 2:
      return SwapBytes16(vr.Data, vr.Length);
    case 4:
      return SwapBytes32(vr.Data, vr.Length);
    case 8:
      return SwapBytes64(vr.Data, vr.Length);
    default:
      return;
  }
}

void SwapNumbers(DICOMObject& object) {
  constexpr std::uint16_t kMetaGroup = 0x0002;
  std::vector<DICOMObject*> pending{&object};
  while (!pending.empty()) {
    DICOMObject* current = pending.back();
    pending.pop_back();
    current->Elements.ForEach([&pending](VR& vr) {
      if (vr.Group == kMetaGroup) return;
      SwapNumbers(vr);
      if (vr.Items == nullptr) return;
      for (const ItemArray::Node* node = vr.Items->First; node != nullptr; node = node->next) {
        if (node->value != nullptr) pending.push_back(node->value);
      }
    });
  }
}

}  // namespace tessaret
