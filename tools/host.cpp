#include "host.h"

#include <unistd.h>

#include "core/module_dictionaries.h"
#include "platform/module_path.h"
#include "standard_streams.h"
#include "vr_traits.h"

namespace tessaret::tool {
namespace {

/// What the library tells its host of a failed start, and the line or the system's words that it keeps beside that.
std::string WithReason(const std::string& words) {
  const std::string& reason = ModuleDictionary().LastErrorText();
  return reason.empty() ? words : words + ": " + reason;
}

/// The library's words always name the file of the data dictionary, but not that of the UID dictionary.
std::string WithFile(const std::string& words, const std::string& directory) {
  if (words.find('[' + directory) != std::string::npos) return words;
  return "Error reading [" + directory + kUidDictionaryFile + "]: " + words;
}

}  // namespace

void Host::LoadDictionaries() {
  if (dictionariesLoaded_) return;
  const std::string directory = ModuleDirectory();
  std::string why;
  const MessageSink keepWords = [&why](const std::string& text, const std::string&) { why = text; };
  if (!StartDictionaries(directory, keepWords))
    throw DictionaryError(WithFile(WithReason(why), directory));
  dictionariesLoaded_ = true;
}

const RTC& Host::Tags() {
  LoadDictionaries();
  return ModuleDictionary();
}

const UIDDictionary& Host::Uids() {
  LoadDictionaries();
  return ModuleUidDictionary();
}

IDcmDictionary& Host::Dictionary() {
  // First, for their words are better than those of a class that cannot be made.
  LoadDictionaries();
  if (!dictionary_ && Failed(Create("Tessaret.DcmDictionary", dictionary_)))
    throw DictionaryError(LastError().text);
  return *dictionary_;
}

Keywords& Host::ElementKeywords() {
  if (!keywords_) keywords_.emplace(Ref<IDcmDictionary>(&Dictionary()));
  return *keywords_;
}

VrCode Host::TypeOfElement(TagKey tag) {
  String letters;
  String name;
  VariantBool found;
  Dictionary().GetVRDescription(GroupOf(tag), ElementOf(tag), &letters, &name, &found);
  return found.IsTrue() ? TypeCodeOf(letters.Narrow()) : type_code::kNone;
}

std::string Host::NameOfUid(std::string_view uid) {
  const UIDEntry* entry = Uids().FindEntry(uid);
  return entry == nullptr ? std::string() : entry->Description;
}

bool Host::ColoursOutput() const {
  return !options.loudness.quiet && IsLivelyTerminal(STDOUT_FILENO);
}

}  // namespace tessaret::tool
