#include "jpeg2000/jpeg2000_coder.h"

#include <algorithm>
#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/byte_order.h"
#include "codecs/frame_maker.h"
#include "codecs/openjpeg_files.h"
#include "codecs/peer_files.h"
#include "jpeg2000/jpeg2000_header.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/measured_child.h"
#include "support/temp_folder.h"

namespace tessaret::codecs {
namespace {

using tessaret::test::TempFolder;
using test::ByPlane;
using test::RawOption;
using testing::HasSubstr;
using Stream = std::vector<std::uint8_t>;

constexpr const char* kLosslessUid = "1.2.840.10008.1.2.4.90";

const Jpeg2000Coder kLossless(Jpeg2000Kind::kLossless);
const Jpeg2000Coder kLossy(Jpeg2000Kind::kLossy);
const Jpeg2000Coder kHighThroughput(Jpeg2000Kind::kHighThroughput);

const FrameFormat kFormats[] = {
    test::MakeFormat(1, 1, 1, 8, 8),           test::MakeFormat(1, 1, 3, 16, 16),
    test::MakeFormat(300, 1, 1, 16, 12),       test::MakeFormat(1, 200, 1, 8, 7),
    test::MakeFormat(37, 23, 1, 8, 1),         test::MakeFormat(37, 23, 1, 8, 8, true),
    test::MakeFormat(37, 23, 1, 16, 16),       test::MakeFormat(37, 23, 1, 16, 16, true),
    test::MakeFormat(37, 23, 1, 16, 12, true), test::MakeFormat(37, 23, 1, 16, 8),
    test::MakeFormat(37, 23, 3, 8, 8),         test::MakeFormat(31, 17, 3, 16, 10),
    test::MakeFormat(31, 17, 2, 8, 8),         test::MakeFormat(31, 17, 4, 16, 16),
};

std::vector<std::uint8_t> Decoded(Bytes stream, const FrameFormat& format) {
  std::vector<std::uint8_t> frame(format.Size(), 0xA5);
  kLossless.Decode(stream, format, frame);
  return frame;
}

std::string WordsOfDecoding(Bytes stream, const FrameFormat& format) {
  return test::WordsOf([&] { Decoded(stream, format); });
}

/// How many resolutions the least side has room for.
std::string ResolutionOption(const FrameFormat& format) {
  std::uint32_t count = 1;
  while (count < 6 && std::min(format.columns, format.rows) >> count != 0) ++count;
  return " -n " + std::to_string(count);
}

/// 4 x 4 samples of 8 bits without signs, in one tile that has room for 256 x 256, and one packet that says that there is
/// nothing in it. All coefficients are 0 then, and all samples half of their range.
// clang-format off
const Stream kEmpty = {
    0xFF, 0x4F,
    0xFF, 0x51, 0, 41, 0, 0,                       // size
    0, 0, 0, 4, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0,  // of the image,
    0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // of tiles,
    0, 1, 7, 1, 1,                                 // and one component
    0xFF, 0x52, 0, 12, 0, 0, 0, 1, 0, 0, 4, 4, 0, 1,  // no levels
    0xFF, 0x5C, 0, 4, 0x40, 0x40,                  // no quantisation
    0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 15, 0, 1,    // the tile
    0xFF, 0x93, 0,
    0xFF, 0xD9};
// clang-format on
constexpr std::size_t kImageAt = 8;
constexpr std::size_t kTileAt = 24;
constexpr std::size_t kComponentsAt = 40;
constexpr std::size_t kStyleAt = 49;
constexpr std::size_t kTilePartAt = 65;

Stream Changed(std::size_t at, std::initializer_list<std::uint8_t> values) {
  Stream stream = kEmpty;
  std::copy(values.begin(), values.end(), stream.begin() + static_cast<std::ptrdiff_t>(at));
  return stream;
}

Stream WithSegment(std::initializer_list<std::uint8_t> segment) {
  Stream stream = kEmpty;
  stream.insert(stream.begin() + kTilePartAt, segment);
  return stream;
}

TEST(Jpeg2000Coder, AnEmptyPacketIsAFrameOfHalfTheRange) {
  std::vector<std::uint8_t> frame(16);
  const DecodedFrame decoded = kLossless.Decode(kEmpty, test::MakeFormat(4, 4, 1, 8, 8), frame);
  EXPECT_EQ(frame, std::vector<std::uint8_t>(16, 128));
  EXPECT_EQ(decoded.precision, 8U);
  EXPECT_FALSE(decoded.isRgb);
  // Signed samples are 0 then.
  EXPECT_EQ(Decoded(Changed(kComponentsAt + 2, {0x87}), test::MakeFormat(4, 4, 1, 8, 8, true)),
            std::vector<std::uint8_t>(16, 0));
}

TEST(Jpeg2000Coder, WhatItEncodesWithoutLossItDecodes) {
  for (const FrameFormat& format : kFormats) {
    for (const test::Pattern pattern : test::kPatterns) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      const EncodedFrame encoded = kLossless.Encode(frame, format, {});
      EXPECT_FALSE(encoded.isLossy);
      EXPECT_EQ(Decoded(encoded.stream, format), frame)
          << format.bitsStored << " of " << format.bitsAllocated << " bits";
    }
  }
}

TEST(Jpeg2000Coder, ItsPrecisionAndSignAreThoseOfTheDataSetWhereSamplesFit) {
  FrameFormat format = test::MakeFormat(40, 30, 1, 16, 12, true);
  std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const auto header = [&] {
    return ReadJpeg2000Header(kLossless.Encode(frame, format, {}).stream);
  };
  EXPECT_EQ(header().precision, 12U);
  EXPECT_TRUE(header().isSigned);
  StoreLittle16(frame.data(), 0x0FFF);  // -1 whose sign is not extended
  Stream stream = kLossless.Encode(frame, format, {}).stream;
  EXPECT_EQ(ReadJpeg2000Header(stream).precision, 16U);
  EXPECT_EQ(Decoded(stream, format), frame);
  format = test::MakeFormat(40, 30, 1, 16, 12);
  frame[1] = 0x8F;
  stream = kLossless.Encode(frame, format, {}).stream;
  EXPECT_FALSE(ReadJpeg2000Header(stream).isSigned);
  EXPECT_EQ(Decoded(stream, format), frame);
}

TEST(Jpeg2000Coder, OpenJpegsProgramDecodesWhatItEncodes) {
  ASSERT_TRUE(test::HasProgram("opj_decompress"));
  const TempFolder folder;
  for (const FrameFormat& format : kFormats) {
    // It writes samples of up to 8 bits as bytes, and no signs above the bits that there are.
    if (format.bitsAllocated == 16 && format.bitsStored <= 8) continue;
    if (format.isSigned && format.bitsStored < format.bitsAllocated) continue;
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    test::WriteBytes(folder.File("in.j2k"), kLossless.Encode(frame, format, {}).stream);
    EXPECT_TRUE(
        test::Run("opj_decompress -i " + folder.File("in.j2k") + " -o " + folder.File("out.rawl")));
    EXPECT_EQ(test::ReadBytes(folder.File("out.rawl")), ByPlane(frame, format))
        << format.bitsStored << " of " << format.bitsAllocated << " bits";
  }
}

TEST(Jpeg2000Coder, GdcmDecodesWhatItEncodes) {
  ASSERT_TRUE(test::HasProgram("gdcmconv"));
  const TempFolder folder;
  for (const FrameFormat& format : kFormats) {
    if (format.samples == 2 || format.samples == 4) continue;
    if (format.bitsStored <= 8 && format.bitsAllocated == 16) continue;
    if (format.bitsStored < 8) continue;
    FrameFormat named = format;
    named.photometric = kLossless.EncodedPhotometric(format, false);
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    test::WriteDicomFile(folder.File("in"), named, kLosslessUid,
                         kLossless.Encode(frame, format, {}).stream);
    EXPECT_TRUE(test::Run("gdcmconv --raw " + folder.File("in") + " " + folder.File("out")));
    std::vector<std::uint8_t> native = test::ReadPixelData(folder.File("out"));
    native.resize(frame.size());
    EXPECT_EQ(native, frame) << format.bitsStored << " of " << format.bitsAllocated << " bits, "
                             << format.columns << " x " << format.rows;
  }
}

TEST(Jpeg2000Coder, DecodesWithoutLossWhatOpenJpegsProgramEncodes) {
  ASSERT_TRUE(test::HasProgram("opj_compress"));
  const TempFolder folder;
  for (const FrameFormat& format : kFormats) {
    // It takes samples of up to 8 bits as bytes, and no single bits.
    if (format.bitsAllocated == 16 && format.bitsStored <= 8) continue;
    if (format.bitsStored == 1) continue;
    for (const test::Pattern pattern : {test::Pattern::kNoise, test::Pattern::kSteps}) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      test::WriteBytes(folder.File("in.rawl"), ByPlane(frame, format));
      for (const char* name : {"out.j2k", "out.jp2"}) {
        ASSERT_TRUE(test::Run("opj_compress -i " + folder.File("in.rawl") + " -o " +
                              folder.File(name) + RawOption(format) + ResolutionOption(format)))
            << name << RawOption(format);
        EXPECT_EQ(Decoded(test::ReadBytes(folder.File(name)), format), frame)
            << name << " " << format.bitsStored << " of " << format.bitsAllocated << " bits";
      }
    }
  }
}

