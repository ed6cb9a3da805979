#include "core/comp_engine.h"

#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "support/child_process.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::TestCodecs;

constexpr TagKey kLossyTag = MakeTagKey(0x0028, 0x2110);
constexpr const char* kImplicit = "1.2.840.10008.1.2";
constexpr const char* kExplicit = "1.2.840.10008.1.2.1";
constexpr const char* kBig = "1.2.840.10008.1.2.2";

/// An engine over both toy codecs.
class CompEngine : public testing::Test {
 protected:
  bool Decompress(DICOMObject& object, const char* syntax = nullptr) {
    return engine_.Decompress(&object, syntax, nullptr);
  }
  bool Compress(DICOMObject& object, const char* syntax) {
    return engine_.Compress(&object, syntax, nullptr);
  }

  TestCodecs codecs_{"toy_codec.so", "toy_codec_c.so"};
  DcmCompEngine engine_{codecs_.registry};
};

TEST_F(CompEngine, DecompressTakesAnObjectWithoutASyntaxForNative) {
  const auto object = test::NewCompressed(2, test::kToy, 2);
  delete object->Remove(0x0002, 0x0010);
  const std::string before = test::Outline(*object);
  EXPECT_TRUE(Decompress(*object));
  object->Push(test::NewVR(kTransferSyntaxTag, Bytes{}, type_code::UI));
  EXPECT_TRUE(Decompress(*object)) << "an empty one is none";
  delete object->Remove(0x0002, 0x0010);
  EXPECT_EQ(test::Outline(*object), before);
}

TEST_F(CompEngine, DecompressLeavesNativeSyntaxesAlone) {
  for (const char* syntax : {kImplicit, kExplicit, kBig}) {
    const auto object = test::NewImage(2, syntax);
    const std::string before = test::Outline(*object);
    EXPECT_TRUE(Decompress(*object));
    EXPECT_EQ(test::Outline(*object), before);
  }
  EXPECT_TRUE(Decompress(*test::NewImage(1, "1.2.840.10008.1.2 "))) << "padded by a blank";
  EXPECT_TRUE(Decompress(*test::NewImage(1, std::string_view("1.2.840.10008.1.2\0", 18))));
  EXPECT_TRUE(Decompress(*test::NewImage(1, std::string_view("1.2.840.10008.1.2\0junk", 22))))
      << "what is behind a NUL does not count";
  DICOMObject empty;
  EXPECT_TRUE(Decompress(empty, kImplicit));
}

TEST_F(CompEngine, DecompressRefusesAnUnknownSyntax) {
  const auto object = test::NewImage(1, "1.2.3.4");
  EXPECT_FALSE(Decompress(*object));
  EXPECT_EQ(engine_.ErrorText, "Unknown transfer syntax [1.2.3.4]");
  EXPECT_TRUE(Decompress(*object, kImplicit)) << "the argument goes before the element";
  EXPECT_EQ(engine_.ErrorText, "");
  EXPECT_FALSE(Decompress(*object, ""));
}

TEST_F(CompEngine, ASyntaxIsReadUpTo64Bytes) {
  const std::string digits(64, '9');
  TestCodecs codecs("bad_codec.so");
  DcmCompEngine engine(codecs.registry);
  const auto object = test::NewImage(1, digits + "999");
  EXPECT_FALSE(engine.Decompress(object.get(), nullptr, nullptr));
  EXPECT_EQ(engine.ErrorText, "No codec for transfer syntax [" + digits + "]");
}

TEST_F(CompEngine, DecompressNeedsPixelDataAndLeavesWhatHasNoFragments) {
  const auto object = test::NewImage(1, test::kToy);
  EXPECT_TRUE(Decompress(*object)) << "native already";
  EXPECT_EQ(test::SyntaxOf(*object), test::kToy);
  delete object->Remove(0x7FE0, 0x0010);
  EXPECT_FALSE(Decompress(*object));
  EXPECT_EQ(engine_.ErrorText, "There is no pixel data");
}

