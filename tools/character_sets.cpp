#include "character_sets.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace tessaret::tool {
namespace {

constexpr CodedSet kSets[] = {
    {"6", CodeForm::kAscii, "", "", "(B"},
    {"14", CodeForm::kRomaji, "", "", "(J"},
    {"13", CodeForm::kKatakana, "", "", ")I"},
    {"100", CodeForm::kHigh, "ISO-8859-1", "", "-A"},
    {"101", CodeForm::kHigh, "ISO-8859-2", "", "-B"},
    {"109", CodeForm::kHigh, "ISO-8859-3", "", "-C"},
    {"110", CodeForm::kHigh, "ISO-8859-4", "", "-D"},
    {"126", CodeForm::kHigh, "ISO-8859-7", "", "-F"},
    {"127", CodeForm::kHigh, "ISO-8859-6", "", "-G"},
    {"138", CodeForm::kHigh, "ISO-8859-8", "", "-H"},
    {"144", CodeForm::kHigh, "ISO-8859-5", "", "-L"},
    {"148", CodeForm::kHigh, "ISO-8859-9", "", "-M"},
    {"166", CodeForm::kHigh, "TIS-620", "", "-T"},
    {"203", CodeForm::kHigh, "ISO-8859-15", "", "-b"},
    {"58", CodeForm::kHighPair, "EUC-CN", "", "$)A"},
    {"149", CodeForm::kHighPair, "EUC-KR", "", "$)C"},
    {"87", CodeForm::kLowPair, "EUC-JP", "", "$B"},
    {"159", CodeForm::kLowPair, "EUC-JP", "\x8F", "$(D"},
    {"192", CodeForm::kUtf8, "UTF-8", "", ""},
    {"GBK", CodeForm::kChinese, "GBK", "", ""},
    {"GB18030", CodeForm::kChinese, "GB18030", "", ""},
};

constexpr const CodedSet* kAscii = &kSets[0];
constexpr const CodedSet* kRomaji = &kSets[1];
static_assert(kAscii->name == "6" && kRomaji->name == "14");

constexpr std::string_view kPlainPrefix = "ISO IR ";
constexpr std::string_view kExtensionPrefix = "ISO 2022 IR ";

/// Capitals, with one blank for whatever stands between words: names are often written a little wrong.
std::string Normal(std::string_view name) {
  std::string normal;
  for (const char c : Trimmed(name)) {
    const bool isGap = c == ' ' || c == '_' || c == '-';
    if (isGap && normal.ends_with(' ')) continue;
    normal += isGap ? ' ' : c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return normal;
}

const CodedSet* FindSet(std::string_view normal) {
  for (const std::string_view prefix : {kPlainPrefix, kExtensionPrefix}) {
    if (normal.starts_with(prefix)) normal.remove_prefix(prefix.size());
  }
  const auto* set = std::find_if(std::begin(kSets), std::end(kSets),
                                 [&](const CodedSet& each) { return each.name == normal; });
  return set == std::end(kSets) ? nullptr : set;
}

/// A name for messages: far more than any set has.
std::string Cut(std::string name) {
  constexpr std::size_t kMost = 64;
  if (name.size() > kMost) name.resize(kMost), name += "...";
  return name;
}

bool IsTextByItself(const CodedSet& set) { return set.escape.empty(); }

}  // namespace

const CodedSet* FindEscape(std::string_view bytes) {
  const auto* set = std::find_if(std::begin(kSets), std::end(kSets), [&](const CodedSet& each) {
    return !each.escape.empty() && bytes.starts_with(each.escape);
  });
  return set == std::end(kSets) ? nullptr : set;
}

CharacterSets::CharacterSets(std::string_view value) {
  while (!value.empty() && (value.back() == ' ' || value.back() == '\0')) value.remove_suffix(1);
  unnamed_ = value.empty();
  if (unnamed_) return;
  for (bool isFirst = true;; isFirst = false) {
    const std::size_t end = value.find('\\');
    const std::string name = Normal(value.substr(0, end));
    extensions_ = extensions_ || !isFirst || name.starts_with(kExtensionPrefix);
    if (isFirst) TakeFirst(name);
    if (!name.empty() && unknown_.empty() && FindSet(name) == nullptr)
      unknown_ = Cut(std::string(Trimmed(value.substr(0, end))));
    if (end == std::string_view::npos) break;
    value.remove_prefix(end + 1);
  }
  // Escape sequences have no place in a text whose bytes make other characters.
  if (low_ != nullptr && IsTextByItself(*low_)) extensions_ = false;
}

void CharacterSets::TakeFirst(std::string_view name) {
  const CodedSet* set = FindSet(name);
  if (set == nullptr) return;
  if (IsTextByItself(*set)) {
    low_ = high_ = set;
  } else if (IsForHighBytes(set->form)) {
    high_ = set;
    if (set->form == CodeForm::kKatakana) low_ = kRomaji;
  } else if (set->form == CodeForm::kRomaji) {
    low_ = set;
  }
}

const CodedSet* CharacterSets::Low() const { return low_ == nullptr ? kAscii : low_; }

}  // namespace tessaret::tool
