// What a data set says about its pixels, as codecs get it.
#pragma once

#include <cstdint>
#include <string>

#include "core/dicom_object.h"
#include "tessaret/codec.h"

namespace tessaret {

/// Fills `info` from the elements of `object`; elements that are missing give 0, 1 frame and an empty text. The empty string on
/// success. Words, with `info` in no certain state, for a number of frames that is none, an element whose type is no number
/// or that is negative, and for sizes that do not fit 32 bits. Throws std::bad_alloc.
std::string ReadImageInfo(const DICOMObject& object, ImageInfo& info);

/// The bytes of all native frames; never wraps.
constexpr std::uint64_t NativeSize(const ImageInfo& info) {
  return std::uint64_t{info.FrameSize} * info.Frames;
}

}  // namespace tessaret
