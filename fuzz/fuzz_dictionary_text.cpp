// The text form of the data dictionary. What is read can be written in either form and reads back equal.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/text.h"
#include "core/rtc.h"
#include "dictionary_checks.h"

namespace {

using tessaret::RTC;
using tessaret::fuzz::Require;

bool IsPlainLetter(char c) {
  return c != '\0' && c != ' ' && c != '"' && c != '\'' && c != ',' && c != '\r' && c != '\n';
}

/// The entry as a line in braces; empty when that form cannot express it.
std::string InBraces(const tessaret::_RTCElement& entry) {
  const std::string letters{tessaret::FirstLetter(entry.TypeCode),
                            tessaret::SecondLetter(entry.TypeCode)};
  const std::string_view text = tessaret::fuzz::TextOf(entry);
  if (text.empty() || !IsPlainLetter(letters[0]) || !IsPlainLetter(letters[1])) return {};
  std::string line = tessaret::Format("{%u 0x%x ", entry.Group, entry.Element) + letters + " \"";
  // The first character might be taken for a separator.
  line += '\\';
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find_first_of("\"\\", at + 1), text.size());
    line += text.substr(at, end - at);
    if (end < text.size()) line += '\\';
    at = end;
  }
  return line + "\"}\n";
}

void RequireTextRoundTrip(const RTC& rtc) {
  std::string text = "\n";
  for (std::uint32_t at = 0; at < rtc.Table->Count; ++at) {
    const std::string line = InBraces(rtc.Table->Elements[at]);
    if (line.empty()) return;
    text += line;
  }
  RTC again;
  Require(again.AttachBytes(text.data(), text.size()));
  tessaret::fuzz::RequireSame(rtc, again);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (text.starts_with(tessaret::kRtcBinaryMark))
    return 0;  // the other form has a target of its own
  RTC rtc;
  const bool good = rtc.AttachBytes(data, size);
  Require(good == rtc.LastErrorText().empty());
  tessaret::fuzz::RequireSound(rtc);
  if (!good) return 0;
  tessaret::fuzz::RequireBinaryRoundTrip(rtc);
  RequireTextRoundTrip(rtc);
  RTC withoutTexts(false);
  Require(withoutTexts.AttachBytes(data, size));
  Require(withoutTexts.Table->Count == rtc.Table->Count);
  return 0;
}
