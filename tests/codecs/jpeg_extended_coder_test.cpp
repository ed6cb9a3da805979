#include "jpeg/jpeg_extended_coder.h"

#include <array>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "codecs/dct_checks.h"
#include "codecs/flat_jpeg.h"
#include "codecs/thread_checks.h"
#include "jpeg/jpeg_baseline_coder.h"
#include "jpeg/jpeg_progressive_coder.h"
#include "jpeg/upsampling.h"
#include "support/allocation_failure.h"
#include "support/measured_child.h"

namespace tessaret::codecs {
namespace {

using test::Find;
using test::Inserted;

using tessaret::test::Joined;
using test::FlatJpeg;
using Stream = tessaret::test::Bytes;

constexpr const char* kExtended = "1.2.840.10008.1.2.4.51";

const JpegExtendedCoder kCoder;

FrameFormat Gray(std::uint32_t columns, std::uint32_t rows, std::uint32_t stored = 12) {
  return test::MakeFormat(columns, rows, 1, 16, stored);
}

FrameFormat Colour(std::uint32_t columns, std::uint32_t rows, const char* photometric = "RGB") {
  FrameFormat format = test::MakeFormat(columns, rows, 3, 16, 12);
  format.photometric = photometric;
  return format;
}

FlatJpeg Twelve() {
  FlatJpeg image;
  image.frameMarker = 0xC1;
  image.precision = 12;
  return image;
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

std::vector<int> Same(std::size_t count, int value) {
  return std::vector<int>(count, value);  // not a list of two
}

TEST(JpegExtendedCoder, AStreamOfWhichEachBitIsKnownGivesThePixelsThatItMeans) {
  const Stream stream =
      Joined({{0xFF, 0xD8},
              test::FactorSegment(),
              {0xFF, 0xC1, 0, 11, 12, 0, 8, 0, 8, 1, 1, 0x11, 0},
              test::FlatTables(),
              {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0},
              // category 11, the value -1500 (-2047 and 547) in eleven bits, end of the block
              test::EntropyBytes("1011 01000100011 0"),
              {0xFF, 0xD9}});
  const FrameFormat format = Gray(8, 8);
  EXPECT_EQ(test::SamplesOf(Decoded(stream, format), format), Same(64, 2048 - 1500));
  Stream frame(format.Size());
  const DecodedFrame told = kCoder.Decode(stream, format, frame);
  EXPECT_EQ(told.precision, 12u);
  EXPECT_FALSE(told.isRgb);
}

/// The column and the row of a coefficient's cosine: diagonals by turns upwards and downwards.
std::pair<unsigned, unsigned> PlaceInZigzag(unsigned at) {
  unsigned u = 0;
  unsigned v = 0;
  for (unsigned step = 0; step < at; ++step) {
    const bool isUp = (u + v) % 2 == 0;
    unsigned& with = isUp ? u : v;
    unsigned& against = isUp ? v : u;
    if (with == 7) {
      ++against;
    } else {
      ++with;
      if (against != 0) --against;
    }
  }
  return {u, v};
}

/// What a dequantised coefficient adds to a sample.
double CosineAt(unsigned coefficient, unsigned x, unsigned y) {
  const auto [u, v] = PlaceInZigzag(coefficient);
  const double factor = (u == 0 ? std::sqrt(0.5) : 1) * (v == 0 ? std::sqrt(0.5) : 1) / 4;
  return factor * std::cos((2 * x + 1) * u * std::numbers::pi / 16) *
         std::cos((2 * y + 1) * v * std::numbers::pi / 16);
}

TEST(JpegExtendedCoder, EachCoefficientIsTheCosineThatItStandsFor) {
  // One coefficient of 500, times the factor 8, behind `zeros` others: a run of less than 16 and a category of 9 in four bits each.
  for (unsigned at = 1; at < 64; ++at) {
    Stream ac = {0x10, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xF0};
    const unsigned zeros = at - 1;
    ac.push_back(static_cast<std::uint8_t>((zeros % 16) << 4 | 9));
    std::string bits = "0000";  // no difference of the first
    for (unsigned sixteen = 0; sixteen < zeros / 16; ++sixteen) bits += "001";
    bits += "010" + test::Digits(500, 9);
    if (at != 63) bits += "000";
    Stream dc = {0x00, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00};
    const Stream stream = Joined({{0xFF, 0xD8},
                                  test::FactorSegment(),
                                  {0xFF, 0xC1, 0, 11, 12, 0, 8, 0, 8, 1, 1, 0x11, 0},
                                  test::JpegSegment(0xC4, dc),
                                  test::JpegSegment(0xC4, ac),
                                  {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0},
                                  test::EntropyBytes(bits),
                                  {0xFF, 0xD9}});
    const FrameFormat format = Gray(8, 8);
    const std::vector<int> samples = test::SamplesOf(Decoded(stream, format), format);
    for (unsigned y = 0; y < 8; ++y) {
      for (unsigned x = 0; x < 8; ++x) {
        EXPECT_NEAR(samples[8 * y + x], 2048 + 4000 * CosineAt(at, x, y), 1)
            << at << ": " << x << ", " << y;
      }
    }
  }
}

TEST(JpegExtendedCoder, EachCoefficientIsEncodedBehindAnyNumberOfZeros) {
  const FrameFormat format = Gray(8, 8);
  for (unsigned at = 0; at < 64; ++at) {
    Stream frame;
    for (unsigned sample = 0; sample < 64; ++sample) {
      const auto value =
          static_cast<unsigned>(std::lround(2048 + 4000 * CosineAt(at, sample % 8, sample / 8)));
      frame.insert(frame.end(),
                   {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
    }
    // At 50 the greatest factor is 121, of which half may be lost, times a quarter for a sample; all other coefficients are 0.
    const Stream stream = Encoded(frame, format, 50);
    EXPECT_LE(test::Difference(Decoded(stream, format), frame, format), 121 / 2 / 4 + 2) << at;
  }
}

TEST(JpegExtendedCoder, BlocksAddUpFromOneToTheNextAndBeginAnewBehindRestartMarkers) {
  FlatJpeg image = Twelve();
  image.columns = 21;
  image.rows = 33;
  image.values = {-1000};
  const FrameFormat format = Gray(21, 33);
  for (const unsigned interval : {0u, 1u, 2u, 4u, 15u, 100u}) {
    image.interval = interval;
    EXPECT_EQ(test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format),
              Same(21 * 33, 2048 - 1000))
        << interval;
  }
}

TEST(JpegExtendedCoder, WhatIsBelowBlackOrAboveWhiteIsBlackOrWhite) {
  FlatJpeg image = Twelve();
  const FrameFormat format = Gray(8, 8);
  image.values = {16000};
  EXPECT_EQ(test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format), Same(64, 4095));
  image.values = {-16000};
  EXPECT_EQ(test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format), Same(64, 0));
}

TEST(JpegExtendedCoder, StreamsOfTwelveBitsAreDecodedUnderTheSyntaxOfEightToo) {
  FlatJpeg image = Twelve();
  const FrameFormat format = Gray(8, 8);
  for (const std::uint8_t marker : Stream{0xC0, 0xC1}) {
    image.frameMarker = marker;
    EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), format),
              test::DecodeGuarded(JpegBaselineCoder(), test::MakeFlatJpeg(image), format));
  }
}

