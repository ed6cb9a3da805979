#include "jpeg/jpeg_baseline_coder.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <gtest/gtest.h>

#include "codecs/dct_checks.h"
#include "codecs/flat_jpeg.h"
#include "codecs/thread_checks.h"
#include "support/allocation_failure.h"
#include "support/measured_child.h"

namespace tessaret::codecs {
namespace {

using test::Find;
using test::Inserted;

using tessaret::test::Joined;
using test::FlatJpeg;
using Stream = tessaret::test::Bytes;

constexpr const char* kBaseline = "1.2.840.10008.1.2.4.50";

const JpegBaselineCoder kCoder;

FrameFormat Gray(std::uint32_t columns, std::uint32_t rows) {
  return test::MakeFormat(columns, rows, 1, 8, 8);
}

FrameFormat Colour(std::uint32_t columns, std::uint32_t rows, const char* photometric = "RGB") {
  FrameFormat format = test::MakeFormat(columns, rows, 3, 8, 8);
  format.photometric = photometric;
  return format;
}

Stream Decoded(const Stream& stream, const FrameFormat& format) {
  return test::DecodeGuarded(kCoder, stream, format);
}

std::string WordsOf(const Stream& stream, const FrameFormat& format) {
  return test::WordsOfDecoding(kCoder, stream, format);
}

Stream Encoded(const Stream& frame, const FrameFormat& format, std::uint32_t quality) {
  EncoderSettings settings;
  settings.jpegQuality = quality;
  return kCoder.Encode(frame, format, settings).stream;
}

/// A progressive image of 64 x 64 with so many scans of all coefficients but the first.
Stream ManyScans(std::size_t count) {
  FlatJpeg image;
  image.frameMarker = 0xC2;
  image.columns = image.rows = 64;
  image.scanEnd = 0;
  Stream stream = test::MakeFlatJpeg(image);
  stream.resize(stream.size() - 2);
  // Coefficients 1 to 63 of no block.
  Stream scan = test::JpegSegment(0xDA, {1, 1, 0, 1, 63, 0});
  const Stream bits = test::EntropyBytes(std::string(64, '0'));
  scan.insert(scan.end(), bits.begin(), bits.end());
  for (std::size_t at = 0; at < count; ++at) stream.insert(stream.end(), scan.begin(), scan.end());
  stream.insert(stream.end(), {0xFF, 0xD9});
  return stream;
}

TEST(JpegBaselineCoder, AStreamOfWhichEachBitIsKnownGivesThePixelsThatItMeans) {
  const Stream stream = Joined({{0xFF, 0xD8},
                                test::FactorSegment(),
                                {0xFF, 0xC0, 0, 11, 8, 0, 8, 0, 8, 1, 1, 0x11, 0},
                                test::FlatTables(),
                                {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0},
                                // category 4, the value 10 in four bits, end of the block
                                test::EntropyBytes("0100 1010 0"),
                                {0xFF, 0xD9}});
  // 10 times the factor 8, by 8 for each sample
  EXPECT_EQ(Decoded(stream, Gray(8, 8)), Stream(64, 128 + 10));
}

TEST(JpegBaselineCoder, BlocksAddUpFromOneToTheNextAndBeginAnewBehindRestartMarkers) {
  FlatJpeg image;
  image.columns = 21;
  image.rows = 33;
  image.values = {-100};
  for (const unsigned interval : {0u, 1u, 2u, 4u, 15u, 100u}) {
    image.interval = interval;
    EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), Gray(21, 33)), Stream(21 * 33, 128 - 100))
        << interval;
  }
}

TEST(JpegBaselineCoder, WhatIsBelowBlackOrAboveWhiteIsBlackOrWhite) {
  FlatJpeg image;
  image.values = {1000};
  EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), Gray(8, 8)), Stream(64, 255));
  image.values = {-1000};
  EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), Gray(8, 8)), Stream(64, 0));
}

TEST(JpegBaselineCoder, SamplesOfEightBitsFillWiderOnesFromBelow) {
  FlatJpeg image;
  image.values = {-3};
  FrameFormat format = test::MakeFormat(8, 8, 1, 16, 8);
  Stream expected;
  for (int sample = 0; sample < 64; ++sample) expected.insert(expected.end(), {125, 0});
  EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), format), expected);
  // 1111 1101 is -3 where samples are signed.
  format.isSigned = true;
  image.values = {125};
  expected.clear();
  for (int sample = 0; sample < 64; ++sample) expected.insert(expected.end(), {0xFD, 0xFF});
  EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), format), expected);
}