constexpr const char* kWaysToEncode[] = {
    " -I -r 5",
    " -I",
    " -r 20,10,1",
    " -t 16,16",
    " -c [16,16],[8,8],[4,4] -b 4,4",
    " -p RPCL -c [32,32]",
    " -p PCRL -SOP -EPH",
    " -p CPRL -t 20,20 -TP R",
    " -p RLCP -I -t 30,40",
    " -M 63",
    " -M 1",
    " -ROI c=0,U=7",
    " -d 5,3",
    " -d 5,3 -T 2,1 -t 17,13",
    " -PLT -TLM",
    " -mct 0",
};

TEST(Jpeg2000Coder, DecodesAllWaysToEncodeAsOpenJpegsProgramDoes) {
  ASSERT_TRUE(test::HasProgram("opj_compress"));
  ASSERT_TRUE(test::HasProgram("opj_decompress"));
  const TempFolder folder;
  for (const FrameFormat& format :
       {test::MakeFormat(61, 47, 1, 16, 12), test::MakeFormat(61, 47, 3, 8, 8)}) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kGradient);
    test::WriteBytes(folder.File("in.rawl"), ByPlane(frame, format));
    for (const std::string way : kWaysToEncode) {
      if (format.samples == 1 && way == " -mct 0") continue;
      ASSERT_TRUE(test::Run("opj_compress -n 3 -i " + folder.File("in.rawl") + " -o " +
                            folder.File("out.j2k") + RawOption(format) + way))
          << way;
      ASSERT_TRUE(test::Run("opj_decompress -i " + folder.File("out.j2k") + " -o " +
                            folder.File("back.rawl")));
      EXPECT_EQ(ByPlane(Decoded(test::ReadBytes(folder.File("out.j2k")), format), format),
                test::ReadBytes(folder.File("back.rawl")))
          << way;
    }
  }
}

