#include "jpeg/jpeg_markers.h"

#include "failure.h"

namespace tessaret::codecs {
namespace {

constexpr std::uint8_t kMark = 0xFF;

[[noreturn]] void FailShort(const char* what) { Fail("%s ends early", what); }

std::uint8_t Byte(BoundedReader& from, const char* what) {
  const auto value = from.U8();
  if (!value) FailShort(what);
  return *value;
}

std::uint32_t Number(BoundedReader& from, const char* what) {
  const std::uint32_t high = Byte(from, what);
  return high << 8 | Byte(from, what);
}

/// Markers that stand alone, and one without a name: none of them belongs between segments.
bool HasNoLength(std::uint8_t code) {
  return code < 0xC0 || (code >= static_cast<std::uint8_t>(Marker::kRst0) &&
                         code <= static_cast<std::uint8_t>(Marker::kSoi));
}

FrameComponent ReadComponent(BoundedReader& from, const FrameHeader& before) {
  constexpr const char* kWhat = "the frame header";
  FrameComponent component;
  component.id = Byte(from, kWhat);
  const std::uint8_t sampling = Byte(from, kWhat);
  component.horizontal = sampling >> 4;
  component.vertical = sampling & 15;
  component.quantisation = Byte(from, kWhat);
  if (component.horizontal == 0 || component.horizontal > 4 || component.vertical == 0 ||
      component.vertical > 4) {
    Fail("component %u has sampling factors of %u x %u", component.id, component.horizontal,
         component.vertical);
  }
  if (component.quantisation > 3) {
    Fail("component %u has quantisation table %u", component.id, component.quantisation);
  }
  for (std::size_t at = 0; at < before.count; ++at) {
    if (before.components[at].id == component.id) Fail("two components have id %u", component.id);
  }
  return component;
}

std::size_t IndexOf(const FrameHeader& frame, std::uint8_t id) {
  for (std::size_t at = 0; at < frame.count; ++at) {
    if (frame.components[at].id == id) return at;
  }
  Fail("a scan names component %u, which the frame does not have", id);
}

}  // namespace

bool IsFrameHeader(Marker marker) {
  return marker >= Marker::kSof0 && marker <= Marker::kSof15 && marker != Marker::kDht &&
         marker != Marker::kJpg && marker != Marker::kDac;
}

MarkerReader::MarkerReader(Bytes stream) : rest_(stream.data(), stream.size()) {
  if (Number(rest_, "the code stream") != (kMark << 8 | static_cast<unsigned>(Marker::kSoi))) {
    Fail("the code stream does not begin as JPEG does");
  }
}

Segment MarkerReader::Next() {
  constexpr const char* kWhat = "the code stream";
  if (Byte(rest_, kWhat) != kMark) Fail("there are bytes between segments of the code stream");
  std::uint8_t code = kMark;
  while (code == kMark) code = Byte(rest_, kWhat);
  Segment segment;
  segment.marker = static_cast<Marker>(code);
  if (segment.marker == Marker::kEoi) return segment;
  if (HasNoLength(code)) Fail("marker %02X stands where none belongs", code);
  const std::uint32_t length = Number(rest_, kWhat);
  if (length < 2) Fail("the segment of marker %02X has a length of %u", code, length);
  const auto content = rest_.Sub(length - 2);
  if (!content) Fail("the segment of marker %02X goes beyond the code stream", code);
  segment.content = *content;
  return segment;
}

void MarkerReader::Skip(std::size_t count) {
  if (!rest_.Skip(count)) FailShort("the code stream");
}

FrameHeader ReadFrameHeader(Segment segment) {
  constexpr const char* kWhat = "the frame header";
  BoundedReader& from = segment.content;
  FrameHeader header;
  header.marker = segment.marker;
  header.precision = Byte(from, kWhat);
  header.rows = Number(from, kWhat);
  header.columns = Number(from, kWhat);
  const std::size_t count = Byte(from, kWhat);
  if (header.columns == 0) Fail("the code stream has no columns");
  if (header.rows == 0) Fail("the code stream does not tell its rows in the frame header");
  if (count == 0 || count > kMostComponents) Fail("the code stream has %zu components", count);
  for (; header.count < count; ++header.count) {
    header.components[header.count] = ReadComponent(from, header);
  }
  if (from.Left() != 0) Fail("%s is longer than its %zu components", kWhat, count);
  return header;
}

FrameHeader FindFrameHeader(Bytes stream) {
  MarkerReader reader(stream);
  for (;;) {
    const Segment segment = reader.Next();
    if (IsFrameHeader(segment.marker)) return ReadFrameHeader(segment);
    if (segment.marker == Marker::kEoi || segment.marker == Marker::kSos) {
      Fail("the code stream has no frame header");
    }
  }
}

void RequireSameShape(const FrameHeader& header, const FrameFormat& format) {
  RequireSameShape(StreamShape{.columns = header.columns,
                               .rows = header.rows,
                               .components = static_cast<std::uint32_t>(header.count),
                               .precision = header.precision},
                   format);
}

ScanHeader ReadScanHeader(Segment segment, const FrameHeader& frame) {
  constexpr const char* kWhat = "the scan header";
  BoundedReader& from = segment.content;
  ScanHeader header;
  header.count = Byte(from, kWhat);
  if (header.count == 0 || header.count > frame.count) {
    Fail("a scan has %zu of %zu components", header.count, frame.count);
  }
  for (std::size_t at = 0; at < header.count; ++at) {
    ScanComponent& component = header.components[at];
    component.index = IndexOf(frame, Byte(from, kWhat));
    if (at != 0 && component.index <= header.components[at - 1].index) {
      Fail("a scan has its components in another order than the frame");
    }
    const std::uint8_t tables = Byte(from, kWhat);
    component.dcTable = tables >> 4;
    component.acTable = tables & 15;
    if (component.dcTable > 3 || component.acTable > 3) {
      Fail("a scan names Huffman tables %u and %u", component.dcTable, component.acTable);
    }
  }
  header.start = Byte(from, kWhat);
  header.end = Byte(from, kWhat);
  const std::uint8_t approximation = Byte(from, kWhat);
  header.high = approximation >> 4;
  header.low = approximation & 15;
  if (from.Left() != 0) Fail("%s is longer than its %zu components", kWhat, header.count);
  return header;
}

std::uint32_t ReadRestartInterval(Segment segment) {
  constexpr const char* kWhat = "the restart interval";
  const std::uint32_t interval = Number(segment.content, kWhat);
  if (segment.content.Left() != 0) Fail("%s has more than two bytes", kWhat);
  return interval;
}

}  // namespace tessaret::codecs
