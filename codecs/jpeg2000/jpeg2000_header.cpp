#include "jpeg2000/jpeg2000_header.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <utility>
#include <vector>

#include "base/byte_order.h"
#include "failure.h"
#include "jpeg2000/block_decoder.h"
#include "jpeg2000/jp2_boxes.h"

namespace tessaret::codecs {
namespace {

enum Marker : std::uint32_t {
  kStartOfCodeStream = 0xFF4F,
  kCapabilities = 0xFF50,  // of high throughput
  kSize = 0xFF51,
  kTileLengths = 0xFF55,
  kPacketLengths = 0xFF57,
  kTilePacketLengths = 0xFF58,
  kPackedHeaders = 0xFF60,
  kPackedTileHeaders = 0xFF61,
  kRegistration = 0xFF63,
  kFirstExtension = 0xFF72,  // of ISO/IEC 15444-2
  kLastExtension = 0xFF7F,
  kStartOfTilePart = 0xFF90,
  kStartOfPacket = 0xFF91,
  kEndOfPacketHeader = 0xFF92,
  kStartOfData = 0xFF93,
  kEndOfCodeStream = 0xFFD9,
};

/// Different ones; each is looked at for all tiles.
constexpr std::size_t kMostStyles = 64;
constexpr std::size_t kTilePartSize = 12;  // of the marker and its segment
/// Neither images nor tiles begin far from the origin of their grid.
constexpr std::uint32_t kMostOffset = 65535;

/// Positions of the grid at which packets may be looked for, besides those that a stream's bytes allow.
constexpr std::uint64_t kFreePositions = std::uint64_t{1} << 22;

/// Code blocks, and looks at them, that any stream may have: they need not take any bytes, but memory and time.
constexpr std::uint64_t kFreeBlocks = std::uint64_t{1} << 19;
constexpr std::uint64_t kFreeLooks = std::uint64_t{1} << 26;
/// From here on OpenJPEG takes a code block that was in none of as many layers for one that is there, which takes bytes.
constexpr std::uint64_t kMostEmptyLayers = 1000;

/// How many precincts one tile has along one direction, at a resolution that is `shift` times halved.
std::uint64_t Precincts(const GridDirection& size, std::uint32_t tile, std::uint32_t shift,
                        std::uint32_t exponent) {
  const std::uint64_t begin = CeilShift(size.TileStart(tile), shift);
  const std::uint64_t end = CeilShift(size.TileEnd(tile), shift);
  return end > begin ? CeilShift(end, exponent) - (begin >> exponent) : 0;
}

/// The same of all tiles.
std::uint64_t AllPrecincts(const GridDirection& size, std::uint32_t shift, std::uint32_t exponent) {
  std::uint64_t count = 0;
  for (std::uint32_t tile = 0; tile < size.Tiles(); ++tile) {
    count += Precincts(size, tile, shift, exponent);
  }
  return count;
}

/// What a marker has to do in the main header, or in a tile part's: a wrong place tells that bytes are not what they were.
bool IsMisplaced(std::uint32_t marker, bool isMain) {
  switch (marker) {
    case kTileLengths:
    case kPacketLengths:
    case kRegistration:
    case kCapabilities:
      return !isMain;
    case kTilePacketLengths:
    case kStartOfData:
      return isMain;
    case kStartOfCodeStream:
    case kStartOfTilePart:
    case kStartOfPacket:
    case kEndOfPacketHeader:
    case kEndOfCodeStream:
      return true;
    default:
      return false;
  }
}

/// What there was of a tile's parts, and the number that they told, where they did.
struct PartCount {
  std::uint16_t found = 0;
  std::uint8_t announced = 0;
};

class Walk {
 public:
  explicit Walk(Bytes stream) : stream_(stream) {}

  Jpeg2000Header Run();

 private:
  std::uint32_t NextMarker();
  Bytes NextSegment();
  void ReadSize(Bytes segment);
  void ReadComponents(Bytes segment);
  void ReadHeaderSegment(std::uint32_t marker, bool isMain, CodingParameters& parameters);
  void CountPart(std::uint32_t tile, std::uint32_t part, std::uint32_t announced);
  void RequireAllParts() const;
  void AddStyles(const CodingParameters& parameters);
  void RequirePlausibleTiles() const;
  void RequirePlausiblePackets();
  void RequirePlausiblePackets(const Partition& style) const;
  void RequirePlausibleBlocks(const Partition& style);
  void ReadTilePart();

