// An object as text, for people: one line an element, items set in below their sequence.
#pragma once

#include <string>

#include "core/dicom_object.h"

namespace tessaret {

class RTC;

/// A sequence this deep is named but its items are left out behind a line "...", since each line is set in by its depth: a
/// chain of a hundred thousand levels would be gigabytes of text. No object that was read from a stream is as deep.
inline constexpr int kDeepestListedLevel = 1000;

/// All elements in tag order, at any depth on a flat stack. Every line starts with `depth` times ">" and, for a depth above
/// 0, a blank. `dictionary` describes the tags, and types the elements that have no type; null: none. The object is only
/// read, so several threads may list one object at once.
std::string ObjectToText(const DICOMObject& object, int depth, const RTC* dictionary);

/// The value alone: text cut to 126 characters and trimmed (a TM without ":" and ".", a DA without "."), the first of several
/// numbers, up to 16 bytes in hexadecimal for other types, "(EMPTY)" for no value.
std::string VRValueToText(const VR& vr);

}  // namespace tessaret
