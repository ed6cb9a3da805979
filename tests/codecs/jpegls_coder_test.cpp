#include "jpegls/jpegls_coder.h"

#include <cstdlib>

#include <charls/charls.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/byte_order.h"
#include "codecs/frame_maker.h"
#include "codecs/peer_files.h"
#include "codecs/thread_checks.h"
#include "jpegls/jpegls_header.h"
#include "support/allocation_failure.h"
#include "support/temp_folder.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::AllocationWatch;
using tessaret::test::FailEveryAllocation;
using tessaret::test::TempFolder;
using testing::HasSubstr;
using Stream = std::vector<std::uint8_t>;

constexpr const char* kLosslessUid = "1.2.840.10008.1.2.4.80";
constexpr const char* kNearUid = "1.2.840.10008.1.2.4.81";

const JpegLsCoder kLossless(JpegLsKind::kLossless);
const JpegLsCoder kNear(JpegLsKind::kNearLossless);

const FrameFormat kFormats[] = {
    test::MakeFormat(1, 1, 1, 8, 8),           test::MakeFormat(1, 1, 3, 16, 16),
    test::MakeFormat(300, 1, 1, 16, 12),       test::MakeFormat(1, 200, 1, 8, 7),
    test::MakeFormat(37, 23, 1, 8, 1),         test::MakeFormat(37, 23, 1, 8, 8, true),
    test::MakeFormat(37, 23, 1, 16, 16),       test::MakeFormat(37, 23, 1, 16, 16, true),
    test::MakeFormat(37, 23, 1, 16, 12, true), test::MakeFormat(37, 23, 1, 16, 8),
    test::MakeFormat(37, 23, 3, 8, 8),         test::MakeFormat(31, 17, 3, 16, 10),
    test::MakeFormat(31, 17, 4, 8, 8),
};

std::int32_t SampleAt(Bytes frame, const FrameFormat& format, std::size_t at) {
  if (format.bitsAllocated == 8) {
    return format.isSigned ? static_cast<std::int8_t>(frame[at]) : frame[at];
  }
  const std::uint16_t sample = LoadLittle16(&frame[2 * at]);
  return format.isSigned ? static_cast<std::int16_t>(sample) : sample;
}

std::int32_t LargestDifference(Bytes one, Bytes other, const FrameFormat& format) {
  std::int32_t largest = 0;
  for (std::size_t at = 0; at < format.Samples(); ++at) {
    largest = std::max(largest, std::abs(SampleAt(one, format, at) - SampleAt(other, format, at)));
  }
  return largest;
}

std::vector<std::uint8_t> Decoded(Bytes stream, const FrameFormat& format) {
  std::vector<std::uint8_t> frame(format.Size(), 0xA5);
  kLossless.Decode(stream, format, frame);
  return frame;
}

std::string WordsOfDecoding(Bytes stream, const FrameFormat& format) {
  return test::WordsOf([&] { Decoded(stream, format); });
}

/// By CharLS, which tests of marker segments may use as they like.
Stream Made(Bytes frame, const FrameFormat& format, charls::interleave_mode mode,
            const charls::jpegls_pc_parameters& presets = {}, int nearness = 0) {
  charls::jpegls_encoder encoder;
  encoder.frame_info({format.columns, format.rows, static_cast<int>(format.bitsStored),
                      static_cast<int>(format.samples)});
  encoder.interleave_mode(mode).near_lossless(nearness);
  if (presets.reset_value != 0) encoder.preset_coding_parameters(presets);
  Stream stream(encoder.estimated_destination_size() + 1024);
  encoder.destination(stream);
  stream.resize(encoder.encode(frame.data(), frame.size()));
  return stream;
}

/// The example of ISO/IEC 14495-1, H.3: 4 x 4 samples of 8 bits.
const Stream kExample = {0xFF, 0xD8, 0xFF, 0xF7, 0x00, 0x0B, 0x08, 0x00, 0x04, 0x00, 0x04, 0x01,
                         0x01, 0x11, 0x00, 0xFF, 0xDA, 0x00, 0x08, 0x01, 0x01, 0x00, 0x00, 0x00,
                         0x00, 0xC0, 0x00, 0x00, 0x6C, 0x80, 0x20, 0x8E, 0x01, 0xC0, 0x00, 0x00,
                         0x57, 0x40, 0x00, 0x00, 0x6E, 0xE6, 0x00, 0x00, 0x01, 0xBC, 0x18, 0x00,
                         0x00, 0x05, 0xD8, 0x00, 0x00, 0x91, 0x60, 0xFF, 0xD9};
const Stream kExamplePixels = {0,  0,   90,  74,  68,  50,  43,  205,
                               64, 145, 145, 145, 100, 145, 145, 145};
constexpr std::size_t kFrameAt = 6;  // the frame header behind its length
constexpr std::size_t kScanAt = 19;  // the scan header behind its length

