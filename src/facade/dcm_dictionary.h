// Class "Tessaret.DcmDictionary".
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>

#include "component/call_by_name.h"
#include "component/component_object.h"
#include "core/rtc.h"
#include "core/uid_dictionary.h"
#include "tessaret/idcm_dictionary.hpp"
#include "tessaret/idcm_dictionary_file.hpp"

namespace tessaret {

class CDcmDictionary final
    : public ComponentObject<CallableByName<IDcmDictionary>, CallableByName<IDcmDictionaryFile>> {
 public:
  explicit CDcmDictionary(IObject* outer) : ComponentObject(outer) {}

  Status get_NumEntries(std::int16_t* pVal) override;
  Status GetEntry(std::int16_t Idx, std::int32_t* Group, std::int32_t* Element,
                  VariantBool* Found) override;
  Status GetVRDescription(std::int32_t Group, std::int32_t Element, String* TypeCode,
                          String* description, VariantBool* Found) override;
  Status GetUIDDescription(const String& UID, String* Desc, String* type, String* Modality,
                           VariantBool* IsImg, VariantBool* Found) override;

  Status LoadFile(const String& FileName) override;
  Status LoadBytes(const Variant& Bytes) override;
  Status Unload() override;
  Status get_ElementsCount(std::int32_t* pVal) override;
  Status GetElementAt(std::int32_t Idx, std::int32_t* Group, std::int32_t* Element,
                      String* TypeCode, String* description, VariantBool* Found) override;
  Status get_UIDsCount(std::int32_t* pVal) override;
  Status GetUIDAt(std::int32_t Idx, String* UID, VariantBool* Found) override;
  Status GetBytes(VariantBool Binary, Variant* Bytes) override;
  Status SaveFile(const String& FileName, VariantBool Binary, VariantBool KeepsFiles) override;

 private:
  [[nodiscard]] const RTC& Elements() const;

  std::unique_ptr<RTC> own_;  // in place of the library's; null while nothing is loaded
};

}  // namespace tessaret
