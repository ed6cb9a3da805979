// Elements as they are stored, and the data set as text.
#include <algorithm>
#include <cmath>
#include <span>

#include "base/byte_order.h"
#include "base/checked.h"
#include "core/module_dictionaries.h"
#include "core/object_text.h"
#include "core/value_order.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

namespace {

VR* ElementIn(const DICOMObject* object, std::int32_t group, std::int32_t element) {
  const TagKey tag = KeyOf(group, element);
  return object == nullptr ? nullptr : object->GetVR(GroupOf(tag), ElementOf(tag));
}

/// Both characters, whatever they are.
String StoredLetters(VrCode type) {
  if (type == type_code::kNone) return String(u"");
  const char letters[] = {FirstLetter(type), SecondLetter(type)};
  return String::FromNarrow({letters, 2});
}

/// Bits Allocated; 0 where that is no number of 16 bits.
std::uint32_t BitsAllocated(const DICOMObject& object) { return object.GetUINT16(0x0028, 0x0100); }

}  // namespace

Status CDCMObject::GetElement(std::int32_t Group, std::int32_t Element, String* TypeCode,
                              double* Length, double* Offset, VariantBool* HasValue,
                              std::int32_t* ItemsCount, VariantBool* Found) {
  if (TypeCode == nullptr || Length == nullptr || Offset == nullptr || HasValue == nullptr ||
      ItemsCount == nullptr || Found == nullptr)
    return kPointer;
  return AnswerOfFile([&] {
    const VR* const vr = ElementIn(Object.Get(), Group, Element);
    *Found = vr != nullptr;
    if (vr == nullptr) return kOk;
    *TypeCode = StoredLetters(vr->TypeCode);
    *Length = LengthOf(*vr);
    *Offset = vr->StreamPosition;
    *HasValue = vr->Data != nullptr;
    *ItemsCount = SaturatingCast<std::int32_t>(vr->ItemCount());
    return kOk;
  });
}

Status CDCMObject::GetBytes(std::int32_t Group, std::int32_t Element, double Offset,
                            std::int32_t Count, Variant* Bytes) {
  if (Bytes == nullptr) return kPointer;
  if (Count < 0 || !(Offset >= 0) || Offset != std::floor(Offset)) return kInvalidArgument;
  return AnswerOfFile([&] {
    const VR* const vr = ElementIn(Object.Get(), Group, Element);
    const auto here = vr == nullptr ? std::span<const std::uint8_t>() : vr->FirstBytes();
    if (!(Offset < static_cast<double>(here.size())) || Count == 0) {
      Bytes->Clear();
      return kOk;
    }
    const auto behind = here.subspan(static_cast<std::size_t>(Offset));
    *Bytes = VariantArray::OfBytes(
        behind.first(std::min(behind.size(), static_cast<std::size_t>(Count))));
    return kOk;
  });
}

Status CDCMObject::SetType(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                           VariantBool* Found) {
  if (Found == nullptr) return kPointer;
  const VrCode type = TwoLetters(TypeCode.View());
  if (type == type_code::kNone) return kInvalidArgument;
  VR* const vr = ElementIn(Object.Get(), Group, Element);
  *Found = vr != nullptr;
  if (vr != nullptr) vr->TypeCode = type;
  return kOk;
}

Status CDCMObject::get_HasPixelsOfDoubtfulOrder(VariantBool* pVal) {
  if (pVal == nullptr) return kPointer;
  const DICOMObject* const object = Object.Get();
  const VR* const pixels = ElementIn(object, GroupOf(kPixelDataTag), ElementOf(kPixelDataTag));
  // Fragments that were not loaded have left their undefined length behind.
  const bool areNative =
      pixels != nullptr && pixels->Items == nullptr && pixels->Length != kUndefinedLength;
  *pVal = areNative && BitsAllocated(*object) > 8 * NumberWidth(pixels->TypeCode);
  return kOk;
}

Status CDCMObject::get_Text(String* pVal) {
  if (pVal == nullptr) return kPointer;
  return AnswerOfFile([&] {
    const DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailOfFile(kNothingToGetFrom);
    *pVal = String::FromNarrow(ObjectToText(*object, 0, &ModuleDictionary()));
    return kOk;
  });
}

Status CDCMObject::GetElementText(std::int32_t Group, std::int32_t Element,
                                  Optional<std::int32_t> FirstLine, Optional<std::int32_t> Room,
                                  String* Text) {
  if (Text == nullptr) return kPointer;
  if (FirstLine < 0 || Room < 0) return kInvalidArgument;
  return AnswerOfFile([&] {
    if (Object.Get() == nullptr) return FailOfFile(kNothingToGetFrom);
    const VR* const vr = ElementIn(Object.Get(), Group, Element);
    std::string text;
    const auto take = [&](std::string_view line) {
      text += line;
      return Room == 0 || text.size() < static_cast<std::size_t>(Room);
    };
    if (vr != nullptr)
      ListElement(*vr, static_cast<std::size_t>(FirstLine), &ModuleDictionary(), take);
    *Text = String::FromNarrow(text);
    return kOk;
  });
}

}  // namespace tessaret
