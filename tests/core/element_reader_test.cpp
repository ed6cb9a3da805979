// The readers of data sets: headers, values, nesting, and what they do with streams that end early or make no sense.
#include "core/element_reader.h"

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"
#include "support/build_kind.h"
#include "support/small_stack.h"

namespace tessaret::test {
namespace {

// (0010,0010) Patient's Name, 6 bytes "Doe^J ", in the three encodings.
const Bytes kNameImplicit = {0x10, 0x00, 0x10, 0x00, 0x06, 0x00, 0x00,
                             0x00, 'D',  'o',  'e',  '^',  'J',  ' '};
const Bytes kNameExplicit = {0x10, 0x00, 0x10, 0x00, 'P', 'N', 0x06,
                             0x00, 'D',  'o',  'e',  '^', 'J', ' '};
const Bytes kNameBig = {0x00, 0x10, 0x00, 0x10, 'P', 'N', 0x00, 0x06, 'D', 'o', 'e', '^', 'J', ' '};

void ExpectName(const Parsed& parsed, VrCode type) {
  ASSERT_TRUE(parsed.result);
  ASSERT_EQ(TagsOf(*parsed.object), "(0010,0010)");
  const VR& vr = At(*parsed.object, 0x0010, 0x0010);
  EXPECT_EQ(vr.Length, 6u);
  EXPECT_EQ(ValueText(vr), "Doe^J ");
  EXPECT_EQ(vr.TypeCode, type);
  EXPECT_EQ(vr.OwnsData, 1u);
  EXPECT_EQ(vr.Items, nullptr);
  EXPECT_EQ(vr.StreamPosition, 0u);
  EXPECT_EQ(parsed.position, 14u);
  EXPECT_EQ(parsed.stop.why, Why::kNone);
}

TEST(ElementReader, ReadsAnElementInEachEncoding) {
  ExpectName(Parse(kImplicit, kNameImplicit), type_code::kNone);
  ExpectName(Parse(kExplicit, kNameExplicit), type_code::PN);
  ExpectName(Parse(kBig, kNameBig), type_code::PN);
}

TEST(ElementReader, GivesImplicitElementsTheTypeOfTheDictionaryAndOthersUN) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n");
  const Bytes bytes = DataSetBuilder(kImplicit)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .Element(0x0011, 0x0001, "LO", "B ");
  const Parsed parsed = Parse(kImplicit, bytes, dictionary.get());
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).TypeCode, type_code::PN);
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0001).TypeCode, type_code::UN);
}

/// Knows one tag that no table holds.
class OwnAnswers : public DcmDictionary {
 public:
  VrCode RunTimeClass(std::uint16_t group, std::uint16_t element, char*) const override {
    return group == 0x0011 && element == 0x0001 ? type_code::LO : type_code::kNone;
  }
};

TEST(ElementReader, AsksADescendantOfTheDictionaryAndNotItsTable) {
  OwnAnswers dictionary;
  ASSERT_TRUE(dictionary.AttachBytes("x\n(0010,0010) VR=\"PN\"\n", 22));
  const Bytes bytes = DataSetBuilder(kImplicit)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .Element(0x0011, 0x0001, "LO", "B ");
  const Parsed parsed = Parse(kImplicit, bytes, &dictionary);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).TypeCode, type_code::UN);
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0001).TypeCode, type_code::LO);
}

TEST(ElementReader, LeavesImplicitElementsWithoutTypeWhereThereIsNoDictionary) {
  const Parsed parsed =
      Parse(kImplicit, DataSetBuilder(kImplicit).Element(0x0011, 0x0001, "LO", "B "));
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0001).TypeCode, type_code::kNone);
}

// Explicit letters. Each element is followed by another one, which is found only where the length field had the right width.

struct Form {
  const char* letters;
  bool isLong;
};

class LetterForms : public ::testing::TestWithParam<Form> {};

TEST_P(LetterForms, LongLengthFieldsAreThoseOfFiveTypes) {
  const Form form = GetParam();
  for (const Encoding encoding : {kExplicit, kBig}) {
    DataSetBuilder built(encoding);
    built.Tag(0x0011, 0x0001).Raw(BytesOf(form.letters));
    if (form.isLong) {
      built.U16(0).U32(2);
    } else {
      built.U16(2);
    }
    built.Raw({'h', 'i'}).Element(0x0012, 0x0001, "LO", "next");
    const Parsed parsed = Parse(encoding, built);
    ASSERT_TRUE(parsed.result) << form.letters;
    EXPECT_EQ(TagsOf(*parsed.object), "(0011,0001) (0012,0001)");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x0001)), "hi");
    EXPECT_EQ(At(*parsed.object, 0x0011, 0x0001).TypeCode,
              MakeTypeCode(form.letters[0], form.letters[1]));
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0012, 0x0001)), "next");
  }
}

