// The reader of files: meta group, the switch to the data set's syntax, and pixel data that is not wanted. Without preamble:
// the stream begins with its first element.
#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"

namespace tessaret::test {
namespace {

Bytes PatientIn(Encoding encoding) {
  return DataSetBuilder(encoding)
      .Element(0x0008, 0x0060, "CS", "MR")
      .Element(0x0010, 0x0010, "PN", "A ")
      .Number(0x0028, 0x0010, 0x0102);
}

class SyntaxSwitch : public ::testing::TestWithParam<std::tuple<Encoding, Encoding>> {};

TEST_P(SyntaxSwitch, TheDataSetIsReadInTheSyntaxThatTheMetaGroupNames) {
  const auto [metaIn, dataIn] = GetParam();  // a meta group is little endian in any case
  DataSetBuilder elements(metaIn);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(dataIn)));
  elements.Element(0x0002, 0x0012, "UI", "1.");
  const Bytes meta = DataSetBuilder(metaIn)
                         .Head(0x0002, 0x0000, "UL", 4)
                         .U32(static_cast<std::uint32_t>(elements.Size()))
                         .Raw(elements);
  const Bytes data = PatientIn(dataIn);
  const Parsed parsed = ParseFile(Joined({meta, data}), {.start = metaIn});
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object),
            "(0002,0000) (0002,0001) (0002,0010) (0002,0012) (0008,0060) (0010,0010) (0028,0010)");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "A ");
  // Values stay in the order of the stream.
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0028, 0x0010)),
            dataIn == kBig ? "\x01\x02" : "\x02\x01");
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x0060).StreamPosition, meta.size());
}

INSTANTIATE_TEST_SUITE_P(FileReader, SyntaxSwitch,
                         ::testing::Combine(::testing::Values(kImplicit, kExplicit),
                                            ::testing::ValuesIn(kAllEncodings)),
                         [](const auto& tested) {
                           return std::string(NameOf(std::get<0>(tested.param))) + "Meta" +
                                  NameOf(std::get<1>(tested.param)) + "Data";
                         });

TEST(FileReader, SetsTheByteOrderOfTheStreamByTheCodeAndTheSwitch) {
  Bytes bytes = Joined({MetaGroup(SyntaxUidOf(kBig)), PatientIn(kBig)});
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false, kBigEndian);
  EXPECT_TRUE(ParseFileFrom(buffer, {.start = kExplicit}).result);
  EXPECT_EQ(buffer.InEndian, kBigEndian);
  MemoryBuffer empty(nullptr, 0, false, kBigEndian);
  ParseFileFrom(empty, {.start = kImplicit});
  EXPECT_EQ(empty.InEndian, kLittleEndian);
  ParseFileFrom(empty, {.start = kBig});
  EXPECT_EQ(empty.InEndian, kBigEndian);
}

TEST(FileReader, TakesEveryCompressedSyntaxForExplicitLittleEndian) {
  for (const char* uid :
       {"1.2.840.10008.1.2.5", "1.2.840.10008.1.2.4.50", "1.2.840.10008.1.2.4.100"}) {
    EXPECT_TRUE(ParseFile(Joined({MetaGroup(uid), PatientIn(kExplicit)})).result) << uid;
  }
}

TEST(FileReader, ASyntaxMayEndWithOneBlankOrNuls) {
  for (const std::string& uid :
       {std::string("1.2.840.10008.1.2 "), std::string("1.2.840.10008.1.2\0", 18),
        std::string("1.2.840.10008.1.2\0\0\0", 20), std::string("1.2.840.10008.1.2 \0", 19)}) {
    EXPECT_TRUE(ParseFile(Joined({MetaGroup(uid), PatientIn(kImplicit)})).result);
  }
}

