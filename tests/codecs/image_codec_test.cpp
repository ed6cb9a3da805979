// The codec library as the engine meets it: whole data sets, their elements, words and threads.
#include <dlfcn.h>

#include <cstring>
#include <thread>

#include <gtest/gtest.h>

#include "codecs/codec_images.h"
#include "rle/rle_coder.h"

namespace tessaret::codecs {
namespace {

using test::MakeFormat;
using test::Octets;
using test::TextAt;

constexpr const char* kLossless[] = {test::kRle, test::kJpegLossless, test::kJpegFirstOrder,
                                     test::kJpegLs, test::kJpeg2000};

std::string Compress(DICOMObject& object, const char* syntax) {
  DcmCompEngine engine(test::Registry());
  return engine.Compress(&object, syntax, nullptr) ? "" : engine.ErrorText;
}

std::string Decompress(DICOMObject& object) {
  DcmCompEngine engine(test::Registry());
  return engine.Decompress(&object, nullptr, nullptr) ? "" : engine.ErrorText;
}

/// Empty where the object can be held.
std::string Refusal(DICOMObject& object, const char* syntax) {
  DcmCompEngine engine(test::Registry());
  return engine.CanCompress(&object, syntax, nullptr) ? "" : engine.ErrorText;
}

/// One frame as RLE has it.
Octets RleFrame(const FrameFormat& format, test::Pattern pattern) {
  return RleCoder().Encode(test::MakeFrame(format, pattern), format, {}).stream;
}

TEST(CodecLibrary, ListsTheSyntaxesItServes) {
  const std::string path = std::string(::tessaret::test::kBinaryDir) + "/lib/DcmCodec.dll";
  void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << ::dlerror();
  const auto count =
      reinterpret_cast<decltype(&DcmGetCodecCount)>(::dlsym(library, "DcmGetCodecCount"));
  const auto props =
      reinterpret_cast<decltype(&DcmGetCodecProps)>(::dlsym(library, "DcmGetCodecProps"));
  const auto get = reinterpret_cast<decltype(&DcmGetCodec)>(::dlsym(library, "DcmGetCodec"));
  const auto release = reinterpret_cast<decltype(&DcmFreeCodec)>(::dlsym(library, "DcmFreeCodec"));
  ASSERT_TRUE(count != nullptr && props != nullptr && get != nullptr && release != nullptr);
  std::vector<std::string> native;
  std::vector<std::string> coded;
  CodecProps each;
  std::uint32_t index = 0;
  for (; props(index, &each) != 0; ++index) {
    const bool isNative = (each.Flags & TESSARET_CODEC_NATIVE) != 0;
    (isNative ? native : coded).emplace_back(each.UID);
    EXPECT_NE(each.Flags & TESSARET_CODEC_CONCURRENT, 0u);
    DcmCodec* codec = get(index);
    EXPECT_NE(codec, nullptr);
    release(codec);
  }
  EXPECT_EQ(index, count());
  EXPECT_EQ(props(index, &each), 0);
  EXPECT_EQ(props(0, nullptr), 0);
  EXPECT_EQ(get(index), nullptr);
  release(nullptr);
  EXPECT_EQ(native,
            std::vector<std::string>({test::kImplicit, test::kExplicit, "1.2.840.10008.1.2.2"}));
  for (const char* syntax : {test::kRle, test::kJpegBaseline, test::kJpegExtended,
                             test::kJpegLossless, test::kJpegFirstOrder, test::kJpegLs,
                             test::kJpegLsNear, test::kJpeg2000, test::kJpeg2000Lossy}) {
    EXPECT_NE(std::find(coded.begin(), coded.end(), syntax), coded.end()) << syntax;
  }
  ::dlclose(library);
}

TEST(CodecLibrary, BringsEveryLosslessImageBackWithAllItsElements) {
  for (const char* syntax : kLossless) {
    for (const FrameFormat& format :
         {MakeFormat(17, 9, 1, 8, 8), MakeFormat(40, 30, 1, 16, 12), MakeFormat(40, 30, 1, 16, 16),
          MakeFormat(40, 30, 1, 16, 12, true), MakeFormat(40, 30, 1, 16, 16, true),
          MakeFormat(31, 7, 3, 8, 8)}) {
      SCOPED_TRACE(std::string(syntax) + ", " + std::to_string(format.bitsStored) + " bits, " +
                   (format.isSigned ? "signed" : "unsigned"));
      const std::vector<Octets> frames = test::FramesOf(format);
      const auto object = test::NewImage(format, frames);
      EXPECT_EQ(Refusal(*object, syntax), "");
      ASSERT_EQ(Compress(*object, syntax), "");
      EXPECT_EQ(test::SyntaxOf(*object), syntax);
      EXPECT_EQ(object->GetVR(0x7FE0, 0x0010)->ItemCount(), 1 + frames.size());
      EXPECT_EQ(TextAt(*object, 0x0028, 0x2110), "-");
      ASSERT_EQ(Decompress(*object), "");
      const Octets expected = test::Together(frames);
      EXPECT_EQ(test::NativeOf(*object, expected.size()), expected);
      EXPECT_EQ(TextAt(*object, 0x0028, 0x0004), format.photometric);
      EXPECT_EQ(object->GetUINT16(0x0028, 0x0101), format.bitsStored);
      EXPECT_EQ(object->GetUINT16(0x0028, 0x0102), format.highBit);
      EXPECT_EQ(object->GetVR(0x0028, 0x0006) != nullptr, format.samples > 1);
      EXPECT_EQ(TextAt(*object, 0x0008, 0x0008), "ORIGINAL\\PRIMARY\\AXIAL");
    }
  }
}

TEST(CodecLibrary, PlanesComeBackAsPixelsAndTheDataSetSaysSo) {
  FrameFormat format = MakeFormat(2, 2, 3, 8, 8);
  format.isPlanar = true;
  for (const char* syntax : kLossless) {
    const auto object = test::NewImage(format, {{1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24}});
    ASSERT_EQ(Compress(*object, syntax), "");
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0006), 0);
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(test::NativeOf(*object, 12), Octets({1, 11, 21, 2, 12, 22, 3, 13, 23, 4, 14, 24}));
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0006), 0);
    EXPECT_EQ(TextAt(*object, 0x0028, 0x0004), "RGB");
  }
}

