#include "platform/settings_store.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <vector>

#include "base/text.h"
#include "platform/whole_file.h"

namespace tessaret {
namespace {

// No person writes more than this.
constexpr std::uint64_t kMostBytes = 1u << 20;
constexpr mode_t kDirectoryMode = 0700;

/// The group that a line opens, or nothing.
std::optional<std::string_view> GroupIn(std::string_view line) {
  line = Trimmed(line);
  if (!line.starts_with('[') || !line.ends_with(']')) return std::nullopt;
  return Trimmed(line.substr(1, line.size() - 2));
}

/// The value behind `name` in a line, or nothing.
std::optional<std::string_view> ValueIn(std::string_view line, std::string_view name) {
  const std::size_t sign = line.find('=');
  if (sign == std::string_view::npos || !IsSameIgnoringCase(Trimmed(line.substr(0, sign)), name))
    return std::nullopt;
  return Trimmed(line.substr(sign + 1));
}

std::optional<std::uint32_t> NumberIn(std::string_view text) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

/// The lines of the file without their ends. False where it is there and cannot be read.
bool ReadLines(const std::string& path, std::vector<std::string>& lines) {
  std::vector<std::uint8_t> bytes;
  const int error = ReadWholeFile(path, kMostBytes, bytes);
  if (error != 0) return error == ENOENT;
  std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    lines.emplace_back(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return true;
}

/// Where a setting is, or where it belongs.
struct Place {
  std::size_t line = 0;
  bool isThere = false;
  bool hasGroup = false;
};

Place FindPlace(const std::vector<std::string>& lines, std::string_view group,
                std::string_view name) {
  Place place{.line = lines.size()};
  bool within = false;
  for (std::size_t at = 0; at < lines.size(); ++at) {
    if (const auto opened = GroupIn(lines[at])) {
      within = IsSameIgnoringCase(*opened, group);
      if (within && !place.hasGroup) place = {.line = at + 1, .isThere = false, .hasGroup = true};
    } else if (within && ValueIn(lines[at], name)) {
      return {.line = at, .isThere = true, .hasGroup = true};
    }
  }
  return place;
}

void SetLine(std::vector<std::string>& lines, std::string_view group, std::string_view name,
             std::uint32_t value) {
  const std::string line = Format("%s = %u", std::string(name).c_str(), value);
  const Place place = FindPlace(lines, group, name);
  if (place.isThere) {
    lines[place.line] = line;
    return;
  }
  if (!place.hasGroup) lines.push_back(Format("[%s]", std::string(group).c_str()));
  const std::size_t at = place.hasGroup ? place.line : lines.size();
  lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at), line);
}

std::string DirectoryOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

/// Makes the directories that lead to `path`; what is wrong with them shows when the file is written.
void MakeWayTo(const std::string& path) {
  const std::string directory = DirectoryOf(path);
  ::mkdir(DirectoryOf(directory).c_str(), kDirectoryMode);
  ::mkdir(directory.c_str(), kDirectoryMode);
}

}  // namespace

std::string SettingsPath() {
  const char* configuration = std::getenv("XDG_CONFIG_HOME");
  // Only a whole path counts (XDG Base Directory).
  if (configuration != nullptr && configuration[0] == '/')
    return std::string(configuration) + "/tessaret/settings.conf";
  const char* home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') return {};
  return std::string(home) + "/.config/tessaret/settings.conf";
}

std::optional<std::uint32_t> ReadNumberSetting(std::string_view group, std::string_view name) {
  const std::string path = SettingsPath();
  std::vector<std::string> lines;
  if (path.empty() || !ReadLines(path, lines)) return std::nullopt;
  const Place place = FindPlace(lines, group, name);
  return place.isThere ? NumberIn(*ValueIn(lines[place.line], name)) : std::nullopt;
}

bool WriteNumberSetting(std::string_view group, std::string_view name, std::uint32_t value) {
  const std::string path = SettingsPath();
  std::vector<std::string> lines;
  if (path.empty() || !ReadLines(path, lines)) return false;
  SetLine(lines, group, name, value);
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  MakeWayTo(path);
  return WriteWholeFile(path, text.data(), text.size(), Existing::kReplace) == 0;
}

}  // namespace tessaret
