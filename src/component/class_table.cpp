#include "component/class_table.h"

#include <algorithm>
#include <mutex>

#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::string_view kVersion = ".1";

// A thread may report a failure by the name of a class while another one starts the library.
constinit std::mutex mutex;
constinit std::span<const ClassRow> registered;

/// The first class that `matches`; null for none.
template <class Matches>
const ClassRow* First(Matches matches) {
  const std::span<const ClassRow> classes = Classes();
  const auto found = std::ranges::find_if(classes, matches);
  return found == classes.end() ? nullptr : &*found;
}

}  // namespace

void RegisterClasses(std::span<const ClassRow> classes) {
  const std::lock_guard lock(mutex);
  registered = classes;
}

std::span<const ClassRow> Classes() {
  const std::lock_guard lock(mutex);
  return registered;
}

const ClassRow* FindClass(std::string_view name) {
  if (name.ends_with(kVersion)) name.remove_suffix(kVersion.size());
  return First([&](const ClassRow& row) { return IsSameIgnoringCase(row.name, name); });
}

const ClassRow* FindClass(const ClassId& id) {
  return First([&](const ClassRow& row) { return row.id == id; });
}

}  // namespace tessaret
