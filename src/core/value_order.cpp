#include "core/value_order.h"

#include <algorithm>

#include "base/byte_order.h"
#include "core/each_element.h"
#include "core/element_writer.h"

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

void SwapBytesOf(VR& vr, std::uint32_t width) {
  std::uint8_t* const bytes = vr.IsSteppedOver ? vr.Start : vr.Data;
  if (bytes == nullptr) return;
  const std::size_t length = vr.FirstBytes().size();
  switch (width) {
    case 2:
      return SwapBytes16(bytes, length);
    case 4:
      return SwapBytes32(bytes, length);
    case 8:
      return SwapBytes64(bytes, length);
    default:
      return;
  }
}

/// Native pixel data; null where there is none.
VR* NativePixels(const DICOMObject& object) {
  VR* const pixels = object.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  return pixels == nullptr || pixels->Items != nullptr ? nullptr : pixels;
}

bool HasWidePixels(const DICOMObject& object) { return object.GetUINT16(0x0028, 0x0100) > 8; }

}  // namespace

std::uint32_t NumberWidth(VrCode type) {
  const auto* row = std::find_if(std::begin(kWidths), std::end(kWidths),
                                 [type](const WidthOfType& each) { return each.type == type; });
  return row == std::end(kWidths) ? 1 : row->width;
}

void SwapNumbers(VR& vr) { SwapBytesOf(vr, NumberWidth(vr.TypeCode)); }

void SwapNumbers(DICOMObject& object) {
  ForEachElement(object, [](VR& vr) { SwapNumbers(vr); });
}

void CallWidePixelsWords(DICOMObject& object) {
  VR* const pixels = NativePixels(object);
  if (pixels != nullptr && pixels->TypeCode == type_code::OB && HasWidePixels(object))
    pixels->TypeCode = type_code::OW;
}

void TurnForBigEndian(DICOMObject& object, const RTC* dictionary) {
  VR* const pixels = NativePixels(object);
  if (pixels != nullptr && pixels->TypeCode != type_code::OB)
    pixels->TypeCode =
        pixels->TypeCode == type_code::OW || HasWidePixels(object) ? type_code::OW : type_code::OB;
  ForEachElement(object, [dictionary](VR& vr) {
    const VrCode type = TypeInStream(vr, vr.TypeCode, ElementForm::kExplicit, dictionary);
    SwapBytesOf(vr, NumberWidth(type));
  });
}

}  // namespace tessaret
