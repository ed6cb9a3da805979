// tessaret phantom: makes a series of test images.
#include <array>
#include <charconv>

#include "base/text.h"
#include "interrupt.h"
#include "json_writer.h"
#include "output_file.h"
#include "phantom_attributes.h"
#include "platform/file_calls.h"
#include "verbs.h"

namespace tessaret::tool {
namespace {

constexpr int kSmallestSize = 8;
constexpr int kLargestSize = 16384;
constexpr int kMostSlices = 999999;  // what the file names have digits for

struct PhantomOptions {
  std::string directory;
  std::string kind = "ct";
  std::string spacing = "1,1,1";
  PhantomShape shape;
  bool force = false;
};

std::vector<std::string> KindNames() {
  std::vector<std::string> names;
  for (const PhantomKind& kind : PhantomKinds()) names.emplace_back(kind.name);
  return names;
}

/// The parser would read a number that begins with 0 as octal.
std::string WhyNoPlainNumber(const std::string& text) {
  const bool plain =
      !text.starts_with('0') && text.find_first_not_of("0123456789") == std::string::npos;
  return plain ? std::string() : text + " is no plain whole number";
}

/// Three lengths in mm, each above a nanometre and below a metre; false for any other text.
bool ParseSpacing(std::string_view text, Vector3& spacing) {
  const std::array<double*, 3> parts = {&spacing.x, &spacing.y, &spacing.z};
  const char* at = text.data();
  const char* const end = text.data() + text.size();
  for (double* part : parts) {
    if (part != parts.front() && (at == end || *at++ != ',')) return false;
    const auto [stop, error] = std::from_chars(at, end, *part);
    if (error != std::errc() || !(*part > 1e-6) || !(*part < 1000)) return false;
    at = stop;
  }
  return at == end;
}

std::string FileName(const std::string& directory, int index) {
  return directory + (directory.ends_with('/') ? "" : "/") + Format("IM%06d.dcm", index + 1);
}

class Series {
 public:
  Series(const PhantomOptions& options, Host& host)
      : options_(options),
        host_(host),
        kind_(*FindPhantomKind(options.kind)),
        geometry_(options.shape),
        count_(FileCount(kind_, options.shape)) {}

  ExitCode Make() {
    if (const int error = MakeDirectories(options_.directory); error != 0) {
      return Fail(options_.directory, SystemErrorText(error));
    }
    // All are looked at before the first is written: a series is not to be mixed with another.
    for (int index = 0; index < count_; ++index) {
      const std::string path = FileName(options_.directory, index);
      if (const std::string why = WhyNotToWrite(path, options_.force); !why.empty())
        return Fail(path, why);
    }
    for (int index = 0; index < count_; ++index) {
      StopIfInterrupted();
      host_.messages.ShowProgress(static_cast<std::uint64_t>(index),
                                  static_cast<std::uint64_t>(count_), "files");
      const std::string path = FileName(options_.directory, index);
      if (const std::string why = MakeFile(path, index); !why.empty()) return Fail(path, why);
    }
    host_.messages.HideProgress();
    host_.messages.Note(options_.directory, Format("%d files written", count_));
    return ExitCode::kDone;
  }

 private:
  /// Empty, or why not.
  std::string MakeFile(const std::string& path, int index) {
    const Ref<IDCMObject> object = MakePhantom(kind_, geometry_, index);
    std::string why = SaveObject(path, SAVE_COMPLETE, options_.force, *object);
    StopIfInterrupted();
    if (!why.empty()) return why;
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject().Member("file", path).Member("kind", kind_.name);
      json.Member("sopInstance", PhantomInstance(kind_, geometry_, index)).EndObject().EndLine();
    }
    return {};
  }

  ExitCode Fail(const std::string& path, const std::string& why) {
    host_.messages.Error(path, why);
    return ExitCode::kOutputFailed;
  }

  const PhantomOptions& options_;
  Host& host_;
  const PhantomKind& kind_;
  const PhantomGeometry geometry_;
  const int count_;
};

void Validate(PhantomOptions& options) {
  if (!ParseSpacing(options.spacing, options.shape.spacing)) {
    throw CLI::ValidationError("--spacing",
                               "three lengths above 0.000001 and below 1000 mm, as in 0.5,0.5,2");
  }
  constexpr std::uint64_t kLongestValue = 0xFFFFFFFE;
  if (PixelBytes(*FindPhantomKind(options.kind), options.shape) > kLongestValue) {
    throw CLI::ValidationError("--size", "more pixels than one file can hold");
  }
}

}  // namespace

RunVerb SetUpPhantom(CLI::App& app) {
  auto options = std::make_shared<PhantomOptions>();
  app.add_option("DIR", options->directory,
                 "Where the files IM000001.dcm and so on go; made if need be")
      ->required()
      ->option_text("DIR");
  app.add_option("--kind", options->kind, "What is made")
      ->check(CLI::IsMember(KindNames()))
      ->capture_default_str();
  app.add_option("--size", options->shape.size, "Rows and columns of an image")
      ->check(CLI::Range(kSmallestSize, kLargestSize))
      ->check(&WhyNoPlainNumber)
      ->option_text("N")
      ->capture_default_str();
  app.add_option("--slices", options->shape.slices,
                 "Images of the series, or frames of the one multiframe image")
      ->check(CLI::Range(1, kMostSlices))
      ->check(&WhyNoPlainNumber)
      ->option_text("N")
      ->capture_default_str();
  app.add_option("--spacing", options->spacing,
                 "mm from column to column, from row to row, from slice to slice")
      ->option_text("X,Y,Z")
      ->capture_default_str();
  app.add_flag("--uneven", options->shape.uneven, "Let the gaps between slices vary");
  app.add_flag("--oblique", options->shape.oblique,
               "Turn the series about all three axes of the patient");
  app.add_flag("--force", options->force, "Replace files that are there");
  app.callback([options] { Validate(*options); });
  return [options](Host& host) { return Series(*options, host).Make(); };
}

}  // namespace tessaret::tool