TEST(JpegExtendedCoder, StreamsOfEightBitsAreDecodedAsByTheBaselineCoder) {
  const FrameFormat format = test::MakeFormat(33, 20, 1, 8, 8);
  const Stream frame = test::MakeFrame(format, test::Pattern::kGradient);
  const Stream stream = Encoded(frame, format, 90);
  EXPECT_EQ(stream, JpegBaselineCoder().Encode(frame, format, {}).stream);
  EXPECT_EQ(Decoded(stream, format), test::DecodeGuarded(JpegBaselineCoder(), stream, format));
}

TEST(JpegExtendedCoder, SignedSamplesComeWithTheirSigns) {
  FlatJpeg image = Twelve();
  image.values = {1000};
  const FrameFormat format = test::MakeFormat(8, 8, 1, 16, 12, true);
  const Stream frame = Decoded(test::MakeFlatJpeg(image), format);
  // 3048 in twelve bits is -1048.
  EXPECT_EQ(static_cast<std::int16_t>(frame[0] | frame[1] << 8), 3048 - 4096);
}

TEST(JpegExtendedCoder, WiderSamplesAreFilledFromBelow) {
  FlatJpeg image = Twelve();
  const FrameFormat format = test::MakeFormat(8, 8, 1, 32, 12);
  EXPECT_EQ(test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format), Same(64, 2048));
}

TEST(JpegExtendedCoder, ColoursAreTakenAsTheStreamOrTheDataSetSays) {
  FlatJpeg image = Twelve();
  image.values = {300, -400, 500};
  const auto pixel = [&](const char* photometric) {
    const FrameFormat format = Colour(8, 8, photometric);
    return test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format);
  };
  const std::vector<int> plain = pixel("RGB");
  EXPECT_EQ(plain[0], 2348);
  EXPECT_EQ(plain[1], 1648);
  EXPECT_EQ(plain[2], 2548);
  const std::vector<int> changed = pixel("YBR_FULL");
  EXPECT_NEAR(changed[0], 2348 + 1.402 * 500, 0.51);
  EXPECT_NEAR(changed[1], 2348 + 0.344136 * 400 - 0.714136 * 500, 0.51);
  EXPECT_NEAR(changed[2], 2348 - 1.772 * 400, 0.51);
  image.segments = {test::AdobeSegment(0)};
  EXPECT_EQ(pixel("YBR_FULL"), plain);
  image.segments = {test::JfifSegment()};
  EXPECT_EQ(pixel("RGB"), changed);
}

TEST(JpegExtendedCoder, ComponentsMayHaveScansOfTheirOwnAndFewerSamples) {
  for (const std::uint8_t sampling : Stream{0x11, 0x21, 0x22, 0x12}) {
    for (const std::uint8_t marker : Stream{0xC1, 0xC0}) {
      FlatJpeg image = Twelve();
      image.frameMarker = marker;
      image.columns = 19;
      image.rows = 37;
      image.values = {300, -400, 500};
      image.sampling[0] = sampling;
      const FrameFormat format = Colour(19, 37);
      const Stream together = Decoded(test::MakeFlatJpeg(image), format);
      image.isInterleaved = false;
      EXPECT_EQ(Decoded(test::MakeFlatJpeg(image), format), together);
      const std::vector<int> samples = test::SamplesOf(together, format);
      for (std::size_t at = 0; at < samples.size(); at += 3) {
        EXPECT_EQ(samples[at], 2348);
        EXPECT_EQ(samples[at + 1], 1648);
        EXPECT_EQ(samples[at + 2], 2548);
      }
    }
  }
}

