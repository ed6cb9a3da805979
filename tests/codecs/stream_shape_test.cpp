#include "stream_shape.h"

#include <gtest/gtest.h>

#include "support/bytes.h"

namespace tessaret::codecs {
namespace {

using ::tessaret::test::Bytes;
using ::tessaret::test::Joined;

const Bytes kStart = {0xFF, 0xD8};
const Bytes kEnd = {0xFF, 0xD9};
const Bytes kComment = {0xFF, 0xFE, 0x00, 0x04, 0xFF, 0xD9};  // what it holds looks like an end
const Bytes kScan = {0xFF, 0xDA, 0x00, 0x03, 0x00};

std::size_t LengthOfJpeg(const Bytes& bytes) { return LengthOfStream(StreamKind::kJpeg, bytes); }

TEST(StreamShape, AJpegEndsAtItsEndMarkerOutsideOfSegments) {
  const Bytes stream =
      Joined({kStart, kComment, kScan, {0x12, 0xFF, 0x00, 0xFF, 0xD3, 0x34}, kEnd});
  EXPECT_EQ(LengthOfJpeg(stream), stream.size());
  EXPECT_EQ(LengthOfJpeg(Joined({stream, {0, 0, 0xFF, 0xD9}})), stream.size());
}

TEST(StreamShape, FillBytesAndJpegLsDataAreNoMarkers) {
  // In JPEG-LS a byte below 80 follows FF in coded data.
  const Bytes stream =
      Joined({kStart, {0xFF, 0xFF}, kComment, kScan, {0xFF, 0x7F, 0x99, 0xFF, 0x01, 0xFF}, kEnd});
  EXPECT_EQ(LengthOfJpeg(stream), stream.size());
}

TEST(StreamShape, MarkersWithoutALengthHaveNothingBehindThem) {
  // What a length would be read from is the next marker, which would lead beyond the end.
  const Bytes stream = Joined({kStart, {0xFF, 0x01}, {0xFF, 0xD0}, kComment, kScan, {0x12}, kEnd});
  EXPECT_EQ(LengthOfJpeg(stream), stream.size());
}

TEST(StreamShape, ATruncatedJpegHasNoEnd) {
  const Bytes stream = Joined({kStart, kComment, kScan, {0x12, 0xFF, 0x00}, kEnd});
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_EQ(LengthOfJpeg(Bytes(stream.begin(), stream.begin() + static_cast<int>(size))), 0u)
        << size;
  }
  EXPECT_EQ(LengthOfJpeg(Joined({kStart, {0xFF, 0xFE, 0x00, 0x01}, kEnd})), 0u);
}

const Bytes kMainHeader = {0xFF, 0x4F, 0xFF, 0x51, 0x00, 0x04, 0x00, 0x00};

/// A tile-part of `length` bytes in all, as Psot says.
Bytes TilePart(std::uint8_t length, std::size_t size) {
  Bytes part = {0xFF, 0x90, 0x00, 0x0A, 0, 0, 0, 0, 0, length, 0, 1};
  part.resize(size, 0xFF);
  return part;
}

std::size_t LengthOfJ2k(const Bytes& bytes) { return LengthOfStream(StreamKind::kJpeg2000, bytes); }

TEST(StreamShape, AJpeg2000EndsBehindItsTileParts) {
  const Bytes stream = Joined({kMainHeader, TilePart(20, 20), TilePart(14, 14), kEnd});
  EXPECT_EQ(LengthOfJ2k(stream), 8u + 20 + 14 + 2);
  EXPECT_EQ(LengthOfJ2k(Joined({stream, {0, 0, 1}})), stream.size());
}

TEST(StreamShape, ATruncatedJpeg2000HasNoEnd) {
  const Bytes stream = Joined({kMainHeader, TilePart(20, 20), kEnd});
  for (std::size_t size = 0; size < stream.size(); ++size) {
    EXPECT_EQ(LengthOfJ2k(Bytes(stream.begin(), stream.begin() + static_cast<int>(size))), 0u)
        << size;
  }
  EXPECT_EQ(LengthOfJ2k(Joined({kMainHeader, TilePart(11, 20), kEnd})), 0u);
  EXPECT_EQ(LengthOfJ2k(Joined({kMainHeader, TilePart(0, 20), kEnd})), 0u);
}

TEST(StreamShape, StreamsAreKnownByTheirFirstBytes) {
  EXPECT_TRUE(BeginsLike(StreamKind::kJpeg, Bytes{0xFF, 0xD8, 0xFF}));
  EXPECT_FALSE(BeginsLike(StreamKind::kJpeg, Bytes{0xFF, 0xD8, 0x00}));
  EXPECT_FALSE(BeginsLike(StreamKind::kJpeg, Bytes{0xFF, 0xD8}));
  EXPECT_TRUE(BeginsLike(StreamKind::kJpeg2000, Bytes{0xFF, 0x4F, 0xFF, 0x51}));
  EXPECT_TRUE(BeginsLike(StreamKind::kJpeg2000, Bytes{0, 0, 0, 12, 'j', 'P', ' ', ' '}));
  EXPECT_FALSE(BeginsLike(StreamKind::kJpeg2000, Bytes{0xFF, 0xD8, 0xFF}));
  EXPECT_FALSE(BeginsLike(StreamKind::kNone, Bytes{0xFF, 0xD8, 0xFF}));
}

TEST(StreamShape, AnRleHeaderHasItsSegmentsInOrderAndNothingBehindThem) {
  Bytes header(64);
  header[0] = 2;
  header[4] = 64;
  header[8] = 70;
  EXPECT_TRUE(BeginsLike(StreamKind::kRle, header));
  const auto with = [&](std::size_t at, std::uint8_t value) {
    Bytes changed = header;
    changed[at] = value;
    return BeginsLike(StreamKind::kRle, changed);
  };
  EXPECT_FALSE(with(0, 0));
  EXPECT_FALSE(with(0, 16));
  EXPECT_FALSE(with(1, 1));
  EXPECT_FALSE(with(4, 65));
  EXPECT_FALSE(with(8, 64));
  EXPECT_FALSE(with(12, 1));
  EXPECT_FALSE(with(63, 1));
  EXPECT_FALSE(BeginsLike(StreamKind::kRle, Bytes(header.begin(), header.end() - 1)));
}

}  // namespace
}  // namespace tessaret::codecs
