// How a tile is coded, as marker segments of the main header and of its tile parts tell it (ISO/IEC 15444-1, A.6).
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "frame_format.h"

namespace tessaret::codecs {

inline constexpr std::uint32_t kMostJpeg2000Components = 4;
inline constexpr std::uint32_t kMostLevels = 32;
inline constexpr std::size_t kMostBands = 3 * kMostLevels + 1;

/// The marker segments that are read here.
enum CodingMarker : std::uint32_t {
  kCodingStyle = 0xFF52,
  kComponentCodingStyle = 0xFF53,
  kRegionOfInterest = 0xFF5E,
  kQuantisation = 0xFF5C,
  kComponentQuantisation = 0xFF5D,
  kProgressionChange = 0xFF5F,
};

/// How a component's samples are divided: with what its packets are counted.
struct Partition {
  std::uint32_t levels = 0;
  std::uint32_t blockWidth = 0;  // exponents of code blocks
  std::uint32_t blockHeight = 0;
  std::array<std::uint8_t, kMostLevels + 1>
      precincts{};  // two exponents each, the lower for columns

  bool operator==(const Partition&) const = default;
};

/// Of one band: its step has an exponent and, where something is lost, a mantissa.
struct QuantisationStep {
  std::uint16_t mantissa = 0;
  std::uint8_t exponent = 0;
};

struct Quantisation {
  std::uint32_t guardBits = 0;
  std::uint32_t count = 0;  // of steps; 0 where none was read
  bool isDerived = false;   // all from the first one
  std::array<QuantisationStep, kMostBands> steps{};

  /// Of the bands in their order: the least resolution's, then three for each resolution. Throws CodecFailure where it is not there.
  [[nodiscard]] QuantisationStep Of(std::uint32_t band) const;
};

struct ComponentParameters {
  Partition partition;
  std::uint32_t blockStyle = 0;  // of table A.19
  bool isReversible = true;      // the 5/3 transform, and no step
  Quantisation quantisation;
  std::uint32_t roiShift = 0;
  // Whether these come from segments of the component's own, which go before those for all of the same header.
  bool hasOwnStyle = false;
  bool hasOwnQuantisation = false;
};

enum class Progression : std::uint8_t {
  kLayerResolution,
  kResolutionLayer,
  kResolutionPosition,
  kPositionComponent,
  kComponentPosition,
};

/// Packets that come in one order, as many of them as did not come before.
struct ProgressionPart {
  std::uint32_t firstResolution = 0;
  std::uint32_t firstComponent = 0;
  std::uint32_t endLayer = 0;
  std::uint32_t endResolution = 0;
  std::uint32_t endComponent = 0;
  Progression order = Progression::kLayerResolution;
};

struct CodingParameters {
  Progression order = Progression::kLayerResolution;
  std::uint32_t layers = 0;  // 0 where no coding style was read
  bool isTransformed = false;
  bool hasPacketStarts = false;      // SOP
  bool hasPacketHeaderEnds = false;  // EPH
  std::uint32_t componentCount = 0;
  std::array<ComponentParameters, kMostJpeg2000Components> components;
  std::vector<ProgressionPart> changes;  // where there are any, all packets come by these

  /// What follows is a tile's own, and goes before what was read up to now.
  void BeginTile();

  /// Reads one of the marker segments above, without its marker and length. Throws CodecFailure where it is none.
  void Read(std::uint32_t marker, Bytes segment);

 private:
  void ReadStyle(Bytes segment);
  void ReadComponentStyle(Bytes segment);
  void ReadRegion(Bytes segment);
  void ReadComponentQuantisation(Bytes segment);
  void ReadChanges(Bytes segment);
  ComponentParameters& Component(std::uint32_t index, const char* what);

  bool hasTileChanges_ = false;
};

}  // namespace tessaret::codecs
