// What the readers take although hardly anybody can have meant it: that it is read as before, and noted.
#include "core/parse_oddity.h"

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"

namespace tessaret::test {
namespace {

using Kind = ParseOddity::Kind;
using Oddities = std::vector<ParseOddity>;

Bytes Name(Encoding encoding = kExplicit) {
  return DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", "A ");
}

/// Encapsulated pixel data whose fragments are `content`.
Bytes Pixels(const Bytes& content) {
  return DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OB", kNoLength).Raw(content).EndSequence();
}

TEST(ParseOddity, ADataSetAsItShouldBeHasNone) {
  const Bytes nested = DataSetBuilder(kExplicit)
                           .Head(0x0008, 0x1140, "SQ", kNoLength)
                           .Item()
                           .Raw(Name())
                           .EndItem()
                           .EndSequence()
                           .Head(0x0008, 0x1199, "SQ", 18)
                           .Item(10)
                           .Raw(Name())
                           .Head(0x0009, 0x1001, "UN", kNoLength)
                           .Item(0)
                           .EndSequence();
  EXPECT_EQ(Parse(kExplicit, nested).oddities, Oddities());
  const Bytes fragments = DataSetBuilder(kExplicit).Item(0).Item(2).Raw({1, 2});
  EXPECT_EQ(Parse(kExplicit, Pixels(fragments)).oddities, Oddities());
}

TEST(ParseOddity, AValueLongerThanItsItem) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", 18)
                          .Item(10)
                          .Head(0x0010, 0x0020, "LO", 40)
                          .Raw({'a', 'b'})
                          .Raw(Name());
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0020).Length, 2u);
  EXPECT_EQ(parsed.oddities, (Oddities{{Kind::kCutByView, 20, 0x0010, 0x0020}}));
}

TEST(ParseOddity, AnItemThatEndsElsewhereThanItsLengthSays) {
  // It claims 14 bytes where its sequence has 10 left, or ends by a delimiter after 18 of its 30 bytes.
  const Bytes beyond =
      DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", 18).Item(14).Raw(Name()).Raw(Name());
  EXPECT_EQ(Parse(kExplicit, beyond).oddities,
            (Oddities{{Kind::kWrongLength, 12, 0xFFFE, 0xE000}}));
  const Bytes early = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(30)
                          .Raw(Name())
                          .EndItem()
                          .EndSequence();
  EXPECT_EQ(Parse(kExplicit, early).oddities, (Oddities{{Kind::kWrongLength, 12, 0xFFFE, 0xE000}}));
}

TEST(ParseOddity, ASequenceThatEndsBeforeItsLengthDoes) {
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", 26).Item(0).EndSequence().Raw(Name());
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_EQ(TagsOf(*parsed.object), "(0008,1140) (0010,0010)");
  EXPECT_EQ(parsed.oddities, (Oddities{{Kind::kWrongLength, 0, 0x0008, 0x1140}}));
}

TEST(ParseOddity, AnElementInASequenceButInNoItem) {
  for (const std::uint32_t length : {10u, kNoLength}) {
    const Bytes bytes = DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", length).Raw(Name());
    const Parsed parsed = Parse(kExplicit, bytes);
    EXPECT_EQ(TagsOf(*parsed.object), "(0008,1140) (0010,0010)");
    EXPECT_EQ(parsed.oddities, (Oddities{{Kind::kElementInSequence, 12, 0x0010, 0x0010}}));
  }
}

