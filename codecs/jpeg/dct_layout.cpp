#include "jpeg/dct_layout.h"

#include <algorithm>

#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kSide = 8;
constexpr std::uint32_t kMostBlocks = 10;

std::uint32_t DivideUp(std::uint32_t number, std::uint32_t by) { return (number + by - 1) / by; }

}  // namespace

std::uint64_t DctLayout::Blocks() const {
  std::uint64_t blocks = 0;
  for (std::size_t at = 0; at < count; ++at) {
    blocks += std::uint64_t{components[at].blocksAcross} * components[at].blocksDown;
  }
  return blocks;
}

DctLayout MakeDctLayout(const FrameHeader& header) {
  DctLayout layout;
  layout.count = header.count;
  for (std::size_t at = 0; at < header.count; ++at) {
    DctComponent& component = layout.components[at];
    component.horizontal = header.components[at].horizontal;
    component.vertical = header.components[at].vertical;
    layout.mostHorizontal = std::max(layout.mostHorizontal, component.horizontal);
    layout.mostVertical = std::max(layout.mostVertical, component.vertical);
  }
  layout.unitsAcross = DivideUp(header.columns, kSide * layout.mostHorizontal);
  layout.unitsDown = DivideUp(header.rows, kSide * layout.mostVertical);
  for (std::size_t at = 0; at < header.count; ++at) {
    DctComponent& component = layout.components[at];
    component.columns = DivideUp(header.columns * component.horizontal, layout.mostHorizontal);
    component.rows = DivideUp(header.rows * component.vertical, layout.mostVertical);
    component.blocksAcross = DivideUp(component.columns, kSide);
    component.blocksDown = DivideUp(component.rows, kSide);
    component.wholeAcross = layout.unitsAcross * component.horizontal;
    component.wholeDown = layout.unitsDown * component.vertical;
  }
  return layout;
}

std::uint64_t UnitsOf(const DctLayout& layout, const ScanHeader& scan) {
  if (scan.count == 1) {
    const DctComponent& component = layout.components[scan.components[0].index];
    return std::uint64_t{component.blocksAcross} * component.blocksDown;
  }
  std::uint32_t blocks = 0;
  for (std::size_t at = 0; at < scan.count; ++at) {
    const DctComponent& component = layout.components[scan.components[at].index];
    blocks += component.horizontal * component.vertical;
  }
  if (blocks > kMostBlocks) Fail("%u blocks in a unit are too many", blocks);
  return std::uint64_t{layout.unitsAcross} * layout.unitsDown;
}

}  // namespace tessaret::codecs