TEST(FileReader, AnUnknownSyntaxEndsTheParseBehindTheMetaGroup) {
  for (const std::string& uid :
       {std::string("1.2.3"), std::string("1.2.840.10008.1.2  "), std::string(" 1.2.840.10008.1.2"),
        std::string(), std::string("1.2.840.10008.1.2.4.500")}) {
    const Bytes meta = MetaGroup(uid);
    const Parsed parsed = ParseFile(Joined({meta, PatientIn(kExplicit)}));
    EXPECT_FALSE(parsed.result) << uid;
    EXPECT_EQ(parsed.error, std::nullopt);
    EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001) (0002,0010) (0002,0012)");
    EXPECT_EQ(parsed.stop.why, Why::kUnknownSyntax);
    EXPECT_EQ(parsed.stop.position, meta.size());
  }
}

TEST(FileReader, ReadsSixtyThreeCharactersOfASyntaxAtMost) {
  // Six bits of the length count. 64 and 0x3F is 0: what is too long is not cut to a UID that it begins with.
  const std::string known = "1.2.840.10008.1.2";
  EXPECT_FALSE(
      ParseFile(Joined({MetaGroup(known + std::string(64 - 17, '\0')), PatientIn(kImplicit)}))
          .result);
  EXPECT_TRUE(
      ParseFile(Joined({MetaGroup(known + std::string(62 - 17, '\0')), PatientIn(kImplicit)}))
          .result);
  // 80 and 0x3F is 16.
  EXPECT_FALSE(
      ParseFile(Joined({MetaGroup(known + std::string(80 - 17, '\0')), PatientIn(kImplicit)}))
          .result);
}

TEST(FileReader, EachParseForgetsHowTheOneBeforeItEnded) {
  Bytes unknown = Joined({MetaGroup("1.2.3"), PatientIn(kExplicit)});
  Bytes known = Joined({MetaGroup(SyntaxUidOf(kExplicit)), PatientIn(kExplicit)});
  DataSetCoder coder;
  coder.FileMode = true;
  DICOMDataObject object;
  MemoryBuffer bad(unknown.data(), static_cast<std::uint32_t>(unknown.size()), false);
  EXPECT_FALSE(coder.File_ParseRawVRIntoDCM(bad, object, 101, true));
  EXPECT_EQ(coder.LastStop().why, Why::kUnknownSyntax);
  MemoryBuffer good(known.data(), static_cast<std::uint32_t>(known.size()), false);
  EXPECT_TRUE(coder.File_ParseRawVRIntoDCM(good, object, 101, true));
  EXPECT_EQ(coder.LastStop().why, Why::kNone);
}

TEST(FileReader, AMetaGroupAloneIsAWholeStream) {
  const Parsed parsed = ParseFile(MetaGroup("1.2.3"));
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(CountOf(*parsed.object), 4u);
}

TEST(FileReader, WithoutFileModeTheMetaGroupSaysNothing) {
  // Its elements are ordinary ones, but for the syntax, which is not kept.
  const Parsed parsed = ParseFile(Joined({MetaGroup(SyntaxUidOf(kImplicit)), PatientIn(kExplicit)}),
                                  {.fileMode = false});
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object),
            "(0002,0000) (0002,0001) (0002,0012) (0008,0060) (0010,0010) (0028,0010)");
}

// The counted length of the meta group. It starts at the number in (0002,0000) less 4, and each element takes 8 and its
// length; at less than 1 the group is over.

/// A meta group that states `groupLength`: version (8 + 2 counted), syntax (8 + 18 + ...), class UID.
Bytes CountedMeta(std::uint32_t groupLength, Encoding dataIn) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(dataIn)));
  elements.Element(0x0002, 0x0012, "UI", "1.");
  return MetaGroupOf(elements, groupLength);
}

