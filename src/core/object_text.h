// An object as text, for people: one line an element, items set in below their sequence.
#pragma once

#include <functional>
#include <string>
#include <string_view>

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

/// Takes one line of a listing, its line end included. False: no more are wanted.
using LineSink = std::function<bool(std::string_view line)>;

/// The same text, each line as soon as it is made: set in by their depth, all of them may need many times the memory of the
/// object. Throws what `sink` throws, and std::bad_alloc.
void ListObject(const DICOMObject& object, int depth, const RTC* dictionary, const LineSink& sink);

/// The lines of one element with all that is in it, from line number `firstLine` on, counted from 0. Those before are not
/// made, only counted.
void ListElement(const VR& vr, std::size_t firstLine, const RTC* dictionary, const LineSink& sink);

/// The value alone: text cut to 126 characters and trimmed (a TM without ":" and ".", a DA without "."), the first of several
/// numbers, up to 16 bytes in hexadecimal for other types, "(EMPTY)" for no value.
std::string VRValueToText(const VR& vr);

}  // namespace tessaret