/// Red, green and blue of the three components (ITU-T T.871, 7).
std::array<double, 3> RgbOf(const std::array<double, 3>& ycc) {
  const double cb = ycc[1] - 128;
  const double cr = ycc[2] - 128;
  return {ycc[0] + 1.402 * cr, ycc[0] - 0.344136 * cb - 0.714136 * cr, ycc[0] + 1.772 * cb};
}

/// As Adobe's, with transform 1, but of another name.
Stream OtherMark() { return {'O', 't', 'h', 'e', 'r', 0, 100, 0, 0, 0, 0, 1}; }

struct ColourCase {
  const char* photometric;
  std::vector<Stream> segments;
  std::vector<std::uint8_t> ids;
  bool isTransformed;
};

TEST(JpegBaselineCoder, TheStreamsOwnWordAboutColoursWinsThenTheDataSets) {
  const std::vector<std::uint8_t> plain = {1, 2, 3};
  const ColourCase cases[] = {
      {"RGB", {}, plain, false},
      {"RGB", {test::AdobeSegment(0)}, plain, false},
      {"RGB", {test::AdobeSegment(1)}, plain, true},
      {"RGB", {test::JfifSegment()}, plain, true},
      {"RGB", {test::JfifSegment(), test::AdobeSegment(0)}, plain, false},
      {"YBR_FULL_422", {}, plain, true},
      {"YBR_FULL", {}, {'R', 'G', 'B'}, true},
      {"YBR_FULL", {test::AdobeSegment(0)}, plain, false},
      {"YBR_FULL", {test::AdobeSegment(2)}, plain, true},  // of four components
      {"YBR_FULL", {test::JfifSegment()}, plain, true},
      {"RGB", {test::JpegSegment(0xEE, OtherMark())}, plain, false},
      {"RGB", {test::JpegSegment(0xEE, {'A', 'd', 'o', 'b', 'e', 1, 1, 1})}, plain, false},
      {"RGB", {test::JpegSegment(0xE0, {'J', 'F', 'X', 'X', 0, 0x10})}, plain, false},
      {"", {}, plain, true},
      {"", {}, {'R', 'G', 'B'}, false},
  };
  for (const ColourCase& one : cases) {
    FlatJpeg image;
    image.values = {20, -30, 50};
    image.ids = one.ids;
    image.segments = one.segments;
    const FrameFormat format = Colour(8, 8, one.photometric);
    Stream frame(format.Size());
    const DecodedFrame told = kCoder.Decode(test::MakeFlatJpeg(image), format, frame);
    EXPECT_TRUE(told.isRgb);
    EXPECT_EQ(told.precision, 8u);
    const std::array<double, 3> stored = {148, 98, 178};
    const std::array<double, 3> expected = one.isTransformed ? RgbOf(stored) : stored;
    for (std::size_t sample = 0; sample < 3; ++sample) {
      EXPECT_NEAR(frame[sample], expected[sample], 1)
          << one.photometric << one.segments.size() << one.ids[0];
      EXPECT_EQ(frame[sample + 3 * 63], frame[sample]);
    }
  }
}

TEST(JpegBaselineCoder, AGrayStreamIsNotRgb) {
  FlatJpeg image;
  Stream frame(64);
  EXPECT_FALSE(kCoder.Decode(test::MakeFlatJpeg(image), Gray(8, 8), frame).isRgb);
}

TEST(JpegBaselineCoder, ComponentsMayHaveScansOfTheirOwnAndFewerSamples) {
  for (const std::uint8_t sampling : Stream{0x11, 0x21, 0x22, 0x12}) {
    FlatJpeg image;
    image.columns = 19;
    image.rows = 37;
    image.values = {20, -30, 50};
    image.sampling[0] = sampling;
    const FrameFormat format = Colour(19, 37);
    const Stream together = Decoded(test::MakeFlatJpeg(image), format);
    image.isInterleaved = false;
    EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), format), together);
    for (std::size_t at = 0; at < together.size(); at += 3) {
      EXPECT_EQ(together[at], 148);
      EXPECT_EQ(together[at + 1], 98);
      EXPECT_EQ(together[at + 2], 178);
    }
  }
}

class WithDcmtk : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(test::HasProgram("dcmcjpeg")); }
};

using JpegBaselineAndDcmtk = WithDcmtk;

