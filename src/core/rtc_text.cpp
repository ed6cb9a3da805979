#include "core/rtc_text.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "base/text.h"

namespace tessaret {
namespace {

constexpr std::size_t kChunk = 1020;

/// Hands a text out in chunks: a line, or as much of it as a chunk holds.
class ChunkReader {
 public:
  explicit ChunkReader(std::string_view text) : text_(text) {}

  /// Steps to the next chunk; false at the end, and where a line is too long.
  bool Next() {
    if (at_ == text_.size()) return false;
    startsLine_ = endedLine_;
    if (startsLine_) StartLine();
    const std::string_view left = text_.substr(at_, kChunk);
    const void* end = std::memchr(left.data(), '\n', left.size());
    endedLine_ = end != nullptr;
    const std::size_t length =
        endedLine_ ? static_cast<std::size_t>(static_cast<const char*>(end) - left.data())
                   : left.size();
    chunk_ = left.substr(0, length);
    at_ += length + (endedLine_ ? 1 : 0);
    tooLong_ = static_cast<std::size_t>(chunk_.data() + length - line_) > kLongestDictionaryLine;
    const bool atLineEnd = endedLine_ || (at_ < text_.size() && text_[at_] == '\n');
    if (atLineEnd && chunk_.ends_with('\r')) chunk_.remove_suffix(1);
    return !tooLong_;
  }

  /// The characters of the chunk, without its line end.
  [[nodiscard]] std::string_view Chunk() const { return chunk_; }
  [[nodiscard]] bool StartsLine() const { return startsLine_; }
  [[nodiscard]] bool TooLong() const { return tooLong_; }
  /// Of the line that the chunk is from; the first is 1.
  [[nodiscard]] std::size_t LineNumber() const { return lineNumber_; }

 private:
  void StartLine() {
    line_ = text_.data() + at_;
    ++lineNumber_;
  }

  const std::string_view text_;
  std::size_t at_ = 0;
  std::size_t lineNumber_ = 0;
  const char* line_ = nullptr;
  std::string_view chunk_;
  bool startsLine_ = false;
  bool endedLine_ = true;
  bool tooLong_ = false;
};

/// What stands where a number of 16 bits is expected.
struct Number {
  enum class Kind { kGood, kMeaningless, kTooLarge };
  Kind kind = Kind::kGood;
  std::uint16_t value = 0;
};

Number ReadDigits(std::string_view digits, std::uint32_t base) {
  if (digits.empty()) return {Number::Kind::kMeaningless};
  std::uint32_t value = 0;
  bool fits = true;
  for (const char c : digits) {
    const int digit = HexDigit(c);
    if (digit < 0 || static_cast<std::uint32_t>(digit) >= base) return {Number::Kind::kMeaningless};
    if (fits) value = value * base + static_cast<std::uint32_t>(digit);
    fits = fits && value <= 0xFFFF;
  }
  if (!fits) return {Number::Kind::kTooLarge};
  return {Number::Kind::kGood, static_cast<std::uint16_t>(value)};
}

/// "0x10" and "16" are the same number. The form with x needs at least three characters.
Number ReadNumber(std::string_view token) {
  token = Trimmed(token);
  const bool hexadecimal = token.size() >= 3 && (token[1] == 'x' || token[1] == 'X');
  return hexadecimal ? ReadDigits(token.substr(2), 16) : ReadDigits(token, 10);
}

TagKey KeyOf(const Number& group, const Number& element) {
  const bool good = group.kind == Number::Kind::kGood && element.kind == Number::Kind::kGood;
  return good ? MakeTagKey(group.value, element.value) : kDeadTag;
}

constexpr bool IsSeparator(char c) { return c == ' ' || c == '"' || c == '\'' || c == ','; }

constexpr std::string_view kTypeMark = "VR=\"";

/// Whether a line is an entry of its own wherever it stands. A description that goes on in a line may start with "(".
bool StartsAnEntry(std::string_view line) {
  return line.starts_with('{') ||
         (line.starts_with('(') && line.find(kTypeMark) != std::string_view::npos);
}

class TextParser {
 public:
  TextParser(std::string_view text, bool keepDescriptions, RtcDraft& draft)
      : chunks_(text), keepDescriptions_(keepDescriptions), draft_(draft) {}

