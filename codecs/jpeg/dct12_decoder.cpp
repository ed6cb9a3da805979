#include "jpeg/dct12_decoder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "failure.h"
#include "jpeg/block_reader.h"
#include "jpeg/dct_output.h"
#include "jpeg/dct_scans.h"
#include "jpeg/inverse_dct.h"
#include "jpeg/progressive_scans.h"
#include "jpeg/upsampling.h"

namespace tessaret::codecs {
namespace {

using Planes = std::array<std::optional<DctPlane>, kMostComponents>;

/// One component in a scan.
struct Part {
  BlockReader blocks;
  DctPlane& plane;
};

DctPlane& BeginPlane(const DctLayout& layout, std::size_t index, Planes& planes) {
  auto& plane = planes[index];
  if (plane) Fail("component %zu comes in two scans", index + 1);
  plane = MakeDctPlane(layout.components[index]);
  return *plane;
}

std::vector<Part> BeginParts(const DctTables& tables, const ScanHeader& scan,
                             const DctSurvey& survey, Planes& planes) {
  std::vector<Part> parts;
  parts.reserve(scan.count);
  for (std::size_t at = 0; at < scan.count; ++at) {
    const ScanComponent& component = scan.components[at];
    parts.push_back({MakeBlockReader(tables, component, survey.header),
                     BeginPlane(survey.layout, component.index, planes)});
  }
  return parts;
}

void ReadSequential(Bytes stream, const DctSurvey& survey, Planes& planes) {
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              std::vector<Part> parts = BeginParts(tables, scan, survey, planes);
              DctBlock block;
              return ReadBlocks(
                  rest, survey.layout, scan, tables.restartInterval,
                  [&] {
                    for (Part& part : parts) part.blocks.Restart();
                  },
                  [&](BitReader& bits, std::size_t at, std::uint32_t row, std::uint32_t column) {
                    Part& part = parts[at];
                    std::uint16_t* to = part.plane.Block(row, column);
                    if (part.blocks.Read(bits, block)) {
                      InverseDct12(block, to, part.plane.Stride());
                    } else {
                      InverseFlatDct12(block[0], to, part.plane.Stride());
                    }
                  },
                  [] {});
            });
  for (std::size_t at = 0; at < survey.header.count; ++at) {
    if (!planes[at]) Fail("component %zu is in no scan", at + 1);
  }
}

void ReadProgressive(Bytes stream, const DctSurvey& survey, Planes& planes) {
  ProgressiveScans scans(survey.layout);
  ReadScans(stream, survey.header,
            [&](Bytes rest, const ScanHeader& scan, const DctTables& tables) {
              return scans.Read(rest, survey.header, scan, tables);
            });
  scans.RequireAll();
  for (std::size_t at = 0; at < survey.header.count; ++at) planes[at] = scans.Samples(at);
}

}  // namespace

void DecodeDct12(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                 MutableBytes frame) {
  Planes planes;
  if (survey.header.marker == Marker::kSof2) {
    ReadProgressive(stream, survey, planes);
  } else {
    ReadSequential(stream, survey, planes);
  }
  std::vector<RowMaker> rows;
  rows.reserve(survey.header.count);
  for (std::size_t at = 0; at < survey.header.count; ++at) {
    rows.emplace_back(*planes[at], survey.layout);
  }
  WriteDctRows(rows, survey.isYcc, format, frame);
}

}  // namespace tessaret::codecs