TEST(CodecLibrary, TellsOfALossByRatioMethodAndImageType) {
  struct Row {
    const char* syntax;
    FrameFormat format;
    const char* method;
  };
  for (const Row& row :
       {Row{test::kJpegBaseline, MakeFormat(64, 48, 1, 8, 8), "ISO_10918_1"},
        Row{test::kJpegBaseline, MakeFormat(64, 48, 3, 8, 8), "ISO_10918_1"},
        Row{test::kJpegExtended, MakeFormat(64, 48, 1, 16, 12), "ISO_10918_1"},
        Row{test::kJpegLsNear, MakeFormat(64, 48, 1, 16, 12), "ISO_14495_1"},
        Row{test::kJpeg2000Lossy, MakeFormat(64, 48, 1, 16, 16, true), "ISO_15444_1"}}) {
    SCOPED_TRACE(row.syntax);
    const std::vector<Octets> frames = {test::MakeFrame(row.format, test::Pattern::kGradient),
                                        test::MakeFrame(row.format, test::Pattern::kSteps)};
    const auto object = test::NewImage(row.format, frames);
    ASSERT_EQ(Compress(*object, row.syntax), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2110), "01");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2114), row.method);
    EXPECT_EQ(TextAt(*object, 0x0008, 0x0008), "DERIVED\\PRIMARY\\AXIAL");
    std::uint64_t coded = 0;
    VR& pixels = *object->GetVR(0x7FE0, 0x0010);
    for (std::uint32_t at = 1; at < pixels.ItemCount(); ++at) {
      coded += pixels.GetItem(at)->GetVR(0xFFFE, 0xE000)->Length;
    }
    char ratio[32];
    std::snprintf(ratio, sizeof ratio, "%.2f",
                  static_cast<double>(2 * row.format.Size()) / static_cast<double>(coded));
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2112), ratio);
    // Once more, and both are told of.
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2110), "01");
    ASSERT_EQ(Compress(*object, row.syntax), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2114), std::string(row.method) + "\\" + row.method);
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2112).find(ratio), 0u);
    EXPECT_NE(TextAt(*object, 0x0028, 0x2112).find('\\'), std::string::npos);
  }
}