  Bytes stream_;
  std::size_t at_ = 0;
  Jpeg2000Header header_;
  std::uint32_t layers_ = 0;  // the most of any tile
  std::vector<Partition> styles_;
  std::vector<PartCount> partsOfTiles_;
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

GridDirection ReadDirection(const std::uint8_t* at) {
  GridDirection size;
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
  header_.across = ReadDirection(&segment[2]);
  header_.down = ReadDirection(&segment[6]);
  header_.columns = header_.across.Pixels();
  header_.rows = header_.down.Pixels();
  header_.components = LoadBig16(&segment[34]);
  if (header_.components == 0 || header_.components > kMostJpeg2000Components) {
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
  const std::uint64_t tiles = std::uint64_t{header_.across.Tiles()} * header_.down.Tiles();
  if (tiles > 65535 || tiles > stream_.size() / (kTilePartSize + 2)) {
    Fail("%zu bytes cannot hold %" PRIu64 " tiles", stream_.size(), tiles);
  }
}

void Walk::ReadHeaderSegment(std::uint32_t marker, bool isMain, CodingParameters& parameters) {
  if (IsMisplaced(marker, isMain)) Fail("marker %04X in a header of the code stream", marker);
  const Bytes segment = NextSegment();
  switch (marker) {
    case kPackedHeaders:
    case kPackedTileHeaders:
      Fail("packet headers apart from their packets are not supported");
    case kSize:
      Fail("a second size segment in the code stream");
    case kCapabilities:
      header_.isExtended = true;
      break;
    default:
      if (marker >= kFirstExtension && marker <= kLastExtension) header_.isExtended = true;
      break;
  }
  parameters.Read(marker, segment);
  if (marker == kCodingStyle) {
    layers_ = std::max(layers_, parameters.layers);
    header_.isTransformed = header_.isTransformed || parameters.isTransformed;
  }
  if (marker == kCodingStyle || marker == kComponentCodingStyle) AddStyles(parameters);
}

void Walk::AddStyles(const CodingParameters& parameters) {
  for (std::uint32_t at = 0; at < parameters.componentCount; ++at) {
    const ComponentParameters& component = parameters.components[at];
    if (component.partition.blockWidth == 0) continue;  // not told yet
    header_.isReversible = header_.isReversible && component.isReversible;
    if ((component.blockStyle & kHighThroughput) != 0) header_.isExtended = true;
    if (std::find(styles_.begin(), styles_.end(), component.partition) != styles_.end()) continue;
    if (styles_.size() == kMostStyles) {
      Fail("more than %zu coding styles in the code stream", kMostStyles);
    }
    styles_.push_back(component.partition);
  }
}

/// A packet takes at least a byte, be it empty.
void Walk::RequirePlausiblePackets() {
  for (const Partition& style : styles_) {
    RequirePlausiblePackets(style);
    RequirePlausibleBlocks(style);
  }
}

void Walk::RequirePlausiblePackets(const Partition& style) const {
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
    packets +=
        AllPrecincts(header_.across, shift, across) * AllPrecincts(header_.down, shift, down);
  }
  packets *= std::uint64_t{layers_} * header_.components;
  if (packets > stream_.size()) {
    Fail("%zu bytes cannot hold %" PRIu64 " packets", stream_.size(), packets);
  }
  // Packets in the order of their positions are looked for at each that any resolution has.
  const std::uint64_t positions =
      (CeilShift(header_.columns, leastAcross) + header_.across.Tiles()) *
      (CeilShift(header_.rows, leastDown) + header_.down.Tiles()) * (style.levels + 1) *
      header_.components;
  if (positions > kFreePositions && positions / 64 > stream_.size()) {
    Fail("%zu bytes cannot have packets at %" PRIu64 " positions", stream_.size(), positions);
  }
}

/// There is something in memory for each code block, empty or not, and all of a packet's are looked at for each layer.
void Walk::RequirePlausibleBlocks(const Partition& style) {
  std::uint64_t blocks = 0;
  for (std::uint32_t level = 0; level <= style.levels; ++level) {
    // All resolutions but the least are three bands of half their size.
    const std::uint32_t half = level == 0 ? 0 : 1;
    const std::uint32_t shift = style.levels - level + half;
    const std::uint32_t across = std::min(style.precincts[level] % 16U - half, style.blockWidth);
    const std::uint32_t down = std::min(style.precincts[level] / 16U - half, style.blockHeight);
    blocks += (level == 0 ? 1U : 3U) * AllPrecincts(header_.across, shift, across) *
              AllPrecincts(header_.down, shift, down);
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

void Walk::CountPart(std::uint32_t tile, std::uint32_t part, std::uint32_t announced) {
  PartCount& count = partsOfTiles_[tile];
  if (part == 0 && count.found != 0) Fail("tile %u begins twice", tile);
  if (part != 0 && count.found == 0) Fail("tile %u does not begin", tile);
  // Some encoders announce one less than there are.
  if (part != count.found || (announced != 0 && part > announced)) {
    Fail("part %u of tile %u comes where part %u of %u should", part, tile, unsigned{count.found},
         announced);
  }
  ++count.found;
  count.announced = std::max(count.announced, static_cast<std::uint8_t>(announced));
}

void Walk::RequireAllParts() const {
  for (std::size_t tile = 0; tile < partsOfTiles_.size(); ++tile) {
    const PartCount& count = partsOfTiles_[tile];
    if (count.found == 0) Fail("the code stream does not have all of its tiles");
    if (count.found < count.announced) {
      Fail("tile %zu has %u of its %u parts", tile, unsigned{count.found},
           unsigned{count.announced});
    }
  }
}

/// From behind its marker to its end.
void Walk::ReadTilePart() {
  const std::size_t begin = at_ - 2;
  const Bytes segment = NextSegment();
  if (segment.size() != kTilePartSize - 4) Fail("a tile part header of %zu bytes", segment.size());
  const std::uint32_t tile = LoadBig16(segment.data());
  const std::size_t size = LoadBig32(&segment[2]);
  if (tile >= partsOfTiles_.size()) Fail("tile %u of %zu", tile, partsOfTiles_.size());
  CountPart(tile, segment[6], segment[7]);
  const std::size_t headers = at_;
  const bool hasHeaders = stream_.size() - at_ < 2 || LoadBig16(&stream_[at_]) != kStartOfData;
  CodingParameters parameters;
  if (hasHeaders) parameters = header_.parameters;
  parameters.BeginTile();
  for (;;) {
    const std::uint32_t marker = NextMarker();
    if (marker == kStartOfData) break;
    ReadHeaderSegment(marker, false, parameters);
  }
  const Bytes segments = stream_.subspan(headers, at_ - 2 - headers);
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
  header_.tileParts.push_back(
      {.tile = tile, .headers = segments, .data = stream_.subspan(at_, end - at_)});
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
  header_.parameters.componentCount = header_.components;
  for (; marker != kStartOfTilePart; marker = NextMarker()) {
    ReadHeaderSegment(marker, true, header_.parameters);
  }
  if (header_.parameters.layers == 0) Fail("the code stream has no coding style");
  RequirePlausiblePackets();
  partsOfTiles_.resize(std::size_t{header_.across.Tiles()} * header_.down.Tiles());
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
  RequireAllParts();
  RequirePlausiblePackets();
  std::stable_sort(
      header_.tileParts.begin(), header_.tileParts.end(),
      [](const TilePart& one, const TilePart& other) { return one.tile < other.tile; });
  return std::move(header_);
}

}  // namespace

CodingParameters ParametersOfTile(const Jpeg2000Header& header, std::span<const TilePart> parts) {
  CodingParameters parameters = header.parameters;
  parameters.BeginTile();
  for (const TilePart& part : parts) {
    for (Bytes left = part.headers; !left.empty();) {
      const std::size_t size = LoadBig16(&left[2]);
      parameters.Read(LoadBig16(left.data()), left.subspan(4, size - 2));
      left = left.subspan(2 + size);
    }
  }
  return parameters;
}

GridArea AreaOfTile(const Jpeg2000Header& header, std::uint32_t tile) {
  const std::uint32_t column = tile % header.across.Tiles();
  const std::uint32_t row = tile / header.across.Tiles();
  return {.x0 = header.across.TileStart(column),
          .y0 = header.down.TileStart(row),
          .x1 = header.across.TileEnd(column),
          .y1 = header.down.TileEnd(row)};
}

Jpeg2000Header ReadJpeg2000Header(Bytes stream) { return Walk(CodeStreamOf(stream)).Run(); }

}  // namespace tessaret::codecs
