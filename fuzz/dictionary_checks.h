// What holds for every data dictionary, however it was loaded. A breach ends the process, which is a finding.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "core/rtc.h"
#include "core/rtc_binary.h"
#include "core/tag_index.h"

namespace tessaret::fuzz {

inline void Require(bool holds) {
  if (!holds) std::abort();
}

inline std::string_view TextOf(const _RTCElement& entry) {
  return entry.Description == nullptr ? std::string_view() : entry.Description;
}

inline void RequireFound(const RTC& rtc, std::uint32_t at) {
  const RtcTable& table = *rtc.Table;
  const std::int64_t plain = SearchKeys(table.Keys.get(), table.Count, table.Keys[at]);
  Require(plain >= 0 && plain <= at);
  const _RTCElement* found = rtc.Find(table.Keys[at]);
  Require(found == &table.Elements[static_cast<std::size_t>(plain)]);
  std::array<char, kDescriptionBuffer> text;
  Require(rtc.RunTimeClass(found->Group, found->Element, text.data()) == found->TypeCode);
  Require(TextOf(*found) == text.data());
}

/// Entries are in order, look-ups find them and nothing else.
inline void RequireSound(const RTC& rtc) {
  if (!rtc.Table) return;
  const RtcTable& table = *rtc.Table;
  Require(table.Count > 0 && table.Count <= table.Capacity);
  for (std::uint32_t at = 0; at < table.Count; ++at) {
    const _RTCElement& entry = table.Elements[at];
    Require(table.Keys[at] == MakeTagKey(entry.Group, entry.Element));
    Require(at == 0 || table.Keys[at - 1] <= table.Keys[at]);
    Require(TextOf(entry).size() <= kLongestToken);
    RequireFound(rtc, at);
    const TagKey next = table.Keys[at] + 1;
    const bool isThere = SearchKeys(table.Keys.get(), table.Count, next) >= 0;
    Require((rtc.Find(next) != nullptr) == isThere);
  }
}

inline void RequireSame(const RTC& a, const RTC& b) {
  Require(a.Table && b.Table && a.Table->Count == b.Table->Count);
  for (std::uint32_t at = 0; at < a.Table->Count; ++at) {
    Require(a.Table->Keys[at] == b.Table->Keys[at]);
    Require(a.Table->Elements[at].TypeCode == b.Table->Elements[at].TypeCode);
    Require(TextOf(a.Table->Elements[at]) == TextOf(b.Table->Elements[at]));
  }
}

/// Writing the binary form and reading it gives the same dictionary.
inline void RequireBinaryRoundTrip(const RTC& rtc) {
  if (!rtc.Table) return;
  const std::vector<std::uint8_t> bytes = WriteRtcBinary(*rtc.Table, true);
  RTC again;
  Require(again.AttachBytes(bytes.data(), bytes.size()));
  RequireSame(rtc, again);
}

}  // namespace tessaret::fuzz
