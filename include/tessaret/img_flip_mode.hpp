/// Mirrored views.
#pragma once

#include <cstdint>

namespace tessaret {

/// How an image is mirrored: value 1 turns it upside down, value 2 swaps left and right.
enum _ImgFlipMode : std::int32_t {
  /// As it is.
  IMAGE_FLIP_NONE = 0,
  /// Upside down.
  IMAGE_FLIP_VERT = 1,
  /// Left and right swapped.
  IMAGE_FLIP_HORZ = 2,
  /// Both.
  IMAGE_FLIP_BOTH = 3,
};

}  // namespace tessaret
