// tessaret phantom: makes a series of test images.
#include <array>
#include <charconv>

#include "base/text.h"
#include "interrupt.h"
#include "json_writer.h"
#include "output_file.h"
#include "phantom_attributes.h"
#include "platform/file_calls.h"
#include "shared_options.h"
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
    throw UsageError("--spacing",
                     "three lengths above 0.000001 and below 1000 mm, as in 0.5,0.5,2");
  }
  constexpr std::uint64_t kLongestValue = 0xFFFFFFFE;
  if (PixelBytes(*FindPhantomKind(options.kind), options.shape) > kLongestValue) {
    throw UsageError("--size", "more pixels than one file can hold");
  }
}

}  // namespace

VerbSetUp SetUpPhantom() {
  auto options = std::make_shared<PhantomOptions>();
  return {
      .options =
          {
              {.positional = "DIR",
               .target = &options->directory,
               .description = "Where the files IM000001.dcm and so on go; made if need be",
               .required = true},
              {.names = {"--kind"},
               .target = &options->kind,
               .description = "What is made",
               .choices = KindNames(),
               .showsDefault = true},
              {.names = {"--size"},
               .value = "N",
               .target = &options->shape.size,
               .description = "Rows and columns of an image",
               .range = OptionRange{kSmallestSize, kLargestSize},
               .whyNot = &WhyNoPlainNumber,
               .showsDefault = true},
              {.names = {"--slices"},
               .value = "N",
               .target = &options->shape.slices,
               .description = "Images of the series, or frames of the one multiframe image",
               .range = OptionRange{1, kMostSlices},
               .whyNot = &WhyNoPlainNumber,
               .showsDefault = true},
              {.names = {"--spacing"},
               .value = "X,Y,Z",
               .target = &options->spacing,
               .description = "mm from column to column, from row to row, from slice to slice",
               .showsDefault = true},
              {.names = {"--uneven"},
               .target = &options->shape.uneven,
               .description = "Let the gaps between slices vary"},
              {.names = {"--oblique"},
               .target = &options->shape.oblique,
               .description = "Turn the series about all three axes of the patient"},
              ForceRow(options->force, "files that are there"),
          },
      .run = [options](Host& host) { return Series(*options, host).Make(); },
      .check = [options] { Validate(*options); },
  };
}

}  // namespace tessaret::tool
