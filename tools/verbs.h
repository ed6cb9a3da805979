// The verbs of the tool. A verb is a file with one function that gives its options to the parser and answers what runs it,
// a declaration here, and a row in the table.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include <CLI/CLI.hpp>

#include "exit_code.h"
#include "host.h"

namespace tessaret::tool {

/// Does the work of a verb once its options have their values.
using RunVerb = std::function<ExitCode(Host&)>;

struct Verb {
  const char* name;
  const char* summary;  // one line, for lists
  RunVerb (*setUp)(CLI::App& app);
  bool listed = true;  // shown to people
};

RunVerb SetUpCheck(CLI::App& app);
RunVerb SetUpConvert(CLI::App& app);
RunVerb SetUpDictionary(CLI::App& app);
RunVerb SetUpDump(CLI::App& app);
RunVerb SetUpGet(CLI::App& app);
RunVerb SetUpManual(CLI::App& app);
RunVerb SetUpPhantom(CLI::App& app);
RunVerb SetUpSet(CLI::App& app);
RunVerb SetUpTranscode(CLI::App& app);

/// In the order in which people meet them.
std::span<const Verb> Verbs();

}  // namespace tessaret::tool
