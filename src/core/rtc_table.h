// What a loaded data dictionary consists of.
#pragma once

#include <cstdint>

#include "core/fixed_array.h"
#include "core/tag.h"
#include "core/type_code.h"

namespace tessaret {

/// One entry.
struct _RTCElement {
  std::uint16_t Group = 0;
  std::uint16_t Element = 0;
  VrCode TypeCode = type_code::kNone;
  const char* Description =
      nullptr;  // the dictionary's, of at most kLongestToken characters; null for none
};

using RtcTable = FixedArray<TagKey, _RTCElement>;

}  // namespace tessaret