TEST_F(CompEngine, AnEngineWithoutAnObjectFails) {
  EXPECT_FALSE(engine_.Decompress(nullptr, nullptr, nullptr));
  EXPECT_FALSE(engine_.Compress(nullptr, kExplicit, nullptr));
  EXPECT_FALSE(engine_.CanCompress(nullptr, kExplicit, nullptr));
  EXPECT_EQ(engine_.ErrorText, "No object");
  DICOMObject object;
  EXPECT_FALSE(Compress(object, nullptr));
  EXPECT_FALSE(engine_.CanCompress(&object, nullptr, nullptr));
  EXPECT_EQ(engine_.ErrorText, "No transfer syntax is named");
}

TEST_F(CompEngine, CompressesFramesAndNamesTheSyntax) {
  const auto object = test::NewImage(3);
  testing::internal::CaptureStderr();
  ASSERT_TRUE(Compress(*object, test::kToy)) << engine_.ErrorText;
  const std::string printed = testing::internal::GetCapturedStderr();
  // Frame 0 has a run of three among its eight bytes: 12 bytes; the others 16.
  EXPECT_EQ(printed, "0 -> 0 0\n1 -> 20 14\n2 -> 44 2C\n");
  const VR& pixels = test::PixelsOf(*object);
  EXPECT_EQ(pixels.Length, kUndefinedLength);
  EXPECT_EQ(pixels.TypeCode, type_code::SQ);
  EXPECT_EQ(pixels.Data, nullptr);
  const std::vector<Bytes> items = test::ItemsOf(*object);
  ASSERT_EQ(items.size(), 4u);
  EXPECT_EQ(items[0], (Bytes{0, 0, 0, 0, 20, 0, 0, 0, 44, 0, 0, 0}));
  EXPECT_EQ(items[1].size(), 12u);
  EXPECT_EQ(items[1][0], 3u);
  const VR& syntax = *object->GetVR(0x0002, 0x0010);
  EXPECT_EQ(test::TextOf(syntax), std::string(test::kToy) + '\0');
  EXPECT_EQ(syntax.TypeCode, type_code::UI);
  EXPECT_EQ(object->GetVR(0x0002, 0x0000), nullptr) << "group lengths go";
  EXPECT_EQ(object->GetVR(0x0008, 0x0000), nullptr);
  EXPECT_EQ(test::TextAt(*object, MakeTagKey(0x0010, 0x0010)), "Doe^J ");
  EXPECT_EQ(test::TextAt(*object, kLossyTag), "00") << "the codec's own change stays";
}

TEST_F(CompEngine, CompressesAlsoWhereNobodyReadsTheOffsets) {
  const auto work = [this] {
    std::signal(SIGPIPE, SIG_DFL);
    int ends[2];
    if (::pipe(ends) != 0 || ::close(ends[0]) != 0 || ::dup2(ends[1], STDERR_FILENO) == -1)
      return 9;
    return Compress(*test::NewImage(3), test::kToy) ? 0 : 1;
  };
  EXPECT_EQ(test::RunInChild(work), 0);
}

TEST_F(CompEngine, ASingleFrameGetsAnEmptyOffsetTableAndPrintsNothing) {
  const auto object = test::NewImage(1);
  testing::internal::CaptureStderr();
  ASSERT_TRUE(Compress(*object, test::kToy)) << engine_.ErrorText;
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  const VR* table = test::PixelsOf(*object).GetItem(0)->GetVR(0xFFFE, 0xE000);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->Data, nullptr);
  EXPECT_EQ(table->Length, 0u);
  EXPECT_EQ(test::ItemsOf(*object).size(), 2u);
}

