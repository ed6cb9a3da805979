#include "rle/rle_coder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "base/byte_order.h"
#include "failure.h"
#include "rle/pack_bits.h"
#include "rle/rle_header.h"

namespace tessaret::codecs {
namespace {

/// A byte of a code and one behind it stand for 128 bytes at best.
constexpr std::uint64_t kBestRatio = 64;

/// How many samples are unpacked before they are put together, so that what was unpacked is still in the processor's cache.
constexpr std::size_t kPiece = 4096;

constexpr std::size_t kMostSegments = RleHeader::kMostSegments;

/// Samples of one bit are packed eight to a byte, as they are natively (DICOM PS3.5, 8.1.1).
bool HasSingleBits(const FrameFormat& format) { return format.bitsAllocated == 1; }

std::uint32_t SegmentCount(const FrameFormat& format) {
  return format.samples * format.BytesPerSample();
}

/// Bytes that each segment unpacks to.
std::size_t SegmentSize(const FrameFormat& format) {
  const std::uint64_t pixels = format.Pixels();
  return static_cast<std::size_t>(HasSingleBits(format) ? (pixels + 7) / 8 : pixels);
}

/// Where in a pixel the bytes of each segment belong: those of a sample come most significant first.
std::size_t PlaceInPixel(std::size_t segment, std::size_t bytesPerSample) {
  const std::size_t sample = segment / bytesPerSample;
  return sample * bytesPerSample + (bytesPerSample - 1 - segment % bytesPerSample);
}

/// One segment on its way to the frame.
struct Unpacking {
  explicit Unpacking(Bytes segment) : reader(segment) {}
  PackBitsReader reader;
  std::size_t have = 0;  // unpacked bytes
  std::array<std::uint8_t, kPiece + PackBitsReader::kSlack> bytes{};

  /// Has at least `count` bytes, or throws.
  void Need(std::size_t count) {
    if (have < count) have += reader.Read(bytes.data() + have, count - have);
    if (have < count) Fail("an RLE segment ends before the frame does");
  }
  void Drop(std::size_t count) {
    have -= count;
    std::memmove(bytes.data(), bytes.data() + count, have);
  }
};

void MergePairs(const std::uint8_t* high, const std::uint8_t* low, std::size_t count,
                std::uint8_t* to) {
  for (std::size_t at = 0; at < count; ++at) {
    to[2 * at] = low[at];
    to[2 * at + 1] = high[at];
  }
}

void Merge(const std::vector<Unpacking>& segments, std::size_t bytesPerSample, std::size_t count,
           std::uint8_t* to) {
  if (segments.size() == 1) {
    std::memcpy(to, segments[0].bytes.data(), count);
    return;
  }
  if (segments.size() == 2 && bytesPerSample == 2) {
    MergePairs(segments[0].bytes.data(), segments[1].bytes.data(), count, to);
    return;
  }
  const std::size_t stride = segments.size();
  for (std::size_t segment = 0; segment < stride; ++segment) {
    const std::uint8_t* from = segments[segment].bytes.data();
    std::uint8_t* place = to + PlaceInPixel(segment, bytesPerSample);
    for (std::size_t at = 0; at < count; ++at) place[at * stride] = from[at];
  }
}

void Unpack(const RleHeader& header, Bytes stream, std::size_t bytesPerSample, std::size_t size,
            std::uint8_t* to) {
  std::vector<Unpacking> segments;
  segments.reserve(header.count);
  for (std::uint32_t at = 0; at < header.count; ++at) {
    segments.emplace_back(header.Segment(stream, at));
  }
  for (std::size_t done = 0; done < size;) {
    const std::size_t count = std::min(kPiece, size - done);
    for (Unpacking& segment : segments) segment.Need(count);
    Merge(segments, bytesPerSample, count, to + done * segments.size());
    for (Unpacking& segment : segments) segment.Drop(count);
    done += count;
  }
  for (const Unpacking& segment : segments) {
    if (segment.have != 0) Fail("a run of an RLE segment goes beyond the frame");
  }
}

/// Bits of `packed`, the lowest of each byte first, as a byte each.
void SpreadBits(Bytes packed, MutableBytes frame) {
  for (std::size_t at = 0; at < frame.size(); ++at) {
    frame[at] = (packed[at / 8] >> (at % 8)) & 1;
  }
}

/// Appends one segment: one byte of each sample of one kind, row by row.
void AppendSegment(Bytes frame, const FrameFormat& format, std::size_t place,
                   std::vector<std::uint8_t>& stream) {
  const std::size_t stride = SegmentCount(format);
  std::vector<std::uint8_t> row(format.columns);
  const std::uint8_t* from = frame.data() + place;
  for (std::uint32_t y = 0; y < format.rows; ++y) {
    for (std::uint8_t& byte : row) {
      byte = *from;
      from += stride;
    }
    PackBits(row, stream);
  }
  if (stream.size() % 2 != 0) stream.push_back(0);
}

}  // namespace

DecodedFrame RleCoder::Decode(Bytes stream, const FrameFormat& format, MutableBytes frame) const {
  const RleHeader header = ReadRleHeader(stream, SegmentCount(format));
  const std::size_t size = SegmentSize(format);
  RequirePlausible(stream.size(), size * header.count, kBestRatio);
  if (HasSingleBits(format)) {
    if (format.samples != 1) Fail("samples of one bit in more than one colour");
    std::vector<std::uint8_t> packed(size);
    Unpack(header, stream, 1, size, packed.data());
    SpreadBits(packed, frame);
  } else {
    Unpack(header, stream, format.BytesPerSample(), size, frame.data());
  }
  return {.precision = format.bitsAllocated};
}

void RleCoder::RequireEncodable(const FrameFormat& format) const {
  if (HasSingleBits(format)) Fail("samples of one bit are not encoded");
  if (SegmentCount(format) > kMostSegments) {
    Fail("RLE has room for %zu bytes of a pixel, not for %u", kMostSegments, SegmentCount(format));
  }
}

EncodedFrame RleCoder::Encode(Bytes frame, const FrameFormat& format,
                              const EncoderSettings& /*settings*/) const {
  EncodedFrame encoded;
  RleHeader header;
  header.count = SegmentCount(format);
  encoded.stream.reserve(RleHeader::kSize + frame.size() / 2);
  encoded.stream.resize(RleHeader::kSize);
  for (std::uint32_t segment = 0; segment < header.count; ++segment) {
    header.offsets[segment] = static_cast<std::uint32_t>(encoded.stream.size());
    AppendSegment(frame, format, PlaceInPixel(segment, format.BytesPerSample()), encoded.stream);
  }
  WriteRleHeader(header, encoded.stream.data());
  return encoded;
}

}  // namespace tessaret::codecs