TEST(Jpeg2000Coder, TransformsRedGreenAndBlueAndSaysWhatCameBack) {
  const FrameFormat rgb = test::MakeFormat(20, 10, 3, 8, 8);
  FrameFormat ybr = rgb;
  ybr.photometric = "YBR_FULL";
  EXPECT_EQ(kLossless.EncodedPhotometric(rgb, false), "YBR_RCT");
  EXPECT_EQ(kLossy.EncodedPhotometric(rgb, true), "YBR_ICT");
  EXPECT_EQ(kLossless.EncodedPhotometric(ybr, false), "YBR_FULL");
  EXPECT_EQ(kLossy.EncodedPhotometric(test::MakeFormat(9, 9, 1, 8, 8), true), "MONOCHROME2");
  const std::vector<std::uint8_t> frame = test::MakeFrame(rgb, test::Pattern::kNoise);
  const Stream transformed = kLossless.Encode(frame, rgb, {}).stream;
  const Stream bare = kLossless.Encode(frame, ybr, {}).stream;
  EXPECT_TRUE(ReadJpeg2000Header(transformed).isTransformed);
  EXPECT_FALSE(ReadJpeg2000Header(bare).isTransformed);
  const auto isRgb = [&](Bytes stream, const char* photometric) {
    FrameFormat format = rgb;
    format.photometric = photometric;
    std::vector<std::uint8_t> back(frame.size());
    return kLossless.Decode(stream, format, back).isRgb;
  };
  EXPECT_TRUE(isRgb(transformed, "YBR_FULL"));
  EXPECT_TRUE(isRgb(transformed, "RGB"));
  EXPECT_FALSE(isRgb(bare, "YBR_FULL"));
  EXPECT_TRUE(isRgb(bare, "YBR_RCT"));
  EXPECT_TRUE(isRgb(bare, "YBR_ICT"));
}

TEST(Jpeg2000Coder, TakesSamplesForPatternsWhereSignsDiffer) {
  const FrameFormat plain = test::MakeFormat(2, 1, 1, 16, 12);
  const std::vector<std::uint8_t> frame = {0xFF, 0x0F, 0xFF, 0x07};  // 4095 or -1, and 2047
  const std::vector<std::uint8_t> extended = {0xFF, 0xFF, 0xFF, 0x07};
  const Stream stream = kLossless.Encode(frame, plain, {}).stream;
  EXPECT_EQ(Decoded(stream, test::MakeFormat(2, 1, 1, 16, 12, true)), frame);
  EXPECT_EQ(Decoded(stream, test::MakeFormat(2, 1, 1, 16, 16, true)), extended);
  const FrameFormat withSigns = test::MakeFormat(2, 1, 1, 16, 12, true);
  const Stream signedStream = kLossless.Encode(extended, withSigns, {}).stream;
  EXPECT_EQ(Decoded(signedStream, withSigns), extended);
  EXPECT_EQ(Decoded(signedStream, plain), frame);
}

TEST(Jpeg2000Coder, GivesSingleBitsAByteEach) {
  const FrameFormat format = test::MakeFormat(37, 23, 1, 8, 1);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const Stream stream = kLossless.Encode(frame, format, {}).stream;
  EXPECT_EQ(Decoded(stream, test::MakeFormat(37, 23, 1, 1, 1)), frame);
  EXPECT_THAT(WordsOfDecoding(kEmpty, test::MakeFormat(4, 4, 1, 1, 1)),
              HasSubstr("8 bits, the data set allocates 1"));
}

TEST(Jpeg2000Coder, LossyFramesTakeTheBytesAsked) {
  for (const FrameFormat& format :
       {test::MakeFormat(200, 150, 1, 8, 8), test::MakeFormat(200, 150, 1, 16, 12, true),
        test::MakeFormat(200, 150, 3, 8, 8)}) {
    const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
    for (const std::uint32_t ratio : {5U, 20U}) {
      const EncodedFrame encoded = kLossy.Encode(frame, format, {.jpeg2000Ratio = ratio});
      EXPECT_TRUE(encoded.isLossy);
      const auto bytes = static_cast<double>(frame.size()) / ratio;
      EXPECT_LT(static_cast<double>(encoded.stream.size()), bytes * 1.1);
      EXPECT_GT(static_cast<double>(encoded.stream.size()), bytes * 0.7);
      EXPECT_EQ(WordsOfDecoding(encoded.stream, format), "");
    }
  }
  EXPECT_STREQ(kLossy.LossyMethod(), "ISO_15444_1");
  EXPECT_EQ(kLossless.LossyMethod(), nullptr);
}

TEST(Jpeg2000Coder, LossyFramesAreNearWhatTheyWere) {
  const FrameFormat format = test::MakeFormat(128, 128, 1, 8, 8);
  std::vector<std::uint8_t> frame(format.Size());
  for (std::size_t at = 0; at < frame.size(); ++at) {
    frame[at] = static_cast<std::uint8_t>(at % 128 + at / 128);  // a ramp from 0 to 254
  }
  const std::vector<std::uint8_t> back =
      Decoded(kLossy.Encode(frame, format, {.jpeg2000Ratio = 10}).stream, format);
  for (std::size_t at = 0; at < frame.size(); ++at) EXPECT_NEAR(back[at], frame[at], 3);
}

