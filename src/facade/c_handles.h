// The objects that hosts of the C interface hold. A pointer that was given back already, or never came from here, is refused instead
// of followed.
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/object.hpp"
#include "tessaret/tessaret.h"

namespace tessaret {

/// Hands the reference over to the host; null for none. Throws std::bad_alloc, and the reference is given back.
tessaret_object* GiveHandle(Ref<IDispatch> object);

/// A reference of its own to the object that the host holds as `handle`; none where he holds no such object.
Ref<IDispatch> HeldObject(const tessaret_object* handle);

/// Gives the host one more reference; false where he holds none.
bool RetainHandle(const tessaret_object* handle);

/// Takes one of the host's references back; false where he holds none.
bool ReleaseHandle(const tessaret_object* handle);

}  // namespace tessaret