INSTANTIATE_TEST_SUITE_P(
    ElementReader, LetterForms,
    ::testing::Values(
        Form{"OB", true}, Form{"OW", true}, Form{"UN", true}, Form{"UT", true},
        // The standard gives these a long field as well; here they have a short one.
        Form{"OF", false}, Form{"OD", false}, Form{"OL", false}, Form{"OV", false},
        Form{"UC", false}, Form{"UR", false}, Form{"SV", false}, Form{"UV", false},
        // The rest of the standard's types, and letters of nobody: all are taken as they stand.
        Form{"AE", false}, Form{"AS", false}, Form{"AT", false}, Form{"CS", false},
        Form{"DA", false}, Form{"DS", false}, Form{"DT", false}, Form{"FD", false},
        Form{"FL", false}, Form{"IS", false}, Form{"LO", false}, Form{"LT", false},
        Form{"PN", false}, Form{"SH", false}, Form{"SL", false}, Form{"SS", false},
        Form{"ST", false}, Form{"TM", false}, Form{"UI", false}, Form{"UL", false},
        Form{"US", false}, Form{"Pi", false}, Form{"??", false}, Form{"ob", false},
        Form{"\x01\x02", false}),
    [](const auto& tested) {
      const auto* letters = tested.param.letters;
      return Format("X%2.2X%2.2X", static_cast<unsigned char>(letters[0]),
                    static_cast<unsigned char>(letters[1]));
    });

TEST(ElementReader, IgnoresWhatStandsInTheReservedBytes) {
  // (0011,0001) OB, reserved bytes AB CD, length 2.
  const Bytes bytes = {0x11, 0x00, 0x01, 0x00, 'O',  'B',  0xAB,
                       0xCD, 0x02, 0x00, 0x00, 0x00, 0x07, 0x08};
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x0001)), "\x07\x08");
}

TEST(ElementReader, TakesAShortLengthAsUnsigned) {
  const Bytes value = Pattern(0xFFFF);
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Element(0x0011, 0x0001, "LT", value)
                          .Element(0x0012, 0x0001, "SH", "x ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0001).Length, 0xFFFFu);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x0001)), TextOf(value));
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0012, 0x0001)), "x ");
}

constexpr std::string_view kNoLetters{"\0\0", 2};

TEST(ElementReader, LooksLettersOfZeroUpAndReadsTheLengthThatFitsTheAnswer) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n(0011,0002) VR=\"OB\"\n");
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Tag(0x0010, 0x0010)
                          .Raw(BytesOf(kNoLetters))
                          .U16(2)
                          .Raw({'A', ' '})
                          .Tag(0x0011, 0x0002)
                          .Raw(BytesOf(kNoLetters))
                          .U16(0)
                          .U32(2)
                          .Raw({'B', ' '})
                          .Tag(0x0011, 0x0003)
                          .Raw(BytesOf(kNoLetters))
                          .U16(0)
                          .U32(2)
                          .Raw({'C', ' '});
  const Parsed parsed = Parse(kExplicit, bytes, dictionary.get());
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).TypeCode, type_code::PN);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "A ");
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0002).TypeCode, type_code::OB);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x0002)), "B ");
  // Not in the dictionary: UN, which has a long length.
  EXPECT_EQ(At(*parsed.object, 0x0011, 0x0003).TypeCode, type_code::UN);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0011, 0x0003)), "C ");
}

TEST(ElementReader, TakesLettersOfZeroForUNWhereThereIsNoDictionary) {
  const Bytes bytes = DataSetBuilder(kBig)
                          .Tag(0x0010, 0x0010)
                          .Raw(BytesOf(kNoLetters))
                          .U16(0)
                          .U32(2)
                          .Raw({'A', ' '});
  const Parsed parsed = Parse(kBig, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).TypeCode, type_code::UN);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "A ");
}

TEST(ElementReader, KeepsTheLettersOfTheStreamWhateverTheDictionarySays) {
  const auto dictionary = DictionaryOf("(0010,0010) VR=\"PN\"\n(0010,0020) VR=\"LO\"\n");
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Element(0x0010, 0x0010, "CS", "A ")
                          .Element(0x0010, 0x0020, "UN", "B ");
  const Parsed parsed = Parse(kExplicit, bytes, dictionary.get());
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).TypeCode, type_code::CS);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0020).TypeCode, type_code::UN);
}

// Values.

TEST(ElementReader, AnElementOfLengthZeroHasNoData) {
  for (const Encoding encoding : kAllEncodings) {
    const Parsed parsed =
        Parse(encoding, DataSetBuilder(encoding).Element(0x0010, 0x0010, "PN", ""));
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).Length, 0u);
    EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).Data, nullptr);
  }
}

TEST(ElementReader, ReadsValuesOfEveryLengthWhereverTheStreamEnds) {
  // Short and long values lie in different places, and near the end of the bytes they are copied in another way.
  for (const Encoding encoding : kAllEncodings) {
    for (std::size_t length = 0; length <= 80; ++length) {
      const Bytes value = Pattern(length);
      const std::string text(value.begin(), value.end());
      const Parsed parsed = Parse(encoding, DataSetBuilder(encoding)
                                                .Element(0x0009, 0x1001, "OB", value)
                                                .Element(0x0009, 0x1002, "LO", value));
      ASSERT_EQ(CountOf(*parsed.object), 2u) << length;
      EXPECT_EQ(ValueText(At(*parsed.object, 0x0009, 0x1001)), text) << length;
      EXPECT_EQ(ValueText(At(*parsed.object, 0x0009, 0x1002)), text) << length;
    }
  }
}

