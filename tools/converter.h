// Characters by the C library's converter.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tessaret::tool {

/// `bytes`, written in `set` as the C library calls it, as UTF-8. Nothing where they are no whole characters of it, or the C library
/// does not have it.
std::optional<std::string> ToUtf8(const char* set, std::string_view bytes);

/// UTF-8 written in `set`. Nothing where it has a character that the set does not have.
std::optional<std::string> FromUtf8(const char* set, std::string_view text);

}  // namespace tessaret::tool