TEST(RowMaker, MixesNeighboursThreeToOne) {
  const auto most = [](unsigned number, bool isHalf) { return isHalf ? number * 2 : number; };
  for (const auto& [isHalfAcross, isHalfDown] : {std::pair{false, false}, std::pair{true, false},
                                                 std::pair{false, true}, std::pair{true, true}}) {
    DctLayout layout;
    layout.mostHorizontal = isHalfAcross ? 2 : 1;
    layout.mostVertical = isHalfDown ? 2 : 1;
    DctComponent component;
    component.columns = 4;
    component.rows = 3;
    component.wholeAcross = component.wholeDown = 1;
    DctPlane plane = MakeDctPlane(component);
    for (unsigned at = 0; at < 64; ++at) {
      plane.samples[at] = static_cast<std::uint16_t>(at * 2654435761u >> 20);
    }
    RowMaker rows(plane, layout);
    for (unsigned y = 0; y < most(3, isHalfDown); ++y) {
      const std::uint16_t* row = rows.Row(y);
      for (unsigned x = 0; x < most(4, isHalfAcross); ++x) {
        // The sample that a pixel lies in, and the one that it lies next to, if there is one.
        const auto near = [](unsigned at, bool isHalf) { return isHalf ? at / 2 : at; };
        const auto far = [](unsigned at, bool isHalf, unsigned count) {
          if (!isHalf) return at;
          return at % 2 == 0 ? (at == 0 ? 0 : at / 2 - 1) : std::min(at / 2 + 1, count - 1);
        };
        const auto sample = [&](unsigned column, unsigned line) {
          return static_cast<double>(plane.samples[line * 8 + column]);
        };
        const unsigned nx = near(x, isHalfAcross);
        const unsigned ny = near(y, isHalfDown);
        const unsigned fx = far(x, isHalfAcross, 4);
        const unsigned fy = far(y, isHalfDown, 3);
        const double expected =
            (9 * sample(nx, ny) + 3 * sample(fx, ny) + 3 * sample(nx, fy) + sample(fx, fy)) / 16;
        EXPECT_NEAR(row[x], expected, 0.51) << x << ", " << y;
      }
    }
  }
}

TEST(RowMaker, RepeatsWhereThereIsTooLittleToMix) {
  DctLayout layout;
  layout.mostHorizontal = layout.mostVertical = 2;
  DctComponent component;
  component.columns = 2;
  component.rows = 3;
  component.wholeAcross = component.wholeDown = 1;
  DctPlane plane = MakeDctPlane(component);
  for (unsigned at = 0; at < 64; ++at) plane.samples[at] = static_cast<std::uint16_t>(at * 60);
  RowMaker rows(plane, layout);
  for (unsigned y = 0; y < 6; ++y) {
    const std::uint16_t* row = rows.Row(y);
    for (unsigned x = 0; x < 4; ++x) {
      EXPECT_EQ(row[x], plane.samples[y / 2 * 8 + x / 2]) << x << ", " << y;
    }
  }
}

TEST(JpegExtendedCoder, OddSamplingIsRefused) {
  FlatJpeg image = Twelve();
  image.values = {0, 0, 0};
  image.sampling[0] = 0x31;
  EXPECT_EQ(WordsOf(test::MakeFlatJpeg(image), Colour(8, 8)),
            "components with one sample for 1 of 3 are not decoded");
  image.sampling = {0x22, 0x22, 0x22};
  EXPECT_EQ(WordsOf(test::MakeFlatJpeg(image), Colour(8, 8)), "12 blocks in a unit are too many");
}

class JpegExtendedAndDcmtk : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(test::HasProgram("dcmcjpeg")); }
};

constexpr std::pair<std::uint32_t, std::uint32_t> kSizes[] = {{64, 48}, {17, 9}, {1, 1},
                                                              {1, 40},  {40, 1}, {8, 8}};

TEST_F(JpegExtendedAndDcmtk, StreamsOfTheOtherGiveTheSamePixels) {
  for (const auto& [columns, rows] : kSizes) {
    for (const std::uint32_t stored : {12u, 10u}) {
      const FrameFormat format = Gray(columns, rows, stored);
      for (const test::Pattern pattern : test::PatternsFor(format)) {
        const Stream frame = test::MakeFrame(format, pattern);
        const Stream stream = test::EncodedByPeer(frame, format, {"+ee", "+bt", "+q", "90"});
        const Stream expected = test::DecodedByPeer(stream, format, kExtended);
        EXPECT_LE(test::Difference(Decoded(stream, format), expected, format), 1)
            << columns << " x " << rows;
      }
    }
  }
}

TEST_F(JpegExtendedAndDcmtk, TheOtherDecodesWhatThisEncodes) {
  for (const auto& [columns, rows] : kSizes) {
    const FrameFormat format = Gray(columns, rows);
    for (const test::Pattern pattern : test::PatternsFor(format)) {
      const Stream frame = test::MakeFrame(format, pattern);
      const Stream stream = Encoded(frame, format, 95);
      const Stream back = test::DecodedByPeer(stream, format, kExtended);
      EXPECT_LE(test::Difference(Decoded(stream, format), back, format), 1);
      EXPECT_LT(test::MeanSquare(frame, back, format), 40) << columns << " x " << rows;
    }
  }
}

TEST_F(JpegExtendedAndDcmtk, LossesAreNoGreaterThanTheOthersAtTheSameQuality) {
  const FrameFormat format = Gray(64, 64);
  const Stream frame = test::MakeFrame(format, test::Pattern::kNoise);
  for (const std::uint32_t quality : {20u, 60u, 95u}) {
    const Stream own = Encoded(frame, format, quality);
    const Stream other =
        test::EncodedByPeer(frame, format, {"+ee", "+bt", "+q", std::to_string(quality)});
    EXPECT_NEAR(test::MeanSquare(Decoded(own, format), frame, format) /
                    test::MeanSquare(Decoded(other, format), frame, format),
                1, 0.02);
    EXPECT_LT(static_cast<double>(own.size()), 1.02 * static_cast<double>(other.size()));
  }
}

TEST_F(JpegExtendedAndDcmtk, ProgressiveStreamsOfTheOtherGiveTheSamePixels) {
  const JpegProgressiveCoder coder;
  const std::pair<const char*, const char*> kinds[] = {{"+es", "1.2.840.10008.1.2.4.53"},
                                                       {"+ep", "1.2.840.10008.1.2.4.55"}};
  for (const auto& [option, syntax] : kinds) {
    for (const FrameFormat& format :
         {Gray(61, 43), Gray(1, 1), test::MakeFormat(61, 43, 1, 8, 8)}) {
      for (const test::Pattern pattern : test::PatternsFor(format)) {
        const Stream frame = test::MakeFrame(format, pattern);
        const Stream stream = test::EncodedByPeer(frame, format, {option, "+ba", "+q", "90"});
        const Stream expected = test::DecodedByPeer(stream, format, syntax);
        EXPECT_LE(test::Difference(test::DecodeGuarded(coder, stream, format), expected, format), 1)
            << option;
      }
    }
  }
}

