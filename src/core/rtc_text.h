// The text form of the data dictionary. A line that starts with "{" or "(" holds an entry, every other line is skipped:
//
//   {0x0010 0x0020 LO "Patient ID"}                     numbers; separated by any run of blanks, quotes and commas
//   (0010,0020) VR="LO" VM="1" Keyword="PatientID"      four hexadecimal digits each
//
// Lines are taken in chunks of 1020 characters, and a chunk counts as a line. Only an entry in braces goes on in the
// chunks and lines that follow; line ends within it are dropped, and a line that is an entry itself breaks it off. The
// first chunk tells the forms of a file apart and is never an entry.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "core/rtc_draft.h"
#include "core/rtc_table.h"
#include "core/tag.h"

namespace tessaret {

/// Characters of the longest line. The dictionaries in use stay below 100.
inline constexpr std::size_t kLongestDictionaryLine = 65536;

/// Stands for a tag that is not made of digits (60xx): the entry counts, but no element has this tag.
inline constexpr TagKey kDeadTag = MakeTagKey(0xFFFF, 0xFFFF);

/// Appends the entries of `text` to `draft`, with their descriptions where `keepDescriptions` says so. False, with the
/// line and the reason in `error`, for a text that breaks the grammar or was cut off; `draft` is then of no use.
bool ParseRtcText(std::string_view text, bool keepDescriptions, RtcDraft& draft,
                  std::string& error);

/// The lines of such a file for `table`, in their order, behind one that is no entry; a line end in a description
/// becomes a blank. Empty, with the reason in `error`, for a type whose letters the form cannot hold. Throws
/// std::bad_alloc.
std::string WriteRtcText(const RtcTable& table, std::string& error);

}  // namespace tessaret
