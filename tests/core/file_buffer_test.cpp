#include "core/file_buffer.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "scripted_buffer.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::FileFailure;
using test::Pattern;
using test::TempFolder;

class FileBufferTest : public ::testing::Test {
 protected:
  /// A file of this many bytes of the pattern.
  std::string FileOf(std::size_t size, const std::string& name = "file") {
    test::WriteBytes(folder_.File(name), Pattern(size));
    return folder_.File(name);
  }
  static Bytes Next(FileBuffer& buffer, std::uint32_t count) {
    Bytes bytes(count);
    return buffer.Read(bytes.data(), count) > 0 ? bytes : Bytes{};
  }
  static int OpenDescriptors() {
    int count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator("/proc/self/fd")) {
      ++count;
    }
    return count;
  }

  TempFolder folder_;
};

TEST_F(FileBufferTest, StartsClosed) {
  FileBuffer buffer;
  EXPECT_EQ(buffer.Stream, nullptr);
  EXPECT_EQ(buffer.Link, nullptr);
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_EQ(buffer.Total(), -1);
  EXPECT_EQ(buffer.SuppliesAtMost(), 0u);
  EXPECT_EQ(buffer.LendStream(), nullptr);
  std::uint8_t byte = 0;
  EXPECT_EQ(buffer.ReadBinary(&byte, 1), -1);
  EXPECT_EQ(buffer.Read(&byte, 1), 0);
  EXPECT_FALSE(buffer.Seek(0));
  EXPECT_TRUE(buffer.Close());
  EXPECT_FALSE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), "");
}

TEST_F(FileBufferTest, ReadsAFileToItsEndAndNoFurther) {
  for (const std::size_t size : {1u, 1000u, 1023u, 1024u, 1025u, 8192u, 40000u, 300000u}) {
    const std::string path = FileOf(size);
    FileBuffer buffer;
    ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
    ASSERT_NE(buffer.Stream, nullptr);
    EXPECT_FALSE(buffer.IsEnd());
    EXPECT_EQ(Next(buffer, static_cast<std::uint32_t>(size)), Pattern(size)) << size;
    EXPECT_EQ(buffer.Position, size);
    EXPECT_EQ(buffer.Available(), 0u);
    EXPECT_TRUE(buffer.IsEnd());
    EXPECT_EQ(Next(buffer, 1), Bytes{});
    EXPECT_FALSE(buffer.HasError());
    EXPECT_EQ(buffer.ErrorText(), "");
  }
}

TEST_F(FileBufferTest, AReadBeyondTheEndFailsAndCountsOnlyWhatWasConsumed) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(2500).c_str()));
  EXPECT_EQ(Next(buffer, 1000), Pattern(1000));
  EXPECT_EQ(Next(buffer, 1501), Bytes{});
  EXPECT_EQ(buffer.Position, 1000u);
  EXPECT_FALSE(buffer.HasError());
  EXPECT_EQ(Next(buffer, 1500), Pattern(1500, 1001));
  EXPECT_EQ(buffer.Position, 2500u);
}

TEST_F(FileBufferTest, ALowLevelReadIsShortAtTheEndAndThenFails) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(10).c_str()));
  Bytes target(8);
  EXPECT_EQ(buffer.ReadBinary(target.data(), 8), 8);
  EXPECT_EQ(target, Pattern(8));
  EXPECT_EQ(buffer.ReadBinary(target.data(), 8), 2);
  EXPECT_EQ(Bytes(target.begin(), target.begin() + 2), Pattern(2, 9));
  EXPECT_EQ(buffer.ReadBinary(target.data(), 8), -1);
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_EQ(buffer.Position, 0u);
}

TEST_F(FileBufferTest, AvailableTriesOneFillWhenNothingWaits) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(1500).c_str()));
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.Available(), 1024u);
  EXPECT_EQ(buffer.InSize, 1024);
  EXPECT_EQ(buffer.BreakSize, 32600);
  EXPECT_EQ(Next(buffer, 1000), Pattern(1000));
  // Something waits, so nothing is added to it.
  EXPECT_EQ(buffer.Available(), 24u);
  EXPECT_EQ(Next(buffer, 24), Pattern(24, 1001));
  EXPECT_EQ(buffer.Available(), 476u);
  EXPECT_EQ(Next(buffer, 476), Pattern(476, 1025));
  EXPECT_EQ(buffer.Available(), 0u);
}

