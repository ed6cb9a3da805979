// UIDs for things that are made the same way each time, and so are the same thing each time.
#pragma once

#include <string>
#include <string_view>

namespace tessaret::tool {

/// The UID that belongs to `description`: a name-based UUID below 2.25 (DICOM PS3.5, B.2). The same text gives the same UID on
/// every machine, another text another one.
std::string UidOf(std::string_view description);

}  // namespace tessaret::tool
