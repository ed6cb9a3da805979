// Saving with options, and elements as they are stored.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "facade/dcm_file_helpers.h"
#include "facade/named_call.h"
#include "support/allocation_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr std::int32_t kPixelGroup = 0x7FE0;

/// A patient's name without a type, the bits of a pixel, a sequence with an item, and two pixels of 16 bits.
DataSetBuilder SampleIn(Encoding encoding) {
  DataSetBuilder sample(encoding);
  sample.Element(0x0010, 0x0010, "UN", "Doe^John").Number(0x0028, 0x0100, 16);
  DataSetBuilder item(encoding);
  item.Element(0x0008, 0x1155, "UI", "1.23");
  sample.Sequence(0x0040, 0x0275, Lengths::kUndefined, Lengths::kUndefined, {item});
  sample.Head(0x7FE0, 0x0010, "OW", 4).U16(0x0102).U16(0x0304);
  return sample;
}

class FileSaving : public testing::Test {
 protected:
  void Load(const Bytes& bytes, _EnumDataEncoding encoding = ENCODING_NONE) {
    ASSERT_EQ(file_->LoadBytes(BytesVariant(bytes), LOAD_PIXELS, encoding), kOk)
        << LastError().text;
  }
  Bytes Saved(_EnumSaveForm form, std::int32_t options = 0) {
    Variant bytes;
    EXPECT_EQ(file_->SaveBytes(form, options, &bytes), kOk) << LastError().text;
    EXPECT_EQ(file_->SaveFile(Path(), form, options & ~SAVE_KEEPS_FILES), kOk);
    // Both ways are one.
    EXPECT_EQ(BytesIn(bytes), ReadBytes(Path()));
    return BytesIn(bytes);
  }
  std::string Path() const { return folder_.File("out.dcm"); }
  Bytes Range(std::int32_t group, std::int32_t element, double offset, std::int32_t count) {
    Variant bytes;
    EXPECT_EQ(file_->GetBytes(group, element, offset, count, &bytes), kOk);
    return BytesIn(bytes);
  }

  TempFolder folder_;
  Ref<IDCMObject> object_ = NewObject();
  Ref<IDcmFile> file_ = FileFacetOf(object_);
};

TEST_F(FileSaving, WritesTheDataSetAloneInImplicitLittleEndian) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    Load(FileOf(encoding, SampleIn(encoding)));
    const Bytes implicit = SampleIn(Encoding::kImplicitLittle);
    EXPECT_EQ(Saved(SAVE_BARE), implicit);
    EXPECT_EQ(Saved(SAVE_WITHOUT_META_HEADER), Joined({Preamble(), implicit}));
    // The object is as it was.
    EXPECT_EQ(Raw(object_, kPixelGroup, 0x0010), (Bytes{0x02, 0x01, 0x04, 0x03}));
  }
}

TEST_F(FileSaving, KeepsTheTransferSyntaxInACompleteFile) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes dataSet = SampleIn(encoding);
    Load(FileOf(encoding, dataSet));
    const Bytes whole = Saved(SAVE_COMPLETE, SAVE_KEEPS_TYPES);
    ASSERT_GT(whole.size(), dataSet.size());
    EXPECT_EQ(Bytes(whole.begin(), whole.begin() + 132), Preamble());
    EXPECT_EQ(Bytes(whole.end() - static_cast<std::ptrdiff_t>(dataSet.size()), whole.end()),
              dataSet);
    // A form that is left away is the complete one.
    EXPECT_EQ(Saved(_EnumSaveForm{}, SAVE_KEEPS_TYPES), whole);
  }
}

TEST_F(FileSaving, LooksUpTypesUnlessItIsToKeepThem) {
  const auto typeIn = [&](const Bytes& bytes) {
    Load(bytes);
    return StoredIn(file_, 0x0010, 0x0010).type;
  };
  const Bytes file = FileOf(Encoding::kExplicitLittle, SampleIn(Encoding::kExplicitLittle));
  EXPECT_EQ(typeIn(file), "UN");
  const Bytes kept = Saved(SAVE_COMPLETE, SAVE_KEEPS_TYPES);
  const Bytes lookedUp = Saved(SAVE_COMPLETE);
  EXPECT_EQ(typeIn(kept), "UN");
  EXPECT_EQ(typeIn(lookedUp), "PN");
}

