#include "component/class_table.h"

#include <algorithm>

#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::string_view kVersion = ".1";

constinit std::span<const ClassRow> registered;

}  // namespace

void RegisterClasses(std::span<const ClassRow> classes) { registered = classes; }

std::span<const ClassRow> Classes() { return registered; }

const ClassRow* FindClass(std::string_view name) {
  if (name.ends_with(kVersion)) name.remove_suffix(kVersion.size());
  const auto found = std::ranges::find_if(
      registered, [&](const ClassRow& row) { return IsSameIgnoringCase(row.name, name); });
  return found == registered.end() ? nullptr : &*found;
}

const ClassRow* FindClass(const ClassId& id) {
  const auto found = std::ranges::find(registered, id, &ClassRow::id);
  return found == registered.end() ? nullptr : &*found;
}

}  // namespace tessaret