TEST(ElementReader, KeepsAnOddLength) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = DataSetBuilder(encoding)
                            .Element(0x0010, 0x0010, "PN", "odd")
                            .Element(0x0010, 0x0020, "LO", "x");
    const Parsed parsed = Parse(encoding, bytes);
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).Length, 3u);
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "odd");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "x");
  }
}

TEST(ElementReader, NotesWhereEachElementBeganByThePositionOfTheStream) {
  // 8 bytes of head each in the short form; positions 1000, 1000 + 8 + 2, and the nested one 12 + 8 behind its sequence.
  Bytes bytes = DataSetBuilder(kExplicit)
                    .Element(0x0008, 0x0060, "CS", "MR")
                    .Sequence(0x0008, 0x1140, Lengths::kDefined, Lengths::kDefined,
                              {DataSetBuilder(kExplicit).Element(0x0008, 0x1150, "UI", "1\0")})
                    .Element(0x0010, 0x0010, "PN", "A ");
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  buffer.Position = 1000;
  const Parsed parsed = ParseFrom(buffer, kExplicit);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x0060).StreamPosition, 1000u);
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).StreamPosition, 1010u);
  EXPECT_EQ(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0008, 0x1150).StreamPosition,
            1010u + 12 + 8);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).StreamPosition, 1000u + bytes.size() - 10);
  EXPECT_EQ(buffer.Position, 1000u + bytes.size());
}

TEST(ElementReader, TheLastOfTwoElementsWithOneTagWins) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .Element(0x0010, 0x0010, "PN", "B ");
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_EQ(TagsOf(*parsed.object), "(0010,0010)");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "B ");
}

TEST(ElementReader, AcceptsElementsInAnyOrder) {
  const Bytes bytes = DataSetBuilder(kBig)
                          .Element(0x0020, 0x000D, "UI", "2\0")
                          .Element(0x0002, 0x0010, "UI", "")
                          .Element(0x0000, 0x0002, "UI", "")
                          .Element(0x0010, 0x0010, "PN", "A ");
  const Parsed parsed = Parse(kBig, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object), "(0000,0002) (0002,0010) (0010,0010) (0020,000D)");
}

// The order of bytes within values. What a stream's OutEndian asks for is the host's order when it is not little.

std::string ValueReadWith(std::int32_t outEndian, Encoding encoding, std::string_view letters,
                          const Bytes& value, const RTC* dictionary = nullptr) {
  Bytes bytes = DataSetBuilder(encoding).Element(0x0011, 0x0001, letters, value);
  MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
  buffer.SetOutEndian(outEndian);
  const Parsed parsed = ParseFrom(buffer, encoding, dictionary);
  return ValueText(At(*parsed.object, 0x0011, 0x0001));
}

TEST(ElementReader, TurnsNumbersRoundOnlyForAStreamThatIsNotWrittenLittleEndian) {
  const Bytes value = BytesOf("ABCDEFGH");
  for (const Encoding encoding : {kExplicit, kBig}) {
    for (const char* letters : {"OW", "AT", "US", "SS"}) {
      EXPECT_EQ(ValueReadWith(kLittleEndian, encoding, letters, value), "ABCDEFGH") << letters;
      EXPECT_EQ(ValueReadWith(kBigEndian, encoding, letters, value), "BADCFEHG") << letters;
    }
    // FD too: two halves, each turned round by itself.
    for (const char* letters : {"UL", "SL", "FL", "FD", "OF"}) {
      EXPECT_EQ(ValueReadWith(kLittleEndian, encoding, letters, value), "ABCDEFGH") << letters;
      EXPECT_EQ(ValueReadWith(kBigEndian, encoding, letters, value), "DCBAHGFE") << letters;
    }
    for (const char* letters : {"OB", "UN", "UT", "UI", "LO", "DS", "OD", "SV", "UV", "OL", "OV"}) {
      EXPECT_EQ(ValueReadWith(kBigEndian, encoding, letters, value), "ABCDEFGH") << letters;
    }
  }
}

TEST(ElementReader, TurnsWholeNumbersRoundOnly) {
  EXPECT_EQ(ValueReadWith(kBigEndian, kBig, "US", BytesOf("ABC")), "BAC");
  EXPECT_EQ(ValueReadWith(kBigEndian, kBig, "UL", BytesOf("ABCDEFG")), "DCBAEFG");
  EXPECT_EQ(ValueReadWith(kBigEndian, kBig, "UL", {}), "");
}

TEST(ElementReader, NeverTurnsValuesOfAnImplicitStreamRound) {
  const auto dictionary = DictionaryOf("(0011,0001) VR=\"US\"\n");
  EXPECT_EQ(ValueReadWith(kBigEndian, kImplicit, "US", BytesOf("ABCD"), dictionary.get()), "ABCD");
}

