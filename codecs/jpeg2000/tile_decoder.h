// Decodes the tiles of a JPEG 2000 code stream into samples of a frame by pixel.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_format.h"
#include "jpeg2000/block_decoder.h"
#include "jpeg2000/jpeg2000_header.h"
#include "jpeg2000/packet_reader.h"
#include "jpeg2000/sample_planes.h"
#include "jpeg2000/tile_layout.h"
#include "jpeg2000/wavelet.h"

namespace tessaret::codecs {

/// Of use for all tiles of one stream, one after the other.
class TileDecoder {
 public:
  /// The header's stream lives longer, and its image is that of the frame.
  TileDecoder(const Jpeg2000Header& header, MutableBytes frame, std::uint32_t bytesPerSample);

  /// From these parts of a tile, all that there are.
  void Decode(std::span<const TilePart> parts);

 private:
  Bytes Gather(std::span<const TilePart> parts);
  void DecodeBlocks(const Precinct& precinct);
  template <class Sample>
  void DecodeBlocks(const Precinct& precinct, std::vector<Sample>& samples);
  bool DecodeBlock(const CodeBlock& block, const ComponentParameters& component,
                   const GridArea& area, Band band);
  void TransformBack();

  const Jpeg2000Header& header_;
  MutableBytes frame_;
  std::uint32_t bytesPerSample_;
  std::uint64_t looks_;  // at code blocks that all tiles yet to come may have
  CodingParameters parameters_;
  TileLayout layout_;
  std::vector<std::uint8_t> joined_;  // the data of several parts
  std::vector<PacketPart> packetParts_;
  std::vector<BlockPart> blockParts_;
  BlockDecoder blocks_;
  std::vector<SamplePlane> planes_;
  InverseWavelet<std::int32_t> integers_;
  InverseWavelet<float> reals_;
};

}  // namespace tessaret::codecs
