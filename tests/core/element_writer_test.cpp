// The writers of data sets: what becomes of each element, byte for byte.
#include "core/element_writer.h"

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/memory_file.h"

namespace tessaret::test {
namespace {

/// An element of one tag through a writer.
Bytes EncodeElement(Encoding encoding, VrCode type, const Bytes& value,
                    const RTC* dictionary = nullptr) {
  DICOMObject object;
  object.Push(NewElement(0x0010, 0x0010, type, value));
  return Encode(encoding, object, dictionary);
}

Bytes EncodeElement(Encoding encoding, VrCode type, std::string_view text,
                    const RTC* dictionary = nullptr) {
  return EncodeElement(encoding, type, BytesOf(text), dictionary);
}

TEST(ElementWriter, WritesAnElementInEachEncoding) {
  EXPECT_EQ(EncodeElement(kImplicit, type_code::PN, "Doe^J "),
            (Bytes{0x10, 0x00, 0x10, 0x00, 0x06, 0x00, 0x00, 0x00, 'D', 'o', 'e', '^', 'J', ' '}));
  EXPECT_EQ(EncodeElement(kExplicit, type_code::PN, "Doe^J "),
            (Bytes{0x10, 0x00, 0x10, 0x00, 'P', 'N', 0x06, 0x00, 'D', 'o', 'e', '^', 'J', ' '}));
  EXPECT_EQ(EncodeElement(kBig, type_code::PN, "Doe^J "),
            (Bytes{0x00, 0x10, 0x00, 0x10, 'P', 'N', 0x00, 0x06, 'D', 'o', 'e', '^', 'J', ' '}));
}

TEST(ElementWriter, WritesValuesAsTheyLieInMemoryInEveryByteOrder) {
  EXPECT_EQ(EncodeElement(kBig, type_code::US, Bytes{0x01, 0x02}),
            (Bytes{0x00, 0x10, 0x00, 0x10, 'U', 'S', 0x00, 0x02, 0x01, 0x02}));
}

TEST(ElementWriter, WritesALongLengthFieldForFiveTypes) {
  for (const char* letters : {"OB", "OW", "UN", "UT"}) {
    const VrCode type = MakeTypeCode(letters[0], letters[1]);
    const auto first = static_cast<std::uint8_t>(letters[0]);
    const auto second = static_cast<std::uint8_t>(letters[1]);
    EXPECT_EQ(EncodeElement(kExplicit, type, Bytes{1, 2}),
              (Bytes{0x10, 0x00, 0x10, 0x00, first, second, 0, 0, 0x02, 0x00, 0x00, 0x00, 1, 2}));
    EXPECT_EQ(EncodeElement(kBig, type, Bytes{1, 2}),
              (Bytes{0x00, 0x10, 0x00, 0x10, first, second, 0, 0, 0x00, 0x00, 0x00, 0x02, 1, 2}));
  }
  for (const char* letters : {"OF", "OD", "UC", "UR", "SV", "DS", "zz"}) {
    const auto first = static_cast<std::uint8_t>(letters[0]);
    const auto second = static_cast<std::uint8_t>(letters[1]);
    EXPECT_EQ(EncodeElement(kExplicit, MakeTypeCode(letters[0], letters[1]), Bytes{1, 2}),
              (Bytes{0x10, 0x00, 0x10, 0x00, first, second, 0x02, 0x00, 1, 2}));
  }
}

TEST(ElementWriter, WritesElementsInTheOrderOfTagsAndEmptiesTheObject) {
  DICOMObject object;
  object.Push(NewElement(0x0020, 0x0010, type_code::SH, "2 "));
  object.Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
  EXPECT_EQ(Encode(kExplicit, object), DataSetBuilder(kExplicit)
                                           .Element(0x0008, 0x0060, "CS", "MR")
                                           .Element(0x0020, 0x0010, "SH", "2 ")
                                           .Done());
  EXPECT_TRUE(object.IsEmpty());
}

TEST(ElementWriter, LeavesTheMetaGroupAndGroupLengthsOut) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    object.Push(NewElement(0x0000, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
    object.Push(NewElement(0x0000, 0x0002, type_code::UI, "1."));
    object.Push(NewElement(0x0002, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
    object.Push(NewElement(0x0002, 0x0010, type_code::UI, "1."));
    object.Push(NewElement(0x0008, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
    object.Push(NewElement(0x0008, 0x0060, type_code::CS, "MR"));
    DataSetBuilder expected(encoding);
    // A command set, which is implicit, needs its own group length.
    if (encoding == kImplicit) expected.Element(0x0000, 0x0000, "UL", Bytes{9, 0, 0, 0});
    expected.Element(0x0000, 0x0002, "UI", "1.").Element(0x0008, 0x0060, "CS", "MR");
    EXPECT_EQ(Encode(encoding, object), expected.Done());
  }
}

TEST(ElementWriter, LeavesThemOutWithinItemsToo) {
  for (const Encoding encoding : kAllEncodings) {
    auto item = std::make_unique<DICOMObject>();
    item->Push(NewElement(0x0002, 0x0002, type_code::UI, "1."));
    item->Push(NewElement(0x0008, 0x0000, type_code::UL, Bytes{9, 0, 0, 0}));
    DICOMObject object;
    object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
    object.Push(item.release());
    EXPECT_EQ(Encode(encoding, object),
              DataSetBuilder(encoding)
                  .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {{}})
                  .Done());
  }
}

// Types that are not known.

TEST(ElementWriter, LooksAnUnknownTypeUp) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n");
  const Bytes name = DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", "A ");
  EXPECT_EQ(EncodeElement(kExplicit, type_code::kNone, "A ", dictionary.get()), name);
  // What a reader called UN, because it knew no better, is looked up again.
  EXPECT_EQ(EncodeElement(kExplicit, type_code::UN, "A ", dictionary.get()), name);
  EXPECT_EQ(EncodeElement(kExplicit, type_code::LO, "A ", dictionary.get()),
            DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "LO", "A ").Done());
}

TEST(ElementWriter, WritesUNForATypeThatNobodyKnows) {
  const auto dictionary = DictionaryOf("(0010,0020) VR=\"LO\"\n");
  const Bytes unknown = DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UN", "A ");
  for (const VrCode type : {type_code::kNone, type_code::UN}) {
    EXPECT_EQ(EncodeElement(kExplicit, type, "A "), unknown);
    EXPECT_EQ(EncodeElement(kExplicit, type, "A ", dictionary.get()), unknown);
  }
}

TEST(ElementWriter, KeepsBytesThatTheDictionaryTakesForASequenceUnderTheNameUN) {
  // As SQ without items they would have to go.
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"SQ\"\n");
  const Bytes value = DataSetBuilder(kImplicit).Item(0);
  for (const VrCode type : {type_code::kNone, type_code::UN, type_code::SQ}) {
    EXPECT_EQ(EncodeElement(kExplicit, type, value, dictionary.get()),
              DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UN", value).Done());
    EXPECT_EQ(EncodeElement(kImplicit, type, value, dictionary.get()),
              DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "UN", value).Done());
  }
}

TEST(ElementWriter, KeepsALongValueUnderTheNameUNWhereItsOwnTypeCannotStateTheLength) {
  // DICOM PS3.5, 6.2.2: that is what UN is for.
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"DS\"\n");
  const Bytes value = Pattern(65536);
  for (const VrCode type : {type_code::kNone, type_code::UN}) {
    EXPECT_EQ(EncodeElement(kExplicit, type, value, dictionary.get()),
              DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UN", value).Done());
    const Bytes shorter = Pattern(65534);
    EXPECT_EQ(EncodeElement(kExplicit, type, shorter, dictionary.get()),
              DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "DS", shorter).Done());
  }
}

// Lengths.

TEST(ElementWriter, PadsAnOddValueWithNulWhateverItsType) {
  for (const VrCode type :
       {type_code::PN, type_code::LO, type_code::UI, type_code::DS, type_code::AE, type_code::SH}) {
    EXPECT_EQ(EncodeElement(kImplicit, type, "odd"),
              (Bytes{0x10, 0x00, 0x10, 0x00, 0x04, 0x00, 0x00, 0x00, 'o', 'd', 'd', 0x00}));
  }
  EXPECT_EQ(
      EncodeElement(kExplicit, type_code::OB, "odd"),
      (Bytes{0x10, 0x00, 0x10, 0x00, 'O', 'B', 0, 0, 0x04, 0x00, 0x00, 0x00, 'o', 'd', 'd', 0x00}));
  EXPECT_EQ(EncodeElement(kBig, type_code::LO, "odd"),
            (Bytes{0x00, 0x10, 0x00, 0x10, 'L', 'O', 0x00, 0x04, 'o', 'd', 'd', 0x00}));
}

TEST(ElementWriter, WritesAnEmptyElementAsItsHead) {
  EXPECT_EQ(EncodeElement(kExplicit, type_code::PN, ""),
            (Bytes{0x10, 0x00, 0x10, 0x00, 'P', 'N', 0x00, 0x00}));
  EXPECT_EQ(EncodeElement(kExplicit, type_code::OB, ""),
            (Bytes{0x10, 0x00, 0x10, 0x00, 'O', 'B', 0, 0, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(EncodeElement(kImplicit, type_code::PN, ""),
            (Bytes{0x10, 0x00, 0x10, 0x00, 0, 0, 0, 0}));
}

TEST(ElementWriter, TruncatesTheLengthButNotTheValueOfALongValueInAShortForm) {
  // 65538 is 65536 + 2; 65535 is odd and with its pad byte 65536.
  const Bytes value = Pattern(65538);
  EXPECT_EQ(EncodeElement(kExplicit, type_code::LT, value),
            Joined({{0x10, 0x00, 0x10, 0x00, 'L', 'T', 0x02, 0x00}, value}));
  const Bytes odd = Pattern(65535);
  EXPECT_EQ(EncodeElement(kExplicit, type_code::LT, odd),
            Joined({{0x10, 0x00, 0x10, 0x00, 'L', 'T', 0x00, 0x00}, odd, {0}}));
  EXPECT_EQ(EncodeElement(kImplicit, type_code::LT, value),
            Joined({{0x10, 0x00, 0x10, 0x00, 0x02, 0x00, 0x01, 0x00}, value}));
}

TEST(ElementWriter, RefusesAnElementThatHasALengthAndNoBytes) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    auto* vr = new VR(0x7FE0, 0x0010, 512, nullptr);
    vr->TypeCode = type_code::OW;
    object.Push(vr);
    object.Push(NewElement(0x7FE0, 0x0011, type_code::LO, "x "));
    DataSetCoder coder;
    CollectingBuffer buffer;
    EXPECT_FALSE(encoding == kImplicit ? coder.ImplicitLittleOut(object, buffer)
                                       : coder.ExplicitLittleOut(object, buffer));
    EXPECT_STREQ(coder.ErrorText(), "VR(7FE0,0010) has a length but no value");
    EXPECT_TRUE(object.IsEmpty());
    EXPECT_TRUE(buffer.Written().empty());
  }
}

TEST(ElementWriter, RefusesALengthThatWouldReadAsUndefined) {
  // 0xFFFFFFFF is odd: with its pad byte the length would be 2^32, which no field states.
  std::uint8_t byte = 7;
  for (const Encoding encoding : kAllEncodings) {
    for (const VrCode type : {type_code::OB, type_code::LO, type_code::UN}) {
      DICOMObject object;
      auto* vr = new VR(0x0010, 0x0010, 0xFFFFFFFF, &byte, false);
      vr->TypeCode = type;
      object.Push(vr);
      DataSetCoder coder;
      CollectingBuffer buffer;
      EXPECT_FALSE(encoding == kImplicit ? coder.ImplicitLittleOut(object, buffer)
                                         : coder.ExplicitLittleOut(object, buffer));
      EXPECT_STREQ(coder.ErrorText(), "VR(0010,0010) is too long to be written");
      EXPECT_TRUE(buffer.Written().empty());
    }
  }
}

TEST(ElementWriter, RefusesAnElementThatWouldBeReadAsABoundary) {
  for (const Encoding encoding : kAllEncodings) {
    for (const std::uint16_t element : {kItemElement, kItemDelimiterElement}) {
      auto item = std::make_unique<DICOMObject>();
      item->Push(NewElement(0xFFFE, element, type_code::UN, ""));
      DICOMObject object;
      object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
      object.Push(item.release());
      DataSetCoder coder;
      CollectingBuffer buffer;
      EXPECT_FALSE(encoding == kImplicit ? coder.ImplicitLittleOut(object, buffer)
                                         : coder.ExplicitLittleOut(object, buffer));
      EXPECT_EQ(ErrorOf(coder), Format("VR(FFFE,%4.4X) cannot stand in a data set", element));
    }
  }
  DICOMObject object;
  object.Push(NewElement(0xFFFE, 0xE0DD, type_code::UN, ""));
  DataSetCoder coder;
  CollectingBuffer buffer;
  EXPECT_FALSE(coder.File_ParseDCMIntoRawVR(object, buffer, 101));
  EXPECT_STREQ(coder.ErrorText(), "VR(FFFE,E0DD) cannot stand in a data set");
}

// UIDs.

TEST(ElementWriter, ReplacesABlankAtTheEndOfAUidByNulWhereItIsStored) {
  Bytes stored = BytesOf("1.2 ");
  for (const Encoding encoding : kAllEncodings) {
    stored.back() = ' ';
    DICOMObject object;
    auto* vr = new VR(0x0010, 0x0010, 4, stored.data(), false);
    vr->TypeCode = type_code::UI;
    object.Push(vr);
    EXPECT_EQ(
        Encode(encoding, object),
        DataSetBuilder(encoding).Element(0x0010, 0x0010, "UI", Bytes{'1', '.', '2', 0}).Done());
    EXPECT_EQ(stored, (Bytes{'1', '.', '2', 0}));
  }
}

TEST(ElementWriter, LeavesOtherBlanksAlone) {
  EXPECT_EQ(EncodeElement(kExplicit, type_code::LO, "1.2 "),
            DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "LO", "1.2 ").Done());
  EXPECT_EQ(EncodeElement(kExplicit, type_code::UI, "1  "),
            DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UI", Bytes{'1', ' ', 0, 0}).Done());
  EXPECT_EQ(EncodeElement(kExplicit, type_code::UI, ""),
            DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UI", "").Done());
}

TEST(ElementWriter, CorrectsAUidThatTheDictionaryMakesOne) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"UI\"\n");
  EXPECT_EQ(
      EncodeElement(kImplicit, type_code::kNone, "1.2 ", dictionary.get()),
      DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "UI", Bytes{'1', '.', '2', 0}).Done());
}