TEST_F(FileSaving, TurnsNoNumbersThatItDoesNotCallNumbers) {
  // Rows, whose type is not known: as they are while they stay that, turned where they become a number.
  ASSERT_EQ(object_->PutVRRawString(0x0002, 0x0010, "UI", "1.2.840.10008.1.2.2"), kOk);
  ASSERT_EQ(object_->PutVRData(0x0028, 0x0010, "UN", BytesVariant({1, 2})), kOk);
  const auto last = [](const Bytes& bytes) { return Bytes(bytes.end() - 2, bytes.end()); };
  EXPECT_EQ(last(Saved(SAVE_COMPLETE, SAVE_KEEPS_TYPES)), (Bytes{1, 2}));
  EXPECT_EQ(last(Saved(SAVE_COMPLETE)), (Bytes{2, 1}));
}

TEST_F(FileSaving, LeavesAFileThatIsThereWhereItIsTold) {
  Load(SampleIn(Encoding::kExplicitLittle));
  WriteText(Path(), "old");
  EXPECT_FAILS_WITH(file_->SaveFile(Path(), SAVE_BARE, SAVE_KEEPS_FILES), "File exists");
  EXPECT_EQ(ReadText(Path()), "old");
  EXPECT_EQ(folder_.Listing(), "out.dcm");
  EXPECT_EQ(file_->SaveFile(Path(), SAVE_BARE, 0), kOk);
  EXPECT_NE(ReadText(Path()), "old");
  std::filesystem::remove(Path());
  EXPECT_EQ(file_->SaveFile(Path(), SAVE_BARE, SAVE_KEEPS_FILES), kOk);
  EXPECT_EQ(ReadBytes(Path()), Bytes(SampleIn(Encoding::kImplicitLittle)));
}

