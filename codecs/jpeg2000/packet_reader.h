// The packets of a tile (ISO/IEC 15444-1, B.9 and B.10): which bytes belong to which passes of which code blocks.
#pragma once

#include <cstdint>
#include <vector>

#include "frame_format.h"
#include "jpeg2000/coding_parameters.h"
#include "jpeg2000/packet_bits.h"
#include "jpeg2000/tile_layout.h"

namespace tessaret::codecs {

/// Some bytes of a code block, and the passes that end in them or are all of theirs.
struct PacketPart {
  Bytes bytes;
  std::uint16_t passes = 0;
  std::uint32_t next = kNone;  // the block's next one
};

class PacketReader {
 public:
  /// Looks at code blocks that packets tell nothing of take time and no bytes; `looks` is how many more there may be.
  PacketReader(TileLayout& tile, const CodingParameters& parameters, std::uint64_t& looks)
      : tile_(tile), parameters_(parameters), looks_(looks) {}

  /// Reads all packets of the tile. Data may end early behind a packet: then there are no others. Throws CodecFailure where they end
  /// within one, and where one says what cannot be.
  void Read(Bytes data, std::vector<PacketPart>& parts);

 private:
  void ReadPacket(Precinct& precinct);
  void ReadHeader(const Precinct& precinct);
  void ReadBlocks(const Precinct& precinct, const PrecinctBand& part, PacketBits& bits);
  bool IsIncluded(const Precinct& precinct, const PrecinctBand& part, std::uint32_t index,
                  PacketBits& bits);
  void ReadBlock(const Precinct& precinct, CodeBlock& block, PacketBits& bits);
  void Skip(std::uint32_t marker, std::size_t size);

  TileLayout& tile_;
  const CodingParameters& parameters_;
  std::uint64_t& looks_;
  std::vector<PacketPart>* parts_ = nullptr;
  std::vector<std::uint32_t> lengths_;  // of the parts of a packet, before their bytes are known
  Bytes data_;
};

}  // namespace tessaret::codecs
