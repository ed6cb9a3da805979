#include "jpeg/dct_survey.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "failure.h"
#include "jpeg/jpeg_colours.h"

namespace tessaret::codecs {
namespace {

/// Each scan walks over the whole image, for next to no bytes. Encoders make a dozen.
constexpr std::size_t kMostScans = 64;

/// How often they may come to a block on average, and how often in all before that is asked.
constexpr std::uint64_t kMostPasses = 16;
constexpr std::uint64_t kFewVisits = 1 << 18;

/// A component's number of scans, by its index.
using ScanCounts = std::array<std::uint64_t, kMostComponents>;

/// A block takes a code of one bit for its first coefficient and another for the rest; in progressive streams the latter come for
/// many at once.
constexpr std::uint64_t kBlocksPerByte = 4;
constexpr std::uint64_t kProgressiveBlocksPerByte = 8;

/// Bytes up to the marker that ends the data of a scan, or to the end.
std::size_t EntropyLength(Bytes rest) {
  constexpr std::uint8_t kMark = 0xFF;
  for (std::size_t at = 0; at < rest.size();) {
    const void* found = std::memchr(rest.data() + at, kMark, rest.size() - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - rest.data());
    if (at + 1 == rest.size()) break;
    const std::uint8_t code = rest[at + 1];
    const bool isRestart = code >= static_cast<std::uint8_t>(Marker::kRst0) &&
                           code <= static_cast<std::uint8_t>(Marker::kRst7);
    if (code != 0 && code != kMark && !isRestart) return at;
    at += code == kMark ? 1 : 2;
  }
  return rest.size();
}

/// Throws where scans come to more blocks than there are bytes to show for it.
void RequireFewVisits(const DctLayout& layout, const ScanCounts& scans, std::uint64_t bytes) {
  std::uint64_t visits = 0;
  for (std::size_t at = 0; at < layout.count; ++at) {
    const DctComponent& component = layout.components[at];
    visits += scans[at] * component.blocksAcross * component.blocksDown;
  }
  const std::uint64_t most = kMostPasses * layout.Blocks() + kProgressiveBlocksPerByte * bytes;
  if (visits > std::max(most, kFewVisits)) {
    Fail("the code stream goes over its image more often than any needs");
  }
}

void ReadApplication(const Segment& segment, ColourMarks& marks) {
  BoundedReader content = segment.content;
  std::array<std::uint8_t, 12> begin{};
  if (segment.marker == Marker::kApp0) {
    marks.hasJfif |= content.Copy(begin.data(), 5) && std::memcmp(begin.data(), "JFIF", 5) == 0;
  } else if (segment.marker == Marker::kApp14) {
    const bool isAdobe =
        content.Copy(begin.data(), 12) && std::memcmp(begin.data(), "Adobe", 5) == 0;
    if (isAdobe) marks.adobeTransform = begin[11];
  }
}

void RequireDecodable(const FrameHeader& header, const FrameFormat& format) {
  if (header.marker > Marker::kSof2) {
    Fail("the code stream is of a kind (SOF%u) that is not decoded here",
         static_cast<unsigned>(header.marker) - static_cast<unsigned>(Marker::kSof0));
  }
  RequireSameShape(header, format);
  if (header.precision != 8 && header.precision != 12) {
    Fail("samples of %u bits are not decoded", header.precision);
  }
  if (header.count != 1 && header.count != 3) Fail("%zu components are not decoded", header.count);
}

bool AreCalledRgb(const FrameHeader& header) {
  return header.components[0].id == 'R' && header.components[1].id == 'G' &&
         header.components[2].id == 'B';
}

}  // namespace

DctSurvey SurveyDct(Bytes stream, const FrameFormat& format) {
  std::optional<FrameHeader> header;
  ColourMarks marks;
  std::size_t scans = 0;
  ScanCounts scansOf{};
  MarkerReader reader(stream);
  for (Segment segment = reader.Next(); segment.marker != Marker::kEoi; segment = reader.Next()) {
    if (IsFrameHeader(segment.marker)) {
      if (header) Fail("the code stream has two frame headers");
      header = ReadFrameHeader(segment);
      RequireDecodable(*header, format);
    } else if (segment.marker == Marker::kSos) {
      if (!header) Fail("a scan comes before the frame header");
      if (++scans > kMostScans) Fail("the code stream has more scans than any image needs");
      const ScanHeader scan = ReadScanHeader(segment, *header);
      for (std::size_t at = 0; at < scan.count; ++at) ++scansOf[scan.components[at].index];
      reader.Skip(EntropyLength(reader.Rest()));
    } else {
      ReadApplication(segment, marks);
    }
  }
  if (!header) Fail("the code stream has no frame header");
  DctSurvey survey{*header, MakeDctLayout(*header), false};
  RequirePlausible(stream.size(), survey.layout.Blocks(),
                   header->marker == Marker::kSof2 ? kProgressiveBlocksPerByte : kBlocksPerByte);
  RequireFewVisits(survey.layout, scansOf, stream.size());
  survey.isYcc = header->count == 3 && AreYcc(marks, format.photometric, !AreCalledRgb(*header));
  return survey;
}

}  // namespace tessaret::codecs