TEST(ElementWriter, LooksUNUpInTheExplicitFormOnly) {
  // In the implicit form it stays UN, and a UN is no UID whose blank could be wrong.
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"UI\"\n");
  EXPECT_EQ(EncodeElement(kImplicit, type_code::UN, "1.2 ", dictionary.get()),
            DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "UI", "1.2 ").Done());
  EXPECT_EQ(
      EncodeElement(kExplicit, type_code::UN, "1.2 ", dictionary.get()),
      DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UI", Bytes{'1', '.', '2', 0}).Done());
}

// Sequences.

void PushSequence(DICOMObject& object, std::uint16_t group, std::uint16_t element, VrCode type,
                  std::vector<std::unique_ptr<DICOMObject>> items) {
  object.Push(NewElement(group, element, type, ""));
  for (auto& item : items) object.Push(item.release());
}

std::unique_ptr<DICOMObject> ItemWith(VR* vr) {
  auto item = std::make_unique<DICOMObject>();
  item->Push(vr);
  return item;
}

TEST(ElementWriter, WritesSequencesWithUndefinedLengthsThroughout) {
  for (const Encoding encoding : kAllEncodings) {
    std::vector<std::unique_ptr<DICOMObject>> inner;
    inner.push_back(ItemWith(NewElement(0x0010, 0x0010, type_code::PN, "A ")));
    auto middle = std::make_unique<DICOMObject>();
    PushSequence(*middle, 0x0040, 0x0275, type_code::SQ, std::move(inner));
    std::vector<std::unique_ptr<DICOMObject>> outer;
    outer.push_back(std::move(middle));
    outer.push_back(std::make_unique<DICOMObject>());
    DICOMObject object;
    PushSequence(object, 0x0008, 0x1140, type_code::SQ, std::move(outer));
    // The length that a reader kept says nothing about what is written.
    At(object, 0x0008, 0x1140).Length = 4711;

    constexpr Lengths kUndefinedLengths = Lengths::kUndefined;
    const Bytes leaf = DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "A ");
    const Bytes nested = DataSetBuilder(encoding).Sequence(0x0040, 0x0275, kUndefinedLengths,
                                                           kUndefinedLengths, {leaf});
    EXPECT_EQ(Encode(encoding, object),
              DataSetBuilder(encoding)
                  .Sequence(0x0008, 0x1140, kUndefinedLengths, kUndefinedLengths, {nested, {}})
                  .Done());
  }
}

