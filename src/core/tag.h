// The tag of a data element as one number, which is also the order of elements: group above element.
#pragma once

#include <cstdint>

namespace tessaret {

using TagKey = std::uint32_t;

constexpr TagKey MakeTagKey(std::uint16_t group, std::uint16_t element) {
  return static_cast<TagKey>(group) << 16 | element;
}
constexpr std::uint16_t GroupOf(TagKey key) { return static_cast<std::uint16_t>(key >> 16); }
constexpr std::uint16_t ElementOf(TagKey key) { return static_cast<std::uint16_t>(key & 0xFFFF); }

/// Structural tags that stand between elements (DICOM PS3.5, 7.5).
inline constexpr std::uint16_t kStructuralGroup = 0xFFFE;
inline constexpr std::uint16_t kItemElement = 0xE000;
inline constexpr std::uint16_t kItemDelimiterElement = 0xE00D;
inline constexpr std::uint16_t kSequenceDelimiterElement = 0xE0DD;

inline constexpr std::uint32_t kUndefinedLength = 0xFFFFFFFF;

inline constexpr TagKey kMetaGroupLengthTag = MakeTagKey(0x0002, 0x0000);
inline constexpr TagKey kTransferSyntaxTag = MakeTagKey(0x0002, 0x0010);
inline constexpr TagKey kPixelDataTag = MakeTagKey(0x7FE0, 0x0010);

}  // namespace tessaret
