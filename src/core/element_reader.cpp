#include "core/element_reader.h"

#include <algorithm>
#include <iterator>

namespace tessaret {

void SwapValue(VrCode type, std::uint8_t* data, std::uint32_t length) {
  switch (type) {
    case type_code::OW:
    case type_code::AT:
    case type_code::US:
    case type_code::SS:
      SwapBytes16(data, length);
      break;
    case type_code::UL:
    case type_code::SL:
    case type_code::FL:
    case type_code::FD:
    case type_code::OF:
      SwapBytes32(data, length);
      break;
    default:
      break;
  }
}

bool MayBeSteppedOver(const VR& vr) {
  constexpr TagKey kPixelTags[] = {MakeTagKey(0x7FE0, 0x0008), MakeTagKey(0x7FE0, 0x0009),
                                   kPixelDataTag};
  constexpr VrCode kPixelTypes[] = {
      type_code::OB,          type_code::OW,          type_code::OF, MakeTypeCode('O', 'D'),
      MakeTypeCode('O', 'L'), MakeTypeCode('O', 'V'), type_code::UN, type_code::kNone};
  const bool isPixels = vr.Group == kStructuralGroup ||
                        std::ranges::find(kPixelTags, vr.Key()) != std::end(kPixelTags);
  return isPixels && std::ranges::find(kPixelTypes, vr.TypeCode) != std::end(kPixelTypes);
}

std::string TransferSyntaxText(const VR& vr) {
  if (vr.Data == nullptr) return {};
  // The length is masked rather than cut: what is longer than any UID must not pass for one.
  const auto* text = reinterpret_cast<const char*>(vr.Data);
  const std::uint32_t length = vr.Length & 0x3F;
  std::string uid(text, std::find(text, text + length, '\0'));
  if (!uid.empty() && uid.back() == ' ') uid.pop_back();
  return uid;
}

void TraceStructuralTag(std::uint16_t element, std::uint32_t length, ElementForm form) {
  const bool delimiter = element == kSequenceDelimiterElement || element == kItemDelimiterElement;
  const bool undefined = length == kUndefinedLength;
  const bool item = undefined || element == kItemElement;
  if (form == ElementForm::kImplicit) {
    std::string line = parse_trace::StructuralTag(kStructuralGroup, element, length);
    line += delimiter   ? parse_trace::kImplicitDelimiter
            : undefined ? parse_trace::kImplicitItemOfUndefinedLength
            : item      ? parse_trace::kImplicitItemOfDefinedLength
                        : parse_trace::kUnknownStructuralTag;
    AppendToDump(line);
    return;
  }
  if (delimiter) return;
  if (!item) {
    AppendToDump(parse_trace::kExplicitParseFailed);
  } else {
    AppendToDump(undefined ? parse_trace::ExplicitItemOfUndefinedLength(element)
                           : parse_trace::ExplicitItemOfDefinedLength(element, length));
  }
}

}  // namespace tessaret