TEST(JpegProgressiveCoder, NothingIsEncoded) {
  const JpegProgressiveCoder coder;
  const char* const words = "the transfer syntax is retired and only decoded";
  EXPECT_EQ(test::WordsOf([&] { coder.RequireEncodable(Gray(8, 8)); }), words);
  EXPECT_EQ(test::WordsOf([&] { static_cast<void>(coder.Encode(Stream(128), Gray(8, 8), {})); }),
            words);
  EXPECT_STREQ(coder.LossyMethod(), "ISO_10918_1");
}

/// Ten gray levels more from column to column, fifteen from row to row. Without edges, at which chrominance may go beyond its range,
/// where decoders differ.
Stream SmoothFrame(const FrameFormat& format) {
  Stream frame;
  for (std::uint32_t y = 0; y < format.rows; ++y) {
    for (std::uint32_t x = 0; x < format.columns; ++x) {
      for (std::uint32_t sample = 0; sample < format.samples; ++sample) {
        const std::uint32_t value = 1000 + 10 * x + 15 * y + 100 * sample;
        frame.push_back(static_cast<std::uint8_t>(value));
        frame.push_back(static_cast<std::uint8_t>(value >> 8));
      }
    }
  }
  return frame;
}

TEST(JpegExtendedAndJpegTools, StreamsOfTheOtherGiveTheSamePixels) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const std::vector<std::vector<std::string>> kinds = {{"-q", "90"},
                                                       {"-q", "90", "-h"},
                                                       {"-q", "90", "-z", "3"},
                                                       {"-q", "90", "-v"},
                                                       {"-q", "90", "-v", "-z", "2"},
                                                       {"-q", "90", "-qv"},
                                                       {"-q", "90", "-c"}};
  for (std::vector<std::string> options : kinds) {
    for (const FrameFormat& format : {Gray(61, 43), Colour(50, 30, "")}) {
      const bool isPlain = options.back() == "-c";
      FrameFormat coded = format;
      if (format.samples == 3) coded.photometric = isPlain ? "RGB" : "YBR_FULL";
      const tessaret::test::TempFolder folder;
      tessaret::test::WriteBytes(folder.File("in.pnm"), test::PnmFile(SmoothFrame(format), format));
      std::vector<std::string> command = options;
      command.insert(command.begin(), "jpeg");
      command.insert(command.end(), {folder.File("in.pnm"), folder.File("out.jpg")});
      ASSERT_TRUE(test::RunProgram(command));
      ASSERT_TRUE(test::RunProgram({"jpeg", folder.File("out.jpg"), folder.File("back.pnm")}));
      const Stream expected =
          test::PnmPixels(tessaret::test::ReadBytes(folder.File("back.pnm")), format);
      const Stream stream = tessaret::test::ReadBytes(folder.File("out.jpg"));
      EXPECT_LE(test::Difference(Decoded(stream, coded), expected, format),
                format.samples == 1 ? 1 : 3)
          << options.back() << " " << format.samples;
    }
  }
}

TEST(JpegExtendedAndJpegTools, SamplesThatStandForSeveralAreMixedAsTheOtherDoes) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  for (const char* sampling : {"1x1,2x1,2x1", "1x1,2x2,2x2", "1x1,1x2,1x2"}) {
    const FrameFormat format = Colour(50, 30, "YBR_FULL");
    const Stream frame = SmoothFrame(format);
    const tessaret::test::TempFolder folder;
    tessaret::test::WriteBytes(folder.File("in.pnm"), test::PnmFile(frame, format));
    ASSERT_TRUE(test::RunProgram(
        {"jpeg", "-q", "95", "-s", sampling, folder.File("in.pnm"), folder.File("out.jpg")}));
    const Stream stream = tessaret::test::ReadBytes(folder.File("out.jpg"));
    EXPECT_LE(test::Difference(Decoded(stream, format), frame, format), 20) << sampling;
    EXPECT_LT(test::MeanSquare(Decoded(stream, format), frame, format), 10) << sampling;
  }
}

TEST(JpegExtendedCoder, OnlyNineToTwelveBitsOfGrayAndWhatBaselineTakesIsEncoded) {
  const auto words = [](const FrameFormat& format) {
    return test::WordsOf([&] { kCoder.RequireEncodable(format); });
  };
  for (const std::uint32_t stored : {9u, 10u, 12u}) EXPECT_EQ(words(Gray(4, 4, stored)), "");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 1, 8, 8)), "");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 3, 8, 8)), "");
  EXPECT_EQ(words(Gray(4, 4, 13)),
            "samples of 13 bits in 16, the highest in bit 12, are not encoded, only those of 9 to "
            "12 in 16");
  EXPECT_NE(words(Gray(4, 4, 8)), "");
  EXPECT_NE(words(Gray(4, 4, 16)), "");
  EXPECT_NE(words(test::MakeFormat(4, 4, 1, 32, 12)), "");
  EXPECT_EQ(words(test::MakeFormat(4, 4, 1, 16, 12, true)), "signed samples are not encoded");
  EXPECT_EQ(words(Colour(4, 4)),
            "3 samples of \"RGB\" with more than 8 bits are not encoded with losses");
  FrameFormat high = Gray(4, 4);
  high.highBit = 15;
  EXPECT_NE(words(high), "");
  FrameFormat palette = Gray(4, 4);
  palette.photometric = "PALETTE COLOR";
  EXPECT_NE(words(palette), "");
  EXPECT_STREQ(kCoder.LossyMethod(), "ISO_10918_1");
  EXPECT_EQ(kCoder.EncodedPhotometric(Gray(4, 4), true), "MONOCHROME2");
  EXPECT_EQ(kCoder.EncodedPhotometric(test::MakeFormat(4, 4, 3, 8, 8), true), "YBR_FULL_422");
  EXPECT_TRUE(kCoder.Encode(Stream(32), Gray(4, 4), {}).isLossy);
}