TEST(Jpeg2000Coder, LosesNothingWhereNothingIsAskedOrAContainerHoldsMoreThanNumbers) {
  const FrameFormat format = test::MakeFormat(64, 64, 1, 16, 12);
  std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  EXPECT_TRUE(kLossy.Encode(frame, format, {}).isLossy);
  const EncodedFrame all = kLossy.Encode(frame, format, {.jpeg2000Ratio = 1});
  EXPECT_FALSE(all.isLossy);
  EXPECT_EQ(Decoded(all.stream, format), frame);
  frame[1] |= 0x10;
  const EncodedFrame more = kLossy.Encode(frame, format, {});
  EXPECT_FALSE(more.isLossy);
  EXPECT_EQ(Decoded(more.stream, format), frame);
}

TEST(Jpeg2000Coder, EncodesTheSmallestFramesWithLossToo) {
  for (const FrameFormat& format : kFormats) {
    for (const test::Pattern pattern : test::kPatterns) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      EXPECT_EQ(
          WordsOfDecoding(kLossy.Encode(frame, format, {.jpeg2000Ratio = 1000}).stream, format),
          "");
    }
  }
}

TEST(Jpeg2000Coder, SaysWhatItDoesNotEncode) {
  FrameFormat palette = test::MakeFormat(4, 4, 1, 8, 8);
  palette.photometric = "PALETTE COLOR";
  const auto words = [](const Jpeg2000Coder& coder, const FrameFormat& format) {
    return test::WordsOf([&] { coder.RequireEncodable(format); });
  };
  EXPECT_EQ(words(kLossless, palette), "");
  EXPECT_THAT(words(kLossy, palette), HasSubstr("palette entries"));
  EXPECT_THAT(words(kLossless, test::MakeFormat(4, 4, 1, 32, 32)), HasSubstr("32 bits allocated"));
  EXPECT_THAT(words(kLossless, test::MakeFormat(4, 4, 1, 1, 1)), HasSubstr("1 bits allocated"));
  EXPECT_THAT(words(kHighThroughput, test::MakeFormat(4, 4, 1, 8, 8)), HasSubstr("only decoded"));
}

TEST(Jpeg2000Coder, PassesOverWhatDoesNoHarm) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const std::vector<std::uint8_t> half(16, 128);
  EXPECT_EQ(Decoded(WithSegment({0xFF, 0x64, 0, 6, 0, 1, 'a', 'b'}), format), half);
  for (const std::size_t count : {1U, 2U, 1000U}) {
    Stream padded = kEmpty;
    padded.resize(padded.size() + count);
    EXPECT_EQ(Decoded(padded, format), half);
  }
  Stream withoutEnd(kEmpty.begin(), kEmpty.end() - 2);
  EXPECT_EQ(Decoded(withoutEnd, format), half);
  withoutEnd.push_back(0);
  EXPECT_EQ(Decoded(withoutEnd, format), half);
  EXPECT_EQ(Decoded(Changed(kTilePartAt + 6, {0, 0, 0, 0}), format), half) << "to the end marker";
}

struct Refusal {
  Stream stream;
  const char* words;
};

TEST(Jpeg2000Coder, RefusesHeadersOfOtherImagesAndNonsense) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const Refusal refusals[] = {
      {{}, "does not begin as JPEG 2000 does"},
      {{0xFF, 0x4F, 0xFF, 0x51}, "ends early"},
      {Changed(1, {0xD8}), "does not begin as JPEG 2000 does"},
      {Changed(3, {0x52}), "does not begin as JPEG 2000 does"},
      {Changed(4, {0, 1}), "marker segment of 1 bytes"},
      {Changed(4, {255, 255}), "ends early"},
      {Changed(4, {0, 44}), "size segment of 42 bytes for 1 components"},
      {Changed(kImageAt, {0, 0, 0, 5}), "5 x 4 pixels, the data set 4 x 4"},
      {Changed(kImageAt + 4, {0, 0, 0, 99}), "4 x 99 pixels"},
      {Changed(kImageAt, {0xFF, 0xFF, 0xFF, 0xFF}), "pixels from 0 to 4294967295"},
      {Changed(kImageAt, {0, 0, 0, 0}), "pixels from 0 to 0"},
      {Changed(kImageAt + 8, {0, 0, 0, 4}), "pixels from 4 to 4"},
      {Changed(kImageAt + 8, {0x80, 0, 0, 0}), "pixels from 2147483648 to 4"},
      {Changed(kTileAt, {0, 0, 0, 0}), "tiles of 0"},
      {Changed(kTileAt, {0, 0, 0, 1, 0, 0, 0, 1}), "cannot hold 16 tiles"},
      {Changed(kTileAt + 8, {0, 0, 0, 1}), "tiles of 256 from 1 on, and pixels from 0 on"},
      {Changed(kComponentsAt, {0, 0}), "0 components"},
      {Changed(kComponentsAt, {0, 3}), "size segment of 39 bytes for 3 components"},
      {Changed(kComponentsAt, {0x40, 0}), "16384 components"},
      {Changed(kComponentsAt + 2, {8}), "samples of 9 bits, the data set allocates 8"},
      {Changed(kComponentsAt + 2, {0x7F}), "samples of 128 bits"},
      {Changed(kComponentsAt + 3, {2}), "fewer samples"},
      {Changed(kComponentsAt + 4, {0}), "fewer samples"},
      {Changed(kStyleAt + 1, {5}), "progression order 5"},
      {Changed(kStyleAt + 2, {0, 0}), "no layers"},
      {Changed(kStyleAt + 2, {0xFF, 0xFF}), "cannot hold 65535 packets"},
      {Changed(kStyleAt + 4, {2}), "component transform 2"},
      {Changed(kStyleAt + 5, {33}), "33 levels"},
      {Changed(kStyleAt + 6, {9}), "exponents 11 and 6"},
      {Changed(kStyleAt + 6, {8, 1}), "exponents 10 and 3"},
      {Changed(kStyleAt + 9, {2}), "wavelet transform 2"},
      {Changed(kStyleAt, {1}), "wrong size"},
      {Changed(kStyleAt - 3, {0x64}), "no coding style"},
      {Changed(kTilePartAt + 4, {0, 1}), "tile 1 of 1"},
      {Changed(kTilePartAt + 6, {0, 0, 0, 200}), "ends early"},
      {Changed(kTilePartAt + 6, {0, 0, 0, 13}), "tile part of 13 bytes"},
      {Changed(kTilePartAt + 10, {1}), "tile 0 does not begin"},
      {WithSegment({0xFF, 0x60, 0, 3, 0}), "apart from their packets"},
      {WithSegment({0xFF, 0x53, 0, 9, 1, 0, 0, 4, 4, 0, 1}), "component 1 of 1"},
      {WithSegment({0xFF, 0x51, 0, 2}), "second size segment"},
      {WithSegment({0}), "begins no marker"},
  };
  for (const Refusal& refusal : refusals) {
    EXPECT_THAT(WordsOfDecoding(refusal.stream, format), HasSubstr(refusal.words));
  }
  Stream behind = kEmpty;
  behind.insert(behind.end() - 2, {0xFF, 0x52});
  EXPECT_THAT(WordsOfDecoding(behind, format), HasSubstr("marker FF52 behind a tile part"));
  EXPECT_THAT(WordsOfDecoding(kEmpty, test::MakeFormat(4, 4, 3, 8, 8)),
              HasSubstr("1 components, the data set 3 samples"));
  EXPECT_THAT(WordsOfDecoding(kEmpty, test::MakeFormat(4, 4, 1, 32, 32)),
              HasSubstr("32 bits allocated"));
}

