#include "jpeg/difference_table.h"

#include "failure.h"

namespace tessaret::codecs {

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
  static_assert(2 * kMostAtOnce <= BitReader::kFilled);
  const std::uint16_t* const end = to + count;
  ReadyBits bits = reader.Ready();
  while (end - to >= 2 && reader.CanFillFast(bits)) {
    bits.Fill();
    for (int turn = 0; turn < 2; ++turn, ++to) {
      const std::uint32_t entry = EntryFor(bits.held);
      if (entry == 0) [[unlikely]] {
        reader.PutBack(bits);
        *to = ReadRare(reader);
        bits = reader.Ready();
        continue;
      }
      *to = DifferenceOf(entry, bits.held);
      bits.Drop(entry & 63);
    }
  }
  reader.PutBack(bits);
  for (; to != end; ++to) {
    reader.Fill();
    *to = ReadOne(reader);
  }
}

std::uint16_t DifferenceTable::ReadOne(BitReader& reader) const {
  const ReadyBits bits = reader.Ready();
  const std::uint32_t entry = EntryFor(bits.held);
  if (entry == 0) return ReadRare(reader);
  reader.Drop(entry & 63);
  return DifferenceOf(entry, bits.held);
}

std::uint16_t DifferenceTable::ReadRare(BitReader& reader) const {
  reader.Fill();
  const HuffmanTable::Code code = codes_.Find(reader.Peek(HuffmanSpec::kLongest));
  if (code.length == 0) Fail("the entropy-coded data hold bits that are no code");
  reader.Drop(code.length);
  std::uint32_t difference = code.value == kMostCategory ? 0x8000 : 0;
  if (code.value != 0 && code.value != kMostCategory) {
    const std::uint32_t bits = reader.Take(code.value);
    const bool isNegative = bits >> (code.value - 1) == 0;
    difference = isNegative ? bits - (1u << code.value) + 1 : bits;
  }
  reader.Fill();
  return static_cast<std::uint16_t>(difference);
}

}  // namespace tessaret::codecs
