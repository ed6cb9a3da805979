// One file of a great many small elements in sequences three deep: what a structure set of many contours asks of a reader.
#pragma once

#include <cstdint>
#include <filesystem>

namespace tessaret::bench {

struct ManySize {
  std::uint32_t regions;
  std::uint32_t contours;  // of each region
};

enum class ManyForm {
  kExplicit,         // sequences and items of undefined length
  kImplicit,         // likewise
  kExplicitDefined,  // of defined length
};

/// Writes the file. Besides the meta header it holds 13 + regions * (3 + contours * 101) elements.
void WriteManyElements(const ManySize& size, ManyForm form, const std::filesystem::path& path);

}  // namespace tessaret::bench
