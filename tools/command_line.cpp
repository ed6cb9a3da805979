#include "command_line.h"

#include <algorithm>

#include "help_text.h"
#include "tessaret/version.h"

namespace tessaret::tool {
namespace {

constexpr const char* kDescription =
    "Show, check, convert and make DICOM files. Results go to standard output, words to standard "
    "error";

void TranslateKnownSpellings(std::vector<std::string>& arguments) {
  for (std::string& argument : arguments) {
    if (argument == "--") return;
    for (const KnownSpelling& row : kKnownSpellings) {
      if (argument == row.known) argument = row.option;
    }
  }
}

}  // namespace

CommandLine::CommandLine() : app_(kDescription, "tessaret") {
  app_.require_subcommand(1);
  app_.formatter_fn([](const CLI::App* app, const std::string& command, CLI::AppFormatMode) {
    return HelpText(*app, command);
  });
  app_.set_version_flag("--version", "tessaret " TESSARET_VERSION_STRING,
                        "Print the version and end");
  app_.set_help_flag("-h,--help", "Print this text and end");
  for (const Verb& verb : Verbs()) AddVerb(verb);
}

void CommandLine::AddVerb(const Verb& verb) {
  CLI::App* app = app_.add_subcommand(verb.name, verb.summary);
  runners_.emplace_back(app, verb.setUp(*app));
  if (!verb.listed) app->group("");
  app->add_flag("-q,--quiet", common_.loudness.quiet, "Say nothing but errors");
  app->add_flag("-v,--verbose", common_.loudness.verbose, "Say what is being done");
  app->add_flag("-d,--debug", common_.loudness.debug, "Say what helps to find a fault");
  app->add_flag("--json", common_.json, "Report facts as JSON, one object a line");
}

std::optional<RunVerb> CommandLine::Parse(std::vector<std::string> arguments, Host& host) {
  TranslateKnownSpellings(arguments);
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

std::string CommandLine::VerbName() const {
  for (const auto& [app, run] : runners_) {
    if (app->parsed()) return app->get_name();
  }
  return {};
}

}  // namespace tessaret::tool
