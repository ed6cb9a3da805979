#include "command_line.h"

#include <algorithm>
#include <type_traits>
#include <utility>

#include <CLI/CLI.hpp>

#include "help_text.h"
#include "known_spellings.h"
#include "tessaret/version.h"

namespace tessaret::tool {
namespace {

constexpr const char* kSummary =
    "Show, check, convert and make DICOM files. Results go to standard output, words to standard "
    "error";

void TranslateKnownSpellings(std::vector<std::string>& arguments) {
  const auto verb =
      std::find_if(arguments.begin(), arguments.end(),
                   [](const std::string& argument) { return !argument.starts_with('-'); });
  for (auto argument = verb; argument != arguments.end() && *argument != "--"; ++argument) {
    for (const KnownSpelling& row : kKnownSpellings) {
      if (*verb == row.verb && *argument == row.known) *argument = row.option;
    }
  }
}

// The parser takes a word in brackets for a list where several words may stand. It is a name here: a NUL, which no argument
// holds, goes behind the bracket while it is parsed.
void HideBracket(std::string& argument) {
  if (argument.starts_with('[') && argument.ends_with(']')) argument += '\0';
}

std::string WithShownBracket(std::string argument) {
  if (argument.ends_with('\0')) argument.pop_back();
  return argument;
}

OptionRow HelpRow() {
  return {.names = {"-h", "--help"}, .description = "Print this text and end"};
}

OptionRow VersionRow() {
  return {.names = {"--version"}, .description = "Print the version and end"};
}

/// These may stand before the verb and behind it.
OptionRows CommonRows(CommonOptions& common) {
  return {
      {.names = {"-q", "--quiet"},
       .target = &common.loudness.quiet,
       .description = "Say nothing but errors"},
      {.names = {"-v", "--verbose"},
       .target = &common.loudness.verbose,
       .description = "Say what is being done"},
      {.names = {"-d", "--debug"},
       .target = &common.loudness.debug,
       .description = "Say what helps to find a fault"},
      {.names = {"--json"},
       .target = &common.json,
       .description = "Report facts as JSON, one object a line"},
  };
}

/// Has the parser put what stands for `row` where the row says.
CLI::Option* AddTarget(CLI::App& app, const OptionRow& row) {
  const std::string names = row.IsPositional() ? row.positional : Joined(row.names, ",");
  return std::visit(
      [&](auto target) -> CLI::Option* {
        using Target = decltype(target);
        if constexpr (std::is_same_v<Target, std::monostate>) {
          return nullptr;
        } else if constexpr (std::is_same_v<Target, bool*>) {
          return app.add_flag(names, *target);
        } else if constexpr (std::is_same_v<Target, std::vector<std::string>*>) {
          CLI::Option* const option = app.add_option(names, *target);
          // An option of several values is given once for each, so that words behind it are none of them.
          if (!row.IsPositional()) option->expected(1)->take_all()->allow_extra_args(false);
          return option;
        } else {
          return app.add_option(names, *target);
        }
      },
      row.target);
}

void AddRow(CLI::App& app, const OptionRow& row) {
  CLI::Option* const option = AddTarget(app, row);
  if (option == nullptr) return;
  option->required(row.required);
  if (!row.choices.empty()) option->check(CLI::IsMember(row.choices));
  if (row.range) option->check(CLI::Range(row.range->smallest, row.range->largest));
  if (row.whyNot != nullptr) option->check(row.whyNot);
  if (row.TakesValue()) option->transform(&WithShownBracket);
}

void AddVersion(CLI::App& app) {
  app.set_version_flag(Joined(VersionRow().names, ","), "tessaret " TESSARET_VERSION_STRING);
}

/// What is wrong. An option that nobody knows comes first: the parser's words may be about what is missing without it.
std::string WordsOf(const CLI::ParseError& error, const std::vector<std::string>& unexpected) {
  for (const std::string& argument : unexpected) {
    if (argument.starts_with('-')) return "no such option: " + argument;
  }
  if (!unexpected.empty()) return "too many words: " + Joined(unexpected, " ");
  return error.what();
}

}  // namespace

struct CommandLine::Parser {
  struct KnownVerb {
    const CLI::App* app;  // owned by that of the tool
    VerbSetUp setUp;
    CommandTable table;
    bool listed;
  };

