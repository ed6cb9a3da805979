// tessaret convert: writes a DICOM file anew, in the same or another encoding.
#include "base/text.h"
#include "consistency.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_writer.h"
#include "opened_object.h"
#include "output_file.h"
#include "platform/file_calls.h"
#include "reencode.h"
#include "shared_options.h"
#include "source_file.h"
#include "unmade_file.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct ConvertOptions {
  std::string input;
  std::string output;
  std::string syntax;
  bool noPreamble = false;
  bool force = false;

  [[nodiscard]] Target WantedTarget() const {
    if (noPreamble) return Target::kBare;
    if (syntax == "implicit") return Target::kImplicit;
    return syntax == "explicit" ? Target::kExplicit : Target::kKeep;
  }
};

class Conversion {
 public:
  Conversion(const ConvertOptions& options, Host& host)
      : options_(options), host_(host), unmade_(host, options.input, options.output) {}

  ExitCode Run() {
    // What cannot be written need not be read.
    if (const std::string why = WhyNotToWrite(options_.output, options_.force); !why.empty())
      return unmade_.ByOutput(why);
    SourceFile source = LoadSource(options_.input, SourceOptions(), host_);
    StopIfInterrupted();
    const std::string subject = SubjectOf(options_.input);
    host_.messages.Detail(subject, DescribeEncoding(source, host_));
    for (const std::string& warning : source.warnings) host_.messages.Warn(subject, warning);
    std::string why = source.failure;
    if (why.empty()) {
      for (const std::string& oddity : FindOddElements(source))
        host_.messages.Warn(subject, oddity);
      why = WhyNotToEncode(source, options_.WantedTarget(), host_);
    }
    if (!why.empty()) return unmade_.ByInput(why);
    return Write(source);
  }

 private:
  ExitCode Write(SourceFile& source) {
    const std::string from = source.syntax;
    const std::string to = TargetSyntax(source, options_.WantedTarget());
    PrepareToEncode(source, options_.WantedTarget());
    const _EnumSaveForm form = options_.noPreamble ? SAVE_BARE : SAVE_COMPLETE;
    const std::string why = SaveObject(options_.output, form, options_.force, *source.object);
    StopIfInterrupted();
    if (!why.empty()) return unmade_.ByOutput(why);
    host_.messages.Note(options_.output, "written in " + NameOf(to));
    if (host_.options.json) Report(from, to);
    return ExitCode::kDone;
  }

  std::string NameOf(const std::string& uid) {
    const std::string name = host_.NameOfUid(uid);
    return name.empty() ? uid : name;
  }

  void Report(const std::string& from, const std::string& to) {
    struct stat status {};
    JsonWriter json(host_.output);
    json.BeginObject().Member("input", options_.input).Member("output", options_.output);
    if (!from.empty()) json.Member("from", from);
    json.Member("to", to);
    if (StatPath(options_.output.c_str(), status).Ok() && S_ISREG(status.st_mode)) {
      json.Member("bytes", static_cast<std::uint64_t>(status.st_size));
    }
    json.EndObject().EndLine();
  }

  const ConvertOptions& options_;
  Host& host_;
  const UnmadeFile unmade_;
};

}  // namespace

VerbSetUp SetUpConvert() {
  auto options = std::make_shared<ConvertOptions>();
  return {
      .options =
          {
              InputRow("IN", options->input),
              OutputRow(options->output),
              {.names = {"--syntax"},
               .target = &options->syntax,
               .description =
                   "implicit or explicit little endian; otherwise the encoding of IN is kept",
               .choices = {"implicit", "explicit"}},
              {.names = {"--no-preamble"},
               .target = &options->noPreamble,
               .description =
                   "Write the bare data set in implicit little endian, without preamble and "
                   "meta header"},
              ForceRow(options->force),
          },
      .run = [options](Host& host) { return Conversion(*options, host).Run(); },
      .check =
          [options] {
            RefuseDash("OUT", options->output);
            if (options->noPreamble && options->syntax == "explicit")
              throw UsageError("--no-preamble", "a bare data set is implicit little endian");
          },
  };
}

}  // namespace tessaret::tool
