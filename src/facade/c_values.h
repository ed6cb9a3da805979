// Values of the C interface and of the library, from one to the other.
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/tessaret.h"
#include "tessaret/variant.hpp"

namespace tessaret {

/// A handle of the C interface is the object's interface for calls by name.
inline IDispatch* ObjectOf(tessaret_object* handle) { return reinterpret_cast<IDispatch*>(handle); }
inline tessaret_object* HandleOf(IDispatch* object) {
  return reinterpret_cast<tessaret_object*>(object);
}

/// What `from` holds, copied; a reference of its own to an object. kTypeMismatch for a type that is none. Throws std::bad_alloc.
Status FromC(const tessaret_value& from, Variant& to);

/// `from` as a value that owns what it points to; an object that cannot be called by name is none. `to` is not looked at before. Throws std::bad_alloc, with `to` empty.
void ToC(Variant&& from, tessaret_value& to);

}  // namespace tessaret
