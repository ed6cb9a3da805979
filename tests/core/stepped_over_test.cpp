// Pixel data whose bytes are stepped over: everything else is read and noted as if they had been read, and what lacks them is
// never written.
#include <filesystem>
#include <span>

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/build_kind.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// What differs between a parse that read all, with the pixel data that it has taken out of it, and one that stepped over; or
/// nothing.
std::string DifferenceOf(const Parsed& whole, const Parsed& stepped, std::uint32_t longest) {
  if (whole.result != stepped.result) return "results differ";
  if (whole.error != stepped.error) return "words differ";
  if (!(whole.stop == stepped.stop)) return "stops differ";
  if (whole.oddities != stepped.oddities) return "oddities differ";
  if (whole.result && whole.position != stepped.position) return "positions differ";
  StepOverPixels(*whole.object, longest);
  return Difference(*whole.object, *stepped.object);
}

Bytes CutAt(const Bytes& bytes, std::size_t size) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

class SteppedOver : public ::testing::TestWithParam<Encoding> {
 protected:
  /// The same for all inputs that a reader may have: a block, a stream, and a peer that gives a byte at a time.
  void ExpectAgreement(Bytes data, std::uint32_t longest, std::int32_t outEndian = kLittleEndian) {
    const auto size = static_cast<std::uint32_t>(data.size());
    MemoryBuffer block(data.data(), size, false);
    PlainMemoryBuffer stream(data.data(), size, false);
    DrippingBuffer peer(data, 1);
    for (Buffer* buffer : {static_cast<Buffer*>(&block), static_cast<Buffer*>(&stream),
                           static_cast<Buffer*>(&peer)}) {
      MemoryBuffer again(data.data(), size, false);
      again.SetOutEndian(outEndian);
      buffer->SetOutEndian(outEndian);
      const Parsed whole = ParseFrom(again, GetParam(), dictionary_.get());
      const Parsed stepped = ParseFrom(*buffer, GetParam(), dictionary_.get(), longest);
      ASSERT_EQ(DifferenceOf(whole, stepped, longest), "");
    }
  }

  const std::unique_ptr<DcmDictionary> dictionary_ =
      DictionaryOf(std::string(RandomDataSetDictionary()));
};

TEST_P(SteppedOver, DataSetsAreReadAsIfTheyWereReadWhole) {
  for (std::uint32_t seed = 1; seed <= test::Repetitions(100u, 4u); ++seed) {
    SCOPED_TRACE(seed);
    const Bytes data = RandomDataSet(GetParam(), seed, 2);
    for (const std::uint32_t longest : {0u, 8u, 24u}) ExpectAgreement(data, longest);
    ExpectAgreement(data, 0, kBigEndian);
  }
}

TEST_P(SteppedOver, DataSetsCutAtAnyByteAreReadAsIfTheyWereReadWhole) {
  DataSetBuilder native(GetParam());
  native.Element(0x7FE0, 0x0010, "OW", Pattern(300)).Element(0xFFFC, 0xFFFC, "OB", Pattern(4));
  DataSetBuilder fragments(GetParam());
  fragments.Fragments({{}, Pattern(30), Pattern(5), Pattern(300)});
  fragments.Element(0xFFFC, 0xFFFC, "OB", Pattern(4));
  for (const Bytes& data : {native.Done(), fragments.Done()}) {
    for (std::size_t size = 0; size <= data.size(); ++size) {
      SCOPED_TRACE(size);
      ExpectAgreement(CutAt(data, size), 10);
    }
  }
}

TEST_P(SteppedOver, DataSetsWithAnyByteChangedAreReadAsIfTheyWereReadWhole) {
  DataSetBuilder built(GetParam());
  built.Sequence(0x0088, 0x0200, Lengths::kDefined, Lengths::kDefined,
                 {DataSetBuilder(GetParam()).Element(0x7FE0, 0x0010, "OW", Pattern(20)).Done()});
  built.Fragments({{}, Pattern(30), Pattern(5)}).Element(0xFFFC, 0xFFFC, "OB", Pattern(4));
  Bytes data = built;
  for (std::size_t at = 0; at < data.size(); ++at) {
    const std::uint8_t was = data[at];
    for (const int value : {0x00, 0xFF, 0xFE, was ^ 0x01, was ^ 0x10}) {
      SCOPED_TRACE(std::to_string(at) + " is " + std::to_string(value));
      data[at] = static_cast<std::uint8_t>(value);
      ExpectAgreement(data, 3);
    }
    data[at] = was;
  }
}