TEST_F(FileSaving, RefusesWhatItDoesNotKnow) {
  Variant bytes("old");
  for (const int form : {-1, 4, 99}) {
    EXPECT_EQ(file_->SaveFile(Path(), static_cast<_EnumSaveForm>(form), 0), kInvalidArgument);
    EXPECT_EQ(file_->SaveBytes(static_cast<_EnumSaveForm>(form), 0, &bytes), kInvalidArgument);
  }
  for (const std::int32_t options : {4, -1}) {
    EXPECT_EQ(file_->SaveFile(Path(), SAVE_BARE, options), kInvalidArgument);
    EXPECT_EQ(file_->SaveBytes(SAVE_BARE, options, &bytes), kInvalidArgument);
  }
  EXPECT_EQ(file_->SaveBytes(SAVE_BARE, 0, nullptr), kPointer);
  EXPECT_FAILS_WITH(file_->SaveFile(folder_.File("no/such"), SAVE_BARE, 0),
                    "No such file or directory");
  EXPECT_FAILS_WITH(file_->SaveFile(String(std::string_view("a\0b", 3)), SAVE_BARE, 0),
                    "Invalid argument");
  // Pixel data that was not loaded cannot be written.
  const Variant sample = BytesVariant(SampleIn(Encoding::kExplicitLittle));
  ASSERT_EQ(file_->LoadBytes(sample, 0, ENCODING_NONE), kOk);
  EXPECT_FAILS_WITH(file_->SaveBytes(SAVE_BARE, 0, &bytes),
                    "VR(7FE0,0010) has a length but no value");
  EXPECT_EQ(bytes.ToString().Utf8(), "old");
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(FileSaving, SaysThatThereIsNoDataSet) {
  EXPECT_NE(file_->LoadFile(folder_.File("none"), 0, ENCODING_NONE), kOk);
  Variant bytes;
  String text;
  EXPECT_FAILS_WITH(file_->SaveFile(Path(), SAVE_BARE, 0), "Empty object");
  EXPECT_FAILS_WITH(file_->SaveBytes(SAVE_BARE, 0, &bytes), "Empty object");
  EXPECT_FAILS_WITH(file_->get_Text(&text), "Empty object");
  EXPECT_FAILS_WITH(file_->GetElementText(0x0010, 0x0010, 0, 0, &text), "Empty object");
  EXPECT_FALSE(StoredIn(file_, 0x0010, 0x0010).found.IsTrue());
  EXPECT_EQ(Range(0x0010, 0x0010, 0, 8), Bytes());
  VariantBool doubtful = true;
  EXPECT_EQ(file_->get_HasPixelsOfDoubtfulOrder(&doubtful), kOk);
  EXPECT_FALSE(doubtful.IsTrue());
}

TEST_F(FileSaving, ShowsElementsAsTheyStood) {
  Load(SampleIn(Encoding::kExplicitLittle));
  const Stored name = StoredIn(file_, 0x0010, 0x0010);
  EXPECT_TRUE(name.found.IsTrue());
  EXPECT_EQ(name.type, "UN");
  EXPECT_EQ(name.length, 8);
  EXPECT_EQ(name.offset, 0);
  EXPECT_TRUE(name.hasValue.IsTrue());
  EXPECT_EQ(name.items, 0);
  // Behind heads of 12 and 8 bytes, and values of 8 and 2.
  const Stored sequence = StoredIn(file_, 0x0040, 0x0275);
  EXPECT_EQ(sequence.type, "SQ");
  EXPECT_EQ(sequence.length, 0);
  EXPECT_EQ(sequence.offset, 30);
  EXPECT_FALSE(sequence.hasValue.IsTrue());
  EXPECT_EQ(sequence.items, 1);
  // Behind the heads of the sequence (12) and the item (8).
  const Ref<IDCMObject> item = ItemOf(object_, 0x0040, 0x0275, 0);
  EXPECT_EQ(StoredIn(FileFacetOf(item), 0x0008, 0x1155).offset, 50);
  // The value (8 + 4 bytes) and two delimiters of 8.
  EXPECT_EQ(StoredIn(file_, 0x7FE0, 0x0010).offset, 78);
  const Stored none = StoredIn(file_, 0x0010, 0x0020);
  EXPECT_FALSE(none.found.IsTrue());
  EXPECT_EQ(none.type, "untouched");
  EXPECT_EQ(none.length, -7);
  EXPECT_EQ(none.items, -7);
  // Of the tag the low 16 bits count.
  EXPECT_TRUE(StoredIn(file_, 0x70010, -65520).found.IsTrue());
}

TEST_F(FileSaving, ShowsLettersThatAreNone) {
  Load(DataSetBuilder(Encoding::kExplicitLittle)
           .Element(0x0009, 0x0010, std::string_view("Q\0", 2), "ab"),
       ENCODING_EXPLICIT_LITTLE);
  EXPECT_EQ(StoredIn(file_, 0x0009, 0x0010).type, std::string("Q\0", 2));
}

TEST_F(FileSaving, GivesARangeOfAValue) {
  Load(SampleIn(Encoding::kExplicitLittle));
  EXPECT_EQ(Range(0x0010, 0x0010, 0, 3), BytesOf("Doe"));
  EXPECT_EQ(Range(0x0010, 0x0010, 4, 2), BytesOf("Jo"));
  EXPECT_EQ(Range(0x0010, 0x0010, 4, 2147483647), BytesOf("John"));
  EXPECT_EQ(Range(0x0010, 0x0010, 7, 1), BytesOf("n"));
  for (const double beyond : {8.0, 9.0, 1e300})
    EXPECT_EQ(Range(0x0010, 0x0010, beyond, 1), Bytes());
  Variant none("old");
  ASSERT_EQ(file_->GetBytes(0x0010, 0x0010, 8, 1, &none), kOk);
  EXPECT_TRUE(none.IsEmpty());
  EXPECT_EQ(Range(0x0010, 0x0010, 0, 0), Bytes());
  EXPECT_EQ(Range(0x0040, 0x0275, 0, 10), Bytes());
  Variant bytes("old");
  for (const double wrong : {-1.0, 0.5, std::nan(""), -std::numeric_limits<double>::infinity()})
    EXPECT_EQ(file_->GetBytes(0x0010, 0x0010, wrong, 1, &bytes), kInvalidArgument);
  EXPECT_EQ(file_->GetBytes(0x0010, 0x0010, 0, -1, &bytes), kInvalidArgument);
  EXPECT_EQ(bytes.ToString().Utf8(), "old");
  EXPECT_EQ(file_->GetBytes(0x0010, 0x0010, 0, 1, nullptr), kPointer);
}

TEST_F(FileSaving, ChangesTypesAndNothingElse) {
  Load(SampleIn(Encoding::kExplicitLittle));
  VariantBool found;
  ASSERT_EQ(file_->SetType(0x0010, 0x0010, "LO", &found), kOk);
  EXPECT_TRUE(found.IsTrue());
  EXPECT_EQ(StoredIn(file_, 0x0010, 0x0010).type, "LO");
  EXPECT_EQ(Raw(object_, 0x0010, 0x0010), BytesOf("Doe^John"));
  ASSERT_EQ(file_->SetType(0x0010, 0x0020, "LO", &found), kOk);
  EXPECT_FALSE(found.IsTrue());
  for (const char* letters : {"", "L", "LON"})
    EXPECT_EQ(file_->SetType(0x0010, 0x0010, letters, &found), kInvalidArgument);
  EXPECT_EQ(file_->SetType(0x0010, 0x0010, "LO", nullptr), kPointer);
  EXPECT_EQ(StoredIn(file_, 0x0010, 0x0010).type, "LO");
}

TEST_F(FileSaving, KnowsPixelsWhoseOrderIsDoubtful) {
  const auto isDoubtful = [&](std::uint16_t bits, const char* type) {
    DataSetBuilder image(Encoding::kExplicitLittle);
    image.Number(0x0028, 0x0100, bits).Element(0x7FE0, 0x0010, type, Bytes{1, 2, 3, 4});
    Load(image);
    VariantBool doubtful;
    EXPECT_EQ(file_->get_HasPixelsOfDoubtfulOrder(&doubtful), kOk);
    return doubtful.IsTrue();
  };
  EXPECT_FALSE(isDoubtful(8, "OB"));
  EXPECT_TRUE(isDoubtful(16, "OB"));
  EXPECT_FALSE(isDoubtful(8, "OW"));
  EXPECT_FALSE(isDoubtful(16, "OW"));
  EXPECT_TRUE(isDoubtful(32, "OW"));
  // Fragments are not native, whether they were loaded or not.
  DataSetBuilder compressed(Encoding::kExplicitLittle);
  compressed.Number(0x0028, 0x0100, 16).Fragments({{}, {1, 2, 3, 4}});
  for (const std::int32_t options : {0, LOAD_PIXELS + 0}) {
    ASSERT_EQ(file_->LoadBytes(BytesVariant(compressed), options, ENCODING_NONE), kOk);
    VariantBool doubtful = true;
    EXPECT_EQ(file_->get_HasPixelsOfDoubtfulOrder(&doubtful), kOk);
    EXPECT_FALSE(doubtful.IsTrue());
  }
  EXPECT_EQ(file_->get_HasPixelsOfDoubtfulOrder(nullptr), kPointer);
}

TEST_F(FileSaving, IsTextForPeople) {
  Load(SampleIn(Encoding::kExplicitLittle));
  constexpr const char* kName = "(0010,0010) 'UN' [     8] 'Patient's Name' : ";
  String text;
  ASSERT_EQ(file_->get_Text(&text), kOk);
  const std::string all = text.Narrow();
  EXPECT_EQ(all.rfind(kName, 0), 0u) << all;
  const std::string sequence =
      "(0040,0275) 'SQ' 1 items 'Request Attributes Sequence'\n"
      "#start item 1\n"
      "> (0008,1155) 'UI' [     4] 'Referenced SOP Instance UID' : 1.23\n"
      "#end item 1\n"
      "End sequence (0040,0275)\n";
  std::string joined;
  for (const auto& [group, element] :
       {std::pair{0x0010, 0x0010}, {0x0028, 0x0100}, {0x0040, 0x0275}, {0x7FE0, 0x0010}}) {
    ASSERT_EQ(file_->GetElementText(group, element, 0, 0, &text), kOk);
    joined += text.Narrow();
    if (group == 0x0040) {
      EXPECT_EQ(text.Narrow(), sequence);
    }
  }
  EXPECT_EQ(joined, all);
  ASSERT_EQ(file_->GetElementText(0x0010, 0x0020, 0, 0, &text), kOk);
  EXPECT_EQ(text.Narrow(), "");
  EXPECT_EQ(file_->get_Text(nullptr), kPointer);
  EXPECT_EQ(file_->GetElementText(0x0010, 0x0010, 0, 0, nullptr), kPointer);
}

TEST_F(FileSaving, GivesTheTextOfAnElementInParts) {
  Load(SampleIn(Encoding::kExplicitLittle));
  const std::string first = "(0040,0275) 'SQ' 1 items 'Request Attributes Sequence'\n";
  const std::string second = "#start item 1\n";
  const std::string third = "> (0008,1155) 'UI' [     4] 'Referenced SOP Instance UID' : 1.23\n";
  const std::string rest = "#end item 1\nEnd sequence (0040,0275)\n";
  const auto part = [&](std::int32_t firstLine, std::int32_t room) {
    String text;
    EXPECT_EQ(file_->GetElementText(0x0040, 0x0275, firstLine, room, &text), kOk);
    return text.Narrow();
  };
  EXPECT_EQ(part(0, 1), first);
  EXPECT_EQ(part(0, static_cast<std::int32_t>(first.size())), first);
  EXPECT_EQ(part(0, static_cast<std::int32_t>(first.size()) + 1), first + second);
  EXPECT_EQ(part(1, 1), second);
  EXPECT_EQ(part(1, 15), second + third);
  EXPECT_EQ(part(2, 1), third);
  EXPECT_EQ(part(3, 0), rest);
  EXPECT_EQ(part(3, 1000), rest);
  EXPECT_EQ(part(4, 1), "End sequence (0040,0275)\n");
  EXPECT_EQ(part(5, 1), "");
  EXPECT_EQ(part(std::numeric_limits<std::int32_t>::max(), 0), "");

  String text("kept");
  EXPECT_EQ(file_->GetElementText(0x0040, 0x0275, -1, 0, &text), kInvalidArgument);
  EXPECT_EQ(file_->GetElementText(0x0040, 0x0275, 0, -1, &text), kInvalidArgument);
  EXPECT_EQ(text.Narrow(), "kept");
}

TEST_F(FileSaving, RefusesNullPointersForAnElement) {
  String text;
  double number = 0;
  VariantBool flag;
  std::int32_t count = 0;
  const auto get = [&](String* type, double* length, double* offset, VariantBool* has,
                       std::int32_t* items, VariantBool* found) {
    return file_->GetElement(0x0010, 0x0010, type, length, offset, has, items, found);
  };
  EXPECT_EQ(get(nullptr, &number, &number, &flag, &count, &flag), kPointer);
  EXPECT_EQ(get(&text, nullptr, &number, &flag, &count, &flag), kPointer);
  EXPECT_EQ(get(&text, &number, nullptr, &flag, &count, &flag), kPointer);
  EXPECT_EQ(get(&text, &number, &number, nullptr, &count, &flag), kPointer);
  EXPECT_EQ(get(&text, &number, &number, &flag, nullptr, &flag), kPointer);
  EXPECT_EQ(get(&text, &number, &number, &flag, &count, nullptr), kPointer);
}

TEST_F(FileSaving, IsThereByName) {
  const auto call = [&](const char* name, MemberKind kind, std::vector<Variant>& arguments) {
    return CallNamed(*file_.Get(), name, kind, arguments);
  };
  Load(SampleIn(Encoding::kExplicitLittle));
  std::vector<Variant> arguments{SAVE_BARE + 0};
  const Bytes implicit = SampleIn(Encoding::kImplicitLittle);
  EXPECT_EQ(BytesIn(call("SaveBytes", MemberKind::kMethod, arguments)), implicit);
  arguments = {Path(), SAVE_BARE + 0, SAVE_KEEPS_FILES + 0};
  call("SaveFile", MemberKind::kMethod, arguments);
  EXPECT_EQ(ReadBytes(Path()), implicit);
  arguments = {0x0040, 0x0275, Variant(), Variant(), Variant(), Variant(), Variant()};
  EXPECT_TRUE(call("GetElement", MemberKind::kMethod, arguments).AsBool().IsTrue());
  EXPECT_EQ(arguments[2].ToString().Utf8(), "SQ");
  EXPECT_EQ(arguments[4].AsDouble(), 30);
  EXPECT_FALSE(arguments[5].AsBool().IsTrue());
  EXPECT_EQ(arguments[6].AsLong(), 1);
  arguments.assign(7, Variant());
  const std::int32_t rows = call("GetListing", MemberKind::kMethod, arguments).AsLong();
  ASSERT_NE(arguments[1].AsArray(), nullptr);
  EXPECT_EQ(static_cast<std::int32_t>(arguments[1].AsArray()->Count()), rows);
  EXPECT_EQ(arguments[1].AsArray()->Type(), VariantType::kDouble);
  EXPECT_EQ(arguments[6].AsArray()->Type(), VariantType::kLong);
  arguments = {0x0010, 0x0010, 4, 4};
  EXPECT_EQ(BytesIn(call("GetBytes", MemberKind::kMethod, arguments)), BytesOf("John"));
  arguments = {0x0010, 0x0010, "PN"};
  EXPECT_TRUE(call("SetType", MemberKind::kMethod, arguments).AsBool().IsTrue());
  arguments = {0x0010, 0x0010};
  EXPECT_EQ(call("GetElementText", MemberKind::kMethod, arguments).ToString().Narrow(),
            "(0010,0010) 'PN' [     8] 'Patient's Name' : Doe^John\n");
  arguments.clear();
  EXPECT_FALSE(call("HasPixelsOfDoubtfulOrder", MemberKind::kGet, arguments).AsBool().IsTrue());
  EXPECT_FALSE(call("Text", MemberKind::kGet, arguments).ToString().IsEmpty());
}

TEST_F(FileSaving, TurnsTheNumbersOfLongValuesForABigEndianFile) {
  // More than is turned at once, and a byte at the end that makes no number.
  Bytes pixels(std::size_t{600} * 1024 + 1);
  for (std::size_t at = 0; at < pixels.size(); ++at)
    pixels[at] = static_cast<std::uint8_t>(at % 251);
  Bytes doubles(std::size_t{8} * 3);
  for (std::size_t at = 0; at < doubles.size(); ++at) doubles[at] = static_cast<std::uint8_t>(at);
  ASSERT_EQ(object_->PutVRRawString(0x0002, 0x0010, "UI", "1.2.840.10008.1.2.2"), kOk);
  ASSERT_EQ(object_->PutVRData(0x0018, 0x9087, "FD", BytesVariant(doubles)), kOk);
  ASSERT_EQ(object_->PutVRData(kPixelGroup, 0x0010, "OW", BytesVariant(pixels)), kOk);
  const Bytes whole = Saved(SAVE_COMPLETE);
  Bytes turned = doubles;
  for (std::size_t at = 0; at < turned.size(); at += 8)
    std::reverse(turned.begin() + static_cast<std::ptrdiff_t>(at),
                 turned.begin() + static_cast<std::ptrdiff_t>(at) + 8);
  Bytes turnedPixels = pixels;
  for (std::size_t at = 0; at + 1 < turnedPixels.size(); at += 2)
    std::swap(turnedPixels[at], turnedPixels[at + 1]);
  turnedPixels.push_back(0);
  DataSetBuilder expected(Encoding::kExplicitBig);
  expected.Element(0x0018, 0x9087, "FD", turned).Element(0x7FE0, 0x0010, "OW", turnedPixels);
  const Bytes& dataSet = expected;
  ASSERT_GT(whole.size(), dataSet.size());
  EXPECT_TRUE(std::equal(dataSet.begin(), dataSet.end(),
                         whole.end() - static_cast<std::ptrdiff_t>(dataSet.size())));
  EXPECT_EQ(Raw(object_, kPixelGroup, 0x0010), pixels);
}

TEST_F(FileSaving, SaysWhenMemoryEnds) {
  Load(FileOf(Encoding::kExplicitBig, SampleIn(Encoding::kExplicitBig)));
  std::uint64_t failures = 0;
  Variant bytes;
  FailEveryAllocation(
      [&] {
        const Status status = file_->SaveBytes(SAVE_COMPLETE, 0, &bytes);
        if (status == kOutOfMemory) ++failures;
        EXPECT_TRUE(status == kOk || status == kOutOfMemory);
      },
      [] {});
  EXPECT_GT(failures, 0u);
  EXPECT_EQ(LastError().text, "Not enough memory");
  EXPECT_EQ(BytesIn(bytes).size(), Saved(SAVE_COMPLETE).size());
}

}  // namespace
}  // namespace tessaret::test