TEST(FileReader, ASyntaxThatEndsTheCountedGroupTakesEffectAndDoesNotStay) {
  // 4 for the first, 10 for the version, 26 for the syntax: 40 makes the syntax the last one, 41 does not.
  const Bytes data = DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ");
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  const Parsed last = ParseFile(Joined({MetaGroupOf(elements, 40), data}));
  EXPECT_TRUE(last.result);
  EXPECT_EQ(TagsOf(*last.object), "(0002,0000) (0002,0001) (0010,0010)");
  const Parsed notLast = ParseFile(Joined({MetaGroupOf(elements, 41), data}));
  EXPECT_TRUE(notLast.result);
  EXPECT_EQ(TagsOf(*notLast.object), "(0002,0000) (0002,0001) (0002,0010) (0010,0010)");
  EXPECT_EQ(ValueText(At(*notLast.object, 0x0010, 0x0010)), "A ");
}

TEST(FileReader, ASyntaxWithoutALengthThatEndsTheCountedGroupDoesNotStayEither) {
  DataSetBuilder elements(kExplicit);
  elements.Sequence(0x0002, 0x0010, Lengths::kUndefined, Lengths::kUndefined, {Bytes{}});
  // 4 for the first and 8 for the head: 12 makes it the last one, 13 does not.
  const Parsed last = ParseFile(MetaGroupOf(elements, 12));
  EXPECT_TRUE(last.result);
  EXPECT_EQ(TagsOf(*last.object), "(0002,0000)");
  const Parsed notLast = ParseFile(MetaGroupOf(elements, 13));
  EXPECT_TRUE(notLast.result);
  EXPECT_EQ(TagsOf(*notLast.object), "(0002,0000) (0002,0010)");
  EXPECT_EQ(At(*notLast.object, 0x0002, 0x0010).ItemCount(), 1u);
}

TEST(FileReader, ASequenceInTheMetaGroupThatBreaksOffEndsTheParseAndIsNotCounted) {
  // The count would make it the last one, which does not stay.
  const Bytes elements =
      DataSetBuilder(kExplicit).Head(0x0002, 0x0010, "SQ", kNoLength).Item().Tag(0x0010, 0x0010);
  const Parsed parsed = ParseFile(MetaGroupOf(elements, 12));
  EXPECT_FALSE(parsed.result);
  // The heads of group length and sequence take 12 bytes each, that of the item 8.
  EXPECT_EQ(parsed.stop, (ParseStop{Why::kTruncated, 12 + 12 + 8, 0x0010, 0x0010}));
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0010)");
  EXPECT_EQ(At(*parsed.object, 0x0002, 0x0010).ItemCount(), 1u);
}

TEST(FileReader, TheSyntaxOfAnElementBeforeStaysWhenASecondOneEndsTheGroup) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kExplicit)));  // 8 + 20
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));  // 8 + 18
  const Bytes data = DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ");
  const Parsed parsed = ParseFile(Joined({MetaGroupOf(elements, 4 + 28 + 26), data}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0002, 0x0010)), TextOf(Evened(SyntaxUidOf(kExplicit))));
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "A ");
}

TEST(FileReader, BehindTheCountedGroupItsElementsAreReadInTheNewSyntax) {
  // The count ends with the syntax, so that (0002,0012) is read as part of the data set: in implicit form.
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  const Bytes data = DataSetBuilder(kImplicit)
                         .Element(0x0002, 0x0012, "UI", "1.")
                         .Element(0x0010, 0x0010, "PN", "A ");
  const Parsed parsed = ParseFile(Joined({MetaGroupOf(elements, 40), data}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001) (0002,0012) (0010,0010)");
}

TEST(FileReader, ASyntaxBehindTheCountedGroupIsNeitherKeptNorFollowed) {
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  // 14 counts the version only.
  const Parsed parsed = ParseFile(Joined({MetaGroupOf(elements, 14), PatientIn(kExplicit)}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001) (0008,0060) (0010,0010) (0028,0010)");
}

TEST(FileReader, ASyntaxBehindTheCountedGroupThatBreaksOffEndsTheParse) {
  const Bytes elements = DataSetBuilder(kExplicit)
                             .Element(0x0002, 0x0001, "OB", Bytes{0, 1})
                             .Head(0x0002, 0x0010, "UI", 18);
  // 14 counts the version only.
  const Bytes bytes = MetaGroupOf(elements, 14);
  const Parsed parsed = ParseFile(bytes);
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.stop, (ParseStop{Why::kTruncated, 12 + 14, 0x0002, 0x0010}));
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001)");
  DataSetCoder coder;
  EXPECT_EQ(coder.LoadMemory(bytes.data(), bytes.size(), true, false), nullptr);
}

