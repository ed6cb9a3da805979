// The way through a stream's tables and scans that all decoders here go.
#pragma once

#include <cstddef>
#include <cstdint>

#include "failure.h"
#include "jpeg/bit_reader.h"
#include "jpeg/dct_layout.h"
#include "jpeg/huffman_table.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/quantisation_tables.h"

namespace tessaret::codecs {

/// What segments have told so far.
struct DctTables {
  QuantisationTables quantisation;
  HuffmanSpecs huffman;
  std::uint32_t restartInterval = 0;

  /// Takes what any segment says but frame and scan headers.
  void Read(const Segment& segment);
};

/// Calls read(rest, scan, tables) for each scan of a stream that was surveyed; it gives the bytes that the scan had.
template <class ReadOne>
void ReadScans(Bytes stream, const FrameHeader& header, ReadOne read) {
  DctTables tables;
  MarkerReader reader(stream);
  for (Segment segment = reader.Next(); segment.marker != Marker::kEoi; segment = reader.Next()) {
    if (segment.marker == Marker::kSos) {
      reader.Skip(read(reader.Rest(), ReadScanHeader(segment, header), tables));
    } else if (!IsFrameHeader(segment.marker)) {
      tables.Read(segment);
    }
  }
}

/// Calls restart() at the begin of each interval of a scan, readBlock(bits, place in the scan, row, column) for each block, and end() at
/// the interval's end. Gives the bytes that the scan had. Throws CodecFailure where there are too few or too many of them.
template <class Restart, class ReadBlock, class End>
std::size_t ReadBlocks(Bytes rest, const DctLayout& layout, const ScanHeader& scan,
                       std::uint32_t restartInterval, Restart restart, ReadBlock readBlock,
                       End end) {
  const std::uint64_t units = UnitsOf(layout, scan);
  const std::uint64_t interval = restartInterval == 0 ? units : restartInterval;
  const EntropyData data(rest, (units + interval - 1) / interval);
  std::uint64_t unit = 0;
  for (std::size_t index = 0; index < data.Intervals(); ++index) {
    BitReader bits(data.Interval(index));
    restart();
    for (std::uint64_t left = interval; left != 0 && unit < units; --left, ++unit) {
      VisitBlocks(layout, scan, unit, [&](std::size_t at, std::uint32_t row, std::uint32_t column) {
        readBlock(bits, at, row, column);
      });
      if (bits.IsOverrun()) Fail("the entropy-coded data end early");
    }
    end();
    bits.RequireUsedUp();
  }
  return data.Length();
}

}  // namespace tessaret::codecs