constexpr std::pair<std::uint32_t, std::uint32_t> kSizes[] = {{64, 48}, {17, 9}, {1, 1}, {1, 40},
                                                              {40, 1},  {8, 8},  {3, 3}};

TEST_F(JpegBaselineAndDcmtk, GrayStreamsOfTheOtherGiveTheSamePixels) {
  for (const auto& [columns, rows] : kSizes) {
    const FrameFormat format = Gray(columns, rows);
    for (const test::Pattern pattern : test::PatternsFor(format)) {
      const Stream frame = test::MakeFrame(format, pattern);
      const Stream stream = test::EncodedByPeer(frame, format, {"+eb", "+q", "70"});
      const Stream expected = test::DecodedByPeer(stream, format, kBaseline);
      EXPECT_LE(test::Difference(Decoded(stream, format), expected, format), 1)
          << columns << " x " << rows;
    }
  }
}

TEST_F(JpegBaselineAndDcmtk, ColourStreamsOfTheOtherGiveTheSamePixels) {
  const std::pair<const char*, const char*> kinds[] = {
      {"+s4", "YBR_FULL"}, {"+s2", "YBR_FULL_422"}, {"+n1", "YBR_FULL"}, {"+cr", "RGB"}};
  for (const auto& [option, photometric] : kinds) {
    for (const auto& [columns, rows] : kSizes) {
      FrameFormat format = Colour(columns, rows);
      for (const test::Pattern pattern : {test::Pattern::kGradient, test::Pattern::kNoise}) {
        format.photometric = "RGB";
        const Stream frame = test::MakeFrame(format, pattern);
        const Stream stream = test::EncodedByPeer(frame, format, {"+eb", "+q", "90", option});
        format.photometric = photometric;
        const bool isRgb = std::string(option) == "+cr";
        const Stream expected =
            test::DecodedByPeer(stream, format, kBaseline, isRgb ? "+cn" : "+ca");
        // Half a gray level of three components, each times at most 1.772.
        EXPECT_LE(test::Difference(Decoded(stream, format), expected, format), 2)
            << option << " " << columns << " x " << rows;
      }
    }
  }
}

TEST_F(JpegBaselineAndDcmtk, TheOtherDecodesWhatThisEncodes) {
  for (const auto& [columns, rows] : kSizes) {
    for (const std::uint32_t samples : {1u, 3u}) {
      FrameFormat format = samples == 1 ? Gray(columns, rows) : Colour(columns, rows);
      for (const test::Pattern pattern : test::PatternsFor(format)) {
        const Stream frame = test::MakeFrame(format, pattern);
        FrameFormat coded = format;
        coded.photometric = kCoder.EncodedPhotometric(format, true);
        const Stream stream = Encoded(frame, format, 95);
        const Stream back =
            test::DecodedByPeer(stream, coded, kBaseline, samples == 1 ? "+cn" : "+ca");
        EXPECT_LE(test::Difference(Decoded(stream, coded), back, coded), samples == 1 ? 1 : 2);
        if (samples == 1 && pattern != test::Pattern::kNoise) {
          EXPECT_LT(test::MeanSquare(frame, back, format), 30) << columns << " x " << rows;
        }
      }
    }
  }
}

/// What the program `jpeg` encodes with these options from a file of samples.
Stream EncodedByJpegTools(const Stream& frame, const FrameFormat& format,
                          std::vector<std::string> options) {
  const tessaret::test::TempFolder folder;
  tessaret::test::WriteBytes(folder.File("in.pnm"), test::PnmFile(frame, format));
  options.insert(options.begin(), "jpeg");
  options.insert(options.end(), {folder.File("in.pnm"), folder.File("out.jpg")});
  if (!test::RunProgram(options)) throw std::runtime_error("jpeg failed");
  return tessaret::test::ReadBytes(folder.File("out.jpg"));
}

Stream DecodedByJpegTools(const Stream& stream, const FrameFormat& format) {
  const tessaret::test::TempFolder folder;
  tessaret::test::WriteBytes(folder.File("in.jpg"), stream);
  if (!test::RunProgram({"jpeg", folder.File("in.jpg"), folder.File("out.pnm")})) {
    throw std::runtime_error("jpeg failed");
  }
  return test::PnmPixels(tessaret::test::ReadBytes(folder.File("out.pnm")), format);
}