Stream Changed(std::size_t at, std::uint8_t value) {
  Stream stream = kExample;
  stream[at] = value;
  return stream;
}

Stream WithSegment(std::initializer_list<std::uint8_t> segment) {
  Stream stream = kExample;
  stream.insert(stream.begin() + 15, segment);
  return stream;
}

TEST(JpegLsCoder, DecodesTheExampleOfTheStandard) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  std::vector<std::uint8_t> frame(16);
  const DecodedFrame decoded = kLossless.Decode(kExample, format, frame);
  EXPECT_EQ(frame, kExamplePixels);
  EXPECT_EQ(decoded.precision, 8U);
  EXPECT_FALSE(decoded.isRgb);
}

TEST(JpegLsCoder, EncodesTheExampleOfTheStandardBitForBit) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const EncodedFrame encoded = kLossless.Encode(kExamplePixels, format, {});
  EXPECT_EQ(encoded.stream, kExample);
  EXPECT_FALSE(encoded.isLossy);
}

TEST(JpegLsCoder, WhatItEncodesItDecodes) {
  for (const FrameFormat& format : kFormats) {
    for (const test::Pattern pattern : test::kPatterns) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      EXPECT_EQ(Decoded(kLossless.Encode(frame, format, {}).stream, format), frame)
          << format.bitsStored << " of " << format.bitsAllocated << " bits";
    }
  }
}

TEST(JpegLsCoder, FramesThatTakeMoreThanTheirSamplesAreEncoded) {
  const FrameFormat format = test::MakeFormat(200, 200, 1, 16, 16);
  std::vector<std::uint8_t> frame(format.Size());
  for (std::size_t at = 0; at < 200 * 200; ++at) {
    StoreLittle16(&frame[2 * at], (at / 200 + at % 200) % 2 == 0 ? 0 : 0x8000);
  }
  const EncodedFrame encoded = kLossless.Encode(frame, format, {});
  EXPECT_GT(encoded.stream.size(), frame.size() + frame.size() / 12);
  EXPECT_EQ(Decoded(encoded.stream, format), frame);
}

TEST(JpegLsCoder, KeepsBitsAboveBitsStored) {
  const FrameFormat format = test::MakeFormat(40, 30, 1, 16, 12);
  std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  frame[1] |= 0x80;
  const EncodedFrame encoded = kLossless.Encode(frame, format, {});
  EXPECT_EQ(ReadJpegLsHeader(encoded.stream).precision, 16U);
  EXPECT_EQ(Decoded(encoded.stream, format), frame);
}

TEST(JpegLsCoder, ItsPrecisionIsBitsStoredButFillsTheBytes) {
  const auto precision = [](std::uint32_t allocated, std::uint32_t stored) {
    const FrameFormat format = test::MakeFormat(40, 30, 1, allocated, stored);
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    return ReadJpegLsHeader(kLossless.Encode(frame, format, {}).stream).precision;
  };
  EXPECT_EQ(precision(16, 16), 16U);
  EXPECT_EQ(precision(16, 10), 10U);
  EXPECT_EQ(precision(16, 8), 9U);
  EXPECT_EQ(precision(8, 8), 8U);
  EXPECT_EQ(precision(8, 1), 8U);
}

/// Runs a program's command over files with what is encoded of noise, without loss and with it, and looks whether it finds the same pixels.
void ExpectAlikeDecodedBy(const std::string& command) {
  const TempFolder folder;
  for (const FrameFormat& format : kFormats) {
    if (format.samples == 4) continue;  // others read none
    for (const std::uint32_t nearness : {0U, 5U}) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
      const EncodedFrame encoded = kNear.Encode(frame, format, {.jpegLsNear = nearness});
      test::WriteDicomFile(folder.File("in"), format, encoded.isLossy ? kNearUid : kLosslessUid,
                           encoded.stream);
      EXPECT_TRUE(test::Run(command + " " + folder.File("in") + " " + folder.File("out")));
      std::vector<std::uint8_t> native = test::ReadPixelData(folder.File("out"));
      native.resize(frame.size());
      EXPECT_EQ(native, encoded.isLossy ? Decoded(encoded.stream, format) : frame)
          << format.bitsStored << " of " << format.bitsAllocated << " bits, " << format.columns
          << " x " << format.rows;
    }
  }
}

TEST(JpegLsCoder, DcmtkDecodesWhatItEncodes) {
  ASSERT_TRUE(test::HasProgram("dcmdjpls"));
  ExpectAlikeDecodedBy("dcmdjpls");
}

TEST(JpegLsCoder, GdcmDecodesWhatItEncodes) {
  ASSERT_TRUE(test::HasProgram("gdcmconv"));
  ExpectAlikeDecodedBy("gdcmconv --raw");
}

