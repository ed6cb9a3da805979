// tessaret check: says which files do not read, and why.
#include <chrono>

#include "base/text.h"
#include "consistency.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_values.h"
#include "json_writer.h"
#include "shared_options.h"
#include "source_file.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct CheckOptions {
  std::vector<std::string> paths;
  bool strict = false;
  bool recurse = false;  // asked for by those who know it from elsewhere; it is what happens anyhow
};

struct Summary {
  std::uint64_t files = 0;
  std::uint64_t failed = 0;
  std::uint64_t bytes = 0;
  double seconds = 0;
};

std::string SecondsText(double seconds) {
  return FormatFixed(seconds).substr(0, FormatFixed(seconds).size() - 3);
}

class Check {
 public:
  Check(const CheckOptions& options, Host& host) : options_(options), host_(host) {}

  ExitCode All() {
    const auto begin = std::chrono::steady_clock::now();
    const FileList list = FindFiles(options_.paths, host_.messages);
    for (const std::string& path : list.files) {
      StopIfInterrupted();
      host_.messages.ShowProgress(summary_.files, list.files.size(), "files");
      One(path);
    }
    host_.messages.HideProgress();
    summary_.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    Report();
    return summary_.failed > 0 || !list.complete ? ExitCode::kInputFailed : ExitCode::kDone;
  }

 private:
  void One(const std::string& path) {
    SourceOptions how;
    how.strict = options_.strict;
    how.skipPixels = true;
    SourceFile source = LoadSource(path, how, host_);
    StopIfInterrupted();
    if (source.IsWhole()) {
      for (std::string& oddity : FindOddities(source, host_))
        source.warnings.push_back(std::move(oddity));
    }
    ++summary_.files;
    summary_.bytes += source.bytes;
    if (!source.IsWhole()) ++summary_.failed;
    if (host_.options.json) AsJson(path, source);
    Tell(path, source);
  }

  void Tell(const std::string& path, const SourceFile& source) {
    const std::string subject = SubjectOf(path);
    host_.messages.Detail(subject, DescribeEncoding(source, host_));
    for (const std::string& warning : source.warnings) host_.messages.Warn(subject, warning);
    if (source.IsWhole()) {
      host_.messages.Note(subject, Format("reads, %zu elements", source.listing.CountOnTop()));
    } else {
      host_.messages.Error(subject, source.failure);
    }
  }

  void AsJson(const std::string& path, const SourceFile& source) {
    JsonWriter json(host_.output);
    json.BeginObject()
        .Member("file", path)
        .Member("ok", source.IsWhole())
        .Member("bytes", source.bytes);
    if (!source.syntax.empty()) json.Member("transferSyntax", source.syntax);
    if (source.object) json.Member("elements", std::uint64_t{source.listing.CountOnTop()});
    if (!source.IsWhole()) {
      json.Member("error", source.failure);
      if (source.reading.end.why != READ_TO_THE_END) {
        json.Member("offset", source.reading.end.offset);
        json.Member("tag", JsonTag(source.reading.end.tag));
      }
    }
    if (!source.warnings.empty()) {
      json.Key("warnings").BeginArray();
      for (const std::string& warning : source.warnings) json.String(warning);
      json.EndArray();
    }
    json.EndObject().EndLine();
  }

  void Report() {
    const std::string seconds = SecondsText(summary_.seconds);
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject().Member("files", summary_.files).Member("failed", summary_.failed);
      json.Member("bytes", summary_.bytes).Key("seconds").Raw(seconds).EndObject().EndLine();
    } else if (!host_.options.loudness.quiet) {
      host_.output.Line(Format("%llu files, %llu bytes, %s seconds: %llu read, %llu failed",
                               static_cast<unsigned long long>(summary_.files),
                               static_cast<unsigned long long>(summary_.bytes), seconds.c_str(),
                               static_cast<unsigned long long>(summary_.files - summary_.failed),
                               static_cast<unsigned long long>(summary_.failed)));
    }
  }

  const CheckOptions& options_;
  Host& host_;
  Summary summary_;
};

}  // namespace

VerbSetUp SetUpCheck() {
  auto options = std::make_shared<CheckOptions>();
  return {
      .options =
          {
              FilesRow(options->paths),
              RecurseRow(options->recurse),
              StrictRow(options->strict),
          },
      .run = [options](Host& host) { return Check(*options, host).All(); },
  };
}

}  // namespace tessaret::tool
