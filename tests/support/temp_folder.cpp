#include "support/temp_folder.h"

#include <stdlib.h>

#include <set>
#include <stdexcept>
#include <system_error>

namespace tessaret::test {

TempFolder::TempFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tessaret-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder " + name);
  path_ = name;
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempFolder::Listing() const {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    names.insert(entry.path().filename().string());
  }
  std::string listing;
  for (const std::string& name : names) listing += (listing.empty() ? "" : " ") + name;
  return listing;
}

}  // namespace tessaret::test