TEST(JpegExtendedCoder, SamplesWithHigherBitsThanAreStoredAreNotEncoded) {
  const FrameFormat format = Gray(4, 4);
  Stream frame(32);
  frame[31] = 0x10;
  EXPECT_EQ(test::WordsOf([&] { Encoded(frame, format, 90); }),
            "there are samples of more than the 12 bits that are stored");
}

TEST(JpegExtendedCoder, QualityIsThatOfTheUsualTables) {
  const FrameFormat format = Gray(16, 16);
  const Stream frame = test::MakeFrame(format, test::Pattern::kNoise);
  // The first factors of the table for luminance are 16 and 11; 50 takes them as they are, 75 halves, 100 makes all 1.
  for (const auto& [quality, first, second] :
       {std::tuple{50u, 16, 11}, std::tuple{75u, 8, 6}, std::tuple{100u, 1, 1}}) {
    const Stream stream = Encoded(frame, format, quality);
    const std::size_t at = Find(stream, 0xDB);
    EXPECT_EQ(stream[at + 4], 0);
    EXPECT_EQ(stream[at + 5], first);
    EXPECT_EQ(stream[at + 6], second);
  }
  // At 1 they are fifty times as great: 800 takes two bytes.
  const Stream stream = Encoded(frame, format, 1);
  const std::size_t at = Find(stream, 0xDB);
  EXPECT_EQ(stream[at + 4], 0x10);
  EXPECT_EQ(stream[at + 5] << 8 | stream[at + 6], 800);
  EXPECT_EQ(Decoded(stream, format).size(), frame.size());
}

TEST(JpegExtendedCoder, AtTheBestQualityHardlyAnythingIsLost) {
  for (const auto& [columns, rows] : kSizes) {
    const FrameFormat format = Gray(columns, rows);
    for (const test::Pattern pattern : test::kPatterns) {
      const Stream frame = test::MakeFrame(format, pattern);
      EXPECT_LE(test::Difference(Decoded(Encoded(frame, format, 100), format), frame, format), 2);
    }
  }
}

TEST(JpegExtendedCoder, AnotherShapeThanTheDataSetsIsToldWithBoth) {
  const Stream gray = test::MakeFlatJpeg(Twelve());
  EXPECT_EQ(WordsOf(gray, Gray(8, 9)), "the code stream has 8 x 8 pixels, the data set 8 x 9");
  EXPECT_EQ(WordsOf(gray, Colour(8, 8)),
            "the code stream has 1 components, the data set 3 samples per pixel");
  EXPECT_EQ(WordsOf(gray, test::MakeFormat(8, 8, 1, 8, 8)),
            "the code stream has samples of 12 bits, the data set allocates 8");
}

TEST(JpegExtendedCoder, WhatDoesNotTouchThePixelsIsPassedOver) {
  FlatJpeg image = Twelve();
  image.values = {5};
  const FrameFormat format = Gray(8, 8);
  const Stream plain = test::MakeFlatJpeg(image);
  const Stream oddities[] = {
      Joined({plain, {0}}),
      Inserted(plain, 2, test::JpegSegment(0xE5, {1, 2, 3})),
      Inserted(plain, 2, test::JpegSegment(0xFE, {})),
      Inserted(plain, 2, {0xFF, 0xFF, 0xFF}),
      Inserted(plain, plain.size() - 2, {0xFF, 0xFF}),
  };
  for (const Stream& stream : oddities) {
    EXPECT_EQ(test::SamplesOf(Decoded(stream, format), format), Same(64, 2053));
  }
  image.scanEnd = 0;
  EXPECT_EQ(test::SamplesOf(Decoded(test::MakeFlatJpeg(image), format), format), Same(64, 2053));
}

/// With these bits for all blocks of one row.
Stream WithBits(const std::string& bits, unsigned columns = 8) {
  FlatJpeg image = Twelve();
  image.columns = columns;
  Stream stream = test::MakeFlatJpeg(image);
  stream.resize(Find(stream, 0xDA) + 10);
  return Joined({stream, test::EntropyBytes(bits), {0xFF, 0xD9}});
}

TEST(JpegExtendedCoder, EntropyCodedDataThatAreWrongAreTold) {
  const FrameFormat format = Gray(8, 8);
  ASSERT_EQ(WordsOf(WithBits("0000 0"), format), "");
  EXPECT_EQ(WordsOf(WithBits("1111 0"), format), "there are bits that are no Huffman code");
  EXPECT_EQ(WordsOf(WithBits("0000 1"), format), "there are bits that are no Huffman code");
  EXPECT_EQ(WordsOf(WithBits("0000 0", 80), Gray(80, 8)), "the entropy-coded data end early");
  EXPECT_EQ(WordsOf(WithBits("0000 0 0000 0000 0000 0000"), format),
            "there are more entropy-coded data than the image needs");
  std::string high;
  for (int block = 0; block < 3; ++block) high += "1110 11111111111111 0";
  EXPECT_EQ(WordsOf(WithBits(high, 24), Gray(24, 8)), "a coefficient is out of its range");
}

TEST(JpegExtendedCoder, ABlockWithMoreThan64CoefficientsIsAnError) {
  // 1: fifteen zeros and a value of one bit; five of them are 80.
  const Stream ac = {0x10, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0xF1};
  Stream stream = WithBits("0000 11 11 11 11 11 11 0");
  stream = Inserted(stream, Find(stream, 0xDA), test::JpegSegment(0xC4, ac));
  EXPECT_EQ(WordsOf(stream, Gray(8, 8)), "a block has too many coefficients");
}

