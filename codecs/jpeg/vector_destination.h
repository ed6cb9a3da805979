// A vector as the JPEG library writes code streams to it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "jpeg/jpeg_library.h"

namespace tessaret::codecs {

/// `stream` is whole when the library has finished. Must stay where it is while it is in use.
struct VectorDestination {
  jpeg_destination_mgr manager{};
  std::array<std::uint8_t, 16384> piece{};
  std::vector<std::uint8_t> stream;
};

void UseDestination(jpeg_compress_struct& library, VectorDestination& destination);

}  // namespace tessaret::codecs
