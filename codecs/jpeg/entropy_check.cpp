#include "jpeg/entropy_check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "failure.h"
#include "jpeg/block_reader.h"
#include "jpeg/dct_scans.h"
#include "jpeg/progressive_scans.h"

namespace tessaret::codecs {
namespace {

void CheckSequential(Bytes stream, const DctSurvey& survey) {
  std::array<bool, kMostComponents> came{};
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              std::vector<BlockReader> parts;
              for (std::size_t at = 0; at < scan.count; ++at) {
                const std::size_t index = scan.components[at].index;
                if (came[index]) Fail("component %zu comes in two scans", index + 1);
                came[index] = true;
                parts.push_back(MakeBlockReader(tables, scan.components[at], survey.header));
              }
              return ReadBlocks(
                  rest, survey.layout, scan, tables.restartInterval,
                  [&] {
                    for (BlockReader& part : parts) part.Restart();
                  },
                  [&](BitReader& bits, std::size_t at, std::uint32_t, std::uint32_t) {
                    parts[at].Pass(bits);
                  },
                  [] {});
            });
  for (std::size_t at = 0; at < survey.header.count; ++at) {
    if (!came[at]) Fail("component %zu is in no scan", at + 1);
  }
}

void CheckProgressive(Bytes stream, const DctSurvey& survey) {
  ProgressiveScans scans(survey.layout);
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              return scans.Read(rest, survey.header, scan, tables);
            });
  scans.RequireAll();
}

}  // namespace

void CheckEntropy(Bytes stream, const DctSurvey& survey) {
  if (survey.header.marker == Marker::kSof2) {
    CheckProgressive(stream, survey);
  } else {
    CheckSequential(stream, survey);
  }
}

}  // namespace tessaret::codecs