TEST(JpegExtendedCoder, ACodeOfNoMeaningIsAnError) {
  // 0 ends the block; 10 would be five zeros without a value behind them.
  const Stream ac = {0x10, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x50};
  for (const auto& [bits, words] :
       {std::pair{"0000 0", ""},
        std::pair{"0000 10 0", "there are bits that are no Huffman code"}}) {
    Stream stream = WithBits(bits);
    stream = Inserted(stream, Find(stream, 0xDA), test::JpegSegment(0xC4, ac));
    EXPECT_EQ(WordsOf(stream, Gray(8, 8)), words);
  }
}

TEST(JpegExtendedCoder, EntropyCodedDataWithoutTheirLastBytesAreAnError) {
  for (const FrameFormat& format : {Gray(40, 16), test::MakeFormat(40, 16, 1, 8, 8)}) {
    const Stream good = Encoded(test::MakeFrame(format, test::Pattern::kNoise), format, 100);
    for (std::ptrdiff_t count = 1; count < 400; ++count) {
      Stream fewer = good;
      fewer.erase(fewer.end() - 2 - count, fewer.end() - 2);
      EXPECT_NE(WordsOf(fewer, format), "") << count;
    }
  }
}

TEST(JpegExtendedCoder, RestartMarkersHaveTheirPlaces) {
  FlatJpeg image = Twelve();
  image.columns = image.rows = 80;
  image.interval = 10;
  const FrameFormat format = Gray(80, 80);
  const Stream good = test::MakeFlatJpeg(image);
  ASSERT_EQ(WordsOf(good, format), "");
  const std::size_t restart = Find(good, 0xD3);
  Stream lost = good;
  lost.erase(lost.begin() + static_cast<std::ptrdiff_t>(restart),
             lost.begin() + static_cast<std::ptrdiff_t>(restart) + 2);
  EXPECT_NE(WordsOf(lost, format), "");
  Stream wrong = good;
  wrong[restart + 1] = 0xD4;
  EXPECT_NE(WordsOf(wrong, format), "");
  EXPECT_NE(WordsOf(Inserted(good, good.size() - 2, {0xFF, 0xD1}), format), "");
}

TEST(JpegExtendedCoder, HostileStreamsAreRefusedSoon) {
  const Stream plain = test::MakeFlatJpeg(Twelve());
  const auto with = [&](std::uint8_t marker, std::size_t offset, std::uint8_t value) {
    Stream stream = plain;
    stream.at(Find(stream, marker) + offset) = value;
    return stream;
  };
  const Stream scan(plain.begin() + static_cast<std::ptrdiff_t>(Find(plain, 0xDA)),
                    plain.end() - 2);
  Stream many(plain.begin(), plain.end() - 2);
  for (int count = 0; count < 10000; ++count) many.insert(many.end(), scan.begin(), scan.end());
  many.insert(many.end(), {0xFF, 0xD9});
  const std::size_t header = Find(plain, 0xC1);
  const std::size_t scanAt = Find(plain, 0xDA);
  const auto to = [&](std::size_t at) {
    return Stream(plain.begin(), plain.begin() + static_cast<std::ptrdiff_t>(at));
  };
  const std::pair<const char*, Stream> cases[] = {
      {"empty", {}},
      {"a length of 0", Inserted(plain, 2, {0xFF, 0xE1, 0, 0})},
      {"a length of 1", Inserted(plain, 2, {0xFF, 0xE1, 0, 1})},
      {"a length beyond the end", Inserted(plain, 2, {0xFF, 0xE1, 0xFF, 0xFF})},
      {"a marker without a meaning", Inserted(plain, 2, {0xFF, 0x01})},
      {"quantisation table 4", with(0xDB, 4, 4)},
      {"a factor of 0", with(0xDB, 10, 0)},
      {"a quantisation table of 16 bits and more", with(0xDB, 4, 0x20)},
      {"a first coefficient of more than 15 bits", with(0xC4, 21 + 14, 16)},
      {"Huffman table 15", with(0xC4, 4, 15)},
      {"a scan with table 4", with(0xDA, 6, 0x40)},
      {"a scan with table 1", with(0xDA, 6, 0x11)},
      {"a frame with table 1", with(0xC1, 12, 1)},
      {"sampling 0", with(0xC1, 11, 0x01)},
      {"sampling 5", with(0xC1, 11, 0x15)},
      {"height 0", with(0xC1, 6, 0)},
      {"11 bits", with(0xC1, 4, 11)},
      {"16 bits", with(0xC1, 4, 16)},
      {"no scan", Joined({to(scanAt), {0xFF, 0xD9}})},
      {"no frame header", Joined({to(header), scan, {0xFF, 0xD9}})},
      {"no end", Stream(plain.begin(), plain.end() - 2)},
      {"hierarchical", with(0xC1, 1, 0xC5)},
      {"arithmetic", with(0xC1, 1, 0xC9)},
      {"lossless", with(0xC1, 1, 0xC3)},
      {"two frame headers", Inserted(plain, header, test::FlatFrameHeader(Twelve()))},
      {"height behind the scan", Inserted(plain, plain.size() - 2, {0xFF, 0xDC, 0, 4, 0, 8})},
      {"two scans of a component", Inserted(plain, plain.size() - 2, scan)},
      {"10 000 scans", many},
  };
  for (const auto& [name, stream] : cases) {
    const tessaret::test::Measured measured = tessaret::test::RunMeasured(
        [&, &bytes = stream] { return WordsOf(bytes, Gray(8, 8)).empty() ? 1 : 0; });
    EXPECT_EQ(measured.result, 0) << name;
    EXPECT_LT(measured.seconds, 2) << name;
  }
}

/// Progressive: first coefficients to bit `low`, of which all but one are 0, and then these scans.
struct Scan {
  std::uint8_t start;
  std::uint8_t end;
  std::uint8_t approximation;
  std::string bits;
};

