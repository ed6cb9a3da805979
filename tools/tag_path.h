// Elements as people name them on the command line, at any depth: "PatientName", "0010,0010",
// "(0008,1140)[0].ReferencedSOPClassUID".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keywords.h"

namespace tessaret::tool {

struct TagStep {
  TagKey tag = 0;
  std::uint32_t item = 0;  // which item of it the next step is in; 0 in the last one

  friend bool operator==(const TagStep&, const TagStep&) = default;
};

struct TagPath {
  std::vector<TagStep> steps;  // empty where the text is no path
  std::string failure;         // then: why

  [[nodiscard]] TagKey Tag() const { return steps.back().tag; }
};

/// Reads a path: tags or keywords, each but the last with the number of an item in brackets, from 0, and points between them. A tag is
/// "gggg,eeee" or "ggggeeee", with parentheses or without.
TagPath ParseTagPath(std::string_view text, Keywords& keywords);

/// "(0008,1140)[0].(0008,1150)".
std::string TextOf(const TagPath& path);

}  // namespace tessaret::tool
