// What the readers take without complaint although it cannot be what the file's maker meant. Nobody should be left to take that
// for the file's content.
#pragma once

#include <string>
#include <vector>

#include <tessaret/tessaret.hpp>

#include "host.h"
#include "listing.h"
#include "reading.h"

namespace tessaret::tool {

/// Why `object` with all that `listing` has of it, read as `reading` tells, is not to be trusted; empty when nothing speaks against it. These things do:
///  - Some types of element carry a 32-bit length in the files of today where the readers, which know the five of old, take
///    16 bits. In the explicit form such an element comes out empty and what follows it as nonsense.
///  - What is in an element of type UN and undefined length is implicit whatever surrounds it (DICOM PS3.5, 6.2.2), where the
///    readers go on in the form of the rest.
///  - A data set in another form, or in another byte order, than its meta header says reads as elements whose letters are the
///    bytes of a length, whose length is the letters of their type, or whose tags are turned round. Where zeros follow, as in
///    dark images, such a reading comes to a clean end.
///  - What the readers find odd in the nesting or among fragments: something lands elsewhere than it stood, or is dropped.
std::string WhyToDoubt(const Listing& listing, const Ref<IDCMObject>& object,
                       const Reading& reading, Host& host);

/// What is odd in `reading`, but takes nothing from the content that a user would not expect, a sentence each.
std::vector<std::string> Warnings(const Reading& reading);

}  // namespace tessaret::tool