/// The empty stream with other bytes for its packet.
Stream WithPacket(const Stream& from, std::initializer_list<std::uint8_t> packet) {
  Stream stream = from;
  stream.resize(stream.size() - 3);
  stream.insert(stream.end(), packet);
  stream.insert(stream.end(), {0xFF, 0xD9});
  StoreBig32(&stream[kTilePartAt + 6], static_cast<std::uint32_t>(14 + packet.size()));
  return stream;
}

TEST(Jpeg2000Coder, RefusesPacketsThatSayWhatCannotBe) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  constexpr std::size_t kGuardBitsAt = kStyleAt + 14;
  Stream deep = kEmpty;  // 31 and 7 - 1 bit planes
  deep[kGuardBitsAt] = 0xE0;
  deep[kGuardBitsAt + 1] = 0xF8;
  const Refusal refusals[] = {
      {WithPacket(kEmpty, {0xC0}), "ends within a packet"},
      {WithPacket(kEmpty, {0xFF}), "ends within a packet"},
      // There is something, the block is in it, and nine planes are missing of nine: none, with a pass and no bytes.
      {WithPacket(kEmpty, {0b11000000, 0b00010000, 0}), ""},
      {WithPacket(kEmpty, {0b11000000, 0b00001000, 0}), "fewer than no bit planes"},
      {WithPacket(deep, {0b11100000}), "37 bit planes"},
      // 164 passes.
      {WithPacket(kEmpty, {0b11111111, 0b01111111, 0b11110000}), "164 passes"},
      // One pass whose length has 3 bits and one for each of 30 more.
      {WithPacket(kEmpty, {0b11101111, 0b11111111, 0b01111111, 0b11111111, 0b01111111, 0xFF, 0}),
       "a length of more than 32 bits"},
      // One pass of seven bytes, of which there are two.
      {WithPacket(kEmpty, {0b11100111, 1, 2}), "ends within a packet"},
      // The packet is whole, and there is no other: more bytes tell nothing.
      {WithPacket(kEmpty, {0, 1, 2, 3}), ""},
      {Changed(kStyleAt, {2}), "marker FF91 of a packet is not there"},
      {Changed(kStyleAt, {4}), "marker FF92 of a packet is not there"},
      {Changed(kStyleAt, {8}), "coding style 8"},
  };
  for (const Refusal& refusal : refusals) {
    const std::string words = WordsOfDecoding(refusal.stream, format);
    EXPECT_THAT(words, HasSubstr(refusal.words));
    EXPECT_EQ(words.empty(), *refusal.words == '\0') << words;
  }
  // Without a byte a packet is left out, but not where markers are announced for it.
  Stream none = WithPacket(kEmpty, {});
  EXPECT_EQ(WordsOfDecoding(none, format), "");
  none[kStyleAt] = 4;
  EXPECT_THAT(WordsOfDecoding(none, format), HasSubstr("packets of the code stream are not there"));
}

TEST(Jpeg2000Coder, RefusesPartsOfTilesThatAreAnnouncedAndNotThere) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  constexpr std::size_t kPartsAt = kTilePartAt + 11;
  EXPECT_THAT(WordsOfDecoding(Changed(kPartsAt, {2}), format),
              HasSubstr("tile 0 has 1 of its 2 parts"));
  EXPECT_EQ(WordsOfDecoding(Changed(kPartsAt, {0}), format), "");
  const auto withSecond = [](std::uint8_t part, std::uint8_t announced) {
    Stream stream = kEmpty;
    const Stream second = {0xFF, 0x90, 0, 10, 0, 0, 0, 0, 0, 14, part, announced, 0xFF, 0x93};
    stream.insert(stream.end() - 2, second.begin(), second.end());
    return stream;
  };
  EXPECT_EQ(WordsOfDecoding(withSecond(1, 2), format), "");
  EXPECT_EQ(WordsOfDecoding(withSecond(1, 1), format), "") << "one less than there are";
  EXPECT_THAT(WordsOfDecoding(withSecond(1, 3), format), HasSubstr("tile 0 has 2 of its 3 parts"));
  EXPECT_THAT(WordsOfDecoding(withSecond(2, 3), format),
              HasSubstr("part 2 of tile 0 comes where part 1"));
  EXPECT_THAT(WordsOfDecoding(withSecond(0, 2), format), HasSubstr("tile 0 begins twice"));
}

