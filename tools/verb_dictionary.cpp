// tessaret dictionary: tells what the dictionaries know, and compiles the data dictionary.
#include <algorithm>

#include "base/text.h"
#include "core/element_text.h"
#include "core/rtc_binary.h"
#include "escape.h"
#include "json_writer.h"
#include "output_file.h"
#include "platform/file_calls.h"
#include "platform/whole_file.h"
#include "tag_text.h"
#include "verbs.h"

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
      if (const _RTCElement* entry = host_.Tags().Find(*tag); entry != nullptr) Show(*entry);
    } else if (IsUid(query)) {
      if (const UIDEntry* entry = host_.Uids().FindEntry(query); entry != nullptr) Show(*entry);
    } else {
      ForText(query);
    }
    if (found_ > 0) host_.messages.Note(query, Format("%zu found", found_));
    return found_ > 0;
  }

 private:
  void ForText(const std::string& query) {
    const std::string wanted = Folded(query, false);
    if (wanted.empty()) return;
    const auto matches = [&](std::string_view text) {
      return Folded(text, false).find(wanted) != std::string::npos ||
             Folded(text, true).find(wanted) != std::string::npos;
    };
    if (const auto& table = host_.Tags().Table; table != nullptr) {
      for (std::uint32_t at = 0; at < table->Count; ++at) {
        const _RTCElement& entry = table->Elements[at];
        if (entry.Description != nullptr && matches(entry.Description)) Show(entry);
      }
    }
    for (const auto& [uid, entry] : host_.Uids().Entries) {
      if (matches(entry.Description)) Show(entry);
    }
  }

  void Show(const _RTCElement& entry) {
    ++found_;
    const char* name = entry.Description == nullptr ? "" : entry.Description;
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject().Member("tag", Format("%04X%04X", entry.Group, entry.Element));
      json.Member("vr", TypeLetters(entry.TypeCode)).Member("name", name).EndObject().EndLine();
      return;
    }
    host_.output.Line(TagText(entry.Group, entry.Element) + ' ' +
                      Escaped(TypeLetters(entry.TypeCode)) + ' ' + Escaped(name));
  }

  void Show(const UIDEntry& entry) {
    ++found_;
    if (host_.options.json) {
      JsonWriter json(host_.output);
      json.BeginObject()
          .Member("uid", entry.UID)
          .Member("type", entry.Type)
          .Member("name", entry.Description);
      json.Member("image", entry.IsImage);
      if (!entry.Modality.empty()) json.Member("modality", entry.Modality);
      json.EndObject().EndLine();
      return;
    }
    std::string line = entry.UID + ' ' + entry.Type + ' ' + entry.Description;
    if (entry.IsImage) line += ", image";
    if (!entry.Modality.empty()) line += ", " + entry.Modality;
    host_.output.Line(Escaped(line));
  }

  Host& host_;
  std::size_t found_ = 0;
};

ExitCode Compile(const DictionaryOptions& options, Host& host) {
  const RTC& tags = host.Tags();
  if (const std::string why = WhyNotToWrite(options.compileTo, options.force); !why.empty()) {
    host.messages.Error(options.compileTo, why);
    return ExitCode::kOutputFailed;
  }
  const auto bytes = WriteRtcBinary(*tags.Table, tags.KeepDescriptions != 0);
  // A larger one could not be loaded.
  const int error = bytes.size() > kLargestDictionaryFile
                        ? EFBIG
                        : WriteWholeFile(options.compileTo, bytes.data(), bytes.size(),
                                         ExistingFor(options.force));
  if (error != 0) {
    host.messages.Error(options.compileTo, SystemErrorText(error));
    return ExitCode::kOutputFailed;
  }
  host.messages.Note(options.compileTo,
                     Format("%u entries, %zu bytes", tags.Table->Count, bytes.size()));
  if (host.options.json) {
    JsonWriter json(host.output);
    json.BeginObject()
        .Member("output", options.compileTo)
        .Member("entries", std::uint64_t{tags.Table->Count});
    json.Member("bytes", std::uint64_t{bytes.size()}).EndObject().EndLine();
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

RunVerb SetUpDictionary(CLI::App& app) {
  auto options = std::make_shared<DictionaryOptions>();
  app.add_option(
         "QUERY", options->query,
         "A tag as gggg,eeee or ggggeeee, a UID, or part of a name or keyword in either case")
      ->option_text("TAG|TEXT|UID");
  app.add_option("--compile", options->compileTo,
                 "Write the data dictionary in its binary form, which loads faster")
      ->option_text("OUT");
  app.add_flag("--force", options->force, "Replace OUT if it is there");
  app.callback([options] {
    RefuseDash("--compile", options->compileTo);
    if (options->query.empty() && options->compileTo.empty())
      throw CLI::RequiredError("TAG, TEXT, UID or --compile");
  });
  return [options](Host& host) { return Run(*options, host); };
}

}  // namespace tessaret::tool
