// Completion for shells, made from the same tables of options that --help reads.
#pragma once

#include <string>

#include "command_line.h"

namespace tessaret::tool {

/// What bash sources to complete verbs, options, their choices and file names.
std::string BashCompletion(const CommandLine& line);

}  // namespace tessaret::tool
