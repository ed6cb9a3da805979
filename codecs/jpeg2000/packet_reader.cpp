#include "jpeg2000/packet_reader.h"

#include <bit>

#include "base/byte_order.h"
#include "failure.h"
#include "jpeg2000/block_decoder.h"
#include "jpeg2000/progression.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kPacketStart = 0xFF91;
constexpr std::uint32_t kPacketHeaderEnd = 0xFF92;

constexpr std::uint32_t kFirstLengthBits = 3;
constexpr std::uint32_t kMostLengthBits = 32;

/// Of the most planes that a quantisation can mean. Some encoders have more passes than their own planes.
constexpr std::uint32_t kMostPasses = 109;

/// More planes may lack than any block has.
constexpr std::uint32_t kMostMissingPlanes = 1000;

/// ISO/IEC 15444-1, table B.4
std::uint32_t ReadPasses(PacketBits& bits) {
  if (!bits.Read()) return 1;
  if (!bits.Read()) return 2;
  std::uint32_t more = bits.Read(2);
  if (more < 3) return 3 + more;
  more = bits.Read(5);
  if (more < 31) return 6 + more;
  return 37 + bits.Read(7);
}

}  // namespace

void PacketReader::Skip(std::uint32_t marker, std::size_t size) {
  if (data_.size() < size || LoadBig16(data_.data()) != marker) {
    Fail("marker %04X of a packet is not there", marker);
  }
  data_ = data_.subspan(size);
}

bool PacketReader::IsIncluded(const Precinct& precinct, const PrecinctBand& part,
                              std::uint32_t index, PacketBits& bits) {
  CodeBlock& block = tile_.blocks[part.firstBlock + index];
  if (block.lengthBits != 0) return bits.Read();
  const std::uint32_t x = index % part.wide;
  const std::uint32_t y = index / part.wide;
  const std::uint32_t layer = precinct.layersRead;
  const TagNode first = part.inclusion.Read(x, y, layer + 1, bits, tile_.tagNodes);
  if (!first.isKnown || first.least > layer) return false;
  const TagNode missing = part.planes.Read(x, y, kMostMissingPlanes, bits, tile_.tagNodes);
  const std::uint32_t planes = tile_.bands[part.bandAt].planes;
  if (!missing.isKnown || missing.least > planes) Fail("a code block has fewer than no bit planes");
  if (planes - missing.least > kMostPlanes) {
    Fail("a code block has %u bit planes", planes - missing.least);
  }
  block.planes = static_cast<std::uint8_t>(planes - missing.least);
  block.lengthBits = kFirstLengthBits;
  return true;
}

void PacketReader::ReadBlock(const Precinct& precinct, CodeBlock& block, PacketBits& bits) {
  const std::uint32_t style = parameters_.components[precinct.component].blockStyle;
  std::uint32_t passes = ReadPasses(bits);
  if (block.passes + passes > kMostPasses) {
    Fail("a code block has %u passes", block.passes + passes);
  }
  while (bits.Read()) {
    if (++block.lengthBits > kMostLengthBits) Fail("a length of more than 32 bits in a packet");
  }
  while (passes != 0) {
    const std::uint32_t count = std::min(passes, EndOfPasses(block.passes, style) - block.passes);
    const std::uint32_t width =
        block.lengthBits + static_cast<std::uint32_t>(std::bit_width(count)) - 1;
    if (width > kMostLengthBits) Fail("a length of more than 32 bits in a packet");
    lengths_.push_back(bits.Read(width));
    const auto at = static_cast<std::uint32_t>(parts_->size());
    parts_->push_back({.bytes = {}, .passes = static_cast<std::uint16_t>(count)});
    if (block.lastPart == kNone) {
      block.firstPart = at;
    } else {
      (*parts_)[block.lastPart].next = at;
    }
    block.lastPart = at;
    block.passes = static_cast<std::uint16_t>(block.passes + count);
    passes -= count;
  }
}

void PacketReader::ReadBlocks(const Precinct& precinct, const PrecinctBand& part,
                              PacketBits& bits) {
  const std::uint32_t count = part.wide * part.high;
  if (count > looks_) Fail("too few bytes for the code blocks of the code stream");
  looks_ -= count;
  for (std::uint32_t index = 0; index < count; ++index) {
    if (IsIncluded(precinct, part, index, bits)) {
      ReadBlock(precinct, tile_.blocks[part.firstBlock + index], bits);
    }
  }
}

void PacketReader::ReadHeader(const Precinct& precinct) {
  PacketBits bits(data_);
  if (bits.Read()) {
    for (std::uint32_t at = 0; at < precinct.bandCount; ++at) {
      ReadBlocks(precinct, tile_.precinctBands[precinct.firstBand + at], bits);
    }
  }
  data_ = data_.subspan(bits.End());
}

void PacketReader::ReadPacket(Precinct& precinct) {
  constexpr std::size_t kStartSize = 6;
  const std::size_t first = parts_->size();
  lengths_.clear();
  if (parameters_.hasPacketStarts) Skip(kPacketStart, kStartSize);
  ReadHeader(precinct);
  if (parameters_.hasPacketHeaderEnds) Skip(kPacketHeaderEnd, 2);
  for (std::size_t at = 0; at < lengths_.size(); ++at) {
    if (lengths_[at] > data_.size()) Fail("the code stream ends within a packet");
    (*parts_)[first + at].bytes = data_.first(lengths_[at]);
    data_ = data_.subspan(lengths_[at]);
  }
}

void PacketReader::Read(Bytes data, std::vector<PacketPart>& parts) {
  data_ = data;
  parts_ = &parts;
  ForPackets(parameters_, tile_, [this](Precinct& precinct) {
    const bool hasMarkers = parameters_.hasPacketStarts || parameters_.hasPacketHeaderEnds;
    if (data_.empty() && hasMarkers) Fail("packets of the code stream are not there");
    if (data_.empty()) return false;
    ReadPacket(precinct);
    return true;
  });
}

}  // namespace tessaret::codecs
