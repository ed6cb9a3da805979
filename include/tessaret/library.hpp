/// The library from C++: making objects by name, the words of failures, and when the library may go.
#pragma once

#include <cstdint>
#include <string>

#include "tessaret/object.hpp"
#include "tessaret/status.hpp"
#include "tessaret/tessaret.h"

extern "C" {
/// Behind tessaret::Create. `name` is a class name; `id` one of its interfaces; `outer` the object that it becomes a part of, or
/// null, and then `id` is that of IObject (kNoAggregation). kClassNotAvailable where the library could not start, kClassNotRegistered
/// for an unknown name, kNotImplemented for a class that this version does not have yet, kNoInterface, kOutOfMemory, each with words;
/// kPointer, without words, for a null argument but `outer`. `*object` is null after a failure.
std::int32_t tessaret_create_object(const char* name, const tessaret::InterfaceId* id,
                                    tessaret::IObject* outer, void** object);
/// The same by the identifier of the class.
std::int32_t tessaret_create_object_by_id(const tessaret::InterfaceId* classId,
                                          const tessaret::InterfaceId* id, tessaret::IObject* outer,
                                          void** object);
}

namespace tessaret {

/// What the last failure of the calling thread said.
struct Error {
  std::string source;  // the name of the class, such as "Tessaret.DCMObject"
  std::string text;
};

inline Error LastError() { return {tessaret_last_error_source(), tessaret_last_error_text()}; }

/// Makes an object of the class `name`, with or without ".1" behind it, such as "Tessaret.DCMObject". kNoInterface where the class
/// lacks `Interface`; for the others see tessaret_create_object. `object` is null after a failure.
template <class Interface>
Status Create(const char* name, Ref<Interface>& object) {
  return tessaret_create_object(name, &Interface::kId, nullptr,
                                reinterpret_cast<void**>(object.Receive()));
}

/// The same, null after a failure: LastError says why, unless `name` is null.
template <class Interface>
[[nodiscard]] Ref<Interface> Create(const char* name) {
  Ref<Interface> made;
  Create(name, made);
  return made;
}

/// Starts the library, which Create does otherwise, but without a line on standard error where it cannot: kClassNotAvailable then, with
/// the file, the line and the reason.
inline Status StartLibrary() { return tessaret_start(); }

/// Has the library give up what it does with files and the network, or not any more; see tessaret_cancel_files.
inline void CancelFiles(bool cancel) noexcept { tessaret_cancel_files(cancel ? 1 : 0); }

/// Whether the host may unload the library: no object of it exists, and nobody holds a lock.
inline bool CanUnload() { return tessaret_can_unload() != 0; }

/// Keeps the library while it lives, though no object exists.
class LibraryLock {
 public:
  LibraryLock() { tessaret_lock_library(1); }
  LibraryLock(const LibraryLock&) = delete;
  LibraryLock& operator=(const LibraryLock&) = delete;
  ~LibraryLock() { tessaret_lock_library(0); }
};

}  // namespace tessaret
