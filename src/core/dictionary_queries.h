// What callers ask the dictionaries, in the shapes of the public dictionary class, whose numbers are 16-bit.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/rtc.h"
#include "core/uid_dictionary.h"

namespace tessaret {

/// The number of entries; 32767 where there are more.
std::int16_t NumEntries(const RTC& dictionary);

/// The tag of entry `index` in the order of tags. False, with nothing touched, outside 0 to the number of entries.
bool GetEntry(const RTC& dictionary, std::int16_t index, std::uint16_t& group,
              std::uint16_t& element);

/// The two letters of the type, and the description, of a tag. False, with nothing touched, for an unknown tag.
bool GetVRDescription(const RTC& dictionary, std::uint16_t group, std::uint16_t element,
                      std::string& typeCode, std::string& description);

/// What a UID denotes. False, with nothing touched, for an unknown one.
bool GetUIDDescription(const UIDDictionary& dictionary, std::string_view uid,
                       std::string& description, std::string& type, std::string& modality,
                       bool& isImage);

}  // namespace tessaret
