// The verbs of the tool. A verb is a file with one function that answers what it takes from the command line and what runs
// it, a declaration here, and a row in the table.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "exit_code.h"
#include "host.h"
#include "option_table.h"

namespace tessaret::tool {

/// Does the work of a verb once its options have their values.
using RunVerb = std::function<ExitCode(Host&)>;

struct VerbSetUp {
  OptionRows options;
  RunVerb run;
  /// Throws UsageError for options that make no sense together. May be absent.
  std::function<void()> check = {};
};

struct Verb {
  const char* name;
  const char* summary;  // one line, for lists
  VerbSetUp (*setUp)();
  bool listed = true;  // shown to people
};

VerbSetUp SetUpCheck();
VerbSetUp SetUpConvert();
VerbSetUp SetUpDictionary();
VerbSetUp SetUpDump();
VerbSetUp SetUpEcho();
VerbSetUp SetUpGet();
VerbSetUp SetUpManual();
VerbSetUp SetUpPhantom();
VerbSetUp SetUpSend();
VerbSetUp SetUpSet();
VerbSetUp SetUpTranscode();

/// In the order in which people meet them.
std::span<const Verb> Verbs();

}  // namespace tessaret::tool
