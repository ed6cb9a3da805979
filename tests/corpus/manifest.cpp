#include "corpus/manifest.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "support/test_paths.h"

namespace tessaret::test {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> cells;
  std::stringstream stream(line);
  for (std::string cell; std::getline(stream, cell, '\t');) cells.push_back(cell);
  return cells;
}

std::optional<std::uint64_t> NumberIn(const std::string& text) {
  std::uint64_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  if (text.empty() || read.ec != std::errc()) return std::nullopt;
  return number;
}

std::vector<ManifestRow> ReadManifest() {
  std::ifstream file(fs::path(kCorpusDir) / "manifest.tsv");
  std::string line;
  if (!std::getline(file, line)) return {};
  const std::vector<std::string> names = Split(line);
  std::vector<ManifestRow> rows;
  while (std::getline(file, line)) {
    const std::vector<std::string> cells = Split(line);
    std::map<std::string, std::string> cell;
    for (std::size_t at = 0; at < std::min(names.size(), cells.size()); ++at) {
      cell[names[at]] = cells[at];
    }
    const auto numberOr0 = [&](const char* name) { return NumberIn(cell[name]).value_or(0); };
    rows.push_back({cell["path"], cell["sha256"], cell["transfer_syntax"], numberOr0("rows"),
                    numberOr0("columns"), numberOr0("frames"), numberOr0("samples"),
                    numberOr0("bits_allocated"), cell["photometric"], NumberIn(cell["elements"]),
                    cell["native_pixel_sha256"]});
  }
  return rows;
}

}  // namespace

const std::vector<ManifestRow>& Manifest() {
  static const std::vector<ManifestRow> rows = ReadManifest();
  return rows;
}

std::string PathOf(const ManifestRow& row) {
  return (fs::path(kCorpusDir).parent_path() / row.path).string();
}

std::uint64_t ImageBytes(const ManifestRow& row) {
  const std::uint64_t samples = row.photometric == "YBR_FULL_422" ? 2 : row.samples;
  const std::uint64_t frames = std::max<std::uint64_t>(row.frames, 1);
  return (row.rows * row.columns * frames * samples * row.bitsAllocated + 7) / 8;
}

std::vector<std::string> OtherFiles() {
  std::set<std::string> listed;
  for (const ManifestRow& row : Manifest()) listed.insert(PathOf(row));
  std::vector<std::string> others;
  for (const auto& entry : fs::recursive_directory_iterator(kCorpusDir)) {
    const std::string path = entry.path().string();
    if (entry.is_regular_file() && !listed.contains(path)) others.push_back(path);
  }
  std::sort(others.begin(), others.end());
  return others;
}

}  // namespace tessaret::test
