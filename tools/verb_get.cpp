// tessaret get: prints values of a DICOM file, for scripts.
#include <algorithm>

#include "class_object.h"
#include "element_values.h"
#include "escape.h"
#include "interrupt.h"
#include "json_values.h"
#include "json_writer.h"
#include "meant_type.h"
#include "opened_object.h"
#include "shared_options.h"
#include "tag_text.h"
#include "value_text.h"
#include "verbs.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

struct GetOptions {
  std::string path;
  std::vector<std::string> tags;
  std::string type;
  std::optional<std::uint32_t> index;
};

class Getting {
 public:
  Getting(const GetOptions& options, Host& host) : options_(options), host_(host) {}

  ExitCode Run() {
    std::vector<TagPath> paths;
    for (const std::string& text : options_.tags) {
      paths.push_back(ParseTagPath(text, host_.ElementKeywords()));
      if (paths.back().failure.empty()) continue;
      host_.messages.Error("get", paths.back().failure);
      return ExitCode::kUsage;
    }
    const SourceFile source = Read(paths);
    TellOf(source, options_.path, host_);
    complete_ = source.IsWhole();
    if (!source.object) return ExitCode::kInputFailed;
    for (const TagPath& path : paths) One(source, path);
    return complete_ ? ExitCode::kDone : ExitCode::kInputFailed;
  }

 private:
  /// Reads up to the pixel data, and on where something may stand behind it.
  [[nodiscard]] SourceFile Read(const std::vector<TagPath>& paths) const {
    SourceOptions how;
    how.loadPixels = std::ranges::any_of(
        paths, [](const TagPath& path) { return path.steps.front().tag >= kPixelDataTag; });
    SourceFile source = LoadSource(options_.path, how, host_);
    const bool isWanting =
        source.object && EndsAtPixels(source) &&
        std::ranges::any_of(paths, [&](const TagPath& path) { return !IsThere(source, path); });
    if (!isWanting || !IsReadableAgain(options_.path)) return source;
    StopIfInterrupted();
    how.loadPixels = true;
    SourceFile whole = LoadSource(options_.path, how, host_);
    return whole.object ? std::move(whole) : std::move(source);
  }

  static bool EndsAtPixels(const SourceFile& source) {
    return source.reading.end.why == READ_TO_PIXELS;
  }

  static bool IsThere(const SourceFile& source, const TagPath& path) {
    const Place place = Find(source.object, path);
    return place.object && FactsOf(*place.object, path.Tag());
  }

  void One(const SourceFile& source, const TagPath& path) {
    const Place place = Find(source.object, path);
    const auto facts = place.object ? FactsOf(*place.object, path.Tag()) : std::nullopt;
    if (!facts) {
      Miss(path, EndsAtPixels(source) ? "is not there before the pixel data" : "is not there");
      return NoLine(path);
    }
    const VrCode type = options_.type.empty() ? MeantType(path.Tag(), facts->type,
                                                          source.IsImplicit(), place.signedPixels)
                                              : TypeCodeOf(options_.type);
    host_.options.json ? AsJson(place, path, type) : AsLine(place, path, type);
  }

  void Miss(const TagPath& path, const std::string& words) {
    host_.output.Flush();
    host_.messages.Error(SubjectOf(options_.path), TextOf(path) + ' ' + words);
    complete_ = false;
  }

  /// Each tag has its line, so that a script can count on their order.
  void NoLine(const TagPath& path) {
    if (!host_.options.json) return host_.output.Line("");
    JsonWriter json(host_.output);
    json.BeginObject().Member("tag", TextOf(path)).Member("found", false).EndObject().EndLine();
  }

  /// How many items a sequence has, or compressed pixel data fragments; 0 where there are none.
  static std::uint32_t ItemsOf(IDCMObject& object, TagKey tag) {
    std::uint32_t count = 0;
    while (HasItems(object, tag) && ItemOf(object, tag, count)) ++count;
    return count;
  }

  /// Tells it where `count` values do not have the wanted one.
  bool HasWanted(std::size_t count, const TagPath& path) {
    if (!options_.index || *options_.index < count) return true;
    Miss(path, "has no value of number " + std::to_string(*options_.index));
    NoLine(path);
    return false;
  }

  static bool IsText(VrCode type) {
    return KindOf(type) == ValueKind::kText || KindOf(type) == ValueKind::kUid;
  }

  /// How many values that are no text are there: what is no numbers is one.
  static std::size_t CountOf(VrCode type, const ValueBytes& bytes) {
    return bytes.Size() == 0 ? 0 : NumberCount(type, bytes.Size()).value_or(1);
  }
  static std::size_t CountOfTexts(VrCode type, ValueBytes& bytes, const CharacterSets& sets) {
    std::size_t count = 0;
    ForEachText(type, bytes.Text(), sets, [&](std::string_view) { ++count; });
    return count;
  }

