// What the engine makes of codecs that fail or lie, of sizes that do not go together, and of a lack of memory.
#include <pthread.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/codec_helpers.h"
#include "core/comp_engine.h"
#include "support/allocation_failure.h"
#include "support/compare_objects.h"

namespace tessaret {
namespace {

using test::BadUid;
using test::Bytes;
using test::TestCodecs;

/// From a clone of the object as it was to the object as it is.
std::string DifferenceTo(const DICOMObject& before, const DICOMObject& object) {
  const std::unique_ptr<DICOMObject> now(object.Clone(true));
  return test::Difference(before, *now);
}

class FailingCodecs : public testing::Test {
 protected:
  /// Compresses `frames` frames by one of the bad codecs, which must fail and leave the object as it was. The words.
  std::string WordsOfCompress(int which, std::uint32_t frames = 4) {
    const auto object = test::NewImage(frames);
    const std::unique_ptr<DICOMObject> before(object->Clone(true));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(engine_.Compress(object.get(), BadUid(which).c_str(), nullptr));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(DifferenceTo(*before, *object), "");
    return engine_.ErrorText;
  }

  /// The same for decompressing: only the offset table may be lost.
  std::string WordsOfDecompress(int which, bool losesTable = true) {
    const auto object = test::NewCompressed(4, BadUid(which), 4);
    const std::unique_ptr<DICOMObject> before(object->Clone(true));
    EXPECT_FALSE(engine_.Decompress(object.get(), nullptr, nullptr));
    if (losesTable) delete test::PixelsOf(*before).PopFirstItem();
    EXPECT_EQ(DifferenceTo(*before, *object), "");
    return engine_.ErrorText;
  }

