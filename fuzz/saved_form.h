// What an object reads back as once it has been written. The rules of writing stand here a second time, without the writer's
// code, so that a lost or changed element shows.
#pragma once

#include <cstdint>

#include "core/buffer_input.h"
#include "core/dicom_object.h"
#include "core/rtc.h"

namespace tessaret::fuzz {

struct SavedForm {
  ElementForm form;
  bool isFile;                          // with a meta header, in which explicit little endian rules
  const RTC* dictionary;                // of the coder that writes and reads; not owned
  VrCode pixelType = type_code::kNone;  // what a file declares its pixel data to be
};

/// Why an object need not read back as it was, or not be written again in the same bytes.
struct SavedLimits {
  bool unwritable = false;  // a writer has to refuse it
  bool changes = false;     // its form cannot say what it is: reading it back gives something else
  bool settles = false;     // the first writing changes what the second depends on
};

SavedLimits LimitsOf(const DICOMObject& object, const SavedForm& saved);

/// Requires `after` to be what `before`, as it was when it was written, reads back as.
void RequireReadsBack(const DICOMObject& before, const DICOMObject& after, const SavedForm& saved);

}  // namespace tessaret::fuzz
