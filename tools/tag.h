// Tags of data elements as numbers: the group in the high half, so that they sort as files do.
#pragma once

#include <cstdint>

namespace tessaret::tool {

using TagKey = std::uint32_t;

constexpr TagKey MakeTagKey(std::uint16_t group, std::uint16_t element) {
  return TagKey{group} << 16 | element;
}
constexpr std::uint16_t GroupOf(TagKey tag) { return static_cast<std::uint16_t>(tag >> 16); }
constexpr std::uint16_t ElementOf(TagKey tag) { return static_cast<std::uint16_t>(tag & 0xFFFF); }

inline constexpr std::uint16_t kMetaGroup = 0x0002;

// The structural tags that stand between elements (DICOM PS3.5, 7.5).
inline constexpr std::uint16_t kStructuralGroup = 0xFFFE;
inline constexpr std::uint16_t kItemElement = 0xE000;
inline constexpr std::uint16_t kItemDelimiterElement = 0xE00D;
inline constexpr std::uint16_t kSequenceDelimiterElement = 0xE0DD;

inline constexpr TagKey kTransferSyntaxTag = MakeTagKey(0x0002, 0x0010);
inline constexpr TagKey kCharacterSetTag = MakeTagKey(0x0008, 0x0005);
inline constexpr TagKey kPixelRepresentationTag = MakeTagKey(0x0028, 0x0103);
inline constexpr TagKey kPixelDataTag = MakeTagKey(0x7FE0, 0x0010);

/// Elements that name those who made the private elements of their group (DICOM PS3.5, 7.8).
constexpr bool IsPrivateCreator(TagKey tag) {
  return GroupOf(tag) % 2 == 1 && ElementOf(tag) >= 0x0010 && ElementOf(tag) <= 0x00FF;
}

}  // namespace tessaret::tool