TEST_F(FileBufferTest, ItsEndIsNotMetWhileBytesAreInHand) {
  FileBuffer sized;
  ASSERT_TRUE(sized.OpenForRead(FileOf(1500).c_str()));
  EXPECT_EQ(sized.SuppliesAtMost(), 1500u);
  Bytes target(100);
  EXPECT_EQ(sized.ReadBinary(target.data(), 100), 100);
  EXPECT_FALSE(sized.IsEnd());
  EXPECT_EQ(sized.Available(), 1024u);

  // Drained as a parser does it.
  FileBuffer drained;
  ASSERT_TRUE(drained.OpenForRead(FileOf(20000).c_str()));
  Bytes all;
  while (const std::uint32_t count = drained.Available()) {
    const Bytes part = Next(drained, count);
    all.insert(all.end(), part.begin(), part.end());
  }
  EXPECT_EQ(all, Pattern(20000));
  EXPECT_TRUE(drained.IsEnd());
}

TEST_F(FileBufferTest, AnEmptyFileHasNothingAndNoError) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(0).c_str()));
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_EQ(Next(buffer, 1), Bytes{});
  EXPECT_FALSE(buffer.HasError());
}

TEST_F(FileBufferTest, FillAtTheEndAnswersTrueOnceTheEndWasMet) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(100).c_str()));
  EXPECT_EQ(Next(buffer, 100), Pattern(100));
  EXPECT_EQ(Next(buffer, 1), Bytes{});
  ASSERT_TRUE(buffer.IsEnd());
  EXPECT_TRUE(buffer.Fill(50));
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.BreakSize, 32600);
}

TEST_F(FileBufferTest, AMissingFileIsNotOpenedAndSaysWhy) {
  FileBuffer buffer;
  EXPECT_FALSE(buffer.OpenForRead(folder_.File("missing").c_str()));
  EXPECT_EQ(buffer.Stream, nullptr);
  EXPECT_TRUE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(ENOENT));
  EXPECT_FALSE(buffer.OpenForWrite((folder_.File("missing") + "/file").c_str()));
  EXPECT_EQ(buffer.ErrorText(), std::strerror(ENOENT));
  // One that opens takes the old error back.
  EXPECT_TRUE(buffer.OpenForRead(FileOf(1).c_str()));
  EXPECT_FALSE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), "");
}

TEST_F(FileBufferTest, NoPathIsNotOpened) {
  FileBuffer buffer;
  EXPECT_FALSE(buffer.OpenForRead(nullptr));
  EXPECT_EQ(buffer.ErrorText(), std::strerror(EINVAL));
  EXPECT_FALSE(buffer.OpenForWrite(nullptr));
  EXPECT_TRUE(buffer.HasError());
}

TEST_F(FileBufferTest, AFolderGivesNoBytesAndSaysWhy) {
  FileBuffer buffer;
  if (buffer.OpenForRead(folder_.Path().c_str())) {
    EXPECT_EQ(buffer.Available(), 0u);
  }
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_TRUE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(EISDIR));
}

TEST_F(FileBufferTest, SeveralReadersShareAFile) {
  const std::string path = FileOf(5000);
  FileBuffer first;
  FileBuffer second;
  ASSERT_TRUE(first.OpenForRead(path.c_str()));
  ASSERT_TRUE(second.OpenForRead(path.c_str()));
  EXPECT_EQ(Next(first, 4000), Pattern(4000));
  EXPECT_EQ(Next(second, 5000), Pattern(5000));
  EXPECT_EQ(Next(first, 1000), Pattern(1000, 4001));
}

TEST_F(FileBufferTest, CloseGivesTheFileBackAndMayBeCalledAgain) {
  const std::string path = FileOf(5000);
  const int before = OpenDescriptors();
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
  EXPECT_EQ(OpenDescriptors(), before + 1);
  EXPECT_TRUE(buffer.Close());
  EXPECT_EQ(buffer.Stream, nullptr);
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_TRUE(buffer.Close());
  EXPECT_FALSE(buffer.HasError());
}

TEST_F(FileBufferTest, TheDestructorAndAnotherOpenCloseTheFile) {
  const std::string path = FileOf(5000);
  const std::string other = FileOf(10, "other");
  const int before = OpenDescriptors();
  {
    FileBuffer buffer;
    ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
    ASSERT_TRUE(buffer.OpenForRead(other.c_str()));
    EXPECT_EQ(OpenDescriptors(), before + 1);
    EXPECT_FALSE(buffer.OpenForRead(folder_.File("missing").c_str()));
    EXPECT_EQ(OpenDescriptors(), before);
    ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(FileBufferTest, OpeningDropsWhatWaitedToBeReadAndKeepsWhatIsToBeWritten) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(50).c_str()));
  EXPECT_EQ(buffer.Available(), 50u);
  buffer.Write16(0x0201);
  ASSERT_TRUE(buffer.OpenForWrite(folder_.File("copy").c_str()));
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.OutSize, 2);
  EXPECT_TRUE(buffer.Flush());
  buffer.Close();
  EXPECT_EQ(test::ReadBytes(folder_.File("copy")), (Bytes{1, 2}));
}

