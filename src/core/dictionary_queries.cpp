#include "core/dictionary_queries.h"

#include <array>

#include "base/checked.h"

namespace tessaret {

std::int16_t NumEntries(const RTC& dictionary) {
  return dictionary.Table ? SaturatingCast<std::int16_t>(dictionary.Table->Count) : std::int16_t{0};
}

bool GetEntry(const RTC& dictionary, std::int16_t index, std::uint16_t& group,
              std::uint16_t& element) {
  if (!dictionary.Table || index < 0) return false;
  const auto at = static_cast<std::uint32_t>(index);
  if (at >= dictionary.Table->Count) return false;
  group = dictionary.Table->Elements[at].Group;
  element = dictionary.Table->Elements[at].Element;
  return true;
}

bool GetVRDescription(const RTC& dictionary, std::uint16_t group, std::uint16_t element,
                      std::string& typeCode, std::string& description) {
  std::array<char, kDescriptionBuffer> text;
  const VrCode found = dictionary.RunTimeClass(group, element, text.data());
  if (found == type_code::kNone) return false;
  typeCode = {FirstLetter(found), SecondLetter(found)};
  description = text.data();
  return true;
}

bool GetUIDDescription(const UIDDictionary& dictionary, std::string_view uid,
                       std::string& description, std::string& type, std::string& modality,
                       bool& isImage) {
  return dictionary.Find(uid, &description, &type, &modality, &isImage);
}

}  // namespace tessaret
