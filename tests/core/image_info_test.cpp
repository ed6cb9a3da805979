#include "core/image_info.h"

#include <string>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::NewShort;

constexpr TagKey kFramesTag = MakeTagKey(0x0028, 0x0008);
constexpr TagKey kRowsTag = MakeTagKey(0x0028, 0x0010);

/// 16-bit colour of 5 columns and 3 rows.
std::unique_ptr<DICOMObject> Colour(std::uint16_t planar) {
  return std::unique_ptr<DICOMObject>(
      test::NewObject({NewShort(0x0002, 3), NewShort(0x0006, planar), NewShort(0x0010, 3),
                       NewShort(0x0011, 5), NewShort(0x0100, 16), NewShort(0x0101, 12)}));
}

ImageInfo InfoOf(const DICOMObject& object) {
  ImageInfo info;
  EXPECT_EQ(ReadImageInfo(object, info), "");
  return info;
}

std::string WordsAbout(const DICOMObject& object) {
  ImageInfo info;
  return ReadImageInfo(object, info);
}

/// What is made of this text as the number of frames, or the words against it.
std::string FramesOf(std::string_view text) {
  const auto object = Colour(0);
  object->Push(test::NewText(kFramesTag, text, type_code::IS));
  ImageInfo info;
  const std::string words = ReadImageInfo(*object, info);
  return words.empty() ? std::to_string(info.Frames) : words;
}

/// Not to be inlined: the compiler then takes the appending of short texts for writes out of bounds.
[[gnu::noinline]] std::string Repeated(std::size_t count, char c) { return std::string(count, c); }

TEST(ImageInfo, OfInterleavedSamples) {
  const ImageInfo info = InfoOf(*Colour(0));
  EXPECT_EQ(info.BytesPerSample, 2u);
  EXPECT_EQ(info.Samples, 3u);
  EXPECT_EQ(info.Columns, 5u);
  EXPECT_EQ(info.Rows, 3u);
  EXPECT_EQ(info.PixelStride, 6u);
  EXPECT_EQ(info.LineStride, 30u);
  EXPECT_EQ(info.FrameSize, 90u);
  EXPECT_EQ(info.PlaneSize, 1u);
  EXPECT_EQ(info.Frames, 1u);
  EXPECT_EQ(info.BitsStored, 12u);
  EXPECT_STREQ(info.Photometric, "");
}

TEST(ImageInfo, OfSamplesInPlanes) {
  const ImageInfo info = InfoOf(*Colour(2));
  EXPECT_EQ(info.PixelStride, 2u);
  EXPECT_EQ(info.LineStride, 10u);
  EXPECT_EQ(info.FrameSize, 90u);
  EXPECT_EQ(info.PlaneSize, 30u);
}

TEST(ImageInfo, OfAnEmptyObjectIsZeroWithOneFrame) {
  const ImageInfo info = InfoOf(DICOMObject());
  EXPECT_EQ(info.FrameSize, 0u);
  EXPECT_EQ(info.Frames, 1u);
  EXPECT_EQ(info.PlaneSize, 1u);
  EXPECT_EQ(NativeSize(info), 0u);
}

TEST(ImageInfo, BytesPerSampleAreTheWholeBytesPlusTheBitsLeft) {
  const std::pair<std::uint16_t, std::uint32_t> rows[] = {
      {1, 1}, {8, 1}, {12, 5}, {16, 2}, {24, 3}, {32, 4}, {7, 7}, {0, 0}, {65535, 8198}};
  for (const auto& [bits, bytes] : rows) {
    const auto object = Colour(0);
    object->Push(NewShort(0x0100, bits));
    EXPECT_EQ(InfoOf(*object).BytesPerSample, bytes) << bits;
  }
}

TEST(ImageInfo, ANumberOfAnyLengthButTwoCountsAsZero) {
  for (const Bytes& value : {Bytes{}, Bytes{2}, Bytes{2, 0, 0, 0}}) {
    const auto object = Colour(0);
    object->Push(test::NewVR(kRowsTag, value, type_code::UL));
    EXPECT_EQ(InfoOf(*object).Rows, 0u);
    EXPECT_EQ(InfoOf(*object).FrameSize, 0u);
  }
}

TEST(ImageInfo, ANumberIsTakenFromTypesThatMayHoldOne) {
  for (const VrCode type : {type_code::kNone, type_code::US, type_code::SS, type_code::UN,
                            type_code::OB, type_code::OW}) {
    const auto object = Colour(0);
    object->Push(test::NewVR(kRowsTag, Bytes{0x34, 0x12}, type));
    EXPECT_EQ(InfoOf(*object).Rows, 0x1234u) << type;
  }
}

