#include "jpeg/dct12_decoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "failure.h"
#include "jpeg/bit_reader.h"
#include "jpeg/coefficient_codes.h"
#include "jpeg/dct_output.h"
#include "jpeg/inverse_dct.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/progressive_scans.h"
#include "jpeg/quantisation_tables.h"
#include "jpeg/upsampling.h"

namespace tessaret::codecs {
namespace {

/// What segments have told so far.
struct Tables {
  QuantisationTables quantisation;
  HuffmanSpecs huffman;
  std::uint32_t restartInterval = 0;
};

struct Image {
  const FrameHeader& header;
  const DctLayout& layout;
  std::array<std::optional<DctPlane>, kMostComponents> planes{};  // empty until all is there
};

/// One component in a scan.
struct Part {
  DcCodes dc;
  AcCodes ac;
  const Quantisation& quantisation;
  DctPlane& plane;
  std::int32_t before = 0;  // first coefficient of the last block
};

DctPlane& BeginPlane(Image& image, std::size_t index) {
  auto& plane = image.planes[index];
  if (plane) Fail("component %zu comes in two scans", index + 1);
  plane = MakeDctPlane(image.layout.components[index]);
  return *plane;
}

std::vector<Part> BeginParts(const Tables& tables, const ScanHeader& scan, Image& image) {
  std::vector<Part> parts;
  parts.reserve(scan.count);
  for (std::size_t at = 0; at < scan.count; ++at) {
    const ScanComponent& component = scan.components[at];
    const std::uint8_t table = image.header.components[component.index].quantisation;
    parts.push_back({DcCodes(RequireTable(tables.huffman.dc, component.dcTable)),
                     AcCodes(RequireTable(tables.huffman.ac, component.acTable)),
                     tables.quantisation.Require(table), BeginPlane(image, component.index)});
  }
  return parts;
}

/// Whether the block has other coefficients than the first.
bool ReadOthers(BitReader& reader, const Part& part, DctBlock& block) {
  BitReader bits = reader;
  std::size_t at = 1;
  do {
    bits.Fill();
    const AcCodes::Code code = part.ac.Read(bits);
    at += code.run;
    if (at >= kBlockSize) {
      if (code.run != AcCodes::kEndRun) Fail("a block has too many coefficients");
      break;
    }
    block[kZigzag[at]] = code.value * part.quantisation[at];
  } while (++at < kBlockSize);
  reader = bits;
  return at != 1 + AcCodes::kEndRun;
}

void ReadBlock(BitReader& reader, Part& part, std::uint16_t* to, std::size_t stride) {
  reader.Fill();
  part.before += part.dc.Read(reader);
  if (part.before != static_cast<std::int16_t>(part.before)) {
    Fail("a coefficient is out of its range");
  }
  DctBlock block{};
  block[0] = part.before * part.quantisation[0];
  if (ReadOthers(reader, part, block)) {
    InverseDct12(block, to, stride);
  } else {
    InverseFlatDct12(block[0], to, stride);
  }
}

/// Gives how many bytes the scan had.
std::size_t ReadScan(Bytes rest, const Tables& tables, const ScanHeader& scan, Image& image) {
  const std::uint64_t units = UnitsOf(image.layout, scan);
  const std::uint64_t interval = tables.restartInterval == 0 ? units : tables.restartInterval;
  const EntropyData data(rest, (units + interval - 1) / interval);
  std::vector<Part> parts = BeginParts(tables, scan, image);
  for (std::size_t index = 0; index < data.Intervals(); ++index) {
    BitReader reader(data.Interval(index));
    for (Part& part : parts) part.before = 0;
    const std::uint64_t end = std::min(units, (index + 1) * interval);
    for (std::uint64_t unit = index * interval; unit < end; ++unit) {
      VisitBlocks(
          image.layout, scan, unit, [&](std::size_t at, std::uint32_t row, std::uint32_t column) {
            DctPlane& plane = parts[at].plane;
            const std::size_t stride = plane.Stride();
            ReadBlock(reader, parts[at],
                      plane.samples.data() + row * 8 * stride + std::size_t{column} * 8, stride);
          });
      if (reader.IsOverrun()) Fail("the entropy-coded data end early");
    }
    reader.RequireUsedUp();
  }
  return data.Length();
}

/// Takes what segment says, but for frame and scan headers.
void ReadTables(const Segment& segment, Tables& tables) {
  switch (segment.marker) {
    case Marker::kDht:
      return tables.huffman.Read(segment.content);
    case Marker::kDqt:
      return tables.quantisation.Read(segment.content);
    case Marker::kDri:
      tables.restartInterval = ReadRestartInterval(segment);
      return;
    case Marker::kDac:
    case Marker::kDnl:
    case Marker::kJpg:
      Fail("marker %02X is of a kind that is not decoded", static_cast<unsigned>(segment.marker));
    default:
      return;
  }
}

/// Calls read(rest, scan) for each scan up to the end of the image; it gives the bytes that the scan had.
template <class ReadOne>
void ReadScans(MarkerReader& reader, Tables& tables, const FrameHeader& header, ReadOne read) {
  for (Segment segment = reader.Next(); segment.marker != Marker::kEoi; segment = reader.Next()) {
    if (segment.marker == Marker::kSos) {
      reader.Skip(read(reader.Rest(), ReadScanHeader(segment, header)));
    } else {
      ReadTables(segment, tables);
    }
  }
}

void ReadSequential(MarkerReader& reader, Tables& tables, Image& image) {
  ReadScans(reader, tables, image.header, [&](Bytes rest, const ScanHeader& scan) {
    return ReadScan(rest, tables, scan, image);
  });
  for (std::size_t at = 0; at < image.header.count; ++at) {
    if (!image.planes[at]) Fail("component %zu is in no scan", at + 1);
  }
}

void ReadProgressive(MarkerReader& reader, Tables& tables, Image& image) {
  ProgressiveScans scans(image.layout);
  ReadScans(reader, tables, image.header, [&](Bytes rest, const ScanHeader& scan) {
    return scans.Read(rest, image.header, scan, tables.huffman, tables.quantisation,
                      tables.restartInterval);
  });
  for (std::size_t at = 0; at < image.header.count; ++at) image.planes[at] = scans.Samples(at);
}

}  // namespace

void DecodeDct12(Bytes stream, const DctSurvey& survey, const FrameFormat& format,
                 MutableBytes frame) {
  Tables tables;
  Image image{survey.header, survey.layout};
  MarkerReader reader(stream);
  if (survey.header.marker == Marker::kSof2) {
    ReadProgressive(reader, tables, image);
  } else {
    ReadSequential(reader, tables, image);
  }
  std::vector<RowMaker> rows;
  rows.reserve(survey.header.count);
  for (std::size_t at = 0; at < survey.header.count; ++at) {
    rows.emplace_back(*image.planes[at], survey.layout);
  }
  WriteDctRows(rows, survey.isYcc, format, frame);
}

}  // namespace tessaret::codecs