TEST(ElementWriter, WritesTheBytesOfASequenceInExplicitForm) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  object.Push(ItemWith(NewElement(0x0010, 0x0010, type_code::PN, "A ")).release());
  EXPECT_EQ(Encode(kExplicit, object),
            (Bytes{
                0x08, 0x00, 0x40, 0x11, 'S',  'Q',  0,    0,    0xFF, 0xFF, 0xFF, 0xFF,  // sequence
                0xFE, 0xFF, 0x00, 0xE0, 0xFF, 0xFF, 0xFF, 0xFF,                          // item
                0x10, 0x00, 0x10, 0x00, 'P',  'N',  0x02, 0x00, 'A',  ' ',  0xFE, 0xFF,
                0x0D, 0xE0, 0x00, 0x00, 0x00, 0x00,              // end of the item
                0xFE, 0xFF, 0xDD, 0xE0, 0x00, 0x00, 0x00, 0x00,  // end of the sequence
            }));
}

TEST(ElementWriter, ASequenceWithoutItemsHasLengthZero) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
    // As a reader leaves a sequence whose bytes held no item.
    At(object, 0x0008, 0x1140).Length = 8;
    EXPECT_EQ(Encode(encoding, object),
              DataSetBuilder(encoding).Head(0x0008, 0x1140, "SQ", 0).Done());
  }
}