TEST(JpegLsCoder, DecodesWhatDcmtkEncodesInEveryInterleaveMode) {
  ASSERT_TRUE(test::HasProgram("dcmcjpls"));
  const TempFolder folder;
  for (const FrameFormat& format : kFormats) {
    if (format.samples == 4) continue;
    for (const std::string option : {"+il", "+is", "+in", "+pc"}) {
      // Precision as stored: it stumbles over signed samples, and what it makes of a byte's samples only it can read.
      if (option == "+pc" && (format.isSigned || format.bitsStored <= 8)) continue;
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kGradient);
      test::WriteDicomFile(folder.File("in"), format, test::kExplicitLittle, frame);
      ASSERT_TRUE(
          test::Run("dcmcjpls " + option + " " + folder.File("in") + " " + folder.File("out")));
      const Stream coded = test::ReadPixelData(folder.File("out"));
      EXPECT_EQ(Decoded(coded, format), frame)
          << option << " " << format.bitsStored << " of " << format.bitsAllocated << " bits";
    }
  }
}

/// Its coder is not CharLS, which all other programs have.
TEST(JpegLsCoder, DecodesWhatJpegToolsEncodeAsTheyDo) {
  ASSERT_TRUE(test::HasProgram("jpeg"));
  const TempFolder folder;
  const std::string in = folder.File("in.pnm");
  const std::string out = folder.File("out.jls");
  for (const std::uint32_t stored : {2U, 8U, 9U, 16U}) {
    for (const std::string option : {"0", "0 -m 1", "1", "1 -m 1", "2", "2 -m 1"}) {
      const bool isGray = option[0] == '0' && stored % 2 == 0;
      const FrameFormat format =
          test::MakeFormat(41, 23, isGray ? 1 : 3, stored > 8 ? 16 : 8, stored);
      for (const auto pattern : {test::Pattern::kNoise, test::Pattern::kSteps}) {
        const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
        test::WriteBytes(in, test::PnmFile(frame, format));
        // -c leaves colours as they are.
        ASSERT_TRUE(test::Run("jpeg -c -ls " + option + " " + in + " " + out));
        ASSERT_TRUE(test::Run("jpeg " + out + " " + folder.File("back.pnm")));
        const auto back = test::PnmPixels(test::ReadBytes(folder.File("back.pnm")), format);
        EXPECT_EQ(Decoded(test::ReadBytes(out), format), back) << stored << " bits, " << option;
        EXPECT_LE(LargestDifference(back, frame, format), option.size() == 1 ? 0 : 1);
      }
    }
  }
}

TEST(JpegLsCoder, DecodesNearLosslessStreamsAsDcmtkDoes) {
  ASSERT_TRUE(test::HasProgram("dcmcjpls"));
  ASSERT_TRUE(test::HasProgram("dcmdjpls"));
  const TempFolder folder;
  for (const FrameFormat& format :
       {test::MakeFormat(61, 47, 1, 8, 8), test::MakeFormat(61, 47, 1, 16, 12),
        test::MakeFormat(61, 47, 1, 16, 16), test::MakeFormat(61, 47, 3, 8, 8)}) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    test::WriteDicomFile(folder.File("in"), format, test::kExplicitLittle, frame);
    ASSERT_TRUE(test::Run("dcmcjpls +en +md 5 " + folder.File("in") + " " + folder.File("out")));
    ASSERT_TRUE(test::Run("dcmdjpls " + folder.File("out") + " " + folder.File("back")));
    std::vector<std::uint8_t> native = test::ReadPixelData(folder.File("back"));
    native.resize(frame.size());
    const std::vector<std::uint8_t> decoded =
        Decoded(test::ReadPixelData(folder.File("out")), format);
    EXPECT_EQ(decoded, native);
    EXPECT_NE(decoded, frame);
    EXPECT_LE(LargestDifference(decoded, frame, format), 5);
  }
}

/// Also what CharLS, itself the encoder, decodes.
TEST(JpegLsCoder, DecodesNearLosslessStreamsAsCharlsDoes) {
  for (const FrameFormat& format : kFormats) {
    if (format.bitsStored == 1 || format.isSigned) continue;
    if (format.bitsAllocated == 16 && format.bitsStored <= 8) continue;
    for (const test::Pattern pattern : test::kPatterns) {
      for (const int nearness : {1, 3, 60}) {
        for (const auto mode : {charls::interleave_mode::none, charls::interleave_mode::line,
                                charls::interleave_mode::sample}) {
          const bool isGray = mode == charls::interleave_mode::none;
          if (isGray != (format.samples == 1)) continue;
          const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
          const Stream stream = Made(frame, format, mode, {}, nearness);
          const auto expected = charls::jpegls_decoder(stream, true).decode<Stream>();
          EXPECT_EQ(Decoded(stream, format), expected);
        }
      }
    }
  }
}