TEST(ParseOddity, AnItemThatIsInNoSequence) {
  for (const Bytes& name :
       {Name(), Bytes(DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", ""))}) {
    const Bytes bytes = DataSetBuilder(kExplicit).Raw(name).Item(0);
    const Oddities expected = {{Kind::kItemOutside, name.size(), 0xFFFE, 0xE000}};
    EXPECT_EQ(Parse(kExplicit, bytes).oddities, expected);
    EXPECT_EQ(ParseFile(bytes, {.fileMode = false}).oddities, expected);
    const Bytes within = DataSetBuilder(kExplicit)
                             .Head(0x0008, 0x1140, "SQ", kNoLength)
                             .Item()
                             .Raw(bytes)
                             .EndItem()
                             .EndSequence();
    EXPECT_EQ(Parse(kExplicit, within).oddities,
              (Oddities{{Kind::kItemOutside, 20 + name.size(), 0xFFFE, 0xE000}}));
  }
}

TEST(ParseOddity, SomethingElseAmongFragments) {
  const Bytes content = DataSetBuilder(kExplicit)
                            .Item(0)
                            .Tag(0x0008, 0x0005)
                            .U32(2)
                            .Raw({'a', 'b'})
                            .Item(2)
                            .Raw({1, 2});
  const Parsed parsed = Parse(kExplicit, Pixels(content));
  EXPECT_EQ(At(*parsed.object, 0x7FE0, 0x0010).ItemCount(), 2u);
  EXPECT_EQ(parsed.oddities, (Oddities{{Kind::kStrayFragment, 20, 0x0008, 0x0005}}));
}

TEST(ParseOddity, AnUndefinedLengthOfATypeThatHasNone) {
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x0009, 0x1001, "OB", kNoLength).Item(0).EndSequence();
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, (Oddities{{Kind::kNotASequence, 0, 0x0009, 0x1001}}));
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n");
  const Bytes implicit =
      DataSetBuilder(kImplicit).Head(0x0010, 0x0010, "PN", kNoLength).Item(0).EndSequence();
  EXPECT_EQ(Parse(kImplicit, implicit, dictionary.get()).oddities,
            (Oddities{{Kind::kNotASequence, 0, 0x0010, 0x0010}}));
  EXPECT_EQ(Parse(kImplicit, implicit).oddities, Oddities());
}

TEST(ParseOddity, ADelimiterOutsideAllSequences) {
  for (const bool ofItem : {true, false}) {
    DataSetBuilder bytes(kExplicit);
    bytes.Raw(Name());
    ofItem ? bytes.EndItem() : bytes.EndSequence();
    const std::uint16_t element = ofItem ? 0xE00D : 0xE0DD;
    const Oddities expected = {{Kind::kStrayDelimiter, 10, 0xFFFE, element}};
    EXPECT_EQ(Parse(kExplicit, bytes).oddities, expected);
    EXPECT_EQ(ParseFile(bytes, {.fileMode = false}).oddities, expected);
  }
}

TEST(ParseOddity, AnUndefinedLengthThatEndsWithWhatIsAroundIt) {
  // An item without its delimiter in a sequence that has one, and both without.
  const Bytes item = DataSetBuilder(kExplicit).Item().Raw(Name());
  for (const bool sequenceHasLength : {true, false}) {
    DataSetBuilder inner(kExplicit);
    inner.Head(0x0008, 0x1199, "SQ", sequenceHasLength ? 18 : kNoLength).Raw(item);
    const Bytes content = inner;
    const auto size = static_cast<std::uint32_t>(content.size());
    const Bytes bytes =
        DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", size + 8).Item(size).Raw(content);
    EXPECT_EQ(Parse(kExplicit, bytes).oddities,
              (Oddities{{Kind::kNoDelimiter, 12 + 8 + 12, 0xFFFE, 0xE000}}));
  }
  // The sequence alone, behind whole items.
  const Bytes items = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1199, "SQ", kNoLength)
                          .Item()
                          .Raw(Name())
                          .EndItem()
                          .Item(10)
                          .Raw(Name());
  const auto size = static_cast<std::uint32_t>(items.size());
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", size + 8).Item(size).Raw(items);
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, (Oddities{{Kind::kNoDelimiter, 20, 0x0008, 0x1199}}));
  // Where the stream itself ends there, that is what is noted.
  EXPECT_EQ(Parse(kExplicit, items).oddities, Oddities());
}

