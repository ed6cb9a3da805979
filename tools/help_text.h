// What --help prints.
#pragma once

#include <string>
#include <vector>

#include "command_line.h"

namespace tessaret::tool {

/// The help of the tool as a whole, with the verbs that it has, or of one verb, which has none.
std::string HelpText(const CommandTable& table, const std::vector<CommandTable>& verbs);

}  // namespace tessaret::tool