TEST(FileReader, AGroupLengthThatIsTooLargeEndsWithTheFirstElementAboveTheGroup) {
  for (const std::uint32_t length : {1000u, 32767u, 65535u}) {
    const Parsed parsed = ParseFile(Joined({CountedMeta(length, kBig), PatientIn(kBig)}));
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ(CountOf(*parsed.object), 7u);
  }
}

TEST(FileReader, GroupThreeIsAboveTheMetaGroup) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes data = DataSetBuilder(encoding)
                           .Element(0x0003, 0x0001, "LO", "B ")
                           .Element(0x0010, 0x0010, "PN", "A ");
    const Parsed parsed = ParseFile(Joined({CountedMeta(1000, encoding), data}));
    ASSERT_TRUE(parsed.result) << NameOf(encoding);
    EXPECT_EQ(TagsOf(*parsed.object),
              "(0002,0000) (0002,0001) (0002,0010) (0002,0012) (0003,0001) (0010,0010)");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0003, 0x0001)), "B ");
  }
}

TEST(FileReader, SixteenBitsOfTheGroupLengthCount) {
  // 0x00010028 counts as 0x28 = 40: the syntax is the last.
  DataSetBuilder elements(kExplicit);
  elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
  elements.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  const Parsed parsed =
      ParseFile(Joined({MetaGroupOf(elements, 0x00010028),
                        DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ")}));
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001) (0010,0010)");
}

TEST(FileReader, WithoutAGroupLengthTheGroupEndsWithItsFirstElement) {
  // The second element is outside already: a syntax there is not followed, one in front is.
  DataSetBuilder late(kExplicit);
  late.Element(0x0002, 0x0001, "OB", Bytes{0, 1})
      .Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  const Parsed ignored = ParseFile(Joined({late, PatientIn(kExplicit)}));
  ASSERT_TRUE(ignored.result);
  EXPECT_EQ(TagsOf(*ignored.object), "(0002,0001) (0008,0060) (0010,0010) (0028,0010)");
  DataSetBuilder first(kExplicit);
  first.Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
  const Parsed followed = ParseFile(Joined({first, PatientIn(kImplicit)}));
  ASSERT_TRUE(followed.result);
  EXPECT_EQ(TagsOf(*followed.object), "(0008,0060) (0010,0010) (0028,0010)");
}

TEST(FileReader, AnEmptyOrShortGroupLengthCountsAsZero) {
  for (const std::string& value : {std::string(), std::string("\xFF", 1)}) {
    DataSetBuilder built(kExplicit);
    built.Element(0x0002, 0x0000, "UL", value)
        .Element(0x0002, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
    const Parsed parsed = ParseFile(Joined({built, PatientIn(kImplicit)}));
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0008,0060) (0010,0010) (0028,0010)");
  }
}

TEST(FileReader, AnyElement0010BelowGroup0003NamesTheSyntax) {
  for (const std::uint16_t group : std::initializer_list<std::uint16_t>{0, 1, 2}) {
    DataSetBuilder elements(kExplicit);
    elements.Element(0x0002, 0x0000, "UL", Bytes{0xFF, 0, 0, 0});
    elements.Element(group, 0x0010, "UI", Evened(SyntaxUidOf(kImplicit)));
    const Parsed parsed = ParseFile(Joined({elements, PatientIn(kImplicit)}));
    EXPECT_TRUE(parsed.result) << group;
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "A ");
  }
}

TEST(FileReader, AnUnreadableSyntaxIsAnUnknownOne) {
  // (0002,0010) as a sequence, and one of undefined length with an item.
  for (const bool undefined : {false, true}) {
    DataSetBuilder elements(kExplicit);
    elements.Element(0x0002, 0x0001, "OB", Bytes{0, 1});
    elements.Sequence(0x0002, 0x0010, undefined ? Lengths::kUndefined : Lengths::kDefined,
                      Lengths::kUndefined, {{}});
    const Parsed parsed = ParseFile(Joined({MetaGroupOf(elements, 1000), PatientIn(kExplicit)}));
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.stop.why, Why::kUnknownSyntax);
    EXPECT_EQ(At(*parsed.object, 0x0002, 0x0010).ItemCount(), 1u);
    EXPECT_EQ(parsed.object->SequenceBytes, 16u + 16);
  }
}

