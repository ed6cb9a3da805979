// Tag trees of packet headers (ISO/IEC 15444-1, B.10.2): numbers of a rectangle, of which each packet tells as much as it needs.
#pragma once

#include <cstdint>
#include <vector>

#include "jpeg2000/packet_bits.h"

namespace tessaret::codecs {

/// Of a number it is known that it is not below `least`, or that it is that.
struct TagNode {
  std::uint16_t least = 0;
  bool isKnown = false;
};

/// Nodes are kept by whoever has many trees: level by level from the leaves on.
class TagTree {
 public:
  TagTree() = default;
  /// Takes its nodes at the end of `nodes`.
  TagTree(std::uint32_t wide, std::uint32_t high, std::vector<TagNode>& nodes);

  /// Reads on until the leaf's number is known or known not to be below `limit`. What is known of it then.
  TagNode Read(std::uint32_t x, std::uint32_t y, std::uint32_t limit, PacketBits& bits,
               std::vector<TagNode>& nodes) const;

 private:
  std::size_t first_ = 0;
  std::uint32_t wide_ = 0;
  std::uint32_t high_ = 0;
};

}  // namespace tessaret::codecs
