#include "core/uid_dictionary.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "base/text.h"
#include "core/rtc_draft.h"
#include "core/rtc_text.h"
#include "platform/file_calls.h"
#include "platform/whole_file.h"

namespace tessaret {
namespace {

constexpr std::size_t kMostCharacters = 512;

std::string UnknownError(const std::string& path) {
  return "DcmUIDIDictionary: Unknown error reading [" + path + "]";
}

std::string_view WithoutSpace(std::string_view text) {
  while (!text.empty() && IsSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsSpace(text.back())) text.remove_suffix(1);
  return text;
}

/// Steps over the next token of `line` and returns it; empty when there is none.
std::string_view TakeToken(std::string_view& line) {
  constexpr std::string_view kSeparators = " \t";
  line.remove_prefix(std::min(line.find_first_not_of(kSeparators), line.size()));
  const std::string_view token = line.substr(0, line.find_first_of(kSeparators));
  line.remove_prefix(token.size());
  return token;
}

/// Whether a decimal number is another one than 0; nothing for what is no number.
std::optional<bool> ReadFlag(std::string_view token) {
  if (token.starts_with('-') || token.starts_with('+')) token.remove_prefix(1);
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (token.empty() || !std::all_of(token.begin(), token.end(), isDigit)) return std::nullopt;
  return token.find_first_not_of('0') != std::string_view::npos;
}

/// The entry of a line that has been cut to what counts; nothing when a field is missing.
std::optional<UIDEntry> ReadEntry(std::string_view line) {
  UIDEntry entry;
  entry.Type = TakeToken(line);
  entry.UID = TakeToken(line);
  const std::optional<bool> isImage = ReadFlag(TakeToken(line));
  entry.Description = TakeToken(line);
  entry.Modality = TakeToken(line);
  if (!isImage || entry.Description.empty()) return std::nullopt;
  entry.IsImage = *isImage;
  return entry;
}

[[noreturn]] void RefuseLine(int number) {
  throw UidDictionaryError(Format("Error reading UID file at line %d", number));
}

/// Steps over the next line of `text` and returns it without its line feed.
std::string_view TakeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, text.find('\n'));
  text.remove_prefix(std::min(line.size() + 1, text.size()));
  return line;
}

}  // namespace

void UIDDictionary::ReadText(std::string_view text) {
  // Entries are put aside first, so that a line that is refused leaves the dictionary as it was.
  decltype(Entries) added;
  for (int number = 1; !text.empty(); ++number) {
    const std::string_view line = TakeLine(text);
    const std::string_view content = WithoutSpace(line.substr(0, line.find('#')));
    // Only so many characters of a line are looked at. What lies behind them must not get lost in silence.
    const bool inReach =
        content.empty() || content.data() + content.size() <= line.data() + kMostCharacters;
    const bool hasNul = line.find('\0') != std::string_view::npos;
    if (!inReach || hasNul || line.size() > kLongestDictionaryLine) RefuseLine(number);
    if (content.empty()) continue;
    std::optional<UIDEntry> entry = ReadEntry(content);
    if (!entry) RefuseLine(number);
    std::string uid = entry->UID;
    added.try_emplace(std::move(uid), std::move(*entry));
  }
  Entries.merge(added);
}

void UIDDictionary::Read(const char* path) {
  const std::string name = path == nullptr ? "" : path;
  try {
    std::vector<std::uint8_t> bytes;
    if (path == nullptr) throw std::invalid_argument("there is no path");
    const int error = ReadWholeFile(name, kLargestDictionaryFile, bytes);
    if (error != 0) throw UidDictionaryError(SystemErrorText(error), error == ENOMEM);
    ReadText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  } catch (const UidDictionaryError&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw UidDictionaryError(UnknownError(name), true);
  } catch (...) {
    throw UidDictionaryError(UnknownError(name));
  }
}

const UIDEntry* UIDDictionary::FindEntry(std::string_view uid) const {
  const auto found = Entries.find(uid);
  return found == Entries.end() ? nullptr : &found->second;
}

bool UIDDictionary::Find(std::string_view uid, std::string* description, std::string* type,
                         std::string* modality, bool* isImage) const {
  const UIDEntry* entry = FindEntry(uid);
  if (entry == nullptr) return false;
  if (description != nullptr) *description = entry->Description;
  if (type != nullptr) *type = entry->Type;
  if (modality != nullptr) *modality = entry->Modality;
  if (isImage != nullptr) *isImage = entry->IsImage;
  return true;
}

}  // namespace tessaret