TEST(FileReader, AnItemBehindTheMetaGroupLandsInTheElementReadLast) {
  // (0002,0012) of undefined length holds elements instead of items, the last of them not the highest.
  const Bytes elements = DataSetBuilder(kExplicit)
                             .Head(0x0002, 0x0012, "UI", 0)
                             .Head(0x0002, 0x0013, "UN", kNoLength)
                             .Element(0x0020, 0x0010, "SH", "1 ")
                             .Element(0x0010, 0x0010, "PN", "A ")
                             .EndSequence();
  const Bytes item = DataSetBuilder(kExplicit).Item().Element(0x0008, 0x0060, "CS", "MR").EndItem();
  const Parsed parsed = ParseFile(Joined({MetaGroupOf(elements, 1000), item}));
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0012) (0002,0013) (0010,0010) (0020,0010)");
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).ItemCount(), 1u);
}

TEST(FileReader, TheMetaGroupWorksForAnObjectThatPassesItsElementsOn) {
  Bytes bytes = Joined({MetaGroup(SyntaxUidOf(kImplicit)), PatientIn(kImplicit)});
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DICOMObject target;
  DICOMDataObject passing;
  passing.PushTarget = &target;
  DataSetCoder coder;
  coder.FileMode = true;
  EXPECT_TRUE(coder.File_ParseRawVRIntoDCM(buffer, passing, 101, true));
  EXPECT_TRUE(passing.IsEmpty());
  EXPECT_EQ(CountOf(target), 7u);
  EXPECT_EQ(ValueText(At(target, 0x0010, 0x0010)), "A ");
}

TEST(FileReader, AnObjectThatTakesNothingEndsTheParse) {
  // Its elements would go round in a circle; none is lost without a word.
  for (const bool fileMode : {true, false}) {
    Bytes bytes = MetaGroup(SyntaxUidOf(kExplicit));
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    DICOMDataObject one;
    DICOMDataObject other;
    one.PushTarget = &other;
    other.PushTarget = &one;
    DataSetCoder coder;
    coder.FileMode = fileMode;
    EXPECT_FALSE(coder.File_ParseRawVRIntoDCM(buffer, one, 101, true));
    EXPECT_EQ(coder.LastStop(), (ParseStop{Why::kOrphanItem, 0, 0x0002, 0x0000}));
    EXPECT_TRUE(one.IsEmpty());
    EXPECT_TRUE(other.IsEmpty());
  }
}

/// A meta group of one sequence of one item, without a group length.
Bytes MetaSequence() {
  return DataSetBuilder(kExplicit).Sequence(0x0002, 0x0012, Lengths::kUndefined,
                                            Lengths::kUndefined, {Bytes{}});
}

TEST(FileReader, AnObjectThatTakesNothingTakesNoSequenceOfTheMetaGroupEither) {
  Bytes bytes = MetaSequence();
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DICOMDataObject one;
  DICOMDataObject other;
  one.PushTarget = &other;
  other.PushTarget = &one;
  DataSetCoder coder;
  coder.FileMode = true;
  EXPECT_FALSE(coder.File_ParseRawVRIntoDCM(buffer, one, 101, true));
  EXPECT_EQ(coder.LastStop(), (ParseStop{Why::kOrphanItem, 0, 0x0002, 0x0012}));
}

