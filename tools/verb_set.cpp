// tessaret set: changes elements of a DICOM file.
#include <algorithm>
#include <span>

#include "character_set_change.h"
#include "class_object.h"
#include "element_values.h"
#include "file_walk.h"
#include "interrupt.h"
#include "json_writer.h"
#include "meant_type.h"
#include "opened_object.h"
#include "output_file.h"
#include "reencode.h"
#include "shared_options.h"
#include "tag_text.h"
#include "transfer_syntaxes.h"
#include "unmade_file.h"
#include "verbs.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

struct SetOptions {
  std::string input;
  std::string output;
  std::vector<std::string> assignments;
  std::vector<std::string> removals;
  bool force = false;
};

/// "TAG:VR=VALUE" taken apart.
struct Assignment {
  TagPath path;
  VrCode type = type_code::kNone;  // none where no type is given
  std::string value;
  std::string failure;  // why it cannot be understood
};

/// Whether `path` leads into the data set that `other` is an element of, or deeper.
bool IsBeside(const TagPath& path, const TagPath& other) {
  return path.steps.size() >= other.steps.size() &&
         std::equal(other.steps.begin(), other.steps.end() - 1, path.steps.begin());
}

/// Why an element is not for people to set or to remove, or empty.
std::string WhyNotToChange(const TagPath& path) {
  const TagKey tag = path.Tag();
  for (const TagStep& step : std::span(path.steps).first(path.steps.size() - 1)) {
    if (step.tag == kPixelDataTag)
      return TagText(step.tag) + " has fragments at most, which hold no elements";
  }
  const std::string text = TagText(tag);
  if (GroupOf(tag) == kMetaGroup)
    return text + " is of the meta header, which is made when the file is written";
  if (GroupOf(tag) < kMetaGroup && path.steps.size() == 1)
    return text + " would come before the meta header, where no file can hold it";
  if (GroupOf(tag) == kStructuralGroup) return text + " is no element of a data set";
  if (ElementOf(tag) == 0) return text + " is a length, which follows from the rest";
  return {};
}

Assignment ParseAssignment(const std::string& text, Keywords& keywords) {
  Assignment parsed;
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) {
    parsed.failure = '"' + text + "\" has no value: TAG=VALUE is wanted";
    return parsed;
  }
  std::string name = text.substr(0, equals);
  parsed.value = text.substr(equals + 1);
  if (const std::size_t colon = name.rfind(':'); colon != std::string::npos) {
    const std::string letters = name.substr(colon + 1);
    parsed.type = TypeCodeOf(letters);
    if (FindTraits(parsed.type) == nullptr) parsed.failure = "no such type: " + letters;
    name.resize(colon);
  }
  parsed.path = ParseTagPath(name, keywords);
  if (parsed.failure.empty()) parsed.failure = parsed.path.failure;
  if (parsed.failure.empty()) parsed.failure = WhyNotToChange(parsed.path);
  return parsed;
}

class Setting {
 public:
  Setting(const SetOptions& options, Host& host)
      : options_(options),
        host_(host),
        unmade_(host, options.input, options.output),
        mayReplace_(options.force || (options.input != kStandardInput &&
                                      IsSameFile(options.input, options.output))) {}

  ExitCode Run() {
    if (!Understand()) return ExitCode::kUsage;
    if (const std::string why = WhyNotToWrite(options_.output, mayReplace_); !why.empty())
      return unmade_.ByOutput(why);
    SourceFile source = ReadSource(options_.input, SourceOptions(), host_);
    if (!source.IsWhole()) return unmade_.NotWritten();
    const std::string syntax = TargetSyntax(source, Target::kKeep);
    writesTypes_ = syntax != kImplicitLittle;
    hasNativePixels_ = IsNativeSyntax(syntax);
    std::string why = WhyNotToEncode(source, Target::kKeep, host_);
    if (!why.empty()) return unmade_.ByInput(why);
    PrepareElements(source, syntax);
    const Ref<IDCMObject>& object = source.object;
    why = Change(object, syntax);
    if (!why.empty()) return unmade_.ByInput(why);
    why = SaveObject(options_.output, SAVE_COMPLETE, mayReplace_, *object);
    StopIfInterrupted();
    if (!why.empty()) return unmade_.ByOutput(why);
    host_.messages.Note(options_.output, "written");
    if (host_.options.json) Report();
    return ExitCode::kDone;
  }

