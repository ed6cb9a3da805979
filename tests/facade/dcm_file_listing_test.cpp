// All elements of a data set at once.
#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/dcm_file_helpers.h"
#include "support/allocation_failure.h"

namespace tessaret::test {
namespace {

struct Row {
  std::int32_t level;
  double tag;
  std::int32_t type;
  double length;
  double offset;
  bool hasValue;
  std::int32_t items;
  friend bool operator==(const Row&, const Row&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.level << ' ' << row.tag << ' ' << row.type << ' ' << row.length << ' '
               << row.offset << ' ' << row.hasValue << ' ' << row.items;
  }
};

/// The code of a type: its first letter times 256 plus the second.
constexpr std::int32_t CodeOf(char first, char second) { return first * 256 + second; }

class FileListing : public testing::Test {
 protected:
  void Load(const Bytes& bytes, std::int32_t options = LOAD_PIXELS,
            _EnumDataEncoding encoding = ENCODING_EXPLICIT_LITTLE) {
    ASSERT_EQ(file_->LoadBytes(BytesVariant(bytes), options, encoding), kOk) << LastError().text;
  }

  Status Ask() {
    return file_->GetListing(&columns_[0], &columns_[1], &columns_[2], &columns_[3], &columns_[4],
                             &columns_[5], &columns_[6], &count_);
  }

  std::vector<Row> Rows() {
    EXPECT_EQ(Ask(), kOk) << LastError().text;
    std::vector<Row> rows;
    for (std::size_t at = 0; at < static_cast<std::size_t>(count_); ++at) {
      rows.push_back({Entry<std::int32_t>(0, at), Entry<double>(1, at), Entry<std::int32_t>(2, at),
                      Entry<double>(3, at), Entry<double>(4, at),
                      Entry<VariantBool>(5, at).IsTrue(), Entry<std::int32_t>(6, at)});
    }
    return rows;
  }

  template <class T>
  T Entry(std::size_t column, std::size_t at) {
    const VariantArray* array = columns_[column].AsArray();
    return array == nullptr || array->Count() <= at ? T{} : array->Entries<T>()[at];
  }

  Ref<IDCMObject> object_ = NewObject();
  Ref<IDcmFile> file_ = FileFacetOf(object_);
  std::vector<Variant> columns_ = std::vector<Variant>(7);
  std::int32_t count_ = -7;
};

TEST_F(FileListing, HasEveryElementAndItemInTheOrderOfAFile) {
  DataSetBuilder inner(Encoding::kExplicitLittle);
  inner.Element(0x0008, 0x1155, "UI", "1.23");
  DataSetBuilder first(Encoding::kExplicitLittle);
  first.Element(0x0008, 0x1150, "UI", "1.2.34")
      .Sequence(0x0008, 0x1199, Lengths::kUndefined, Lengths::kUndefined, {inner});
  DataSetBuilder second(Encoding::kExplicitLittle);
  DataSetBuilder all(Encoding::kExplicitLittle);
  all.Element(0x0008, 0x0060, "CS", "CT")
      .Sequence(0x0008, 0x1140, Lengths::kUndefined, Lengths::kUndefined, {first, second})
      .Element(0x0010, 0x0020, "LO", "");
  Load(all);
  // Heads of tag, letters and length: 8 bytes in the short form, 12 of a sequence, 8 of an item and of each delimiter.
  // The sequence stands at 10, its item at 22, and in that 30: 8 + 6 bytes, a sequence at 44, its item at 56 and in that 64:
  // 8 + 4 bytes; two delimiters, one of the item, an empty item with its own and that of the sequence lead from 76 to 124.
  const std::vector<Row> expected = {
      {0, 0x00080060, CodeOf('C', 'S'), 2, 0, true, 0},
      {0, 0x00081140, CodeOf('S', 'Q'), 0, 10, false, 2},
      {1, 0xFFFEE000, 0, 2, 0, false, -1},
      {1, 0x00081150, CodeOf('U', 'I'), 6, 30, true, 0},
      {1, 0x00081199, CodeOf('S', 'Q'), 0, 44, false, 1},
      {2, 0xFFFEE000, 0, 1, 0, false, -1},
      {2, 0x00081155, CodeOf('U', 'I'), 4, 64, true, 0},
      {1, 0xFFFEE000, 0, 0, 0, false, -1},
      {0, 0x00100020, CodeOf('L', 'O'), 0, 124, false, 0},
  };
  EXPECT_EQ(Rows(), expected);
}

TEST_F(FileListing, TellsFragmentsOfPixelDataFromItems) {
  DataSetBuilder all(Encoding::kExplicitLittle);
  all.Head(0x7FE0, 0x0010, "OB", 0xFFFFFFFF);
  all.Item(4).Raw(BytesOf("abcd")).EndSequence();
  Load(all);
  const std::vector<Row> rows = Rows();
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].items, 1);
  EXPECT_EQ(rows[1].items, -1);
  EXPECT_EQ(rows[2].tag, 0xFFFEE000);
  EXPECT_EQ(rows[2].level, 1);
  EXPECT_EQ(rows[2].items, 0);
  EXPECT_EQ(rows[2].length, 4);
  EXPECT_TRUE(rows[2].hasValue);
}

