#include "jpeg/difference_table.h"

#include <algorithm>

#include "failure.h"

namespace tessaret::codecs {
namespace {

unsigned BitsOf(std::uint64_t entry) { return entry & 63; }
unsigned CodeBitsOf(std::uint64_t entry) { return (entry >> 8) & 63; }
unsigned UnusedBitsOf(std::uint64_t entry) { return (entry >> 16) & 63; }
unsigned CountOf(std::uint64_t entry) { return (entry >> 24) & 3; }
std::uint16_t SecondOf(std::uint64_t entry) { return static_cast<std::uint16_t>(entry >> 32); }

/// The bits of the first difference alone, with its code.
unsigned FirstBitsOf(std::uint64_t entry) { return CodeBitsOf(entry) + 63 - UnusedBitsOf(entry); }

/// The first difference, of which an entry tells the size only, out of the bits that it was looked up by.
std::uint16_t FirstOf(std::uint64_t entry, std::uint64_t held) {
  // Its bits, highest; those of a negative one begin with 0 and are all turned round.
  const std::uint64_t bits = held << CodeBitsOf(entry);
  const auto turn = ~static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> 63);
  const std::uint64_t size = (bits ^ turn) >> 1 >> UnusedBitsOf(entry);
  return static_cast<std::uint16_t>((size ^ turn) - turn);
}

}  // namespace

DifferenceTable::DifferenceTable(const HuffmanSpec& listed, std::uint64_t count) : codes_(listed) {
  // To make pairs takes as long as to read some ten thousand differences one by one instead.
  constexpr std::uint64_t kWorthPairs = 1 << 14;
  AddSingles(listed);
  if (count >= kWorthPairs) AddSeconds();
}

void DifferenceTable::AddSingles(const HuffmanSpec& listed) {
  std::size_t first = 0;  // of the entries that begin with the code
  const std::uint8_t* category = listed.values.data();
  for (unsigned length = 1; length <= kLookup; ++length) {
    const std::size_t spread = std::size_t{1} << (kLookup - length);
    for (unsigned left = listed.counts[length - 1]; left != 0;
         --left, ++category, first += spread) {
      const unsigned bits = length + *category;
      if (*category >= kMostCategory || bits > kMostBits) continue;
      const Entry entry = bits | length << 8 | (63u - *category) << 16 | 1u << 24;
      std::fill_n(entries_.begin() + static_cast<std::ptrdiff_t>(first), spread, entry);
    }
  }
}

void DifferenceTable::AddSeconds() {
  for (std::uint64_t bits = 0; bits < entries_.size(); ++bits) {
    entries_[bits] = WithSecond(entries_[bits], bits << (64 - kLookup));
  }
}

DifferenceTable::Entry DifferenceTable::WithSecond(Entry entry, std::uint64_t held) const {
  if (entry == 0 || BitsOf(entry) >= kLookup) return entry;
  const unsigned left = kLookup - BitsOf(entry);
  held <<= BitsOf(entry);
  // Where that one has become a pair already only its first difference is asked for.
  const Entry second = EntryFor(held);
  if (second == 0 || FirstBitsOf(second) > left) return entry;
  return entry + FirstBitsOf(second) + (1u << 24) + (std::uint64_t{FirstOf(second, held)} << 32);
}

void DifferenceTable::Read(BitReader& reader, std::uint16_t* to, std::size_t count) const {
  const std::uint16_t* const end = to + count;
  reader.Fill();
  ReadyBits bits = reader.Ready();
  while (end - to >= 4 && reader.CanFillFast(bits)) {
    for (int turn = 0; turn < 2; ++turn) {
      // There are enough bits to look up; more come in while memory is waited for.
      const Entry entry = EntryFor(bits.held);
      if (turn == 0) bits.Fill();
      if (entry == 0) [[unlikely]] {
        reader.PutBack(bits);
        *to++ = ReadRare(reader);
        bits = reader.Ready();
        continue;
      }
      to[0] = FirstOf(entry, bits.held);
      to[1] = SecondOf(entry);
      to += CountOf(entry);
      bits.Drop(BitsOf(entry));
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
  const Entry entry = EntryFor(bits.held);
  if (entry == 0) return ReadRare(reader);
  reader.Drop(FirstBitsOf(entry));
  return FirstOf(entry, bits.held);
}

std::uint16_t DifferenceTable::ReadRare(BitReader& reader) const {
  reader.Fill();
  const HuffmanTable::Code code = codes_.Find(reader.Peek(HuffmanSpec::kLongest));
  if (code.length == 0) Fail("the entropy-coded data hold bits that are no code");
  // Some encoders list the values of another process too, which then never come.
  if (code.value > kMostCategory) Fail("a difference has %u bits", code.value);
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