TEST(ElementReader, TurnsValuesRoundInSequencesThatHaveNoViewOfTheirOwn) {
  // A view of defined length is a stream of its own, written little endian.
  for (const Lengths lengths : {Lengths::kDefined, Lengths::kUndefined}) {
    Bytes bytes = DataSetBuilder(kBig)
                      .Sequence(0x0008, 0x1140, lengths, lengths,
                                {DataSetBuilder(kBig).Number(0x0028, 0x0010, 0x0102)})
                      .Number(0x0028, 0x0011, 0x0102);
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    buffer.SetOutEndian(kBigEndian);
    const Parsed parsed = ParseFrom(buffer, kBig);
    ASSERT_TRUE(parsed.result);
    const std::string nested =
        ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0028, 0x0010));
    EXPECT_EQ(nested, lengths == Lengths::kDefined ? "\x01\x02" : "\x02\x01");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0028, 0x0011)), "\x02\x01");
  }
}

// Sequences.

class Nesting : public ::testing::TestWithParam<std::tuple<Encoding, Lengths, Lengths>> {
 protected:
  const Encoding encoding_ = std::get<0>(GetParam());
  const Lengths sequence_ = std::get<1>(GetParam());
  const Lengths items_ = std::get<2>(GetParam());
  const std::unique_ptr<DcmDictionary> dictionary_ =
      DictionaryOf("(0008,1140) VR=\"SQ\"\n(0040,0275) VR=\"SQ\"\n");
};

TEST_P(Nesting, ItemsLandInTheirSequenceAtEveryDepth) {
  const Bytes leaf = DataSetBuilder(encoding_).Element(0x0010, 0x0010, "PN", "deep");
  const Bytes middle = DataSetBuilder(encoding_)
                           .Element(0x0008, 0x0060, "CS", "MR")
                           .Sequence(0x0040, 0x0275, sequence_, items_, {leaf, {}})
                           .Element(0x0040, 0x0400, "LT", "after ");
  const Bytes bytes = DataSetBuilder(encoding_)
                          .Sequence(0x0008, 0x1140, sequence_, items_, {middle, leaf})
                          .Element(0x0010, 0x0010, "PN", "outside ");
  const Parsed parsed = Parse(encoding_, bytes, dictionary_.get());
  ASSERT_TRUE(parsed.result);
  const DICOMObject& object = *parsed.object;
  EXPECT_EQ(TagsOf(object), "(0008,1140) (0010,0010)");
  const VR& outer = At(object, 0x0008, 0x1140);
  EXPECT_EQ(outer.TypeCode, type_code::SQ);
  EXPECT_EQ(outer.Data, nullptr);
  ASSERT_EQ(outer.ItemCount(), 2u);
  const DICOMObject& first = ItemAt(object, 0x0008, 0x1140, 0);
  EXPECT_NE(dynamic_cast<const DICOMDataObject*>(&first), nullptr);
  EXPECT_EQ(TagsOf(first), "(0008,0060) (0040,0275) (0040,0400)");
  ASSERT_EQ(At(first, 0x0040, 0x0275).ItemCount(), 2u);
  EXPECT_EQ(ValueText(At(ItemAt(first, 0x0040, 0x0275, 0), 0x0010, 0x0010)), "deep");
  EXPECT_TRUE(ItemAt(first, 0x0040, 0x0275, 1).IsEmpty());
  EXPECT_EQ(ValueText(At(first, 0x0040, 0x0400)), "after ");
  EXPECT_EQ(TagsOf(ItemAt(object, 0x0008, 0x1140, 1)), "(0010,0010)");
  EXPECT_EQ(ValueText(At(object, 0x0010, 0x0010)), "outside ");
  // 16 for the sequence and 16 for each item: inside 48, which the item that holds it adds to its own.
  EXPECT_EQ(first.SequenceBytes, 48u);
  EXPECT_EQ(object.SequenceBytes, 16u + 16 + 48 + 16);
}

TEST_P(Nesting, ASequenceKeepsItsLengthAsReadOrZeroWhereItWasUndefined) {
  const Bytes item = DataSetBuilder(encoding_).Element(0x0010, 0x0010, "PN", "deep");
  const Parsed parsed = Parse(
      encoding_, DataSetBuilder(encoding_).Sequence(0x0008, 0x1140, sequence_, items_, {item}),
      dictionary_.get());
  ASSERT_TRUE(parsed.result);
  // Item tag and length, the element with its head of 8 bytes, and the delimiter of an item without a length.
  const std::uint32_t defined = 8 + 12 + (items_ == Lengths::kUndefined ? 8 : 0);
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).Length,
            sequence_ == Lengths::kDefined ? defined : 0);
}

TEST_P(Nesting, ASequenceWithoutItemsIsAnElementWithoutItems) {
  const Bytes bytes = DataSetBuilder(encoding_)
                          .Sequence(0x0008, 0x1140, sequence_, items_, {})
                          .Element(0x0010, 0x0010, "PN", "A ");
  const Parsed parsed = Parse(encoding_, bytes, dictionary_.get());
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(*parsed.object), "(0008,1140) (0010,0010)");
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).Items, nullptr);
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).Length, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    ElementReader, Nesting,
    ::testing::Combine(::testing::ValuesIn(kAllEncodings),
                       ::testing::Values(Lengths::kDefined, Lengths::kUndefined),
                       ::testing::Values(Lengths::kDefined, Lengths::kUndefined)),
    [](const auto& tested) {
      const auto word = [](Lengths lengths) {
        return lengths == Lengths::kDefined ? "Defined" : "Undefined";
      };
      return std::string(NameOf(std::get<0>(tested.param))) + word(std::get<1>(tested.param)) +
             word(std::get<2>(tested.param));
    });

