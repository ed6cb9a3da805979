// The marker segments of JPEG code streams (ITU-T T.81, B): what they all have in common, and the headers of frames and scans.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/bounded_reader.h"
#include "frame_format.h"

namespace tessaret::codecs {

enum class Marker : std::uint8_t {
  kSof0 = 0xC0,  // baseline DCT
  kSof1 = 0xC1,  // extended sequential DCT
  kSof2 = 0xC2,  // progressive DCT
  kSof3 = 0xC3,  // lossless
  kDht = 0xC4,
  kJpg = 0xC8,
  kDac = 0xCC,
  kSof15 = 0xCF,
  kRst0 = 0xD0,
  kRst7 = 0xD7,
  kSoi = 0xD8,
  kEoi = 0xD9,
  kSos = 0xDA,
  kDqt = 0xDB,
  kDnl = 0xDC,
  kDri = 0xDD,
  kApp0 = 0xE0,
  kApp14 = 0xEE,
  kApp15 = 0xEF,
  kCom = 0xFE,
};

/// One of kSof0 to kSof15, without the three others that lie among them.
bool IsFrameHeader(Marker marker);

struct Segment {
  Marker marker = Marker::kEoi;
  BoundedReader content;  // behind the length; empty for kEoi
};

/// Walks over the segments, from that behind SOI on. All that is no segment is a failure: markers without a length (but for EOI),
/// lengths that are too small or go beyond the stream, and other bytes than fill bytes between segments.
class MarkerReader {
 public:
  explicit MarkerReader(Bytes stream);

  /// What comes next. Throws CodecFailure at the end of the stream.
  Segment Next();

  /// All that follows the segment read last; behind SOS it begins with entropy-coded data.
  [[nodiscard]] Bytes Rest() const {
    return {rest_.Here(), static_cast<std::size_t>(rest_.Left())};
  }

  /// Steps over `count` bytes of Rest().
  void Skip(std::size_t count);

 private:
  BoundedReader rest_;
};

inline constexpr std::size_t kMostComponents = 4;

struct FrameComponent {
  std::uint8_t id = 0;
  std::uint8_t horizontal = 1;  // sampling factors, 1 to 4
  std::uint8_t vertical = 1;
  std::uint8_t quantisation = 0;  // table, 0 to 3
};

struct FrameHeader {
  Marker marker = Marker::kSof0;
  std::uint32_t precision = 0;
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  std::size_t count = 0;
  std::array<FrameComponent, kMostComponents> components{};
};

/// Throws CodecFailure where the segment is damaged and for what it says of no sense: no columns, no components, sampling
/// factors of 0. Also for streams that tell their height at the end only.
FrameHeader ReadFrameHeader(Segment segment);

/// The header of a whole code stream's frame. Throws CodecFailure where there is none before the first scan.
FrameHeader FindFrameHeader(Bytes stream);

/// Throws CodecFailure, with both numbers, where width, height or number of components are not those of the data set, and where
/// samples do not fit what is allocated for them.
void RequireSameShape(const FrameHeader& header, const FrameFormat& format);

struct ScanComponent {
  std::size_t index = 0;     // in FrameHeader::components
  std::uint8_t dcTable = 0;  // 0 to 3; lossless streams have these only
  std::uint8_t acTable = 0;
};

struct ScanHeader {
  std::size_t count = 0;
  std::array<ScanComponent, kMostComponents> components{};
  std::uint8_t start = 0;  // Ss: first coefficient, or the predictor
  std::uint8_t end = 0;    // Se
  std::uint8_t high = 0;   // Ah
  std::uint8_t low = 0;    // Al, or the point transform
};

/// Throws CodecFailure where the segment is damaged, names components that the frame does not have or that are not in the frame's
/// order, and for ids of tables above 3.
ScanHeader ReadScanHeader(Segment segment, const FrameHeader& frame);

/// Of a DRI segment: MCUs between restart markers, 0 for none.
std::uint32_t ReadRestartInterval(Segment segment);

}  // namespace tessaret::codecs
