#include "jpeg/coefficient_codes.h"

#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kMostBits = 15;

}  // namespace

void FailNoCode() { Fail("there are bits that are no Huffman code"); }

DcCodes::DcCodes(const HuffmanSpec& listed) : table_(listed) { listed.RequireValues(kMostBits); }

AcCodes::AcCodes(const HuffmanSpec& listed) : table_(listed) {
  for (std::uint32_t bits = 0; bits < short_.size(); ++bits) {
    const Code code = FindAny(bits << (32 - kShort));
    if (code.length <= kShort) short_[bits] = code;
  }
}

AcCodes::Code AcCodes::FindAny(std::uint32_t bits) const {
  const HuffmanTable::Code found = table_.Find(bits >> 16);
  if (found.length == 0) return {};
  Code code;
  const unsigned size = found.value & 15u;
  code.run = found.value >> 4;
  code.length = static_cast<std::uint8_t>(found.length + size);
  if (size == 0) {
    // Between the end of a block and sixteen zeros nothing has a meaning.
    if (code.run != 0 && code.run != 15) return {};
    if (code.run == 0) code.run = kEndRun;
  } else {
    code.value =
        static_cast<std::int16_t>(SignedValue((bits << found.length) >> (32 - size), size));
  }
  return code;
}

}  // namespace tessaret::codecs