TEST(ElementReader, AnyElementOfUndefinedLengthHoldsItems) {
  // UN of undefined length in an explicit stream: its items are explicit too.
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0009, 0x1001, "UN", kNoLength)
                          .Item()
                          .Element(0x0010, 0x0010, "PN", "in")
                          .EndItem()
                          .EndSequence()
                          .Element(0x0010, 0x0010, "PN", "out ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0009, 0x1001).TypeCode, type_code::UN);
  EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0009, 0x1001, 0), 0x0010, 0x0010)), "in");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0010)), "out ");
}

TEST(ElementReader, AnImplicitSequenceOfDefinedLengthIsBytesWhereNoDictionaryKnowsIt) {
  const Bytes bytes = DataSetBuilder(kImplicit).Sequence(
      0x0008, 0x1140, Lengths::kDefined, Lengths::kDefined,
      {DataSetBuilder(kImplicit).Element(0x0010, 0x0010, "PN", "A ")});
  const Parsed parsed = Parse(kImplicit, bytes);
  ASSERT_TRUE(parsed.result);
  const VR& vr = At(*parsed.object, 0x0008, 0x1140);
  EXPECT_EQ(vr.Items, nullptr);
  EXPECT_EQ(ValueText(vr), TextOf(Bytes(bytes.begin() + 8, bytes.end())));
}

TEST(ElementReader, AnItemBelongsToTheElementBeforeItWhateverThatIs) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .Item()
                          .Element(0x0008, 0x0060, "CS", "MR")
                          .EndItem()
                          .Element(0x0010, 0x0020, "LO", "B ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).ItemCount(), 1u);
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "B ");
}

TEST(ElementReader, AnElementAmongTheItemsOfASequenceTakesTheItemsBehindIt) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item()
                          .EndItem()
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .Item()
                          .EndItem()
                          .EndSequence();
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).ItemCount(), 1u);
  EXPECT_EQ(At(*parsed.object, 0x0010, 0x0010).ItemCount(), 1u);
}

TEST(ElementReader, AnItemBeforeAnyElementEndsTheParse) {
  for (const std::uint32_t length : {kNoLength, std::uint32_t{0}}) {
    const Bytes bytes =
        DataSetBuilder(kExplicit).Item(length).EndItem().Element(0x0010, 0x0020, "LO", "B ");
    const Parsed parsed = Parse(kExplicit, bytes);
    EXPECT_FALSE(parsed.result);
    EXPECT_TRUE(parsed.object->IsEmpty());
    EXPECT_EQ(parsed.stop, (ParseStop{Why::kOrphanItem, 0, 0xFFFE, 0xE000}));
    EXPECT_EQ(parsed.error, std::nullopt);
  }
}

TEST(ElementReader, AStrayDelimiterEndsTheDataSetWithSuccess) {
  for (const std::uint16_t delimiter : {kItemDelimiterElement, kSequenceDelimiterElement}) {
    // Whatever length it states.
    for (const std::uint32_t length : {0u, 4u, kNoLength}) {
      const Bytes bytes = DataSetBuilder(kExplicit)
                              .Element(0x0010, 0x0010, "PN", "A ")
                              .Tag(0xFFFE, delimiter)
                              .U32(length)
                              .Element(0x0010, 0x0020, "LO", "B ");
      const Parsed parsed = Parse(kExplicit, bytes);
      EXPECT_TRUE(parsed.result);
      EXPECT_EQ(TagsOf(*parsed.object), "(0010,0010)");
      EXPECT_EQ(parsed.position, 10u + 8);
    }
  }
}

TEST(ElementReader, AnUnknownStructuralTagOfDefinedLengthEndsTheParse) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = DataSetBuilder(encoding)
                            .Element(0x0010, 0x0010, "PN", "A ")
                            .Tag(0xFFFE, 0x0001)
                            .U32(0)
                            .Element(0x0010, 0x0020, "LO", "B ");
    const Parsed parsed = Parse(encoding, bytes);
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(TagsOf(*parsed.object), "(0010,0010)");
    EXPECT_EQ(parsed.stop, (ParseStop{Why::kStrayTag, 10, 0xFFFE, 0x0001}));
    EXPECT_EQ(parsed.error, std::nullopt);
  }
}

TEST(ElementReader, AnUnknownStructuralTagOfUndefinedLengthIsAnItem) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Tag(0xFFFE, 0x0001)
                          .U32(kNoLength)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .EndItem()
                          .EndSequence();
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "A ");
}

TEST(ElementReader, MissingDelimitersAtTheEndAreNoFailure) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes bytes = DataSetBuilder(encoding)
                            .Head(0x0008, 0x1140, "SQ", kNoLength)
                            .Item()
                            .Element(0x0010, 0x0010, "PN", "A ");
    const Parsed parsed = Parse(encoding, bytes);
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "A ");
    // But what was cut off just there looks the same, so the end of the stream is noted.
    EXPECT_EQ(parsed.stop, (ParseStop{Why::kMissingEnd, bytes.size(), 0, 0}));
  }
}