TEST(Jpeg2000Coder, RefusesMarkersInPlacesOfOthers) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  EXPECT_THAT(WordsOfDecoding(WithSegment({0xFF, 0x58, 0, 3, 0}), format),
              HasSubstr("marker FF58 in a header"));
  EXPECT_THAT(WordsOfDecoding(WithSegment({0xFF, 0x91, 0, 4, 0, 0}), format),
              HasSubstr("marker FF91 in a header"));
  EXPECT_THAT(WordsOfDecoding(WithSegment({0xFF, 0x93, 0, 4, 0, 0}), format),
              HasSubstr("marker FF93 in a header"));
  Stream inTile = kEmpty;
  inTile.insert(inTile.end() - 5, {0xFF, 0x55, 0, 4, 0, 0});
  StoreBig32(&inTile[kTilePartAt + 6], 15 + 6);
  EXPECT_THAT(WordsOfDecoding(inTile, format), HasSubstr("marker FF55 in a header"));
  inTile[inTile.size() - 10] = 0x64;
  EXPECT_EQ(WordsOfDecoding(inTile, format), "");
}

TEST(Jpeg2000Coder, AComponentTransformOfOneComponentIsNone) {
  EXPECT_EQ(Decoded(Changed(kStyleAt + 4, {1}), test::MakeFormat(4, 4, 1, 8, 8)),
            std::vector<std::uint8_t>(16, 128));
}

TEST(Jpeg2000Coder, RefusesBoxesWithoutACodeStreamAndPalettes) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  const Stream signature = {0, 0, 0, 12, 'j', 'P', ' ', ' ', 13, 10, 0x87, 10};
  const auto with = [&](std::initializer_list<std::uint8_t> boxes) {
    Stream stream = signature;
    stream.insert(stream.end(), boxes);
    stream.insert(stream.end(), kEmpty.begin(), kEmpty.end());
    return stream;
  };
  EXPECT_EQ(WordsOfDecoding(with({0, 0, 0, 0, 'j', 'p', '2', 'c'}), format), "");
  EXPECT_EQ(
      WordsOfDecoding(with({0, 0, 0, 1, 'j', 'p', '2', 'c', 0, 0, 0, 0, 0, 0, 0, 99}), format), "");
  EXPECT_THAT(WordsOfDecoding(signature, format), HasSubstr("ends before its code stream"));
  EXPECT_THAT(WordsOfDecoding(with({0, 0, 0, 7, 'j', 'p', '2', 'h'}), format),
              HasSubstr("a box of 7 bytes"));
  EXPECT_THAT(WordsOfDecoding(with({0, 0, 1, 0, 'j', 'p', '2', 'h'}), format),
              HasSubstr("ends before its code stream"));
  EXPECT_THAT(WordsOfDecoding(with({0,   0,   0,   16,  'j', 'p', '2', 'h', 0,   0,   0,   8,
                                    'p', 'c', 'l', 'r', 0,   0,   0,   0,   'j', 'p', '2', 'c'}),
                              format),
              HasSubstr("a palette"));
}