TEST(ElementWriter, AnEmptyListOfItemsStillGetsItsDelimiter) {
  for (const Encoding encoding : kAllEncodings) {
    DICOMObject object;
    object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
    At(object, 0x0008, 0x1140).Items = new ItemArray;
    EXPECT_EQ(Encode(encoding, object),
              DataSetBuilder(encoding).Head(0x0008, 0x1140, "SQ", kNoLength).EndSequence().Done());
  }
}

TEST(ElementWriter, AnItemThatIsNullGoesOutAsAnEmptyOne) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
  auto item = std::make_unique<DICOMObject>();
  item->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  auto* items = new ItemArray;
  At(object, 0x0008, 0x1140).Items = items;
  items->Add(nullptr);
  items->Add(item.release());
  const auto expectedIn = [](Encoding encoding) {
    const Bytes inside = DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "A ");
    return DataSetBuilder(encoding)
        .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {Bytes{}, inside})
        .Done();
  };
  const MemoryFile file;
  EXPECT_TRUE(DataSetCoder().SaveKeeping(file.Path().c_str(), 1, object));
  EXPECT_EQ(ReadBytes(file.Path()), expectedIn(kImplicit));
  EXPECT_EQ(Encode(kExplicit, object), expectedIn(kExplicit));
}

TEST(ElementWriter, AnElementWithItemsIsASequenceWhateverItsTypeSays) {
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"LO\"\n");
  for (const VrCode type : {type_code::kNone, type_code::UN, type_code::LO, type_code::OB}) {
    for (const RTC* known :
         {static_cast<const RTC*>(nullptr), static_cast<const RTC*>(dictionary.get())}) {
      DICOMObject object;
      object.Push(NewElement(0x0008, 0x1140, type, ""));
      object.Push(new DICOMObject);
      EXPECT_EQ(Encode(kExplicit, object, known),
                DataSetBuilder(kExplicit)
                    .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {{}})
                    .Done());
    }
  }
}

