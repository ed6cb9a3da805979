#include "jpeg/quantisation_tables.h"

#include "failure.h"

namespace tessaret::codecs {
namespace {

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

}  // namespace tessaret::codecs
