#include "jpeg2000/coding_parameters.h"

#include <algorithm>

#include "base/byte_order.h"
#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kMostOrders = 5;
constexpr std::size_t kMostChanges = 32;

Progression OrderOf(std::uint32_t number) {
  if (number >= kMostOrders) Fail("progression order %u of the code stream", number);
  return static_cast<Progression>(number);
}

/// ISO/IEC 15444-1, table A.20
void ReadComponent(Bytes parameters, bool hasPrecincts, ComponentParameters& component) {
  constexpr std::size_t kFixed = 5;
  if (parameters.size() < kFixed) Fail("a coding style is cut");
  Partition partition;
  partition.levels = parameters[0];
  partition.blockWidth = parameters[1] + 2U;
  partition.blockHeight = parameters[2] + 2U;
  const std::uint32_t width = parameters[1];
  const std::uint32_t height = parameters[2];
  if (partition.levels > kMostLevels) Fail("the code stream has %u levels", partition.levels);
  if (width > 8 || height > 8 || width + height > 8) {
    Fail("the code stream has code blocks with exponents %u and %u", width + 2, height + 2);
  }
  if ((parameters[3] & 0x80) != 0) {
    Fail("the code stream has code blocks of style %u", unsigned{parameters[3]});
  }
  if (parameters[4] > 1) Fail("wavelet transform %u of the code stream", unsigned{parameters[4]});
  const std::size_t precincts = hasPrecincts ? partition.levels + std::size_t{1} : 0;
  if (parameters.size() != kFixed + precincts) Fail("a coding style is of a wrong size");
  partition.precincts.fill(0xFF);
  std::copy(parameters.begin() + kFixed, parameters.end(), partition.precincts.begin());
  for (std::size_t at = 1; at < precincts; ++at) {
    if (partition.precincts[at] % 16 == 0 || partition.precincts[at] < 16) {
      Fail("the code stream has empty precincts");
    }
  }
  component.partition = partition;
  component.blockStyle = parameters[3];
  component.isReversible = parameters[4] == 1;
}

/// ISO/IEC 15444-1, A.6.4
Quantisation ReadSteps(Bytes segment) {
  enum Kind : std::uint32_t { kNone, kDerived, kEach };
  if (segment.empty()) Fail("a quantisation is cut");
  const std::uint32_t kind = segment[0] & 0x1FU;
  if (kind > kEach) Fail("quantisation %u of the code stream", kind);
  Quantisation quantisation;
  quantisation.guardBits = segment[0] >> 5U;
  quantisation.isDerived = kind == kDerived;
  segment = segment.subspan(1);
  const std::size_t width = kind == kNone ? 1 : 2;
  const bool isWhole =
      kind == kDerived ? segment.size() == width : !segment.empty() && segment.size() % width == 0;
  if (!isWhole) Fail("a quantisation is of a wrong size");
  // More than there may be bands tell nothing.
  const std::size_t count = kind == kDerived ? 1 : std::min(segment.size() / width, kMostBands);
  for (std::size_t at = 0; at < count; ++at) {
    QuantisationStep& step = quantisation.steps[at];
    if (kind == kNone) {
      step.exponent = segment[at] >> 3;
    } else {
      const std::uint32_t both = LoadBig16(&segment[2 * at]);
      step.exponent = static_cast<std::uint8_t>(both >> 11);
      step.mantissa = both & 0x7FF;
    }
  }
  quantisation.count = static_cast<std::uint32_t>(count);
  return quantisation;
}

}  // namespace

QuantisationStep Quantisation::Of(std::uint32_t band) const {
  if (!isDerived) {
    if (band >= count) Fail("the code stream has steps of %u bands, and more bands", count);
    return steps[band];
  }
  if (count == 0) Fail("the code stream has no quantisation");
  QuantisationStep step = steps[0];
  const std::uint32_t finer = band == 0 ? 0 : (band - 1) / 3;
  step.exponent =
      static_cast<std::uint8_t>(step.exponent - std::min<std::uint32_t>(step.exponent, finer));
  return step;
}

