// The options of a verb as the parser holds them, in the form that texts about them want.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace tessaret::tool {

struct OptionRow {
  std::vector<std::string> names;    // "-q", "--quiet", "+L"; empty for a positional
  std::vector<std::string> stands;   // what stands for the option with one of its choices, "+ti"
  std::string value;                 // what follows it or stands for it, "OUT"; empty for a flag
  std::vector<std::string> choices;  // where only some values are taken
  std::string description;
  std::string defaultValue;
  bool required = false;

  [[nodiscard]] bool IsPositional() const { return names.empty(); }
};

/// All options of `app`, positionals first.
std::vector<OptionRow> OptionRows(const CLI::App& app);

/// The verbs of `app` that are shown to people.
std::vector<const CLI::App*> ListedVerbs(const CLI::App& app);

}  // namespace tessaret::tool
