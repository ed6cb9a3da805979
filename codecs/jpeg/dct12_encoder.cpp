#include "jpeg/dct12_encoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "base/byte_order.h"
#include "failure.h"
#include "jpeg/bit_writer.h"
#include "jpeg/forward_dct.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/optimal_table.h"
#include "jpeg/quantisation_tables.h"
#include "jpeg/segment_writer.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint32_t kPrecision = 12;
constexpr float kMiddle = 2048;

constexpr unsigned kEnd = 0x00;           // of a block
constexpr unsigned kSixteenZeros = 0xF0;  // which are followed by something else

/// Quantised, in the order of streams.
using Coefficients = std::array<std::int16_t, kBlockSize>;

/// Samples behind the last row and column are like those.
SampleBlock BlockAt(Bytes frame, const FrameFormat& format, std::uint32_t row,
                    std::uint32_t column) {
  SampleBlock block;
  for (std::uint32_t y = 0; y < 8; ++y) {
    const std::uint32_t fromY = std::min(row + y, format.rows - 1);
    const std::uint8_t* from = frame.data() + fromY * format.RowSize();
    for (std::uint32_t x = 0; x < 8; ++x) {
      const std::uint32_t fromX = std::min(column + x, format.columns - 1);
      block[8 * y + x] = static_cast<float>(LoadLittle16(from + 2 * std::size_t{fromX})) - kMiddle;
    }
  }
  return block;
}

std::vector<Coefficients> Transform(Bytes frame, const FrameFormat& format,
                                    const Quantisation& quantisation) {
  std::array<float, kBlockSize> inverses;
  for (std::size_t at = 0; at < kBlockSize; ++at) {
    inverses[at] = 1 / static_cast<float>(quantisation[at]);
  }
  std::vector<Coefficients> blocks;
  blocks.reserve(std::size_t{(format.rows + 7) / 8} * ((format.columns + 7) / 8));
  for (std::uint32_t row = 0; row < format.rows; row += 8) {
    for (std::uint32_t column = 0; column < format.columns; column += 8) {
      const SampleBlock block = ForwardDct(BlockAt(frame, format, row, column));
      Coefficients& coefficients = blocks.emplace_back();
      for (std::size_t at = 0; at < kBlockSize; ++at) {
        coefficients[at] = static_cast<std::int16_t>(std::lrint(block[kZigzag[at]] * inverses[at]));
      }
    }
  }
  return blocks;
}

unsigned CategoryOf(std::int32_t value) {
  return static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(value))));
}

/// Calls dc(category, value) and ac(code, value) for all that is to be written, in order.
template <class Dc, class Ac>
void ForEachCode(const std::vector<Coefficients>& blocks, Dc dc, Ac ac) {
  std::int32_t before = 0;
  for (const Coefficients& block : blocks) {
    const std::int32_t difference = block[0] - before;
    before = block[0];
    dc(CategoryOf(difference), difference);
    unsigned zeros = 0;
    for (std::size_t at = 1; at < kBlockSize; ++at) {
      const std::int32_t value = block[at];
      if (value == 0) {
        ++zeros;
        continue;
      }
      for (; zeros >= 16; zeros -= 16) ac(kSixteenZeros, 0);
      ac(zeros << 4 | CategoryOf(value), value);
      zeros = 0;
    }
    if (zeros != 0) ac(kEnd, 0);
  }
}

struct Frequencies {
  std::array<std::uint64_t, 16> dc{};
  std::array<std::uint64_t, 256> ac{};
};

Frequencies CountCodes(const std::vector<Coefficients>& blocks) {
  Frequencies frequencies;
  ForEachCode(
      blocks, [&](unsigned category, std::int32_t) { ++frequencies.dc[category]; },
      [&](unsigned code, std::int32_t) { ++frequencies.ac[code]; });
  return frequencies;
}

struct CodeTables {
  explicit CodeTables(const Frequencies& frequencies)
      : dc(OptimalTable(frequencies.dc)),
        ac(OptimalTable(frequencies.ac)),
        dcCodes(CodesOf(dc)),
        acCodes(CodesOf(ac)) {}