TEST(Jpeg2000Coder, RefusesEveryCutStream) {
  for (const FrameFormat& format :
       {test::MakeFormat(25, 20, 1, 16, 12), test::MakeFormat(15, 10, 3, 8, 8)}) {
    for (const test::Pattern pattern : {test::Pattern::kNoise, test::Pattern::kSteps}) {
      const std::vector<std::uint8_t> frame = test::MakeFrame(format, pattern);
      const Stream stream = kLossless.Encode(frame, format, {}).stream;
      for (std::size_t size = 0; size + 2 < stream.size(); ++size) {
        // In a block of its own, so that the sanitizers see what is read behind it.
        Stream cut(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_NE(WordsOfDecoding(cut, format), "") << size;
        cut.insert(cut.end(), {0xFF, 0xD9});
        EXPECT_NE(WordsOfDecoding(cut, format), "") << size << " and an end marker";
      }
    }
  }
}

TEST(Jpeg2000Coder, RefusesATileThatIsNotThereAndPacketsThatAreNot) {
  const FrameFormat format = test::MakeFormat(40, 30, 1, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const Stream stream = kLossless.Encode(frame, format, {}).stream;
  // A tile that is shorter than its packets, while its length says so and an end marker follows.
  constexpr std::uint8_t kStart[] = {0xFF, 0x90, 0, 10};
  const auto part = static_cast<std::size_t>(
      std::search(stream.begin(), stream.end(), std::begin(kStart), std::end(kStart)) -
      stream.begin());
  const std::uint32_t length = LoadBig32(&stream[part + 6]);
  int accepted = 0;
  for (std::uint32_t less = 1; less < length - 14; ++less) {
    Stream shorter = stream;
    shorter.resize(shorter.size() - 2 - less);
    StoreBig32(&shorter[part + 6], length - less);
    shorter.insert(shorter.end(), {0xFF, 0xD9});
    accepted += WordsOfDecoding(shorter, format).empty() ? 1 : 0;
  }
  // At the ends of packets the rest is a code stream of its own, or looks like one with empty packets.
  EXPECT_LT(accepted, static_cast<int>(length / 50));
  Stream two = kEmpty;
  two.insert(two.begin() + kTilePartAt,
             {0xFF, 0x64, 0, 6, 0, 1, 'a', 'b', 0xFF, 0x64, 0, 6, 0, 1, 'a', 'b'});
  StoreBig32(&two[kTileAt], 2);
  EXPECT_THAT(WordsOfDecoding(two, test::MakeFormat(4, 4, 1, 8, 8)),
              HasSubstr("does not have all of its tiles"));
}

TEST(Jpeg2000Coder, OutlivesEveryChangeOfOneByte) {
  const FrameFormat format = test::MakeFormat(7, 5, 3, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kSteps);
  for (const Jpeg2000Coder* coder : {&kLossless, &kLossy}) {
    Stream stream = coder->Encode(frame, format, {.jpeg2000Ratio = 2}).stream;
    for (std::size_t at = 0; at < stream.size(); ++at) {
      const std::uint8_t before = stream[at];
      // Under a sanitizer to a sixth of these, other ones for each byte.
      constexpr unsigned kStep = 5 * tessaret::test::StepBy(6u);
      for (unsigned value = 5 * static_cast<unsigned>(at) % kStep; value < 256; value += kStep) {
        stream[at] = static_cast<std::uint8_t>(value);
        WordsOfDecoding(stream, format);
      }
      stream[at] = before;
    }
  }
}

TEST(Jpeg2000Coder, WithoutMemoryItFailsAndLeavesNothingBehind) {
  using tessaret::test::AllocationWatch;
  const FrameFormat format = test::MakeFormat(20, 15, 3, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  const Stream stream = kLossless.Encode(frame, format, {}).stream;
  std::vector<std::uint8_t> back(frame.size());
  const auto tries = tessaret::test::FailEveryAllocation([&] {
    const AllocationWatch watch;
    try {
      kLossless.Decode(stream, format, back);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(watch.Outstanding(), 0);
  });
  EXPECT_GT(tries, 1U);
  const auto encodings = tessaret::test::FailEveryAllocation([&] {
    const AllocationWatch watch;
    try {
      EXPECT_EQ(kLossless.Encode(frame, format, {}).stream, stream);
    } catch (const std::bad_alloc&) {
    }
    EXPECT_EQ(watch.Outstanding(), 0);
  });
  EXPECT_GT(encodings, 2U);
}

TEST(Jpeg2000Coder, SaysWhetherTheStreamMayHaveLostSomething) {
  const FrameFormat format = test::MakeFormat(20, 15, 1, 8, 8);
  const std::vector<std::uint8_t> frame = test::MakeFrame(format, test::Pattern::kNoise);
  std::vector<std::uint8_t> back(frame.size());
  const Stream all = kLossless.Encode(frame, format, {}).stream;
  const Stream less = kLossy.Encode(frame, format, {}).stream;
  EXPECT_FALSE(kLossless.Decode(all, format, back).isLossy);
  EXPECT_TRUE(kLossy.Decode(all, format, back).isLossy);
  EXPECT_TRUE(kLossless.Decode(less, format, back).isLossy);
  EXPECT_TRUE(kHighThroughput.Decode(less, format, back).isLossy);
}

/// A header for `side` x `side` pixels and its tile part, with `packets` bytes of empty packets.
Stream Hostile(std::uint32_t side, std::size_t packets) {
  Stream stream = kEmpty;
  StoreBig32(&stream[kImageAt], side);
  StoreBig32(&stream[kImageAt + 4], side);
  StoreBig32(&stream[kTileAt], side);
  StoreBig32(&stream[kTileAt + 4], side);
  StoreBig32(&stream[kTilePartAt + 6], static_cast<std::uint32_t>(14 + packets));
  stream.insert(stream.end() - 2, packets - 1, 0);
  return stream;
}

TEST(Jpeg2000Coder, RefusesLargeFramesOfNextToNoBytes) {
  const FrameFormat format = test::MakeFormat(40000, 40000, 1, 8, 8);
  const Stream stream = Hostile(40000, 1);
  EXPECT_THAT(test::WordsOf([&] { kLossless.Decode(stream, format, {}); }),
              HasSubstr("cannot hold a frame of 1600000000"));
}

TEST(Jpeg2000Coder, TakesSixtyFourCodingStylesHoweverOftenTheyCome) {
  const FrameFormat format = test::MakeFormat(4, 4, 1, 8, 8);
  Stream stream = kEmpty;
  // With the one of kEmpty's own, which has precincts of 15 and 15, these are 64; each comes twice.
  const auto add = [&stream](std::uint8_t precinct) {
    const std::uint8_t segment[] = {0xFF, 0x53, 0, 10, 0, 1, 0, 4, 4, 0, 1, precinct};
    stream.insert(stream.begin() + kTilePartAt, std::begin(segment), std::end(segment));
  };
  for (std::uint32_t precinct = 63; precinct > 0; --precinct) {
    add(static_cast<std::uint8_t>(0x44 + precinct));
    add(static_cast<std::uint8_t>(0x44 + precinct));
  }
  EXPECT_EQ(WordsOfDecoding(stream, format).find("coding styles"), std::string::npos);
  add(0x44);
  EXPECT_THAT(WordsOfDecoding(stream, format), HasSubstr("more than 64 coding styles"));
}

TEST(Jpeg2000Coder, HostileHeadersTakeNeitherMemoryNorTime) {
  if (!tessaret::test::kAsShipped) GTEST_SKIP() << "measures what is shipped";
  constexpr std::uint32_t kSide = 4000;
  const FrameFormat format = test::MakeFormat(kSide, kSide, 1, 8, 8);
  std::vector<Refusal> cases;
  cases.push_back({Hostile(kSide, 1 << 20), "16000000 tiles"});
  Stream* stream = &cases.back().stream;
  StoreBig32(&(*stream)[kTileAt], 1);
  StoreBig32(&(*stream)[kTileAt + 4], 1);
  // Tall precincts at one resolution and wide ones at the other, in the order of positions.
  cases.push_back({Hostile(kSide, 1 << 14), "packets at 8008002 positions"});
  stream = &cases.back().stream;
  (*stream)[kStyleAt] = 1;
  (*stream)[kStyleAt + 1] = 3;
  (*stream)[kStyleAt + 5] = 1;
  (*stream)[kStyleAt - 1] = 14;
  stream->insert(stream->begin() + kStyleAt + 10, {0xF0, 0x1F});
  // As many layers as there may be, all of them empty.
  cases.push_back({Hostile(kSide, 1 << 20), ""});
  stream = &cases.back().stream;
  StoreBig16(&(*stream)[kStyleAt + 2], 65535);
  // Precincts of 256 pixels: there are 250 x 250.
  cases.push_back({Hostile(kSide, 1 << 17), ""});
  stream = &cases.back().stream;
  (*stream)[kStyleAt] = 1;
  (*stream)[kStyleAt - 1] = 13;
  stream->insert(stream->begin() + kStyleAt + 10, {0x44});
  cases.push_back({Hostile(kSide, 1 << 15), "cannot hold 62500 packets"});
  stream = &cases.back().stream;
  (*stream)[kStyleAt] = 1;
  (*stream)[kStyleAt - 1] = 13;
  stream->insert(stream->begin() + kStyleAt + 10, {0x44});
  // Precincts of 32 pixels, half a million of them, all of which come in the first of 32 progressions by position.
  cases.push_back({Hostile(kSide, 1 << 19), ""});
  stream = &cases.back().stream;
  Stream changes = {0xFF, 0x5F, 0, 2 + 32 * 7};
  for (int part = 0; part < 32; ++part) changes.insert(changes.end(), {0, 0, 0, 1, 1, 1, 4});
  stream->insert(stream->begin() + kTilePartAt, changes.begin(), changes.end());
  (*stream)[kStyleAt] = 1;
  (*stream)[kStyleAt - 1] = 13;
  stream->insert(stream->begin() + kStyleAt + 10, {0x32});
  // Code blocks of 4 x 4: a thousand times a thousand of them, in one empty packet.
  cases.push_back({Hostile(kSide, 1), "cannot hold 1000000 code blocks in 1 layers"});
  stream = &cases.back().stream;
  (*stream)[kStyleAt + 6] = 0;
  (*stream)[kStyleAt + 7] = 0;
  // A quarter of these in 900 layers, where each packet takes a bit to say that none of them is there: 2 to the 26th looks and more.
  cases.push_back({Hostile(kSide, 1 << 10), "cannot hold 250000 code blocks in 900 layers"});
  stream = &cases.back().stream;
  (*stream)[kStyleAt + 6] = 1;
  (*stream)[kStyleAt + 7] = 1;
  StoreBig16(&(*stream)[kStyleAt + 2], 900);
  for (const Refusal& hostile : cases) {
    const auto measured = tessaret::test::RunMeasured([&] {
      std::vector<std::uint8_t> frame(format.Size());
      const std::string words =
          test::WordsOf([&] { kLossless.Decode(hostile.stream, format, frame); });
      return words.find(hostile.words) != std::string::npos ? 0 : 1;
    });
    EXPECT_EQ(measured.result, 0) << hostile.words;
    EXPECT_LT(measured.seconds, 1.0) << hostile.words;
    // The frame and its samples of 32 bits, in and out of the library.
    EXPECT_LT(measured.peakGrowth,
              (std::uint64_t{64} << 20) + 9 * format.Size() + 64 * hostile.stream.size())
        << hostile.words;
  }
}

TEST(Jpeg2000Coder, BoundsLooksAtCodeBlocksOfAllTilesTogether) {
  if (!tessaret::test::kAsShipped) GTEST_SKIP() << "looks at code blocks 75 million times";
  // Each of two tiles has 32 x 32 blocks of 4 x 4, and a packet of one byte for each of 65535 layers, which says that none of them is there:
  // 2 to the 26th looks, less a thousand, in either.
  constexpr std::uint32_t kSide = 128;
  constexpr std::size_t kLayers = 65535;
  Stream stream = kEmpty;
  StoreBig32(&stream[kImageAt], 2 * kSide);
  StoreBig32(&stream[kImageAt + 4], kSide);
  StoreBig32(&stream[kTileAt], kSide);
  StoreBig32(&stream[kTileAt + 4], kSide);
  StoreBig16(&stream[kStyleAt + 2], kLayers);
  stream[kStyleAt + 6] = 0;
  stream[kStyleAt + 7] = 0;
  StoreBig32(&stream[kTilePartAt + 6], static_cast<std::uint32_t>(14 + kLayers));
  stream.resize(stream.size() - 3);
  stream.insert(stream.end(), kLayers, 0x80);
  Stream second(stream.begin() + kTilePartAt, stream.end());
  second[5] = 1;
  stream.insert(stream.end(), second.begin(), second.end());
  stream.insert(stream.end(), {0xFF, 0xD9});
  EXPECT_THAT(WordsOfDecoding(stream, test::MakeFormat(2 * kSide, kSide, 1, 8, 8)),
              HasSubstr("too few bytes for the code blocks"));
}

}  // namespace
}  // namespace tessaret::codecs
