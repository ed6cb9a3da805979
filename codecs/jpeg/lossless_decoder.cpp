#include "jpeg/lossless_decoder.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "failure.h"
#include "jpeg/bit_reader.h"
#include "jpeg/huffman_table.h"
#include "jpeg/jpeg_markers.h"
#include "jpeg/lossless_scan.h"
#include "samples.h"

namespace tessaret::codecs {
namespace {

/// The shortest code has one bit, and there may be no others behind it.
constexpr std::uint64_t kMostSamplesPerByte = 8;

constexpr std::uint32_t kLeastPrecision = 2;
constexpr std::uint32_t kMostPrecision = 16;

bool IsSkipped(Marker marker) {
  return marker == Marker::kDqt || marker == Marker::kCom ||
         (marker >= Marker::kApp0 && marker <= Marker::kApp15);
}

void RequireLossless(const FrameHeader& header) {
  if (header.precision < kLeastPrecision || header.precision > kMostPrecision) {
    Fail("the code stream has samples of %u bits", header.precision);
  }
  // A single component is not sampled against any other, whatever it says.
  for (std::size_t at = 0; at < header.count && header.count != 1; ++at) {
    const FrameComponent& component = header.components[at];
    if (component.horizontal == 1 && component.vertical == 1) continue;
    Fail("component %zu has sampling factors of %u x %u", at + 1, component.horizontal,
         component.vertical);
  }
}

class Decoder {
 public:
  Decoder(Bytes stream, const FrameFormat& format, MutableBytes frame)
      : size_(stream.size()), format_(format), frame_(frame), markers_(stream) {}

  /// The whole code stream. Says which precision it has.
  std::uint32_t Run() {
    for (Segment next = markers_.Next(); next.marker != Marker::kEoi; next = markers_.Next()) {
      Take(next);
    }
    if (!header_) Fail("the code stream has no frame header");
    for (std::size_t at = 0; at < header_->count; ++at) {
      if (!isDone_[at]) Fail("the code stream ends before its component %zu", at + 1);
    }
    return header_->precision;
  }

 private:
  void Take(const Segment& segment) {
    const auto code = static_cast<unsigned>(segment.marker);
    if (segment.marker == Marker::kSof3) {
      TakeHeader(segment);
    } else if (segment.marker == Marker::kDht) {
      known_.Read(segment.content);
    } else if (segment.marker == Marker::kDri) {
      restartInterval_ = ReadRestartInterval(segment);
    } else if (segment.marker == Marker::kSos) {
      TakeScan(segment);
    } else if (IsFrameHeader(segment.marker)) {
      Fail("the code stream is JPEG of marker %02X, not lossless with Huffman codes", code);
    } else if (!IsSkipped(segment.marker)) {
      Fail("the code stream has marker %02X, of which lossless JPEG knows nothing", code);
    }
  }

  void TakeHeader(const Segment& segment) {
    if (header_) Fail("the code stream has two frame headers");
    const FrameHeader header = ReadFrameHeader(segment);
    RequireSameShape(header, format_);
    RequireLossless(header);
    RequirePlausible(size_, format_.Samples(), kMostSamplesPerByte);
    header_ = header;
  }

  void TakeScan(const Segment& segment) {
    if (!header_) Fail("a scan comes before the frame header");
    const ScanHeader header = ReadScanHeader(segment, *header_);
    for (std::size_t at = 0; at < header.count; ++at) {
      const std::size_t index = header.components[at].index;
      if (std::exchange(isDone_[index], true)) Fail("component %zu comes twice", index + 1);
    }
    LosslessScan scan(header, *header_, known_);
    const std::uint32_t rows = header_->rows;
    const std::uint32_t step = RowsPerInterval();
    const EntropyData data(markers_.Rest(), (std::uint64_t{rows} + step - 1) / step);
    for (std::uint32_t row = 0, index = 0; row < rows; row += std::min(step, rows - row), ++index) {
      scan.DecodeInterval(data.Interval(index), row, std::min(step, rows - row), format_, frame_);
    }
    markers_.Skip(data.Length());
  }

  [[nodiscard]] std::uint32_t RowsPerInterval() const {
    if (restartInterval_ == 0) return header_->rows;
    if (restartInterval_ % header_->columns != 0) {
      Fail("restart markers every %u pixels do not go with rows of %u", restartInterval_,
           header_->columns);
    }
    return restartInterval_ / header_->columns;
  }

  std::size_t size_;
  const FrameFormat& format_;
  MutableBytes frame_;
  MarkerReader markers_;
  std::optional<FrameHeader> header_;
  HuffmanSpecs known_;
  std::uint32_t restartInterval_ = 0;
  std::array<bool, kMostComponents> isDone_{};
};

}  // namespace

DecodedFrame DecodeLosslessJpeg(Bytes stream, const FrameFormat& format, MutableBytes frame) {
  const std::uint32_t precision = Decoder(stream, format, frame).Run();
  ExtendSigns(frame, format, precision);
  return {precision, false};
}

}  // namespace tessaret::codecs
