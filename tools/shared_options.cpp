#include "shared_options.h"

namespace tessaret::tool {

OptionRow FilesRow(std::vector<std::string>& paths) {
  return {.positional = "FILE",
          .value = "FILE|DIR...",
          .target = &paths,
          .description = "DICOM files; directories are gone through; - is standard input",
          .required = true};
}

OptionRow RecurseRow(bool& recurse) {
  return {.names = {"--recurse"},
          .target = &recurse,
          .description = "Go through directories, as is done anyhow"};
}

OptionRow StrictRow(bool& strict) {
  return {.names = {"--strict"},
          .target = &strict,
          .description = "Refuse files without the \"DICM\" mark"};
}

OptionRow InputRow(const std::string& name, std::string& path) {
  return {.positional = name,
          .target = &path,
          .description = "The file to be read; - is standard input",
          .required = true};
}

OptionRow OutputRow(std::string& path, const std::string& more) {
  return {.positional = "OUT",
          .target = &path,
          .description = "The file to be written, whole or not at all" + more,
          .required = true};
}

OptionRow ForceRow(bool& force, const std::string& what) {
  return {.names = {"--force"}, .target = &force, .description = "Replace " + what};
}

}  // namespace tessaret::tool
