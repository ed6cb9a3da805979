// What --help prints.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace tessaret::tool {

/// The help of the command line as a whole or of one verb. `command` is how it is called, "tessaret dump".
std::string HelpText(const CLI::App& app, const std::string& command);

}  // namespace tessaret::tool