TEST(ParseOddity, ADelimiterBeforeSaysNothingOfTheLevelsBehindIt) {
  const Bytes inner = DataSetBuilder(kExplicit).Head(0x0008, 0x1199, "SQ", kNoLength);
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Raw(Name())
                          .EndSequence()
                          .Head(0x0008, 0x1140, "SQ", 20)
                          .Item(12)
                          .Raw(inner);
  DataSetCoder coder;
  DICOMDataObject object;
  // Behind the stray delimiter the same coder reads on.
  Bytes copy = bytes;
  MemoryBuffer buffer(copy.data(), static_cast<std::uint32_t>(copy.size()), false);
  EXPECT_TRUE(
      coder.File_ParseRawVRIntoDCM(buffer, object, static_cast<std::int32_t>(kExplicit), true));
  EXPECT_TRUE(
      coder.File_ParseRawVRIntoDCM(buffer, object, static_cast<std::int32_t>(kExplicit), true));
  EXPECT_EQ(OdditiesOf(coder), (Oddities{{Kind::kStrayDelimiter, 10, 0xFFFE, 0xE0DD},
                                         {Kind::kNoDelimiter, 38, 0x0008, 0x1199}}));
}

TEST(ParseOddity, FragmentsThatEndWithWhatIsAroundThem) {
  const Bytes icon =
      DataSetBuilder(kExplicit).Head(0x7FE0, 0x0010, "OB", kNoLength).Item(0).Item(2).Raw({1, 2});
  const auto size = static_cast<std::uint32_t>(icon.size());
  const Bytes bytes =
      DataSetBuilder(kExplicit).Head(0x0088, 0x0200, "SQ", size + 8).Item(size).Raw(icon);
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, (Oddities{{Kind::kNoDelimiter, 20, 0x7FE0, 0x0010}}));
}

TEST(ParseOddity, ADelimiterOfTheOtherKindOrWithALength) {
  const Bytes crossed = DataSetBuilder(kExplicit)
                            .Head(0x0008, 0x1140, "SQ", kNoLength)
                            .Item()
                            .Raw(Name())
                            .EndSequence()
                            .EndSequence();
  EXPECT_EQ(Parse(kExplicit, crossed).oddities,
            (Oddities{{Kind::kWrongDelimiter, 30, 0xFFFE, 0xE0DD}}));
  const Bytes early = DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", kNoLength).EndItem();
  EXPECT_EQ(Parse(kExplicit, early).oddities,
            (Oddities{{Kind::kWrongDelimiter, 12, 0xFFFE, 0xE00D}}));
  const Bytes lengthy =
      DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", kNoLength).Tag(0xFFFE, 0xE0DD).U32(4);
  EXPECT_EQ(Parse(kExplicit, lengthy).oddities,
            (Oddities{{Kind::kWrongDelimiter, 12, 0xFFFE, 0xE0DD}}));
  const Bytes other = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Tag(0xFFFE, 0xE0FF)
                          .U32(kNoLength)
                          .EndItem()
                          .EndSequence();
  EXPECT_EQ(Parse(kExplicit, other).oddities,
            (Oddities{{Kind::kWrongDelimiter, 12, 0xFFFE, 0xE0FF}}));
}

TEST(ParseOddity, ATransferSyntaxBehindTheMetaHeader) {
  const Bytes bytes = DataSetBuilder(kExplicit).Raw(Name()).Element(0x0002, 0x0010, "UI", "1.2.");
  const Parsed parsed = ParseFile(bytes, {.fileMode = false});
  EXPECT_EQ(TagsOf(*parsed.object), "(0010,0010)");
  EXPECT_EQ(parsed.oddities, (Oddities{{Kind::kLateSyntax, 10, 0x0002, 0x0010}}));
}

TEST(ParseOddity, ZerosTakeNoOthersPlace) {
  // They read as elements (0000,0000) without letters, which replace one another.
  const Bytes bytes = DataSetBuilder(kExplicit).Raw(Bytes(24, 0)).Raw(Name()).Raw(Name());
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, (Oddities{{Kind::kTwice, 34, 0x0010, 0x0010}}));
}

TEST(ParseOddity, NoLettersOfAType) {
  const Bytes bytes = DataSetBuilder(kExplicit).Tag(0x0010, 0x0010).Raw({0, 0, 2, 0, 'A', ' '});
  const Oddities expected = {{Kind::kNoLetters, 0, 0x0010, 0x0010}};
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, expected);
  EXPECT_EQ(ParseFile(bytes, {.fileMode = false}).oddities, expected);
  // In a file such a sequence has no length, only filling.
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  const Bytes sequence =
      DataSetBuilder(kExplicit).Tag(0x0008, 0x1140).Raw({0, 0, 0, 0}).EndSequence();
  EXPECT_EQ(ParseFile(sequence, {.fileMode = false, .dictionary = dictionary.get()}).oddities,
            (Oddities{{Kind::kNoLetters, 0, 0x0008, 0x1140}}));
}