  /// That all codes take with what stands behind them.
  [[nodiscard]] std::uint64_t Bits(const Frequencies& frequencies) const {
    std::uint64_t bits = 0;
    for (unsigned category = 0; category < frequencies.dc.size(); ++category) {
      bits += frequencies.dc[category] * (dcCodes[category].length + category);
    }
    for (unsigned code = 0; code < frequencies.ac.size(); ++code) {
      bits += frequencies.ac[code] * (acCodes[code].length + code % 16);
    }
    return bits;
  }

  HuffmanSpec dc;
  HuffmanSpec ac;
  std::array<HuffmanCode, 256> dcCodes;
  std::array<HuffmanCode, 256> acCodes;
};

void PutValue(BitWriter& writer, HuffmanCode code, unsigned bits, std::int32_t value) {
  // Negative ones are one less, so that their highest bit is 0.
  const unsigned low = static_cast<unsigned>(value - (value < 0 ? 1 : 0)) & ((1u << bits) - 1);
  writer.Put(std::uint64_t{code.bits} << bits | low, code.length + bits);
}

void AppendEntropyData(const std::vector<Coefficients>& blocks, const CodeTables& tables,
                       std::uint64_t bits, std::vector<std::uint8_t>& stream) {
  const auto size = static_cast<std::size_t>((bits + 7) / 8);
  const auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(size + BitWriter::kSlack);
  BitWriter writer(bytes.get());
  ForEachCode(
      blocks,
      [&](unsigned category, std::int32_t value) {
        PutValue(writer, tables.dcCodes[category], category, value);
      },
      [&](unsigned code, std::int32_t value) {
        PutValue(writer, tables.acCodes[code], code % 16, value);
      });
  writer.Finish();
  AppendStuffed({bytes.get(), size}, stream);
}

void AppendFrameHeader(const FrameFormat& format, std::vector<std::uint8_t>& stream) {
  AppendMarker(Marker::kSof1, stream);
  AppendNumber(11, stream);
  stream.push_back(kPrecision);
  AppendNumber(format.rows, stream);
  AppendNumber(format.columns, stream);
  stream.insert(stream.end(), {1, 1, 0x11, 0});  // one component with id 1, all samples, table 0
}

void AppendScanHeader(std::vector<std::uint8_t>& stream) {
  AppendMarker(Marker::kSos, stream);
  AppendNumber(8, stream);
  stream.insert(stream.end(), {1, 1, 0, 0, kBlockSize - 1, 0});
}

}  // namespace

void RequireDct12(const FrameFormat& format) {
  if (format.bitsAllocated != 16 || format.bitsStored < 9 || format.bitsStored > kPrecision ||
      format.highBit + 1 != format.bitsStored) {
    Fail(
        "samples of %u bits in %u, the highest in bit %u, are not encoded, only those of 9 to 12 "
        "in 16",
        format.bitsStored, format.bitsAllocated, format.highBit);
  }
  if (format.isSigned) Fail("signed samples are not encoded");
  const std::string& photometric = format.photometric;
  if (format.samples != 1 || (photometric != "MONOCHROME1" && photometric != "MONOCHROME2")) {
    Fail("%u samples of \"%s\" with more than 8 bits are not encoded with losses", format.samples,
         photometric.c_str());
  }
}

std::vector<std::uint8_t> EncodeDct12(Bytes frame, const FrameFormat& format,
                                      std::uint32_t quality) {
  if (NeedsMoreThanStored(frame, format)) {
    Fail("there are samples of more than the %u bits that are stored", format.bitsStored);
  }
  const Quantisation quantisation = LuminanceTable(quality);
  const std::vector<Coefficients> blocks = Transform(frame, format, quantisation);
  const Frequencies frequencies = CountCodes(blocks);
  const CodeTables tables(frequencies);

  std::vector<std::uint8_t> stream;
  AppendMarker(Marker::kSoi, stream);
  AppendTable(quantisation, 0, stream);
  AppendFrameHeader(format, stream);
  AppendTable(tables.dc, 0, 0, stream);
  AppendTable(tables.ac, 1, 0, stream);
  AppendScanHeader(stream);
  AppendEntropyData(blocks, tables, tables.Bits(frequencies), stream);
  AppendMarker(Marker::kEoi, stream);
  return stream;
}

}  // namespace tessaret::codecs