/// Without edges, at which chrominance may go beyond its range, where decoders differ.
Stream SmoothFrame(const FrameFormat& format) {
  Stream frame;
  for (std::uint32_t y = 0; y < format.rows; ++y) {
    for (std::uint32_t x = 0; x < format.columns; ++x) {
      for (std::uint32_t sample = 0; sample < format.samples; ++sample) {
        frame.push_back(static_cast<std::uint8_t>(60 + x + y + 10 * sample));
      }
    }
  }
  return frame;
}

TEST(JpegBaselineAndJpegTools, SequentialAndProgressiveStreamsWithRestartsGiveTheSamePixels) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const std::vector<std::vector<std::string>> kinds = {{"-q", "80"},
                                                       {"-q", "80", "-h"},
                                                       {"-q", "80", "-bl", "-z", "3"},
                                                       {"-q", "80", "-v"},
                                                       {"-q", "80", "-v", "-z", "2"},
                                                       {"-q", "80", "-qv"}};
  for (const std::vector<std::string>& options : kinds) {
    for (const FrameFormat& format : {Gray(61, 43), Colour(50, 30)}) {
      const Stream frame = SmoothFrame(format);
      const Stream stream = EncodedByJpegTools(frame, format, options);
      const Stream expected = DecodedByJpegTools(stream, format);
      EXPECT_LE(test::Difference(Decoded(stream, format), expected, format),
                format.samples == 1 ? 1 : 3)
          << options.back() << " " << format.samples;
    }
  }
}

TEST(JpegBaselineAndJpegTools, TheOtherDecodesWhatThisEncodes) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  for (const test::Pattern pattern : test::kPatterns) {
    const FrameFormat format = Gray(61, 43);
    const Stream stream = Encoded(test::MakeFrame(format, pattern), format, 75);
    EXPECT_LE(test::Difference(Decoded(stream, format), DecodedByJpegTools(stream, format), format),
              1);
  }
}

TEST(JpegBaselineCoder, QualityIsThatOfTheUsualTables) {
  const FrameFormat format = Gray(16, 16);
  const Stream frame = test::MakeFrame(format, test::Pattern::kNoise);
  // The first factors of the table for luminance are 16 and 11; 50 takes them as they are, 75 halves, 25 doubles, 100 makes all 1.
  const std::tuple<std::uint32_t, int, int> cases[] = {
      {50, 16, 11}, {75, 8, 6}, {25, 32, 22}, {100, 1, 1}};
  for (const auto& [quality, first, second] : cases) {
    const Stream stream = Encoded(frame, format, quality);
    const std::size_t at = Find(stream, 0xDB);
    EXPECT_EQ(stream[at + 5], first);
    EXPECT_EQ(stream[at + 6], second);
  }
  EXPECT_LT(Encoded(frame, format, 25).size(), Encoded(frame, format, 90).size());
}

TEST(JpegBaselineCoder, ColourIsEncodedWithHalfTheColumnsOfChrominance) {
  const FrameFormat format = Colour(20, 20);
  const Stream stream = Encoded(test::MakeFrame(format, test::Pattern::kGradient), format, 90);
  const std::size_t at = Find(stream, 0xC0);
  EXPECT_EQ(Stream(stream.begin() + static_cast<std::ptrdiff_t>(at) + 9,
                   stream.begin() + static_cast<std::ptrdiff_t>(at) + 19),
            (Stream{3, 1, 0x21, 0, 2, 0x11, 1, 3, 0x11, 1}));
  EXPECT_EQ(kCoder.EncodedPhotometric(format, true), "YBR_FULL_422");
  EXPECT_EQ(kCoder.EncodedPhotometric(Colour(20, 20, "YBR_FULL"), true), "YBR_FULL_422");
  FrameFormat inverted = Gray(20, 20);
  inverted.photometric = "MONOCHROME1";
  EXPECT_EQ(kCoder.EncodedPhotometric(inverted, true), "MONOCHROME1");
}

TEST(JpegBaselineCoder, SamplesThatAreLuminanceAndChrominanceAreEncodedAsTheyAre) {
  const FrameFormat format = Colour(16, 16, "YBR_FULL");
  Stream frame;
  for (int pixel = 0; pixel < 256; ++pixel) frame.insert(frame.end(), {120, 90, 200});
  const Stream back = Decoded(Encoded(frame, format, 100), Colour(16, 16, "YBR_FULL_422"));
  const std::array<double, 3> expected = RgbOf({120, 90, 200});
  for (std::size_t at = 0; at < back.size(); ++at) EXPECT_NEAR(back[at], expected[at % 3], 2);
}

