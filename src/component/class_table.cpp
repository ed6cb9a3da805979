#include "component/class_table.h"

#include <algorithm>
#include <atomic>
#include <cstddef>

#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::string_view kVersion = ".1";

// A thread may report a failure by the name of a class while another one starts the library. Without a lock, which a child of fork could
// find held by a thread that it does not have.
constinit std::atomic<const ClassRow*> rows = nullptr;
constinit std::atomic<std::size_t> rowCount = 0;

/// The first class that `matches`; null for none.
template <class Matches>
const ClassRow* First(Matches matches) {
  const std::span<const ClassRow> classes = Classes();
  const auto found = std::ranges::find_if(classes, matches);
  return found == classes.end() ? nullptr : &*found;
}

}  // namespace

void RegisterClasses(std::span<const ClassRow> classes) {
  // Nobody sees more rows than there are.
  rowCount = 0;
  rows = classes.data();
  rowCount = classes.size();
}

std::span<const ClassRow> Classes() {
  const std::size_t count = rowCount;
  return {rows.load(), count};
}

const ClassRow* FindClass(std::string_view name) {
  if (name.ends_with(kVersion)) name.remove_suffix(kVersion.size());
  return First([&](const ClassRow& row) { return IsSameIgnoringCase(row.name, name); });
}

const ClassRow* FindClass(const ClassId& id) {
  return First([&](const ClassRow& row) { return row.id == id; });
}

}  // namespace tessaret
