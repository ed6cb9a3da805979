// tessaret __man: writes the man pages and completions below a directory. The build runs it; people do not see it.
#include "command_line.h"
#include "completion.h"
#include "manual.h"
#include "output_file.h"
#include "platform/file_calls.h"
#include "platform/whole_file.h"

namespace tessaret::tool {
namespace {

/// Writes `text` to `name` in `directory`; false after a failure, which is told.
bool WriteText(const std::string& directory, const std::string& name, const std::string& text,
               Host& host) {
  const std::string path = directory + '/' + name;
  int error = MakeDirectories(directory);
  if (error == 0) error = WriteWholeFile(path, text.data(), text.size());
  if (error != 0) host.messages.Error(path, SystemErrorText(error));
  return error == 0;
}

ExitCode WriteAll(const std::string& directory, Host& host) {
  const CommandLine line;
  bool written = true;
  for (const ManPage& page : ManPages(line)) {
    written = WriteText(directory + "/man/man1", page.name, page.text, host) && written;
  }
  const std::string completions = directory + "/bash-completion/completions";
  written = WriteText(completions, "tessaret", BashCompletion(line), host) && written;
  return written ? ExitCode::kDone : ExitCode::kOutputFailed;
}

}  // namespace

VerbSetUp SetUpManual() {
  auto directory = std::make_shared<std::string>();
  return {
      .options = {{.positional = "DIR",
                   .target = directory.get(),
                   .description = "Where man/ and bash-completion/ go",
                   .required = true}},
      .run = [directory](Host& host) { return WriteAll(*directory, host); },
  };
}

}  // namespace tessaret::tool
