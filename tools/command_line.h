// The command line as a whole: all verbs with their options, and what a line of words means by them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "verbs.h"

namespace tessaret::tool {

/// What texts about the tool tell: the tool itself or one of its verbs.
struct CommandTable {
  std::string command;  // how it is called, "tessaret dump"
  std::string name;     // "dump"
  std::string summary;
  OptionRows options;  // positionals first
};

class CommandLine {
 public:
  CommandLine();
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// Reads the arguments, without the program's name. What runs the verb; nothing after --help and --version, with their
  /// text in `host.output`. The options that all verbs share go to `host`. Throws UsageError for anything that
  /// cannot be understood.
  std::optional<RunVerb> Parse(std::vector<std::string> arguments, Host& host);

  /// The name of the verb that was recognised before parsing failed, or empty.
  [[nodiscard]] std::string VerbName() const;

  /// The arguments that had no place, in their order.
  [[nodiscard]] std::vector<std::string> Unexpected() const;

  [[nodiscard]] const CommandTable& Tool() const;
  /// The verbs that are shown to people.
  [[nodiscard]] std::vector<CommandTable> ListedVerbs() const;

 private:
  struct Parser;

  std::unique_ptr<Parser> parser_;
};

}  // namespace tessaret::tool