TEST_F(FileListing, SaysWhatWasNotLoadedAndWhatHasNoType) {
  DataSetBuilder all(Encoding::kImplicitLittle);
  all.Element(0x0009, 0x1001, "UN", "ab").Element(0x7FE0, 0x0010, "OW", Bytes(6, 1));
  Load(all, 0, ENCODING_IMPLICIT_LITTLE);
  const std::vector<Row> rows = Rows();
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[1], (Row{0, 0x7FE00010, CodeOf('O', 'W'), 6, 10, false, 0}));
  ASSERT_EQ(object_->PutVRData(0x0009, 0x1001, "", BytesVariant({1})), kOk);
  EXPECT_EQ(Rows()[0].type, 0);
}

TEST_F(FileListing, HasLengthsAndOffsetsThatALongDoesNot) {
  auto vr = std::make_unique<VR>(0x7FE0, 0x0010, 3000000000u, nullptr);
  vr->StreamPosition = 4000000000u;
  CoreOf(object_)->Push(vr.release());
  CoreOf(object_)->Push(new VR(0x7FE0, 0x0020, kUndefinedLength, nullptr));
  const std::vector<Row> expected = {{0, 0x7FE00010, 0, 3e9, 4e9, false, 0},
                                     {0, 0x7FE00020, 0, -1, 0, false, 0}};
  EXPECT_EQ(Rows(), expected);
  EXPECT_EQ(StoredIn(file_, 0x7FE0, 0x0010).length, 3e9);
  EXPECT_EQ(StoredIn(file_, 0x7FE0, 0x0010).offset, 4e9);
  EXPECT_EQ(StoredIn(file_, 0x7FE0, 0x0020).length, -1);
}

TEST_F(FileListing, AgreesWithGetElementForEveryEncoding) {
  for (const Encoding encoding : kAllEncodings) {
    SCOPED_TRACE(NameOf(encoding));
    DataSetBuilder all(encoding);
    all.Element(0x0010, 0x0010, "PN", "Doe^John").Number(0x0028, 0x0010, 258);
    all.Element(0x7FE0, 0x0010, "OW", Bytes(8, 1));
    Load(FileOf(encoding, all), LOAD_PIXELS, ENCODING_NONE);
    for (const Row& row : Rows()) {
      const auto tag = static_cast<std::int32_t>(row.tag);
      const Stored stored = StoredIn(file_, tag >> 16, tag & 0xFFFF);
      EXPECT_EQ(stored.type, (std::string{static_cast<char>(row.type >> 8),
                                          static_cast<char>(row.type & 0xFF)}));
      EXPECT_EQ(stored.length, row.length);
      EXPECT_EQ(stored.offset, row.offset);
      EXPECT_EQ(stored.hasValue.IsTrue(), row.hasValue);
      EXPECT_EQ(stored.items, row.items);
    }
  }
}

TEST_F(FileListing, LeavesOutItemsThatAreNot) {
  ASSERT_EQ(object_->putref_Sequence(0x0040, 0xA730, 0, NewObject().Get()), kOk);
  CoreOf(object_)->GetVR(0x0040, 0xA730)->Items->Add(nullptr);
  EXPECT_EQ(Rows().size(), 2u);
  // The one behind it is there.
  ASSERT_EQ(object_->putref_Sequence(0x0040, 0xA730, -1, ObjectOfPatient("id").Get()), kOk);
  ASSERT_EQ(Rows().size(), 4u);
  EXPECT_EQ(Rows()[3].tag, 0x00100020);
}