TEST_F(FileBufferTest, SeekGoesToAnOffsetFromTheStart) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(300000).c_str()));
  for (const std::uint32_t offset : {0u, 132u, 250000u, 3u, 299990u, 140000u, 8192u, 8191u, 0u}) {
    EXPECT_TRUE(buffer.Seek(offset));
    EXPECT_EQ(Next(buffer, 10), Pattern(10, offset + 1)) << offset;
  }
}

TEST_F(FileBufferTest, SeekDropsWhatWaitsAndLeavesThePosition) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(5000).c_str()));
  EXPECT_EQ(buffer.Available(), 1024u);
  EXPECT_EQ(Next(buffer, 4), Pattern(4));
  EXPECT_TRUE(buffer.Seek(2000));
  EXPECT_EQ(buffer.InSize, 0);
  EXPECT_EQ(buffer.Incoming.ListLength, 0u);
  EXPECT_EQ(buffer.Position, 4u);
  EXPECT_EQ(Next(buffer, 4), Pattern(4, 2001));
}

TEST_F(FileBufferTest, SeekLeadsBackFromTheEndAndBeyond) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(5000).c_str()));
  EXPECT_EQ(Next(buffer, 5001), Bytes{});
  EXPECT_TRUE(buffer.Seek(4000));
  EXPECT_FALSE(buffer.IsEnd());
  EXPECT_EQ(Next(buffer, 1000), Pattern(1000, 4001));
  EXPECT_TRUE(buffer.Seek(1000000));
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_FALSE(buffer.HasError());
  EXPECT_TRUE(buffer.Seek(0));
  EXPECT_EQ(Next(buffer, 5000), Pattern(5000));
}

TEST_F(FileBufferTest, ASeekThatFailsDropsNothing) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(300000).c_str()));
  EXPECT_EQ(buffer.Available(), 1024u);
  // No file offset is negative.
  EXPECT_FALSE(buffer.Seek(std::numeric_limits<std::uint64_t>::max()));
  EXPECT_EQ(buffer.InSize, 1024);
  EXPECT_EQ(Next(buffer, 2000), Pattern(2000));
}

TEST_F(FileBufferTest, SeekInAFileThatIsWrittenMovesThePlaceOfTheNextBytes) {
  const std::string path = folder_.File("new");
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  const Bytes bytes = Pattern(1000);
  buffer.Write(bytes.data(), 1000);
  buffer.Flush();
  EXPECT_TRUE(buffer.Seek(0));
  buffer.Write8(1);
  buffer.Flush();
  EXPECT_TRUE(buffer.Seek(500));
  buffer.Write8(2);
  buffer.Flush();
  EXPECT_FALSE(buffer.Seek(std::numeric_limits<std::uint64_t>::max()));
  buffer.Close();
  EXPECT_FALSE(buffer.HasError());
  Bytes expected = bytes;
  expected[0] = 1;
  expected[500] = 2;
  EXPECT_EQ(test::ReadBytes(path), expected);
}

TEST_F(FileBufferTest, AFileThatIsWrittenGivesNothingToReadAndStaysWritable) {
  const std::string path = folder_.File("new");
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  EXPECT_EQ(buffer.Available(), 0u);
  EXPECT_EQ(Next(buffer, 1), Bytes{});
  EXPECT_EQ(buffer.LendStream(), nullptr);
  EXPECT_FALSE(buffer.HasError());
  buffer.Write8(1);
  buffer.Flush();
  buffer.Close();
  EXPECT_EQ(test::ReadBytes(path), Bytes{1});
}

TEST_F(FileBufferTest, AFileOpenedForReadingAfterOneForWritingIsRead) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(folder_.File("new").c_str()));
  buffer.Write8(7);
  buffer.Flush();
  ASSERT_TRUE(buffer.OpenForRead(folder_.File("new").c_str()));
  EXPECT_EQ(buffer.LendStream(), buffer.Stream.get());
  EXPECT_EQ(Next(buffer, 1), Bytes{7});
}