  /// False with Error() set.
  bool Run() {
    // The first chunk has told the form of the file already.
    if (!chunks_.Next()) return ReachedEnd();
    while (chunks_.Next()) {
      const std::string_view chunk = chunks_.Chunk();
      if (chunk.starts_with('{') && !ReadBraces()) return false;
      if (chunk.starts_with('(') && !ReadParentheses(chunk)) return false;
    }
    return ReachedEnd();
  }

  [[nodiscard]] const std::string& Error() const { return error_; }

 private:
  bool Fail(std::size_t line, const char* why) {
    error_ = Format("line %zu: %s", line, why);
    return false;
  }

  bool ReachedEnd() {
    return !chunks_.TooLong() || Fail(chunks_.LineNumber(), "the line is too long");
  }

  // Group, element, type, description. What follows in the chunk behind the last quote is not looked at.
  bool ReadBraces() {
    recordLine_ = chunks_.LineNumber();
    at_ = 1;
    if (!ReadToken()) return false;
    const Number group = ReadNumber(token_);
    if (!ReadToken()) return false;
    const Number element = ReadNumber(token_);
    if (group.kind == Number::Kind::kTooLarge || element.kind == Number::Kind::kTooLarge) {
      return Fail(recordLine_, "a number has more than 16 bits");
    }
    if (!ReadToken()) return false;
    if (token_.size() < 2) return Fail(recordLine_, "a type needs two letters");
    const VrCode typeCode = MakeTypeCode(token_[0], token_[1]);
    if (!ReadDescription()) return false;
    Keep(KeyOf(group, element), typeCode, std::string_view(token_));
    return true;
  }

  bool ReadToken() {
    if (!SkipSeparators()) return false;
    token_.clear();
    return CollectUntil(IsSeparator);
  }

  bool ReadDescription() {
    if (!SkipSeparators()) return false;
    token_.clear();
    for (;;) {
      if (!CollectUntil([](char c) { return c == '"' || c == '\\'; })) return false;
      if (ended_ == '"') return true;
      // The character after a backslash is taken as it is.
      if (!HaveCharacter() || !Append(chunks_.Chunk().substr(at_, 1))) return false;
      ++at_;
    }
  }

  bool SkipSeparators() {
    while (HaveCharacter()) {
      if (!IsSeparator(chunks_.Chunk()[at_])) return true;
      ++at_;
    }
    return false;
  }

  /// Appends to the token what lies before the next character for which `ends` holds, and steps over that one.
  template <class Ends>
  bool CollectUntil(Ends ends) {
    while (HaveCharacter()) {
      const std::string_view rest = chunks_.Chunk().substr(at_);
      const auto end = std::find_if(rest.begin(), rest.end(), ends);
      const auto length = static_cast<std::size_t>(end - rest.begin());
      if (!Append(rest.substr(0, length))) return false;
      at_ += length;
      if (end == rest.end()) continue;
      ended_ = *end;
      ++at_;
      return true;
    }
    return false;
  }

  bool Append(std::string_view part) {
    if (token_.size() + part.size() > kLongestToken) {
      return Fail(recordLine_, "a token is longer than 1023 characters");
    }
    token_ += part;
    return true;
  }

  /// True when the record has a character at at_, which may be the first one of a following chunk.
  bool HaveCharacter() {
    while (at_ == chunks_.Chunk().size()) {
      if (!chunks_.Next()) {
        return chunks_.TooLong() ? ReachedEnd() : Fail(recordLine_, "the record has no end");
      }
      // A forgotten quote must not make the next entry part of this one.
      if (chunks_.StartsLine() && StartsAnEntry(chunks_.Chunk())) {
        return Fail(recordLine_, "the record has no end before the next one");
      }
      at_ = 0;
    }
    return true;
  }