TEST(JpegBaselineCoder, RedGreenAndBlueComeBack) {
  const FrameFormat format = Colour(16, 16);
  Stream frame;
  for (int pixel = 0; pixel < 256; ++pixel) frame.insert(frame.end(), {200, 40, 90});
  const Stream back = Decoded(Encoded(frame, format, 100), Colour(16, 16, "YBR_FULL_422"));
  for (std::size_t at = 0; at < back.size(); ++at) EXPECT_NEAR(back[at], frame[at], 2);
}

TEST(JpegBaselineCoder, OnlyWhatEightBitsOfGrayOrColourHoldIsEncoded) {
  const auto words = [](const FrameFormat& format) {
    return test::WordsOf([&] { kCoder.RequireEncodable(format); });
  };
  EXPECT_EQ(words(Gray(4, 4)), "");
  EXPECT_EQ(words(Colour(4, 4)), "");
  EXPECT_EQ(words(Colour(4, 4, "YBR_FULL")), "");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 1, 8, 7)),
            "samples of 7 bits in 8 are not encoded, only those of 8 in 8");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 1, 16, 12)),
            "samples of 12 bits in 16 are not encoded, only those of 8 in 8");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 1, 8, 8, true)), "signed samples are not encoded");
  EXPECT_EQ(words(Colour(4, 4, "YBR_FULL_422")),
            "3 samples of \"YBR_FULL_422\" are not encoded with losses");
  EXPECT_NE(words(Colour(4, 4, "YBR_ICT")), "");
  FrameFormat palette = Gray(4, 4);
  palette.photometric = "PALETTE COLOR";
  EXPECT_EQ(words(palette), "1 samples of \"PALETTE COLOR\" are not encoded with losses");
  EXPECT_NE(words(test::MakeFormat(4, 4, 4, 8, 8)), "");
  EXPECT_NE(words(Gray(65535, 1)), "");
  EXPECT_NE(words(Gray(1, 65535)), "");
  EXPECT_STREQ(kCoder.LossyMethod(), "ISO_10918_1");
  EXPECT_TRUE(kCoder.Encode(Stream(16), Gray(4, 4), {}).isLossy);
}

TEST(JpegBaselineCoder, AnotherShapeThanTheDataSetsIsToldWithBoth) {
  FlatJpeg image;
  const Stream gray = test::MakeFlatJpeg(image);
  EXPECT_EQ(WordsOf(gray, Gray(8, 9)), "the code stream has 8 x 8 pixels, the data set 8 x 9");
  EXPECT_EQ(WordsOf(gray, Gray(9, 8)), "the code stream has 8 x 8 pixels, the data set 9 x 8");
  EXPECT_EQ(WordsOf(gray, Colour(8, 8)),
            "the code stream has 1 components, the data set 3 samples per pixel");
  EXPECT_NE(WordsOf(gray, test::MakeFormat(8, 8, 1, 1, 1)), "");
  image.values = {0, 0, 0};
  EXPECT_EQ(WordsOf(test::MakeFlatJpeg(image), Gray(8, 8)),
            "the code stream has 3 components, the data set 1 samples per pixel");
}

TEST(JpegBaselineCoder, WhatDoesNotTouchThePixelsIsPassedOver) {
  FlatJpeg image;
  image.values = {5};
  const Stream plain = test::MakeFlatJpeg(image);
  const Stream expected(64, 133);
  const Stream oddities[] = {
      Joined({plain, {0}}),
      Joined({plain, Stream(100, 0)}),
      Inserted(plain, 2, test::JpegSegment(0xE5, {1, 2, 3})),
      Inserted(plain, 2, test::JpegSegment(0xFE, {})),
      Inserted(plain, 2, {0xFF, 0xFF, 0xFF}),
      Inserted(plain, plain.size() - 2, {0xFF, 0xFF}),
      Inserted(plain, 2, test::JpegSegment(0xEE, {'A', 'd', 'o', 'b', 'e', 0, 0})),
  };
  for (const Stream& stream : oddities) EXPECT_EQ(Decoded(stream, Gray(8, 8)), expected);
  image.scanEnd = 0;
  EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), Gray(8, 8)), expected);
}