 private:
  bool Understand() {
    std::string why;
    for (const std::string& text : options_.removals) {
      removals_.push_back(ParseTagPath(text, host_.ElementKeywords()));
      why = removals_.back().failure;
      if (why.empty()) why = WhyNotToChange(removals_.back());
      if (!why.empty()) break;
    }
    for (const std::string& text : options_.assignments) {
      if (!why.empty()) break;
      assignments_.push_back(ParseAssignment(text, host_.ElementKeywords()));
      why = assignments_.back().failure;
    }
    if (!why.empty()) host_.messages.Error("set", why);
    return why.empty();
  }

  /// Empty, or why a change cannot be made.
  std::string Change(const Ref<IDCMObject>& object, const std::string& syntax) {
    // A file without a meta header keeps its encoding too.
    SetSyntax(*object, syntax);
    CharacterSetChange sets;
    for (const TagPath& path : removals_) sets.Keep(object, path);
    for (const Assignment& each : assignments_) sets.Keep(object, each.path);
    for (const TagPath& path : removals_) {
      if (const Place place = Find(object, path); place.object) Remove(*place.object, path.Tag());
    }
    for (const Assignment& each : assignments_) {
      const std::string why = Assign(object, each);
      if (!why.empty()) return TextOf(each.path) + ": " + why;
    }
    WarnOfOtherText(object, sets);
    return {};
  }

  /// Text that is there is not written anew for another character set.
  void WarnOfOtherText(const Ref<IDCMObject>& object, const CharacterSetChange& sets) {
    std::vector<TagPath> written;  // in what the file names at the end
    for (const Assignment& each : assignments_) {
      if (each.path.Tag() == kCharacterSetTag)
        std::erase_if(written, [&](const TagPath& path) { return IsBeside(path, each.path); });
      written.push_back(each.path);
    }
    const std::string text = sets.FirstOtherText(object, written);
    if (text.empty()) return;
    host_.messages.Warn(options_.output,
                        "text keeps its bytes, which the new (0008,0005) makes other "
                        "characters of, first in " +
                            text);
  }

  std::string Assign(const Ref<IDCMObject>& object, const Assignment& given) {
    const Place place = Find(object, given.path);
    if (!place.object) return "there is no such item, and none is made";
    const TagKey tag = given.path.Tag();
    const VrCode type = given.type != type_code::kNone ? given.type : TypeFor(place, tag);
    if (type == type_code::kNone) return "its type is not known: give one, as in TAG:LO=VALUE";
    if (std::string why = WhyNotOfType(given, type); !why.empty()) return why;
    if (type == type_code::SQ && given.value.empty()) return MakeSequence(*place.object, tag);
    const GivenValue value = ValueFrom(type, given.value, place.sets, host_.ElementKeywords());
    if (!value.failure.empty()) return value.failure;
    if (HasItems(*place.object, tag))
      return "holds items, which a value cannot replace: use --remove";
    WarnOfLostType(place, given);
    if (!writesTypes_ || FitsExplicitForm(type, value.bytes.size())) {
      PutBytes(*place.object, tag, type, value.bytes);
    } else {
      host_.messages.Warn(options_.output,
                          TextOf(given.path) + " is written as UN, which has room for its length");
      PutBytes(*place.object, tag, type_code::UN, value.bytes);
    }
    return {};
  }

