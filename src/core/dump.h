// Lines of the trace file about data: one for an element, and the hexadecimal listing of a block of bytes. The texts are made
// by functions without side effects; DumpVR and DumpHex append them, whatever the mask: a site asks IsDumping first.
#pragma once

#include <cstddef>
#include <string>

#include "core/vr.h"

namespace tessaret {

class RTC;

/// What codes the data set that an element belongs to, as far as a trace cares.
struct DumpService {
  const RTC* dictionary;  // null: the service has none; not owned
};

/// "(position)[group,element][length][type]:'description' value", without a line end. Without a service (null) there is no
/// description; without a dictionary an element of no type is shown as UN. Of several numbers the first is shown.
std::string ElementLine(const VR& vr, const DumpService* service);
/// Appends the element's line to the trace file.
void DumpVR(const VR& vr, const DumpService* service) noexcept;

/// 32 bytes a line: offsets of its first and last byte, the bytes in hexadecimal, the same as characters. No bytes, no
/// line. `data` holds `size` bytes.
std::string HexListing(const void* data, std::size_t size);
/// Appends the listing to the trace file.
void DumpHex(const void* data, std::size_t size) noexcept;

}  // namespace tessaret