TEST_F(FileBufferTest, WritesWhatIsFlushed) {
  const std::string path = FileOf(5000);
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  // "wb" empties the file at once.
  EXPECT_EQ(test::ReadBytes(path), Bytes{});
  const Bytes bytes = Pattern(100000);
  EXPECT_TRUE(buffer.Write(bytes.data(), 100000));
  EXPECT_EQ(test::ReadBytes(path), Bytes{});
  EXPECT_TRUE(buffer.Flush());
  EXPECT_TRUE(buffer.Close());
  EXPECT_FALSE(buffer.HasError());
  EXPECT_EQ(test::ReadBytes(path), bytes);
}

TEST_F(FileBufferTest, WhatWasNotFlushedIsLost) {
  const std::string path = folder_.File("new");
  {
    FileBuffer buffer;
    ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
    buffer.Write8(1);
    buffer.Flush();
    buffer.Write8(2);
  }
  EXPECT_EQ(test::ReadBytes(path), Bytes{1});
}

TEST_F(FileBufferTest, SendGoesToTheFileAheadOfWhatIsQueued) {
  const std::string path = folder_.File("new");
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  buffer.Write16(0x0403);
  const std::uint8_t first[] = {1, 2};
  EXPECT_EQ(buffer.SendBinary(first, 2), 1);
  buffer.Flush();
  buffer.Close();
  EXPECT_EQ(test::ReadBytes(path), (Bytes{1, 2, 3, 4}));
}

TEST_F(FileBufferTest, LongValuesGoStraightToTheFileInOrder) {
  const std::string path = folder_.File("new");
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  const Bytes value = Pattern(200000);
  buffer.Write8(1);
  EXPECT_TRUE(buffer.WriteLong(value.data(), 10));
  EXPECT_EQ(buffer.OutSize, 11);
  EXPECT_TRUE(buffer.WriteLong(value.data(), 200000));
  EXPECT_EQ(buffer.OutSize, 0);
  buffer.Write8(2);
  EXPECT_EQ(test::ReadBytes(path).size(), 200011u);
  buffer.Flush();
  buffer.Close();
  EXPECT_EQ(test::ReadBytes(path), test::Joined({{1}, Pattern(10), value, {2}}));
}

TEST_F(FileBufferTest, MuchThatWaitsIsSentWhenAsked) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(folder_.File("new").c_str()));
  const Bytes bytes = Pattern(1 << 20);
  buffer.Write(bytes.data(), (1 << 20) - 1);
  EXPECT_TRUE(buffer.FlushIfMuchWaits());
  EXPECT_EQ(buffer.OutSize, (1 << 20) - 1);
  buffer.Write(&bytes.back(), 1);
  EXPECT_TRUE(buffer.FlushIfMuchWaits());
  EXPECT_EQ(buffer.OutSize, 0);
  EXPECT_EQ(test::ReadBytes(folder_.File("new")), bytes);
}

TEST_F(FileBufferTest, ASendToAFullDiskAnswersTrueAndKeepsTheError) {
  const std::string path = folder_.File("new");
  FileFailure failure;
  failure.FillDiskAfter(3);
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(path.c_str()));
  const Bytes bytes = Pattern(10);
  EXPECT_EQ(buffer.SendBinary(bytes.data(), 10), 1);
  EXPECT_TRUE(buffer.HasError());
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(ENOSPC));
  buffer.Write8(1);
  EXPECT_TRUE(buffer.Flush());
  EXPECT_TRUE(buffer.Close());
  EXPECT_TRUE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(ENOSPC));
}

TEST_F(FileBufferTest, AnErrorThatComesWithTheCloseIsKept) {
  FileFailure failure;
  failure.FailCall(FileCall::kClose, 1, EIO);
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForWrite(folder_.File("new").c_str()));
  EXPECT_TRUE(buffer.Close());
  EXPECT_TRUE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(EIO));
}

TEST_F(FileBufferTest, ASendWhereNothingIsOpenAnswersTrueAndIsAnError) {
  FileBuffer buffer;
  const std::uint8_t byte = 1;
  EXPECT_EQ(buffer.SendBinary(&byte, 1), 1);
  EXPECT_TRUE(buffer.HasError());
  EXPECT_EQ(buffer.ErrorText(), std::strerror(EBADF));
}

TEST_F(FileBufferTest, AFailedReadEndsTheStreamWithItsError) {
  const std::string path = FileOf(300000);
  for (const int nth : {1, 2, 3}) {
    FileFailure failure;
    failure.FailCalls(FileCall::kRead, nth, 1000, EIO);
    FileBuffer buffer;
    ASSERT_TRUE(buffer.OpenForRead(path.c_str()));
    Bytes target(300000);
    EXPECT_EQ(buffer.Read(target.data(), 300000), 0);
    EXPECT_EQ(buffer.Position, 0u);
    EXPECT_TRUE(buffer.HasError());
    EXPECT_TRUE(buffer.IsEnd());
    EXPECT_EQ(buffer.ErrorText(), std::strerror(EIO));
    // What came before it can be had.
    const auto came = static_cast<std::uint32_t>(buffer.InSize);
    EXPECT_EQ(Next(buffer, came), Pattern(came));
    EXPECT_EQ(buffer.Available(), 0u);
    buffer.Close();
    EXPECT_TRUE(buffer.HasError());
  }
}

