// The library's own form of an object as text, made safe to show.
#pragma once

#include "core/dicom_object.h"
#include "host.h"

namespace tessaret::tool {

/// Writes all of `object` line by line. Throws Interrupted, OutputError and DictionaryError.
void DumpText(const DICOMObject& object, Host& host);

}  // namespace tessaret::tool
