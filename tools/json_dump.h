// An object in the DICOM JSON model (DICOM PS3.18, annex F).
#pragma once

#include "json_writer.h"
#include "source_file.h"

namespace tessaret::tool {

/// Writes the object of `source`, which is there, as one JSON object with a member for each element. Binary values above kLongestInlineBinary bytes, and values
/// that were not loaded, are left out; "length" tells how long they are.
void DumpJson(const SourceFile& source, JsonWriter& json);

inline constexpr std::uint32_t kLongestInlineBinary = 4096;

}  // namespace tessaret::tool
