// Completion for shells, made from the same tables of options that --help reads.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace tessaret::tool {

/// What bash sources to complete verbs, options, their choices and file names. `app` is the command line as a whole.
std::string BashCompletion(const CLI::App& app);

}  // namespace tessaret::tool
