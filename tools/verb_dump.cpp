// tessaret dump: shows what DICOM files hold.
#include "escape.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_dump.h"
#include "line_dump.h"
#include "model_dump.h"
#include "shared_options.h"
#include "source_file.h"
#include "text_dump.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct DumpOptions {
  std::vector<std::string> paths;
  std::string format = "lines";
  bool noPixels = false;
  bool strict = false;
  bool recurse = false;  // asked for by those who know it from elsewhere; it is what happens anyhow
  LineDumpOptions lines;
};

void DumpAsJson(const std::string& path, const SourceFile& source, Host& host) {
  JsonWriter json(host.output);
  json.BeginObject().Member("file", path);
  if (!source.syntax.empty()) json.Member("transferSyntax", source.syntax);
  if (!source.failure.empty()) json.Member("error", source.failure);
  if (source.object) {
    json.Key("elements");
    DumpJson(source, json);
  }
  json.EndObject().EndLine();
}

class Dump {
 public:
  Dump(const DumpOptions& options, Host& host) : options_(options), host_(host) {}

  ExitCode All() {
    const FileList list = FindFiles(options_.paths, host_.messages);
    failed_ = !list.complete;
    withHeadings_ = list.fromDirectory || list.files.size() > 1;
    for (const std::string& path : list.files) {
      StopIfInterrupted();
      One(path);
    }
    return failed_ ? ExitCode::kInputFailed : ExitCode::kDone;
  }

 private:
  void One(const std::string& path) {
    SourceOptions how;
    how.loadPixels = !options_.noPixels;
    how.skipPixels = !ShowsWholeValues();
    how.strict = options_.strict;
    const SourceFile source = LoadSource(path, how, host_);
    StopIfInterrupted();
    TellOf(path, source);
    if (options_.format == "json") {
      ShowModel(path, source);
    } else if (host_.options.json) {
      DumpAsJson(path, source, host_);
    } else if (source.object) {
      Show(path, source);
    }
    if (source.IsWhole()) return;
    host_.output.Flush();
    host_.messages.Error(SubjectOf(path), source.failure);
    failed_ = true;
  }

  /// Anything else cuts pixel data, or tells its length.
  [[nodiscard]] bool ShowsWholeValues() const {
    return options_.format == "json" || options_.lines.wholeValues;
  }

  void TellOf(const std::string& path, const SourceFile& source) {
    Messages& messages = host_.messages;
    // In the order in which it happened, also where both streams end on one terminal.
    if (messages.SaysNotes() || (messages.SaysWarnings() && !source.warnings.empty()))
      host_.output.Flush();
    messages.Note(SubjectOf(path), DescribeEncoding(source, host_));
    for (const std::string& warning : source.warnings) messages.Warn(SubjectOf(path), warning);
  }

  /// One object a line, whether one file or more.
  void ShowModel(const std::string& path, const SourceFile& source) {
    if (!source.object) return;
    JsonWriter json(host_.output);
    DumpModel(source, UriOf(path), json);
    json.EndLine();
  }

  void Show(const std::string& path, const SourceFile& source) {
    if (withHeadings_) {
      if (!first_) host_.output.Line("");
      host_.output.Line("# " + Escaped(SubjectOf(path)));
    }
    first_ = false;
    if (options_.format == "text") {
      DumpText(source, host_);
    } else {
      DumpLines(source, options_.lines, host_);
    }
  }

  const DumpOptions& options_;
  Host& host_;
  bool failed_ = false;
  bool withHeadings_ = false;
  bool first_ = true;
};

}  // namespace

VerbSetUp SetUpDump() {
  auto options = std::make_shared<DumpOptions>();
  return {
      .options =
          {
              FilesRow(options->paths),
              RecurseRow(options->recurse),
              {.names = {"--format"},
               .target = &options->format,
               .description =
                   "lines: an element a line, long values cut; text: the library's own form; "
                   "json: the DICOM JSON model, a file a line",
               .choices = {"lines", "text", "json"},
               .showsDefault = true},
              {.names = {"--no-pixels"},
               .target = &options->noPixels,
               .description = "Stop at the pixel data, which saves reading it"},
              StrictRow(options->strict),
              {.names = {"--long"},
               .target = &options->lines.wholeValues,
               .description = "Do not cut long values"},
          },
      .run = [options](Host& host) { return Dump(*options, host).All(); },
  };
}

}  // namespace tessaret::tool