TEST(CodecLibrary, EachRatioStandsAtThePlaceOfItsMethod) {
  struct Row {
    const char* ratios;
    const char* methods;
    const char* ratiosBefore;
    const char* methodsAfter;
  };
  const FrameFormat format = MakeFormat(64, 48, 1, 8, 8);
  for (const Row& row :
       {Row{"16", "", "16\\", "\\ISO_10918_1"}, Row{"10\\4", "", "10\\4\\", "\\\\ISO_10918_1"},
        Row{"10\\4", "ISO_14495_1", "10\\4\\", "ISO_14495_1\\\\ISO_10918_1"},
        Row{"", "ISO_15444_1", "\\", "ISO_15444_1\\ISO_10918_1"},
        Row{"10", "ISO_14495_1\\", "10\\\\", "ISO_14495_1\\\\ISO_10918_1"},
        Row{"", "", "", "ISO_10918_1"}}) {
    SCOPED_TRACE(std::string(row.ratios) + ", " + row.methods);
    const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kGradient)});
    object->Push(test::NewText(MakeTagKey(0x0028, 0x2112), row.ratios, type_code::DS));
    object->Push(test::NewText(MakeTagKey(0x0028, 0x2114), row.methods, type_code::CS));
    ASSERT_EQ(Compress(*object, test::kJpegBaseline), "");
    const std::string ratios = TextAt(*object, 0x0028, 0x2112);
    EXPECT_EQ(ratios.substr(0, ratios.rfind('\\') + 1), row.ratiosBefore);
    EXPECT_GT(std::stod(ratios.substr(ratios.rfind('\\') + 1)), 1);
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2114), row.methodsAfter);
  }
}

TEST(CodecLibrary, TheRatioOfAnImageThatGrowsHasDigits) {
  const FrameFormat format = MakeFormat(1, 1, 1, 8, 8);
  const auto object = test::NewImage(format, {{7}});
  ASSERT_EQ(Compress(*object, test::kJpegBaseline), "");
  const std::uint32_t coded =
      object->GetVR(0x7FE0, 0x0010)->GetItem(1)->GetVR(0xFFFE, 0xE000)->Length;
  const std::string ratio = TextAt(*object, 0x0028, 0x2112);
  EXPECT_NEAR(std::stod(ratio) * coded, 1, 0.005) << ratio << " of " << coded;
  EXPECT_LE(ratio.size(), 16u);
}

TEST(CodecLibrary, ALossOfAnyFrameIsToldOf) {
  // The second frame has an overlay in bit 15, so that it is encoded without loss.
  const FrameFormat format = MakeFormat(64, 64, 1, 16, 12);
  const Octets lossy = test::MakeFrame(format, test::Pattern::kNoise);
  Octets exact = lossy;
  exact[1] |= 0x80;
  for (const std::vector<Octets>& frames : {std::vector{lossy, exact}, std::vector{exact, lossy}}) {
    const auto object = test::NewImage(format, frames);
    ASSERT_EQ(Compress(*object, test::kJpeg2000Lossy), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x2110), "01");
  }
  const auto object = test::NewImage(format, {exact, exact});
  ASSERT_EQ(Compress(*object, test::kJpeg2000Lossy), "");
  EXPECT_EQ(TextAt(*object, 0x0028, 0x2110), "-");
  EXPECT_EQ(TextAt(*object, 0x0008, 0x0008), "ORIGINAL\\PRIMARY\\AXIAL");
}

TEST(CodecLibrary, AnImageWithoutATypeBecomesDerivedWhenSomethingIsLost) {
  const FrameFormat format = MakeFormat(16, 16, 1, 8, 8);
  const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kGradient)});
  delete object->Remove(0x0008, 0x0008);
  ASSERT_EQ(Compress(*object, test::kJpegBaseline), "");
  EXPECT_EQ(TextAt(*object, 0x0008, 0x0008), "DERIVED\\PRIMARY");
}

