// Class "Tessaret.DcmDictionary".
#pragma once

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "tessaret/idcm_dictionary.hpp"

namespace tessaret {

class CDcmDictionary final : public ComponentObject<CallableByName<IDcmDictionary>> {
 public:
  explicit CDcmDictionary(IObject* outer) : ComponentObject(outer) {}

  Status get_NumEntries(std::int16_t* pVal) override;
  Status GetEntry(std::int16_t Idx, std::int32_t* Group, std::int32_t* Element,
                  VariantBool* Found) override;
  Status GetVRDescription(std::int32_t Group, std::int32_t Element, String* TypeCode,
                          String* description, VariantBool* Found) override;
  Status GetUIDDescription(const String& UID, String* Desc, String* type, String* Modality,
                           VariantBool* IsImg, VariantBool* Found) override;
};

}  // namespace tessaret