void CodingParameters::BeginTile() {
  hasTileChanges_ = false;
  for (ComponentParameters& component : components) {
    component.hasOwnStyle = false;
    component.hasOwnQuantisation = false;
  }
}

ComponentParameters& CodingParameters::Component(std::uint32_t index, const char* what) {
  if (index >= componentCount) Fail("%s of component %u of %u", what, index, componentCount);
  return components[index];
}

void CodingParameters::ReadStyle(Bytes segment) {
  constexpr std::size_t kFixed = 5;
  if (segment.size() < kFixed) Fail("a coding style of %zu bytes", segment.size());
  if (segment[0] > 7) Fail("the code stream has coding style %u", unsigned{segment[0]});
  order = OrderOf(segment[1]);
  layers = LoadBig16(&segment[2]);
  if (layers == 0) Fail("the code stream has no layers");
  if (segment[4] > 1) Fail("component transform %u of the code stream", unsigned{segment[4]});
  isTransformed = segment[4] == 1;
  hasPacketStarts = (segment[0] & 2) != 0;
  hasPacketHeaderEnds = (segment[0] & 4) != 0;
  ComponentParameters read;
  ReadComponent(segment.subspan(kFixed), (segment[0] & 1) != 0, read);
  for (ComponentParameters& component : components) {
    if (component.hasOwnStyle) continue;
    component.partition = read.partition;
    component.blockStyle = read.blockStyle;
    component.isReversible = read.isReversible;
  }
}

void CodingParameters::ReadComponentStyle(Bytes segment) {
  if (segment.size() < 2) Fail("a coding style of %zu bytes", segment.size());
  ComponentParameters& component = Component(segment[0], "a coding style");
  ReadComponent(segment.subspan(2), (segment[1] & 1) != 0, component);
  component.hasOwnStyle = true;
}

void CodingParameters::ReadComponentQuantisation(Bytes segment) {
  if (segment.empty()) Fail("a quantisation is cut");
  ComponentParameters& component = Component(segment[0], "a quantisation");
  component.quantisation = ReadSteps(segment.subspan(1));
  component.hasOwnQuantisation = true;
}

void CodingParameters::ReadRegion(Bytes segment) {
  if (segment.size() != 3) Fail("a region of interest of %zu bytes", segment.size());
  if (segment[1] != 0) Fail("a region of interest of style %u", unsigned{segment[1]});
  Component(segment[0], "a region of interest").roiShift = segment[2];
}

/// ISO/IEC 15444-1, A.6.6
void CodingParameters::ReadChanges(Bytes segment) {
  constexpr std::size_t kEach = 7;
  if (segment.empty() || segment.size() % kEach != 0) {
    Fail("progression changes of %zu bytes", segment.size());
  }
  // The first of a tile's own take the place of those of the main header.
  if (!hasTileChanges_) changes.clear();
  hasTileChanges_ = true;
  for (; !segment.empty(); segment = segment.subspan(kEach)) {
    if (changes.size() == kMostChanges) Fail("more than %zu progression changes", kMostChanges);
    ProgressionPart part{.firstResolution = segment[0],
                         .firstComponent = segment[1],
                         .endLayer = LoadBig16(&segment[2]),
                         .endResolution = segment[4],
                         .endComponent = segment[5],
                         .order = OrderOf(segment[6])};
    if (part.endComponent == 0) part.endComponent = 256;
    changes.push_back(part);
  }
}

void CodingParameters::Read(std::uint32_t marker, Bytes segment) {
  switch (marker) {
    case kCodingStyle:
      ReadStyle(segment);
      break;
    case kComponentCodingStyle:
      ReadComponentStyle(segment);
      break;
    case kRegionOfInterest:
      ReadRegion(segment);
      break;
    case kQuantisation: {
      const Quantisation read = ReadSteps(segment);
      for (ComponentParameters& component : components) {
        if (!component.hasOwnQuantisation) component.quantisation = read;
      }
      break;
    }
    case kComponentQuantisation:
      ReadComponentQuantisation(segment);
      break;
    case kProgressionChange:
      ReadChanges(segment);
      break;
    default:
      break;
  }
}

}  // namespace tessaret::codecs
