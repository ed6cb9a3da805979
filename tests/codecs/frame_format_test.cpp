#include "frame_format.h"

#include <gtest/gtest.h>

#include "codecs/frame_maker.h"
#include "core/image_info.h"
#include "core/object_maker.h"
#include "plausible_size.h"

namespace tessaret::codecs {
namespace {

using ::tessaret::test::NewObject;
using ::tessaret::test::NewVR;

VR* Number(std::uint16_t element, std::uint32_t value) {
  return NewVR(MakeTagKey(0x0028, element),
               {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)},
               type_code::US);
}

/// 3 rows of 5 columns.
std::unique_ptr<DICOMObject> Image(std::uint32_t samples, std::uint32_t allocated,
                                   std::uint32_t stored, std::uint32_t high) {
  return std::unique_ptr<DICOMObject>(
      NewObject({Number(0x0002, samples), Number(0x0010, 3), Number(0x0011, 5),
                 Number(0x0100, allocated), Number(0x0101, stored), Number(0x0102, high)}));
}

FrameFormat FormatOf(const DICOMObject& object) {
  ImageInfo info;
  if (const std::string words = ReadImageInfo(object, info); !words.empty())
    Fail("%s", words.c_str());
  return ReadFrameFormat(&object, info);
}

std::string Words(std::uint32_t samples, std::uint32_t allocated, std::uint32_t stored,
                  std::uint32_t high) {
  const auto object = Image(samples, allocated, stored, high);
  return test::WordsOf([&] { RequireHighBit(FormatOf(*object)); });
}

TEST(FrameFormat, TellsWhatTheDataSetSays) {
  const auto object = Image(3, 16, 12, 11);
  object->Push(Number(0x0103, 1));
  object->Push(Number(0x0006, 1));
  object->Push(NewVR(MakeTagKey(0x0028, 0x0004), ::tessaret::test::BytesOf("RGB "), type_code::CS));
  const FrameFormat format = FormatOf(*object);
  EXPECT_EQ(format.rows, 3u);
  EXPECT_EQ(format.columns, 5u);
  EXPECT_EQ(format.samples, 3u);
  EXPECT_EQ(format.bitsAllocated, 16u);
  EXPECT_EQ(format.bitsStored, 12u);
  EXPECT_EQ(format.highBit, 11u);
  EXPECT_TRUE(format.isSigned);
  EXPECT_TRUE(format.isPlanar);
  EXPECT_EQ(format.photometric, "RGB");
  EXPECT_EQ(format.Pixels(), 15u);
  EXPECT_EQ(format.Samples(), 45u);
  EXPECT_EQ(format.Size(), 90u);
  EXPECT_EQ(format.RowSize(), 30u);
}

TEST(FrameFormat, WhatIsMissingIsUnsignedAndByPixel) {
  const FrameFormat format = FormatOf(*Image(1, 8, 8, 7));
  EXPECT_FALSE(format.isSigned);
  EXPECT_FALSE(format.isPlanar);
  EXPECT_EQ(format.photometric, "");
}

TEST(FrameFormat, OnlyWholeBytesAndSingleBitsAreAllocated) {
  for (const std::uint32_t allocated : {1u, 8u, 16u, 32u}) {
    EXPECT_EQ(Words(1, allocated, 1, 0), "") << allocated;
  }
  for (const std::uint32_t allocated : {0u, 2u, 7u, 12u, 24u, 52u, 64u, 2048u, 65535u}) {
    EXPECT_NE(Words(1, allocated, 1, 0), "") << allocated;
  }
  EXPECT_EQ(Words(1, 12, 12, 11), "Bits Allocated is 12, which is not 1, 8, 16 or 32");
}

TEST(FrameFormat, BitsStoredAndHighBitLieWithinWhatIsAllocated) {
  EXPECT_EQ(Words(1, 16, 0, 0), "Bits Stored is 0 of 16 allocated");
  EXPECT_EQ(Words(1, 16, 17, 16), "Bits Stored is 17 of 16 allocated");
  EXPECT_EQ(Words(1, 16, 12, 16), "High Bit is 16 where 12 bits of 16 are stored");
  EXPECT_EQ(Words(1, 16, 12, 10), "High Bit is 10 where 12 bits of 16 are stored");
  EXPECT_EQ(Words(1, 16, 12, 15), "");
  EXPECT_EQ(Words(1, 8, 65535, 7), "Bits Stored is 65535 of 8 allocated");
}

TEST(FrameFormat, AWrongHighBitIsLeftToThoseWhoNeedIt) {
  EXPECT_EQ(FormatOf(*Image(1, 16, 12, 16)).highBit, 16u);
  EXPECT_EQ(FormatOf(*Image(1, 16, 12, 0)).highBit, 0u);
}

TEST(FrameFormat, FramesWithoutPixelsAndPixelsOfManySamplesAreRefused) {
  EXPECT_EQ(Words(5, 8, 8, 7), "5 samples per pixel are too many");
  EXPECT_EQ(Words(0, 8, 8, 7), "3 rows of 5 columns with 0 samples hold no pixels");
}

TEST(FrameFormat, PlausibleIsWhatTheBestRatioAllows) {
  EXPECT_EQ(test::WordsOf([] { RequirePlausible(10, 640, 64); }), "");
  EXPECT_EQ(test::WordsOf([] { RequirePlausible(10, 704, 64); }),
            "10 bytes cannot hold 704 samples");
  EXPECT_EQ(test::WordsOf([] { RequirePlausible(0, 1, 1); }), "0 bytes cannot hold 1 samples");
  EXPECT_EQ(test::WordsOf([] { RequirePlausible(1, UINT64_MAX, 8); }),
            "1 bytes cannot hold 18446744073709551615 samples");
}

TEST(FrameFormat, FramesOfMoreThan64MiBNeedAByteFor4096) {
  const auto words = [](std::uint64_t stream, std::uint32_t rows) {
    return test::WordsOf(
        [&] { RequirePlausibleSize(stream, test::MakeFormat(8192, rows, 1, 8, 8)); });
  };
  EXPECT_EQ(words(1, 8192), "");
  // Two for each row more.
  EXPECT_EQ(words(2 * 8193, 8193), "");
  EXPECT_EQ(words(2 * 8193 - 1, 8193), "16385 bytes cannot hold a frame of 67117056");
}

}  // namespace
}  // namespace tessaret::codecs