TEST_F(CompEngine, DecompressesToExplicitLittleEndianOf19Characters) {
  const auto object = test::NewImage(3);
  ASSERT_TRUE(Compress(*object, test::kToy));
  object->Push(test::NewVR(MakeTagKey(0x0008, 0x0000), Bytes{2, 0, 0, 0}, type_code::UL));
  ASSERT_TRUE(Decompress(*object)) << engine_.ErrorText;
  const VR& pixels = test::PixelsOf(*object);
  EXPECT_EQ(pixels.TypeCode, type_code::OB);
  EXPECT_EQ(pixels.Items, nullptr);
  EXPECT_EQ(test::ValueOf(pixels), test::NativePixels(3));
  const VR& syntax = *object->GetVR(0x0002, 0x0010);
  EXPECT_EQ(syntax.Length, 19u);
  EXPECT_EQ(syntax.TypeCode, type_code::UI);
  EXPECT_EQ(test::TextOf(syntax), kExplicit);
  EXPECT_EQ(object->GetVR(0x0008, 0x0000), nullptr);
  EXPECT_EQ(test::TextAt(*object, test::kPhotometricTag), "TOY ") << "made even by a blank";
}

TEST_F(CompEngine, TheCodecGetsFramesTableSyntaxAndProgress) {
  const auto object = test::NewImage(2);
  std::string said;
  ASSERT_TRUE(engine_.CanCompress(object.get(), test::kToy, &said));
  ASSERT_TRUE(engine_.Compress(object.get(), test::kToy, &said));
  ASSERT_TRUE(engine_.Decompress(object.get(), test::kToy, &said));
  EXPECT_EQ(said,
            "ask 1.2.999.1\n"
            "compress 0/2 1.2.999.1\ncompress 1/2 1.2.999.1\n"
            "decompress 0/2 table 8 of 2 1.2.999.1\ndecompress 1/2 table 8 of 2 1.2.999.1\n");
}

TEST_F(CompEngine, ACodecInCServesAsOneInCppDoes) {
  const auto object = test::NewImage(2);
  object->Push(test::NewShort(0x0006, 0));
  ASSERT_TRUE(engine_.CanCompress(object.get(), test::kCToy, nullptr)) << engine_.ErrorText;
  ASSERT_TRUE(Compress(*object, test::kCToy)) << engine_.ErrorText;
  const std::vector<Bytes> items = test::ItemsOf(*object);
  ASSERT_EQ(items.size(), 5u) << "two fragments a frame";
  EXPECT_EQ(items[0], (Bytes{0, 0, 0, 0, 24, 0, 0, 0}));
  EXPECT_EQ(items[1].size(), 4u);
  ASSERT_TRUE(Decompress(*object)) << engine_.ErrorText;
  EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), test::NativePixels(2));
  EXPECT_EQ(object->GetVR(0x0028, 0x0006)->TypeCode, type_code::US) << "the type stays";

  object->Push(test::NewShort(0x0011, 3));
  EXPECT_FALSE(Compress(*object, test::kCToy));
  EXPECT_EQ(engine_.ErrorText, "C toy: frames of 6 bytes");
}

TEST_F(CompEngine, EveryKindOfFrameComesBackAsItWas) {
  for (const std::uint32_t frames : {1u, 2u, 7u, 300u}) {
    for (const char* syntax : {test::kToy, test::kCToy}) {
      const auto object = test::NewImage(frames);
      testing::internal::CaptureStderr();
      ASSERT_TRUE(Compress(*object, syntax));
      testing::internal::GetCapturedStderr();
      ASSERT_TRUE(Decompress(*object));
      EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), test::NativePixels(frames));
    }
  }
}

TEST_F(CompEngine, AnOddNumberOfBytesGetsANul) {
  const auto object = test::NewCompressed(1, test::kToy, 0);
  object->Push(test::NewShort(0x0011, 1));
  object->Push(test::NewShort(0x0010, 3));
  VR& pixels = test::PixelsOf(*object);
  pixels.AddItem(test::NewObject({test::NewVR(MakeTagKey(0xFFFE, 0xE000), Bytes{3, 0x5A ^ 9})}));
  ASSERT_TRUE(Decompress(*object)) << engine_.ErrorText;
  EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), (Bytes{9, 9, 9, 0}));
}