TEST_F(FileListing, IsEmptyWithoutElementsAndWithoutADataSet) {
  columns_[3] = Variant(7);
  EXPECT_EQ(Rows().size(), 0u);
  for (const Variant& column : columns_) EXPECT_TRUE(column.IsEmpty());
  EXPECT_EQ(count_, 0);
  EXPECT_LT(object_->Load("/no/such/file", VariantBool(true)), 0);
  count_ = -7;
  EXPECT_EQ(Rows().size(), 0u);
  EXPECT_EQ(count_, 0);
}

TEST_F(FileListing, WantsAPlaceForEachColumn) {
  Variant one;
  for (std::size_t missing = 0; missing < 7; ++missing) {
    std::vector<Variant*> places(7, &one);
    places[missing] = nullptr;
    EXPECT_EQ(file_->GetListing(places[0], places[1], places[2], places[3], places[4], places[5],
                                places[6], &count_),
              kPointer)
        << missing;
  }
  EXPECT_EQ(file_->GetListing(&one, &one, &one, &one, &one, &one, &one, nullptr), kPointer);
}

TEST_F(FileListing, SaysWhenMemoryEnds) {
  DataSetBuilder all(Encoding::kExplicitLittle);
  all.Element(0x0010, 0x0010, "PN", "Doe^John");
  Load(all);
  std::uint64_t failures = 0;
  FailEveryAllocation(
      [&] {
        const Status status = Ask();
        if (status == kOutOfMemory) ++failures;
        EXPECT_TRUE(status == kOk || status == kOutOfMemory);
      },
      [] {});
  EXPECT_GT(failures, 0u);
  EXPECT_EQ(Rows().size(), 1u);
}

TEST_F(FileListing, IsDeepWhereAHostNestsDeeply) {
  constexpr int kDepth = 3000;
  Ref<IDCMObject> inner = NewObject();
  std::vector<Ref<IDCMObject>> all;
  for (int depth = 0; depth < kDepth; ++depth) {
    Ref<IDCMObject> outer = NewObject();
    ASSERT_EQ(outer->putref_Sequence(0x0040, 0xA730, 0, inner.Get()), kOk);
    all.push_back(inner);
    inner = outer;
  }
  file_ = FileFacetOf(inner);
  const std::vector<Row> rows = Rows();
  ASSERT_EQ(rows.size(), std::size_t{2} * kDepth);
  EXPECT_EQ(rows.back().level, kDepth);
}

TEST_F(FileListing, TheNamedSyntaxTellsTheEncodingThatIsMeant) {
  const auto named = [&] {
    auto encoding = static_cast<_EnumDataEncoding>(-7);
    EXPECT_EQ(file_->get_NamedEncoding(&encoding), kOk);
    return encoding;
  };
  EXPECT_EQ(named(), ENCODING_NONE);
  EXPECT_EQ(file_->get_NamedEncoding(nullptr), kPointer);
  constexpr _EnumDataEncoding kMeant[] = {ENCODING_IMPLICIT_LITTLE, ENCODING_EXPLICIT_LITTLE,
                                          ENCODING_EXPLICIT_BIG};
  std::size_t at = 0;
  for (const Encoding encoding :
       {Encoding::kImplicitLittle, Encoding::kExplicitLittle, Encoding::kExplicitBig}) {
    DataSetBuilder all(encoding);
    all.Element(0x0010, 0x0010, "PN", "Doe^John");
    Load(FileOf(encoding, all), 0, ENCODING_NONE);
    EXPECT_EQ(named(), kMeant[at++]);
  }
  // JPEG, whose elements are written as explicit little endian has them, and a syntax that nobody knows.
  const auto withSyntax = [&](const char* uid) {
    DataSetBuilder head(Encoding::kExplicitLittle);
    head.Element(0x0002, 0x0010, "UI", uid);
    Load(Joined({Preamble(), head}), 0, ENCODING_NONE);
    return named();
  };
  EXPECT_EQ(withSyntax("1.2.840.10008.1.2.4.50"), ENCODING_EXPLICIT_LITTLE);
  EXPECT_EQ(withSyntax("1.2.3.4"), ENCODING_NONE);
}

}  // namespace
}  // namespace tessaret::test
