#include "jpeg2000/tile_layout.h"

#include <algorithm>
#include <cmath>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// What is halved `shift` times, of samples whose numbers are even or, with `odd`, of the others (equation B-15).
std::uint32_t BandPlace(std::uint32_t place, std::uint32_t shift, bool isHigh) {
  const std::uint64_t back = isHigh ? std::uint64_t{1} << (shift - 1) : 0;
  return place <= back ? 0 : static_cast<std::uint32_t>(CeilShift(place - back, shift));
}

GridArea BandArea(const GridArea& tile, std::uint32_t shift, Band band) {
  const bool isHighAcross = (static_cast<std::uint32_t>(band) & 1) != 0;
  const bool isHighDown = (static_cast<std::uint32_t>(band) & 2) != 0;
  return {.x0 = BandPlace(tile.x0, shift, isHighAcross),
          .y0 = BandPlace(tile.y0, shift, isHighDown),
          .x1 = BandPlace(tile.x1, shift, isHighAcross),
          .y1 = BandPlace(tile.y1, shift, isHighDown)};
}

/// The exponents of a resolution's precincts.
std::uint32_t AcrossExponent(const Partition& partition, std::uint32_t resolution) {
  return partition.precincts[resolution] % 16U;
}
std::uint32_t DownExponent(const Partition& partition, std::uint32_t resolution) {
  return partition.precincts[resolution] / 16U;
}

/// The exponents of its code blocks: none is larger than a precinct's part of a band.
std::uint32_t BlockWidth(const Partition& partition, std::uint32_t resolution) {
  const std::uint32_t half = resolution == 0 ? 0 : 1;
  return std::min(partition.blockWidth, AcrossExponent(partition, resolution) - half);
}
std::uint32_t BlockHeight(const Partition& partition, std::uint32_t resolution) {
  const std::uint32_t half = resolution == 0 ? 0 : 1;
  return std::min(partition.blockHeight, DownExponent(partition, resolution) - half);
}

/// The part of `area` in the rectangle of `1 << across` columns and `1 << down` rows that is the x-th and y-th of the grid.
GridArea PartOf(const GridArea& area, std::uint64_t x, std::uint64_t y, std::uint32_t across,
                std::uint32_t down) {
  const auto within = [](std::uint64_t place, std::uint32_t least, std::uint32_t most) {
    return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(place, least, most));
  };
  return {.x0 = within(x << across, area.x0, area.x1),
          .y0 = within(y << down, area.y0, area.y1),
          .x1 = within((x + 1) << across, area.x0, area.x1),
          .y1 = within((y + 1) << down, area.y0, area.y1)};
}

/// ISO/IEC 15444-1, E.1: equations E-2 to E-5.
TileBand MakeBand(const GridArea& area, const ComponentParameters& component, Band band,
                  std::uint32_t number, std::uint32_t precision) {
  const QuantisationStep step = component.quantisation.Of(number);
  const std::uint32_t planes = component.quantisation.guardBits + step.exponent;
  TileBand made;
  made.area = area;
  made.planes = (planes == 0 ? 0 : planes - 1) + component.roiShift;
  if (!component.isReversible) {
    constexpr std::uint32_t kGain[] = {0, 1, 1, 2};
    const auto range = static_cast<int>(precision + kGain[static_cast<std::size_t>(band)]);
    made.step =
        std::ldexp(1 + static_cast<float>(step.mantissa) / 2048, range - int{step.exponent});
  }
  return made;
}

}  // namespace

GridArea AreaOfBlock(const PrecinctBand& part, std::uint32_t index, const Partition& partition,
                     std::uint32_t resolution) {
  const std::uint32_t width = BlockWidth(partition, resolution);
  const std::uint32_t height = BlockHeight(partition, resolution);
  return PartOf(part.area, (part.area.x0 >> width) + std::uint64_t{index % part.wide},
                (part.area.y0 >> height) + std::uint64_t{index / part.wide}, width, height);
}

