// Bare big endian data sets, which are read a second time once the first reading told what they are. What cannot be read is told
// in the system's words and never passes for a short file.
#include "source_file.h"

#include <cerrno>

#include <gtest/gtest.h>

#include "class_object.h"
#include "platform/file_calls.h"
#include "support/data_set_builder.h"
#include "support/file_failure.h"
#include "support/memory_file.h"

namespace tessaret::tool {
namespace {

using test::Bytes;
using test::DataSetBuilder;
using test::Encoding;
using test::FileFailure;

/// More than is read at once.
constexpr std::size_t kPixelBytes = 3 << 20;

class BareBigEndian : public ::testing::Test {
 protected:
  BareBigEndian() { host_.Dictionary(); }  // whose files are read without the failures that follow

  SourceFile Load(const SourceOptions& options = {}) {
    return LoadSource(file_.Path(), options, host_);
  }

  void ExpectWhole(const SourceFile& source) {
    EXPECT_EQ(source.failure, "");
    EXPECT_TRUE(source.IsBigEndian());
    ASSERT_TRUE(source.object);
    ASSERT_EQ(source.listing.CountOnTop(), 3u);
    EXPECT_EQ(RowsIn(source), 258);
    EXPECT_EQ(source.listing.FindOnTop(kPixelDataTag)->length, kPixelBytes);
  }

  void ExpectRefused(const SourceFile& source, int error) {
    EXPECT_FALSE(source.object);
    EXPECT_EQ(source.failure, SystemErrorText(error));
    EXPECT_FALSE(source.IsWhole());
  }

  /// Lets each call of a kind fail in turn, and all of its kind behind it, until none is left to fail.
  void FailEach(FileCall kind) {
    for (int nth = 1;; ++nth) {
      SCOPED_TRACE(nth);
      FileFailure failure;
      failure.FailCalls(kind, nth, 1'000'000, EIO);
      const SourceFile source = Load();
      if (failure.Calls(kind) < nth) {
        EXPECT_GT(nth, 2) << "the second reading has such calls too";
        return ExpectWhole(source);
      }
      ExpectRefused(source, EIO);
    }
  }

  static int RowsIn(const SourceFile& source) {
    return UnsignedOf(*FileOf(*source.object), MakeTagKey(0x0028, 0x0010));
  }

  Host host_;
  test::MemoryFile file_{DataSetBuilder(Encoding::kExplicitBig)
                             .Element(0x0010, 0x0010, "PN", "Doe^John")
                             .Number(0x0028, 0x0010, 258)
                             .Element(0x7FE0, 0x0010, "OW", Bytes(kPixelBytes, 1))};
};

TEST_F(BareBigEndian, IsRead) { ExpectWhole(Load()); }

TEST_F(BareBigEndian, IsRefusedWhenItCannotBeOpenedAgain) {
  FileFailure failure;
  failure.FailCall(FileCall::kOpen, 2, EMFILE);
  ExpectRefused(Load(), EMFILE);
}

TEST_F(BareBigEndian, IsRefusedWhenAnyOpeningOrReadingFails) {
  FailEach(FileCall::kOpen);
  FailEach(FileCall::kRead);
}

TEST_F(BareBigEndian, IsReadToItsPixelsOnlyWhenTheyAreNotWanted) {
  const SourceFile source = Load({.loadPixels = false});
  EXPECT_EQ(source.failure, "");
  ASSERT_TRUE(source.object);
  EXPECT_EQ(RowsIn(source), 258);
  const auto pixels = source.listing.FindOnTop(kPixelDataTag);
  ASSERT_TRUE(pixels);
  EXPECT_FALSE(pixels->hasValue);
  EXPECT_EQ(pixels->length, kPixelBytes);
}

TEST_F(BareBigEndian, GoesOnBehindAStrayDelimiter) {
  file_.Fill(DataSetBuilder(Encoding::kExplicitBig)
                 .Element(0x0010, 0x0010, "PN", "Doe^John")
                 .EndItem()
                 .EndItem()
                 .Number(0x0028, 0x0010, 258));
  const SourceFile source = Load();
  EXPECT_EQ(source.failure, "");
  ASSERT_TRUE(source.object);
  ASSERT_EQ(source.listing.CountOnTop(), 2u);
  EXPECT_EQ(RowsIn(source), 258);
}

TEST_F(BareBigEndian, TellsWhereItIsCut) {
  // The value of the third element is a byte short: it stands behind 16 and 10 bytes.
  Bytes bytes = DataSetBuilder(Encoding::kExplicitBig)
                    .Element(0x0010, 0x0010, "PN", "Doe^John")
                    .Number(0x0028, 0x0010, 258)
                    .Element(0x7FE0, 0x0010, "OW", Bytes(8, 1));
  bytes.pop_back();
  file_.Fill(bytes);
  const SourceFile source = Load();
  EXPECT_EQ(source.failure, "truncated at offset 26, in (7fe0,0010)");
  ASSERT_TRUE(source.object);
  EXPECT_EQ(RowsIn(source), 258);
}

}  // namespace
}  // namespace tessaret::tool
