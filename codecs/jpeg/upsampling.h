// Rows of components that have fewer samples than the image.
#pragma once

#include <cstdint>
#include <vector>

#include "jpeg/dct_layout.h"

namespace tessaret::codecs {

/// The samples of one component, block by block side by side.
struct DctPlane {
  DctComponent component;
  std::vector<std::uint16_t> samples;

  [[nodiscard]] std::size_t Stride() const { return std::size_t{component.wholeAcross} * 8; }
  [[nodiscard]] const std::uint16_t* Row(std::uint32_t y) const {
    return samples.data() + y * Stride();
  }
  /// Where the block in these rows and columns of blocks begins.
  std::uint16_t* Block(std::uint32_t row, std::uint32_t column) {
    return samples.data() + (row * Stride() + column) * 8;
  }
};

/// With room for all blocks.
DctPlane MakeDctPlane(const DctComponent& component);

/// Gives whole rows of the image. Where there is one sample for two it lies in the middle between them, and both are mixed from it
/// and its neighbour, 3 to 1. Where half of the columns are fewer than three nothing is mixed.
class RowMaker {
 public:
  /// Throws CodecFailure where the component has not all or half of the image's rows or columns. Keeps a reference.
  RowMaker(const DctPlane& plane, const DctLayout& layout);

  /// The samples of row `y` of the image; they stay until the next call.
  const std::uint16_t* Row(std::uint32_t y);

 private:
  [[nodiscard]] const std::uint16_t* Wide(const std::uint32_t* sums, std::uint32_t weight);

  const DctPlane& plane_;
  bool isHalfAcross_;
  bool isHalfDown_;
  std::vector<std::uint32_t> sums_;
  std::vector<std::uint16_t> row_;
};

}  // namespace tessaret::codecs
