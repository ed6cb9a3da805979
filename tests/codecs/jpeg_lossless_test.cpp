#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

#include "codecs/lossless_images.h"
#include "codecs/thread_checks.h"
#include "jpeg/jpeg_baseline_coder.h"
#include "jpeg/jpeg_markers.h"
#include "support/build_kind.h"

namespace tessaret::codecs {
namespace {

/// A gray stream of 5-bit codes, the code of each category being its number.
Stream GrayStream(std::uint8_t precision, std::uint8_t columns, std::uint8_t rows,
                  std::string_view bits, std::uint8_t predictor = 1) {
  return Joined({{0xFF, 0xD8},
                 SegmentOf(0xC4, Joined({{0x00}, test::FlatTable().Content()})),
                 SegmentOf(0xC3, {precision, 0, rows, 0, columns, 1, 1, 0x11, 0}),
                 SegmentOf(0xDA, {1, 1, 0x00, predictor, 0, 0}),
                 Packed(bits),
                 {0xFF, 0xD9}});
}

TEST(JpegLossless, DecodesBitsWrittenByHand) {
  // 128 + 2, 130 - 1, 129 + 0; and below, the first one from above: 130 + 3, 133 - 3, 130 + 1
  const Stream stream =
      GrayStream(8, 3, 2, "00010 10  00001 0  00000  00010 11  00010 00  00001 1");
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 2, 1, 8, 8)),
            (Stream{130, 129, 129, 133, 130, 131}));
}

TEST(JpegLossless, PredictsAsEachPredictorSays) {
  // Samples 10, 13 and, below, 20 and what is predicted, with differences of -118, 3, 10 and 0.
  const Stream expected = {0, 20, 13, 10, 23, 21, 18, 16};
  for (std::uint8_t predictor = 1; predictor <= 7; ++predictor) {
    const Stream stream =
        GrayStream(8, 2, 2, "00111 0001001  00010 11  00100 1010  00000", predictor);
    EXPECT_EQ(Decoded(stream, test::MakeFormat(2, 2, 1, 8, 8)),
              (Stream{10, 13, 20, expected[predictor]}));
  }
}

TEST(JpegLossless, TakesNoBitsBehindTheGreatestDifference) {
  // 32768 + 32768 wraps to 0, that + 1, and 1 + 32768
  const Stream stream = GrayStream(16, 3, 1, "10000  00001 1  10000");
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 1, 1, 16, 16)), (Stream{0, 0, 1, 0, 1, 0x80}));
}

TEST(JpegLossless, WrapsDifferencesModulo65536) {
  // 32768 + 32767 = 65535, + 1 = 0, - 1 = 65535
  const Stream stream = GrayStream(16, 3, 1, "01111 111111111111111  00001 1  00001 0");
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 1, 1, 16, 16)),
            (Stream{0xFF, 0xFF, 0, 0, 0xFF, 0xFF}));
}

/// What the point transform leaves of an image.
PlainImage Shifted(PlainImage image, std::uint32_t transform) {
  for (std::uint32_t& sample : image.samples) sample = sample >> transform << transform;
  return image;
}

TEST(JpegLossless, DecodesAsThePlainCoderEncodesForAllPrecisionsPredictorsAndTransforms) {
  for (std::uint32_t precision = 2; precision <= 16; ++precision) {
    for (PlainOptions options; options.predictor <= 7; ++options.predictor) {
      options.tables = {test::SteepTable(static_cast<std::uint8_t>(precision + options.predictor))};
      for (const std::uint32_t transform : {0u, 1u, precision - 1}) {
        options.pointTransform = transform;
        const PlainImage image = NoisyImage(29, 7, 1, precision, 1u << precision, precision);
        EXPECT_EQ(Decoded(EncodePlainly(image, options), FormatOf(image)),
                  FrameOf(Shifted(image, transform)))
            << precision << " bits, predictor " << options.predictor << ", " << transform;
      }
    }
  }
}

TEST(JpegLossless, DecodesAllNumbersOfComponentsAndShapes) {
  constexpr std::uint32_t kShapes[][2] = {{1, 1}, {2, 1}, {3, 1},  {5, 1},  {1, 9},
                                          {2, 2}, {7, 5}, {64, 3}, {301, 2}};
  for (const auto& [columns, rows] : kShapes) {
    for (std::uint32_t components = 1; components <= 4; ++components) {
      for (PlainOptions options; options.predictor <= 7; ++options.predictor) {
        const PlainImage image = NoisyImage(columns, rows, components, 8, 9);
        for (const bool isInterleaved : {true, false}) {
          options.isInterleaved = isInterleaved;
          options.tables = {test::FlatTable()};
          EXPECT_EQ(Decoded(EncodePlainly(image, options), FormatOf(image)), FrameOf(image));
          options.tables = {test::SteepTable(0), test::SteepTable(5), test::FlatTable(),
                            test::SteepTable(0)};
          EXPECT_EQ(Decoded(EncodePlainly(image, options), FormatOf(image)), FrameOf(image));
        }
      }
    }
  }
}