  void AsLine(const Place& place, const TagPath& path, VrCode type) {
    if (HasItems(*place.object, path.Tag()) || type == type_code::SQ) {
      if (!HasWanted(0, path)) return;
      return host_.output.Line(std::to_string(ItemsOf(*place.object, path.Tag())));
    }
    const Ref<IDcmFile> file = FileOf(*place.object);
    ValueBytes bytes(*file, path.Tag(), StoredSize(*file, path.Tag()));
    if (IsText(type)) return TextsAsLine(type, bytes, place.sets, path);
    if (!HasWanted(CountOf(type, bytes), path)) return;
    NumberCount(type, bytes.Size()) ? WriteNumbers(type, bytes) : WriteBytes(bytes);
    host_.output.Line("");
  }

  void TextsAsLine(VrCode type, ValueBytes& bytes, const CharacterSets& sets, const TagPath& path) {
    if (options_.index && !HasWanted(CountOfTexts(type, bytes, sets), path)) return;
    std::size_t index = 0;
    ForEachText(type, bytes.Text(), sets, [&](std::string_view text) {
      const bool isFirst = index == 0;
      if (options_.index.value_or(index) != index++) return;
      if (!isFirst && !options_.index) host_.output.Write("\\");
      host_.output.Write(Escaped(text));
    });
    host_.output.Line("");
  }

  // One by one and part by part: as text, pixel data would take many times its memory.

  void WriteNumbers(VrCode type, ValueBytes& bytes) {
    const std::size_t begin = options_.index.value_or(0);
    const std::size_t end = options_.index ? begin + 1 : CountOf(type, bytes);
    for (std::size_t index = begin; index < end; ++index) {
      if (index > begin) host_.output.Write("\\");
      host_.output.Write(NumberText(type, bytes, index));
    }
  }

  void WriteBytes(ValueBytes& bytes) {
    for (std::uint32_t at = 0; at < bytes.Size();) {
      const std::uint32_t count = std::min(ValueBytes::kPortion, bytes.Size() - at);
      if (at > 0) host_.output.Write("\\");
      host_.output.Write(Hexadecimal({bytes.At(at, count), count}));
      at += count;
    }
  }

  void AsJson(const Place& place, const TagPath& path, VrCode type) {
    const bool isSequence = HasItems(*place.object, path.Tag()) || type == type_code::SQ;
    const Ref<IDcmFile> file = FileOf(*place.object);
    ValueBytes bytes(*file, path.Tag(), isSequence ? 0 : StoredSize(*file, path.Tag()));
    if (options_.index) {
      // Items are no values.
      const std::size_t count = isSequence     ? 0
                                : IsText(type) ? CountOfTexts(type, bytes, place.sets)
                                               : CountOf(type, bytes);
      if (!HasWanted(count, path)) return;
    }
    JsonWriter json(host_.output);
    json.BeginObject().Member("tag", TextOf(path));
    if (const std::string name = host_.ElementKeywords().Of(path.Tag()); !name.empty())
      json.Member("keyword", name);
    // Fragments of pixel data have its type.
    json.Member("vr", isSequence && path.Tag() != kPixelDataTag ? "SQ" : LettersOf(type));
    if (isSequence) {
      json.Member("items", std::uint64_t{ItemsOf(*place.object, path.Tag())});
    } else if (bytes.Size() != 0 &&
               !WriteValues(json, type, bytes, place.sets, DecimalText::kByValue, options_.index)) {
      WriteInlineBinary(json, bytes);
    }
    json.EndObject().EndLine();
  }

  const GetOptions& options_;
  Host& host_;
  bool complete_ = true;
};

std::string WhyNoType(const std::string& letters) {
  return FindTraits(TypeCodeOf(letters)) != nullptr ? "" : "no such type: " + letters;
}

/// The parser would read a number that begins with 0 as octal.
std::string WhyNoIndex(const std::string& text) {
  const bool isPlain = text.find_first_not_of("0123456789") == std::string::npos &&
                       (text == "0" || !text.starts_with('0'));
  return isPlain ? std::string() : text + " is no plain whole number";
}

}  // namespace

VerbSetUp SetUpGet() {
  auto options = std::make_shared<GetOptions>();
  return {
      .options =
          {
              InputRow("FILE", options->path),
              {.positional = "TAG",
               .value = "TAG...",
               .target = &options->tags,
               .description = "What to print, a line each: gggg,eeee or a keyword as PatientName; "
                              "TAG[0].TAG for an element of the first item of a sequence",
               .required = true},
              {.names = {"--type"},
               .value = "VR",
               .target = &options->type,
               .description =
                   "Take the values for those of this type, as US, whatever the file says",
               .whyNot = &WhyNoType},
              {.names = {"--index"},
               .value = "N",
               .target = &options->index,
               .description = "Print only value number N, counted from 0",
               .whyNot = &WhyNoIndex},
          },
      .run = [options](Host& host) { return Getting(*options, host).Run(); },
  };
}

}  // namespace tessaret::tool