  TestCodecs codecs_{"bad_codec.so", "toy_codec.so"};
  DcmCompEngine engine_{codecs_.registry};
};

TEST_F(FailingCodecs, AFailureAtTheThirdFrameLeavesTheObjectAsItWas) {
  EXPECT_EQ(WordsOfCompress(0), "the third frame");
  EXPECT_EQ(WordsOfDecompress(0), "the third frame");
}

TEST_F(FailingCodecs, WhatACodecChangedStaysWhereItComesThrough) {
  const auto object = test::NewCompressed(2, BadUid(0), 2);
  ASSERT_TRUE(engine_.Decompress(object.get(), nullptr, nullptr)) << engine_.ErrorText;
  EXPECT_EQ(test::TextAt(*object, MakeTagKey(0x0028, 0x0004)), "changed at frame 1");
  EXPECT_EQ(test::TextAt(*object, MakeTagKey(0x0028, 0x2110)), "changed at frame 1");
  EXPECT_EQ(object->GetVR(0x0028, 0x2110)->TypeCode, type_code::LO);
}

TEST_F(FailingCodecs, PixelsThatWereSteppedOverAreRefusedBeforeAnythingChanges) {
  const auto stepOver = [](VR& vr) {
    const std::uint32_t length = vr.Length;
    vr.Reset();
    vr.Length = length;
    vr.OwnsData = 1;
    vr.Start = new std::uint8_t[VR::kStartSize]();
    vr.IsSteppedOver = true;
  };
  const char* const words = "The pixel data was stepped over when it was read";
  const auto native = test::NewImage(4);
  stepOver(test::PixelsOf(*native));
  const auto compressed = test::NewCompressed(2, BadUid(0), 2);
  stepOver(*test::PixelsOf(*compressed).GetItem(2)->GetVR(0xFFFE, 0xE000));
  const std::unique_ptr<DICOMObject> nativeBefore(native->Clone(true));
  const std::unique_ptr<DICOMObject> compressedBefore(compressed->Clone(true));
  EXPECT_FALSE(engine_.Compress(native.get(), BadUid(0).c_str(), nullptr));
  EXPECT_EQ(engine_.ErrorText, words);
  EXPECT_EQ(DifferenceTo(*nativeBefore, *native), "");
  EXPECT_FALSE(engine_.Decompress(compressed.get(), nullptr, nullptr));
  EXPECT_EQ(engine_.ErrorText, words);
  EXPECT_EQ(DifferenceTo(*compressedBefore, *compressed), "");
}

constexpr std::uint16_t kFrameTables[] = {0x0001, 0x0002, 0x0003};

/// What tells where compressed frames lie, of frames that the object had before.
void PushFrameTables(DICOMObject& object) {
  for (const std::uint16_t element : kFrameTables) {
    object.Push(test::NewVR(MakeTagKey(0x7FE0, element), Bytes(8, 9), type_code::UN));
  }
}

std::size_t CountFrameTables(const DICOMObject& object) {
  std::size_t count = 0;
  for (const std::uint16_t element : kFrameTables) {
    if (object.GetVR(0x7FE0, element) != nullptr) ++count;
  }
  return count;
}

TEST_F(FailingCodecs, TablesOfFramesGoWithTheFramesThatTheyAreAbout) {
  const auto coded = test::NewCompressed(2, BadUid(0), 2);
  PushFrameTables(*coded);
  ASSERT_TRUE(engine_.Decompress(coded.get(), nullptr, nullptr)) << engine_.ErrorText;
  EXPECT_EQ(CountFrameTables(*coded), 0u);
  const auto native = test::NewImage(1);
  PushFrameTables(*native);
  ASSERT_TRUE(engine_.Compress(native.get(), BadUid(0).c_str(), nullptr)) << engine_.ErrorText;
  EXPECT_EQ(CountFrameTables(*native), 0u);
  EXPECT_NE(native->GetVR(0x7FE0, 0x0010), nullptr);
  EXPECT_EQ(native->LastPushedVR, native->GetVR(0x7FE0, 0x0010));
}

TEST_F(FailingCodecs, TablesOfFramesStayWhereNothingWasConverted) {
  const auto coded = test::NewCompressed(4, BadUid(0), 4);
  PushFrameTables(*coded);
  EXPECT_FALSE(engine_.Decompress(coded.get(), nullptr, nullptr));
  EXPECT_EQ(CountFrameTables(*coded), 3u);
  const auto native = test::NewImage(4);
  PushFrameTables(*native);
  EXPECT_FALSE(engine_.Compress(native.get(), BadUid(0).c_str(), nullptr));
  EXPECT_EQ(CountFrameTables(*native), 3u);
  EXPECT_TRUE(engine_.Decompress(native.get(), nullptr, nullptr)) << "native already";
  EXPECT_EQ(CountFrameTables(*native), 3u);
}

TEST_F(FailingCodecs, ATableOfFramesThatTheCodecMadeStays) {
  const auto object = test::NewImage(1);
  PushFrameTables(*object);
  ASSERT_TRUE(engine_.Compress(object.get(), BadUid(18).c_str(), nullptr)) << engine_.ErrorText;
  EXPECT_EQ(test::ValueOf(*object->GetVR(0x7FE0, 0x0001)), Bytes({1, 2, 3, 4}));
  EXPECT_EQ(CountFrameTables(*object), 1u);
}

TEST_F(FailingCodecs, ASizeAboveWhatWasMadeIsRefused) {
  EXPECT_EQ(WordsOfCompress(1),
            "The codec says that frame 1 takes 13 bytes, more than it has made");
  EXPECT_EQ(WordsOfCompress(2), "The codec says that frame 0 takes 1 bytes, more than it has made");
}

TEST_F(FailingCodecs, AnExceptionIsAFailureWithItsWords) {
  EXPECT_EQ(WordsOfCompress(3), "thrown words");
  EXPECT_EQ(WordsOfDecompress(3), "thrown words");
  EXPECT_EQ(WordsOfCompress(4), "The codec ended with an exception");
  EXPECT_EQ(WordsOfDecompress(4), "The codec ended with an exception");
  const auto object = test::NewImage(1);
  EXPECT_FALSE(engine_.CanCompress(object.get(), BadUid(3).c_str(), nullptr));
  EXPECT_EQ(engine_.ErrorText, "thrown words");
}

TEST_F(FailingCodecs, AFailureWithoutWordsNamesSyntaxAndFrame) {
  EXPECT_EQ(WordsOfDecompress(9), "The codec for transfer syntax [1.2.999.3.9] failed at frame 0");
}

TEST_F(FailingCodecs, WordsWithoutAnEndAreCutAtTheirPlace) {
  EXPECT_EQ(WordsOfDecompress(10), std::string(TESSARET_CODEC_ERROR_SIZE, 'w'));
}

TEST_F(FailingCodecs, WordsOfAnEarlierFailureDoNotComeAgain) {
  WordsOfDecompress(10);
  EXPECT_EQ(WordsOfDecompress(10),
            "The codec for transfer syntax [1.2.999.3.10] failed at frame 0");
}

TEST_F(FailingCodecs, WordsOfAnEarlierFailureDoNotComeWithAnotherOperation) {
  EXPECT_EQ(WordsOfDecompress(10), std::string(TESSARET_CODEC_ERROR_SIZE, 'w'));
  EXPECT_EQ(WordsOfCompress(10), "The codec for transfer syntax [1.2.999.3.10] failed at frame 0");
}

TEST_F(FailingCodecs, WordsOfAnEarlierFailureDoNotComeWithAnAnswer) {
  EXPECT_EQ(WordsOfDecompress(10), std::string(TESSARET_CODEC_ERROR_SIZE, 'w'));
  const auto object = test::NewImage(1);
  EXPECT_FALSE(engine_.CanCompress(object.get(), BadUid(10).c_str(), nullptr));
  EXPECT_EQ(engine_.ErrorText, "The object cannot be held in transfer syntax [1.2.999.3.10]");
}

TEST_F(FailingCodecs, WordsInAConcurrentCodecAreNobodysToRead) {
  EXPECT_EQ(WordsOfDecompress(16),
            "The codec for transfer syntax [1.2.999.3.16] failed at frame 0");
}

TEST_F(FailingCodecs, AThreadThatIsCancelledMayEndWithinACodec) {
  TestCodecs codecs("one_object_codec.so");
  const auto object = test::NewCompressed(2, "1.2.999.5.0", 2);
  std::atomic<bool> lived = false;
  std::thread([&] {
    DcmCompEngine engine(codecs.registry);
    ::pthread_cancel(::pthread_self());  // takes place where a call lets it
    engine.Decompress(object.get(), nullptr, nullptr);
    lived = true;
  }).join();
  EXPECT_FALSE(lived);
  EXPECT_EQ(codecs.registry.Find("1.2.999.5.0")->UseCount, 0u) << "the codec is given back";
  DcmCompEngine engine(codecs.registry);
  EXPECT_TRUE(engine.Decompress(test::NewCompressed(2, "1.2.999.5.0", 2).get(), nullptr, nullptr))
      << "nobody holds it";
  EXPECT_EQ(test::PixelsOf(*object).ItemCount(), 2u) << "as after any other failure";
}

TEST_F(FailingCodecs, ACodecThatCannotBeHadIsAFailureBeforeTheOffsetTable) {
  for (const int which : {5, 6, 7, 8}) {
    const std::string words = "No codec for transfer syntax [" + BadUid(which) + "]";
    EXPECT_EQ(WordsOfCompress(which), words);
    EXPECT_EQ(WordsOfDecompress(which, false), words);
  }
}

TEST_F(FailingCodecs, AListedNativeSyntaxNeedsItsCodecToCompressOnly) {
  const auto object = test::NewImage(1, BadUid(12));
  EXPECT_TRUE(engine_.Decompress(object.get(), nullptr, nullptr));
  EXPECT_FALSE(engine_.Compress(object.get(), BadUid(12).c_str(), nullptr));
  EXPECT_FALSE(engine_.CanCompress(object.get(), BadUid(12).c_str(), nullptr));
}

TEST_F(FailingCodecs, WhatACodecLeavesUnwrittenReadsAsZero) {
  const auto object = test::NewCompressed(3, BadUid(11), 3);
  ASSERT_TRUE(engine_.Decompress(object.get(), nullptr, nullptr));
  EXPECT_EQ(test::ValueOf(test::PixelsOf(*object)), Bytes(3 * test::kFrameSize));
}

TEST_F(FailingCodecs, WhatIsTheEnginesACodecCannotChange) {
  const auto object = test::NewCompressed(2, BadUid(15), 2);
  ASSERT_TRUE(engine_.Decompress(object.get(), nullptr, nullptr)) << engine_.ErrorText;
  EXPECT_EQ(test::PixelsOf(*object).Length, 2 * test::kFrameSize);
}

TEST_F(FailingCodecs, FragmentsThatAreNotThereAreMissed) {
  const auto object = test::NewCompressed(2, test::kToy, 0);
  EXPECT_FALSE(engine_.Decompress(object.get(), nullptr, nullptr));
  EXPECT_EQ(engine_.ErrorText, "The pixel data has no fragments");
  EXPECT_EQ(test::PixelsOf(*object).ItemCount(), 1u);
}

TEST_F(FailingCodecs, ItemsWithoutAFragmentAreTheCodecsToRefuse) {
  const auto object = test::NewCompressed(2, test::kToy, 0);
  VR& pixels = test::PixelsOf(*object);
  pixels.Items->Add(nullptr);
  pixels.AddItem(test::NewObject({}));
  EXPECT_FALSE(engine_.Decompress(object.get(), nullptr, nullptr));
  EXPECT_EQ(engine_.ErrorText, "toy: the frame does not unpack");
  EXPECT_EQ(pixels.ItemCount(), 2u);
}

/// Sizes of an image, as elements say them, and what the engine says to that.
struct Sizes {
  const char* frames;
  std::uint16_t rows, columns, samples, bits;
  const char* words;
};

std::unique_ptr<DICOMObject> WithSizes(std::unique_ptr<DICOMObject> object, const Sizes& sizes) {
  object->Push(test::NewText(MakeTagKey(0x0028, 0x0008), sizes.frames, type_code::IS));
  object->Push(test::NewShort(0x0010, sizes.rows));
  object->Push(test::NewShort(0x0011, sizes.columns));
  object->Push(test::NewShort(0x0002, sizes.samples));
  object->Push(test::NewShort(0x0100, sizes.bits));
  return object;
}

constexpr Sizes kImpossible[] = {
    {"0", 2, 4, 1, 8, "0 frames of 4 x 2 pixels with 1 samples of 1 bytes hold nothing"},
    {"1", 0, 4, 1, 8, "1 frames of 4 x 0 pixels with 1 samples of 1 bytes hold nothing"},
    {"1", 2, 0, 1, 8, "1 frames of 0 x 2 pixels with 1 samples of 1 bytes hold nothing"},
    {"1", 2, 4, 0, 8, "1 frames of 4 x 2 pixels with 0 samples of 1 bytes hold nothing"},
    {"1", 2, 4, 1, 0, "1 frames of 4 x 2 pixels with 1 samples of 0 bytes hold nothing"},
    {"-1", 2, 4, 1, 8, "Element (0028,0008) is not a number of frames"},
    {"2", 65535, 65535, 1, 8, "2 frames of 4294836225 bytes are more than an element can hold"},
    {"4294967295", 1, 1, 1, 8, "4294967295 frames of 1 bytes are more than an element can hold"},
    {"4294967295", 65535, 65535, 1, 8,
     "4294967295 frames of 4294836225 bytes are more than an element can hold"},
    {"1", 65535, 65535, 4, 16,
     "A frame of 65535 x 65535 pixels with 4 samples of 2 bytes is too large"},
};

TEST_F(FailingCodecs, SizesThatDoNotGoTogetherAreRefusedWithNothingChanged) {
  for (const Sizes& sizes : kImpossible) {
    for (auto& object : {WithSizes(test::NewCompressed(2, test::kToy, 2), sizes),
                         WithSizes(test::NewImage(2), sizes)}) {
      const std::unique_ptr<DICOMObject> before(object->Clone(true));
      const bool native = test::PixelsOf(*object).Items == nullptr;
      EXPECT_FALSE(native ? engine_.Compress(object.get(), test::kToy, nullptr)
                          : engine_.Decompress(object.get(), nullptr, nullptr));
      EXPECT_EQ(engine_.ErrorText, sizes.words);
      EXPECT_EQ(DifferenceTo(*before, *object), "");
    }
  }
}

TEST_F(FailingCodecs, PixelDataShorterThanItsFramesIsNotCompressed) {
  const auto object = WithSizes(test::NewImage(2), {"3", 2, 4, 1, 8, ""});
  EXPECT_FALSE(engine_.Compress(object.get(), test::kToy, nullptr));
  EXPECT_EQ(engine_.ErrorText, "The pixel data has 16 bytes, but 3 frames of 8 bytes are named");
  const auto packed = WithSizes(test::NewImage(2), {"1", 2, 4, 1, 12, ""});
  EXPECT_FALSE(engine_.Compress(packed.get(), test::kToy, nullptr));
  EXPECT_EQ(engine_.ErrorText, "The pixel data has 16 bytes, but 1 frames of 40 bytes are named");
}

TEST_F(FailingCodecs, AnOffsetTableThatNoElementHoldsIsRefused) {
  const auto object = WithSizes(test::NewImage(2), {"1073741824", 1, 1, 1, 8, ""});
  VR& pixels = test::PixelsOf(*object);
  const std::uint32_t length = pixels.Length;
  pixels.Length = kUndefinedLength - 1;  // nobody looks at the bytes
  EXPECT_FALSE(engine_.Compress(object.get(), test::kToy, nullptr));
  EXPECT_EQ(engine_.ErrorText, "The offset table of 1073741824 frames is too large");
  pixels.Length = length;
}

TEST_F(FailingCodecs, PixelsInBigEndianOrderAreNotCompressed) {
  const auto object = test::NewImage(1, "1.2.840.10008.1.2.2");
  EXPECT_FALSE(engine_.Compress(object.get(), test::kToy, nullptr));
  EXPECT_EQ(engine_.ErrorText, "Pixels in big endian order cannot be compressed");
}

TEST_F(FailingCodecs, WithoutMemoryTheObjectStaysAsItWas) {
  testing::internal::CaptureStderr();
  for (const bool compress : {true, false}) {
    std::unique_ptr<DICOMObject> object;
    std::unique_ptr<DICOMObject> before;
    bool done = false;
    const auto prepare = [&] {
      object = test::NewImage(2);
      if (!compress) {
        DcmCompEngine(codecs_.registry).Compress(object.get(), test::kToy, nullptr);
      }
      before.reset(object->Clone(true));
    };
    prepare();
    std::string words;
    const std::uint64_t allocations = test::FailEveryAllocation(
        [&] {
          DcmCompEngine engine(codecs_.registry);
          done = compress ? engine.Compress(object.get(), test::kToy, nullptr)
                          : engine.Decompress(object.get(), test::kToy, nullptr);
          words.swap(engine.ErrorText);
        },
        [&] {
          if (!done) {
            EXPECT_NE(words, "");
            if (test::PixelsOf(*object).ItemCount() == 2) {
              delete test::PixelsOf(*before).PopFirstItem();
            }
            EXPECT_EQ(DifferenceTo(*before, *object), "");
          }
          if (!done) prepare();
        });
    EXPECT_TRUE(done) << words;
    EXPECT_GT(allocations, 5u);
  }
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(codecs_.registry.Find(test::kToy)->UseCount, 0u);
}

}  // namespace
}  // namespace tessaret