TEST(JpegLossless, BeginsAnewBehindEachRestartMarker) {
  for (const std::uint32_t rows : {1u, 2u, 3u, 10u, 11u}) {
    for (PlainOptions options; options.predictor <= 7; ++options.predictor) {
      options.rowsPerInterval = rows;
      for (const std::uint32_t components : {1u, 3u}) {
        const PlainImage image = NoisyImage(13, 21, components, 12, 4096);
        for (const bool isInterleaved : {true, false}) {
          options.isInterleaved = isInterleaved;
          EXPECT_EQ(Decoded(EncodePlainly(image, options), FormatOf(image)), FrameOf(image));
        }
      }
    }
  }
}

TEST(JpegLossless, DecodesTwoComponentsInOneScanAndTheThirdInAnother) {
  const PlainImage image = NoisyImage(5, 4, 3, 8, 200);
  PlainImage pair{4, 5, 2, 8, {}};
  PlainImage last{4, 5, 1, 8, {}};
  for (std::size_t at = 0; at < image.samples.size(); ++at) {
    (at % 3 == 2 ? last : pair).samples.push_back(image.samples[at]);
  }
  // The scans of both streams behind the headers of the whole one; the last component's id is 3 there.
  const Stream whole = EncodePlainly(image, {});
  const auto scanOf = [](const Stream& stream) {
    const std::uint8_t sos[] = {0xFF, 0xDA};
    const auto at = std::search(stream.begin(), stream.end(), std::begin(sos), std::end(sos));
    return Stream(at, stream.end() - 2);
  };
  const Stream wholeScan = scanOf(whole);
  const Stream headers(whole.begin(), whole.end() - 2 - static_cast<int>(wholeScan.size()));
  Stream lastScan = scanOf(EncodePlainly(last, {}));
  lastScan[5] = 3;
  const Stream stream = Joined({headers, lastScan, scanOf(EncodePlainly(pair, {})), {0xFF, 0xD9}});
  EXPECT_EQ(Decoded(stream, FormatOf(image)), FrameOf(image));
}

// Large enough that pairs are worth their making.
TEST(JpegLossless, DecodesPairsOfShortDifferencesAmongLongOnes) {
  // From flat images to noise of sixteen bits.
  for (std::uint32_t range = 1; range <= 65536; range *= tessaret::test::kInstrumented ? 16 : 4) {
    const PlainImage image = NoisyImage(257, 80, 1, 16, range);
    const EncodedFrame encoded = JpegLosslessCoder().Encode(FrameOf(image), FormatOf(image), {});
    const PlainImage plain = test::DecodePlainly(encoded.stream);
    EXPECT_EQ(plain.samples, image.samples);
    EXPECT_EQ(Decoded(encoded.stream, FormatOf(image)), FrameOf(plain));
  }
  for (unsigned turn = 0; turn <= 16; turn += tessaret::test::StepBy(5u)) {
    const auto first = static_cast<std::uint8_t>(turn);
    PlainOptions options;
    options.predictor = 1 + first % 7;
    options.tables = {test::SteepTable(first)};
    options.rowsPerInterval = first % 3;
    const PlainImage image = NoisyImage(129, 128, 1 + first % 3, 12, 5);
    EXPECT_EQ(Decoded(EncodePlainly(image, options), FormatOf(image)), FrameOf(image));
  }
}

TEST(JpegLossless, PutsSamplesOfFewerBitsInTheirContainers) {
  const PlainImage image = NoisyImage(9, 3, 1, 8, 256);
  const Stream stream = EncodePlainly(image, {});
  const Stream narrow = FrameOf(image);
  for (const std::uint32_t allocated : {16u, 32u}) {
    const FrameFormat format = test::MakeFormat(9, 3, 1, allocated, allocated);
    Stream frame(format.Size());
    EXPECT_EQ(JpegLosslessCoder().Decode(stream, format, frame).precision, 8u);
    for (std::size_t at = 0; at < narrow.size(); ++at) {
      EXPECT_EQ(frame[at * allocated / 8], narrow[at]);
      EXPECT_EQ(frame[at * allocated / 8 + 1], 0);
    }
  }
}

TEST(JpegLossless, ExtendsSignsOfSamplesThatHaveFewerBitsThanAllocated) {
  // 2048 (the least of twelve bits), 2047, 4095 (-1): from 2048 + 0, - 1, + 2048
  const Stream stream = GrayStream(12, 3, 1, "00000  00001 0  01100 100000000000");
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 1, 1, 16, 12, true)),
            (Stream{0x00, 0xF8, 0xFF, 0x07, 0xFF, 0xFF}));
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 1, 1, 16, 12, false)),
            (Stream{0x00, 0x08, 0xFF, 0x07, 0xFF, 0x0F}));
}

