// What a save in mode 3 changes in a data set, told a second time: by it, an object that was loaded becomes what
// loading the saved file has to give.
#pragma once

#include "core/dicom_object.h"
#include "core/rtc.h"

namespace tessaret::test {

/// The transfer syntax code that a save in mode 3 takes from `object`: that of its (0002,0010), or implicit little
/// endian where there is none. 0 for a syntax that the library does not know.
std::int32_t CodeToSave(const DICOMObject& object);

/// Turns `object`, which must be as a reader left it, into its saved form, but for group 0002, which is removed: group
/// lengths are gone (the implicit form keeps those of the top level behind the first other element); values of odd
/// length have a NUL more; types are those of the dictionary in the implicit form and for what was UN in an explicit
/// one; pixel data are OB or OW by their Bits Allocated; a UID in a sequence ends in a NUL rather than a blank. Lengths
/// of sequences are not touched.
///
/// Two things stay because the bytes of their values depend on them. Big endian pixel data that are OB or OW: OW is
/// swapped in pairs, OB is not. UN whose value is the encoded inside of a sequence: as SQ it would have to have items.
void TakeSavedForm(DICOMObject& object, const RTC& dictionary);

/// Removes the elements of group 0002.
void RemoveMetaGroup(DICOMObject& object);

}  // namespace tessaret::test
