// What holds for a data set without meta header, in each of the three encodings.
#pragma once

#include <cstddef>
#include <cstdint>

#include "saved_form.h"
#include "support.h"

namespace tessaret::fuzz {

struct NativeEncoding {
  bool (DataSetCoder::*in)(Buffer&, DICOMObject&);
  bool (DataSetCoder::*out)(DICOMObject&, Buffer&);
  ElementForm form;
};

/// Reads the input in place and in drops of a few bytes, with equal outcomes; writes what came, and reads it back.
void CheckNativeEncoding(const Input& input, const NativeEncoding& encoding);

}  // namespace tessaret::fuzz
