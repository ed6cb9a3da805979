// The samples of one scan of lossless JPEG (ITU-T T.81, H).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "frame_format.h"
#include "jpeg/bit_reader.h"
#include "jpeg/difference_table.h"
#include "jpeg/huffman_table.h"
#include "jpeg/jpeg_markers.h"

namespace tessaret::codecs {

class LosslessScan {
 public:
  /// Throws CodecFailure for a predictor or a point transform that there is not, and where tables are missing.
  LosslessScan(const ScanHeader& scan, const FrameHeader& header, const HuffmanSpecs& known);

  /// Writes rows from `firstRow` on, as many as one restart interval holds, to their places in `frame`. Throws CodecFailure where
  /// the data do not end with them, and for samples that need more bits than the code stream has.
  void DecodeInterval(Bytes data, std::uint32_t firstRow, std::uint32_t rows,
                      const FrameFormat& format, MutableBytes frame);

 private:
  /// The differences of one row, to row_.
  void ReadRow(BitReader& reader);
  void PutRow(const FrameFormat& format, std::uint8_t* to) const;

  std::uint32_t precision_;  // of what is coded: that of the stream less the point transform
  unsigned predictor_;
  unsigned shift_;
  std::array<std::size_t, kMostComponents>
      places_{};  // of the scan's components in a pixel of the frame
  std::array<std::size_t, kMostComponents> tableFor_{};  // in tables_
  std::vector<DifferenceTable> tables_;
  std::size_t samples_;  // of a pixel, in this scan
  // Samples by pixel, those of this scan only.
  std::vector<std::uint16_t> row_;
  std::vector<std::uint16_t> above_;
};

}  // namespace tessaret::codecs