TEST(FileReader, ASequenceOfTheMetaGroupThatIsPassedOnIsNotTheLastElementHere) {
  const auto sequenceSize = static_cast<std::uint32_t>(MetaSequence().size());
  Bytes bytes = Joined({MetaSequence(), DataSetBuilder(kExplicit).Item(0)});
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DICOMObject target;
  DICOMDataObject passing;
  passing.PushTarget = &target;
  DataSetCoder coder;
  coder.FileMode = true;
  // An item goes by the last element of the object that is read into, and there is none.
  EXPECT_FALSE(coder.File_ParseRawVRIntoDCM(buffer, passing, 101, true));
  EXPECT_EQ(coder.LastStop(), (ParseStop{Why::kOrphanItem, sequenceSize, 0xFFFE, 0xE000}));
  EXPECT_EQ(passing.LastPushedVR, nullptr);
  EXPECT_EQ(target.LastPushedVR, &At(target, 0x0002, 0x0012));
  EXPECT_EQ(At(target, 0x0002, 0x0012).ItemCount(), 1u);
}

// Pixel data that is not wanted.

TEST(FileReader, WithoutPixelsTheParseEndsAtPixelDataWithItsLength) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes meta = MetaGroup(SyntaxUidOf(encoding));
    const Bytes before = PatientIn(encoding);
    const Bytes native = DataSetBuilder(encoding)
                             .Element(0x7FE0, 0x0010, "OW", Pattern(100))
                             .Element(0xFFFC, 0xFFFC, "OB", "x ");
    const Parsed parsed = ParseFile(Joined({meta, before, native}), {.loadPixels = false});
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.error, std::nullopt);
    EXPECT_EQ(parsed.stop,
              (ParseStop{Why::kPixelData, meta.size() + before.size(), 0x7FE0, 0x0010}));
    const VR& pixels = At(*parsed.object, 0x7FE0, 0x0010);
    EXPECT_EQ(pixels.Data, nullptr);
    EXPECT_EQ(pixels.Length, 100u);
    EXPECT_EQ(pixels.Items, nullptr);
    EXPECT_EQ(pixels.StreamPosition, meta.size() + before.size());
    EXPECT_EQ(parsed.object->GetVR(0xFFFC, 0xFFFC), nullptr);
    EXPECT_EQ(CountOf(*parsed.object), 4u + 3 + 1);
  }
}

TEST(FileReader, WithoutPixelsEncapsulatedDataKeepsTheUndefinedLength) {
  const Bytes data = DataSetBuilder(kExplicit).Fragments({{}, Pattern(10)});
  const Parsed parsed =
      ParseFile(Joined({MetaGroup("1.2.840.10008.1.2.4.50"), data}), {.loadPixels = false});
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Length, kNoLength);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Data, nullptr);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Items, nullptr);
}

TEST(FileReader, WithoutPixelsTheValueNeedNotBeThere) {
  const Parsed parsed = ParseFile(DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OW", 0x7FFFFFFE),
                                  {.loadPixels = false, .fileMode = false});
  EXPECT_EQ(parsed.stop.why, Why::kPixelData);
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Length, 0x7FFFFFFEu);
}

TEST(FileReader, WithoutPixelsTheirLengthIsNotHeldAgainstTheStream) {
  Bytes bytes = DataSetBuilder(kExplicit).Element(0x7FE0, 0x0010, "OW", Pattern(100));
  for (const bool loadPixels : {false, true}) {
    TotallingBuffer buffer(bytes, 50);
    const Parsed parsed = ParseFileFrom(buffer, {.loadPixels = loadPixels, .fileMode = false});
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.stop.why, loadPixels ? Why::kTooLong : Why::kPixelData);
    EXPECT_EQ(parsed.error, loadPixels ? std::optional<std::string>(
                                             "VR(7FE0,0010) Length[100] > [50] available bytes")
                                       : std::nullopt);
    EXPECT_EQ(CountOf(*parsed.object), loadPixels ? 0u : 1u);
  }
}

