/// Kinds of raster images.
#pragma once

#include <cstdint>

namespace tessaret {

/// How the samples of an image are stored. Colour images have three bytes a pixel in the order in which they were put.
enum _EnumImageType : std::int32_t {
  /// One sample of 8 bits.
  IMAGE_GRAY8 = 0,
  /// One sample of 16 bits.
  IMAGE_GRAY16 = 1,
  /// One sample of 32 bits.
  IMAGE_GRAY32 = 2,
  /// Three samples of 8 bits.
  IMAGE_RGB = 3,
};

}  // namespace tessaret