TEST(ParseOddity, ATagThatIsThereTwice) {
  // Short, where elements are taken in a row; longer than that; sequences; and not next to one another.
  const Bytes longer =
      DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "UT", std::string(100, 'x'));
  const Bytes sequence = DataSetBuilder(kExplicit).Head(0x0010, 0x0010, "SQ", 0);
  const Bytes other = DataSetBuilder(kExplicit).Element(0x0010, 0x0020, "LO", "B ");
  for (const Bytes& second : {Name(), longer, sequence}) {
    for (const Bytes& between : {Bytes{}, other}) {
      const Bytes bytes = DataSetBuilder(kExplicit).Raw(Name()).Raw(between).Raw(second);
      const Oddities expected = {{Kind::kTwice, 10 + between.size(), 0x0010, 0x0010}};
      EXPECT_EQ(Parse(kExplicit, bytes).oddities, expected);
      EXPECT_EQ(ParseFile(bytes, {.fileMode = false}).oddities, expected);
    }
  }
  // And where elements are taken in a row, for which enough has to follow.
  const Bytes rest = DataSetBuilder(kExplicit).Element(0x0010, 0x4000, "LT", std::string(60, 'x'));
  const Bytes row = DataSetBuilder(kExplicit).Raw(Name()).Raw(Name()).Raw(rest);
  EXPECT_EQ(Parse(kExplicit, row).oddities, (Oddities{{Kind::kTwice, 10, 0x0010, 0x0010}}));
  // Once at each level is not twice.
  const Bytes nested =
      DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", 18).Item(10).Raw(Name()).Raw(Name());
  EXPECT_EQ(Parse(kExplicit, nested).oddities, Oddities());
}

TEST(ParseOddity, AnObjectThatPassesItsElementsOnSaysNothingOfThoseThatWereThere) {
  DICOMDataObject target;
  DICOMDataObject object;
  object.PushTarget = &target;
  Bytes bytes = Name();
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  DataSetCoder coder;
  EXPECT_TRUE(coder.ExplicitLittleIn(buffer, object));
  EXPECT_EQ(TagsOf(target), "(0010,0010)");
  EXPECT_EQ(OdditiesOf(coder), Oddities());
}

TEST(ParseOddity, TheFirstOfEachKindIsKeptInTheOrderOfTheStream) {
  const Bytes bytes = DataSetBuilder(kExplicit).Raw(Name()).Raw(Name()).Item(0).Raw(Name()).Item(0);
  EXPECT_EQ(Parse(kExplicit, bytes).oddities, (Oddities{{Kind::kTwice, 10, 0x0010, 0x0010},
                                                        {Kind::kItemOutside, 20, 0xFFFE, 0xE000}}));
}

TEST(ParseOddity, EachDataSetAndEachLoadStartsWithoutAny) {
  Bytes odd = DataSetBuilder(kExplicit).Raw(Name()).Raw(Name());
  Bytes good = Name();
  DataSetCoder coder;
  DICOMDataObject object;
  const auto read = [&](Bytes& bytes) {
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    DICOMDataObject into;
    EXPECT_TRUE(coder.ExplicitLittleIn(buffer, into));
    return OdditiesOf(coder).size();
  };
  EXPECT_EQ(read(odd), 1u);
  EXPECT_EQ(read(good), 0u);
  EXPECT_EQ(read(odd), 1u);
  EXPECT_NE(coder.LoadMemory(good.data(), good.size(), true, false), nullptr);
  EXPECT_EQ(OdditiesOf(coder), Oddities());
  EXPECT_NE(coder.LoadMemory(odd.data(), odd.size(), true, false), nullptr);
  EXPECT_EQ(OdditiesOf(coder).size(), 1u);
}

}  // namespace
}  // namespace tessaret::test
