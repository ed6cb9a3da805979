// What the readers take without complaint although it cannot be what the file's maker meant. Nobody should be left to take that
// for the file's content.
#pragma once

#include <string>

#include "core/data_set_coder.h"
#include "core/dicom_object.h"

namespace tessaret::tool {

/// Why `object`, whose reading ended with `stop`, is not to be trusted; empty when nothing speaks against it. These
/// things do:
///  - Some types of element carry a 32-bit length in the files of today where the readers, which know the five of old, take
///    16 bits. In the explicit form such an element comes out empty and what follows it as nonsense.
///  - What is in an element of type UN and undefined length is implicit whatever surrounds it (DICOM PS3.5, 6.2.2), where the
///    readers go on in the form of the rest.
///  - An item that stands in no sequence is read into the element before it, which then has both a value and items.
///  - A data set in another form than its meta header says reads as elements whose letters are the bytes of a length, or whose
///    length is the letters of their type. Where zeros follow, as in dark images, such a reading comes to a clean end.
std::string WhyToDoubt(const DICOMObject& object, bool isExplicit, const ParseStop& stop);

}  // namespace tessaret::tool