TEST(JpegBaselineCoder, DamageIsAnErrorAndNeverGray) {
  FlatJpeg image;
  image.columns = 80;
  image.rows = 80;
  image.interval = 10;
  image.values = {5};
  const FrameFormat format = Gray(80, 80);
  const Stream good = test::MakeFlatJpeg(image);
  ASSERT_EQ(WordsOf(good, format), "");

  Stream lost = good;
  const std::size_t restart = Find(good, 0xD3);
  lost.erase(lost.begin() + static_cast<std::ptrdiff_t>(restart),
             lost.begin() + static_cast<std::ptrdiff_t>(restart) + 2);
  EXPECT_NE(WordsOf(lost, format), "");
  Stream wrong = good;
  wrong[restart + 1] = 0xD4;
  EXPECT_NE(WordsOf(wrong, format), "");
  EXPECT_NE(WordsOf(Inserted(good, restart, {0x12, 0x34}), format), "");
  EXPECT_NE(WordsOf(Inserted(good, good.size() - 2, {0x12, 0x34, 0x56}), format), "");

  image.interval = 0;
  image.isEnded = false;
  EXPECT_NE(WordsOf(test::MakeFlatJpeg(image), format), "");
  image.isEnded = true;
  image.rows = 72;
  Stream fewer = test::MakeFlatJpeg(image);
  fewer[Find(fewer, 0xC0) + 6] = 80;
  EXPECT_NE(WordsOf(fewer, format), "");
}

TEST(JpegBaselineCoder, BitsThatAreNoCodeAreAnError) {
  // 1111 is the only code of four bits that the table does not have; a wide image is decoded in another way than a small one.
  FlatJpeg image;
  image.columns = 4096;
  image.rows = 64;
  const FrameFormat format = Gray(4096, 64);
  Stream stream = test::MakeFlatJpeg(image);
  ASSERT_EQ(WordsOf(stream, format), "");
  stream[Find(stream, 0xDA) + 10 + 100] = 0xFC;
  EXPECT_NE(WordsOf(stream, format), "");
}

TEST(JpegBaselineCoder, WhatTheLibraryForgivesIsAnError) {
  // 0 ends the block, 10 is fifteen zeros and a value of one bit, of which five are 80 coefficients.
  const Stream ac = {0x10, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xF1};
  Stream plain = test::MakeFlatJpeg({});
  plain.resize(Find(plain, 0xDA) + 10);
  const auto with = [&](const char* bits) {
    return Joined({plain, test::EntropyBytes(bits), {0xFF, 0xD9}});
  };
  EXPECT_EQ(WordsOf(with("0000 0"), Gray(8, 8)), "");
  EXPECT_EQ(WordsOf(with("1111 0"), Gray(8, 8)), "there are bits that are no Huffman code");
  EXPECT_EQ(WordsOf(with("0000 1"), Gray(8, 8)), "there are bits that are no Huffman code");
  EXPECT_EQ(WordsOf(with("0000 0 0000 0000 000"), Gray(8, 8)),
            "there are more entropy-coded data than the image needs");
  plain = Inserted(plain, Find(plain, 0xDA), test::JpegSegment(0xC4, ac));
  EXPECT_EQ(WordsOf(with("0000 101 101 101 0"), Gray(8, 8)), "");
  EXPECT_EQ(WordsOf(with("0000 101 101 101 101 101 101 0"), Gray(8, 8)),
            "a block has too many coefficients");
  // Long enough that the data are not at their end.
  std::string many = "0000 101 101 101 101 101 101 0";
  many += std::string(8000, '0');
  EXPECT_EQ(WordsOf(with(many.c_str()), Gray(8, 8)), "a block has too many coefficients");
}

TEST(JpegBaselineCoder, FirstCoefficientsThatAddUpToTooMuchAreAnError) {
  // 3 times 16383 is beyond 16 bits, unless each begins anew.
  FlatJpeg image;
  image.columns = 24;
  image.values = {16383};
  image.interval = 1;
  EXPECT_EQ(WordsOf(test::MakeFlatJpeg(image), Gray(24, 8)), "");
  image.interval = 0;
  Stream stream = test::MakeFlatJpeg(image);
  stream.resize(Find(stream, 0xDA) + 10);
  const std::string block = "1110 11111111111111 0";
  EXPECT_EQ(WordsOf(Joined({stream, test::EntropyBytes(block + block + block), {0xFF, 0xD9}}),
                    Gray(24, 8)),
            "a coefficient is out of its range");
}

