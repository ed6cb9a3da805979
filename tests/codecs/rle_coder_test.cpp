#include "rle/rle_coder.h"

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "rle/rle_header.h"

namespace tessaret::codecs {
namespace {

using Octets = std::vector<std::uint8_t>;
using test::MakeFormat;

const RleCoder kCoder;

/// A frame of these segments, one behind the other.
Octets Stream(const std::vector<Octets>& segments) {
  RleHeader header;
  header.count = static_cast<std::uint32_t>(segments.size());
  Octets stream(RleHeader::kSize);
  for (std::size_t at = 0; at < segments.size(); ++at) {
    header.offsets[at] = static_cast<std::uint32_t>(stream.size());
    stream.insert(stream.end(), segments[at].begin(), segments[at].end());
  }
  WriteRleHeader(header, stream.data());
  return stream;
}

Octets Decoded(const Octets& stream, const FrameFormat& format) {
  Octets frame(format.Size());
  kCoder.Decode(stream, format, frame);
  return frame;
}

std::string Words(const Octets& stream, const FrameFormat& format) {
  return test::WordsOf([&] { Decoded(stream, format); });
}

TEST(RleCoder, RunsAndLiteralsAreUnpacked) {
  // 2: three literals. 254: three times the next. 128: nothing. 0: one literal.
  EXPECT_EQ(Decoded(Stream({{2, 10, 20, 30, 254, 7, 128, 0, 9, 0}}), MakeFormat(7, 1, 1, 8, 8)),
            Octets({10, 20, 30, 7, 7, 7, 9}));
}

TEST(RleCoder, BytesOfASampleComeMostSignificantFirst) {
  EXPECT_EQ(Decoded(Stream({{1, 0x12, 0x34}, {1, 0x56, 0x78}}), MakeFormat(2, 1, 1, 16, 16)),
            Octets({0x56, 0x12, 0x78, 0x34}));
  EXPECT_EQ(Decoded(Stream({{0, 1}, {0, 2}, {0, 3}, {0, 4}}), MakeFormat(1, 1, 1, 32, 32)),
            Octets({4, 3, 2, 1}));
}

TEST(RleCoder, ColoursComeByPixel) {
  EXPECT_EQ(Decoded(Stream({{1, 1, 2}, {1, 11, 12}, {1, 21, 22}}), MakeFormat(2, 1, 3, 8, 8)),
            Octets({1, 11, 21, 2, 12, 22}));
  EXPECT_EQ(Decoded(Stream({{0, 1}, {0, 2}, {0, 3}, {0, 4}, {0, 5}, {0, 6}}),
                    MakeFormat(1, 1, 3, 16, 16)),
            Octets({2, 1, 4, 3, 6, 5}));
}

TEST(RleCoder, SingleBitsAreSpreadLowestFirst) {
  FrameFormat format = MakeFormat(5, 2, 1, 1, 1);
  // 0x05 is 1, 0, 1 from the lowest bit; the second byte has the last two of ten.
  EXPECT_EQ(Decoded(Stream({{1, 0x05, 0x02}}), format), Octets({1, 0, 1, 0, 0, 0, 0, 0, 0, 1}));
  format.samples = 3;
  EXPECT_EQ(Words(Stream({{1, 0, 0}, {1, 0, 0}, {1, 0, 0}}), format),
            "samples of one bit in more than one colour");
}

TEST(RleCoder, RunsMayGoOnFromRowToRowAndAcrossWhatIsUnpackedAtOnce) {
  // 128 and 127 bytes by turns never end where a power of two does.
  const FrameFormat format = MakeFormat(255, 100, 1, 8, 8);
  Octets segment;
  for (std::uint8_t row = 0; row < 100; ++row) {
    segment.insert(segment.end(), {129, row, 130, static_cast<std::uint8_t>(row + 100)});
  }
  const Octets frame = Decoded(Stream({segment}), format);
  for (std::size_t row = 0; row < 100; ++row) {
    EXPECT_EQ(frame[row * 255], row);
    EXPECT_EQ(frame[row * 255 + 127], row);
    EXPECT_EQ(frame[row * 255 + 128], row + 100);
    EXPECT_EQ(frame[row * 255 + 254], row + 100);
  }
}

TEST(RleCoder, HeadersThatDoNotFitAreRefused) {
  const FrameFormat format = MakeFormat(2, 1, 1, 16, 16);
  const Octets good = Stream({{1, 1, 2}, {1, 3, 4}});
  EXPECT_EQ(Words(good, format), "");
  EXPECT_EQ(Words(Octets(63), format), "63 bytes are less than an RLE header");
  const auto with = [&](std::size_t at, Octets bytes) {
    Octets changed = good;
    std::copy(bytes.begin(), bytes.end(), changed.begin() + static_cast<std::ptrdiff_t>(at));
    return Words(changed, format);
  };
  EXPECT_EQ(with(0, {0}), "the RLE header names 0 segments, the data set means 2");
  EXPECT_EQ(with(0, {16}), "the RLE header names 16 segments, the data set means 2");
  EXPECT_EQ(with(0, {255, 255, 255, 255}),
            "the RLE header names 4294967295 segments, the data set means 2");
  EXPECT_EQ(with(4, {63}), "RLE segment 1 begins at 63 of 70 bytes");
  EXPECT_EQ(with(8, {66}), "an RLE segment ends before the frame does");
  EXPECT_EQ(with(8, {63}), "RLE segment 2 begins at 63 of 70 bytes");
  EXPECT_EQ(with(8, {71}), "RLE segment 2 begins at 71 of 70 bytes");
  EXPECT_EQ(with(8, {255, 255, 255, 255}), "RLE segment 2 begins at 4294967295 of 70 bytes");
}

TEST(RleCoder, AHeaderHasRoomForFifteenSegments) {
  Octets stream(128);
  stream[0] = 16;
  EXPECT_EQ(Words(stream, MakeFormat(1, 1, 4, 32, 32)),
            "the RLE header names 16 segments, the data set means 16");
}

TEST(RleCoder, SegmentsThatEndEarlyAreRefused) {
  const FrameFormat format = MakeFormat(4, 1, 1, 8, 8);
  const std::string words = "an RLE segment ends before the frame does";
  EXPECT_EQ(Words(Stream({{}}), format), words);
  EXPECT_EQ(Words(Stream({{2, 1, 2, 3}}), format), words);
  EXPECT_EQ(Words(Stream({{3, 1, 2, 3}}), format), words);
  EXPECT_EQ(Words(Stream({{253}}), format), words);
  EXPECT_EQ(Words(Stream({{128, 128, 128}}), format), words);
}

TEST(RleCoder, ARunBeyondTheFrameIsRefusedAndPaddingIsNot) {
  const FrameFormat format = MakeFormat(4, 1, 1, 8, 8);
  EXPECT_EQ(Words(Stream({{252, 1}}), format), "a run of an RLE segment goes beyond the frame");
  EXPECT_EQ(Words(Stream({{4, 1, 2, 3, 4, 5}}), format),
            "a run of an RLE segment goes beyond the frame");
  EXPECT_EQ(Words(Stream({{253, 1, 0}}), format), "");
  EXPECT_EQ(Words(Stream({{253, 1, 0, 0, 0, 0}}), format), "");
}

TEST(RleCoder, SmallStreamsThatClaimLargeFramesAreRefusedBeforehand) {
  Octets stream = Stream({{129, 0}});
  stream.resize(584);
  FrameFormat format = MakeFormat(65535, 65535, 1, 8, 8);
  // Nothing is written: there is no frame.
  EXPECT_EQ(test::WordsOf([&] { kCoder.Decode(stream, format, {}); }),
            "584 bytes cannot hold 4294836225 samples");
}

TEST(RleCoder, EachTruncationIsRefused) {
  const FrameFormat format = MakeFormat(31, 7, 3, 8, 8);
  const Octets frame = test::MakeFrame(format, test::Pattern::kSteps);
  const Octets stream = kCoder.Encode(frame, format, {}).stream;
  // The last byte may be padding.
  for (std::size_t size = 0; size + 1 < stream.size(); ++size) {
    EXPECT_NE(
        Words(Octets(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)), format),
        "")
        << size;
  }
}

TEST(RleCoder, RowsArePackedAloneByRunsOfThreeAndMore) {
  // Two rows of four: the run does not go on into the second row, and a run of two is not worth a code.
  const Octets frame = {5, 5, 5, 5, 5, 5, 6, 7};
  EXPECT_EQ(kCoder.Encode(frame, MakeFormat(4, 2, 1, 8, 8), {}).stream,
            Stream({{253, 5, 3, 5, 5, 6, 7, 0}}));
}

TEST(RleCoder, LongRunsAndLongLiteralsAreCutAtTheMostACodeHolds) {
  Octets frame(300, 9);
  const Octets run = kCoder.Encode(frame, MakeFormat(300, 1, 1, 8, 8), {}).stream;
  EXPECT_EQ(run, Stream({{129, 9, 129, 9, 213, 9}}));  // 128 + 128 + 44
  for (std::size_t at = 0; at < frame.size(); ++at) frame[at] = static_cast<std::uint8_t>(at * 7);
  const Octets literals = kCoder.Encode(frame, MakeFormat(300, 1, 1, 8, 8), {}).stream;
  EXPECT_EQ(literals.size(), 64u + 300 + 3 + 1);
  EXPECT_EQ(literals[64], 127);
  EXPECT_EQ(literals[64 + 129], 127);
  EXPECT_EQ(literals[64 + 258], 43);
}

TEST(RleCoder, WhatItEncodesItDecodes) {
  for (const FrameFormat& format :
       {MakeFormat(1, 1, 1, 8, 8), MakeFormat(1, 1, 1, 16, 16), MakeFormat(53, 1, 1, 16, 16),
        MakeFormat(1, 53, 1, 16, 12), MakeFormat(17, 9, 1, 8, 8), MakeFormat(300, 40, 1, 16, 12),
        MakeFormat(300, 40, 1, 16, 16, true), MakeFormat(31, 7, 3, 8, 8),
        MakeFormat(31, 7, 3, 16, 16), MakeFormat(5, 5, 3, 32, 32), MakeFormat(5, 5, 4, 8, 8)}) {
    for (const test::Pattern pattern : test::kPatterns) {
      const Octets frame = test::MakeFrame(format, pattern);
      kCoder.RequireEncodable(format);
      const EncodedFrame encoded = kCoder.Encode(frame, format, {});
      EXPECT_FALSE(encoded.isLossy);
      EXPECT_EQ(encoded.stream.size() % 2, 0u);
      EXPECT_EQ(Decoded(encoded.stream, format), frame);
    }
  }
}

TEST(RleCoder, PixelsOfMoreBytesThanSegmentsAreRefused) {
  EXPECT_EQ(test::WordsOf([] { kCoder.RequireEncodable(MakeFormat(1, 1, 4, 32, 32)); }),
            "RLE has room for 15 bytes of a pixel, not for 16");
}

}  // namespace
}  // namespace tessaret::codecs
