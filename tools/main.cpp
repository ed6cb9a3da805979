// tessaret: the command line tool.
#include <cerrno>
#include <new>
#include <string>
#include <vector>

#include "command_line.h"
#include "interrupt.h"
#include "standard_streams.h"

namespace tessaret::tool {
namespace {

ExitCode WrongUsage(Host& host, const CommandLine& line, const UsageError& error) {
  const std::string verb = line.VerbName();
  const std::vector<std::string> unexpected = line.Unexpected();
  if (!verb.empty()) {
    host.messages.Error(verb, error.what());
  } else if (unexpected.empty()) {
    host.messages.Error("usage", "a verb is needed");
  } else {
    const bool option = unexpected.front().starts_with('-');
    host.messages.Error(unexpected.front(), option ? "no such option" : "no such verb");
  }
  host.messages.Error("usage", "see tessaret " + (verb.empty() ? "" : verb + ' ') + "--help");
  return ExitCode::kUsage;
}

ExitCode ParseAndRun(Host& host, const std::vector<std::string>& arguments) {
  CommandLine line;
  std::optional<RunVerb> run;
  try {
    run = line.Parse(arguments, host);
  } catch (const UsageError& error) {
    return WrongUsage(host, line, error);
  }
  host.messages.SetLoudness(host.options.loudness);
  const ExitCode code = run ? (*run)(host) : ExitCode::kDone;
  host.output.Close();
  return code;
}

/// Whoever stops reading has what he wanted: that needs no words.
ExitCode OutputFailed(Host& host, const OutputError& error) {
  if (error.Number() != EPIPE) host.messages.Error("standard output", error.what());
  return ExitCode::kOutputFailed;
}

/// Everything that can go wrong beyond one input ends here.
ExitCode Main(const std::vector<std::string>& arguments) {
  Host host;
  try {
    const ExitCode code = ParseAndRun(host, arguments);
    return IsInterrupted() ? InterruptExitCode() : code;
  } catch (const Interrupted&) {
    return InterruptExitCode();
  } catch (const OutputError& error) {
    return IsInterrupted() ? InterruptExitCode() : OutputFailed(host, error);
  } catch (const DictionaryError& error) {
    host.messages.Error("dictionaries", error.what());
  } catch (const std::bad_alloc&) {
    host.messages.Error("memory", "not enough for this work");
  } catch (const std::exception& error) {
    host.messages.Error("fault", error.what());
  }
  return IsInterrupted() ? InterruptExitCode() : ExitCode::kInputFailed;
}

}  // namespace
}  // namespace tessaret::tool

int main(int count, char** values) {
  tessaret::tool::FillClosedStandardStreams();
  tessaret::tool::WatchForInterrupts();
  return static_cast<int>(
      tessaret::tool::Main(std::vector<std::string>(values + (count > 0 ? 1 : 0), values + count)));
}
