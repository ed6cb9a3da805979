// What the readers and writers of data elements say while the parse bit is on, each text at this one place. The sites ask
// IsDumping(kDumpParse) first and hand the text to AppendToDump.
//
// Every element and fragment read or written has one line: the writers have words of their own for what holds items, pixel
// data in the explicit form excepted, and DumpVR makes all other lines. Boundaries come besides.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/text.h"

namespace tessaret::parse_trace {

inline constexpr std::string_view kImplicitLittleIn =
    "-----------------------------\nParsing incoming Implicit Little Endian\n";
inline constexpr std::string_view kImplicitLittleOut =
    "-----------------------------\nParsing outgoing Implicit Little Endian\n";
// The one without a rule above it.
inline constexpr std::string_view kExplicitLittleIn = "Parsing incoming Explicit Little Endian\n";
inline constexpr std::string_view kExplicitLittleOut =
    "-----------------------------\nParsing outgoing Explicit Little Endian\n";
inline constexpr std::string_view kExplicitBigIn =
    "-----------------------------\nParsing incoming Explicit Big Endian\n";
inline constexpr std::string_view kExplicitBigOut =
    "-----------------------------\nParsing outgoing Explicit Big Endian\n";

inline constexpr std::string_view kImplicitDelimiter = "Implicit terminator\n";
inline constexpr std::string_view kImplicitItemOfUndefinedLength = "Implicit length of sequence\n";
inline constexpr std::string_view kImplicitItemOfDefinedLength =
    "explicit length, sequence item begin\n";

inline constexpr std::string_view kUnknownStructuralTag =
    "UNKNOWN ERROR IN Implicit_ParseRawVRIntoDCM\n";
inline constexpr std::string_view kExplicitParseFailed = "ERRORE Parsing raw explicit data\n";

/// Implicit reader, any tag of the structural group. Without a line end: what kind of tag it is follows.
inline std::string StructuralTag(std::uint16_t group, std::uint16_t element, std::uint32_t length) {
  return Format("[%4.4X,%4.4X][%6d]", group, element, static_cast<int>(length));
}

/// Explicit reader; with nine letters F.
inline std::string ExplicitItemOfUndefinedLength(std::uint16_t element) {
  return Format("[FFFE][%4.4X][FFFFFFFFF] Start Implicit length sequence\n", element);
}

inline std::string ExplicitItemOfDefinedLength(std::uint16_t element, std::uint32_t length) {
  return Format("[FFFE][%4.4X][%d] Start Explicit length sequence\n", element,
                static_cast<int>(length));
}

inline std::string ImplicitSequence(std::uint16_t group, std::uint16_t element,
                                    std::uint32_t items) {
  return Format("[%4.4X,%4.4X][ffffffff] Implicit length sequence of #%d items\n", group, element,
                static_cast<int>(items));
}

inline std::string ImplicitPixelData(std::uint16_t group, std::uint16_t element,
                                     std::uint32_t length) {
  return Format("[%4.4X,%4.4X][%6.6d]Encapsulated pixel data\n", group, element,
                static_cast<int>(length));
}

/// Implicit writer, before an item: the tag and length written, and the number of the item.
inline std::string StartItem(std::uint16_t group, std::uint16_t element, std::uint32_t length,
                             std::uint32_t item) {
  return Format("[%4.4X,%4.4X][%8.8lX]Start Item Sequence #%d\n", group, element,
                static_cast<unsigned long>(length), static_cast<int>(item));
}

inline std::string EndItem(std::uint16_t group, std::uint16_t element, std::uint32_t length,
                           std::uint32_t item) {
  return Format("[%4.4X,%4.4X][%8.8lX]End Item Sequence #%d\n", group, element,
                static_cast<unsigned long>(length), static_cast<int>(item));
}

inline std::string SequenceTerminator(std::uint16_t group, std::uint16_t element,
                                      std::uint32_t length) {
  return Format("[%4.4X,%4.4X][%8.8lX]Sequence Terminator\n", group, element,
                static_cast<unsigned long>(length));
}

inline std::string ExplicitSequence(std::uint16_t group, std::uint16_t element,
                                    std::uint32_t length) {
  return Format("[%4.4X][%4.4X][%8.8X][SQ]Start undefined length sequence\n", group, element,
                length);
}

}  // namespace tessaret::parse_trace
