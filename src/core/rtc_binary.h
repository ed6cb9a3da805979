// The binary form of the data dictionary, little endian. It exists to be loaded without parsing.
//
//   offset  bytes      content
//   0       8          "#!BinRTC"
//   8       2          line feed, NUL
//   10      2          reserved, written as 0
//   12      4          count of entries, signed
//   16      4          not 0 when descriptions follow
//   20      4 * count  keys, ascending
//   then    12 * count elements: group, element, type (upper half of its four bytes without meaning), a word without meaning
//   then               with descriptions: for each entry a text that ends in a NUL
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/rtc_draft.h"
#include "core/rtc_table.h"

namespace tessaret {

inline constexpr std::string_view kRtcBinaryMark = "#!BinRTC";

enum class RtcBinaryResult {
  kWhole,
  kCut,  // the file ends early: `draft` holds the entries that came whole, and the descriptions that did
  kDamaged,  // no such file, or one that contradicts itself: `draft` is of no use
};

/// Appends the entries of a file of `size` bytes to `draft`. `hasTexts` tells whether the file has descriptions; they are
/// read when `keepDescriptions` is set too. Unless the file was whole `error` says why. Memory follows the bytes that
/// are there, not the count that the file names.
RtcBinaryResult ReadRtcBinary(const void* bytes, std::size_t size, bool keepDescriptions,
                              RtcDraft& draft, bool& hasTexts, std::string& error);

/// The bytes of the file for `table`. An entry without a description gets an empty one.
std::vector<std::uint8_t> WriteRtcBinary(const RtcTable& table, bool withDescriptions);

}  // namespace tessaret
