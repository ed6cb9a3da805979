#include "output_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "option_table.h"
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
  throw UsageError(option, "- is for reading; a file is needed, ./- for one of that name");
}

std::string SaveObject(const std::string& path, _EnumSaveForm form, bool force,
                       IDCMObject& object) {
  const std::int32_t options = SAVE_KEEPS_TYPES | (force ? 0 : SAVE_KEEPS_FILES);
  const auto file = Ref<IDCMObject>(&object).As<IDcmFile>();
  return Failed(file->SaveFile(path, form, options)) ? LastError().text : std::string();
}

int MakeDirectories(const std::string& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (!error && !std::filesystem::is_directory(path, error)) return error ? error.value() : ENOTDIR;
  return error.value();
}

}  // namespace tessaret::tool