  /// Why the file could not be read any more with such an element in it, or empty.
  std::string WhyNotOfType(const Assignment& given, VrCode type) {
    const TagKey tag = given.path.Tag();
    if (tag == kPixelDataTag && given.path.steps.size() == 1 && !hasNativePixels_)
      return "is compressed in this transfer syntax: a value cannot take its place";
    if (tag == kPixelDataTag && type == type_code::SQ) return "is pixel data and no sequence";
    const bool isReadAsSequence =
        !writesTypes_ && !given.value.empty() && host_.TypeOfElement(tag) == type_code::SQ;
    if (isReadAsSequence && type != type_code::SQ)
      return "is a sequence by the dictionary, which the implicit form is read by";
    return {};
  }

  /// Readers of the implicit form go by the dictionary, whatever type was given.
  void WarnOfLostType(const Place& place, const Assignment& given) {
    if (writesTypes_ || given.type == type_code::kNone || given.value.empty()) return;
    const VrCode known = host_.TypeOfElement(given.path.Tag());
    const VrCode read = MeantType(given.path.Tag(), known, true, place.signedPixels);
    const bool isAlike = KindOf(read) == ValueKind::kBytes && KindOf(given.type) == KindOf(read);
    if (read == type_code::kNone || read == given.type || isAlike) return;
    host_.messages.Warn(options_.output, TextOf(given.path) + " will be read as " +
                                             LettersOf(read) +
                                             ", for the implicit form does not keep its type");
  }

  VrCode TypeFor(const Place& place, TagKey tag) {
    const auto facts = FactsOf(*place.object, tag);
    const bool isOpen = !facts || facts->type == type_code::UN;
    const VrCode known =
        isOpen && !IsPrivateCreator(tag) ? host_.TypeOfElement(tag) : type_code::kNone;
    const VrCode type = known == type_code::kNone && facts ? facts->type : known;
    // Types that the file does not state are those of the dictionary.
    return MeantType(tag, type, isOpen || !writesTypes_, place.signedPixels);
  }

  static std::string MakeSequence(IDCMObject& object, TagKey tag) {
    Remove(object, tag);
    Require(object.putref_Sequence(GroupOf(tag), ElementOf(tag), 0, nullptr));
    return {};
  }

  void Report() {
    JsonWriter json(host_.output);
    json.BeginObject().Member("input", options_.input).Member("output", options_.output);
    json.Member("set", std::uint64_t{assignments_.size()});
    json.EndObject().EndLine();
  }

  const SetOptions& options_;
  Host& host_;
  const UnmadeFile unmade_;
  const bool mayReplace_;
  bool writesTypes_ = false;  // the file has the explicit form
  bool hasNativePixels_ = false;
  std::vector<TagPath> removals_;
  std::vector<Assignment> assignments_;
};

}  // namespace

VerbSetUp SetUpSet() {
  auto options = std::make_shared<SetOptions>();
  return {
      .options =
          {
              InputRow("IN", options->input),
              OutputRow(options->output, "; it may be IN"),
              {.positional = "TAG=VALUE",
               .value = "TAG[:VR]=VALUE...",
               .target = &options->assignments,
               .description = "TAG=VALUE or TAG:VR=VALUE, in this order: gggg,eeee or a keyword as "
                              "PatientName; TAG[0].TAG for an element of an item that is there; "
                              "backslashes between values; no VALUE leaves the element empty"},
              {.names = {"--remove"},
               .value = "TAG",
               .target = &options->removals,
               .description = "Remove an element, if it is there, before others are set"},
              ForceRow(options->force, "OUT if it is there and is not IN"),
          },
      .run = [options](Host& host) { return Setting(*options, host).Run(); },
      .check =
          [options] {
            RefuseDash("OUT", options->output);
            if (options->assignments.empty() && options->removals.empty())
              throw UsageError("set", "nothing to do: TAG=VALUE or --remove TAG is needed");
          },
  };
}

}  // namespace tessaret::tool