TEST(JpegLsCoder, PutsPlanesLinesAndPixelsInTheOrderOfPixels) {
  for (const FrameFormat& format :
       {test::MakeFormat(7, 5, 3, 8, 8), test::MakeFormat(7, 5, 3, 16, 12),
        test::MakeFormat(7, 5, 3, 8, 6)}) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    EXPECT_EQ(Decoded(Made(frame, format, charls::interleave_mode::line), format), frame);
    EXPECT_EQ(Decoded(Made(frame, format, charls::interleave_mode::sample), format), frame);
    // The encoder takes this mode's samples by plane: these are the same bytes as planes.
    std::vector<std::uint8_t> pixels(frame.size());
    const std::size_t width = format.BytesPerSample();
    for (std::size_t at = 0; at < format.Samples(); ++at) {
      const std::size_t place = at % 35 * 3 + at / 35;
      std::memcpy(&pixels[place * width], &frame[at * width], width);
    }
    EXPECT_EQ(Decoded(Made(frame, format, charls::interleave_mode::none), format), pixels);
  }
}

TEST(JpegLsCoder, GivesSamplesOfAByteInTwoWhereTwoAreAllocated) {
  const FrameFormat narrow = test::MakeFormat(19, 11, 3, 8, 8);
  FrameFormat wide = test::MakeFormat(19, 11, 3, 16, 8);
  const std::vector<std::uint8_t> bytes = test::MakeFrame(narrow, test::Pattern::kNoise);
  const std::vector<std::uint8_t> words = test::MakeFrame(wide, test::Pattern::kNoise);
  EXPECT_EQ(Decoded(Made(bytes, narrow, charls::interleave_mode::sample), wide), words);
}

TEST(JpegLsCoder, ExtendsSignsOnlyOfStreamsWithFewerBitsThanStored) {
  const FrameFormat stream = test::MakeFormat(2, 1, 1, 16, 12);
  const std::vector<std::uint8_t> frame = {0xFF, 0x0F, 0xFF, 0x07};  // -1 and 2047 of 12 bits
  const Stream coded = Made(frame, stream, charls::interleave_mode::none);
  EXPECT_EQ(Decoded(coded, test::MakeFormat(2, 1, 1, 16, 12, true)), frame);
  EXPECT_EQ(Decoded(coded, test::MakeFormat(2, 1, 1, 16, 16, true)),
            (std::vector<std::uint8_t>{0xFF, 0xFF, 0xFF, 0x07}));
}

TEST(JpegLsCoder, DecodesOtherThresholdsAndCounters) {
  for (const charls::interleave_mode mode :
       {charls::interleave_mode::none, charls::interleave_mode::line}) {
    for (const charls::jpegls_pc_parameters& presets :
         std::initializer_list<charls::jpegls_pc_parameters>{{255, 9, 20, 50, 31},
                                                             {255, 4, 4, 4, 3},
                                                             {255, 255, 255, 255, 255},
                                                             {0, 0, 0, 0, 90}}) {
      for (const test::Pattern pattern : test::kPatterns) {
        const std::uint32_t samples = mode == charls::interleave_mode::none ? 1 : 3;
        const FrameFormat format = test::MakeFormat(40, 30, samples, 8, 8);
        const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
        EXPECT_EQ(Decoded(Made(frame, format, mode, presets), format), frame);
      }
    }
  }
}

TEST(JpegLsCoder, DecodesPixelsWithOtherThresholdsOfDcmtk) {
  ASSERT_TRUE(test::HasProgram("dcmcjpls"));
  const TempFolder folder;
  const FrameFormat format = test::MakeFormat(40, 30, 3, 8, 8);
  for (const test::Pattern pattern : test::kPatterns) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
    test::WriteDicomFile(folder.File("in"), format, test::kExplicitLittle, frame);
    ASSERT_TRUE(test::Run("dcmcjpls +is +t1 9 +t2 20 +t3 50 " + folder.File("in") + " " +
                          folder.File("out")));
    EXPECT_EQ(Decoded(test::ReadPixelData(folder.File("out")), format), frame);
  }
}

TEST(JpegLsCoder, RefusesColourTransforms) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  EXPECT_THAT(WordsOfDecoding(WithSegment({0xFF, 0xE8, 0, 7, 'm', 'r', 'f', 'x', 1}), format),
              HasSubstr("colour transform 1"));
  EXPECT_EQ(WordsOfDecoding(WithSegment({0xFF, 0xE8, 0, 7, 'm', 'r', 'f', 'x', 0}), format), "");
}

TEST(JpegLsCoder, RefusesRestarts) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  EXPECT_THAT(WordsOfDecoding(WithSegment({0xFF, 0xDD, 0, 4, 0, 1}), format),
              HasSubstr("restarts"));
  EXPECT_EQ(WordsOfDecoding(WithSegment({0xFF, 0xDD, 0, 4, 0, 0}), format), "");
}

