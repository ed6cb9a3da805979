/// Levels of a directory of media.
#pragma once

#include <cstdint>

namespace tessaret {

/// A level of the tree of records in a DICOMDIR.
enum _EnumDICOMDIRLevel : std::int32_t {
  DICOMDIR_PATIENT = 0,
  DICOMDIR_STUDY = 1,
  DICOMDIR_SERIES = 2,
  DICOMDIR_OBJECT = 3,
};

}  // namespace tessaret
