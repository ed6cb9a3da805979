#include "facade/dcm_dictionary.h"

#include "core/dictionary_queries.h"
#include "core/module_dictionaries.h"
#include "facade/class_ids.h"
#include "facade/guard.h"

namespace tessaret {
namespace {

template <class Work>
Status Asked(Work work) {
  return Guarded<IDcmDictionary>(class_id::kDcmDictionary, work);
}

template <class... T>
bool AreThere(const T*... places) {
  return ((places != nullptr) && ...);
}

}  // namespace

Status CDcmDictionary::get_NumEntries(std::int16_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = NumEntries(ModuleDictionary());
  return kOk;
}

Status CDcmDictionary::GetEntry(std::int16_t Idx, std::int32_t* Group, std::int32_t* Element,
                                VariantBool* Found) {
  if (!AreThere(Group, Element, Found)) return kPointer;
  std::uint16_t group = 0;
  std::uint16_t element = 0;
  *Found = tessaret::GetEntry(ModuleDictionary(), Idx, group, element);
  if (Found->IsTrue()) {
    *Group = group;
    *Element = element;
  }
  return kOk;
}

Status CDcmDictionary::GetVRDescription(std::int32_t Group, std::int32_t Element, String* TypeCode,
                                        String* description, VariantBool* Found) {
  if (!AreThere(TypeCode, description, Found)) return kPointer;
  return Asked([&] {
    std::string letters;
    std::string text;
    *Found = tessaret::GetVRDescription(ModuleDictionary(), static_cast<std::uint16_t>(Group),
                                        static_cast<std::uint16_t>(Element), letters, text);
    if (Found->IsTrue()) {
      *TypeCode = String::FromNarrow(letters);
      *description = String::FromNarrow(text);
    }
    return kOk;
  });
}

Status CDcmDictionary::GetUIDDescription(const String& UID, String* Desc, String* type,
                                         String* Modality, VariantBool* IsImg, VariantBool* Found) {
  if (!AreThere(Desc, type, Modality, IsImg, Found)) return kPointer;
  return Asked([&] {
    std::string description;
    std::string kind;
    std::string modality;
    bool isImage = false;
    *Found = tessaret::GetUIDDescription(ModuleUidDictionary(), UID.Narrow(), description, kind,
                                         modality, isImage);
    if (Found->IsTrue()) {
      *Desc = String::FromNarrow(description);
      *type = String::FromNarrow(kind);
      *Modality = String::FromNarrow(modality);
      *IsImg = isImage;
    }
    return kOk;
  });
}

}  // namespace tessaret
