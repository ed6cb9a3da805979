#include "jpeg2000/mq_decoder.h"

namespace tessaret::codecs {
namespace {

struct Row {
  std::uint16_t range;
  std::uint8_t afterMore;
  std::uint8_t afterLess;
  bool isSwitched;  // the likelier symbol is another one after the less likely one
};

/// ISO/IEC 15444-1, table C.2
constexpr Row kRows[] = {{0x5601, 1, 1, true},    {0x3401, 2, 6, false},   {0x1801, 3, 9, false},
                         {0x0AC1, 4, 12, false},  {0x0521, 5, 29, false},  {0x0221, 38, 33, false},
                         {0x5601, 7, 6, true},    {0x5401, 8, 14, false},  {0x4801, 9, 14, false},
                         {0x3801, 10, 14, false}, {0x3001, 11, 17, false}, {0x2401, 12, 18, false},
                         {0x1C01, 13, 20, false}, {0x1601, 29, 21, false}, {0x5601, 15, 14, true},
                         {0x5401, 16, 14, false}, {0x5101, 17, 15, false}, {0x4801, 18, 16, false},
                         {0x3801, 19, 17, false}, {0x3401, 20, 18, false}, {0x3001, 21, 19, false},
                         {0x2801, 22, 19, false}, {0x2401, 23, 20, false}, {0x2201, 24, 21, false},
                         {0x1C01, 25, 22, false}, {0x1801, 26, 23, false}, {0x1601, 27, 24, false},
                         {0x1401, 28, 25, false}, {0x1201, 29, 26, false}, {0x1101, 30, 27, false},
                         {0x0AC1, 31, 28, false}, {0x09C1, 32, 29, false}, {0x08A1, 33, 30, false},
                         {0x0521, 34, 31, false}, {0x0441, 35, 32, false}, {0x02A1, 36, 33, false},
                         {0x0221, 37, 34, false}, {0x0141, 38, 35, false}, {0x0111, 39, 36, false},
                         {0x0085, 40, 37, false}, {0x0049, 41, 38, false}, {0x0025, 42, 39, false},
                         {0x0015, 43, 40, false}, {0x0009, 44, 41, false}, {0x0005, 45, 42, false},
                         {0x0001, 45, 43, false}, {0x5601, 46, 46, false}};

constexpr MqTable MakeTable() {
  static_assert(2 * std::size(kRows) == kMqStates);
  MqTable table{};
  for (std::size_t at = 0; at < kMqStates; ++at) {
    const Row& row = kRows[at / 2];
    const std::size_t likely = at % 2;
    const std::size_t other = row.isSwitched ? 1 - likely : likely;
    const std::size_t afterMore = MqStateOf(row.afterMore) + likely;
    const std::size_t afterLess = MqStateOf(row.afterLess) + other;
    table.ranges[at] = std::uint64_t{row.range} << kMqInterval;
    table.next[at] =
        static_cast<std::uint32_t>(at | afterMore << 8 | afterLess << 16 | afterLess << 24);
  }
  return table;
}

}  // namespace

constinit const MqTable kMqTable = MakeTable();

MqDecoder::Input MqDecoder::FillByBytes(Input input) {
  while (input.ready <= 32) {
    const std::uint64_t byte = *input.at;
    const auto place = static_cast<std::int32_t>(kMqInterval) - input.ready;
    if (input.at[-1] != 0xFF) {
      input.distance -= byte << (place - 8);
      input.ready += 8;
      ++input.at;
    } else if (byte > 0x8F) {
      // The end, from where on all bits are 1.
      input.distance -= std::uint64_t{0xFF} << (place - 8);
      input.ready += 8;
    } else {
      // The highest bit of the byte is a carry.
      input.distance -= byte << (place - 7);
      input.ready += 7;
      ++input.at;
    }
  }
  return input;
}

}  // namespace tessaret::codecs