void TileLayout::AddPart(Band band, std::uint32_t bandAt, const GridArea& partArea,
                         std::uint32_t blockWidth, std::uint32_t blockHeight) {
  PrecinctBand part;
  part.band = band;
  part.bandAt = bandAt;
  part.area = partArea;
  part.firstBlock = static_cast<std::uint32_t>(blocks.size());
  if (!partArea.IsEmpty()) {
    part.wide = static_cast<std::uint32_t>(CeilShift(partArea.x1, blockWidth)) -
                (partArea.x0 >> blockWidth);
    part.high = static_cast<std::uint32_t>(CeilShift(partArea.y1, blockHeight)) -
                (partArea.y0 >> blockHeight);
    part.inclusion = TagTree(part.wide, part.high, tagNodes);
    part.planes = TagTree(part.wide, part.high, tagNodes);
    blocks.resize(blocks.size() + std::size_t{part.wide} * part.high);
  }
  precinctBands.push_back(part);
}

void TileLayout::AddPrecincts(const Precinct& model, const ComponentParameters& component,
                              std::uint32_t firstBand) {
  const Partition& partition = component.partition;
  const std::uint32_t resolution = model.resolution;
  const GridArea& whole = components[model.component].resolutions[resolution];
  if (whole.IsEmpty()) return;
  const std::uint32_t across = AcrossExponent(partition, resolution);
  const std::uint32_t down = DownExponent(partition, resolution);
  const std::uint32_t half = resolution == 0 ? 0 : 1;
  const std::uint32_t halvings = partition.levels - resolution;
  const std::uint64_t endX = CeilShift(whole.x1, across);
  const std::uint64_t endY = CeilShift(whole.y1, down);
  Precinct precinct = model;
  for (std::uint64_t y = whole.y0 >> down; y < endY; ++y) {
    for (std::uint64_t x = whole.x0 >> across; x < endX; ++x, ++precinct.index) {
      precinct.x =
          static_cast<std::uint32_t>(std::max<std::uint64_t>(area.x0, x << (across + halvings)));
      precinct.y =
          static_cast<std::uint32_t>(std::max<std::uint64_t>(area.y0, y << (down + halvings)));
      precinct.firstBand = static_cast<std::uint32_t>(precinctBands.size());
      precinct.bandCount = resolution == 0 ? 1 : 3;
      for (std::uint32_t at = 0; at < precinct.bandCount; ++at) {
        const auto band = static_cast<Band>(resolution == 0 ? 0 : at + 1);
        AddPart(band, firstBand + at,
                PartOf(bands[firstBand + at].area, x, y, across - half, down - half),
                BlockWidth(partition, resolution), BlockHeight(partition, resolution));
      }
      precincts.push_back(precinct);
    }
  }
}

void TileLayout::AddComponent(std::uint32_t index, const ComponentParameters& component,
                              std::uint32_t precision) {
  const std::uint32_t levels = component.partition.levels;
  components.emplace_back();
  for (std::uint32_t resolution = 0; resolution <= levels; ++resolution) {
    const std::uint32_t halvings = levels - resolution;
    components.back().resolutions.push_back(BandArea(area, halvings, Band::kLowLow));
    const auto firstBand = static_cast<std::uint32_t>(bands.size());
    if (resolution == 0) {
      bands.push_back(
          MakeBand(components.back().resolutions[0], component, Band::kLowLow, 0, precision));
    } else {
      for (std::uint32_t at = 0; at < 3; ++at) {
        const auto band = static_cast<Band>(at + 1);
        bands.push_back(MakeBand(BandArea(area, halvings + 1, band), component, band,
                                 3 * (resolution - 1) + 1 + at, precision));
      }
    }
    AddPrecincts({.component = index, .resolution = resolution}, component, firstBand);
  }
}

void TileLayout::Make(const GridArea& tile, const CodingParameters& parameters,
                      std::uint32_t precision) {
  area = tile;
  components.clear();
  bands.clear();
  precincts.clear();
  precinctBands.clear();
  blocks.clear();
  tagNodes.clear();
  for (std::uint32_t index = 0; index < parameters.componentCount; ++index) {
    AddComponent(index, parameters.components[index], precision);
  }
}

}  // namespace tessaret::codecs