TEST(FileReader, PixelDataOfAnIconAlwaysLoads) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes icon = DataSetBuilder(encoding).Element(0x7FE0, 0x0010, "OW", Pattern(16));
    const Bytes data = DataSetBuilder(encoding)
                           .Sequence(0x0088, 0x0200, Lengths::kUndefined, Lengths::kDefined, {icon})
                           .Element(0x7FE0, 0x0010, "OW", Pattern(100));
    const Parsed parsed =
        ParseFile(data, {.start = encoding, .loadPixels = false, .fileMode = false});
    EXPECT_EQ(parsed.stop.why, Why::kPixelData);
    EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0088, 0x0200, 0), 0x7FE0, 0x0010)),
              TextOf(Pattern(16)));
    EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).Data, nullptr);
  }
}

TEST(FileReader, WithPixelsEverythingIsRead) {
  const Bytes data = DataSetBuilder(kExplicit)
                         .Element(0x7FE0, 0x0010, "OW", Pattern(100))
                         .Element(0xFFFC, 0xFFFC, "OB", "x ");
  const Parsed parsed = ParseFile(data, {.fileMode = false});
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x7FE0, 0x0010)), TextOf(Pattern(100)));
  EXPECT_EQ(ValueText(At(*parsed.object, 0xFFFC, 0xFFFC)), "x ");
}

// Sequences without letters.

constexpr std::string_view kNoLetters{"\0\0", 2};

TEST(FileReader, ASequenceWithLettersOfZeroHasTwoBytesOfFillingAndNoLength) {
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  const Bytes data = DataSetBuilder(kExplicit)
                         .Tag(0x0008, 0x1140)
                         .Raw(BytesOf(kNoLetters))
                         .Raw({0xAB, 0xCD})
                         .Item()
                         .Element(0x0010, 0x0010, "PN", "in")
                         .EndItem()
                         .EndSequence()
                         .Element(0x0010, 0x0010, "PN", "out ");
  const Parsed parsed = ParseFile(data, {.fileMode = false, .dictionary = dictionary.get()});
  ASSERT_TRUE(parsed.result);
  const VR& sequence = At(*parsed.object, 0x0008, 0x1140);
  EXPECT_EQ(sequence.TypeCode, type_code::SQ);
  EXPECT_EQ(sequence.Length, 0u);
  EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "in");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "out ");
}

TEST(FileReader, WithinAnItemSuchASequenceHasALength) {
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  const Bytes inner =
      DataSetBuilder(kExplicit).Tag(0x0008, 0x1140).Raw(BytesOf(kNoLetters)).U16(0).U32(8).Item(0);
  const Bytes data =
      DataSetBuilder(kExplicit)
          .Sequence(0x0040, 0x0275, Lengths::kUndefined, Lengths::kUndefined, {inner})
          .Element(0x0050, 0x0010, "PN", "out ");
  const Parsed parsed = ParseFile(data, {.fileMode = false, .dictionary = dictionary.get()});
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(ItemAt(*parsed.object, 0x0040, 0x0275, 0), 0x0008, 0x1140).ItemCount(), 1u);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0050, 0x0010)), "out ");
}

// Values of a stream that is not written little endian.

