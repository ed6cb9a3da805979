#include "jpeg2000/tile_decoder.h"

#include <algorithm>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// Looks at code blocks that any stream may have, in all of its tiles together, besides those that its bytes allow.
constexpr std::uint64_t kFreeLooks = std::uint64_t{1} << 26;
constexpr std::uint64_t kLooksOfByte = 64;

/// Coefficients as block decoders have them, to what wavelets take.
struct Reconstruct {
  std::uint32_t roiShift = 0;
  float halfStep = 0;

  /// What was shifted up out of the range of all others goes back (ISO/IEC 15444-1, H.1). Sizes are twice what they stand for.
  [[nodiscard]] std::uint32_t Size(std::uint32_t coefficient) const {
    const std::uint32_t size = coefficient & 0x7FFFFFFF;
    const bool isShifted = roiShift < kMostPlanes && size >> (roiShift + 1) != 0;
    return isShifted ? size >> roiShift : size;
  }

  void Put(std::uint32_t coefficient, std::int32_t& to) const {
    const auto size = static_cast<std::int32_t>(Size(coefficient) >> 1);
    to = coefficient >> 31 != 0 ? -size : size;
  }
  void Put(std::uint32_t coefficient, float& to) const {
    const auto size = static_cast<std::int32_t>(Size(coefficient));
    to = static_cast<float>(coefficient >> 31 != 0 ? -size : size) * halfStep;
  }
};

/// Rows of four lie side by side where a block was decoded.
template <class Sample>
void PutBlock(const std::uint32_t* from, std::uint32_t width, std::uint32_t height,
              const Reconstruct& reconstruct, Sample* to, std::size_t stride) {
  for (std::uint32_t y = 0; y < height; y += 4, from += 4 * std::size_t{width}) {
    const std::uint32_t rows = std::min(height - y, 4U);
    for (std::uint32_t row = 0; row < rows; ++row) {
      Sample* const line = to + (y + row) * stride;
      for (std::uint32_t x = 0; x < width; ++x) reconstruct.Put(from[4 * x + row], line[x]);
    }
  }
}

}  // namespace

TileDecoder::TileDecoder(const Jpeg2000Header& header, MutableBytes frame,
                         std::uint32_t bytesPerSample)
    : header_(header),
      frame_(frame),
      bytesPerSample_(bytesPerSample),
      looks_(kFreeLooks + kLooksOfByte * header.codeStream.size()) {}

Bytes TileDecoder::Gather(std::span<const TilePart> parts) {
  if (parts.size() == 1) return parts[0].data;
  joined_.clear();
  for (const TilePart& part : parts) {
    joined_.insert(joined_.end(), part.data.begin(), part.data.end());
  }
  return joined_;
}

bool TileDecoder::DecodeBlock(const CodeBlock& block, const ComponentParameters& component,
                              const GridArea& area, Band band) {
  if (block.passes == 0) return false;
  blockParts_.clear();
  for (std::uint32_t at = block.firstPart; at != kNone; at = packetParts_[at].next) {
    blockParts_.push_back({packetParts_[at].bytes, packetParts_[at].passes});
  }
  blocks_.Decode({.width = area.Width(),
                  .height = area.Height(),
                  .planes = block.planes,
                  .style = component.blockStyle,
                  .band = band},
                 blockParts_);
  return true;
}

template <class Sample>
void TileDecoder::DecodeBlocks(const Precinct& precinct, std::vector<Sample>& samples) {
  const ComponentParameters& component = parameters_.components[precinct.component];
  const std::vector<GridArea>& resolutions = layout_.components[precinct.component].resolutions;
  const std::size_t stride = resolutions.back().Width();
  for (std::uint32_t at = 0; at < precinct.bandCount; ++at) {
    const PrecinctBand& part = layout_.precinctBands[precinct.firstBand + at];
    const TileBand& band = layout_.bands[part.bandAt];
    const auto number = static_cast<std::uint32_t>(part.band);
    std::size_t begin = 0;
    if ((number & 1) != 0) begin += resolutions[precinct.resolution - 1].Width();
    if ((number & 2) != 0) begin += resolutions[precinct.resolution - 1].Height() * stride;
    const Reconstruct reconstruct{.roiShift = component.roiShift, .halfStep = band.step / 2};
    for (std::uint32_t index = 0; index < part.wide * part.high; ++index) {
      const GridArea area = AreaOfBlock(part, index, component.partition, precinct.resolution);
      if (!DecodeBlock(layout_.blocks[part.firstBlock + index], component, area, part.band)) {
        continue;
      }
      Sample* const to =
          &samples[begin + (area.y0 - band.area.y0) * stride + (area.x0 - band.area.x0)];
      PutBlock(blocks_.Coefficients(), area.Width(), area.Height(), reconstruct, to, stride);
    }
  }
}

void TileDecoder::DecodeBlocks(const Precinct& precinct) {
  SamplePlane& plane = planes_[precinct.component];
  if (plane.isReversible) {
    DecodeBlocks(precinct, plane.integers);
  } else {
    DecodeBlocks(precinct, plane.reals);
  }
}

void TileDecoder::TransformBack() {
  for (std::size_t index = 0; index < planes_.size(); ++index) {
    const std::vector<GridArea>& resolutions = layout_.components[index].resolutions;
    if (planes_[index].isReversible) {
      integers_.Run(planes_[index].integers, resolutions);
    } else {
      reals_.Run(planes_[index].reals, resolutions);
    }
  }
  if (parameters_.isTransformed) TransformColoursBack(planes_);
}

void TileDecoder::Decode(std::span<const TilePart> parts) {
  parameters_ = ParametersOfTile(header_, parts);
  const GridArea area = AreaOfTile(header_, parts[0].tile);
  layout_.Make(area, parameters_, header_.precision);
  packetParts_.clear();
  const Bytes data = Gather(parts);
  PacketReader(layout_, parameters_, looks_).Read(data, packetParts_);
  const std::size_t count = std::size_t{area.Width()} * area.Height();
  planes_.resize(header_.components);
  for (std::size_t index = 0; index < planes_.size(); ++index) {
    SamplePlane& plane = planes_[index];
    plane.isReversible = parameters_.components[index].isReversible;
    plane.integers.assign(plane.isReversible ? count : 0, 0);
    plane.reals.assign(plane.isReversible ? 0 : count, 0);
  }
  for (const Precinct& precinct : layout_.precincts) DecodeBlocks(precinct);
  TransformBack();
  GridArea inFrame = area;
  inFrame.x0 -= header_.across.begin;
  inFrame.x1 -= header_.across.begin;
  inFrame.y0 -= header_.down.begin;
  inFrame.y1 -= header_.down.begin;
  WriteSamples(
      planes_, inFrame, header_.columns,
      {.precision = header_.precision, .isSigned = header_.isSigned, .bytes = bytesPerSample_},
      frame_);
}

}  // namespace tessaret::codecs