TEST(ElementReader, AStreamThatEndsBetweenItemsOrBeforeTheLastDelimiterIsNoted) {
  const Bytes whole = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item()
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .EndItem()
                          .EndSequence();
  EXPECT_EQ(Parse(kExplicit, whole).stop, ParseStop());
  // The head of the sequence, of the item, the element, and the delimiter of the item: 12, 8, 10 and 8 bytes.
  for (const std::size_t size : {12u, 20u, 30u, 38u}) {
    const Parsed parsed =
        Parse(kExplicit, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ(parsed.stop, (ParseStop{Why::kMissingEnd, size, 0, 0}));
  }
}

TEST(ElementReader, AMissingDelimiterWithinADefinedLengthIsNoEndOfTheStream) {
  const Bytes inner = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item()
                          .Element(0x0010, 0x0010, "PN", "A ");
  const auto size = static_cast<std::uint32_t>(inner.size());
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1199, "SQ", size + 8)
                          .Item(size)
                          .Raw(inner)
                          .Element(0x0010, 0x0020, "LO", "B ");
  const Parsed parsed = Parse(kExplicit, bytes);
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(parsed.stop, ParseStop());
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "B ");
}

TEST(ElementReader, ADelimiterEndsAnItemOfDefinedLengthEarly) {
  // The item states 30 bytes and ends by a delimiter after 10 + 8; what follows belongs to the sequence.
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(30)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .EndItem()
                          .EndSequence()
                          .Element(0x0010, 0x0020, "LO", "B ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  EXPECT_EQ(TagsOf(ItemAt(*parsed.object, 0x0008, 0x1140, 0)), "(0010,0010)");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "B ");
}

TEST(ElementReader, AValueLongerThanItsItemEndsWithTheItem) {
  // The item holds 8 + 4 bytes, the value in it states 100.
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(12)
                          .Head(0x0010, 0x0010, "PN", 100)
                          .Raw(BytesOf("four"))
                          .EndSequence()
                          .Element(0x0010, 0x0020, "LO", "B ");
  const Parsed parsed = Parse(kExplicit, bytes);
  ASSERT_TRUE(parsed.result);
  const VR& vr = At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010);
  EXPECT_EQ(vr.Length, 4u);
  EXPECT_EQ(ValueText(vr), "four");
  EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "B ");
}

TEST(ElementReader, AValueEndsWithTheNarrowestOfTheViewsAroundIt) {
  // Sequence of 20 bytes, item of 100, in it a value of 200: 20 - 8 (item) - 8 (head) = 4 bytes are left.
  Bytes bytes = DataSetBuilder(kExplicit)
                    .Head(0x0008, 0x1140, "SQ", 20)
                    .Item(100)
                    .Head(0x0010, 0x0010, "PN", 200)
                    .Raw(BytesOf("four"))
                    .Element(0x0010, 0x0020, "LO", "B ");
  const auto size = static_cast<std::uint32_t>(bytes.size());
  MemoryBuffer inPlace(bytes.data(), size, false);
  PlainMemoryBuffer stream(bytes.data(), size, false);
  for (Buffer* buffer : {static_cast<Buffer*>(&inPlace), static_cast<Buffer*>(&stream)}) {
    const Parsed parsed = ParseFrom(*buffer, kExplicit);
    // The item claims 100 bytes and ends with its sequence.
    ASSERT_TRUE(parsed.result);
    EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "four");
    EXPECT_EQ(ValueText(At(*parsed.object, 0x0010, 0x0020)), "B ");
  }
}

TEST(ElementReader, AViewThatEndsWithinAHeadEndsTheParse) {
  for (std::uint32_t left = 1; left < 8; ++left) {
    const Bytes bytes = DataSetBuilder(kExplicit)
                            .Head(0x0008, 0x1140, "SQ", 8 + left)
                            .Item(left)
                            .Element(0x0010, 0x0010, "PN", "A ")
                            .Element(0x0010, 0x0020, "LO", "B ");
    const Parsed parsed = Parse(kExplicit, bytes);
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(parsed.stop.why, Why::kTruncated);
    EXPECT_EQ(parsed.stop.position, 12u + 8);
    // What was read before it is there, the item that broke off included.
    EXPECT_EQ(TagsOf(*parsed.object), "(0008,1140)");
    EXPECT_EQ(At(*parsed.object, 0x0008, 0x1140).ItemCount(), 1u);
  }
}

TEST(ElementReader, AnItemLongerThanTheStreamKeepsWhatCame) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(1000)
                          .Element(0x0010, 0x0010, "PN", "A ");
  const Parsed parsed = Parse(kExplicit, bytes);
  // The view is not at its end, the stream is: the next element cannot be read.
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.stop.why, Why::kTruncated);
  EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "A ");
}

// Streams that end early.

