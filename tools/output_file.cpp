#include "output_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include <CLI/CLI.hpp>

#include "core/data_set_coder.h"
#include "platform/file_calls.h"

namespace tessaret::tool {

std::string WhyNotToWrite(const std::string& path, bool force) {
  struct stat status {};
  const FileResult found = StatPath(path.c_str(), status);
  if (found.error == ENOENT) return {};
  if (!found.Ok()) return SystemErrorText(found.error);
  if (S_ISDIR(status.st_mode)) return SystemErrorText(EISDIR);
  if (S_ISREG(status.st_mode) && !force) return "is there already; --force replaces it";
  return {};
}

void RefuseDash(const std::string& option, const std::string& path) {
  if (path != "-") return;
  throw CLI::ValidationError(option,
                             "- is for reading; a file is needed, ./- for one of that name");
}

std::string SaveObject(const std::string& path, std::int32_t mode, bool force,
                       DICOMObject& object) {
  // Types are set already; without a dictionary none is looked up anew.
  DataSetCoder coder;
  coder.ReplacesFiles = force;
  if (coder.SaveFile(path.c_str(), mode, object)) return {};
  if (coder.ErrorText() != nullptr) return coder.ErrorText();
  return coder.LastOpenError() != 0 ? SystemErrorText(coder.LastOpenError()) : "cannot be written";
}

int MakeDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (!error && !std::filesystem::is_directory(path, error)) return error ? error.value() : ENOTDIR;
  return error.value();
}

}  // namespace tessaret::tool
