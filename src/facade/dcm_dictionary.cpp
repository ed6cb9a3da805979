#include "facade/dcm_dictionary.h"

#include <string>
#include <utility>

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

const RTC& CDcmDictionary::Elements() const {
  return own_ ? *own_ : static_cast<const RTC&>(ModuleDictionary());
}

Status CDcmDictionary::get_NumEntries(std::int16_t* pVal) {
  if (pVal == nullptr) return kPointer;
  *pVal = NumEntries(Elements());
  return kOk;
}

Status CDcmDictionary::GetEntry(std::int16_t Idx, std::int32_t* Group, std::int32_t* Element,
                                VariantBool* Found) {
  if (!AreThere(Group, Element, Found)) return kPointer;
  std::uint16_t group = 0;
  std::uint16_t element = 0;
  *Found = tessaret::GetEntry(Elements(), Idx, group, element);
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
    const bool isKnown =
        tessaret::GetVRDescription(Elements(), static_cast<std::uint16_t>(Group),
                                   static_cast<std::uint16_t>(Element), letters, text);
    if (isKnown) {
      // All of it or, without memory, nothing.
      String type = String::FromNarrow(letters);
      String words = String::FromNarrow(text);
      *TypeCode = std::move(type);
      *description = std::move(words);
    }
    *Found = isKnown;
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
    const bool isKnown = tessaret::GetUIDDescription(ModuleUidDictionary(), UID.Narrow(),
                                                     description, kind, modality, isImage);
    if (isKnown) {
      // All of it or, without memory, nothing.
      String words = String::FromNarrow(description);
      String what = String::FromNarrow(kind);
      String source = String::FromNarrow(modality);
      *Desc = std::move(words);
      *type = std::move(what);
      *Modality = std::move(source);
      *IsImg = isImage;
    }
    *Found = isKnown;
    return kOk;
  });
}

}  // namespace tessaret
