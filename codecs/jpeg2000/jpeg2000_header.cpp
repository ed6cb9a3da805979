#include "jpeg2000/jpeg2000_header.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <vector>

#include "base/byte_order.h"
#include "failure.h"
#include "jpeg2000/jp2_boxes.h"

namespace tessaret::codecs {
namespace {

enum Marker : std::uint32_t {
  kStartOfCodeStream = 0xFF4F,
  kSize = 0xFF51,
  kCodingStyle = 0xFF52,
  kComponentCodingStyle = 0xFF53,
  kPackedHeaders = 0xFF60,
  kPackedTileHeaders = 0xFF61,
  kStartOfTilePart = 0xFF90,
  kStartOfData = 0xFF93,
  kEndOfCodeStream = 0xFFD9,
};

constexpr std::uint32_t kMostComponents = 4;
constexpr std::uint32_t kMostLevels = 32;
/// Different ones; each is looked at for all tiles.
constexpr std::size_t kMostStyles = 64;
constexpr std::size_t kTilePartSize = 12;  // of the marker and its segment
/// Neither images nor tiles begin far from the origin of their grid.
constexpr std::uint32_t kMostOffset = 65535;

/// Positions of the grid at which the library may look for packets, besides those that a stream's bytes allow.
constexpr std::uint64_t kFreePositions = std::uint64_t{1} << 22;

/// Code blocks, and looks at them, that any stream may have: they need not take any bytes, but memory and time.
constexpr std::uint64_t kFreeBlocks = std::uint64_t{1} << 19;
constexpr std::uint64_t kFreeLooks = std::uint64_t{1} << 26;
/// From here on the library takes a code block that was in none of as many layers for one that is there, which takes bytes.
constexpr std::uint64_t kMostEmptyLayers = 1000;

struct Size {
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

/// How a component's samples are divided: with what its packets are counted.
struct Style {
  std::uint32_t levels = 0;
  std::uint32_t blockWidth = 0;  // exponents of code blocks
  std::uint32_t blockHeight = 0;
  std::array<std::uint8_t, kMostLevels + 1>
      precincts{};  // two exponents each, the lower for columns

  bool operator==(const Style&) const = default;
};

std::uint64_t CeilShift(std::uint64_t value, std::uint32_t shift) {
  return (value + (std::uint64_t{1} << shift) - 1) >> shift;
}

/// How many precincts one tile has along one direction, at a resolution that is `shift` times halved.
std::uint64_t Precincts(const Size& size, std::uint32_t tile, std::uint32_t shift,
                        std::uint32_t exponent) {
  const std::uint64_t begin = CeilShift(size.TileStart(tile), shift);
  const std::uint64_t end = CeilShift(size.TileEnd(tile), shift);
  return end > begin ? CeilShift(end, exponent) - (begin >> exponent) : 0;
}

/// The same of all tiles.
std::uint64_t AllPrecincts(const Size& size, std::uint32_t shift, std::uint32_t exponent) {
  std::uint64_t count = 0;
  for (std::uint32_t tile = 0; tile < size.Tiles(); ++tile) {
    count += Precincts(size, tile, shift, exponent);
  }
  return count;
}

class Walk {
 public:
  explicit Walk(Bytes stream) : stream_(stream) {}

  Jpeg2000Header Run();

 private:
  std::uint32_t NextMarker();
  Bytes NextSegment();
  void ReadSize(Bytes segment);
  void ReadComponents(Bytes segment);
  void ReadHeaderSegment(std::uint32_t marker, Bytes segment);
  void ReadCodingStyle(Bytes segment);
  void ReadComponentCodingStyle(Bytes segment);
  void AddStyle(Bytes parameters, bool hasPrecincts);
  void RequirePlausibleTiles() const;
  void RequirePlausiblePackets();
  void RequirePlausiblePackets(const Style& style) const;
  void RequirePlausibleBlocks(const Style& style);
  void ReadTilePart();

