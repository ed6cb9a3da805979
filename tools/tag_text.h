// Tags as people write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/tag.h"
#include "core/vr.h"

namespace tessaret::tool {

/// "(0010,0020)".
std::string TagText(std::uint16_t group, std::uint16_t element);
inline std::string TagText(const VR& vr) { return TagText(vr.Group, vr.Element); }

/// The tag in "(0010,0020)", "0010,0020" or "00100020", digits of either case; nothing for any other text.
std::optional<TagKey> ParseTag(std::string_view text);

}  // namespace tessaret::tool
