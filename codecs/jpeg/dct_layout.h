// How many blocks the components of an image have, and in which order scans bring them (ITU-T T.81, A.1 and A.2).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {

struct DctComponent {
  std::uint32_t horizontal = 1;  // sampling factors
  std::uint32_t vertical = 1;
  std::uint32_t columns = 0;  // samples that count
  std::uint32_t rows = 0;
  std::uint32_t blocksAcross =
      0;  // blocks that hold these: scans of this component alone have no others
  std::uint32_t blocksDown = 0;
  std::uint32_t wholeAcross = 0;  // blocks that fill up the last MCU, too
  std::uint32_t wholeDown = 0;
};

struct DctLayout {
  std::uint32_t mostHorizontal = 1;
  std::uint32_t mostVertical = 1;
  std::uint32_t unitsAcross = 0;  // MCUs of scans with several components
  std::uint32_t unitsDown = 0;
  std::size_t count = 0;
  std::array<DctComponent, kMostComponents> components{};

  /// Of all components, without those that only fill up.
  [[nodiscard]] std::uint64_t Blocks() const;
};

DctLayout MakeDctLayout(const FrameHeader& header);

/// MCUs of a scan. Throws CodecFailure where one has more blocks than the ten that there may be.
std::uint64_t UnitsOf(const DctLayout& layout, const ScanHeader& scan);

/// Calls visit(place in the scan, block row, block column) for the blocks of one MCU.
template <class Visit>
void VisitBlocks(const DctLayout& layout, const ScanHeader& scan, std::uint64_t unit,
                 Visit&& visit) {
  if (scan.count == 1) {
    const std::uint32_t across = layout.components[scan.components[0].index].blocksAcross;
    visit(0, static_cast<std::uint32_t>(unit / across), static_cast<std::uint32_t>(unit % across));
    return;
  }
  const auto row = static_cast<std::uint32_t>(unit / layout.unitsAcross);
  const auto column = static_cast<std::uint32_t>(unit % layout.unitsAcross);
  for (std::size_t at = 0; at < scan.count; ++at) {
    const DctComponent& component = layout.components[scan.components[at].index];
    for (std::uint32_t y = 0; y < component.vertical; ++y) {
      for (std::uint32_t x = 0; x < component.horizontal; ++x) {
        visit(at, row * component.vertical + y, column * component.horizontal + x);
      }
    }
  }
}

}  // namespace tessaret::codecs