Stream Progressive(unsigned columns, const std::vector<Scan>& scans) {
  FlatJpeg image = Twelve();
  image.frameMarker = 0xC2;
  image.columns = columns;
  Stream stream = test::MakeFlatJpeg(image);
  stream.resize(Find(stream, 0xDA));
  // Others: 00 ends a block, 01 is 1 or -1 behind no zeros, 10 ends two or three blocks, 110 is sixteen zeros.
  const Stream ac = {0x10, 0, 3, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x01, 0x10, 0xF0};
  const auto add = [&](const Stream& bytes) {
    stream.insert(stream.end(), bytes.begin(), bytes.end());
  };
  add(test::JpegSegment(0xC4, ac));
  for (const Scan& scan : scans) {
    add(test::JpegSegment(0xDA, {1, 1, 0, scan.start, scan.end, scan.approximation}));
    add(test::EntropyBytes(scan.bits));
  }
  add({0xFF, 0xD9});
  return stream;
}

TEST(JpegExtendedCoder, ProgressiveScansAddBitsAndBands) {
  const FrameFormat format = Gray(8, 8);
  // First coefficient: 3 and then a bit more, 7. Of the others none but the last band's, which ends at once.
  const std::vector<Scan> flat = {{0, 0, 0x01, "0010 11"}, {1, 63, 0x00, "00"}, {0, 0, 0x10, "1"}};
  EXPECT_EQ(test::SamplesOf(Decoded(Progressive(8, flat), format), format), Same(64, 2055));
  // The second coefficient comes as -1 in bit 1 and grows to -3; times 8 that is half a cosine of 24 times the root of a half.
  const std::vector<Scan> slope = {
      {0, 0, 0x00, "0000"}, {1, 5, 0x01, "01 0 00"}, {6, 63, 0x00, "00"}, {1, 5, 0x10, "00 1"}};
  const std::vector<int> samples = test::SamplesOf(Decoded(Progressive(8, slope), format), format);
  for (unsigned at = 0; at < 64; ++at) {
    EXPECT_NEAR(
        samples[at],
        2048 - 24 * std::sqrt(0.5) / 4 * std::cos((2 * (at % 8) + 1) * std::numbers::pi / 16), 1);
  }
  // Two blocks end with one code.
  const std::vector<Scan> two = {{0, 0, 0x00, "0011 111 0000"}, {1, 63, 0x00, "10 0"}};
  EXPECT_EQ(test::SamplesOf(Decoded(Progressive(16, two), Gray(16, 8)), Gray(16, 8)),
            Same(128, 2055));
}

TEST(JpegExtendedCoder, ProgressiveScansThatDoNotGoOnAreRefused) {
  const Scan dc = {0, 0, 0x00, "0000"};
  const Scan ac = {1, 63, 0x00, "00"};
  const FrameFormat format = Gray(8, 8);
  ASSERT_EQ(WordsOf(Progressive(8, {dc, ac}), format), "");
  EXPECT_EQ(WordsOf(Progressive(8, {dc}), format), "scans of component 1 are missing");
  EXPECT_EQ(WordsOf(Progressive(8, {}), format), "scans of component 1 are missing");
  EXPECT_EQ(WordsOf(Progressive(8, {{0, 0, 0x01, "0000"}, ac}), format),
            "scans of component 1 are missing");
  EXPECT_EQ(WordsOf(Progressive(8, {ac, dc}), format), "a scan lacks the one before it");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, dc, ac}), format),
            "a scan does not go on from those before");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 63, 0x10, "00"}}), format),
            "a scan does not go on from those before");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 63, 0x02, "00"}, {1, 63, 0x10, "00"}}), format),
            "a scan does not go on from those before");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 63, 0x20, "00"}}), format),
            "a scan goes from bit 2 to bit 0");
  EXPECT_EQ(WordsOf(Progressive(8, {{0, 5, 0, "0000"}}), format),
            "a scan has coefficients 0 to 5 of 1 components");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {5, 4, 0, "00"}}), format),
            "a scan has coefficients 5 to 4 of 1 components");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {5, 64, 0, "00"}}), format),
            "a scan has coefficients 5 to 64 of 1 components");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 63, 0x00, "10 0"}}), format),
            "a run of blocks goes beyond the image");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 2, 0x00, "01 1 01 1 01 1"}}), format),
            "there are more entropy-coded data than the image needs");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 15, 0x00, "110"}}), format),
            "a block has too many coefficients");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 16, 0x00, "110"}, {17, 63, 0x00, "00"}}), format), "");
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 63, 0x00, "111"}}), format),
            "there are bits that are no Huffman code");
}

TEST(JpegExtendedCoder, ProgressiveScansStayWithinTheirBandsAndBits) {
  const Scan dc = {0, 0, 0x00, "0000"};
  const FrameFormat format = Gray(8, 8);
  // Sixteen zeros where a band of fifteen has no sixteenth to go on to.
  EXPECT_EQ(WordsOf(Progressive(8, {dc, {1, 15, 0x01, "00"}, {1, 15, 0x10, "110"}}), format),
            "a block has too many coefficients");
  // 16383 is within 16 bits, four times as much is not.
  EXPECT_EQ(WordsOf(Progressive(8, {{0, 0, 0x02, "1110 11111111111111"}}), format),
            "a coefficient is out of its range");
  // 0: a value behind one zero; 10: one of two bits; 110 ends the block.
  const Stream ac = {0x10, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x11, 0x02, 0x00};
  const auto with = [&](const std::vector<Scan>& scans) {
    const Stream stream = Progressive(8, scans);
    return Inserted(stream, Find(stream, 0xDA), test::JpegSegment(0xC4, ac));
  };
  EXPECT_EQ(WordsOf(with({dc, {1, 2, 0x00, "0 1"}, {3, 63, 0x00, "110"}}), format), "");
  EXPECT_EQ(WordsOf(with({dc, {1, 1, 0x00, "0 1"}, {2, 63, 0x00, "110"}}), format),
            "a block has too many coefficients");
  EXPECT_EQ(WordsOf(with({dc, {1, 63, 0x01, "110"}, {1, 63, 0x10, "10 1 110"}}), format),
            "a coefficient grows by more than a bit");
}

