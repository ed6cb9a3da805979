#include "jpeg2000/tag_tree.h"

#include <algorithm>
#include <array>

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t Half(std::uint32_t count) { return (count + 1) / 2; }

/// Levels halve 32 bits until one node is left.
constexpr std::size_t kMostTreeLevels = 33;

}  // namespace

TagTree::TagTree(std::uint32_t wide, std::uint32_t high, std::vector<TagNode>& nodes)
    : first_(nodes.size()), wide_(wide), high_(high) {
  std::size_t count = std::size_t{wide} * high;
  while (wide > 1 || high > 1) {
    wide = Half(wide);
    high = Half(high);
    count += std::size_t{wide} * high;
  }
  nodes.resize(first_ + count);
}

TagNode TagTree::Read(std::uint32_t x, std::uint32_t y, std::uint32_t limit, PacketBits& bits,
                      std::vector<TagNode>& nodes) const {
  std::array<TagNode*, kMostTreeLevels> path;
  std::size_t depth = 0;
  std::size_t first = first_;
  std::uint32_t wide = wide_;
  std::uint32_t high = high_;
  for (;;) {
    path[depth++] = &nodes[first + std::size_t{y} * wide + x];
    if (wide == 1 && high == 1) break;
    first += std::size_t{wide} * high;
    wide = Half(wide);
    high = Half(high);
    x /= 2;
    y /= 2;
  }
  std::uint16_t least = 0;
  while (depth-- > 0) {
    TagNode& node = *path[depth];
    node.least = std::max(node.least, least);
    while (!node.isKnown && node.least < limit) {
      if (bits.Read()) {
        node.isKnown = true;
      } else {
        ++node.least;
      }
    }
    least = node.least;
  }
  return *path[0];
}

}  // namespace tessaret::codecs
