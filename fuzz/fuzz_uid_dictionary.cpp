// The UID dictionary. What is read can be written and reads back equal; what is refused changes nothing.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/text.h"
#include "core/uid_dictionary.h"

namespace {

using tessaret::UIDDictionary;
using tessaret::UIDEntry;

void Require(bool holds) {
  if (!holds) std::abort();
}

bool IsToken(std::string_view text) {
  return text.size() <= 512 &&
         text.find_first_of(std::string_view(" \t\n#\0", 5)) == std::string_view::npos;
}

std::string LineOf(const UIDEntry& entry) {
  // White space that is no separator may end a token, but not a line.
  const bool needsMore = !entry.Modality.empty() && tessaret::IsSpace(entry.Modality.back());
  return entry.Type + "\t" + entry.UID + "\t" + (entry.IsImage ? "1" : "0") + "\t" +
         entry.Description + "\t" + entry.Modality + (needsMore ? "\t.\n" : "\n");
}

void RequireSound(const UIDDictionary& uids) {
  for (const auto& [uid, entry] : uids.Entries) {
    Require(uid == entry.UID && !entry.Type.empty() && !uid.empty() && !entry.Description.empty());
    Require(IsToken(entry.Type) && IsToken(uid) && IsToken(entry.Description) &&
            IsToken(entry.Modality));
    std::string type;
    Require(uids.Find(uid, nullptr, &type, nullptr, nullptr) && type == entry.Type);
  }
}

std::string Written(const UIDDictionary& uids) {
  std::string text;
  for (const auto& [uid, entry] : uids.Entries) text += LineOf(entry);
  return text;
}

/// The refusal names one of the lines of the text.
void RequireLineNumber(const std::string& words, std::string_view text) {
  constexpr std::string_view kWords = "Error reading UID file at line ";
  Require(words.starts_with(kWords));
  const long line = std::strtol(words.c_str() + kWords.size(), nullptr, 10);
  Require(line >= 1 && line <= std::count(text.begin(), text.end(), '\n') + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  UIDDictionary uids;
  uids.ReadText("Before 1.2.3 1 Here\n");
  try {
    uids.ReadText(text);
  } catch (const tessaret::UidDictionaryError& error) {
    RequireLineNumber(error.what(), text);
    Require(uids.Entries.size() == 1);
  }
  Require(uids.FindEntry("1.2.3")->Type == "Before");
  RequireSound(uids);
  const std::string written = Written(uids);
  UIDDictionary again;
  again.ReadText(written);
  Require(Written(again) == written);
  return 0;
}