TEST(JpegExtendedCoder, BandsAreOfOneComponentAlone) {
  FlatJpeg image = Twelve();
  image.frameMarker = 0xC2;
  image.values = {0, 0, 0};
  image.scanEnd = 0;
  const Stream stream = test::MakeFlatJpeg(image);
  const Stream scan =
      Joined({test::JpegSegment(0xDA, {2, 1, 0, 2, 0, 1, 63, 0}), test::EntropyBytes("0 0")});
  EXPECT_EQ(WordsOf(Inserted(stream, stream.size() - 2, scan), Colour(8, 8)),
            "a scan has coefficients 1 to 63 of 2 components");
}

TEST(JpegExtendedCoder, ManyScansOfManyBlocksWithoutBytesForThemAreRefused) {
  constexpr unsigned kBlocks = 8191;
  const FrameFormat format = Gray(8 * kBlocks, 8);
  // One code for all blocks: 0 and then how many there are beyond 4096.
  const Stream table = {0x10, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xC0};
  const auto with = [&](std::uint8_t bands) {
    Stream stream = Progressive(8 * kBlocks, {{0, 0, 0x00, std::string(4 * kBlocks, '0')}});
    stream.resize(stream.size() - 2);
    const Stream tables = test::JpegSegment(0xC4, table);
    stream.insert(stream.end(), tables.begin(), tables.end());
    for (std::uint8_t band = 1; band <= bands; ++band) {
      const std::uint8_t end = band == bands ? 63 : band;
      const Stream scan = Joined({test::JpegSegment(0xDA, {1, 1, 0, band, end, 0x00}),
                                  test::EntropyBytes("0" + test::Digits(kBlocks - 4096, 12))});
      stream.insert(stream.end(), scan.begin(), scan.end());
    }
    stream.insert(stream.end(), {0xFF, 0xD9});
    return stream;
  };
  // 32 times 8191 is just below 2^18.
  EXPECT_EQ(WordsOf(with(31), format), "");
  EXPECT_EQ(WordsOf(with(32), format),
            "the code stream goes over its image more often than any needs");
  // A comment is as good as anything that would take the time to read: 8 blocks a byte, of 17 times 8191.
  const Stream comment = test::JpegSegment(0xFE, Stream(13000));
  EXPECT_EQ(WordsOf(Inserted(with(32), 2, comment), format), "");
}

TEST(JpegExtendedCoder, AHugeImageInFewBytesIsRefusedBeforeMemoryIsTaken) {
  for (const std::uint8_t marker : Stream{0xC1, 0xC2}) {
    FlatJpeg image = Twelve();
    image.frameMarker = marker;
    test::CheckHugeImage(kCoder, test::MakeFlatJpeg(image), marker, Gray(0xFF08, 0xFF08));
  }
}

TEST(JpegExtendedCoder, NoTruncationAndNoChangedByteDoesHarm) {
  FlatJpeg image = Twelve();
  image.columns = 24;
  image.rows = 16;
  image.interval = 2;
  image.values = {40};
  test::CheckDamage(kCoder, test::MakeFlatJpeg(image), Gray(24, 16));
  const std::vector<Scan> scans = {{0, 0, 0x01, "0010 11 0000"},
                                   {1, 5, 0x01, "01 0 00 00"},
                                   {6, 63, 0x00, "10 0"},
                                   {0, 0, 0x10, "1 1"},
                                   {1, 5, 0x10, "00 1 00"}};
  test::CheckDamage(kCoder, Progressive(16, scans), Gray(16, 8));
}

TEST(JpegExtendedCoder, NoTruncationOfANoisyStreamPasses) {
  const FrameFormat format = Gray(20, 20);
  const Stream stream = Encoded(test::MakeFrame(format, test::Pattern::kNoise), format, 60);
  for (std::size_t size = 0; size < stream.size(); ++size) {
    const Stream part(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_NE(WordsOf(part, format), "") << size;
  }
}

TEST(JpegExtendedCoder, EachFailedAllocationIsToldAndLeavesNothing) {
  const FrameFormat format = Gray(40, 30);
  const Stream frame = test::MakeFrame(format, test::Pattern::kGradient);
  const Stream sequential = Encoded(frame, format, 90);
  const std::vector<Scan> scans = {{0, 0, 0x00, "0000"}, {1, 63, 0x00, "00"}};
  for (const auto& [stream, shape] :
       {std::pair{sequential, format}, std::pair{Progressive(8, scans), Gray(8, 8)}}) {
    Stream back(shape.Size());
    bool isGood = false;
    const std::uint64_t count =
        tessaret::test::FailEveryAllocation([&, &bytes = stream, &wanted = shape] {
          isGood = false;
          try {
            kCoder.Decode(bytes, wanted, back);
            isGood = true;
          } catch (const std::bad_alloc&) {
          }
        });
    EXPECT_TRUE(isGood);
    EXPECT_GE(count, 3u);
  }
  std::size_t size = 0;
  const std::uint64_t count = tessaret::test::FailEveryAllocation([&] {
    size = 0;
    try {
      size = kCoder.Encode(frame, format, {}).stream.size();
    } catch (const std::bad_alloc&) {
    }
  });
  EXPECT_GE(count, 3u);
  EXPECT_EQ(size, sequential.size());
}

TEST(JpegExtendedCoder, OneCoderServesManyThreads) {
  const FrameFormat format = Gray(64, 64);
  test::CheckThreads(kCoder, test::MakeFrame(format, test::Pattern::kGradient), format, format);
}

}  // namespace
}  // namespace tessaret::codecs