  // (gggg,eeee) ... VR="xx" ... Keyword="text"
  bool ReadParentheses(std::string_view chunk) {
    const std::size_t elementAt = chunk.find_first_of("0123456789abcdefABCDEF", 5);
    if (elementAt == std::string_view::npos) return true;
    const std::size_t typeAt = chunk.find(kTypeMark, elementAt + 4);
    if (typeAt == std::string_view::npos) return true;
    const std::string_view type = chunk.substr(typeAt + kTypeMark.size());
    if (type.starts_with('"')) return true;
    if (type.size() < 2 || type[1] == '"') {
      return Fail(chunks_.LineNumber(), "a type needs two letters");
    }
    const TagKey key =
        KeyOf(ReadDigits(chunk.substr(1, 4), 16), ReadDigits(chunk.substr(elementAt, 4), 16));
    return ReadKeyword(key, MakeTypeCode(type[0], type[1]), type.substr(2));
  }

  bool ReadKeyword(TagKey key, VrCode typeCode, std::string_view rest) {
    constexpr std::string_view kKeyword = "Keyword=\"";
    const std::size_t at = rest.find(kKeyword);
    if (!keepDescriptions_ || at == std::string_view::npos) {
      Keep(key, typeCode, std::nullopt);
      return true;
    }
    const std::string_view text = rest.substr(at + kKeyword.size());
    const std::size_t end = text.find('"');
    if (end == std::string_view::npos) return Fail(chunks_.LineNumber(), "the keyword has no end");
    Keep(key, typeCode, text.substr(0, end));
    return true;
  }

  void Keep(TagKey key, VrCode typeCode, std::optional<std::string_view> text) {
    const bool keep = text && keepDescriptions_;
    draft_.entries.push_back({key, typeCode, keep ? draft_.KeepText(*text) : RtcDraft::kNoText});
  }

  ChunkReader chunks_;
  const bool keepDescriptions_;
  RtcDraft& draft_;
  std::string error_;
  // Of the record in braces that is being read:
  std::size_t recordLine_ = 0;
  std::size_t at_ = 0;  // in the current chunk
  std::string token_;
  char ended_ = '\0';  // what ended the token
};

/// Whether both letters of a type come back as they are.
bool CanStandAsText(VrCode type) {
  const auto can = [](char letter) {
    return letter > ' ' && letter <= '~' && !IsSeparator(letter);
  };
  return can(FirstLetter(type)) && can(SecondLetter(type));
}

/// With a backslash before each character that would end it, or be skipped at its start.
std::string QuotedName(std::string_view name) {
  std::string quoted;
  for (const char each : name) {
    const char c = each == '\n' ? ' ' : each;
    const bool isSkipped = quoted.empty() && IsSeparator(c);
    if (isSkipped || c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted;
}

std::string NamedLine(const _RTCElement& entry) {
  return Format("{0x%04X 0x%04X %c%c \"", entry.Group, entry.Element, FirstLetter(entry.TypeCode),
                SecondLetter(entry.TypeCode)) +
         QuotedName(entry.Description) + "\"}\n";
}

/// The form in braces has no way to say that there is no name.
std::string NamelessLine(const _RTCElement& entry) {
  return Format("(%04X,%04X) VR=\"%c%c\"\n", entry.Group, entry.Element,
                FirstLetter(entry.TypeCode), SecondLetter(entry.TypeCode));
}

}  // namespace

bool ParseRtcText(std::string_view text, bool keepDescriptions, RtcDraft& draft,
                  std::string& error) {
  const std::size_t nul = text.find('\0');
  if (nul != std::string_view::npos) {
    const auto line =
        std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(nul), '\n');
    error = Format("line %td: there is a NUL byte", line + 1);
    return false;
  }
  TextParser parser(text, keepDescriptions, draft);
  if (parser.Run()) return true;
  error = parser.Error();
  return false;
}

std::string WriteRtcText(const RtcTable& table, std::string& error) {
  std::string text = "# Elements of the data dictionary\n";
  for (std::uint32_t at = 0; at < table.Count; ++at) {
    const _RTCElement& entry = table.Elements[at];
    if (!CanStandAsText(entry.TypeCode)) {
      error = Format("Type of (%4.4X,%4.4X) cannot be written as text", entry.Group, entry.Element);
      return {};
    }
    const bool hasName = entry.Description != nullptr && *entry.Description != '\0';
    text += hasName ? NamedLine(entry) : NamelessLine(entry);
  }
  return text;
}

}  // namespace tessaret