TEST(JpegLossless, TakesSignsThatAreExtendedInTheStreamAlready) {
  // 2048 - 2049 = -1, then - 2047 = -2048, then + 4095 = 2047
  const Stream stream =
      GrayStream(12, 3, 1, "01100 011111111110  01011 00000000000  01100 111111111111");
  EXPECT_EQ(Decoded(stream, test::MakeFormat(3, 1, 1, 16, 12, true)),
            (Stream{0xFF, 0xFF, 0x00, 0xF8, 0xFF, 0x07}));
  EXPECT_EQ(Refusal(stream, test::MakeFormat(3, 1, 1, 16, 12, false)),
            "a sample of 65535 does not go into the 12 bits of the code stream");
}

TEST(JpegLossless, RefusesSamplesThatDoNotGoIntoTheStreamsBits) {
  // 128 + 128 in a stream of eight bits, 128 - 129
  EXPECT_EQ(Refusal(GrayStream(8, 1, 1, "01000 10000000"), test::MakeFormat(1, 1, 1, 16, 8)),
            "a sample of 256 does not go into the 8 bits of the code stream");
  EXPECT_EQ(Refusal(GrayStream(8, 1, 1, "01000 01111110"), test::MakeFormat(1, 1, 1, 8, 8)),
            "a sample of 65535 does not go into the 8 bits of the code stream");
  // 2048 - 2049 - 2048: signed twelve bits end at -2048
  EXPECT_EQ(Refusal(GrayStream(12, 2, 1, "01100 011111111110  01100 011111111111"),
                    test::MakeFormat(2, 1, 1, 16, 12, true)),
            "a sample of 63487 does not go into the 12 bits of the code stream");
}

