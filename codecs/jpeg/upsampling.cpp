#include "jpeg/upsampling.h"

#include <algorithm>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// Fewer columns are not mixed but repeated, their rows with them, as most decoders have it.
constexpr std::uint32_t kLeastMixed = 3;

bool IsHalf(std::uint32_t factor, std::uint32_t most) {
  if (factor != most && factor * 2 != most) {
    Fail("components with one sample for %u of %u are not decoded", factor, most);
  }
  return factor != most;
}

}  // namespace

DctPlane MakeDctPlane(const DctComponent& component) {
  DctPlane plane;
  plane.component = component;
  plane.samples.resize(std::size_t{component.wholeAcross} * component.wholeDown * 64);
  return plane;
}

RowMaker::RowMaker(const DctPlane& plane, const DctLayout& layout)
    : plane_(plane),
      isHalfAcross_(IsHalf(plane.component.horizontal, layout.mostHorizontal)),
      isHalfDown_(IsHalf(plane.component.vertical, layout.mostVertical)),
      sums_(plane.component.columns),
      row_(std::size_t{plane.component.columns} * 2) {}

const std::uint16_t* RowMaker::Row(std::uint32_t y) {
  const std::uint32_t columns = plane_.component.columns;
  if (!isHalfDown_) {
    const std::uint16_t* row = plane_.Row(y);
    if (!isHalfAcross_) return row;
    std::copy_n(row, columns, sums_.begin());
    return Wide(sums_.data(), 1);
  }
  const std::uint32_t near = y / 2;
  const std::uint32_t last = plane_.component.rows - 1;
  const bool isMixed = !isHalfAcross_ || columns >= kLeastMixed;
  const std::uint32_t next = y % 2 == 0 ? std::max(near, 1u) - 1 : std::min(near + 1, last);
  const std::uint32_t far = isMixed ? next : near;
  const std::uint16_t* nearRow = plane_.Row(near);
  const std::uint16_t* farRow = plane_.Row(far);
  for (std::uint32_t x = 0; x < columns; ++x) sums_[x] = 3u * nearRow[x] + farRow[x];
  if (isHalfAcross_) return Wide(sums_.data(), 4);
  const std::uint32_t half = y % 2 == 0 ? 1 : 2;
  for (std::uint32_t x = 0; x < columns; ++x) {
    row_[x] = static_cast<std::uint16_t>((sums_[x] + half) / 4);
  }
  return row_.data();
}

/// Two samples for each of `sums`, which are `weight` times too great. What is halved goes up in one and down in the next.
const std::uint16_t* RowMaker::Wide(const std::uint32_t* sums, std::uint32_t weight) {
  const std::size_t columns = plane_.component.columns;
  const std::uint32_t whole = 4 * weight;
  const std::uint32_t left = weight == 1 ? 1 : 8;
  const std::uint32_t right = weight == 1 ? 2 : 7;
  const bool isMixed = columns >= kLeastMixed;
  for (std::size_t x = 0; x < columns; ++x) {
    const std::uint32_t before = isMixed && x != 0 ? sums[x - 1] : sums[x];
    const std::uint32_t behind = isMixed && x + 1 != columns ? sums[x + 1] : sums[x];
    row_[2 * x] = static_cast<std::uint16_t>((3 * sums[x] + before + left) / whole);
    row_[2 * x + 1] = static_cast<std::uint16_t>((3 * sums[x] + behind + right) / whole);
  }
  return row_.data();
}

}  // namespace tessaret::codecs
