#include "rle/rle_header.h"

#include "base/byte_order.h"
#include "failure.h"

namespace tessaret::codecs {
namespace {

std::uint32_t NumberAt(const std::uint8_t* header, std::size_t index) {
  return LoadLittle32(header + 4 * index);
}

}  // namespace

Bytes RleHeader::Segment(Bytes stream, std::uint32_t index) const {
  const std::size_t begin = offsets[index];
  const std::size_t end = index + 1 < count ? offsets[index + 1] : stream.size();
  return stream.subspan(begin, end - begin);
}

RleHeader ReadRleHeader(Bytes stream, std::uint32_t expected) {
  if (stream.size() < RleHeader::kSize) {
    Fail("%zu bytes are less than an RLE header", stream.size());
  }
  RleHeader header;
  header.count = NumberAt(stream.data(), 0);
  if (header.count != expected || expected > RleHeader::kMostSegments) {
    Fail("the RLE header names %u segments, the data set means %u", header.count, expected);
  }
  std::uint32_t least = RleHeader::kSize;
  for (std::uint32_t at = 0; at < header.count; ++at) {
    const std::uint32_t offset = NumberAt(stream.data(), 1 + at);
    if (offset < least || offset > stream.size()) {
      Fail("RLE segment %u begins at %u of %zu bytes", at + 1, offset, stream.size());
    }
    header.offsets[at] = offset;
    least = offset;
  }
  return header;
}

bool LooksLikeRleHeader(Bytes bytes) {
  if (bytes.size() < RleHeader::kSize) return false;
  const std::uint32_t count = NumberAt(bytes.data(), 0);
  if (count == 0 || count > RleHeader::kMostSegments) return false;
  std::uint32_t before = 0;
  for (std::uint32_t at = 0; at < count; ++at) {
    const std::uint32_t offset = NumberAt(bytes.data(), 1 + at);
    if (at == 0 ? offset != RleHeader::kSize : offset <= before) return false;
    before = offset;
  }
  for (std::size_t at = count; at < RleHeader::kMostSegments; ++at) {
    if (NumberAt(bytes.data(), 1 + at) != 0) return false;
  }
  return true;
}

void WriteRleHeader(const RleHeader& header, std::uint8_t* to) {
  StoreLittle32(to, header.count);
  for (std::size_t at = 0; at < RleHeader::kMostSegments; ++at) {
    StoreLittle32(to + 4 + 4 * at, header.offsets[at]);
  }
}

}  // namespace tessaret::codecs
