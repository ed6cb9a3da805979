// tessaret transcode: writes a DICOM file with its pixel data in another transfer syntax.
#include <cstdlib>
#include <optional>
#include <string>

#include "class_object.h"
#include "interrupt.h"
#include "json_writer.h"
#include "opened_object.h"
#include "output_file.h"
#include "reencode.h"
#include "shared_options.h"
#include "tag.h"
#include "transfer_syntaxes.h"
#include "unmade_file.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

struct TranscodeOptions {
  std::string input;
  std::string output;
  std::string to;
  bool force = false;
  std::optional<std::uint32_t> quality;
  std::optional<std::uint32_t> near;
  std::optional<std::uint32_t> ratio;
};

/// The codec library goes by these variables when its first codec is asked for.
void PassToCodecs(const char* variable, const std::optional<std::uint32_t>& value) {
  if (value) ::setenv(variable, std::to_string(*value).c_str(), 1);
}

class Transcoding {
 public:
  Transcoding(const TranscodeOptions& options, Host& host)
      : options_(options),
        host_(host),
        unmade_(host, options.input, options.output),
        to_(UidOf(options.to, host)) {}

  ExitCode Run() {
    if (to_.empty()) return WrongUsage();
    PassToCodecs("TESSARET_JPEG_QUALITY", options_.quality);
    PassToCodecs("TESSARET_JPEGLS_NEAR", options_.near);
    PassToCodecs("TESSARET_JPEG2000_RATIO", options_.ratio);
    if (const std::string why = WhyNotToWrite(options_.output, options_.force); !why.empty())
      return unmade_.ByOutput(why);
    SourceFile source = ReadSource(options_.input, SourceOptions(), host_);
    if (!source.IsWhole()) return unmade_.NotWritten();
    if (const std::string why = WhyNot(source); !why.empty()) return unmade_.ByInput(why);
    const std::string from = source.syntax;
    // What the elements were read with tells how they are now; what they become follows from the name of the syntax.
    PrepareElements(source, to_);
    const Ref<IDCMObject>& object = source.object;
    VariantBool done;
    if (Failed(object->Translate(to_, &done))) return unmade_.ByInput(LastError().text);
    if (!done.IsTrue()) return unmade_.ByInput(WhyNotMade(object));
    const std::string why = SaveObject(options_.output, SAVE_COMPLETE, options_.force, *object);
    StopIfInterrupted();
    if (!why.empty()) return unmade_.ByOutput(why);
    host_.messages.Note(options_.output, "written in " + NameOf(to_));
    if (host_.options.json) Report(from);
    return ExitCode::kDone;
  }

 private:
  static std::string UidOf(const std::string& word, Host& host) {
    std::string uid = SyntaxUid(word);
    return uid.empty() ? host.SyntaxOfName(word) : uid;
  }

  ExitCode WrongUsage() {
    host_.messages.Error("transcode", "--to: " + options_.to + " is no transfer syntax: one of " +
                                          SyntaxWords() + ", a name in the dictionary, or a UID");
    host_.messages.Error("usage", "see tessaret transcode --help");
    return ExitCode::kUsage;
  }

  std::string WhyNot(const SourceFile& source) {
    const Target target = to_ == kImplicitLittle ? Target::kImplicit : Target::kExplicit;
    std::string why = WhyNotToHold(source, target, host_);
    if (why.empty()) why = WhyNotToKeepFragments(source, to_);
    if (!why.empty()) return why;
    if (source.IsBigEndian() && to_ != kExplicitBig && HasPixelsOfDoubtfulOrder(source))
      return "the order of the bytes in its pixel data is not certain, since programs write big "
             "endian pixels of this size in two ways";
    const bool hasPixels = source.listing.FindOnTop(kPixelDataTag).has_value();
    if (!hasPixels && !IsNativeSyntax(to_)) return "there is no pixel data";
    return {};
  }

  std::string WhyNotMade(const Ref<IDCMObject>& object) {
    const std::string why = AnswerOf(*object.As<IDcmFile>(), &IDcmFile::get_Refusal).Utf8();
    return "not to be had in " + NameOf(to_) + ": " + why;
  }

  std::string NameOf(const std::string& uid) {
    const std::string name = host_.NameOfUid(uid);
    return name.empty() ? uid : name;
  }

  void Report(const std::string& from) {
    JsonWriter json(host_.output);
    json.BeginObject().Member("input", options_.input).Member("output", options_.output);
    if (!from.empty()) json.Member("from", from);
    json.Member("to", to_).EndObject().EndLine();
  }

  const TranscodeOptions& options_;
  Host& host_;
  const UnmadeFile unmade_;
  const std::string to_;
};

}  // namespace

VerbSetUp SetUpTranscode() {
  auto options = std::make_shared<TranscodeOptions>();
  return {
      .options =
          {
              InputRow("IN", options->input),
              OutputRow(options->output),
              {.names = {"--to"},
               .value = "UID|NAME",
               .target = &options->to,
               .description =
                   "The transfer syntax to write: a UID, its name in the dictionary, or one of " +
                   SyntaxWords(),
               .required = true},
              {.names = {"--quality"},
               .value = "N",
               .target = &options->quality,
               .description = "How well lossy JPEG keeps the image, 1 to 100 (90)",
               .range = OptionRange{1, 100}},
              {.names = {"--near"},
               .value = "N",
               .target = &options->near,
               .description = "By how much near-lossless JPEG-LS may change a sample, 0 to 255 (2)",
               .range = OptionRange{0, 255}},
              {.names = {"--ratio"},
               .value = "N",
               .target = &options->ratio,
               .description =
                   "How much smaller lossy JPEG 2000 makes the pixels, 1 to 1000 times (10)",
               .range = OptionRange{1, 1000}},
              ForceRow(options->force),
          },
      .run = [options](Host& host) { return Transcoding(*options, host).Run(); },
      .check = [options] { RefuseDash("OUT", options->output); },
  };
}

}  // namespace tessaret::tool
