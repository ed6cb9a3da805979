// The functions that codecs call, outside of any call of theirs.
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/codec_conversion.h"
#include "core/codec_helpers.h"
#include "support/allocation_failure.h"
#include "tessaret/codec.h"

namespace tessaret {
namespace {

using test::Bytes;

TEST(CodecContract, ElementsAreLookedAtAsTheyAre) {
  const auto object = test::NewImage(1);
  const VR* rows = tessaret_codec_element(object.get(), 0x0028, 0x0010);
  ASSERT_NE(rows, nullptr);
  EXPECT_EQ(tessaret_codec_type(rows), type_code::US);
  EXPECT_EQ(tessaret_codec_length(rows), 2u);
  EXPECT_EQ(tessaret_codec_bytes(rows)[0], 2u);
  EXPECT_EQ(tessaret_codec_uint16(object.get(), 0x0028, 0x0010), 2u);
  EXPECT_EQ(tessaret_codec_uint16(object.get(), 0x0028, 0x0004), 0u);
  EXPECT_EQ(tessaret_codec_item_count(rows), 0u);
  EXPECT_EQ(tessaret_codec_item(rows, 0), nullptr);
  EXPECT_EQ(tessaret_codec_element(object.get(), 0x0028, 0x9999), nullptr);
  VR notLoaded(0x7FE0, 0x0010, 0, nullptr);
  notLoaded.Length = kUndefinedLength;
  EXPECT_EQ(tessaret_codec_length(&notLoaded), 0u) << "no bytes, no length";
}

TEST(CodecContract, NullIsNotThere) {
  std::uint32_t length = 7;
  EXPECT_EQ(tessaret_codec_element(nullptr, 1, 1), nullptr);
  EXPECT_EQ(tessaret_codec_uint16(nullptr, 1, 1), 0u);
  EXPECT_EQ(tessaret_codec_type(nullptr), 0u);
  EXPECT_EQ(tessaret_codec_length(nullptr), 0u);
  EXPECT_EQ(tessaret_codec_bytes(nullptr), nullptr);
  EXPECT_EQ(tessaret_codec_item_count(nullptr), 0u);
  EXPECT_EQ(tessaret_codec_item(nullptr, 0), nullptr);
  EXPECT_EQ(tessaret_codec_fragment(nullptr, 0, &length), nullptr);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(tessaret_codec_fragment(nullptr, 0, nullptr), nullptr);
  tessaret_codec_fail(nullptr);
  tessaret_codec_fail("nobody asked");
}

TEST(CodecContract, NothingIsChangedOutsideOfACall) {
  const auto object = test::NewCompressed(1, test::kToy, 1);
  VR& pixels = test::PixelsOf(*object);
  const std::uint8_t bytes[] = {1, 2};
  CodecFrame frame{};
  EXPECT_EQ(tessaret_codec_set(object.get(), 0x0028, 0x0004, 0, bytes, 2), 0);
  EXPECT_EQ(tessaret_codec_add_fragment(&pixels, bytes, 2), 0);
  EXPECT_EQ(tessaret_codec_frame(&pixels, &frame), 0);
  EXPECT_EQ(pixels.ItemCount(), 2u);
  EXPECT_EQ(tessaret_codec_item_count(&pixels), 2u);
}

/// A conversion of new pixel data, as CompressFrame finds it.
struct MadeConversion {
  std::unique_ptr<DICOMObject> object = test::NewImage(2);
  std::unique_ptr<VR> pixels{test::NewSequence(
      kPixelDataTag, {test::NewObject({test::NewVR(MakeTagKey(0xFFFE, 0xE000))})})};
  CodecConversion conversion{CodecConversion::Kind::kCompressing, *object, pixels.get(), 2};
};

TEST(CodecContract, FragmentsAreCountedWithoutTheOffsetTable) {
  MadeConversion made;
  VR* pixels = made.pixels.get();
  EXPECT_EQ(tessaret_codec_item_count(pixels), 0u);
  const std::uint8_t bytes[] = {1, 2, 3};
  EXPECT_EQ(tessaret_codec_add_fragment(pixels, bytes, 3), 1);
  EXPECT_EQ(tessaret_codec_item_count(pixels), 1u);
  std::uint32_t length = 0;
  const std::uint8_t* fragment = tessaret_codec_fragment(pixels, 0, &length);
  ASSERT_EQ(length, 4u);
  EXPECT_EQ(Bytes(fragment, fragment + 4), (Bytes{1, 2, 3, 0}));
  EXPECT_EQ(tessaret_codec_fragment(pixels, 1, &length), nullptr);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(tessaret_codec_fragment(pixels, 0xFFFFFFFF, &length), nullptr);
  EXPECT_EQ(tessaret_codec_add_fragment(pixels, nullptr, 3), 0);
  EXPECT_EQ(tessaret_codec_add_fragment(pixels, bytes, 0), 0);
  EXPECT_EQ(tessaret_codec_add_fragment(&test::PixelsOf(*made.object), bytes, 2), 0);
  EXPECT_EQ(tessaret_codec_add_fragment(nullptr, bytes, 2), 0);
  EXPECT_EQ(tessaret_codec_item_count(pixels), 1u);
}

TEST(CodecContract, AFrameIsToldByItsNumber) {
  MadeConversion made;
  made.conversion.SetFrame(1);
  CodecFrame frame{};
  ASSERT_EQ(tessaret_codec_frame(made.pixels.get(), &frame), 1);
  EXPECT_EQ(frame.Index, 1u);
  EXPECT_EQ(frame.Frames, 2u);
  EXPECT_EQ(frame.OffsetTable, nullptr);
  EXPECT_EQ(tessaret_codec_frame(&test::PixelsOf(*made.object), &frame), 0);
}

TEST(CodecContract, WordsAboutAFrameThatWentWellAreNotThoseOfTheNext) {
  MadeConversion made;
  tessaret_codec_fail("a doubt");
  EXPECT_EQ(made.conversion.Words(), "a doubt");
  made.conversion.SetFrame(1);
  EXPECT_EQ(made.conversion.Words(), "");
}

TEST(CodecContract, AnElementThatIsSetIsMadeEvenByItsType) {
  MadeConversion made;
  DICOMObject* object = made.object.get();
  const std::uint8_t bytes[] = {'1', '.', '2'};
  const auto set = [&](std::uint16_t type, std::uint32_t length) {
    EXPECT_EQ(tessaret_codec_set(object, 0x0028, 0x2112, type, bytes, length), 1);
    return test::TextAt(*object, MakeTagKey(0x0028, 0x2112));
  };
  EXPECT_EQ(set(type_code::DS, 3), "1.2 ");
  EXPECT_EQ(set(type_code::UI, 3), std::string("1.2\0", 4));
  EXPECT_EQ(set(type_code::OB, 1), std::string("1\0", 2));
  EXPECT_EQ(set(type_code::LO, 2), "1.");
  EXPECT_EQ(set(0, 3), "1.2 ") << "the type stays";
  EXPECT_EQ(object->GetVR(0x0028, 0x2112)->TypeCode, type_code::LO) << "of the last one named";
  EXPECT_EQ(set(type_code::LO, 0), "");
  EXPECT_EQ(tessaret_codec_set(object, 0x0029, 0x0001, 0, nullptr, 0), 1);
  EXPECT_EQ(object->GetVR(0x0029, 0x0001)->TypeCode, type_code::UN);
  EXPECT_EQ(tessaret_codec_set(test::NewImage(1).get(), 0x0028, 0x0004, 0, bytes, 2), 0)
      << "another object";
}

TEST(CodecContract, TextIsMadeEvenByABlankAndAllElseByANul) {
  MadeConversion made;
  const auto padOf = [&](char first, char second) {
    const std::uint8_t bytes[] = {'1'};
    EXPECT_EQ(tessaret_codec_set(made.object.get(), 0x0029, 0x0001, MakeTypeCode(first, second),
                                 bytes, 1),
              1);
    return test::TextAt(*made.object, MakeTagKey(0x0029, 0x0001));
  };
  // DICOM PS3.5, 6.2: what is padded with a space; UI has a NUL, and what is no text too.
  for (const char* type : {"AE", "AS", "CS", "DA", "DS", "DT", "IS", "LO", "LT", "PN", "SH", "ST",
                           "TM", "UC", "UR", "UT"}) {
    EXPECT_EQ(padOf(type[0], type[1]), "1 ") << type;
  }
  for (const char* type : {"UI", "OB", "UN", "OW"}) {
    EXPECT_EQ(padOf(type[0], type[1]), std::string("1\0", 2)) << type;
  }
}

TEST(CodecContract, WordsThatMemoryCannotHoldAreLost) {
  MadeConversion made;
  const std::string words(1000, 'w');
  test::FailEveryAllocation([&] { tessaret_codec_fail(words.c_str()); });
  EXPECT_EQ(made.conversion.Words(), words) << "once there is memory";
}

TEST(CodecContract, AValueMayBeSetFromItself) {
  MadeConversion made;
  const VR* name = tessaret_codec_element(made.object.get(), 0x0010, 0x0010);
  ASSERT_EQ(
      tessaret_codec_set(made.object.get(), 0x0010, 0x0010, 0, tessaret_codec_bytes(name) + 1, 3),
      1);
  EXPECT_EQ(test::TextOf(*name), "oe^ ") << "the element is the same one";
}

/// An element with its value within itself, as the readers make it.
VR* NewParsed(std::string_view value) {
  auto vr = std::make_unique<VR>(0x0028, 0x3010, static_cast<std::uint32_t>(value.size()), nullptr);
  vr->AllocateValue();
  std::memcpy(vr->Data, value.data(), value.size());
  return vr.release();
}

TEST(CodecContract, ChangesThatAreKeptReplaceAParsedValue) {
  const auto object = test::NewImage(1);
  object->Push(NewParsed("here"));
  {
    CodecConversion conversion(CodecConversion::Kind::kDecompressing, *object, nullptr, 1);
    const std::uint8_t bytes[] = {'n', 'e', 'w', '!'};
    ASSERT_EQ(tessaret_codec_set(object.get(), 0x0028, 0x3010, type_code::LO, bytes, 4), 1);
    conversion.KeepChanges();
  }
  EXPECT_EQ(test::TextAt(*object, MakeTagKey(0x0028, 0x3010)), "new!");
}

TEST(CodecContract, ChangesAreTakenBackInWhateverOrderTheyCame) {
  const auto object = test::NewImage(1);
  auto* sequence = test::NewSequence(MakeTagKey(0x0028, 0x3000), {test::NewObject({})});
  object->Push(sequence);
  VR* parsed = NewParsed("here");
  object->Push(parsed);
  const std::string before = test::Outline(*object);
  const VrCode type = sequence->TypeCode;
  {
    CodecConversion conversion(CodecConversion::Kind::kDecompressing, *object, nullptr, 1);
    const std::uint8_t bytes[] = {1, 2, 3, 4};
    for (std::uint32_t length = 1; length < 4; ++length) {
      for (const std::uint16_t element :
           {std::uint16_t{0x3000}, std::uint16_t{0x0004}, std::uint16_t{0x3010},
            std::uint16_t{0x5000}, std::uint16_t{0x0001}}) {
        ASSERT_EQ(tessaret_codec_set(object.get(), 0x0028, element, type_code::OB, bytes, length),
                  1);
      }
    }
    EXPECT_EQ(sequence->ItemCount(), 0u);
    EXPECT_EQ(sequence->TypeCode, type_code::OB);
  }
  EXPECT_EQ(sequence->TypeCode, type);
  EXPECT_EQ(test::Outline(*object), before);
  EXPECT_EQ(sequence->ItemCount(), 1u);
  EXPECT_EQ(parsed->Data, parsed->Small) << "a short value lies in its own element again";
}

TEST(CodecContract, WhatAnElementKeepsBesidesItsValueComesBackToo) {
  for (const bool isKept : {true, false}) {
    const auto object = test::NewImage(1);
    VR* const name = object->GetVR(0x0010, 0x0010);
    name->Moved = 1;
    name->ValueTag = 7;
    {
      CodecConversion conversion(CodecConversion::Kind::kCompressing, *object, nullptr, 1);
      const std::uint8_t bytes[] = {'n', 'e', 'w', '!'};
      ASSERT_EQ(tessaret_codec_set(object.get(), 0x0010, 0x0010, 0, bytes, 4), 1);
      EXPECT_EQ(name->Moved, 0u) << "a value of its own";
      EXPECT_EQ(name->ValueTag, 0u);
      if (isKept) conversion.KeepChanges();
    }
    EXPECT_EQ(name->Moved, isKept ? 0u : 1u);
    EXPECT_EQ(name->ValueTag, isKept ? 0u : 7u);
  }
}

TEST(CodecContract, BytesThatAreSharedWithAnotherObjectStayThatOnes) {
  for (const bool isKept : {true, false}) {
    const auto source = test::NewImage(1);
    const std::unique_ptr<DICOMObject> sharing(source->Clone(false));
    VR* const name = sharing->GetVR(0x0010, 0x0010);
    name->StreamPosition = 132;
    const std::uint8_t* const shared = name->Data;
    {
      CodecConversion conversion(CodecConversion::Kind::kCompressing, *sharing, nullptr, 1);
      const std::uint8_t bytes[] = {'n', 'e', 'w', '!'};
      ASSERT_EQ(tessaret_codec_set(sharing.get(), 0x0010, 0x0010, 0, bytes, 4), 1);
      EXPECT_NE(name->Data, shared);
      EXPECT_NE(name->OwnsData, 0u);
      if (isKept) conversion.KeepChanges();
    }
    EXPECT_EQ(test::TextOf(*name), isKept ? "new!" : "Doe^J ");
    EXPECT_EQ(name->Data == shared, !isKept);
    EXPECT_EQ(name->OwnsData != 0, isKept);
    EXPECT_EQ(name->StreamPosition, isKept ? 0u : 132u);
    EXPECT_EQ(test::TextAt(*source, MakeTagKey(0x0010, 0x0010)), "Doe^J ");
  }
}

TEST(CodecContract, AConversionWithinAnotherGivesWayToItAgain) {
  MadeConversion outer;
  {
    MadeConversion inner;
    EXPECT_EQ(CodecConversion::Current(), &inner.conversion);
    tessaret_codec_fail("inner words");
    EXPECT_EQ(inner.conversion.Words(), "inner words");
  }
  EXPECT_EQ(CodecConversion::Current(), &outer.conversion);
  EXPECT_EQ(outer.conversion.Words(), "");
}

}  // namespace
}  // namespace tessaret
