#include "core/person_name.h"

#include <algorithm>
#include <iterator>

namespace tessaret {
namespace {

constexpr std::string_view kInDicom = "^";
constexpr std::string_view kForPeople = ", ";

/// The most characters of family name, given name, middle name, prefix, suffix.
constexpr std::size_t kMostCharacters[] = {63, 31, 19, 19, 31};

/// The components of `name`, which are separated by `from`, with `to` between them.
std::string Rejoined(std::string_view name, std::string_view from, std::string_view to) {
  std::string joined;
  std::size_t used = 0;  // up to the last component that is not empty
  const auto* const last = std::prev(std::end(kMostCharacters));
  for (const auto* most = std::begin(kMostCharacters); most <= last; ++most) {
    const std::size_t end = most == last ? name.size() : std::min(name.find(from), name.size());
    const std::string_view component = name.substr(0, std::min(end, *most));
    joined += component;
    if (!component.empty()) used = joined.size();
    joined += to;
    name.remove_prefix(std::min(end + from.size(), name.size()));
  }
  joined.resize(used);
  return joined;
}

}  // namespace

void VrPN::DisplayToDicom(std::string_view in, std::string& out) const {
  out = Rejoined(in, kForPeople, kInDicom);
}

void VrPN::DicomToDisplay(std::string_view in, std::string& out) const {
  out = Rejoined(in, kInDicom, kForPeople);
}

bool VrPN::GetValue(std::int32_t index, std::string& out) const {
  if (!VrOf::GetValue(index, out)) return false;
  if (out.find(kInDicom) != std::string::npos) DicomToDisplay(out, out);
  return true;
}

bool VrPN::PutValue(std::int32_t index, std::string_view in) {
  std::string name(in);
  if (name.find(kInDicom) == std::string::npos) DisplayToDicom(in, name);
  return VrOf::PutValue(index, name);
}

}  // namespace tessaret
