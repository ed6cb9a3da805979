/// Ways to lay one image over another.
#pragma once

#include <cstdint>

namespace tessaret {

/// How an image is merged onto another one.
enum _EnumMergeType : std::int32_t {
  /// By transparency.
  MERGE_TRANSPARENCY = 0,
  /// By a pattern of dots.
  MERGE_DITHERED = 1,
};

}  // namespace tessaret
