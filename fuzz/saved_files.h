// Saving in real files.
#pragma once

#include <cstdint>
#include <vector>

#include "core/data_set_coder.h"

namespace tessaret::fuzz {

/// SaveFile of a clone and SaveKeeping put `bytes` into their files, or, with null, refuse and leave no file.
void RequireSameInFiles(DataSetCoder& coder, const DICOMObject& object,
                        const std::vector<std::uint8_t>* bytes);

}  // namespace tessaret::fuzz