TEST(ElementReader, AStreamThatEndsWithinAnElementGivesWhatCameBefore) {
  for (const Encoding encoding : kAllEncodings) {
    const Bytes first = DataSetBuilder(encoding).Element(0x0008, 0x0060, "CS", "MR");
    const Bytes whole =
        DataSetBuilder(encoding).Raw(first).Element(0x0009, 0x1001, "UN", "eight...");
    for (std::size_t size = first.size() + 1; size < whole.size(); ++size) {
      const Parsed parsed =
          Parse(encoding, Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
      EXPECT_FALSE(parsed.result);
      EXPECT_EQ(TagsOf(*parsed.object), "(0008,0060)");
      EXPECT_EQ(parsed.stop.why, Why::kTruncated);
      EXPECT_EQ(parsed.stop.position, first.size());
      EXPECT_EQ(parsed.error, std::nullopt);
    }
    EXPECT_TRUE(Parse(encoding, first).result);
    EXPECT_TRUE(Parse(encoding, whole).result);
  }
}

TEST(ElementReader, NamesTheTagThatCouldNotBeRead) {
  Bytes bytes = DataSetBuilder(kExplicit).Element(0x0009, 0x1001, "LO", "eight...");
  bytes.pop_back();
  EXPECT_EQ(Parse(kExplicit, bytes).stop, (ParseStop{Why::kTruncated, 0, 0x0009, 0x1001}));
}

TEST(ElementReader, AnEmptyStreamIsAnEmptyDataSet) {
  for (const Encoding encoding : kAllEncodings) {
    const Parsed parsed = Parse(encoding, {});
    EXPECT_TRUE(parsed.result);
    EXPECT_TRUE(parsed.object->IsEmpty());
  }
}

TEST(ElementReader, EachParseForgetsHowTheOneBeforeItEnded) {
  for (const bool implicit : {true, false}) {
    Bytes whole = implicit ? kNameImplicit : kNameExplicit;
    Bytes cut = whole;
    cut.pop_back();
    MemoryBuffer bad(cut.data(), static_cast<std::uint32_t>(cut.size()), false);
    MemoryBuffer good(whole.data(), static_cast<std::uint32_t>(whole.size()), false);
    DataSetCoder coder;
    DICOMDataObject object;
    const auto read = [&](Buffer& buffer) {
      return implicit ? coder.ImplicitLittleIn(buffer, object)
                      : coder.ExplicitLittleIn(buffer, object);
    };
    EXPECT_FALSE(read(bad));
    EXPECT_EQ(coder.LastStop().why, Why::kTruncated);
    EXPECT_TRUE(read(good));
    EXPECT_EQ(coder.LastStop().why, Why::kNone);
  }
}

// A stream that states how much it holds.

Parsed ParseTotalling(Encoding encoding, Bytes bytes, std::int64_t total) {
  TotallingBuffer buffer(bytes, total);
  return ParseFrom(buffer, encoding);
}

TEST(ElementReader, RefusesALengthAboveTheTotalOfTheStreamWithWords) {
  const Bytes bytes = DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", "twelve bytes");
  EXPECT_TRUE(ParseTotalling(kExplicit, bytes, 12).result);
  EXPECT_TRUE(ParseTotalling(kExplicit, bytes, -1).result);
  const Parsed parsed = ParseTotalling(kExplicit, bytes, 11);
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.error, "VR(0010,0010) Length[12] > [11] available bytes");
  EXPECT_EQ(parsed.stop, (ParseStop{Why::kTooLong, 0, 0x0010, 0x0010}));
  EXPECT_TRUE(parsed.object->IsEmpty());
}

TEST(ElementReader, ChecksTheLengthOfASequenceAgainstTheTotalToo) {
  const Bytes bytes = DataSetBuilder(kExplicit).Head(0x0008, 0x1140, "SQ", 200);
  const Parsed parsed = ParseTotalling(kExplicit, bytes, 100);
  EXPECT_FALSE(parsed.result);
  EXPECT_EQ(parsed.error, "VR(0008,1140) Length[200] > [100] available bytes");
  EXPECT_TRUE(parsed.object->IsEmpty());
}

TEST(ElementReader, WritesTheLengthInItsWordsAsASignedNumberAndTagsInCapitals) {
  const Bytes bytes = DataSetBuilder(kBig).Head(0x00AB, 0xCDEF, "UN", 0xFFFFFFF0);
  EXPECT_EQ(ParseTotalling(kBig, bytes, 100).error,
            "VR(00AB,CDEF) Length[-16] > [100] available bytes");
}

TEST(ElementReader, DoesNotCheckAnUndefinedLengthOrOneOfZero) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {{}})
                          .Element(0x0010, 0x0010, "PN", "");
  EXPECT_TRUE(ParseTotalling(kExplicit, bytes, 0).result);
}

TEST(ElementReader, DoesNotCheckTheLengthOfAnItem) {
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(10)
                          .Element(0x0010, 0x0010, "PN", "A ")
                          .EndSequence();
  const Parsed parsed = ParseTotalling(kExplicit, bytes, 2);
  EXPECT_TRUE(parsed.result);
  EXPECT_EQ(parsed.error, std::nullopt);
  EXPECT_EQ(ValueText(At(ItemAt(*parsed.object, 0x0008, 0x1140, 0), 0x0010, 0x0010)), "A ");
}

TEST(ElementReader, WithinAViewOnlyTheViewIsAskedForATotalAndHasNone) {
  // The value is longer than the total of the stream, but the view of its sequence does not state one.
  const Bytes item = DataSetBuilder(kExplicit).Element(0x0010, 0x0010, "PN", "twelve bytes");
  const Bytes bytes = DataSetBuilder(kExplicit)
                          .Head(0x0008, 0x1140, "SQ", kNoLength)
                          .Item(static_cast<std::uint32_t>(item.size()))
                          .Raw(item)
                          .EndSequence();
  EXPECT_TRUE(ParseTotalling(kExplicit, bytes, 2).result);
}

