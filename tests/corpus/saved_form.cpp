#include "corpus/saved_form.h"

#include <cstring>
#include <utility>
#include <vector>

#include "core/transfer_syntax.h"
#include "support/compare_objects.h"

namespace tessaret::test {
namespace {

std::vector<VR*> ElementsOf(const DICOMObject& object) {
  std::vector<VR*> elements;
  object.Elements.ForEach([&](VR& vr) { elements.push_back(&vr); });
  return elements;
}

void PadToEvenLength(VR& vr) {
  if (vr.Length % 2 == 0 || vr.Data == nullptr) return;
  auto* padded = new std::uint8_t[vr.Length + 1];
  std::memcpy(padded, vr.Data, vr.Length);
  padded[vr.Length] = 0;
  const std::uint32_t length = vr.Length + 1;
  vr.Reset();
  vr.Length = length;
  vr.Data = padded;
  vr.OwnsData = 1;
}

void TakeSavedType(VR& vr, bool implicit, const RTC& dictionary) {
  const bool unknown = vr.TypeCode == type_code::kNone || vr.TypeCode == type_code::UN;
  if (!implicit && !unknown) return;
  vr.TypeCode = dictionary.RunTimeClass(vr.Group, vr.Element, nullptr);
  if (vr.TypeCode == type_code::kNone) {
    vr.TypeCode = vr.Items != nullptr && !implicit ? type_code::SQ : type_code::UN;
  }
  if (vr.TypeCode == type_code::SQ && vr.Data != nullptr) vr.TypeCode = type_code::UN;
}

/// Group lengths of an item: only that of a command set stays, and only in the implicit form.
bool ItemKeepsGroupLength(const VR& vr, bool implicit) { return implicit && vr.Group == 0x0000; }

void TakeSavedItem(DICOMObject& item, bool implicit, const RTC& dictionary);

void TakeSavedElement(VR& vr, bool implicit, const RTC& dictionary) {
  TakeSavedType(vr, implicit, dictionary);
  PadToEvenLength(vr);
  const bool fragments = vr.Key() == kPixelDataTag;
  for (std::uint32_t at = 0; !fragments && at < vr.ItemCount(); ++at) {
    TakeSavedItem(*vr.GetItem(at), implicit, dictionary);
  }
}

void TakeSavedItem(DICOMObject& item, bool implicit, const RTC& dictionary) {
  for (VR* vr : ElementsOf(item)) {
    if (vr->Element == 0 && !ItemKeepsGroupLength(*vr, implicit)) {
      delete item.Remove(vr->Group, vr->Element);
      continue;
    }
    TakeSavedType(*vr, implicit, dictionary);
    const bool endsInBlank =
        vr->Data != nullptr && vr->Length != 0 && vr->Data[vr->Length - 1] == ' ';
    if (vr->TypeCode == type_code::UI && endsInBlank) vr->Data[vr->Length - 1] = 0;
    TakeSavedElement(*vr, implicit, dictionary);
  }
}

/// The first element that is no group length brings in the syntax of the data set; until then the explicit form of the
/// meta header rules, which has no group lengths.
void TakeSavedTopLevel(DICOMObject& object, bool implicit, const RTC& dictionary) {
  bool switched = false;
  for (VR* vr : ElementsOf(object)) {
    switched = switched || (vr->Group > 0x0002 && vr->Element != 0);
    if (vr->Element == 0 && !(implicit && switched)) {
      delete object.Remove(vr->Group, vr->Element);
    } else {
      TakeSavedElement(*vr, implicit, dictionary);
    }
  }
}

/// Values lie in the byte order of their stream.
std::uint16_t BitsAllocated(const DICOMObject& object, bool bigEndian) {
  const VR* vr = object.GetVR(0x0028, 0x0100);
  if (vr == nullptr || vr->Length != 2) return 0;
  return static_cast<std::uint16_t>(bigEndian ? vr->Data[0] << 8 | vr->Data[1]
                                              : vr->Data[1] << 8 | vr->Data[0]);
}

void TakePixelType(VR& pixels, const DICOMObject& object, std::int32_t code) {
  const bool bigEndian = code == kExplicitBig;
  const bool named = pixels.TypeCode == type_code::OB || pixels.TypeCode == type_code::OW;
  if (IsImplicit(code) || (bigEndian && named)) return;
  pixels.TypeCode = BitsAllocated(object, bigEndian) > 8 ? type_code::OW : type_code::OB;
}

}  // namespace

std::int32_t CodeToSave(const DICOMObject& object) {
  const VR* syntax = object.GetVR(0x0002, 0x0010);
  if (syntax == nullptr) return kImplicitLittle;
  std::string uid = ValueText(*syntax);
  while (!uid.empty() && (uid.back() == '\0' || uid.back() == ' ')) uid.pop_back();
  return FindTransferSyntax(uid).value_or(0);
}

void TakeSavedForm(DICOMObject& object, const RTC& dictionary) {
  const std::int32_t code = CodeToSave(object);
  if (VR* pixels = object.GetVR(0x7FE0, 0x0010); pixels != nullptr)
    TakePixelType(*pixels, object, code);
  RemoveMetaGroup(object);
  TakeSavedTopLevel(object, IsImplicit(code), dictionary);
}

void RemoveMetaGroup(DICOMObject& object) {
  for (VR* vr : ElementsOf(object)) {
    if (vr->Group == 0x0002) delete object.Remove(vr->Group, vr->Element);
  }
}

}  // namespace tessaret::test
