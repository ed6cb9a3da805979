// What a tile is divided into (ISO/IEC 15444-1, B.5 to B.7): resolutions, their bands, precincts of these, and code blocks.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "jpeg2000/block_contexts.h"
#include "jpeg2000/coding_parameters.h"
#include "jpeg2000/tag_tree.h"
#include "jpeg2000/tile_grid.h"

namespace tessaret::codecs {

inline constexpr std::uint32_t kNone = ~std::uint32_t{0};

/// What packets tell of a code block.
struct CodeBlock {
  std::uint32_t firstPart = kNone;  // of its bytes
  std::uint32_t lastPart = kNone;
  std::uint16_t passes = 0;
  std::uint8_t planes = 0;
  std::uint8_t lengthBits = 0;  // Lblock; 0 before its first packet
};

/// One resolution's part of a band: its blocks lie in rows.
struct PrecinctBand {
  Band band = Band::kLowLow;
  std::uint32_t bandAt = 0;  // among the tile's bands
  GridArea area;
  std::uint32_t firstBlock = 0;
  std::uint32_t wide = 0;  // blocks
  std::uint32_t high = 0;
  TagTree inclusion;
  TagTree planes;
};

struct Precinct {
  std::uint32_t component = 0;
  std::uint32_t resolution = 0;
  std::uint32_t index = 0;  // among those of its resolution
  std::uint32_t x = 0;      // where it begins on the grid, for orders by position
  std::uint32_t y = 0;
  std::uint32_t layersRead = 0;
  std::uint32_t firstBand = 0;  // among the tile's parts of bands
  std::uint32_t bandCount = 0;
};

struct TileBand {
  GridArea area;
  std::uint32_t planes = 0;  // of its blocks, at most: Mb, and those by which regions are shifted
  float step = 1;            // of values that stand for themselves
};

/// All resolutions of a component, from the least on.
struct TileComponent {
  std::vector<GridArea> resolutions;
};

struct TileLayout {
  GridArea area;
  std::vector<TileComponent> components;
  std::vector<TileBand> bands;
  std::vector<Precinct> precincts;
  std::vector<PrecinctBand> precinctBands;
  std::vector<CodeBlock> blocks;
  std::vector<TagNode> tagNodes;

  /// Begins anew, with the memory that there is.
  void Make(const GridArea& tile, const CodingParameters& parameters, std::uint32_t precision);

 private:
  void AddComponent(std::uint32_t index, const ComponentParameters& component,
                    std::uint32_t precision);
  void AddPrecincts(const Precinct& model, const ComponentParameters& component,
                    std::uint32_t firstBand);
  void AddPart(Band band, std::uint32_t bandAt, const GridArea& area, std::uint32_t blockWidth,
               std::uint32_t blockHeight);
};

/// Of one block among those of a part.
GridArea AreaOfBlock(const PrecinctBand& part, std::uint32_t index, const Partition& partition,
                     std::uint32_t resolution);

}  // namespace tessaret::codecs
