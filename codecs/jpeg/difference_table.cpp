#include "jpeg/difference_table.h"

#include "failure.h"

namespace tessaret::codecs {

static_assert(2 * DifferenceTable::kMostAtOnce <= 56, "Read takes two after each Fill");

DifferenceTable::DifferenceTable(const HuffmanSpec& spec) : codes_(spec) {
  spec.RequireValues(kMostCategory);
  for (std::uint32_t bits = 0; bits < entries_.size(); ++bits) {
    const HuffmanTable::Code code = codes_.Find(bits << (HuffmanSpec::kLongest - kLookup));
    if (code.length == 0 || code.length > kLookup || code.value == kMostCategory) continue;
    entries_[bits] = static_cast<std::uint32_t>(code.length + code.value) |
                     std::uint32_t{code.length} << 8 | (63u - code.value) << 16;
  }
}

void DifferenceTable::Read(BitReader& reader, std::uint16_t* to, std::size_t count) const {
  BitReader bits = reader;
  std::size_t at = 0;
  for (; at + 2 <= count; at += 2) {
    bits.Fill();
    to[at] = Next(bits);
    to[at + 1] = Next(bits);
  }
  if (at < count) {
    bits.Fill();
    to[at] = Next(bits);
  }
  reader = bits;
}

void DifferenceTable::FailCode() { Fail("the entropy-coded data hold bits that are no code"); }

}  // namespace tessaret::codecs
