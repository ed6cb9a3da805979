// tessaret dictionary: tells what the dictionaries know, and compiles the data dictionary.
#include <optional>

#include "base/text.h"
#include "class_object.h"
#include "escape.h"
#include "json_writer.h"
#include "keywords.h"
#include "output_file.h"
#include "shared_options.h"
#include "tag_text.h"
#include "verbs.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

struct DictionaryOptions {
  std::string query;
  std::string compileTo;
  bool force = false;
};

bool IsUid(std::string_view text) {
  return text.find('.') != std::string_view::npos &&
         text.find_first_not_of("0123456789.") == std::string_view::npos;
}

char LowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsWordCharacter(char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); }

/// Letters and digits of `text` in lower case. Keywords of the standard are made from names in this way too, and without
/// the "'s" of "Patient's".
std::string Folded(std::string_view text, bool withoutPossessive) {
  std::string folded;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (withoutPossessive && text.substr(at).starts_with("'s")) {
      ++at;
      continue;
    }
    const char c = LowerCase(text[at]);
    if (IsWordCharacter(c)) folded += c;
  }
  return folded;
}

class Search {
 public:
  explicit Search(Host& host) : host_(host) {}

  /// True when something was found.
  [[nodiscard]] bool For(const std::string& query) {
    if (const auto tag = ParseTag(query)) {
      ForTag(*tag);
    } else if (IsUid(query)) {
      ForUid(query);
    } else {
      ForText(query);
    }
    if (found_ > 0) host_.messages.Note(query, Format("%zu found", found_));
    return found_ > 0;
  }

 private:
  struct Element {
    TagKey tag = 0;
    std::string letters;
    std::string name;
  };
  struct Uid {
    std::string uid;
    std::string type;
    std::string name;
    std::string modality;
    bool isImage = false;
  };

  void ForTag(TagKey tag) {
    String letters;
    String name;
    VariantBool found;
    Require(dictionary_->GetVRDescription(GroupOf(tag), ElementOf(tag), &letters, &name, &found));
    if (found.IsTrue()) Show(Element{tag, letters.Narrow(), name.Narrow()});
  }

  void ForUid(const std::string& uid) {
    if (const auto entry = Denoted(uid)) Show(*entry);
  }

  [[nodiscard]] std::optional<Uid> Denoted(const std::string& uid) const {
    String name;
    String type;
    String modality;
    VariantBool isImage;
    VariantBool found;
    Require(dictionary_->GetUIDDescription(uid, &name, &type, &modality, &isImage, &found));
    if (!found.IsTrue()) return std::nullopt;
    return Uid{uid, type.Narrow(), name.Narrow(), modality.Narrow(), isImage.IsTrue()};
  }

  void ForText(const std::string& query) {
    const std::string wanted = Folded(query, false);
    if (wanted.empty()) return;
    const auto matches = [&](std::string_view text) {
      return Folded(text, false).find(wanted) != std::string::npos ||
             (text.find("'s") != std::string_view::npos &&
              Folded(text, true).find(wanted) != std::string::npos);
    };
    for (std::int32_t at = 0; const auto element = ElementAt(at); ++at) {
      if (matches(element->name) || matches(KeywordOf(element->name))) Show(*element);
    }
    String uid;
    VariantBool found;
    for (std::int32_t at = 0;; ++at) {
      Require(file_->GetUIDAt(at, &uid, &found));
      if (!found.IsTrue()) return;
      if (const auto entry = Denoted(uid.Narrow()); entry && matches(entry->name)) Show(*entry);
    }
  }