TEST(ElementWriter, ItemsCountAndNotBytesWhereAnElementHasBoth) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x1140, type_code::SQ, "bytes "));
  object.Push(new DICOMObject);
  EXPECT_EQ(Encode(kImplicit, object),
            DataSetBuilder(kImplicit)
                .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {{}})
                .Done());
}

std::unique_ptr<DICOMObject> NestedObjects(int levels) {
  auto object = std::make_unique<DICOMObject>();
  for (int level = 0; level < levels; ++level) {
    auto outer = std::make_unique<DICOMObject>();
    outer->Push(NewElement(0x0008, 0x1140, type_code::SQ, ""));
    outer->Push(object.release());
    object = std::move(outer);
  }
  return object;
}

TEST(ElementWriter, WritesSequencesNestedToTheLimitAndRefusesOneMore) {
  for (const bool implicit : {true, false}) {
    DataSetCoder coder;
    CollectingBuffer buffer;
    const auto write = [&](DICOMObject& object) {
      return implicit ? coder.ImplicitLittleOut(object, buffer)
                      : coder.ExplicitLittleOut(object, buffer);
    };
    // As deep as a reader goes, so that whatever is written can be read again.
    const auto atLimit = NestedObjects(256);
    EXPECT_TRUE(write(*atLimit));
    const auto beyond = NestedObjects(257);
    EXPECT_FALSE(write(*beyond));
    EXPECT_STREQ(coder.ErrorText(), "Sequences are nested too deeply");
    EXPECT_TRUE(beyond->IsEmpty());
  }
}

