// Where the image and its tiles lie on the grid of a JPEG 2000 code stream (ISO/IEC 15444-1, B.2 and B.3).
#pragma once

#include <algorithm>
#include <cstdint>

namespace tessaret::codecs {

/// Along one direction.
struct GridDirection {
  std::uint32_t begin = 0;  // of the image on the grid
  std::uint32_t end = 0;
  std::uint32_t tileBegin = 0;
  std::uint32_t tile = 0;

  [[nodiscard]] std::uint32_t Pixels() const { return end - begin; }
  [[nodiscard]] std::uint32_t Tiles() const {
    return static_cast<std::uint32_t>((std::uint64_t{end} - tileBegin + tile - 1) / tile);
  }
  [[nodiscard]] std::uint32_t TileStart(std::uint32_t index) const {
    return std::max(begin, tileBegin + index * tile);
  }
  [[nodiscard]] std::uint32_t TileEnd(std::uint32_t index) const {
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(end, tileBegin + std::uint64_t{index + 1} * tile));
  }
};

/// A rectangle of some grid, without its last row and column.
struct GridArea {
  std::uint32_t x0 = 0;
  std::uint32_t y0 = 0;
  std::uint32_t x1 = 0;
  std::uint32_t y1 = 0;

  [[nodiscard]] std::uint32_t Width() const { return x1 - x0; }
  [[nodiscard]] std::uint32_t Height() const { return y1 - y0; }
  [[nodiscard]] bool IsEmpty() const { return x0 >= x1 || y0 >= y1; }
};

constexpr std::uint64_t CeilShift(std::uint64_t value, std::uint32_t shift) {
  return (value + (std::uint64_t{1} << shift) - 1) >> shift;
}

}  // namespace tessaret::codecs