TEST(JpegLsCoder, PassesOverWhatDoesNoHarm) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  for (const Stream& stream :
       {WithSegment({0xFF, 0xE0, 0, 4, 'a', 'b'}), WithSegment({0xFF, 0xEF, 0, 2}),
        WithSegment({0xFF, 0xFE, 0, 3, 'c'}), WithSegment({0xFF, 0xFF, 0xFF})}) {
    EXPECT_EQ(Decoded(stream, format), kExamplePixels);
  }
  for (const std::size_t count : {1U, 2U, 3U, 1000U}) {
    Stream padded = kExample;
    padded.resize(padded.size() + count);
    EXPECT_EQ(Decoded(padded, format), kExamplePixels);
  }
}

TEST(JpegLsCoder, PassesOverTheHeaderOfSpiffFiles) {
  const FrameFormat format = test::MakeFormat(20, 10, 1, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  charls::jpegls_encoder encoder;
  encoder.frame_info({20, 10, 8, 1});
  Stream stream(encoder.estimated_destination_size());
  encoder.destination(stream);
  encoder.write_standard_spiff_header(charls::spiff_color_space::grayscale);
  stream.resize(encoder.encode(frame));
  EXPECT_EQ(Decoded(stream, format), frame);
}

struct Refusal {
  Stream stream;
  const char* words;
};

TEST(JpegLsCoder, RefusesHeadersOfOtherImagesAndNonsense) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const auto presets = [](std::uint8_t t1, std::uint8_t t2, std::uint8_t t3, std::uint8_t reset) {
    return WithSegment({0xFF, 0xF8, 0, 13, 1, 0, 255, 0, t1, 0, t2, 0, t3, 0, reset});
  };
  const Refusal refusals[] = {
      {{}, "does not begin as JPEG does"},
      {{0xFF, 0xD8}, "ends early"},
      {{0xFF, 0xD8, 0xFF, 0xD9}, "ends with 0 of 0 components"},
      {Changed(1, 0xD9), "does not begin as JPEG does"},
      {Changed(3, 0xC0), "marker FFC0"},
      {Changed(kFrameAt, 1), "samples of 1 bits"},
      {Changed(kFrameAt, 17), "samples of 17 bits"},
      {Changed(kFrameAt, 9), "samples of 9 bits, the data set allocates 8"},
      {Changed(kFrameAt + 2, 5), "4 x 5 pixels, the data set 4 x 4"},
      {Changed(kFrameAt + 2, 0), "4 x 0 pixels"},
      {Changed(kFrameAt + 4, 5), "5 x 4 pixels, the data set 4 x 4"},
      {Changed(kFrameAt + 3, 255), "65284 x 4 pixels"},
      {Changed(kFrameAt + 5, 0), "0 components"},
      {Changed(kFrameAt + 5, 2), "frame header of 9 bytes for 2 components"},
      {Changed(kFrameAt + 5, 255), "255 components"},
      {Changed(kFrameAt + 7, 0x21), "fewer samples"},
      {Changed(kScanAt, 0), "scan header of 6 bytes for 0 components"},
      {Changed(kScanAt, 2), "scan header of 6 bytes for 2 components"},
      {Changed(kScanAt + 1, 2), "not in the order"},
      {Changed(kScanAt + 2, 1), "mapping tables"},
      {Changed(kScanAt + 3, 128), "NEAR is 128"},
      {Changed(kScanAt + 4, 1), "interleave mode 1"},
      {Changed(kScanAt + 4, 3), "interleave mode 3"},
      {Changed(kScanAt + 5, 1), "point transform"},
      {presets(0, 0, 0, 2), "halved at 2"},
      {presets(9, 8, 20, 64), "a threshold of 8 is not from 9"},
      {presets(3, 21, 7, 64), "a threshold of 7 is not from 21"},
      {WithSegment({0xFF, 0xF8, 0, 13, 1, 1, 0, 0, 3, 0, 7, 0, 21, 0, 64}), "largest value is 256"},
      {WithSegment({0xFF, 0xF8, 0, 13, 1, 0, 2, 0, 3, 0, 7, 0, 21, 0, 64}), "from 1 to 2"},
      {WithSegment({0xFF, 0xF8, 0, 12, 1, 0, 2, 0, 3, 0, 7, 0, 21, 0}), "segment of 10 bytes"},
      {WithSegment({0xFF, 0xF8, 0, 2}), "segment of no bytes"},
      {WithSegment({0xFF, 0xF8, 0, 5, 2, 1, 1}), "presets of type 2"},
      {WithSegment({0xFF, 0xE0, 0, 1}), "marker segment of 1 bytes"},
      {WithSegment({0xFF, 0xE0, 255, 255}), "ends early"},
      {WithSegment({0xFF, 0xF7, 0, 11, 8, 0, 4, 0, 4, 1, 1, 0x11, 0}), "second frame header"},
      {WithSegment({0}), "is 00, not a marker"},
  };
  for (const Refusal& refusal : refusals) {
    EXPECT_THAT(WordsOfDecoding(refusal.stream, format), HasSubstr(refusal.words));
  }
  Stream twice = kExample;
  twice.insert(twice.end() - 2, kExample.begin() + 15, kExample.end() - 2);
  EXPECT_THAT(WordsOfDecoding(twice, format), HasSubstr("more scans than components"));
  Stream same = Changed(kFrameAt - 1, 14);
  same[kFrameAt + 5] = 2;
  same.insert(same.begin() + kFrameAt + 9, {1, 0x11, 0});
  EXPECT_THAT(WordsOfDecoding(same, format), HasSubstr("component 1 twice"));
  Stream seldom = WithSegment({0xFF, 0xF8, 0, 13, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0});
  seldom[kFrameAt] = 16;
  EXPECT_THAT(WordsOfDecoding(seldom, test::MakeFormat(4, 4, 1, 16, 16)),
              HasSubstr("halved at 32768"));
  EXPECT_THAT(WordsOfDecoding(kExample, test::MakeFormat(4, 4, 3, 8, 8)),
              HasSubstr("1 components, the data set 3 samples"));
  EXPECT_THAT(WordsOfDecoding(kExample, test::MakeFormat(4, 4, 1, 32, 32)),
              HasSubstr("32 bits allocated"));
}