TEST(JpegLossless, LooksPastWhatDoesNoHarm) {
  const FrameFormat format = test::MakeFormat(2, 1, 1, 8, 8);
  const Stream expected = {128, 129};
  const Stream table = SegmentOf(0xC4, Joined({{0x00}, test::FlatTable().Content()}));
  const Stream header =
      SegmentOf(0xC3, {8, 0, 1, 0, 2, 1, 1, 0x22, 3});  // no sampling of one component
  const Stream scan =
      SegmentOf(0xDA, {1, 1, 0x03, 1, 63, 0x10});   // ends and tables of other processes
  const Stream data = {0b00000'000, 0b01'1'00000};  // filled up with zeros
  const Stream end = {0xFF, 0xD9};
  EXPECT_EQ(Decoded(Joined({{0xFF, 0xD8}, table, header, scan, data, end}), format), expected);
  const Stream unknown = Joined({SegmentOf(0xE3, {1, 2, 3}),
                                 {0xFF, 0xFF},
                                 SegmentOf(0xFE, {}),
                                 SegmentOf(0xDB, {9}),
                                 SegmentOf(0xDD, {0, 0})});
  EXPECT_EQ(Decoded(Joined({{0xFF, 0xD8},
                            unknown,
                            header,
                            unknown,
                            table,
                            unknown,
                            scan,
                            data,
                            {0xFF, 0xFF},
                            end,
                            {0, 0xFF, 1, 2}}),
                    format),
            expected);
  const Stream ones = {0b00000'000, 0b01'1'11111, 0xFF, 0, 0xFF, 0};
  EXPECT_EQ(Decoded(Joined({{0xFF, 0xD8}, table, header, scan, ones, end}), format), expected);
}

TEST(JpegLossless, LooksPastValuesOfATableThatNeverCome) {
  const FrameFormat format = test::MakeFormat(2, 1, 1, 8, 8);
  Stream listed(17);
  listed[2] = 4;  // 00, 01, 10, 11 for these
  listed.insert(listed.end(), {0, 1, 17, 241});
  const auto stream = [&](const std::string& bits) {
    return Joined({{0xFF, 0xD8},
                   SegmentOf(0xC4, listed),
                   SegmentOf(0xC3, {8, 0, 1, 0, 2, 1, 1, 0x11, 0}),
                   SegmentOf(0xDA, {1, 1, 0x00, 1, 0, 0}),
                   Packed(bits),
                   {0xFF, 0xD9}});
  };
  EXPECT_EQ(Decoded(stream("00 01 1"), format), (Stream{128, 129}));
  EXPECT_EQ(Refusal(stream("00 10 00000000000000001"), format), "a difference has 17 bits");
  EXPECT_EQ(Refusal(stream("11 000000000000000000"), format), "a difference has 241 bits");
}

TEST(JpegLossless, DecodesBaselineStreamsThatFilesGiveThisSyntax) {
  const FrameFormat format = test::MakeFormat(16, 16, 1, 8, 8);
  const Stream flat(format.Size(), 77);  // no block of one value loses anything
  const EncodedFrame encoded = JpegBaselineCoder().Encode(flat, format, {});
  EXPECT_EQ(Decoded(encoded.stream, format), flat);
}

TEST(JpegLossless, GivesBackEveryKindOfFrame) {
  const JpegLosslessCoder coder;
  for (const std::uint32_t samples : {1u, 2u, 3u, 4u}) {
    for (std::uint32_t stored = 1; stored <= 16; ++stored) {
      for (const bool isSigned : {false, true}) {
        for (const auto& [columns, rows] : {std::pair(1u, 1u), std::pair(33u, 5u)}) {
          const FrameFormat format =
              test::MakeFormat(columns, rows, samples, stored > 8 ? 16 : 8, stored, isSigned);
          for (const test::Pattern pattern : test::kPatterns) {
            const Stream frame = test::MakeFrame(format, pattern);
            const EncodedFrame encoded = coder.Encode(frame, format, {});
            EXPECT_FALSE(encoded.isLossy);
            EXPECT_EQ(Decoded(encoded.stream, format), frame);
            PlainImage plain = test::DecodePlainly(encoded.stream);
            for (std::uint32_t& sample : plain.samples) {
              sample &= (1u << format.bitsAllocated) - 1;
            }
            plain.precision = format.bitsAllocated;
            EXPECT_EQ(FrameOf(plain), frame);
          }
        }
      }
    }
  }
}

/// Of the frame header.
std::uint32_t PrecisionOf(const Stream& stream) { return FindFrameHeader(stream).precision; }

TEST(JpegLossless, EncodesTheBitsThatAreStoredWhereSamplesHaveNoOthers) {
  const auto encoded = [](const FrameFormat& format, const Stream& frame) {
    return JpegLosslessCoder().Encode(frame, format, {}).stream;
  };
  EXPECT_EQ(PrecisionOf(encoded(test::MakeFormat(1, 1, 1, 16, 12), {0xFF, 0x0F})), 12u);
  EXPECT_EQ(PrecisionOf(encoded(test::MakeFormat(1, 1, 1, 16, 12), {0xFF, 0x1F})), 16u);
  EXPECT_EQ(PrecisionOf(encoded(test::MakeFormat(1, 1, 1, 16, 12, true), {0xFF, 0x07})), 16u);
  EXPECT_EQ(PrecisionOf(encoded(test::MakeFormat(1, 1, 1, 8, 1), {1})), 2u);
}

TEST(JpegLossless, MarksRedGreenAndBlueAsSuch) {
  // Adobe's segment with transform 0, behind SOI. All else has none.
  const Stream mark = {0xFF, 0xEE, 0, 14, 'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0};
  for (const char* photometric : {"RGB", "YBR_FULL"}) {
    FrameFormat format = test::MakeFormat(2, 2, 3, 8, 8);
    format.photometric = photometric;
    const Stream stream = JpegLosslessCoder().Encode(Stream(12, 5), format, {}).stream;
    const Stream begin(stream.begin() + 2, stream.begin() + 18);
    EXPECT_EQ(begin == mark, format.photometric == "RGB");
  }
}

TEST(JpegLossless, EncodesToNoMoreThanItsBestTableNeeds) {
  // All differences but the first are 0, for which the table has a code of one bit.
  const FrameFormat format = test::MakeFormat(80, 10, 1, 8, 8);
  const Stream stream = JpegLosslessCoder().Encode(Stream(format.Size(), 128), format, {}).stream;
  // SOI 2, SOF 13, DHT 4 + 17 + 1, SOS 10, 800 bits 100, EOI 2
  EXPECT_EQ(stream.size(), 2u + 13 + 22 + 10 + 100 + 2);
}

TEST(JpegLossless, SaysWhatItCannotEncode) {
  const auto words = [](std::uint32_t allocated, std::uint32_t samples) {
    return test::WordsOf([&] {
      JpegLosslessCoder().RequireEncodable(test::MakeFormat(4, 4, samples, allocated, allocated));
    });
  };
  EXPECT_EQ(words(8, 1), "");
  EXPECT_EQ(words(16, 4), "");
  EXPECT_EQ(words(32, 1), "lossless JPEG has samples of up to 16 bits, not of 32 allocated");
  EXPECT_EQ(words(1, 1), "samples of one bit are not encoded");
}

TEST(JpegLossless, ServesManyThreadsWithOneObject) {
  const PlainImage image = NoisyImage(64, 64, 1, 12, 300);
  test::CheckThreads(JpegLosslessCoder(), FrameOf(image), FormatOf(image), FormatOf(image));
}

}  // namespace
}  // namespace tessaret::codecs
