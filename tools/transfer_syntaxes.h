// Transfer syntaxes by the names that people use.
#pragma once

#include <string>
#include <string_view>

namespace tessaret::tool {

inline constexpr std::string_view kImplicitLittle = "1.2.840.10008.1.2";
inline constexpr std::string_view kExplicitLittle = "1.2.840.10008.1.2.1";
inline constexpr std::string_view kExplicitBig = "1.2.840.10008.1.2.2";

constexpr bool IsNativeSyntax(std::string_view uid) {
  return uid == kImplicitLittle || uid == kExplicitLittle || uid == kExplicitBig;
}

/// The UID of a syntax that is named so in a short word, or by its keyword, or is a UID itself; empty for any other word.
std::string SyntaxUid(std::string_view name);

/// The short words, with commas between.
std::string SyntaxWords();

}  // namespace tessaret::tool
