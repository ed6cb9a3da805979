#include "command_line.h"

#include <algorithm>

#include "help_text.h"
#include "known_spellings.h"
#include "tessaret/version.h"

namespace tessaret::tool {
namespace {

constexpr const char* kDescription =
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

}  // namespace

CommandLine::CommandLine() : app_(kDescription, "tessaret") {
  app_.require_subcommand(1);
  app_.formatter_fn([](const CLI::App* app, const std::string& command, CLI::AppFormatMode) {
    return HelpText(*app, command);
  });
  app_.set_help_flag("-h,--help", "Print this text and end");
  AddCommonOptions(app_);
  for (const Verb& verb : Verbs()) AddVerb(verb);
}

void CommandLine::AddVerb(const Verb& verb) {
  CLI::App* app = app_.add_subcommand(verb.name, verb.summary);
  runners_.emplace_back(app, verb.setUp(*app));
  for (CLI::Option* option : app->get_options(
           [](const CLI::Option* each) { return each->get_items_expected_max() > 0; })) {
    option->transform(&WithShownBracket);
  }
  if (!verb.listed) app->group("");
  AddCommonOptions(*app);
}

/// These may stand before the verb and behind it.
void CommandLine::AddCommonOptions(CLI::App& app) {
  app.add_flag("-q,--quiet", common_.loudness.quiet, "Say nothing but errors");
  app.add_flag("-v,--verbose", common_.loudness.verbose, "Say what is being done");
  app.add_flag("-d,--debug", common_.loudness.debug, "Say what helps to find a fault");
  app.add_flag("--json", common_.json, "Report facts as JSON, one object a line");
  app.set_version_flag("--version", "tessaret " TESSARET_VERSION_STRING,
                       "Print the version and end");
}

std::optional<RunVerb> CommandLine::Parse(std::vector<std::string> arguments, Host& host) {
  TranslateKnownSpellings(arguments);
  std::for_each(arguments.begin(), arguments.end(), &HideBracket);
  std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
  try {
    app_.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    host.output.Write(app_.help());
    return std::nullopt;
  } catch (const CLI::CallForVersion& version) {
    host.output.Line(version.what());
    return std::nullopt;
  }
  host.options = common_;
  for (const auto& [app, run] : runners_) {
    if (app->parsed()) return run;
  }
  return std::nullopt;
}

std::vector<std::string> CommandLine::Unexpected() const {
  std::vector<std::string> words = app_.remaining(true);
  std::transform(words.begin(), words.end(), words.begin(), &WithShownBracket);
  return words;
}

std::string CommandLine::VerbName() const {
  for (const auto& [app, run] : runners_) {
    if (app->parsed()) return app->get_name();
  }
  return {};
}

}  // namespace tessaret::tool