TEST_P(SteppedOver, FilesAreLoadedAsIfTheyWereLoadedWhole) {
  MemoryFile file;
  for (std::uint32_t seed = 1; seed <= 40; ++seed) {
    SCOPED_TRACE(seed);
    file.Fill(FileOf(GetParam(), RandomDataSet(GetParam(), seed, 2)));
    const auto load = [&](std::uint32_t longest, FileBuffer* buffer) {
      DataSetCoder coder(dictionary_.get());
      coder.LongestPixelValue = longest;
      Parsed parsed;
      parsed.object = coder.LoadFile(file.Path().c_str(), true, true, buffer);
      parsed.error = ErrorOf(coder);
      parsed.stop = coder.LastStop();
      parsed.oddities = OdditiesOf(coder);
      return parsed;
    };
    PlainFileBuffer plain;
    DrippingFileBuffer dripping(3);
    for (FileBuffer* buffer : {static_cast<FileBuffer*>(nullptr), static_cast<FileBuffer*>(&plain),
                               static_cast<FileBuffer*>(&dripping)})
      EXPECT_EQ(DifferenceOf(load(kUndefinedLength, nullptr), load(6, buffer), 6), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Encodings, SteppedOver, ::testing::ValuesIn(kAllEncodings),
                         [](const auto& tested) { return NameOf(tested.param); });

Parsed ParseOver(Encoding encoding, Bytes bytes, std::uint32_t longest,
                 const RTC* dictionary = nullptr) {
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  return ParseFrom(buffer, encoding, dictionary, longest);
}

void ExpectSteppedOver(const VR& vr, const Bytes& value) {
  EXPECT_TRUE(vr.IsSteppedOver);
  EXPECT_EQ(vr.Data, nullptr);
  EXPECT_EQ(vr.Length, value.size());
  const auto first = vr.FirstBytes();
  EXPECT_EQ(Bytes(first.begin(), first.end()),
            CutAt(value, std::min<std::size_t>(256, value.size())));
}

TEST(SteppedOverPixels, ValuesAboveTheLimitAreThereWithTheirLengthAndBeginning) {
  for (const std::uint32_t size : {99u, 100u, 101u, 102u, 255u, 256u, 257u, 300u, 70000u}) {
    SCOPED_TRACE(size);
    const Parsed parsed = ParseOver(
        kExplicit, DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OB", Pattern(size)), 100);
    const VR& pixels = At(*parsed.object, 0x7FE0, 0x0010);
    if (size > 100) {
      ExpectSteppedOver(pixels, Pattern(size));
    } else {
      EXPECT_EQ(ValueText(pixels), TextOf(Pattern(size)));
    }
  }
}

TEST(SteppedOverPixels, AreAllThreeKindsAtAnyDepthAndNothingElse) {
  const Bytes value = Pattern(400);
  const auto dictionary = DictionaryOf(
      "(7fe0,0008) VR=\"OF\"\n(7fe0,0009) VR=\"OD\"\n(7fe0,0010) VR=\"OW\"\n(0088,0200) "
      "VR=\"SQ\"\n(7fe0,0011) VR=\"OB\"\n");
  constexpr std::uint16_t kElements[] = {0x0008, 0x0009, 0x0010, 0x0011};
  DataSetBuilder pixels(kImplicit);
  for (const std::uint16_t element : kElements) pixels.Element(0x7FE0, element, "OB", value);
  DataSetBuilder nested(kImplicit);
  nested.Sequence(0x0088, 0x0200, Lengths::kDefined, Lengths::kUndefined, {pixels.Done()});
  nested.Element(0x0011, 0x1001, "UN", value).Raw(pixels);
  const Parsed parsed = ParseOver(kImplicit, nested, 256, dictionary.get());
  ASSERT_TRUE(parsed.result);
  for (const DICOMObject* object :
       {static_cast<const DICOMObject*>(parsed.object.get()),
        static_cast<const DICOMObject*>(&ItemAt(*parsed.object, 0x0088, 0x0200, 0))}) {
    for (const std::uint16_t element : std::span(kElements).first(3))
      ExpectSteppedOver(At(*object, 0x7FE0, element), value);
    EXPECT_EQ(ValueText(At(*object, 0x7FE0, 0x0011)), TextOf(value));
  }
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x1001)), TextOf(value));
}

TEST(SteppedOverPixels, WhatIsCalledByATypeThatNoPixelsHaveIsReadAsEver) {
  for (const std::string_view letters : {"UT", "US", "LO", "AT", "zz"}) {
    const Parsed parsed = ParseOver(
        kExplicit, DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, letters, Pattern(400)), 0);
    EXPECT_EQ(ValueText(At(*parsed.object, 0x7FE0, 0x0010)), TextOf(Pattern(400))) << letters;
  }
}

