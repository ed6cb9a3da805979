// The files that a job works on.
#pragma once

#include <algorithm>
#include <filesystem>
#include <vector>

namespace tessaret::bench {

/// Every `step`th file of a folder, in the order of their names.
inline std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder,
                                                  std::size_t step = 1) {
  std::vector<std::filesystem::path> all;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) all.push_back(entry.path());
  std::sort(all.begin(), all.end());
  std::vector<std::filesystem::path> some;
  for (std::size_t at = 0; at < all.size(); at += step) some.push_back(all[at]);
  return some;
}

}  // namespace tessaret::bench