TEST_F(CompEngine, WithoutASyntaxInTheObjectTheArgumentIsEnough) {
  const auto object = test::NewImage(2);
  delete object->Remove(0x0002, 0x0010);
  ASSERT_TRUE(Compress(*object, test::kToy));
  EXPECT_EQ(test::SyntaxOf(*object), std::string(test::kToy) + '\0');
  delete object->Remove(0x0002, 0x0010);
  ASSERT_TRUE(Decompress(*object, test::kToy)) << engine_.ErrorText;
  EXPECT_EQ(test::SyntaxOf(*object), kExplicit);
}

TEST_F(CompEngine, WhatIsPushedAfterwardsNestsIntoTheLastElement) {
  const auto object = test::NewImage(1);
  ASSERT_TRUE(Compress(*object, test::kToy));
  EXPECT_EQ(object->LastPushedVR, &test::PixelsOf(*object));
  VR* last = test::NewVR(MakeTagKey(0xFFFC, 0xFFFC), Bytes{0, 0}, type_code::OB);
  object->Push(last);
  ASSERT_TRUE(Decompress(*object));
  EXPECT_EQ(object->LastPushedVR, last);
}

TEST_F(CompEngine, AnEvenNumberOfCharactersIsNamedWithoutANul) {
  TestCodecs codecs("one_object_codec.so");
  DcmCompEngine engine(codecs.registry);
  const auto object = test::NewImage(1);
  ASSERT_TRUE(engine.Compress(object.get(), "1.2.999.5.10", nullptr)) << engine.ErrorText;
  EXPECT_EQ(test::SyntaxOf(*object), "1.2.999.5.10");
}

TEST_F(CompEngine, ACodecForImplicitLittleEndianLeavesTheSyntaxUnnamed) {
  TestCodecs codecs("one_object_codec.so");
  DcmCompEngine engine(codecs.registry);
  const auto object = test::NewImage(1);
  ASSERT_TRUE(engine.Compress(object.get(), kImplicit, nullptr)) << engine.ErrorText;
  EXPECT_EQ(object->GetVR(0x0002, 0x0010), nullptr);
  EXPECT_EQ(test::ItemsOf(*object).size(), 2u);
}

TEST_F(CompEngine, CompressToImplicitDropsTheSyntax) {
  const auto object = test::NewImage(2);
  const Bytes before = test::ValueOf(test::PixelsOf(*object));
  ASSERT_TRUE(Compress(*object, kImplicit));
  EXPECT_EQ(object->GetVR(0x0002, 0x0010), nullptr);
  EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), before);
  EXPECT_NE(object->GetVR(0x0008, 0x0000), nullptr) << "nothing else goes";
}

TEST_F(CompEngine, CompressToAnotherNativeSyntaxChangesTheNameInPlace) {
  const auto object = test::NewImage(1, std::string_view("1.2.840.10008.1.2.1\0", 20));
  VR* syntax = object->GetVR(0x0002, 0x0010);
  ASSERT_TRUE(Compress(*object, kExplicit));
  EXPECT_EQ(syntax->Length, 20u) << "the same syntax changes nothing";
  ASSERT_TRUE(Compress(*object, kBig));
  EXPECT_EQ(object->GetVR(0x0002, 0x0010), syntax);
  EXPECT_EQ(test::TextOf(*syntax), kBig);
  EXPECT_EQ(syntax->Length, 19u);
  EXPECT_NE(syntax->OwnsData, 0u);
}

TEST_F(CompEngine, CompressToANativeSyntaxAddsAMissingName) {
  for (const char* target : {kImplicit, kExplicit, kBig}) {
    DICOMObject object;
    ASSERT_TRUE(Compress(object, target));
    const VR& syntax = *object.GetVR(0x0002, 0x0010);
    EXPECT_EQ(syntax.TypeCode, type_code::UI);
    EXPECT_EQ(test::TextOf(syntax), std::string(target) + '\0');
  }
}