  Parser();
  void AddVerb(const Verb& verb);
  [[nodiscard]] const KnownVerb* Chosen() const;
  [[nodiscard]] CommandTable TableOf(const std::string& name, const std::string& summary,
                                     const OptionRows& own);

  CLI::App app;
  CommonOptions common;
  CommandTable tool;
  std::vector<KnownVerb> verbs;
};

CommandLine::Parser::Parser() : app("", "tessaret") {
  app.require_subcommand(1);
  app.set_help_flag(Joined(HelpRow().names, ","));
  for (const OptionRow& row : CommonRows(common)) AddRow(app, row);
  AddVersion(app);
  tool = TableOf("tessaret", kSummary, {});
  tool.command = "tessaret";
  for (const Verb& verb : Verbs()) AddVerb(verb);
}

void CommandLine::Parser::AddVerb(const Verb& verb) {
  CLI::App* const verbApp = app.add_subcommand(verb.name);
  VerbSetUp setUp = verb.setUp();
  for (const OptionRow& row : setUp.options) AddRow(*verbApp, row);
  for (const OptionRow& row : CommonRows(common)) AddRow(*verbApp, row);
  AddVersion(*verbApp);
  CommandTable table = TableOf(verb.name, verb.summary, setUp.options);
  verbs.push_back({verbApp, std::move(setUp), std::move(table), verb.listed});
}

/// All that `name` takes, with what is common to all.
CommandTable CommandLine::Parser::TableOf(const std::string& name, const std::string& summary,
                                          const OptionRows& own) {
  OptionRows rows = {HelpRow()};
  rows.insert(rows.end(), own.begin(), own.end());
  const OptionRows shared = CommonRows(common);
  rows.insert(rows.end(), shared.begin(), shared.end());
  rows.push_back(VersionRow());
  AddKnownSpellings(name, rows);
  return {"tessaret " + name, name, summary, PositionalsFirst(std::move(rows))};
}

/// The verb that the words began with, or null.
const CommandLine::Parser::KnownVerb* CommandLine::Parser::Chosen() const {
  const auto found = std::find_if(verbs.begin(), verbs.end(),
                                  [](const KnownVerb& verb) { return verb.app->parsed(); });
  return found == verbs.end() ? nullptr : &*found;
}

CommandLine::CommandLine() : parser_(std::make_unique<Parser>()) {}
CommandLine::~CommandLine() = default;

std::optional<RunVerb> CommandLine::Parse(std::vector<std::string> arguments, Host& host) {
  TranslateKnownSpellings(arguments);
  std::for_each(arguments.begin(), arguments.end(), &HideBracket);
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
  try {
    parser_->app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    const Parser::KnownVerb* const verb = parser_->Chosen();
    host.output.Write(verb != nullptr ? HelpText(verb->table, {})
                                      : HelpText(parser_->tool, ListedVerbs()));
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    host.output.Line(version.what());
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(WordsOf(error, Unexpected()));
  }
  host.options = parser_->common;
  const Parser::KnownVerb* const verb = parser_->Chosen();
  if (verb == nullptr) return std::nullopt;
  if (verb->setUp.check) verb->setUp.check();
  return verb->setUp.run;
}

std::vector<std::string> CommandLine::Unexpected() const {
  std::vector<std::string> words = parser_->app.remaining(true);
  std::transform(words.begin(), words.end(), words.begin(), &WithShownBracket);
  return words;
}

std::string CommandLine::VerbName() const {
  const Parser::KnownVerb* const verb = parser_->Chosen();
  return verb == nullptr ? std::string() : verb->table.name;
}

const CommandTable& CommandLine::Tool() const { return parser_->tool; }

std::vector<CommandTable> CommandLine::ListedVerbs() const {
  std::vector<CommandTable> tables;
  for (const Parser::KnownVerb& verb : parser_->verbs) {
    if (verb.listed) tables.push_back(verb.table);
  }
  return tables;
}

}  // namespace tessaret::tool