TEST(SteppedOverPixels, LongValuesAreDroppedInPiecesWhereAStreamHasNoOtherWay) {
  const Bytes value = Pattern(200'001);
  Bytes bytes = DataSetBuilder(kExplicit)
                    .Element(0x7FE0, 0x0010, "OB", value)
                    .Element(0xFFFC, 0xFFFC, "OB", "x ");
  PlainMemoryBuffer stream(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DrippingBuffer peer(bytes, 999);
  for (Buffer* buffer : {static_cast<Buffer*>(&stream), static_cast<Buffer*>(&peer)}) {
    const Parsed parsed = ParseFrom(*buffer, kExplicit, nullptr, 100);
    ASSERT_TRUE(parsed.result);
    ExpectSteppedOver(At(*parsed.object, 0x7FE0, 0x0010), value);
    EXPECT_EQ(ValueText(At(*parsed.object, 0xFFFC, 0xFFFC)), "x ");
    EXPECT_EQ(parsed.position, bytes.size());
  }
}

TEST(SteppedOverPixels, AValueBeyondItsItemIsShortenedFirst) {
  DataSetBuilder item(kExplicit);
  item.Head(0x7FE0, 0x0010, "OB", 5000).Raw(Pattern(500));
  const Bytes bytes =
      DataSetBuilder(kExplicit)
          .Sequence(0x0088, 0x0200, Lengths::kDefined, Lengths::kDefined, {item.Done()})
          .Element(0x0099, 0x0001, "UN", "x ");
  const Parsed over = ParseOver(kExplicit, bytes, 499);
  ExpectSteppedOver(At(ItemAt(*over.object, 0x0088, 0x0200, 0), 0x7FE0, 0x0010), Pattern(500));
  EXPECT_EQ(ValueText(At(*over.object, 0x0099, 0x0001)), "x ");
  const Parsed within = ParseOver(kExplicit, bytes, 500);
  EXPECT_EQ(ValueText(At(ItemAt(*within.object, 0x0088, 0x0200, 0), 0x7FE0, 0x0010)),
            TextOf(Pattern(500)));
}

TEST(SteppedOverPixels, AreNotMetWherePixelsAreNotWanted) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Element(0x7FE0, 0x0010, "OW", Pattern(400))
                          .Element(0xFFFC, 0xFFFC, "OB", "x ");
  const Parsed parsed = ParseFile(bytes, {.loadPixels = false, .longestPixelValue = 0});
  EXPECT_EQ(parsed.stop.why, Why::kPixelData);
  EXPECT_FALSE(At(*parsed.object, 0x7FE0, 0x0010).IsSteppedOver);
  EXPECT_EQ(parsed.object->GetVR(0xFFFC, 0xFFFC), nullptr);
}

/// An image whose pixels were stepped over, native or in fragments.
std::unique_ptr<DICOMDataObject> NewOver(bool native) {
  DataSetBuilder built(kExplicit);
  built.Element(0x0010, 0x0010, "PN", "Doe^John");
  if (native) {
    built.Element(0x7FE0, 0x0010, "OW", Pattern(400));
  } else {
    built.Fragments({{}, Pattern(400)});
  }
  Parsed parsed = ParseOver(kExplicit, built, 100);
  return std::move(parsed.object);
}

TEST(SteppedOverPixels, NoSaveLeavesThemOut) {
  const TempFolder folder;
  for (const bool native : {true, false}) {
    const char* const words = native ? "VR(7FE0,0010) was stepped over when it was read"
                                     : "VR(FFFE,E000) was stepped over when it was read";
    for (std::int32_t mode = 1; mode <= 3; ++mode) {
      const auto object = NewOver(native);
      // In the implicit form what holds items loses nothing by its name, and so neither may this.
      for (const VrCode type : {type_code::OW, type_code::SQ, type_code::kNone}) {
        At(*object, 0x7FE0, 0x0010).TypeCode = type;
        DataSetCoder coder;
        EXPECT_FALSE(coder.SaveKeeping(folder.File("out").c_str(), mode, *object));
        EXPECT_STREQ(coder.ErrorText(), words);
        std::vector<std::uint8_t> bytes;
        EXPECT_FALSE(coder.SaveToMemory(mode, *object, bytes));
        EXPECT_STREQ(coder.ErrorText(), words);
        const std::unique_ptr<DICOMObject> clone(object->Clone(false));
        EXPECT_FALSE(coder.SaveFile(folder.File("out").c_str(), mode, *clone));
        EXPECT_STREQ(coder.ErrorText(), words);
      }
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(SteppedOverPixels, AnItemThatHangsOnThemDoesNotStandForThem) {
  const auto object = NewOver(true);
  At(*object, 0x7FE0, 0x0010).AddItem(new DICOMDataObject);
  std::vector<std::uint8_t> bytes;
  EXPECT_FALSE(DataSetCoder().SaveToMemory(3, *object, bytes));
}

TEST(SteppedOverPixels, ANewValueTakesTheirPlace) {
  const auto object = NewOver(true);
  VR& pixels = At(*object, 0x7FE0, 0x0010);
  pixels.ReplaceValue("ab", 2);
  EXPECT_FALSE(pixels.IsSteppedOver);
  std::vector<std::uint8_t> bytes;
  EXPECT_TRUE(DataSetCoder().SaveToMemory(3, *object, bytes));
}

}  // namespace
}  // namespace tessaret::test