TEST(JpegBaselineCoder, DamageOfStreamsOfAnySizeIsTold) {
  // Large ones are checked on another core meanwhile.
  for (const std::size_t filling : {10u, 40000u}) {
    FlatJpeg image;
    image.values = {0, 0, 0};
    image.isInterleaved = false;
    image.segments = {test::JpegSegment(0xFE, Stream(filling))};
    const FrameFormat format = Colour(8, 8);
    const Stream good = test::MakeFlatJpeg(image);
    ASSERT_EQ(WordsOf(good, format), "");
    // The library takes the later scan.
    EXPECT_EQ(WordsOf(Inserted(good, good.size() - 2, test::FlatScan(image, 2, 1)), format),
              "component 3 comes in two scans");
    // This one it refuses too, in other words.
    Stream wrong = good;
    wrong[wrong.size() - 3] = 0xF0;
    EXPECT_EQ(WordsOf(wrong, format), "there are bits that are no Huffman code");
    FlatJpeg cut;
    cut.columns = cut.rows = 80;
    cut.interval = 10;
    cut.segments = image.segments;
    Stream lost = test::MakeFlatJpeg(cut);
    lost[Find(lost, 0xD3) + 1] = 0xD4;
    EXPECT_EQ(WordsOf(lost, Gray(80, 80)), "restart marker 4 is lost");
  }
}

TEST(JpegBaselineCoder, FourComponentsAreRefused) {
  FlatJpeg image;
  image.values = {0, 0, 0, 0};
  image.sampling = {0x11, 0x11, 0x11, 0x11};
  image.ids = {1, 2, 3, 4};
  EXPECT_EQ(WordsOf(test::MakeFlatJpeg(image), test::MakeFormat(8, 8, 4, 8, 8)),
            "4 components are not decoded");
}

TEST(JpegBaselineCoder, ABlockNeedsTwoBits) {
  // More than four blocks a byte are possible in progressive streams alone, whatever the bytes are.
  const auto words = [](unsigned blocks, std::size_t bytes) {
    Stream stream = test::MakeFlatJpeg({});
    const std::size_t header = Find(stream, 0xC0);
    stream[header + 5] = static_cast<std::uint8_t>(blocks * 8 >> 8);
    stream[header + 6] = static_cast<std::uint8_t>(blocks * 8);
    stream = Inserted(stream, 2, test::JpegSegment(0xFE, Stream(bytes - stream.size() - 4)));
    return WordsOf(stream, Gray(8, 8 * blocks));
  };
  EXPECT_EQ(words(4 * 1000, 1000), "the entropy-coded data end early");
  EXPECT_EQ(words(4 * 1000 + 4, 1000), "1000 bytes cannot hold 4004 samples");
}

TEST(JpegBaselineCoder, ProgressiveScansThatAreMissingAreAnError) {
  EXPECT_EQ(WordsOf(ManyScans(1), Gray(64, 64)), "");
  EXPECT_EQ(WordsOf(ManyScans(0), Gray(64, 64)), "scans of component 1 are missing");
  EXPECT_EQ(WordsOf(ManyScans(2), Gray(64, 64)), "a scan does not go on from those before");
  EXPECT_EQ(WordsOf(ManyScans(100), Gray(64, 64)),
            "the code stream has more scans than any image needs");
}

TEST(JpegBaselineCoder, AComponentWithoutAScanIsAnError) {
  FlatJpeg image;
  image.values = {0, 0, 0};
  image.isInterleaved = false;
  Stream stream = test::MakeFlatJpeg(image);
  ASSERT_EQ(WordsOf(stream, Colour(8, 8)), "");
  // The last scan: ten bytes of header, one of data.
  stream.erase(stream.end() - 13, stream.end() - 2);
  EXPECT_EQ(WordsOf(stream, Colour(8, 8)), "component 3 is in no scan");
}