TEST(ImageInfo, TextAndNegativeNumbersAreRefused) {
  for (const VrCode type : {type_code::IS, type_code::LO, type_code::DS, type_code::AT}) {
    const auto object = Colour(0);
    object->Push(test::NewVR(kRowsTag, Bytes{'1', '2'}, type));
    EXPECT_EQ(WordsAbout(*object), "Element (0028,0010) is not a number of 16 bits");
  }
  for (const std::uint16_t element :
       {std::uint16_t{0x0002}, std::uint16_t{0x0006}, std::uint16_t{0x0011}, std::uint16_t{0x0100},
        std::uint16_t{0x0101}}) {
    const auto object = Colour(0);
    object->Push(test::NewVR(MakeTagKey(0x0028, element), Bytes{0xFF, 0xFF}, type_code::SS));
    EXPECT_NE(WordsAbout(*object), "") << element;
    object->Push(test::NewVR(MakeTagKey(0x0028, element), Bytes{0x00, 0x80}, type_code::SS));
    EXPECT_NE(WordsAbout(*object), "") << element << ", the lowest number";
  }
  const auto sequence = Colour(0);
  sequence->Push(test::NewSequence(kRowsTag, {test::NewObject({})}));
  EXPECT_EQ(InfoOf(*sequence).Rows, 0u) << "no value is none";
}

TEST(ImageInfo, FramesAreADecimalNumberOfAtMost31Characters) {
  EXPECT_EQ(FramesOf("12"), "12");
  EXPECT_EQ(FramesOf(" +7 "), "7");
  EXPECT_EQ(FramesOf("0"), "0");
  EXPECT_EQ(FramesOf("4294967295"), "4294967295");
  EXPECT_EQ(FramesOf(Repeated(30, '0') + "5"), "5");
  EXPECT_EQ(FramesOf(Repeated(29, '0') + "57junk"), "57") << "only 31 are looked at";
  EXPECT_EQ(FramesOf(std::string_view("3\0\0", 3)), "3");
}

TEST(ImageInfo, FramesWithoutAValueAreOne) {
  EXPECT_EQ(FramesOf(""), "1");
  EXPECT_EQ(FramesOf("  "), "1");
  EXPECT_EQ(FramesOf(std::string_view("\0\0", 2)), "1");
}

TEST(ImageInfo, FramesThatAreNoNumberAreRefused) {
  for (const std::string_view text : {"-1", "x", "3.5", "3\\4", "1 2", "+", "++1", "0x10", "1e3",
                                      "4294967296", "99999999999999999999"}) {
    EXPECT_EQ(FramesOf(text), "Element (0028,0008) is not a number of frames") << text;
  }
}

TEST(ImageInfo, PhotometricIsTrimmedAndCutToItsPlace) {
  const auto of = [](std::string_view text) {
    const auto object = Colour(0);
    object->Push(test::NewText(test::kPhotometricTag, text, type_code::CS));
    return std::string(InfoOf(*object).Photometric);
  };
  EXPECT_EQ(of(" RGB "), "RGB");
  EXPECT_EQ(of(std::string_view("YBR\0", 4)), "YBR");
  EXPECT_EQ(of(std::string_view("A\0B", 3)), "A");
  EXPECT_EQ(of(std::string_view("RGB \0B", 6)), "RGB") << "what is before the NUL is trimmed";
  EXPECT_EQ(of(std::string_view("\0RGB", 4)), "");
  EXPECT_EQ(of(Repeated(63, 'a')), Repeated(63, 'a'));
  EXPECT_EQ(of(Repeated(200, 'a')), Repeated(63, 'a'));
  EXPECT_EQ(of(""), "");
}

TEST(ImageInfo, SizesBeyond32BitsAreRefused) {
  const auto of = [](std::uint16_t rows, std::uint16_t columns, std::uint16_t samples,
                     std::uint16_t bits, std::uint16_t planar) {
    const auto object = Colour(planar);
    object->Push(NewShort(0x0010, rows));
    object->Push(NewShort(0x0011, columns));
    object->Push(NewShort(0x0002, samples));
    object->Push(NewShort(0x0100, bits));
    return WordsAbout(*object);
  };
  EXPECT_EQ(of(65535, 65535, 1, 8, 0), "");
  EXPECT_EQ(of(65535, 65535, 1, 8, 1), "");
  EXPECT_EQ(of(65535, 65535, 2, 8, 0),
            "A frame of 65535 x 65535 pixels with 2 samples of 1 bytes is too large");
  EXPECT_NE(of(65535, 65535, 2, 8, 1), "");
  EXPECT_NE(of(1, 65535, 65535, 16, 0), "") << "a line";
  EXPECT_NE(of(65535, 65535, 1, 16, 1), "") << "a plane";
  EXPECT_NE(of(65535, 65535, 65535, 65535, 0), "");
  EXPECT_EQ(of(32768, 32768, 4, 8, 0).empty(), false) << "exactly 2^32";
  EXPECT_EQ(of(32768, 32767, 4, 8, 0), "");
}

}  // namespace
}  // namespace tessaret