TEST(CodecLibrary, NamesTheColoursOfEachForm) {
  struct Row {
    const char* syntax;
    const char* native;
    const char* coded;
    const char* back;
  };
  for (const Row& row :
       {Row{test::kRle, "RGB", "RGB", "RGB"}, Row{test::kRle, "YBR_FULL", "YBR_FULL", "YBR_FULL"},
        Row{test::kJpegFirstOrder, "RGB", "RGB", "RGB"},
        Row{test::kJpegFirstOrder, "YBR_FULL", "YBR_FULL", "YBR_FULL"},
        Row{test::kJpegLs, "YBR_FULL", "YBR_FULL", "YBR_FULL"},
        Row{test::kJpegBaseline, "RGB", "YBR_FULL_422", "RGB"},
        Row{test::kJpegBaseline, "YBR_FULL", "YBR_FULL_422", "RGB"},
        Row{test::kJpeg2000, "RGB", "YBR_RCT", "RGB"},
        Row{test::kJpeg2000, "YBR_FULL", "YBR_FULL", "YBR_FULL"},
        Row{test::kJpeg2000Lossy, "RGB", "YBR_ICT", "RGB"}}) {
    FrameFormat format = MakeFormat(16, 16, 3, 8, 8);
    format.photometric = row.native;
    const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kGradient)});
    ASSERT_EQ(Compress(*object, row.syntax), "") << row.syntax << row.native;
    EXPECT_EQ(TextAt(*object, 0x0028, 0x0004), row.coded) << row.syntax << row.native;
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x0004), row.back) << row.syntax << row.native;
  }
}

TEST(CodecLibrary, NamesOfTransformsAndSubsamplingGoWithThem) {
  struct Row {
    const char* coded;
    const char* back;
  };
  for (const Row& row : {Row{"YBR_FULL_422", "YBR_FULL"}, Row{"YBR_RCT", "RGB"},
                         Row{"YBR_ICT", "RGB"}, Row{"CMYK", "CMYK"}}) {
    FrameFormat format = MakeFormat(4, 4, 3, 8, 8);
    format.photometric = row.coded;
    const auto object =
        test::NewCoded(format, test::kRle, 1, {RleFrame(format, test::Pattern::kNoise)});
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(TextAt(*object, 0x0028, 0x0004), row.back);
  }
}

TEST(CodecLibrary, TheOffsetTableLeadsToTheItemsOfFramesOfAnyLength) {
  const FrameFormat format = MakeFormat(7, 5, 1, 8, 8);
  const std::vector<Octets> frames = test::FramesOf(format);
  for (const char* syntax : kLossless) {
    const auto object = test::NewImage(format, frames);
    ASSERT_EQ(Compress(*object, syntax), "");
    VR& pixels = *object->GetVR(0x7FE0, 0x0010);
    const Octets table = ::tessaret::test::ValueOf(*pixels.GetItem(0)->GetVR(0xFFFE, 0xE000));
    ASSERT_EQ(table.size(), 4 * frames.size());
    std::uint32_t offset = 0;
    for (std::uint32_t at = 0; at < frames.size(); ++at) {
      EXPECT_EQ(table[4 * at] | table[4 * at + 1] << 8, offset) << syntax << " " << at;
      offset += 8 + pixels.GetItem(at + 1)->GetVR(0xFFFE, 0xE000)->Length;
    }
  }
}

TEST(CodecLibrary, AFailureNamesSyntaxFrameAndCauseAndChangesNothing) {
  const FrameFormat format = MakeFormat(8, 8, 3, 8, 8);
  Octets damaged = RleFrame(format, test::Pattern::kNoise);
  damaged[0] = 4;
  const Octets good = RleFrame(format, test::Pattern::kNoise);
  const auto object = test::NewCoded(format, test::kRle, 3, {good, damaged, good});
  delete object->Remove(0x0028, 0x0006);
  EXPECT_EQ(Decompress(*object),
            "Transfer syntax [1.2.840.10008.1.2.5], frame 2 of 3: the RLE header names 4 segments, "
            "the data set means 3");
  EXPECT_EQ(test::SyntaxOf(*object), test::kRle);
  EXPECT_EQ(object->GetVR(0x7FE0, 0x0010)->ItemCount(), 3u);
  EXPECT_EQ(object->GetVR(0x0028, 0x0006), nullptr);
}