TEST_F(FileBufferTest, ShortAndInterruptedCallsMakeNoDifference) {
  const std::string path = FileOf(20000);
  FileFailure failure;
  failure.InterruptEveryCall();
  failure.LimitCount(FileCall::kRead, 7);
  failure.LimitCount(FileCall::kWrite, 5);
  FileBuffer from;
  FileBuffer to;
  ASSERT_TRUE(from.OpenForRead(path.c_str()));
  ASSERT_TRUE(to.OpenForWrite(folder_.File("copy").c_str()));
  Bytes bytes(20000);
  EXPECT_EQ(from.Read(bytes.data(), 20000), 1);
  EXPECT_EQ(bytes, Pattern(20000));
  to.Write(bytes.data(), 20000);
  EXPECT_TRUE(to.Flush());
  to.Close();
  EXPECT_FALSE(from.HasError());
  EXPECT_FALSE(to.HasError());
  EXPECT_EQ(test::ReadBytes(folder_.File("copy")), Pattern(20000));
}

TEST_F(FileBufferTest, SuppliesAtMostWhatTheFileStillHolds) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(300000).c_str()));
  EXPECT_EQ(buffer.SuppliesAtMost(), 300000u);
  Next(buffer, 100);
  EXPECT_EQ(buffer.SuppliesAtMost(), 299900u);
  Next(buffer, 199900);
  EXPECT_EQ(buffer.SuppliesAtMost(), 100000u);
  EXPECT_TRUE(buffer.Seek(299999));
  EXPECT_EQ(buffer.SuppliesAtMost(), 1u);
  buffer.Close();
  EXPECT_EQ(buffer.SuppliesAtMost(), 0u);
}

TEST_F(FileBufferTest, BytesThatWaitDoNotMakeAPipeKnowItsEnd) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  ASSERT_EQ(::write(ends[1], "0123456789", 10), 10);
  ::close(ends[1]);
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(("/dev/fd/" + std::to_string(ends[0])).c_str()));
  ::close(ends[0]);
  ASSERT_TRUE(buffer.Fill(4));
  EXPECT_GT(buffer.InSize, 0u);
  EXPECT_EQ(buffer.SuppliesAtMost(), std::numeric_limits<std::uint64_t>::max());
}

TEST_F(FileBufferTest, APipeIsReadWithoutKnowingItsEnd) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const Bytes bytes = Pattern(3000);
  ASSERT_EQ(write(ends[1], bytes.data(), bytes.size()), 3000);
  close(ends[1]);
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(("/proc/self/fd/" + std::to_string(ends[0])).c_str()));
  close(ends[0]);
  EXPECT_EQ(buffer.SuppliesAtMost(), std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(Next(buffer, 3000), bytes);
  EXPECT_EQ(Next(buffer, 1), Bytes{});
  EXPECT_TRUE(buffer.IsEnd());
  EXPECT_FALSE(buffer.HasError());
}

TEST_F(FileBufferTest, LendsItsStreamOnlyWhileNothingWaitsInChunks) {
  FileBuffer buffer;
  ASSERT_TRUE(buffer.OpenForRead(FileOf(3000).c_str()));
  EXPECT_EQ(buffer.LendStream(), buffer.Stream.get());
  buffer.Available();
  EXPECT_EQ(buffer.LendStream(), nullptr);
  Next(buffer, 1024);
  EXPECT_EQ(buffer.LendStream(), buffer.Stream.get());
  buffer.Close();
  EXPECT_EQ(buffer.LendStream(), nullptr);

  class Own : public FileBuffer {};
  Own own;
  ASSERT_TRUE(own.OpenForRead(FileOf(10).c_str()));
  EXPECT_EQ(own.LendStream(), nullptr);

  class Plain : public FileBuffer {
    [[nodiscard]] bool ReadsPlainly() const override { return true; }
  };
  Plain plain;
  ASSERT_TRUE(plain.OpenForRead(FileOf(10).c_str()));
  EXPECT_EQ(plain.LendStream(), plain.Stream.get());
}

}  // namespace
}  // namespace tessaret
