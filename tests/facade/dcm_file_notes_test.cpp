// What the reader's notes say, each end and each oddity once: the numbers that a host gets are not those of the reader.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/dcm_file_helpers.h"

namespace tessaret::test {
namespace {

DataSetBuilder Explicit() { return DataSetBuilder(Encoding::kExplicitLittle); }

/// An element of 10 bytes.
Bytes Name() { return Explicit().Element(0x0010, 0x0010, "PN", "A "); }

/// A sequence of undefined length, whose head takes 12 bytes, around `content`.
Bytes Sequence(const Bytes& content) {
  return Explicit().Head(0x0008, 0x1140, "SQ", kNoLength).Raw(content).EndSequence();
}

class FileNotes : public testing::Test {
 protected:
  void Load(const Bytes& bytes, _EnumDataEncoding encoding = ENCODING_EXPLICIT_LITTLE) {
    ASSERT_EQ(file_->LoadBytes(BytesVariant(bytes), LOAD_PIXELS, encoding), kOk)
        << LastError().text;
  }

  Ref<IDcmFile> file_ = FileFacetOf(NewObject());
};

TEST_F(FileNotes, SayOfEachEndWhichItIs) {
  struct Case {
    Bytes bytes;
    Met end;
  };
  Bytes cut = Name();
  cut.pop_back();
  const Bytes open = Explicit().Head(0x0008, 0x1140, "SQ", kNoLength).Item().Raw(Name());
  const Case cases[] = {
      {Name(), {READ_TO_THE_END, 0, 0, 0}},
      {cut, {READ_CUT_ELEMENT, 0, 0x0010, 0x0010}},
      // The heads of the sequence and the item, and the element: 12, 8 and 10 bytes.
      {open, {READ_NO_DELIMITER, 30, 0, 0}},
      {Explicit().Raw(Name()).Tag(0xFFFE, 0x0001).U32(0), {READ_STRAY_TAG, 10, 0xFFFE, 0x0001}},
      {Explicit().Item(0).Raw(Name()), {READ_ORPHAN_ITEM, 0, 0xFFFE, 0xE000}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.end.what);
    Load(each.bytes);
    EXPECT_EQ(EndOf(file_), each.end);
  }
}

TEST_F(FileNotes, SayOfEachOddityWhichItIs) {
  struct Case {
    Bytes bytes;
    Met oddity;
  };
  const Bytes longValue = Explicit().Head(0x0010, 0x0020, "LO", 40).Raw({'a', 'b'});
  const Bytes early = Explicit().Item(30).Raw(Name()).EndItem();
  const Bytes stray = Explicit().Item(0).Tag(0x0008, 0x0005).U32(2).Raw({'a', 'b'}).Item(0);
  const Bytes open = Explicit().Item().Raw(Name());
  const Bytes inner = Explicit().Head(0x0008, 0x1199, "SQ", 18).Raw(open);
  const Case cases[] = {
      // An item of 10 bytes, of which 2 are left for a value of 40.
      {Explicit().Head(0x0008, 0x1140, "SQ", 18).Item(10).Raw(longValue).Raw(Name()),
       {ODDITY_VALUE_BEYOND_ITEM, 20, 0x0010, 0x0020}},
      {Sequence(early), {ODDITY_WRONG_LENGTH, 12, 0xFFFE, 0xE000}},
      {Explicit().Head(0x0008, 0x1140, "SQ", 10).Raw(Name()),
       {ODDITY_ELEMENT_IN_SEQUENCE, 12, 0x0010, 0x0010}},
      {Explicit().Raw(Name()).Item(0), {ODDITY_ITEM_OUTSIDE, 10, 0xFFFE, 0xE000}},
      {Explicit().Head(0x7FE0, 0x0010, "OB", kNoLength).Raw(stray).EndSequence(),
       {ODDITY_STRAY_FRAGMENT, 20, 0x0008, 0x0005}},
      {Explicit().Head(0x0009, 0x1001, "OB", kNoLength).Item(0).EndSequence(),
       {ODDITY_NOT_A_SEQUENCE, 0, 0x0009, 0x1001}},
      // 12 bytes of the inner head, 8 of its item and 10 of the element; the item ends with the sequence around it.
      {Explicit().Head(0x0008, 0x1140, "SQ", 38).Item(30).Raw(inner),
       {ODDITY_NO_DELIMITER, 32, 0xFFFE, 0xE000}},
      {Explicit().Raw(Name()).EndItem(), {ODDITY_STRAY_DELIMITER, 10, 0xFFFE, 0xE00D}},
      {Explicit().Head(0x0008, 0x1140, "SQ", kNoLength).EndItem(),
       {ODDITY_WRONG_DELIMITER, 12, 0xFFFE, 0xE00D}},
      {Explicit().Raw(Name()).Element(0x0002, 0x0010, "UI", "1.2."),
       {ODDITY_LATE_SYNTAX, 10, 0x0002, 0x0010}},
      {Explicit().Tag(0x0010, 0x0010).Raw({0, 0, 2, 0, 'A', ' '}),
       {ODDITY_NO_LETTERS, 0, 0x0010, 0x0010}},
      {Explicit().Raw(Name()).Raw(Name()), {ODDITY_TWICE, 10, 0x0010, 0x0010}},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.oddity.what);
    Load(each.bytes);
    EXPECT_EQ(OddityOf(file_, 0), each.oddity);
    EXPECT_EQ(OddityOf(file_, 1).what, ODDITY_NONE);
  }
}

TEST_F(FileNotes, SayNoLengthOfAMetaHeaderWhoseEndWasNotSeen) {
  const Bytes meta = MetaGroup(SyntaxUidOf(Encoding::kExplicitLittle));
  const Bytes whole = Joined({Preamble(), meta});
  for (const std::size_t missing : {0u, 1u}) {
    Load({whole.begin(), whole.end() - static_cast<std::ptrdiff_t>(missing)}, ENCODING_NONE);
    double stated = -7;
    double counted = -7;
    VariantBool found = true;
    EXPECT_EQ(file_->GetMetaLength(&stated, &counted, &found), kOk);
    EXPECT_EQ(found.value, 0);
    EXPECT_EQ(stated, -7);
    EXPECT_EQ(counted, -7);
  }
}

}  // namespace
}  // namespace tessaret::test