TEST(CodecLibrary, WhatASyntaxCannotHoldIsRefusedWithWords) {
  const auto refusal = [](const FrameFormat& format, const char* syntax) {
    return Refusal(*test::NewImage(format, {test::MakeFrame(format, test::Pattern::kZero)}),
                   syntax);
  };
  FrameFormat subsampled = MakeFormat(8, 8, 3, 8, 8);
  subsampled.photometric = "YBR_FULL_422";
  for (const char* name : {"YBR_PARTIAL_422", "YBR_PARTIAL_420"}) {
    subsampled.photometric = name;
    EXPECT_NE(refusal(subsampled, test::kRle), "") << name;
  }
  subsampled.photometric = "YBR_FULL_422";
  FrameFormat palette = MakeFormat(8, 8, 1, 8, 8);
  palette.photometric = "PALETTE COLOR";
  for (const char* syntax : kLossless) {
    const std::string begin = std::string("Transfer syntax [") + syntax + "]: ";
    EXPECT_EQ(refusal(subsampled, syntax), begin + "native pixels in YBR_FULL_422 are not encoded");
    EXPECT_EQ(refusal(MakeFormat(8, 8, 1, 1, 1), syntax),
              begin + "samples of one bit are not encoded");
    EXPECT_EQ(refusal(palette, syntax), "");
    EXPECT_EQ(refusal(MakeFormat(8, 8, 1, 32, 32), syntax) == "", syntax == test::kRle) << syntax;
  }
  for (const char* syntax :
       {test::kJpegBaseline, test::kJpegExtended, test::kJpegLsNear, test::kJpeg2000Lossy}) {
    EXPECT_NE(refusal(palette, syntax), "") << syntax;
    EXPECT_NE(refusal(MakeFormat(8, 8, 1, 32, 32), syntax), "") << syntax;
  }
  for (const char* syntax : {test::kJpegBaseline, test::kJpegExtended}) {
    EXPECT_NE(refusal(MakeFormat(8, 8, 1, 16, 16), syntax), "") << syntax;
    EXPECT_NE(refusal(MakeFormat(8, 8, 1, 16, 12, true), syntax), "") << syntax;
    EXPECT_NE(refusal(MakeFormat(8, 8, 1, 8, 8, true), syntax), "") << syntax;
  }
}

TEST(CodecLibrary, FramesBeyondTheirNumberAreNotLeftOut) {
  const FrameFormat format = MakeFormat(4, 2, 1, 8, 8);
  const Octets frame = test::MakeFrame(format, test::Pattern::kGradient);
  const auto named = [&](const std::vector<Octets>& frames, const char* count) {
    auto object = test::NewImage(format, frames);
    object->Push(test::NewText(MakeTagKey(0x0028, 0x0008), count, type_code::IS));
    return object;
  };
  for (const char* syntax : kLossless) {
    const std::string begin = std::string("Transfer syntax [") + syntax + "]: ";
    EXPECT_EQ(Refusal(*named({frame, frame, frame}, "2"), syntax),
              begin + "24 bytes of pixel data are more than 2 frames of 8");
    const auto missing = named({frame, frame}, "");
    EXPECT_EQ(Refusal(*missing, syntax),
              begin + "16 bytes of pixel data are more than 1 frames of 8");
    EXPECT_NE(Compress(*missing, syntax), "");
    EXPECT_EQ(test::SyntaxOf(*missing), test::kExplicit);
    EXPECT_EQ(Refusal(*named({frame, {1, 2, 3, 4, 5, 6}}, "1"), syntax), "") << "filling";
    const FrameFormat pixel = MakeFormat(1, 1, 1, 8, 8);
    EXPECT_EQ(Refusal(*test::NewImage(pixel, {{7}}), syntax), "") << "made even";
  }
}

TEST(CodecLibrary, AWrongHighBitKeepsNobodyFromSeeingAnImage) {
  const FrameFormat format = MakeFormat(16, 16, 1, 16, 12);
  const Octets frame = test::MakeFrame(format, test::Pattern::kGradient);
  for (const char* syntax : kLossless) {
    for (const std::uint32_t high : {0u, 7u, 16u}) {
      const auto object = test::NewImage(format, {frame});
      ASSERT_EQ(Compress(*object, syntax), "");
      object->Push(test::NewNumber(0x0102, high));
      ASSERT_EQ(Decompress(*object), "") << syntax;
      EXPECT_EQ(test::NativeOf(*object, frame.size()), frame);
      EXPECT_NE(Refusal(*object, syntax), "") << "which bits are stored is not known";
    }
  }
}

