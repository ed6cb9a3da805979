#include "platform/module_path.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/file_calls.h"

namespace tessaret {
namespace {

constexpr const char* kDataFile = "dicom-dict.txt";
// Beside lib, and where libraries lie one folder deeper, as in lib/x86_64-linux-gnu.
constexpr const char* kInstalledData[] = {"../share/tessaret/", "../../share/tessaret/"};

std::string CutAfterLastSeparator(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

struct FreeText {
  void operator()(char* text) const noexcept { std::free(text); }
};
using ResolvedPath = std::unique_ptr<char, FreeText>;

/// The path without links; where there is no such file, that of the program. Null where that is not known either.
ResolvedPath Resolved(const char* path) {
  ResolvedPath resolved(::realpath(path, nullptr));
  if (!resolved) resolved.reset(::realpath("/proc/self/exe", nullptr));
  return resolved;
}

bool HasData(const std::string& directory) {
  struct stat status {};
  return StatPath((directory + kDataFile).c_str(), status).Ok();
}

}  // namespace

std::string CodeDirectory() {
  Dl_info info{};
  if (::dladdr(reinterpret_cast<const void*>(&ModuleDirectory), &info) == 0 ||
      info.dli_fname == nullptr) {
    return "./";
  }
  // A program started by its bare name is known to the loader by that name only.
  const std::string path = info.dli_fname;
  const ResolvedPath resolved = Resolved(path.c_str());
  return CutAfterLastSeparator(resolved ? resolved.get() : path);
}

std::string ProgramDirectory() {
  // Only read, not resolved: the file may be deleted or replaced while it runs, and the link still tells where it was.
  std::error_code unknown;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", unknown);
  return program.is_absolute() ? CutAfterLastSeparator(program.string()) : std::string();
}

std::string ModuleDirectory() {
  if (const char* named = std::getenv("TESSARET_DATA_DIR"); named != nullptr && *named != '\0') {
    std::string directory = named;
    if (directory.back() != '/') directory += '/';
    return directory;
  }
  std::string directory = CodeDirectory();
  if (HasData(directory)) return directory;
  for (const char* const installed : kInstalledData) {
    if (HasData(directory + installed)) return directory + installed;
  }
  return directory;
}

}  // namespace tessaret
