#include "meant_type.h"

#include <algorithm>
#include <iterator>

#include "class_object.h"
#include "value_text.h"

namespace tessaret::tool {
namespace {

/// The rows of data/tables/elements.tsv that name these two and no third. The dictionary
/// has one type a tag: US.
constexpr TagKey kSignedWithPixels[] = {
    MakeTagKey(0x0018, 0x9810), MakeTagKey(0x0022, 0x1452), MakeTagKey(0x0028, 0x0071),
    MakeTagKey(0x0028, 0x0104), MakeTagKey(0x0028, 0x0105), MakeTagKey(0x0028, 0x0106),
    MakeTagKey(0x0028, 0x0107), MakeTagKey(0x0028, 0x0108), MakeTagKey(0x0028, 0x0109),
    MakeTagKey(0x0028, 0x0110), MakeTagKey(0x0028, 0x0111), MakeTagKey(0x0028, 0x0120),
    MakeTagKey(0x0028, 0x0121), MakeTagKey(0x0028, 0x1100), MakeTagKey(0x0028, 0x1101),
    MakeTagKey(0x0028, 0x1102), MakeTagKey(0x0028, 0x1103), MakeTagKey(0x0028, 0x1111),
    MakeTagKey(0x0028, 0x1112), MakeTagKey(0x0028, 0x1113), MakeTagKey(0x0028, 0x3002),
    MakeTagKey(0x0040, 0x9211), MakeTagKey(0x0040, 0x9216), MakeTagKey(0x0060, 0x3004),
    MakeTagKey(0x0060, 0x3006),
};

}  // namespace

bool IsSignedWithPixels(TagKey tag) {
  return std::find(std::begin(kSignedWithPixels), std::end(kSignedWithPixels), tag) !=
         std::end(kSignedWithPixels);
}

bool HasSignedPixels(IDCMObject& object, bool around) {
  if (!FactsOf(object, kPixelRepresentationTag)) return around;
  return UnsignedOf(*FileOf(object), kPixelRepresentationTag) == 1;
}

VrCode MeantType(TagKey tag, VrCode type, bool isImplicit, bool signedPixels) {
  const bool isSigned =
      isImplicit && signedPixels && type == type_code::US && IsSignedWithPixels(tag);
  return isSigned ? type_code::SS : ShownType(tag, type);
}

}  // namespace tessaret::tool