TEST(CodecLibrary, AnEmptyPlanarConfigurationIsFilled) {
  const FrameFormat format = MakeFormat(2, 2, 3, 8, 8);
  const auto object =
      test::NewCoded(format, test::kRle, 1, {RleFrame(format, test::Pattern::kNoise)});
  object->Push(::tessaret::test::NewVR(MakeTagKey(0x0028, 0x0006), {}, type_code::US));
  ASSERT_EQ(Decompress(*object), "");
  EXPECT_EQ(object->GetVR(0x0028, 0x0006)->Length, 2u);
}

TEST(CodecLibrary, APlanarConfigurationOfGrayIsNoLongerOneOfPlanes) {
  FrameFormat format = MakeFormat(4, 2, 1, 8, 8);
  const Octets frame = test::MakeFrame(format, test::Pattern::kGradient);
  for (const char* syntax : kLossless) {
    const auto object = test::NewImage(format, {frame});
    object->Push(test::NewNumber(0x0006, 1));
    ASSERT_EQ(Compress(*object, syntax), "");
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0006), 0);
    object->Push(test::NewNumber(0x0006, 1));
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0006), 0);
    EXPECT_EQ(test::NativeOf(*object, frame.size()), frame);
  }
}

TEST(CodecLibrary, HoldsAnythingNatively) {
  DICOMObject empty;
  for (const char* syntax : {test::kImplicit, test::kExplicit, "1.2.840.10008.1.2.2"}) {
    EXPECT_EQ(Refusal(empty, syntax), "");
  }
}

TEST(CodecLibrary, SingleBitsComeInABytesEachAndTheDataSetSaysSo) {
  const FrameFormat format = MakeFormat(4, 2, 1, 1, 1);
  Octets stream(64);
  stream[0] = 1;
  stream[4] = 64;
  stream.insert(stream.end(), {0, 0xA1});
  const auto object = test::NewCoded(format, test::kRle, 2, {stream, stream});
  ASSERT_EQ(Decompress(*object), "");
  // A1 is 1000 0101 from the lowest bit.
  EXPECT_EQ(test::NativeOf(*object, 16), Octets({1, 0, 0, 0, 0, 1, 0, 1, 1, 0, 0, 0, 0, 1, 0, 1}));
  EXPECT_EQ(object->GetUINT16(0x0028, 0x0100), 8);
  EXPECT_EQ(object->GetUINT16(0x0028, 0x0101), 1);
  EXPECT_EQ(object->GetUINT16(0x0028, 0x0102), 0);
}

TEST(CodecLibrary, BitsStoredGrowWhereALossyStreamGoesBeyondThem) {
  const FrameFormat format = MakeFormat(32, 32, 1, 16, 12);
  for (const bool isBeyond : {true, false}) {
    const test::Pattern pattern = isBeyond ? test::Pattern::kMaximum : test::Pattern::kZero;
    const auto object = test::NewImage(format, {test::MakeFrame(format, pattern)});
    ASSERT_EQ(Compress(*object, test::kJpegExtended), "");
    object->Push(test::NewNumber(0x0101, 10));
    object->Push(test::NewNumber(0x0102, 9));
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0101), isBeyond ? 12 : 10);
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0102), isBeyond ? 11 : 9);
  }
}

TEST(CodecLibrary, BitsStoredBelowAnotherHighBitStayAsTheyAre) {
  const FrameFormat format = MakeFormat(32, 32, 1, 16, 12);
  const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kMaximum)});
  ASSERT_EQ(Compress(*object, test::kJpegExtended), "");
  object->Push(test::NewNumber(0x0101, 10));
  object->Push(test::NewNumber(0x0102, 11));
  ASSERT_EQ(Decompress(*object), "");
  EXPECT_EQ(object->GetUINT16(0x0028, 0x0101), 10);
  EXPECT_EQ(object->GetUINT16(0x0028, 0x0102), 11);
}

TEST(CodecLibrary, BitsBesideThoseStoredComeBackFromLosslessStreamsAndAreNotCalledStored) {
  // An overlay in bit 15, as older images have it.
  const FrameFormat format = MakeFormat(2, 1, 1, 16, 12);
  for (const char* syntax : kLossless) {
    const auto object = test::NewImage(format, {{0x34, 0x82, 0x35, 0x02}});
    ASSERT_EQ(Compress(*object, syntax), "");
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_EQ(test::NativeOf(*object, 4), Octets({0x34, 0x82, 0x35, 0x02})) << syntax;
    EXPECT_EQ(object->GetUINT16(0x0028, 0x0101), 12);
  }
}

