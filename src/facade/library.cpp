#include "tessaret/library.hpp"

#include "component/class_table.h"
#include "component/object_count.h"
#include "component/report.h"
#include "facade/module.h"
#include "platform/file_calls.h"

namespace tessaret {
namespace {

/// Statuses that a class answers without words of its own when it is to be made.
struct Refusal {
  Status status;
  const char* text;
};
constexpr Refusal kRefusals[] = {
    {kNoInterface, "The class has no such interface"},
    {kNoAggregation, "A part of another object is asked for as an object only"},
    {kOutOfMemory, "Not enough memory"},
};

/// Says why, so that nobody takes the words of an older failure for it.
Status WithWords(Status status, const ClassId& classId, const InterfaceId& id) noexcept {
  for (const Refusal& refusal : kRefusals) {
    if (refusal.status == status) Report(classId, refusal.text, id);
  }
  return status;
}

/// For the library that could not start.
Status NotAvailable(const char* words, const InterfaceId& id) noexcept {
  Report({}, words, id);
  return kClassNotAvailable;
}

/// Finds a class by what it is asked for, and makes an object of it.
template <class Key>
Status CreateFrom(const Key& key, const InterfaceId* id, IObject* outer, void** object) noexcept {
  if (object == nullptr) return kPointer;
  *object = nullptr;
  if (id == nullptr) return kPointer;
  try {
    if (!StartModule()) return NotAvailable(WhyNotStarted().c_str(), *id);
    const ClassRow* row = FindClass(key);
    if (row == nullptr) {
      Report({}, "There is no such class", *id);
      return kClassNotRegistered;
    }
    return WithWords(row->create(outer, *id, object), row->id, *id);
  } catch (const StartCancelled& cancelled) {
    return NotAvailable(cancelled.what(), *id);
  } catch (const std::bad_alloc&) {
    return WithWords(kOutOfMemory, {}, *id);
  }
}

Status StartNow() noexcept {
  try {
    if (StartModuleQuietly()) return kOk;
    return NotAvailable(WhyNotStartedInFull().c_str(), IObject::kId);
  } catch (const StartCancelled& cancelled) {
    return NotAvailable(cancelled.what(), IObject::kId);
  } catch (const std::bad_alloc&) {
    return WithWords(kOutOfMemory, {}, IObject::kId);
  }
}

}  // namespace
}  // namespace tessaret

using namespace tessaret;

std::int32_t tessaret_create_object(const char* name, const InterfaceId* id, IObject* outer,
                                    void** object) {
  if (name != nullptr) return CreateFrom(std::string_view(name), id, outer, object);
  if (object != nullptr) *object = nullptr;
  return kPointer;
}

std::int32_t tessaret_create_object_by_id(const InterfaceId* classId, const InterfaceId* id,
                                          IObject* outer, void** object) {
  if (classId != nullptr) return CreateFrom(*classId, id, outer, object);
  if (object != nullptr) *object = nullptr;
  return kPointer;
}

const char* tessaret_last_error_text(void) { return LastWords().text.c_str(); }

const char* tessaret_last_error_source(void) { return LastWords().source.c_str(); }

std::int32_t tessaret_start(void) { return StartNow(); }

void tessaret_cancel_files(std::int32_t cancel) { CancelFileCalls(cancel != 0); }

std::int32_t tessaret_can_unload(void) { return MayUnload() ? 1 : 0; }

void tessaret_lock_library(std::int32_t lock) { lock != 0 ? LockLibrary() : UnlockLibrary(); }
