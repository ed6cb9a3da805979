// The command line as a whole: all verbs with their options, and the texts that tell of them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "verbs.h"

namespace tessaret::tool {

class CommandLine {
 public:
  CommandLine();

  /// Reads the arguments, without the program's name. What runs the verb; nothing after --help and --version, with their
  /// text in `host.output`. The options that all verbs share go to `host`. Throws CLI::ParseError for anything that
  /// cannot be understood.
  std::optional<RunVerb> Parse(std::vector<std::string> arguments, Host& host);

  /// The name of the verb that was recognised before parsing failed, or empty.
  [[nodiscard]] std::string VerbName() const;

  /// The arguments that had no place, in their order.
  [[nodiscard]] std::vector<std::string> Unexpected() const;

  [[nodiscard]] const CLI::App& App() const { return app_; }

 private:
  void AddVerb(const Verb& verb);
  void AddCommonOptions(CLI::App& app);

  CLI::App app_;
  CommonOptions common_;
  std::vector<std::pair<CLI::App*, RunVerb>> runners_;
};

}  // namespace tessaret::tool
