// What must be true of an object, and what must be changed in it, before it is written in another encoding than its own.
#pragma once

#include <string>
#include <string_view>

#include "source_file.h"

namespace tessaret::tool {

enum class Target {
  kKeep,      // the transfer syntax of the source
  kImplicit,  // implicit little endian
  kExplicit,  // explicit little endian
  kBare,      // implicit little endian without a meta header
};

/// True for native pixel data of a big endian file whose pixels are wider than the numbers that its type has by the standard: OW
/// swaps 16 bits and OB none, but many programs swap whole pixels. Nothing in the file tells which was meant.
bool HasPixelsOfDoubtfulOrder(const SourceFile& source);

/// Why `source` cannot be written as `target` without losing or bending something; empty when it can.
std::string WhyNotToEncode(const SourceFile& source, Target target, Host& host);

/// What of that counts wherever the pixel data goes: elements that a file in `target` cannot hold or cannot tell to its reader.
std::string WhyNotToHold(const SourceFile& source, Target target, Host& host);

/// Why fragments of compressed pixel data would be taken for something else in a file in `syntax`, to which only the pixel data of the
/// object itself is turned, not that of icons; empty when they would not.
std::string WhyNotToKeepFragments(const SourceFile& source, std::string_view syntax);

/// Sets the types in `source` that it has when its elements are written one by one in `syntax`, and leaves out group lengths outside
/// the meta header. Throws CallError and std::bad_alloc.
void PrepareElements(SourceFile& source, std::string_view syntax);

/// Names `uid` in (0002,0010). Throws CallError and std::bad_alloc.
void SetSyntax(IDCMObject& object, std::string_view uid);

/// The transfer syntax UID of what will be written. Requires: WhyNotToEncode is empty.
std::string TargetSyntax(const SourceFile& source, Target target);

/// Makes the object of `source` ready to be saved with its meta header in TargetSyntax, and with the types that it then has:
///  - (0002,0010) names the target; group lengths outside the meta header go, since they no longer fit;
///  - where types are written, values have the types that their surroundings give them, and those that the 16-bit length of
///    their type cannot hold become UN, which has 32 bits for it (DICOM PS3.5, 6.2.2).
/// Throws CallError and std::bad_alloc.
void PrepareToEncode(SourceFile& source, Target target);

}  // namespace tessaret::tool