TEST(JpegLsCoder, RefusesEveryCutStream) {
  for (const FrameFormat& format :
       {test::MakeFormat(25, 20, 1, 16, 12), test::MakeFormat(15, 10, 3, 8, 8)}) {
    for (const test::Pattern pattern : test::kPatterns) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      const Stream stream = kLossless.Encode(frame, format, {}).stream;
      for (std::size_t size = 0; size < stream.size(); ++size) {
        // In a block of its own, so that the sanitizers see what is read behind it.
        Stream cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(WordsOfDecoding(cut, format), "") << size;
        if (size + 2 >= stream.size()) continue;
        cut.insert(cut.end(), {0xFF, 0xD9});
        EXPECT_NE(WordsOfDecoding(cut, format), "") << size << " and an end marker";
      }
    }
  }
}

TEST(JpegLsCoder, RefusesBytesBetweenTheLastSampleAndTheEndMarker) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  for (const std::size_t count : {1U, 8U, 100U}) {
    Stream stream = kExample;
    stream.insert(stream.end() - 2, count, 0x55);
    EXPECT_THAT(WordsOfDecoding(stream, format), HasSubstr("more than the frame"));
  }
  Stream filled = kExample;
  filled[filled.size() - 3] |= 1;
  EXPECT_THAT(WordsOfDecoding(filled, format), HasSubstr("more than the frame"));
  // Wherever in the last byte the last code ends.
  for (std::uint32_t seed = 0; seed < 100; ++seed) {
    Stream more =
        kLossless.Encode(test::MakeFrame(format, test::Pattern::kNoise, seed), format, {}).stream;
    more.insert(more.end() - 2, 0);
    EXPECT_THAT(WordsOfDecoding(more, format), HasSubstr("more than the frame"));
  }
}

/// Headers of samples of 8 bits in one column, with these coded data.
Stream ColumnOf(std::uint8_t rows, std::initializer_list<std::uint8_t> data) {
  Stream stream(kExample.begin(), kExample.begin() + 25);
  stream[kFrameAt + 2] = rows;
  stream[kFrameAt + 4] = 1;
  stream.insert(stream.end(), data);
  stream.insert(stream.end(), {0xFF, 0xD9});
  return stream;
}

TEST(JpegLsCoder, TakesTheByteThatFollowsOnesAtTheEnd) {
  const FrameFormat format = test::MakeFormat(3, 4, 1, 8, 8);
  int found = 0;
  for (std::uint32_t seed = 0; seed < 20000 && found < 5; ++seed) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise, seed);
    Stream stream = kLossless.Encode(frame, format, {}).stream;
    // Where the last sample's bits fill up an FF there is a bit 0 behind it, and the rest of its byte.
    if (stream.end()[-4] != 0xFF || stream.end()[-3] != 0) continue;
    ++found;
    EXPECT_EQ(Decoded(stream, format), frame);
    stream.insert(stream.end() - 2, 0);
    EXPECT_THAT(WordsOfDecoding(stream, format), HasSubstr("more than the frame"));
  }
  EXPECT_GT(found, 0);
}