// Depth.

Bytes NestedSequences(Encoding encoding, int levels, Lengths lengths) {
  Bytes inside;
  for (int level = 0; level < levels; ++level) {
    inside = DataSetBuilder(encoding).Sequence(0x0008, 0x1140, lengths, lengths, {inside}).Done();
  }
  return inside;
}

TEST(ElementReader, ReadsSequencesNestedToTheLimitAndRefusesOneMore) {
  const auto dictionary = DictionaryOf("(0008,1140) VR=\"SQ\"\n");
  for (const Encoding encoding : kAllEncodings) {
    for (const Lengths lengths : {Lengths::kDefined, Lengths::kUndefined}) {
      const Parsed atLimit =
          Parse(encoding, NestedSequences(encoding, 256, lengths), dictionary.get());
      EXPECT_TRUE(atLimit.result);
      EXPECT_EQ(atLimit.error, std::nullopt);
      int depth = 0;
      const DICOMObject* level = atLimit.object.get();
      while (!level->IsEmpty()) {
        level = &ItemAt(*level, 0x0008, 0x1140, 0);
        ++depth;
      }
      EXPECT_EQ(depth, 256);
      // One level more, with an item in it and as a mere sequence.
      Bytes empty = DataSetBuilder(encoding).Sequence(0x0008, 0x1140, lengths, lengths, {});
      for (int outer = 0; outer < 256; ++outer) {
        empty = DataSetBuilder(encoding).Sequence(0x0008, 0x1140, lengths, lengths, {empty}).Done();
      }
      for (const Bytes& bytes : {NestedSequences(encoding, 257, lengths), empty}) {
        const Parsed beyond = Parse(encoding, bytes, dictionary.get());
        EXPECT_FALSE(beyond.result);
        EXPECT_EQ(beyond.error, "Sequences are nested too deeply");
        EXPECT_EQ(beyond.stop.why, Why::kTooDeep);
      }
    }
  }
}

TEST(ElementReader, ReadsAndWritesTheDeepestNestingOnASmallStack) {
  // Instrumented programs have frames of several times the size.
  const std::size_t stack = kAsShipped ? kSmallStack : 16 * kSmallStack;
  for (const Lengths lengths : {Lengths::kDefined, Lengths::kUndefined}) {
    Bytes bytes = NestedSequences(kExplicit, 256, lengths);
    const auto size = static_cast<std::uint32_t>(bytes.size());
    RunOnStack(stack, [&] {
      MemoryBuffer inPlace(bytes.data(), size, false);
      EXPECT_TRUE(ParseFrom(inPlace, kExplicit).result);
      PlainMemoryBuffer stream(bytes.data(), size, false);
      const Parsed parsed = ParseFrom(stream, kExplicit);
      EXPECT_TRUE(parsed.result);
      EXPECT_FALSE(Encode(kExplicit, *parsed.object).empty());
    });
  }
}

TEST(ElementReader, AnObjectThatTakesAnElementNoMoreEndsTheParseThere) {
  for (const Encoding encoding : kAllEncodings) {
    // Two elements of 8 + 2 and one of 8 + 50 bytes; behind the second one follows enough for any way of reading.
    Bytes bytes = DataSetBuilder(encoding)
                      .Number(0x0028, 0x0010, 1)
                      .Number(0x0028, 0x0011, 2)
                      .Element(0x0028, 0x0A04, "LO", Pattern(50));
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false);
    class TakesOne : public DICOMDataObject {
     public:
      using DICOMDataObject::Push;
      bool Push(VR* element) override { return IsEmpty() && DICOMDataObject::Push(element); }
    } object;
    DataSetCoder coder;
    EXPECT_FALSE(
        coder.File_ParseRawVRIntoDCM(buffer, object, static_cast<std::int32_t>(encoding), true));
    EXPECT_EQ(coder.LastStop(), (ParseStop{Why::kOrphanItem, 10, 0x0028, 0x0011}));
    EXPECT_EQ(TagsOf(object), "(0028,0010)");
  }
}

TEST(ElementReader, SetsTheByteOrderOfTheStreamForEachEncoding) {
  // Each stream was left at the other order.
  struct Case {
    Encoding encoding;
    Bytes name;
    VrCode type;
    std::int32_t before;
    std::int32_t behind;
  };
  const Case cases[] = {
      {kImplicit, kNameImplicit, type_code::kNone, kBigEndian, kLittleEndian},
      {kExplicit, kNameExplicit, type_code::PN, kBigEndian, kLittleEndian},
      {kBig, kNameBig, type_code::PN, kLittleEndian, kBigEndian},
  };
  for (const auto& [encoding, name, type, before, behind] : cases) {
    Bytes bytes = name;
    MemoryBuffer buffer(bytes.data(), static_cast<std::uint32_t>(bytes.size()), false, before);
    ExpectName(ParseFrom(buffer, encoding), type);
    EXPECT_EQ(buffer.InEndian, behind);
  }
}

}  // namespace
}  // namespace tessaret::test
