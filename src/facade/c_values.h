// Values of the C interface and of the library, from one to the other.
#pragma once

#include "tessaret/status.hpp"
#include "tessaret/tessaret.h"
#include "tessaret/variant.hpp"

namespace tessaret {

/// What `from` holds, copied; a reference of its own to an object. kTypeMismatch for a type that is none,
/// kNoObject for an object that the host does not hold. Throws std::bad_alloc.
Status FromC(const tessaret_value& from, Variant& to);

/// `from` as a value that owns what it points to; an object that cannot be called by name is none. `to` is not looked at before. Throws std::bad_alloc, with `to` empty.
void ToC(Variant&& from, tessaret_value& to);

}  // namespace tessaret
