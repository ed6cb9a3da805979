#include "tessaret/library.hpp"

#include "component/class_table.h"
#include "component/object_count.h"
#include "component/report.h"
#include "facade/module.h"

namespace tessaret {
namespace {

/// Finds a class by what it is asked for, and makes an object of it.
template <class Key>
Status CreateFrom(const Key& key, const InterfaceId* id, IObject* outer, void** object) noexcept {
  if (object == nullptr) return kPointer;
  *object = nullptr;
  if (id == nullptr) return kPointer;
  try {
    if (!StartModule()) {
      Report({}, WhyNotStarted().c_str(), *id);
      return kClassNotAvailable;
    }
    const ClassRow* row = FindClass(key);
    if (row == nullptr) {
      Report({}, "There is no such class", *id);
      return kClassNotRegistered;
    }
    return row->create(outer, *id, object);
  } catch (const std::bad_alloc&) {
    return kOutOfMemory;
  }
}

}  // namespace
}  // namespace tessaret

using namespace tessaret;

std::int32_t tessaret_create_object(const char* name, const InterfaceId* id, IObject* outer,
                                    void** object) {
  return name == nullptr ? kPointer : CreateFrom(std::string_view(name), id, outer, object);
}

std::int32_t tessaret_create_object_by_id(const InterfaceId* classId, const InterfaceId* id,
                                          IObject* outer, void** object) {
  return classId == nullptr ? kPointer : CreateFrom(*classId, id, outer, object);
}

const char* tessaret_last_error_text(void) { return LastWords().text.c_str(); }

const char* tessaret_last_error_source(void) { return LastWords().source.c_str(); }

std::int32_t tessaret_can_unload(void) { return MayUnload() ? 1 : 0; }

void tessaret_lock_library(std::int32_t lock) { lock != 0 ? LockLibrary() : UnlockLibrary(); }