TEST_F(CompEngine, ACompressedObjectThatIsDecompressedFirstReadsAsImplicit) {
  const auto object = test::NewImage(2);
  ASSERT_TRUE(Compress(*object, test::kToy));
  ASSERT_TRUE(Decompress(*object));
  ASSERT_TRUE(engine_.CanCompress(object.get(), kImplicit, nullptr));
  ASSERT_TRUE(Compress(*object, kImplicit));
  EXPECT_EQ(object->GetVR(0x0002, 0x0010), nullptr);
  EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), test::NativePixels(2));
}

TEST_F(CompEngine, CompressWithoutBytesDoesNothing) {
  const auto object = test::NewImage(2);
  ASSERT_TRUE(Compress(*object, test::kToy));
  const std::string before = test::Outline(*object);
  EXPECT_TRUE(Compress(*object, test::kCToy)) << "the pixels are fragments already";
  EXPECT_EQ(test::Outline(*object), before);
  delete object->Remove(0x7FE0, 0x0010);
  EXPECT_FALSE(Compress(*object, test::kToy));
  EXPECT_EQ(engine_.ErrorText, "There is no pixel data");
}

TEST_F(CompEngine, CanCompressAsksTheCodec) {
  const auto object = test::NewImage(1);
  EXPECT_TRUE(engine_.CanCompress(object.get(), test::kToy, nullptr));
  EXPECT_TRUE(engine_.CanCompress(object.get(), test::kCToy, nullptr));
  EXPECT_TRUE(engine_.CanCompress(object.get(), kBig, nullptr));
  EXPECT_FALSE(engine_.CanCompress(object.get(), "1.2.3", nullptr));
  EXPECT_EQ(engine_.ErrorText, "Unknown transfer syntax [1.2.3]");
  object->Push(test::NewShort(0x0011, 1));
  object->Push(test::NewShort(0x0010, 1));
  EXPECT_FALSE(engine_.CanCompress(object.get(), test::kToy, nullptr)) << "an odd frame";
  EXPECT_EQ(engine_.ErrorText, "The object cannot be held in transfer syntax [1.2.999.1]");
  EXPECT_EQ(object->GetVR(0x0028, 0x2110), nullptr) << "an answer changes nothing";
}

TEST_F(CompEngine, HoldsACodecOnceAndGivesItBackAtItsEnd) {
  CodecEntry& entry = *codecs_.registry.Find(test::kToy);
  const auto object = test::NewImage(1);
  {
    DcmCompEngine first(codecs_.registry);
    EXPECT_TRUE(first.CanCompress(object.get(), test::kToy, nullptr));
    EXPECT_TRUE(first.Compress(object.get(), test::kToy, nullptr));
    EXPECT_EQ(entry.UseCount, 1u);
    {
      DcmCompEngine second(codecs_.registry);
      EXPECT_TRUE(second.Decompress(object.get(), nullptr, nullptr)) << second.ErrorText;
      EXPECT_EQ(entry.UseCount, 2u);
    }
    EXPECT_EQ(entry.UseCount, 1u);
    EXPECT_TRUE(test::IsInProcess("toy_codec.so"));
  }
  EXPECT_EQ(entry.UseCount, 0u);
  EXPECT_FALSE(test::IsInProcess("toy_codec.so"));
}

TEST_F(CompEngine, NativeWorkLoadsNoCodec) {
  const auto object = test::NewImage(1);
  EXPECT_TRUE(Decompress(*object));
  EXPECT_TRUE(Compress(*object, kBig));
  EXPECT_EQ(codecs_.asked["DcmCodec.dll"], 1) << "the census";
}

TEST_F(CompEngine, MorePixelsThanTheFramesNeedAreLeftOut) {
  const auto object = test::NewImage(2);
  object->Push(test::NewText(MakeTagKey(0x0028, 0x0008), "1 ", type_code::IS));
  ASSERT_TRUE(Compress(*object, test::kToy));
  EXPECT_EQ(test::ItemsOf(*object).size(), 2u);
}

}  // namespace
}  // namespace tessaret
