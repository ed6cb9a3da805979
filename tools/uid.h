#pragma once

#include <string_view>

namespace tessaret::tool {

/// Whether `text` is made as a UID is: numbers without leading zeros and dots between them (DICOM PS3.5, 9.1). How long it is does not matter.
bool IsUid(std::string_view text);

}  // namespace tessaret::tool