TEST(CodecLibrary, StreamsOfAnotherProcessAreDecodedByWhatTheyAre) {
  const FrameFormat format = MakeFormat(16, 16, 1, 8, 8);
  const Octets frame = test::MakeFrame(format, test::Pattern::kGradient);
  for (const char* coded : {test::kJpegLossless, test::kJpegLs}) {
    for (const char* named :
         {test::kJpegBaseline, test::kJpegExtended, test::kJpegFirstOrder, test::kJpegLsNear}) {
      const auto object = test::NewImage(format, {frame});
      ASSERT_EQ(Compress(*object, coded), "");
      object->Push(test::NewText(kTransferSyntaxTag, named, type_code::UI));
      ASSERT_EQ(Decompress(*object), "") << coded << " " << named;
      EXPECT_EQ(test::NativeOf(*object, frame.size()), frame);
    }
  }
}

TEST(CodecLibrary, StreamsByCosineTransformAreDecodedUnderAllNamesOfJpeg) {
  for (const char* coded : {test::kJpegBaseline, test::kJpegExtended}) {
    const bool isWide = coded == test::kJpegExtended;
    const FrameFormat format = MakeFormat(16, 16, 1, isWide ? 16 : 8, isWide ? 12 : 8);
    const Octets frame = test::MakeFrame(format, test::Pattern::kMaximum);  // flat: nothing is lost
    for (const char* named : {test::kJpegLossless, test::kJpegFirstOrder, test::kJpegLs,
                              test::kJpegLsNear, "1.2.840.10008.1.2.4.55"}) {
      const auto object = test::NewImage(format, {frame});
      ASSERT_EQ(Compress(*object, coded), "");
      object->Push(test::NewText(kTransferSyntaxTag, named, type_code::UI));
      ASSERT_EQ(Decompress(*object), "") << coded << " " << named;
      EXPECT_EQ(test::NativeOf(*object, frame.size()), frame) << coded << " " << named;
    }
  }
}

TEST(CodecLibrary, FramesOfOneImageInDifferentColoursAreRefused) {
  FrameFormat format = MakeFormat(16, 16, 3, 8, 8);
  format.photometric = "YBR_FULL";
  const auto fragment = [&](const char* syntax) {
    const auto object = test::NewImage(format, {test::MakeFrame(format, test::Pattern::kGradient)});
    EXPECT_EQ(Compress(*object, syntax), "");
    return ::tessaret::test::ValueOf(
        *object->GetVR(0x7FE0, 0x0010)->GetItem(1)->GetVR(0xFFFE, 0xE000));
  };
  const auto object =
      test::NewCoded(format, test::kJpegBaseline, 2,
                     {fragment(test::kJpegLossless), fragment(test::kJpegBaseline)});
  EXPECT_EQ(Decompress(*object),
            "Transfer syntax [1.2.840.10008.1.2.4.50], frame 2 of 2: its colours are RGB, those of "
            "the frames before are YBR_FULL");
}

TEST(CodecLibrary, AHundredThousandFramesTakeTheirTimeOnceEach) {
  const FrameFormat format = MakeFormat(1, 1, 1, 8, 8);
  Octets header(64);
  header[0] = 1;
  header[4] = 64;
  constexpr std::uint32_t kFrames = 100'000;
  for (const bool isSplit : {false, true}) {
    std::vector<Octets> fragments;
    for (std::uint32_t at = 0; at < kFrames; ++at) {
      const Octets data = {0, static_cast<std::uint8_t>(at % 251)};
      if (isSplit) {
        fragments.push_back(header);
        fragments.push_back(data);
      } else {
        fragments.push_back(::tessaret::test::Joined({header, data}));
      }
    }
    const auto object = test::NewCoded(format, test::kRle, kFrames, fragments);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(Decompress(*object), "");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    const Octets native = test::NativeOf(*object, kFrames);
    for (std::uint32_t at = 0; at < kFrames; ++at) ASSERT_EQ(native[at], at % 251);
  }
}

}  // namespace
}  // namespace tessaret::codecs