TEST(JpegBaselineCoder, HostileStreamsAreRefusedSoon) {
  const Stream plain = test::MakeFlatJpeg({});
  const auto with = [&](std::uint8_t marker, std::size_t offset, std::uint8_t value) {
    Stream stream = plain;
    stream.at(Find(stream, marker) + offset) = value;
    return stream;
  };
  const std::pair<const char*, Stream> cases[] = {
      {"empty", {}},
      {"a length of 0", Inserted(plain, 2, {0xFF, 0xE1, 0, 0})},
      {"a length of 1", Inserted(plain, 2, {0xFF, 0xE1, 0, 1})},
      {"a length beyond the end", Inserted(plain, 2, {0xFF, 0xE1, 0xFF, 0xFF})},
      {"a length of 0 between scans",
       Inserted(ManyScans(1), ManyScans(1).size() - 2, {0xFF, 0xE1, 0, 0})},
      {"a marker without a meaning", Inserted(plain, 2, {0xFF, 0x01})},
      {"quantisation table 4", with(0xDB, 4, 4)},
      {"a quantisation table of 16 bits and more", with(0xDB, 4, 0x20)},
      {"Huffman table 15", with(0xC4, 4, 15)},
      {"a first coefficient of more than 15 bits", with(0xC4, 21 + 14, 16)},
      {"a scan with table 4", with(0xDA, 6, 0x40)},
      {"sampling 0", with(0xC0, 11, 0x01)},
      {"sampling 5", with(0xC0, 11, 0x15)},
      {"height 0", with(0xC0, 6, 0)},
      {"no scan", Joined({Stream(plain.begin(),
                                 plain.begin() + static_cast<std::ptrdiff_t>(Find(plain, 0xDA))),
                          {0xFF, 0xD9}})},
      {"arithmetic", with(0xC0, 1, 0xC9)},
      {"lossless", with(0xC0, 1, 0xC3)},
      {"two frame headers", Inserted(plain, Find(plain, 0xDA), test::FlatFrameHeader({}))},
      {"10 000 scans", ManyScans(10000)},
      {"10 000 images", Joined({Stream(20000, 0xFF), Stream(20000, 0xD8)})},
  };
  for (const auto& [name, stream] : cases) {
    const bool isLarge = std::string_view(name).ends_with("scans");
    const FrameFormat format = isLarge ? Gray(64, 64) : Gray(8, 8);
    const tessaret::test::Measured measured = tessaret::test::RunMeasured(
        [&, &bytes = stream] { return WordsOf(bytes, format).empty() ? 1 : 0; });
    EXPECT_EQ(measured.result, 0) << name;
    EXPECT_LT(measured.seconds, 2) << name;
  }
}

TEST(JpegBaselineCoder, AHugeImageInFewBytesIsRefusedBeforeMemoryIsTaken) {
  test::CheckHugeImage(kCoder, test::MakeFlatJpeg(FlatJpeg{}), 0xC0, Gray(0xFF08, 0xFF08));
}

TEST(JpegBaselineCoder, NoTruncationAndNoChangedByteDoesHarm) {
  FlatJpeg image;
  image.columns = 24;
  image.rows = 16;
  image.interval = 2;
  image.values = {40};
  test::CheckDamage(kCoder, test::MakeFlatJpeg(image), Gray(24, 16));
}

TEST(JpegBaselineCoder, NoTruncationOfAColourStreamPasses) {
  const FrameFormat format = Colour(40, 20);
  const Stream stream = Encoded(test::MakeFrame(format, test::Pattern::kGradient), format, 60);
  for (std::size_t size = 0; size < stream.size(); ++size) {
    const Stream part(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(WordsOf(part, format), "") << size;
  }
}

TEST(JpegBaselineCoder, EachFailedAllocationIsToldAndLeavesNothing) {
  for (const FrameFormat& format : {Gray(40, 30), test::MakeFormat(40, 30, 1, 16, 8)}) {
    const FrameFormat native = Gray(40, 30);
    const Stream frame = test::MakeFrame(native, test::Pattern::kGradient);
    const Stream stream = Encoded(frame, native, 90);
    Stream back(format.Size());
    bool isGood = false;
    tessaret::test::FailEveryAllocation([&] {
      isGood = false;
      try {
        kCoder.Decode(stream, format, back);
        isGood = true;
      } catch (const std::bad_alloc&) {
      }
    });
    EXPECT_TRUE(isGood);
    std::size_t size = 0;
    const std::uint64_t count = tessaret::test::FailEveryAllocation([&] {
      size = 0;
      try {
        size = kCoder.Encode(frame, native, {}).stream.size();
      } catch (const std::bad_alloc&) {
      }
    });
    EXPECT_GE(count, 1u);
    EXPECT_EQ(size, kCoder.Encode(frame, native, {}).stream.size());
  }
}

TEST(JpegBaselineCoder, OneCoderServesManyThreads) {
  const FrameFormat format = Colour(64, 64);
  test::CheckThreads(kCoder, test::MakeFrame(format, test::Pattern::kGradient), format,
                     Colour(64, 64, "YBR_FULL_422"));
}

}  // namespace
}  // namespace tessaret::codecs
