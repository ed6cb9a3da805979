#include "stream_shape.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/bounded_reader.h"
#include "base/byte_order.h"
#include "rle/rle_header.h"

namespace tessaret::codecs {
namespace {

// ITU-T T.81, B.1.1.3
constexpr std::array<std::uint8_t, 3> kJpegBegin = {0xFF, 0xD8, 0xFF};
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;

// ITU-T T.800, A.2 and I.5.1
constexpr std::array<std::uint8_t, 4> kCodestreamBegin = {0xFF, 0x4F, 0xFF, 0x51};
constexpr std::array<std::uint8_t, 8> kFileBegin = {0x00, 0x00, 0x00, 0x0C, 'j', 'P', ' ', ' '};
constexpr std::uint16_t kStartOfTilePart = 0xFF90;
constexpr std::uint16_t kEndOfCodestream = 0xFFD9;
constexpr std::size_t kTilePartHeader = 12;

template <std::size_t N>
bool BeginsWith(Bytes bytes, const std::array<std::uint8_t, N>& begin) {
  return bytes.size() >= N && std::equal(begin.begin(), begin.end(), bytes.begin());
}

/// Steps to the next byte FF. False where none is left.
bool SkipToMarker(BoundedReader& reader) {
  if (reader.Left() == 0) return false;
  const void* found = std::memchr(reader.Here(), 0xFF, reader.Left());
  if (found == nullptr) return false;
  return reader.Skip(
      static_cast<std::uint64_t>(static_cast<const std::uint8_t*>(found) - reader.Here()));
}

/// The code of the next marker, stepping over it, over what comes before it and over bytes that are part of coded data. 0 where none
/// is left: it is no marker's code.
std::uint8_t NextMarker(BoundedReader& reader) {
  while (SkipToMarker(reader)) {
    while (reader.Left() > 0 && *reader.Here() == 0xFF) static_cast<void>(reader.Skip(1));
    const std::uint8_t code = reader.U8().value_or(0);
    if (code != 0) return code;
  }
  return 0;
}

bool HasSegment(std::uint8_t marker) {
  const bool isRestartOrImage = marker >= 0xD0 && marker <= 0xD9;
  return !isRestartOrImage && marker != 0x01;
}

bool SkipSegment(BoundedReader& reader) {
  std::uint8_t length[2];
  if (!reader.Copy(length, 2)) return false;
  const std::uint16_t size = LoadBig16(length);
  return size >= 2 && reader.Skip(size - 2U);
}

std::size_t LengthOfJpeg(Bytes bytes) {
  if (!BeginsWith(bytes, kJpegBegin)) return 0;
  BoundedReader reader(bytes.data(), bytes.size());
  if (!reader.Skip(2)) return 0;
  bool isInScan = false;
  for (;;) {
    const std::uint8_t marker = NextMarker(reader);
    if (marker == 0) return 0;
    if (marker == kEndOfImage) return bytes.size() - static_cast<std::size_t>(reader.Left());
    // A code below C0 behind FF is no marker but data of JPEG-LS, which puts a single bit in front of it.
    if (isInScan && marker < 0xC0) continue;
    if (HasSegment(marker) && !SkipSegment(reader)) return 0;
    isInScan = isInScan || marker == kStartOfScan;
  }
}

std::size_t LengthOfCodestream(Bytes bytes) {
  if (!BeginsWith(bytes, kCodestreamBegin)) return 0;
  std::size_t at = 2;
  while (bytes.size() - at >= 4) {
    const std::uint16_t marker = LoadBig16(&bytes[at]);
    if (marker == kEndOfCodestream) return at + 2;
    std::uint64_t length = std::uint64_t{LoadBig16(&bytes[at + 2])} + 2;
    if (marker == kStartOfTilePart) {
      if (bytes.size() - at < kTilePartHeader) return 0;
      length = LoadBig32(&bytes[at + 6]);
      // 0 stands for all the rest, the end marker excepted.
      if (length < kTilePartHeader) return 0;
    }
    if (length < 4 || length > bytes.size() - at) return 0;
    at += static_cast<std::size_t>(length);
  }
  const bool ends = bytes.size() - at >= 2 && LoadBig16(&bytes[at]) == kEndOfCodestream;
  return ends ? at + 2 : 0;
}

}  // namespace

bool BeginsLike(StreamKind kind, Bytes bytes) {
  switch (kind) {
    case StreamKind::kRle:
      return LooksLikeRleHeader(bytes);
    case StreamKind::kJpeg:
      return BeginsWith(bytes, kJpegBegin);
    case StreamKind::kJpeg2000:
      return BeginsWith(bytes, kCodestreamBegin) || BeginsWith(bytes, kFileBegin);
    case StreamKind::kNone:
      break;
  }
  return false;
}

std::size_t LengthOfStream(StreamKind kind, Bytes bytes) {
  switch (kind) {
    case StreamKind::kJpeg:
      return LengthOfJpeg(bytes);
    case StreamKind::kJpeg2000:
      return LengthOfCodestream(bytes);
    default:
      return 0;
  }
}

}  // namespace tessaret::codecs
