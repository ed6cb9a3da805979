/// How two planes meet.
#pragma once

#include <cstdint>

namespace tessaret {

/// What the intersection of two planes is.
enum _EnumIntersectionType : std::int32_t {
  /// They do not meet within the image, or nothing is known of their places.
  INTERSECT_NONE = 0,
  /// They are parallel.
  INTERSECT_PARALLEL = 1,
  /// They meet in a line that crosses the image.
  INTERSECT_SEGMENT = 2,
};

}  // namespace tessaret
