#include "jpeg/huffman_table.h"

#include <algorithm>

#include "failure.h"

namespace tessaret::codecs {
namespace {

/// Throws where there are not as many codes as the counts say.
void RequireRoom(const HuffmanSpec& listed) {
  std::uint32_t left = 1;
  for (const std::uint8_t count : listed.counts) {
    left *= 2;
    if (count > left) Fail("a Huffman table has more codes than there can be");
    left -= count;
  }
}

HuffmanSpec ReadSpec(BoundedReader& from) {
  HuffmanSpec listed;
  if (!from.Copy(listed.counts.data(), listed.counts.size())) Fail("a Huffman table ends early");
  for (const std::uint8_t count : listed.counts) listed.size += count;
  if (listed.size > listed.values.size()) Fail("a Huffman table has %zu codes", listed.size);
  if (!from.Copy(listed.values.data(), listed.size)) Fail("a Huffman table ends early");
  RequireRoom(listed);
  return listed;
}

}  // namespace

void HuffmanSpec::RequireValues(std::uint32_t most) const {
  for (std::size_t at = 0; at < size; ++at) {
    if (values[at] > most) Fail("a Huffman table has the value %u, above %u", values[at], most);
  }
}

void HuffmanSpecs::Read(BoundedReader segment) {
  while (const auto which = segment.U8()) {
    const unsigned kind = *which >> 4;
    const unsigned id = *which & 15;
    if (kind > 1 || id > 3) Fail("a Huffman table has class %u and id %u", kind, id);
    (kind == 0 ? dc : ac)[id] = ReadSpec(segment);
  }
}

const HuffmanSpec& RequireTable(const std::array<std::optional<HuffmanSpec>, 4>& known,
                                std::uint8_t id) {
  const auto& listed = known[id];
  if (!listed) Fail("there is no Huffman table %u", id);
  return *listed;
}

HuffmanTable::HuffmanTable(const HuffmanSpec& listed) : values_(listed.values) {
  std::uint32_t code = 0;
  std::uint32_t place = 0;
  for (std::size_t length = 1; length <= HuffmanSpec::kLongest; ++length) {
    const std::uint32_t count = listed.counts[length - 1];
    places_[length - 1] = place - code;
    if (length <= kShort) {
      const std::size_t spread = std::size_t{1} << (kShort - length);
      for (std::uint32_t at = 0; at < count; ++at) {
        std::fill_n(short_.begin() + static_cast<std::ptrdiff_t>((code + at) * spread), spread,
                    Code{static_cast<std::uint8_t>(length), values_[place + at]});
      }
    }
    code += count;
    place += count;
    limits_[length - 1] = code << (HuffmanSpec::kLongest - length);
    code *= 2;
  }
}

HuffmanTable::Code HuffmanTable::FindLong(std::uint32_t bits) const {
  for (std::size_t length = kShort + 1; length <= HuffmanSpec::kLongest; ++length) {
    if (bits >= limits_[length - 1]) continue;
    const std::uint32_t code = bits >> (HuffmanSpec::kLongest - length);
    return {static_cast<std::uint8_t>(length), values_[code + places_[length - 1]]};
  }
  return {};
}

}  // namespace tessaret::codecs