TEST(ElementWriter, WritesAnObjectThatItKeepsToTheSameLimit) {
  const auto atLimit = NestedObjects(256);
  const auto beyond = NestedObjects(257);
  for (const std::int32_t mode : {1, 2, 3}) {
    DataSetCoder coder;
    EXPECT_TRUE(coder.SaveKeeping("/dev/null", mode, *atLimit));
    EXPECT_FALSE(coder.SaveKeeping("/dev/null", mode, *beyond));
    EXPECT_STREQ(coder.ErrorText(), "Sequences are nested too deeply");
    EXPECT_FALSE(beyond->IsEmpty());
  }
}

// Where the bytes go.

TEST(ElementWriter, QueuesForAnyStreamAndLeavesTheFlushToTheCaller) {
  DICOMObject object;
  object.Push(NewElement(0x0011, 0x0001, type_code::OB, Pattern(4 << 20)));
  DataSetCoder coder;
  class Silent : public Buffer {
   public:
    int SendBinary(const void*, std::uint32_t) override {
      ++sent;
      return 1;
    }
    int sent = 0;
  } buffer;
  EXPECT_TRUE(coder.ExplicitLittleOut(object, buffer));
  EXPECT_EQ(buffer.sent, 0);
  EXPECT_EQ(buffer.OutSize, 12 + (4 << 20));
}

TEST(ElementWriter, SetsTheByteOrderOfTheStreamForEachEncoding) {
  DICOMObject object;
  DataSetCoder coder;
  CollectingBuffer buffer;
  EXPECT_TRUE(coder.ExplicitBigOut(object, buffer));
  EXPECT_EQ(buffer.OutEndian, kBigEndian);
  EXPECT_TRUE(coder.ExplicitLittleOut(object, buffer));
  EXPECT_EQ(buffer.OutEndian, kLittleEndian);
  EXPECT_TRUE(coder.ExplicitBigOut(object, buffer));
  EXPECT_TRUE(coder.ImplicitLittleOut(object, buffer));
  EXPECT_EQ(buffer.OutEndian, kLittleEndian);
}

}  // namespace
}  // namespace tessaret::test
