// Work on native samples that several methods share.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

/// Repeats bit `precision` - 1 of every sample in the bits above it, where samples are signed and have more bits; otherwise does
/// nothing.
void ExtendSigns(MutableBytes frame, const FrameFormat& format, std::uint32_t precision);

/// Whether some sample has a value that Bits Stored bits from bit 0 on cannot hold.
bool NeedsMoreThanStored(Bytes frame, const FrameFormat& format);

/// The bits of a sample that an encoder has to keep, from bit 0 on: Bits Stored where no sample of this unsigned frame has others
/// set, and all that are allocated otherwise. Signed samples keep theirs all, for readers differ in what they make of signs.
std::uint32_t BitsToKeep(Bytes frame, const FrameFormat& format);

/// A frame by plane as one by pixel. Both have format.Size() bytes and do not overlap.
void PlanesToPixels(Bytes planes, const FrameFormat& format, MutableBytes pixels);

}  // namespace tessaret::codecs
