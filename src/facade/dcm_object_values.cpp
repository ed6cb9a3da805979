// Elements and their values, by type and as they are.
#include <algorithm>
#include <array>
#include <string>

#include "base/checked.h"
#include "core/module_dictionaries.h"
#include "core/variant_vr.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"

namespace tessaret {

using namespace dcm_object;

namespace {

constexpr std::int32_t kCannotConvert = 543;

/// What may be read as text as it is.
constexpr VrCode kTextTypes[] = {
    type_code::kNone, type_code::AE, type_code::AS, type_code::CS, type_code::DA, type_code::DS,
    type_code::DT,    type_code::IS, type_code::LO, type_code::LT, type_code::PN, type_code::SH,
    type_code::ST,    type_code::TM, type_code::UI, type_code::UN, type_code::UT};

bool IsText(VrCode type) { return std::ranges::find(kTextTypes, type) != std::end(kTextTypes); }

std::string_view BytesOf(const VR& vr) {
  if (vr.Data == nullptr) return {};
  return {reinterpret_cast<const char*>(vr.Data), vr.Length};
}

std::unique_ptr<VR> NewElement(TagKey tag) {
  return std::make_unique<VR>(GroupOf(tag), ElementOf(tag), 0, nullptr);
}

String DescriptionOf(TagKey tag) {
  std::array<char, kDescriptionBuffer> text{};
  ModuleDictionary().RunTimeClass(GroupOf(tag), ElementOf(tag), text.data());
  return String::FromNarrow(text.data());
}

std::int32_t Multiplicity(VR& vr) {
  return SaturatingCast<std::int32_t>(CVariantVR(&vr).VRMultiplicity());
}

void GiveTag(const VR& vr, std::int32_t& group, std::int32_t& element) {
  group = vr.Group;
  element = vr.Element;
}

}  // namespace

Status CDCMObject::get_VR(std::int32_t Group, std::int32_t Element, const Variant& TypeCode,
                          std::int32_t VM, Variant* pVal) {
  if (pVal == nullptr) return kPointer;
  return Answer([&] {
    VR* const vr = Find(Group, Element);
    if (vr == nullptr) {
      pVal->Clear();
      return kOk;
    }
    const VrCode wanted = FirstLetters(TypeCode.AsString());
    if (wanted != type_code::kNone) vr->TypeCode = wanted;
    *pVal = CVariantVR(vr).VRToVariant(VM);
    return kOk;
  });
}

Status CDCMObject::put_VR(std::int32_t Group, std::int32_t Element, const Variant& TypeCode,
                          std::int32_t VM, const Variant& newVal) {
  return Answer([&] {
    if (Object.Get() == nullptr) return FailWith(kNothingToPutInto);
    VR* const vr = Find(Group, Element, FirstLetters(TypeCode.AsString()));
    if (vr == nullptr) return PutNew(Group, Element, TypeCode, VM, newVal);
    return CVariantVR(vr).VariantToVR(newVal, VM) ? kOk : FailWith(kCannotConvert);
  });
}

Status CDCMObject::PutNew(std::int32_t group, std::int32_t element, const Variant& typeCode,
                          std::int32_t index, const Variant& value) {
  std::unique_ptr<VR> made = NewElement(KeyOf(group, element));
  made->TypeCode = TwoLetters(typeCode.AsString());
  if (made->TypeCode == type_code::kNone) ModuleDictionary().RunTimeClass(made.get());
  if (!CVariantVR(made.get()).VariantToVR(value, index)) return FailWith(kCannotConvert);
  Add(std::move(made));
  return kOk;
}

Status CDCMObject::get_VRMultiplicity(std::int32_t Group, std::int32_t Element,
                                      std::int32_t* pVal) {
  if (pVal == nullptr) return kPointer;
  return Answer([&] {
    VR* const vr = Find(Group, Element);
    *pVal = vr == nullptr ? 0 : Multiplicity(*vr);
    return kOk;
  });
}

Status CDCMObject::GetVRDescr(std::int32_t Group, std::int32_t Elem, String* Descr,
                              String* TypeCode, std::int32_t* Length, std::int32_t* VM,
                              VariantBool* Found) {
  if (Descr == nullptr || TypeCode == nullptr || Length == nullptr || VM == nullptr ||
      Found == nullptr)
    return kPointer;
  return Answer([&] {
    VR* const vr = Find(Group, Elem);
    *VM = 0;
    *Found = vr != nullptr;
    if (vr == nullptr) return kOk;
    String description = DescriptionOf(vr->Key());
    *TypeCode = LettersOf(vr->TypeCode);
    *Descr = std::move(description);
    *Length = static_cast<std::int32_t>(vr->Length);
    const bool isBytes = vr->TypeCode == type_code::OB || vr->TypeCode == type_code::OW ||
                         vr->TypeCode == type_code::UN;
    if (!isBytes) *VM = Multiplicity(*vr);
    return kOk;
  });
}

Status CDCMObject::RemoveVR(std::int32_t Group, std::int32_t Element, VariantBool*) {
  return Answer([&] {
    if (DICOMObject* const object = Object.Get()) {
      const TagKey tag = KeyOf(Group, Element);
      const std::unique_ptr<VR> removed(object->Remove(GroupOf(tag), ElementOf(tag)));
    }
    return kOk;
  });
}

Status CDCMObject::GetFirstVR(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) {
  if (Group == nullptr || Element == nullptr || Found == nullptr) return kPointer;
  const DICOMObject* const object = Object.Get();
  const VR* const first = object == nullptr ? nullptr : object->GetFirstVR();
  *Found = first != nullptr;
  if (first != nullptr) GiveTag(*first, *Group, *Element);
  return kOk;
}

Status CDCMObject::GetNextVR(std::int32_t* Group, std::int32_t* Element, VariantBool* Found) {
  if (Group == nullptr || Element == nullptr || Found == nullptr) return kPointer;
  const DICOMObject* const object = Object.Get();
  const TagKey tag = KeyOf(*Group, *Element);
  const VR* const next =
      object == nullptr ? nullptr : object->GetNextVR(object->GetVR(GroupOf(tag), ElementOf(tag)));
  *Found = next != nullptr;
  if (next != nullptr) GiveTag(*next, *Group, *Element);
  return kOk;
}

Status CDCMObject::PutBytes(VR* vr, TagKey tag, VrCode type, std::string_view bytes) {
  if (bytes.size() >= kUndefinedLength) throw std::bad_alloc();
  const auto length = static_cast<std::uint32_t>(bytes.size());
  if (vr != nullptr) {
    if (vr->Items != nullptr) return FailWith(kHoldsItems);
    vr->ReplaceValue(bytes.data(), length);
    vr->TypeCode = type;
    return kOk;
  }
  std::unique_ptr<VR> made = NewElement(tag);
  made->ReplaceValue(bytes.data(), length);
  made->TypeCode = type;
  Add(std::move(made));
  return kOk;
}

Status CDCMObject::PutVRRawString(std::int32_t Group, std::int32_t Elem, const String& TypeCode,
                                  const String& val) {
  return Answer([&] {
    if (Object.Get() == nullptr) return FailWith(kNothingToPutInto);
    VR* const vr = Find(Group, Elem, FirstLetters(TypeCode.View()));
    const TagKey tag = KeyOf(Group, Elem);
    VrCode type = vr != nullptr ? vr->TypeCode : TwoLetters(TypeCode.View());
    if (type == type_code::kNone) {
      VR unknown(GroupOf(tag), ElementOf(tag), 0, nullptr);
      ModuleDictionary().RunTimeClass(&unknown);
      type = unknown.TypeCode;
    }
    return PutBytes(vr, tag, type, val.Narrow());
  });
}

Status CDCMObject::GetVRRawString(std::int32_t Group, std::int32_t Elem, String*, String* val) {
  if (val == nullptr) return kPointer;
  return Answer([&] {
    const VR* const vr = Find(Group, Elem);
    if (vr != nullptr && !IsText(vr->TypeCode)) return FailWith("Cannot convert VR to raw ASCII");
    *val = String::FromNarrow(vr == nullptr ? std::string_view() : BytesOf(*vr));
    return kOk;
  });
}

Status CDCMObject::GetVRData(std::int32_t Group, std::int32_t Element, String* TypeCode,
                             Variant* BinArray) {
  if (TypeCode == nullptr || BinArray == nullptr) return kPointer;
  return Answer([&] {
    if (Object.Get() == nullptr) return FailWith(kNothingToGetFrom);
    const VR* const vr = Find(Group, Element);
    if (vr == nullptr) return FailWith("Non existing VR");
    String letters = LettersOf(vr->TypeCode);
    Variant bytes;
    try {
      if (vr->Data != nullptr && vr->Length != 0)
        bytes = VariantArray::OfBytes({vr->Data, vr->Length});
    } catch (const std::bad_alloc&) {
      return FailWith("Not enough memory for VR Data");
    }
    *TypeCode = std::move(letters);
    *BinArray = std::move(bytes);
    return kOk;
  });
}

Status CDCMObject::PutVRData(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                             const Variant& BinArray) {
  return Answer([&] {
    if (Object.Get() == nullptr) return FailWith(kNothingToPutInto);
    const VariantArray* const array = BinArray.AsArray();
    if (array == nullptr || array->Type() != VariantType::kByte)
      return FailWith("Only BYTE vectors allowed");
    if (array->Bounds().size() != 1) return FailWith("PutVRData: Only 1 dim BYTE vectors allowed");
    const std::u16string_view letters = TypeCode.View();
    const VrCode type = MakeTypeCode(letters.empty() ? '\0' : LetterOf(letters[0]),
                                     letters.size() < 2 ? '\0' : LetterOf(letters[1]));
    const auto bytes = array->Bytes();
    return PutBytes(Find(Group, Element), KeyOf(Group, Element), type,
                    {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  });
}

}  // namespace tessaret
