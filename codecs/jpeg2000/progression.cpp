#include "jpeg2000/progression.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace tessaret::codecs {
namespace {

using Key = std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>;

/// By what precincts come one behind the other, where layers are not asked for.
Key KeyOf(const Precinct& precinct, Progression order) {
  const auto& [component, resolution, index, x, y, layers, band, bands] = precinct;
  switch (order) {
    case Progression::kLayerResolution:
    case Progression::kResolutionLayer:
      return {resolution, component, index, 0, 0};
    case Progression::kResolutionPosition:
      return {resolution, y, x, component, index};
    case Progression::kPositionComponent:
      return {y, x, component, resolution, index};
    case Progression::kComponentPosition:
      break;
  }
  return {component, y, x, resolution, index};
}

bool IsIn(const Precinct& precinct, const ProgressionPart& part) {
  return precinct.component >= part.firstComponent && precinct.component < part.endComponent &&
         precinct.resolution >= part.firstResolution && precinct.resolution < part.endResolution;
}

using Run = std::vector<Precinct*>;
using Each = std::function<bool(Precinct&)>;

/// All layers of each precinct in its turn. Whether there may be others.
bool ByPrecincts(std::span<Precinct* const> run, std::uint32_t endLayer, const Each& each) {
  for (Precinct* precinct : run) {
    while (precinct->layersRead < endLayer) {
      if (!each(*precinct)) return false;
      ++precinct->layersRead;
    }
  }
  return true;
}

/// Each layer of all precincts in its turn.
bool ByLayers(std::span<Precinct* const> run, std::uint32_t endLayer, const Each& each) {
  std::uint32_t layer = endLayer;
  for (const Precinct* precinct : run) layer = std::min(layer, precinct->layersRead);
  for (; layer < endLayer; ++layer) {
    for (Precinct* precinct : run) {
      if (precinct->layersRead != layer) continue;
      if (!each(*precinct)) return false;
      ++precinct->layersRead;
    }
  }
  return true;
}

bool ByResolutions(std::span<Precinct* const> run, std::uint32_t endLayer, const Each& each) {
  while (!run.empty()) {
    std::size_t count = 1;
    while (count < run.size() && run[count]->resolution == run[0]->resolution) ++count;
    if (!ByLayers(run.first(count), endLayer, each)) return false;
    run = run.subspan(count);
  }
  return true;
}

bool ForPart(const ProgressionPart& part, std::uint32_t layers, TileLayout& tile, Run& run,
             const Each& each) {
  const std::uint32_t endLayer = std::min(part.endLayer, layers);
  run.clear();
  // Those of which all layers came before are not put in order again, for each part in vain.
  for (Precinct& precinct : tile.precincts) {
    if (precinct.layersRead < endLayer && IsIn(precinct, part)) run.push_back(&precinct);
  }
  std::sort(run.begin(), run.end(), [&](const Precinct* one, const Precinct* other) {
    return KeyOf(*one, part.order) < KeyOf(*other, part.order);
  });
  switch (part.order) {
    case Progression::kLayerResolution:
      return ByLayers(run, endLayer, each);
    case Progression::kResolutionLayer:
      return ByResolutions(run, endLayer, each);
    default:
      return ByPrecincts(run, endLayer, each);
  }
}

}  // namespace

void ForPackets(const CodingParameters& parameters, TileLayout& tile, const Each& each) {
  Run run;
  run.reserve(tile.precincts.size());
  if (parameters.changes.empty()) {
    const ProgressionPart all{.endLayer = parameters.layers,
                              .endResolution = kMostLevels + 1,
                              .endComponent = kMostJpeg2000Components,
                              .order = parameters.order};
    ForPart(all, parameters.layers, tile, run, each);
    return;
  }
  for (const ProgressionPart& part : parameters.changes) {
    if (!ForPart(part, parameters.layers, tile, run, each)) return;
  }
}

}  // namespace tessaret::codecs
