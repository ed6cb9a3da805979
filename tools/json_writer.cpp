#include "json_writer.h"

#include "base/text.h"
#include "escape.h"

namespace tessaret::tool {
namespace {

void AppendUtf8OfLatin1(std::string& to, unsigned char byte) {
  to += static_cast<char>(0xC0 | byte >> 6);
  to += static_cast<char>(0x80 | (byte & 0x3F));
}

/// Characters that JSON, or a terminal that shows it, does not take as they are.
void AppendAscii(std::string& to, char byte) {
  switch (byte) {
    case '"':
      to += "\\\"";
      return;
    case '\\':
      to += "\\\\";
      return;
    case '\n':
      to += "\\n";
      return;
    case '\r':
      to += "\\r";
      return;
    case '\t':
      to += "\\t";
      return;
    default:
      break;
  }
  if (IsPrintable(static_cast<std::uint8_t>(byte))) {
    to += byte;
  } else {
    to += Format("\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  }
}

void AppendCharacter(std::string& to, std::string_view bytes, char32_t code) {
  if (bytes.size() == 1) return AppendAscii(to, bytes[0]);
  const bool steering = Escaped(bytes) != bytes;
  to += steering ? Format("\\u%04x", static_cast<unsigned>(code)) : std::string(bytes);
}

std::size_t CountDigits(std::string_view text) {
  const std::size_t end = text.find_first_not_of("0123456789");
  return end == std::string_view::npos ? text.size() : end;
}

/// Takes at least one digit off; false when there is none.
bool TakeDigits(std::string_view& text) {
  const std::size_t count = CountDigits(text);
  text.remove_prefix(count);
  return count > 0;
}

/// How many bytes of `text` to take at once, whole characters where it is UTF-8.
std::size_t PortionOf(std::string_view text, bool utf8) {
  constexpr std::size_t kPortion = std::size_t{64} * 1024;
  if (text.size() <= kPortion) return text.size();
  std::size_t size = kPortion;
  while (utf8 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return size;
}

/// What stands between the quotes.
std::string Characters(std::string_view text, bool utf8) {
  std::string json;
  while (!text.empty()) {
    const Utf8Character next = utf8 ? FirstCharacter(text) : Utf8Character{0, 1};
    const auto byte = static_cast<unsigned char>(text[0]);
    if (utf8) {
      AppendCharacter(json, text.substr(0, next.size), next.code);
    } else if (byte >= 0xA0) {
      AppendUtf8OfLatin1(json, byte);
    } else {
      AppendAscii(json, text[0]);
    }
    text.remove_prefix(next.size);
  }
  return json;
}

}  // namespace

std::string JsonString(std::string_view text) { return '"' + Characters(text, IsUtf8(text)) + '"'; }

bool IsJsonNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const bool leadingZero = text.starts_with('0');
  const std::size_t whole = CountDigits(text);
  if (whole == 0 || (leadingZero && whole > 1)) return false;
  text.remove_prefix(whole);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (!TakeDigits(text)) return false;
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (!TakeDigits(text)) return false;
  }
  return text.empty();
}

JsonWriter& JsonWriter::String(std::string_view text) {
  const bool utf8 = IsUtf8(text);
  Raw("\"");
  while (!text.empty()) {
    const std::size_t size = PortionOf(text, utf8);
    More(Characters(text.substr(0, size), utf8));
    text.remove_prefix(size);
  }
  return More("\"");
}

JsonWriter& JsonWriter::Key(std::string_view name) {
  Separate();
  output_.Write(JsonString(name));
  output_.Write(":");
  afterKey_ = true;
  return *this;
}

JsonWriter& JsonWriter::Raw(std::string_view json) {
  Separate();
  output_.Write(json);
  return *this;
}

JsonWriter& JsonWriter::More(std::string_view json) {
  output_.Write(json);
  return *this;
}

JsonWriter& JsonWriter::Open(char bracket) {
  Separate();
  output_.Write({&bracket, 1});
  hasMembers_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::Close(char bracket) {
  hasMembers_.pop_back();
  output_.Write({&bracket, 1});
  return *this;
}

void JsonWriter::Separate() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (hasMembers_.empty()) return;
  if (hasMembers_.back()) output_.Write(",");
  hasMembers_.back() = true;
}

void JsonWriter::EndLine() { output_.Write("\n"); }

}  // namespace tessaret::tool