TEST(JpegLsCoder, RefusesRunsThatEndBehindTheirRow) {
  // Four rows are runs of a sample each, a bit 1. From then on a run that ends early says in one bit how long it was.
  const FrameFormat format = test::MakeFormat(1, 5, 1, 8, 8);
  EXPECT_EQ(Decoded(ColumnOf(5, {0b1111'1'000}), format), Stream(5));
  EXPECT_THAT(WordsOfDecoding(ColumnOf(5, {0b1111'01'00}), format), HasSubstr("beyond its row"));
}

TEST(JpegLsCoder, RefusesCodesWithMoreZerosThanTheirLimit) {
  // A run of none, a bit 0, and an error that does not fit: 32 - 0 - 1 bits at most, so 31 - 8 - 1 zeros, a bit 1 and 8 bits with
  // 7 - 1: twice the error of 4, less 1 where left and above are alike.
  const FrameFormat format = test::MakeFormat(1, 1, 1, 8, 8);
  EXPECT_EQ(Decoded(ColumnOf(1, {0, 0, 0b0000000'1, 6}), format), Stream{4});
  EXPECT_THAT(WordsOfDecoding(ColumnOf(1, {0, 0, 0, 0b1'0000011, 0}), format),
              HasSubstr("out of range"));
}

TEST(JpegLsCoder, RefusesErrorsOutOfRange) {
  // With NEAR 127 there are two errors. The first sample ends a run of none by a bit 0, and has a code with k = 1: the zeros
  // before a bit 1 are the error's higher bits, and one bit more follows.
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const auto words = [&](std::uint8_t code) {
    Stream stream = Changed(kScanAt + 3, 127);
    stream.resize(25);
    stream.insert(stream.end(), {code, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xD9});
    return WordsOfDecoding(stream, format);
  };
  EXPECT_THAT(words(0b0'00'1'0'000), HasSubstr("out of range")) << "4";
  EXPECT_THAT(words(0b0'00000'1'0), HasSubstr("out of range")) << "10";
  EXPECT_THAT(words(0b0'0'1'1'0000), HasSubstr("out of range")) << "3";
  EXPECT_THAT(words(0b0'0'1'0'0000), testing::Not(HasSubstr("out of range"))) << "2";
}

TEST(JpegLsCoder, OutlivesEveryChangeOfOneByte) {
  const FrameFormat format = test::MakeFormat(6, 5, 3, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kSteps);
  for (const auto mode : {charls::interleave_mode::none, charls::interleave_mode::line,
                          charls::interleave_mode::sample}) {
    Stream stream = Made(frame, format, mode);
    for (std::size_t at = 0; at < stream.size(); ++at) {
      const std::uint8_t before = stream[at];
      for (unsigned value = 0; value < 256; ++value) {
        stream[at] = static_cast<std::uint8_t>(value);
        WordsOfDecoding(stream, format);
      }
      stream[at] = before;
    }
  }
}

TEST(JpegLsCoder, RefusesLargeFramesOfNextToNoBytes) {
  Stream stream = kExample;
  StoreBig16(&stream[kFrameAt + 1], 40000);
  StoreBig16(&stream[kFrameAt + 3], 40000);
  // The frame is not touched before that, so there needs to be none.
  const FrameFormat format = test::MakeFormat(40000, 40000, 1, 8, 8);
  EXPECT_THAT(test::WordsOf([&] { kLossless.Decode(stream, format, {}); }),
              HasSubstr("57 bytes cannot hold a frame of 1600000000"));
}

TEST(JpegLsCoder, NearLosslessSamplesAreOffByNoMoreThanAsked) {
  for (const FrameFormat& format : kFormats) {
    for (const std::uint32_t nearness : {0U, 1U, 2U, 7U, 255U}) {
      for (const test::Pattern pattern : test::kPatterns) {
        const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
        EncoderSettings settings;
        settings.jpegLsNear = nearness;
        const EncodedFrame encoded = kNear.Encode(frame, format, settings);
        const auto off = static_cast<std::uint32_t>(
            LargestDifference(Decoded(encoded.stream, format), frame, format));
        EXPECT_LE(off, encoded.isLossy ? nearness : 0);
      }
    }
  }
}

TEST(JpegLsCoder, NearLosslessSamplesTakeFewerBytesAndSayThatTheyAreLossy) {
  const FrameFormat format = test::MakeFormat(64, 64, 1, 16, 12, true);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const EncodedFrame all = kNear.Encode(frame, format, {.jpegLsNear = 0});
  const EncodedFrame less = kNear.Encode(frame, format, {.jpegLsNear = 10});
  EXPECT_FALSE(all.isLossy);
  EXPECT_TRUE(less.isLossy);
  EXPECT_LT(less.stream.size(), all.stream.size());
  EXPECT_STREQ(kNear.LossyMethod(), "ISO_14495_1");
  EXPECT_EQ(kLossless.LossyMethod(), nullptr);
  EXPECT_FALSE(kLossless.Encode(frame, format, {.jpegLsNear = 10}).isLossy);
}

TEST(JpegLsCoder, NoMoreThanHalfOfTheValuesIsLost) {
  const auto nearness = [](std::uint32_t stored, bool isSigned) {
    const FrameFormat format = test::MakeFormat(37, 23, 1, 8, stored, isSigned);
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    const EncodedFrame encoded = kNear.Encode(frame, format, {.jpegLsNear = 255});
    return ReadJpegLsHeader(encoded.stream).scans[0].parameters.nearness;
  };
  // What is or is not part of something stays so.
  EXPECT_EQ(nearness(1, false), 0);
  EXPECT_EQ(nearness(2, false), 1);
  EXPECT_EQ(nearness(7, false), 63);
  EXPECT_EQ(nearness(7, true), 63);
  EXPECT_EQ(nearness(8, false), 127);
}

TEST(JpegLsCoder, SignedSamplesNeverComeOutAtTheOtherEnd) {
  const FrameFormat format = test::MakeFormat(64, 64, 1, 16, 16, true);
  const EncoderSettings settings{.jpegLsNear = 4};
  // The highest sample is 3 below the end of the container, so 3 is the most it may be off.
  std::vector<std::uint8_t> frame =
      test::MakeFrame(test::MakeFormat(64, 64, 1, 16, 10, true), test::Pattern::kNoise);
  StoreLittle16(&frame[100], 0x7FFC);
  const EncodedFrame encoded = kNear.Encode(frame, format, settings);
  EXPECT_TRUE(encoded.isLossy);
  EXPECT_LE(LargestDifference(Decoded(encoded.stream, format), frame, format), 3);
  StoreLittle16(&frame[100], 0x8000);
  EXPECT_FALSE(kNear.Encode(frame, format, settings).isLossy);
}

TEST(JpegLsCoder, LosesNothingWhereAContainerHoldsMoreThanNumbers) {
  FrameFormat format = test::MakeFormat(64, 64, 1, 16, 12);
  std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  EXPECT_TRUE(kNear.Encode(frame, format, {}).isLossy);
  frame[1] |= 0x10;
  EXPECT_FALSE(kNear.Encode(frame, format, {}).isLossy);
  frame[1] &= 0x0F;
  format.highBit = 15;
  EXPECT_FALSE(kNear.Encode(frame, format, {}).isLossy);
}

TEST(JpegLsCoder, SaysWhatItDoesNotEncode) {
  FrameFormat palette = test::MakeFormat(4, 4, 1, 8, 8);
  palette.photometric = "PALETTE COLOR";
  EXPECT_EQ(test::WordsOf([&] { kLossless.RequireEncodable(palette); }), "");
  EXPECT_THAT(test::WordsOf([&] { kNear.RequireEncodable(palette); }),
              HasSubstr("palette entries"));
  const auto words = [](const FrameFormat& format) {
    return test::WordsOf([&] { kLossless.RequireEncodable(format); });
  };
  EXPECT_THAT(words(test::MakeFormat(4, 4, 1, 32, 32)), HasSubstr("32 bits allocated"));
  EXPECT_THAT(words(test::MakeFormat(4, 4, 1, 1, 1)), HasSubstr("1 bits allocated"));
  EXPECT_THAT(words(test::MakeFormat(4, 4, 2, 8, 8)), HasSubstr("2 samples"));
  EXPECT_EQ(words(test::MakeFormat(4, 4, 4, 16, 12)), "");
}

TEST(JpegLsCoder, OneCoderServesManyThreads) {
  const FrameFormat format = test::MakeFormat(64, 64, 3, 8, 8);
  test::CheckThreads(kNear, test::MakeFrame(format, test::Pattern::kNoise), format, format);
}

TEST(JpegLsCoder, WithoutMemoryItFailsAndLeavesNothingBehind) {
  const FrameFormat format = test::MakeFormat(20, 15, 3, 16, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const Stream stream =
      Made(test::MakeFrame(test::MakeFormat(20, 15, 3, 8, 8), test::Pattern::kNoise),
           test::MakeFormat(20, 15, 3, 8, 8), charls::interleave_mode::none);
  std::vector<std::uint8_t> back(frame.size());
  const auto tries = FailEveryAllocation([&] {
    const AllocationWatch watch;
    try {
      kLossless.Decode(stream, format, back);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(watch.Outstanding(), 0);
  });
  EXPECT_GT(tries, 2U);
  const auto encodings = FailEveryAllocation([&] {
    const AllocationWatch watch;
    try {
      (void)kNear.Encode(frame, format, {});
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(watch.Outstanding(), 0);
  });
  EXPECT_GT(encodings, 2U);
}

}  // namespace
}  // namespace tessaret::codecs
