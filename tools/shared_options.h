// Options that mean the same for several verbs, each with the place where its value goes.
#pragma once

#include "option_table.h"

namespace tessaret::tool {

/// "FILE|DIR...", the files to be gone through.
OptionRow FilesRow(std::vector<std::string>& paths);
/// "--recurse", asked for by those who know it from elsewhere.
OptionRow RecurseRow(bool& recurse);
/// "--strict"
OptionRow StrictRow(bool& strict);
/// `name` as "IN", the one file to be read.
OptionRow InputRow(const std::string& name, std::string& path);
/// "OUT", the one file to be written; `more` follows what is said of it.
OptionRow OutputRow(std::string& path, const std::string& more = {});
/// "--force"; `what` is replaced.
OptionRow ForceRow(bool& force, const std::string& what = "OUT if it is there");

}  // namespace tessaret::tool