TEST(FileReader, TurnsValuesRoundInEveryFormButNotWithinImplicitItems) {
  const auto dictionary = DictionaryOf("(0028,0010) VR=\"US\"\n(0028,0009) VR=\"UL\"\n");
  for (const Encoding encoding : kAllEncodings) {
    const Bytes values = DataSetBuilder(encoding)
                             .Element(0x0028, 0x0009, "UL", "ABCD")
                             .Element(0x0028, 0x0010, "US", "AB");
    Bytes bytes = DataSetBuilder(encoding)
                      .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {values})
                      .Raw(values);
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    buffer.SetOutEndian(kBigEndian);
    const Parsed parsed = ParseFileFrom(
        buffer, {.start = encoding, .fileMode = false, .dictionary = dictionary.get()});
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0028, 0x0009)), "DCBA");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0028, 0x0010)), "BA");
    const DICOMObject& item = ItemAt(*parsed.object, 0x0008, 0x1140, 0);
    EXPECT_EQ(ValueText(At(item, 0x0028, 0x0010)), encoding == kImplicit ? "AB" : "BA");
  }
}

TEST(FileReader, TurnsValuesOfTheMetaGroupRoundInEveryForm) {
  const auto dictionary = DictionaryOf("(0002,0001) VR=\"US\"\n(0028,0010) VR=\"US\"\n");
  for (const Encoding encoding : {kImplicit, kExplicit}) {
    // As OB, and where the dictionary does not know it, the group length is not turned round and counts as it stands.
    Bytes bytes = DataSetBuilder(encoding)
                      .Element(0x0002, 0x0000, "OB", Bytes{14, 0, 0, 0})
                      .Element(0x0002, 0x0001, "US", "AB");
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    buffer.SetOutEndian(kBigEndian);
    const Parsed parsed =
        ParseFileFrom(buffer, {.start = encoding, .dictionary = dictionary.get()});
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0002, 0x0001)), "BA") << NameOf(encoding);
  }
}

// Structure at the outermost level.

TEST(FileReader, KnowsStructuralTagsInEveryByteOrder) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes meta = MetaGroup(SyntaxUidOf(encoding));
    const Parsed delimited = ParseFile(Joined(
        {meta, PatientIn(encoding), DataSetBuilder(encoding).EndItem(), PatientIn(encoding)}));
    EXPECT_TRUE(delimited.result);
    EXPECT_EQ(delimited.position, meta.size() + PatientIn(encoding).size() + 8);
    const Parsed stray =
        ParseFile(Joined({meta, DataSetBuilder(encoding).Tag(0xFFFE, 0x1234).U32(0)}));
    EXPECT_FALSE(stray.result);
    EXPECT_EQ(stray.stop, (ParseStop{Why::kStrayTag, meta.size(), 0xFFFE, 0x1234}));
  }
}

TEST(FileReader, RefusesALengthInTheMetaGroupAboveTheTotalOfTheStreamWithWords) {
  Bytes bytes = MetaGroup(SyntaxUidOf(kImplicit));
  TotallingBuffer enough(bytes, 18);
  EXPECT_TRUE(ParseFileFrom(enough, {}).result);
  TotallingBuffer less(bytes, 17);
  const Parsed parsed = ParseFileFrom(less, {});
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.error, "VR(0002,0010) Length[18] > [17] available bytes");
  EXPECT_EQ(TagsOf(*parsed.object), "(0002,0000) (0002,0001)");
}

TEST(FileReader, AStreamThatEndsWithinTheMetaGroupGivesWhatCameBefore) {
  const Bytes meta = MetaGroup(SyntaxUidOf(kExplicit));
  for (std::size_t size = 1; size < meta.size(); ++size) {
    const Parsed parsed =
        ParseFile(Bytes(meta.begin(), meta.begin() + static_cast<std::ptrdiff_t>(size)));
    // Ends of elements: 12, 12 + 14, and 28 for the syntax.
    const bool whole = size == 12 || size == 26 || size == 54;
    EXPECT_EQ(parsed.result, whole) << size;
    EXPECT_EQ(parsed.stop.why, whole ? Why::kNone : Why::kTruncated);
    EXPECT_EQ(CountOf(*parsed.object), size < 12 ? 0u : size < 26 ? 1u : size < 54 ? 2u : 3u);
  }
}

}  // namespace
}  // namespace tessaret::test
