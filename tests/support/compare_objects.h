// Deep comparison of data sets, with words about the first difference.
#pragma once

#include <string>

#include "core/dicom_object.h"

namespace tessaret::test {

/// What need not be equal.
struct CompareLeniently {
  bool positions = false;        // StreamPosition, which an object made in memory does not have
  bool types = false;            // TypeCode, which a stream without letters does not hold
  bool sequenceLengths = false;  // Length of an element with items, which writing makes undefined
};

/// Where the two first differ and in what, such as "(0008,1140)[1] (0010,0010): Length 4 and 6"; empty when they are equal:
/// the same elements with the same tags, lengths, types, positions, bytes and items, to any depth. Both must be as a
/// reader leaves them: every element owns its bytes, and a Length without Data is there only where the other has it too.
std::string Difference(const DICOMObject& a, const DICOMObject& b, CompareLeniently leniently = {});

/// The same for two elements.
std::string Difference(const VR& a, const VR& b, CompareLeniently leniently = {});

/// Makes of an object that was read whole what a reader makes that steps over pixel data with more than `longest` bytes.
void StepOverPixels(DICOMObject& object, std::uint32_t longest);

/// The value bytes as text; empty for an element without Data.
std::string ValueText(const VR& vr);

}  // namespace tessaret::test
