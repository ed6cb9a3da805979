// Types of elements as their surroundings give them, where a file states none or one that says too little.
#pragma once

#include <tessaret/tessaret.hpp>

#include "tag.h"
#include "type_code.h"

namespace tessaret::tool {

/// Whether an element is US or SS, and no third, as Pixel Representation (0028,0103) says.
bool IsSignedWithPixels(TagKey tag);

/// Whether `object` says that pixels are signed; `around`, what is said around it, where it has no Pixel Representation.
/// Throws CallError.
bool HasSignedPixels(IDCMObject& object, bool around);

/// The type of an element that is `type` by the file, or by the dictionary where it `isImplicit`: LO for a private creator without a
/// type; SS where the dictionary, which has one type for each, says US and the pixels are signed.
VrCode MeantType(TagKey tag, VrCode type, bool isImplicit, bool signedPixels);

}  // namespace tessaret::tool