  [[nodiscard]] std::optional<Element> ElementAt(std::int32_t index) const {
    std::int32_t group = 0;
    std::int32_t element = 0;
    String letters;
    String name;
    VariantBool found;
    Require(file_->GetElementAt(index, &group, &element, &letters, &name, &found));
    if (!found.IsTrue()) return std::nullopt;
    const TagKey tag =
        MakeTagKey(static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element));
    return Element{tag, letters.Narrow(), name.Narrow()};
  }

  void Show(const Element& entry) {
    ++found_;
    const std::uint16_t group = GroupOf(entry.tag);
    const std::uint16_t element = ElementOf(entry.tag);
    const std::string letters = TypeLetters(TypeCodeOf(entry.letters));
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject().Member("tag", Format("%04X%04X", group, element));
      json.Member("vr", letters).Member("name", entry.name).EndObject().EndLine();
      return;
    }
    host_.output.Line(TagText(group, element) + ' ' + Escaped(letters) + ' ' + Escaped(entry.name));
  }

  void Show(const Uid& entry) {
    ++found_;
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject()
          .Member("uid", entry.uid)
          .Member("type", entry.type)
          .Member("name", entry.name);
      json.Member("image", entry.isImage);
      if (!entry.modality.empty()) json.Member("modality", entry.modality);
      json.EndObject().EndLine();
      return;
    }
    std::string line = entry.uid + ' ' + entry.type + ' ' + entry.name;
    if (entry.isImage) line += ", image";
    if (!entry.modality.empty()) line += ", " + entry.modality;
    host_.output.Line(Escaped(line));
  }

  Host& host_;
  Ref<IDcmDictionary> dictionary_{&host_.Dictionary()};
  Ref<IDcmDictionaryFile> file_ = dictionary_.As<IDcmDictionaryFile>();
  std::size_t found_ = 0;
};

ExitCode Compile(const DictionaryOptions& options, Host& host) {
  const auto file = Ref<IDcmDictionary>(&host.Dictionary()).As<IDcmDictionaryFile>();
  std::string why = WhyNotToWrite(options.compileTo, options.force);
  if (why.empty() && Failed(file->SaveFile(options.compileTo, true, !options.force)))
    why = LastError().text;
  if (!why.empty()) {
    host.messages.Error(options.compileTo, why);
    return ExitCode::kOutputFailed;
  }
  std::int32_t entries = 0;
  Variant bytes;
  Require(file->get_ElementsCount(&entries));
  Require(file->GetBytes(true, &bytes));
  const std::size_t size = bytes.AsArray()->ByteCount();
  host.messages.Note(options.compileTo, Format("%d entries, %zu bytes", entries, size));
  if (host.options.json) {
    JsonWriter json(host.output);
    json.BeginObject()
        .Member("output", options.compileTo)
        .Member("entries", static_cast<std::uint64_t>(entries));
    json.Member("bytes", std::uint64_t{size}).EndObject().EndLine();
  }
  return ExitCode::kDone;
}

ExitCode Run(const DictionaryOptions& options, Host& host) {
  if (!options.compileTo.empty()) {
    if (const ExitCode code = Compile(options, host);
        code != ExitCode::kDone || options.query.empty())
      return code;
  }
  if (Search(host).For(options.query)) return ExitCode::kDone;
  host.messages.Error(options.query, "in no dictionary");
  return ExitCode::kInputFailed;
}

}  // namespace

VerbSetUp SetUpDictionary() {
  auto options = std::make_shared<DictionaryOptions>();
  return {
      .options =
          {
              {.positional = "QUERY",
               .value = "TAG|TEXT|UID",
               .target = &options->query,
               .description =
                   "A tag as gggg,eeee or ggggeeee, a UID, or part of a name or keyword in "
                   "either case"},
              {.names = {"--compile"},
               .value = "OUT",
               .target = &options->compileTo,
               .description = "Write the data dictionary in its binary form, which loads faster"},
              ForceRow(options->force),
          },
      .run = [options](Host& host) { return Run(*options, host); },
      .check =
          [options] {
            RefuseDash("--compile", options->compileTo);
            if (options->query.empty() && options->compileTo.empty())
              throw UsageError("TAG, TEXT, UID or --compile is required");
          },
  };
}

}  // namespace tessaret::tool
