#include "jpeg/quantisation_tables.h"

#include <algorithm>

#include "failure.h"
#include "jpeg/segment_writer.h"

namespace tessaret::codecs {
namespace {

/// Row by row.
constexpr std::array<std::uint8_t, kBlockSize> kLuminance = {16, 11, 10, 16, 24,  40,  51,  61,   //
                                                             12, 12, 14, 19, 26,  58,  60,  55,   //
                                                             14, 13, 16, 24, 40,  57,  69,  56,   //
                                                             14, 17, 22, 29, 51,  87,  80,  62,   //
                                                             18, 22, 37, 56, 68,  109, 103, 77,   //
                                                             24, 35, 55, 64, 81,  104, 113, 92,   //
                                                             49, 64, 78, 87, 103, 121, 120, 101,  //
                                                             72, 92, 95, 98, 112, 100, 103, 99};

Quantisation ReadTable(BoundedReader& from, bool isWide) {
  std::array<std::uint8_t, 2 * kBlockSize> bytes{};
  if (!from.Copy(bytes.data(), isWide ? bytes.size() : kBlockSize)) {
    Fail("a quantisation table ends early");
  }
  Quantisation table;
  for (std::size_t at = 0; at < kBlockSize; ++at) {
    table[at] = isWide ? LoadBig16(&bytes[2 * at]) : bytes[at];
    if (table[at] == 0) Fail("a quantisation table has a factor of 0");
  }
  return table;
}

}  // namespace

void QuantisationTables::Read(BoundedReader segment) {
  while (const auto which = segment.U8()) {
    const unsigned precision = *which >> 4;
    const unsigned id = *which & 15;
    if (precision > 1 || id > 3) {
      Fail("a quantisation table has precision %u and id %u", precision, id);
    }
    tables[id] = ReadTable(segment, precision == 1);
  }
}

const Quantisation& QuantisationTables::Require(std::uint8_t id) const {
  const auto& table = tables[id];
  if (!table) Fail("there is no quantisation table %u", id);
  return *table;
}

Quantisation LuminanceTable(std::uint32_t quality) {
  const std::uint32_t percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  Quantisation table;
  for (std::size_t at = 0; at < kBlockSize; ++at) {
    const std::uint32_t factor = (kLuminance[kZigzag[at]] * percent + 50) / 100;
    table[at] = static_cast<std::uint16_t>(std::max(factor, 1u));
  }
  return table;
}

void AppendTable(const Quantisation& table, unsigned id, std::vector<std::uint8_t>& stream) {
  const bool isWide = *std::max_element(table.begin(), table.end()) > 255;
  AppendMarker(Marker::kDqt, stream);
  AppendNumber(2 + 1 + (isWide ? 2 : 1) * kBlockSize, stream);
  stream.push_back(static_cast<std::uint8_t>((isWide ? 0x10u : 0u) | id));
  for (const std::uint16_t factor : table) {
    if (isWide) stream.push_back(static_cast<std::uint8_t>(factor >> 8));
    stream.push_back(static_cast<std::uint8_t>(factor));
  }
}

}  // namespace tessaret::codecs
