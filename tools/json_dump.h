// An object in the DICOM JSON model (DICOM PS3.18, annex F).
#pragma once

#include "core/dicom_object.h"
#include "json_writer.h"

namespace tessaret::tool {

/// Writes `object` as one JSON object with a member for each element. Binary values above kLongestInlineBinary bytes, and values
/// that were not loaded, are left out; "length" tells how long they are.
void DumpJson(const DICOMObject& object, JsonWriter& json);

inline constexpr std::uint32_t kLongestInlineBinary = 4096;

}  // namespace tessaret::tool
