// Tags as people write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tag.h"

namespace tessaret::tool {

/// "(0010,0020)".
std::string TagText(std::uint16_t group, std::uint16_t element);
inline std::string TagText(TagKey tag) { return TagText(GroupOf(tag), ElementOf(tag)); }

/// The tag in "(0010,0020)", "0010,0020" or "00100020", digits of either case; nothing for any other text.
std::optional<TagKey> ParseTag(std::string_view text);

}  // namespace tessaret::tool