  Bytes stream_;
  std::size_t at_ = 0;
  Jpeg2000Header header_;
  Size across_;
  Size down_;
  std::uint32_t layers_ = 0;  // the most of any tile
  std::vector<Style> styles_;
  std::vector<bool> hasTile_;
};

std::uint32_t Walk::NextMarker() {
  if (stream_.size() - at_ < 2) Fail("the code stream ends early");
  const std::uint32_t marker = LoadBig16(&stream_[at_]);
  if (marker < 0xFF00) Fail("byte %zu of the code stream begins no marker", at_);
  at_ += 2;
  return marker;
}

Bytes Walk::NextSegment() {
  if (stream_.size() - at_ < 2) Fail("the code stream ends early");
  const std::size_t size = LoadBig16(&stream_[at_]);
  if (size < 2) Fail("a marker segment of %zu bytes in the code stream", size);
  if (size > stream_.size() - at_) Fail("the code stream ends early");
  const Bytes segment = stream_.subspan(at_ + 2, size - 2);
  at_ += size;
  return segment;
}

Size ReadDirection(const std::uint8_t* at) {
  Size size;
  size.end = LoadBig32(at);
  size.begin = LoadBig32(at + 8);
  size.tile = LoadBig32(at + 16);
  size.tileBegin = LoadBig32(at + 24);
  if (size.begin >= size.end || size.begin > kMostOffset || size.end > 2 * kMostOffset) {
    Fail("the code stream has pixels from %u to %u", size.begin, size.end);
  }
  if (size.tile == 0 || size.tileBegin > size.begin ||
      std::uint64_t{size.tileBegin} + size.tile <= size.begin) {
    Fail("the code stream has tiles of %u from %u on, and pixels from %u on", size.tile,
         size.tileBegin, size.begin);
  }
  return size;
}

void Walk::ReadSize(Bytes segment) {
  constexpr std::size_t kFixed = 36;
  if (segment.size() < kFixed) Fail("a size segment of %zu bytes", segment.size());
  across_ = ReadDirection(&segment[2]);
  down_ = ReadDirection(&segment[6]);
  header_.columns = across_.Pixels();
  header_.rows = down_.Pixels();
  header_.components = LoadBig16(&segment[34]);
  if (header_.components == 0 || header_.components > kMostComponents) {
    Fail("the code stream has %u components", header_.components);
  }
  if (segment.size() != kFixed + std::size_t{3} * header_.components) {
    Fail("a size segment of %zu bytes for %u components", segment.size(), header_.components);
  }
  ReadComponents(segment.subspan(kFixed));
  RequirePlausibleTiles();
}

void Walk::ReadComponents(Bytes segment) {
  const std::uint8_t depth = segment[0];
  header_.precision = (depth & 0x7FU) + 1;
  header_.isSigned = (depth & 0x80) != 0;
  for (std::size_t at = 0; at < segment.size(); at += 3) {
    if (segment[at] != depth) Fail("the components of the code stream have different samples");
    if (segment[at + 1] != 1 || segment[at + 2] != 1) {
      Fail("the code stream has components of fewer samples");
    }
  }
}

/// A tile takes at least the marker segments of an empty tile part.
void Walk::RequirePlausibleTiles() const {
  const std::uint64_t tiles = std::uint64_t{across_.Tiles()} * down_.Tiles();
  if (tiles > 65535 || tiles > stream_.size() / (kTilePartSize + 2)) {
    Fail("%zu bytes cannot hold %" PRIu64 " tiles", stream_.size(), tiles);
  }
}

void Walk::ReadHeaderSegment(std::uint32_t marker, Bytes segment) {
  switch (marker) {
    case kCodingStyle:
      ReadCodingStyle(segment);
      break;
    case kComponentCodingStyle:
      ReadComponentCodingStyle(segment);
      break;
    case kPackedHeaders:
    case kPackedTileHeaders:
      Fail("packet headers apart from their packets are not supported");
    case kSize:
      Fail("a second size segment in the code stream");
    default:
      break;
  }
}

void Walk::ReadCodingStyle(Bytes segment) {
  constexpr std::size_t kFixed = 5;
  if (segment.size() < kFixed) Fail("a coding style of %zu bytes", segment.size());
  if (segment[1] > 4) Fail("progression order %u of the code stream", unsigned{segment[1]});
  const std::uint32_t layers = LoadBig16(&segment[2]);
  if (layers == 0) Fail("the code stream has no layers");
  if (segment[4] > 1) Fail("component transform %u of the code stream", unsigned{segment[4]});
  layers_ = std::max(layers_, layers);
  header_.isTransformed = header_.isTransformed || segment[4] == 1;
  AddStyle(segment.subspan(kFixed), (segment[0] & 1) != 0);
}

void Walk::ReadComponentCodingStyle(Bytes segment) {
  if (segment.size() < 2) Fail("a coding style of %zu bytes", segment.size());
  if (segment[0] >= header_.components) {
    Fail("a coding style of component %u of %u", unsigned{segment[0]}, header_.components);
  }
  AddStyle(segment.subspan(2), (segment[1] & 1) != 0);
}

/// ISO/IEC 15444-1, table A.20
void Walk::AddStyle(Bytes parameters, bool hasPrecincts) {
  constexpr std::size_t kFixed = 5;
  if (parameters.size() < kFixed) Fail("a coding style is cut");
  Style style;
  style.levels = parameters[0];
  style.blockWidth = parameters[1] + 2U;
  style.blockHeight = parameters[2] + 2U;
  const std::uint32_t width = parameters[1];
  const std::uint32_t height = parameters[2];
  if (style.levels > kMostLevels) Fail("the code stream has %u levels", style.levels);
  if (width > 8 || height > 8 || width + height > 8) {
    Fail("the code stream has code blocks with exponents %u and %u", width + 2, height + 2);
  }
  if (parameters[4] > 1) Fail("wavelet transform %u of the code stream", unsigned{parameters[4]});
  header_.isReversible = header_.isReversible && parameters[4] == 1;
  const std::size_t precincts = hasPrecincts ? style.levels + std::size_t{1} : 0;
  if (parameters.size() != kFixed + precincts) Fail("a coding style is of a wrong size");
  style.precincts.fill(0xFF);
  std::copy(parameters.begin() + kFixed, parameters.end(), style.precincts.begin());
  for (std::size_t at = 1; at < precincts; ++at) {
    if (style.precincts[at] % 16 == 0 || style.precincts[at] < 16) {
      Fail("the code stream has empty precincts");
    }
  }
  if (std::find(styles_.begin(), styles_.end(), style) != styles_.end()) return;
  if (styles_.size() == kMostStyles) {
    Fail("more than %zu coding styles in the code stream", kMostStyles);
  }
  styles_.push_back(style);
}

/// A packet takes at least a byte, be it empty.
void Walk::RequirePlausiblePackets() {
  for (const Style& style : styles_) {
    RequirePlausiblePackets(style);
    RequirePlausibleBlocks(style);
  }
}

void Walk::RequirePlausiblePackets(const Style& style) const {
  std::uint64_t packets = 0;
  std::uint32_t leastAcross = 31;
  std::uint32_t leastDown = 31;
  for (std::uint32_t level = 0; level <= style.levels; ++level) {
    const std::uint32_t shift = style.levels - level;
    const std::uint32_t across = style.precincts[level] % 16;
    const std::uint32_t down = style.precincts[level] / 16;
    leastAcross = std::min(leastAcross, shift + across);
    leastDown = std::min(leastDown, shift + down);
    // Rows and columns of precincts are independent of each other.
    packets += AllPrecincts(across_, shift, across) * AllPrecincts(down_, shift, down);
  }
  packets *= std::uint64_t{layers_} * header_.components;
  if (packets > stream_.size()) {
    Fail("%zu bytes cannot hold %" PRIu64 " packets", stream_.size(), packets);
  }
  // Packets in the order of their positions are looked for at each that any resolution has.
  const std::uint64_t positions = (CeilShift(header_.columns, leastAcross) + across_.Tiles()) *
                                  (CeilShift(header_.rows, leastDown) + down_.Tiles()) *
                                  (style.levels + 1) * header_.components;
  if (positions > kFreePositions && positions / 64 > stream_.size()) {
    Fail("%zu bytes cannot have packets at %" PRIu64 " positions", stream_.size(), positions);
  }
}

/// The library has something for each code block, empty or not, and looks at all of a packet's for each layer.
void Walk::RequirePlausibleBlocks(const Style& style) {
  std::uint64_t blocks = 0;
  for (std::uint32_t level = 0; level <= style.levels; ++level) {
    // All resolutions but the least are three bands of half their size.
    const std::uint32_t half = level == 0 ? 0 : 1;
    const std::uint32_t shift = style.levels - level + half;
    const std::uint32_t across = std::min(style.precincts[level] % 16U - half, style.blockWidth);
    const std::uint32_t down = std::min(style.precincts[level] / 16U - half, style.blockHeight);
    blocks += (level == 0 ? 1U : 3U) * AllPrecincts(across_, shift, across) *
              AllPrecincts(down_, shift, down);
  }
  blocks *= header_.components;
  const std::uint64_t looks = blocks * std::min<std::uint64_t>(layers_, kMostEmptyLayers);
  if ((blocks > kFreeBlocks && blocks / 64 > stream_.size()) ||
      (looks > kFreeLooks && looks / 64 > stream_.size())) {
    Fail("%zu bytes cannot hold %" PRIu64 " code blocks in %u layers", stream_.size(), blocks,
         layers_);
  }
  header_.codeBlocks = std::max(header_.codeBlocks, blocks);
}

/// From behind its marker to its end.
void Walk::ReadTilePart() {
  const std::size_t begin = at_ - 2;
  const Bytes segment = NextSegment();
  if (segment.size() != kTilePartSize - 4) Fail("a tile part header of %zu bytes", segment.size());
  const std::uint32_t tile = LoadBig16(segment.data());
  const std::size_t size = LoadBig32(&segment[2]);
  if (tile >= hasTile_.size()) Fail("tile %u of %zu", tile, hasTile_.size());
  if (segment[6] == 0 && hasTile_[tile]) Fail("tile %u begins twice", tile);
  if (segment[6] != 0 && !hasTile_[tile]) Fail("tile %u does not begin", tile);
  hasTile_[tile] = true;
  for (;;) {
    const std::uint32_t marker = NextMarker();
    if (marker == kStartOfData) break;
    ReadHeaderSegment(marker, NextSegment());
  }
  std::size_t end = begin + size;
  if (size == 0) {
    // The last one may go on to the end marker without a length of its own.
    for (end = stream_.size(); end >= at_ + 2; --end) {
      if (LoadBig16(&stream_[end - 2]) == kEndOfCodeStream) break;
    }
    if (end < at_ + 2) Fail("the code stream ends early");
    end -= 2;
  }
  if (end < at_) Fail("a tile part of %zu bytes", size);
  if (end > stream_.size()) Fail("the code stream ends early");
  at_ = end;
}

Jpeg2000Header Walk::Run() {
  if (stream_.size() < 4 || LoadBig16(stream_.data()) != kStartOfCodeStream ||
      LoadBig16(&stream_[2]) != kSize) {
    Fail("the code stream does not begin as JPEG 2000 does");
  }
  at_ = 4;
  ReadSize(NextSegment());
  std::uint32_t marker = NextMarker();
  for (; marker != kStartOfTilePart; marker = NextMarker()) {
    ReadHeaderSegment(marker, NextSegment());
  }
  if (styles_.empty()) Fail("the code stream has no coding style");
  RequirePlausiblePackets();
  hasTile_.resize(std::size_t{across_.Tiles()} * down_.Tiles());
  while (marker == kStartOfTilePart) {
    ReadTilePart();
    header_.codeStream = stream_.first(at_);
    if (stream_.size() - at_ >= 2) {
      marker = NextMarker();
      continue;
    }
    // Without an end marker a stream is whole where its tile parts are, of which none ends as a marker does.
    if (stream_[at_ - 1] == 0xFF || LoadBig16(&stream_[at_ - 2]) == kEndOfCodeStream) {
      Fail("the code stream ends early");
    }
    marker = kEndOfCodeStream;
  }
  if (marker != kEndOfCodeStream) {
    Fail("marker %04X behind a tile part of the code stream", marker);
  }
  if (std::find(hasTile_.begin(), hasTile_.end(), false) != hasTile_.end()) {
    Fail("the code stream does not have all of its tiles");
  }
  RequirePlausiblePackets();
  return header_;
}

}  // namespace

Jpeg2000Header ReadJpeg2000Header(Bytes stream) { return Walk(CodeStreamOf(stream)).Run(); }

}  // namespace tessaret::codecs
