// What a verb takes from the command line, as a table: the parser, --help, the man pages and the completions go by it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace tessaret::tool {

/// A command line that cannot be understood or makes no sense, in words that begin with what they are about.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  UsageError(const std::string& about, const std::string& words)
      : std::runtime_error(about + ": " + words) {}
};

/// Where a value goes. A list takes several, a truth none.
using OptionTarget = std::variant<std::monostate, bool*, int*, std::optional<std::uint32_t>*,
                                  std::string*, std::vector<std::string>*>;

/// Whole numbers, both ends included.
struct OptionRange {
  int smallest;
  int largest;
};

struct OptionRow {
  std::string positional = {};  // what a word without an option is, "IN"; empty for an option
  std::vector<std::string> names = {};  // "-q", "--quiet", "+L"; empty for a positional
  std::string value = {};    // what help shows for the value, "FILE|DIR..."; empty for a flag
  OptionTarget target = {};  // owned by the verb, and there for as long as its table
  std::string description = {};
  std::vector<std::string> choices = {};                     // where only some values are taken
  std::optional<OptionRange> range = {};                     // of a number
  std::string (*whyNot)(const std::string& text) = nullptr;  // why a value is not taken, or empty
  bool required = false;
  bool showsDefault = false;  // the value that the target has while it is not given
  std::vector<std::string> stands =
      {};  // what other programs call it with one of its choices, "+ti"

  [[nodiscard]] bool IsPositional() const { return names.empty(); }
  [[nodiscard]] bool TakesValue() const {
    return !std::holds_alternative<bool*>(target) && target.index() != 0;
  }
  /// What help shows for the value: its choices where nothing else is said. Empty for a flag.
  [[nodiscard]] std::string ShownValue() const;
  /// The value that the target has, where help shows it; otherwise empty.
  [[nodiscard]] std::string ShownDefault() const;
};

using OptionRows = std::vector<OptionRow>;

/// `words` with `between` between each two.
std::string Joined(const std::vector<std::string>& words, const std::string& between);

/// The positionals of `rows` before the options, each in their order.
OptionRows PositionalsFirst(OptionRows rows);

/// Adds to the options of `verb` what other programs call them.
void AddKnownSpellings(const std::string& verb, OptionRows& rows);

}  // namespace tessaret::tool
