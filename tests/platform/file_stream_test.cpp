#include "platform/file_stream.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/memory_file.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::FileFailure;
using test::Pattern;

constexpr std::uint64_t kMost64 = std::numeric_limits<std::uint64_t>::max();

std::unique_ptr<FileStream> Open(const std::string& path) {
  int error = -1;
  auto stream = FileStream::OpenForRead(path.c_str(), error);
  EXPECT_EQ(error, 0);
  return stream;
}

Bytes Part(const Bytes& all, std::uint64_t from, std::uint64_t count) {
  const auto start =
      all.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(from, all.size()));
  const auto left = static_cast<std::uint64_t>(all.end() - start);
  return {start, start + static_cast<std::ptrdiff_t>(std::min(count, left))};
}

/// Up to `count` bytes by Read.
Bytes ReadUpTo(FileStream& stream, std::uint64_t count) {
  Bytes bytes(count);
  bytes.resize(stream.Read(bytes.data(), count));
  return bytes;
}

/// Everything that is left, a window at a time.
Bytes TakeAll(FileStream& stream, std::size_t step) {
  Bytes all;
  while (stream.Refill(1)) {
    stream.Refill(step);
    const std::size_t count = std::min(step, stream.WindowSize());
    all.insert(all.end(), stream.Window(), stream.Window() + count);
    stream.Consume(count);
  }
  return all;
}

int OpenDescriptors() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

class FileStreamTest : public testing::Test {
 protected:
  std::string FileOf(const Bytes& bytes) {
    std::string path = folder_.File("file");
    test::WriteBytes(path, bytes);
    return path;
  }

  /// A named pipe, and a thread that writes `bytes` into it, `step` at a time.
  std::string PipeOf(const Bytes& bytes, std::size_t step) {
    std::string path = folder_.File("pipe");
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    writer_ = std::thread([path, bytes, step] {
      const int descriptor = ::open(path.c_str(), O_WRONLY);
      for (std::size_t at = 0; at < bytes.size(); at += step) {
        const std::size_t count = std::min(step, bytes.size() - at);
        if (::write(descriptor, &bytes[at], count) != static_cast<ssize_t>(count)) break;
      }
      ::close(descriptor);
    });
    return path;
  }

  ~FileStreamTest() override {
    if (writer_.joinable()) writer_.join();
  }

  test::TempFolder folder_;
  std::thread writer_;
};

TEST_F(FileStreamTest, ReadsFilesOfEverySizeAroundItsOwnSizes) {
  for (const std::size_t size :
       {0u, 1u, 8191u, 8192u, 8193u, 32767u, 32768u, 32769u, 65535u, 65536u, 65537u, 300000u}) {
    const Bytes bytes = Pattern(size);
    const std::string path = FileOf(bytes);
    EXPECT_EQ(ReadUpTo(*Open(path), size), bytes) << size;
    EXPECT_EQ(ReadUpTo(*Open(path), size + 1), bytes) << size;
    for (const std::size_t step : {std::size_t{1000}, FileStream::kLargestWindow}) {
      EXPECT_EQ(TakeAll(*Open(path), step), bytes) << size << " by " << step;
    }
  }
}

TEST_F(FileStreamTest, ReadsAPipeHoweverItsBytesArrive) {
  const Bytes bytes = Pattern(200000);
  const auto stream = Open(PipeOf(bytes, 777));
  EXPECT_EQ(ReadUpTo(*stream, 5), Part(bytes, 0, 5));
  EXPECT_EQ(ReadUpTo(*stream, 100000), Part(bytes, 5, 100000));
  EXPECT_EQ(stream->Skip(50), 50u);
  EXPECT_EQ(TakeAll(*stream, 300), Part(bytes, 100055, kMost64));
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Error(), 0);
}

TEST_F(FileStreamTest, TellsWhyAFileCannotBeOpened) {
  int error = 0;
  EXPECT_EQ(FileStream::OpenForRead(folder_.File("none").c_str(), error), nullptr);
  EXPECT_EQ(error, ENOENT);
  EXPECT_EQ(FileStream::OpenForRead((FileOf({1}) + "/x").c_str(), error), nullptr);
  EXPECT_EQ(error, ENOTDIR);
  EXPECT_EQ(FileStream::OpenForWrite(folder_.Path().c_str(), error), nullptr);
  EXPECT_EQ(error, EISDIR);
  EXPECT_EQ(FileStream::OpenForWrite(folder_.File("none/x").c_str(), error), nullptr);
  EXPECT_EQ(error, ENOENT);
}

TEST_F(FileStreamTest, ADirectoryFailsAtItsFirstRead) {
  const auto stream = Open(folder_.Path());
  EXPECT_EQ(stream->Error(), 0);
  EXPECT_FALSE(stream->Refill(1));
  EXPECT_EQ(stream->Error(), EISDIR);
  EXPECT_EQ(ReadUpTo(*stream, 10), Bytes{});
  EXPECT_FALSE(stream->AtEnd());
}

TEST_F(FileStreamTest, ReadsPseudoFilesThatSayTheyAreEmpty) {
  const auto stream = Open("/proc/version");
  EXPECT_EQ(stream->LeftAtMost(), kMost64);
  EXPECT_EQ(TakeAll(*stream, 7), test::ReadBytes("/proc/version"));
}

TEST_F(FileStreamTest, ADeviceGivesItsFirstBytesOnly) {
  const auto byWindow = Open("/dev/zero");
  ASSERT_TRUE(byWindow->Refill(100));
  EXPECT_EQ(ReadUpTo(*byWindow, 100), Bytes(100, 0));
  byWindow->Consume(byWindow->WindowSize());
  EXPECT_FALSE(byWindow->Refill(1));
  EXPECT_EQ(byWindow->Error(), ENODEV);

  const auto byLargeRead = Open("/dev/zero");
  ASSERT_TRUE(byLargeRead->Refill(1));
  EXPECT_LE(ReadUpTo(*byLargeRead, 1000000).size(), FileStream::kLargestWindow);
  EXPECT_EQ(byLargeRead->Error(), ENODEV);

  const auto bySkip = Open("/dev/zero");
  EXPECT_LE(bySkip->Skip(kMost64), FileStream::kLargestWindow);
  EXPECT_EQ(bySkip->Error(), ENODEV);
}

TEST_F(FileStreamTest, AskingADeviceWhatIsLeftTakesNothingFromItsFirstBytes) {
  const auto stream = Open("/dev/zero");
  EXPECT_EQ(stream->LeftAtMost(), kMost64);
  EXPECT_EQ(stream->Error(), 0);
  EXPECT_EQ(ReadUpTo(*stream, 100), Bytes(100, 0));
  EXPECT_EQ(stream->LeftAtMost(), kMost64);
  EXPECT_EQ(stream->Error(), 0);
  stream->Consume(stream->WindowSize());
  EXPECT_FALSE(stream->Refill(1));
  EXPECT_EQ(stream->Error(), ENODEV);
}

TEST_F(FileStreamTest, ADeviceWithoutBytesIsAtItsEnd) {
  const auto nothing = Open("/dev/null");
  EXPECT_FALSE(nothing->Refill(1));
  EXPECT_TRUE(nothing->AtEnd());
  EXPECT_EQ(nothing->Error(), 0);
}

TEST_F(FileStreamTest, RefillGivesAtLeastWhatItIsAskedForUpToItsLargestWindow) {
  const Bytes bytes = Pattern(200000);
  const auto stream = Open(FileOf(bytes));
  for (const std::size_t count : {std::size_t{1}, std::size_t{8192}, std::size_t{8193},
                                  std::size_t{40000}, FileStream::kLargestWindow}) {
    ASSERT_TRUE(stream->Refill(count)) << count;
    ASSERT_GE(stream->WindowSize(), count);
    EXPECT_EQ(Bytes(stream->Window(), stream->Window() + count), Part(bytes, 0, count)) << count;
  }
  // The bytes not yet taken stay in front when the window is filled up.
  stream->Consume(60001);
  ASSERT_TRUE(stream->Refill(FileStream::kLargestWindow));
  EXPECT_EQ(Bytes(stream->Window(), stream->Window() + FileStream::kLargestWindow),
            Part(bytes, 60001, FileStream::kLargestWindow));
}

TEST_F(FileStreamTest, RefillNearTheEndBringsWhatIsLeft) {
  const auto stream = Open(FileOf(Pattern(100)));
  EXPECT_FALSE(stream->Refill(101));
  EXPECT_EQ(stream->WindowSize(), 100u);
  EXPECT_TRUE(stream->Refill(100));
  EXPECT_TRUE(stream->Refill(0));
  stream->Consume(100);
  EXPECT_TRUE(stream->Refill(0));
  EXPECT_FALSE(stream->Refill(1));
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Error(), 0);
}

TEST_F(FileStreamTest, SkipStepsOverBytesUpToTheEnd) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  EXPECT_EQ(stream->Skip(0), 0u);
  EXPECT_EQ(stream->Skip(70001), 70001u);
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 70001, 10));
  EXPECT_EQ(stream->Skip(kMost64), 100000u - 70011u);
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Skip(1), 0u);
}

TEST_F(FileStreamTest, SkipGoesAheadInAFileOfAnySizeAndReadsNextToNothingOfIt) {
  constexpr std::uint64_t kGib = 1 << 30;
  // A hole of 6 GiB between the start and the end.
  const Bytes bytes = Pattern(1000);
  test::MemoryFile file(bytes);
  file.Resize(1000 + 6 * kGib);
  ASSERT_EQ(::pwrite(file.Descriptor(), bytes.data(), 1000, static_cast<off_t>(1000 + 6 * kGib)),
            1000);
  const auto stream = Open(file.Path());
  const FileFailure calls;
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 0, 10));
  EXPECT_EQ(stream->Skip(990 + 3 * kGib), 990 + 3 * kGib);
  EXPECT_EQ(stream->LeftAtMost(), 3 * kGib + 1000);
  EXPECT_EQ(stream->Skip(3 * kGib + 100), 3 * kGib + 100);
  EXPECT_EQ(ReadUpTo(*stream, 1000), Part(bytes, 100, 900));
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_LE(calls.Calls(FileCall::kRead), 8);
}

TEST_F(FileStreamTest, SkipNoticesAFileThatBecameShorterMeanwhile) {
  constexpr std::uint64_t kMib = 1 << 20;
  test::MemoryFile file(Pattern(1000));
  file.Resize(10 * kMib);
  const auto stream = Open(file.Path());
  ASSERT_TRUE(stream->Refill(1));
  EXPECT_EQ(stream->LeftAtMost(), 10 * kMib);
  file.Resize(5 * kMib);
  EXPECT_LT(stream->Skip(9 * kMib), 9 * kMib);
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Error(), 0);
}

TEST_F(FileStreamTest, SkipReadsOnWhereAFileCannotSeek) {
  const Bytes bytes = Pattern(300000);
  const auto stream = Open(FileOf(bytes));
  ASSERT_TRUE(stream->Refill(1));
  FileFailure failure;
  failure.FailCalls(FileCall::kSeek, 1, 100, ESPIPE);
  EXPECT_EQ(stream->Skip(200001), 200001u);
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 200001, 10));
}

TEST_F(FileStreamTest, ReadingAHeaderReadsLittleOfALargeFile) {
  const auto stream = Open(FileOf(Pattern(1000000)));
  const FileFailure calls;
  ASSERT_TRUE(stream->Refill(132));
  EXPECT_EQ(calls.Calls(FileCall::kRead), 1);
  EXPECT_LE(stream->WindowSize(), 4096u);
  // A header of 6000 bytes takes another read, which brings some of what lies behind it, and not all that the window holds.
  EXPECT_EQ(stream->Skip(6000), 6000u);
  EXPECT_EQ(calls.Calls(FileCall::kRead), 2);
  EXPECT_LE(stream->WindowSize(), 5u * 4096u - 6000u);
}

TEST_F(FileStreamTest, AfterASmallPieceTheNextReadAsksForNoLessThanTheFirst) {
  const Bytes bytes = Pattern(10000);
  const auto stream = Open(FileOf(bytes));
  FileFailure calls;
  calls.LimitCount(FileCall::kRead, 1);
  ASSERT_TRUE(stream->Refill(1));
  calls.LimitCount(FileCall::kRead, bytes.size());
  ASSERT_TRUE(stream->Refill(2));
  EXPECT_EQ(stream->WindowSize(), 1u + 4096u);
}

TEST_F(FileStreamTest, AWindowThatWasBegunCanBeFilledWhole) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  FileFailure calls;
  calls.LimitCount(FileCall::kRead, 3000);
  ASSERT_TRUE(stream->Refill(1));
  stream->Consume(100);
  ASSERT_TRUE(stream->Refill(FileStream::kLargestWindow));
  EXPECT_EQ(stream->WindowSize(), FileStream::kLargestWindow);
  EXPECT_EQ(TakeAll(*stream, 1000), Part(bytes, 100, kMost64));
}

TEST_F(FileStreamTest, ALongWalkTakesTheWholeWindowAtATime) {
  const Bytes bytes = Pattern(1000000);
  const auto stream = Open(FileOf(bytes));
  const FileFailure calls;
  EXPECT_EQ(TakeAll(*stream, 100), bytes);
  // 4096 and 16384 bytes, then 65536 each time: (1000000 - 20480) / 65536 = 14.9.
  EXPECT_EQ(calls.Calls(FileCall::kRead), 17);
}

TEST_F(FileStreamTest, ASmallFileComesInTwoReads) {
  const Bytes bytes = Pattern(5000);
  const auto stream = Open(FileOf(bytes));
  const FileFailure calls;
  EXPECT_EQ(TakeAll(*stream, 1000), bytes);
  EXPECT_LE(calls.Calls(FileCall::kRead), 2);
}

TEST_F(FileStreamTest, ALargeReadGoesStraightToItsPlace) {
  const Bytes bytes = Pattern(3000000);
  const auto stream = Open(FileOf(bytes));
  ReadUpTo(*stream, 100);
  const FileFailure calls;
  EXPECT_EQ(ReadUpTo(*stream, 2900000), Part(bytes, 100, 2900000));
  EXPECT_EQ(calls.Calls(FileCall::kRead), 1);
  EXPECT_EQ(TakeAll(*stream, 1000), Part(bytes, 2900100, kMost64));
}

TEST_F(FileStreamTest, SeekWithinTheWindowCallsNothing) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  ReadUpTo(*stream, 500);
  const FileFailure calls;
  EXPECT_TRUE(stream->Seek(0));
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 0, 10));
  EXPECT_TRUE(stream->Seek(4000));
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 4000, 10));
  EXPECT_EQ(calls.Calls(), 0);
}

TEST_F(FileStreamTest, SeekGoesAnywhereInAFile) {
  const Bytes bytes = Pattern(300000);
  const auto stream = Open(FileOf(bytes));
  for (const std::uint64_t offset :
       {128u, 250000u, 299999u, 0u, 8192u, 150000u, 149000u, 300000u}) {
    ASSERT_TRUE(stream->Seek(offset));
    EXPECT_EQ(ReadUpTo(*stream, 600), Part(bytes, offset, 600)) << offset;
  }
}

TEST_F(FileStreamTest, SeekBackAfterALargeReadGivesTheBytesOfThatPlace) {
  const Bytes bytes = Pattern(300000);
  const auto stream = Open(FileOf(bytes));
  ReadUpTo(*stream, 100);
  ReadUpTo(*stream, 200000);
  // The window last filled held what lies at the start of the file.
  ASSERT_TRUE(stream->Seek(200000));
  EXPECT_EQ(ReadUpTo(*stream, 50), Part(bytes, 200000, 50));
}

TEST_F(FileStreamTest, SeekTakesBackTheEnd) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  EXPECT_EQ(ReadUpTo(*stream, 100001), bytes);
  EXPECT_TRUE(stream->AtEnd());
  ASSERT_TRUE(stream->Seek(10));
  EXPECT_FALSE(stream->AtEnd());
  EXPECT_EQ(TakeAll(*stream, 1000), Part(bytes, 10, kMost64));
  EXPECT_TRUE(stream->AtEnd());
}

TEST_F(FileStreamTest, SeekBehindTheEndIsTheEnd) {
  const auto stream = Open(FileOf(Pattern(100)));
  ASSERT_TRUE(stream->Seek(1000000));
  EXPECT_FALSE(stream->Refill(1));
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->LeftAtMost(), 0u);
}

TEST_F(FileStreamTest, SeekToWhereNoFileReachesFailsAndStaysInPlace) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  ReadUpTo(*stream, 100);
  EXPECT_FALSE(stream->Seek(kMost64));
  EXPECT_EQ(stream->Error(), 0);
  EXPECT_EQ(ReadUpTo(*stream, 100), Part(bytes, 100, 100));
}

TEST_F(FileStreamTest, APipeGoesBackToItsStartWhileItsFirstWindowLasts) {
  const Bytes bytes = Pattern(50000);
  const auto stream = Open(PipeOf(bytes, 50000));
  ASSERT_TRUE(stream->Seek(128));
  EXPECT_EQ(ReadUpTo(*stream, 4), Part(bytes, 128, 4));
  ASSERT_TRUE(stream->Seek(0));
  EXPECT_EQ(ReadUpTo(*stream, 20000), Part(bytes, 0, 20000));
  EXPECT_FALSE(stream->Seek(0));
  EXPECT_FALSE(stream->Seek(49000));
  EXPECT_EQ(stream->Error(), 0);
  EXPECT_EQ(TakeAll(*stream, 1000), Part(bytes, 20000, kMost64));
}

TEST_F(FileStreamTest, APipeThatComesInSmallPiecesGoesBackToItsStartToo) {
  const Bytes bytes = Pattern(3000);
  const auto stream = Open(PipeOf(bytes, 3000));
  FileFailure calls;
  calls.LimitCount(FileCall::kRead, 64);
  // What was taken stays in reach although the window is filled up behind it.
  for (std::uint64_t at = 0; at < 2000; at += 100) {
    ASSERT_TRUE(stream->Refill(100));
    EXPECT_EQ(ReadUpTo(*stream, 100), Part(bytes, at, 100));
  }
  ASSERT_TRUE(stream->Seek(0));
  EXPECT_EQ(ReadUpTo(*stream, 3000), bytes);
}

TEST_F(FileStreamTest, AShortPipeSeeksNoFurtherThanItReaches) {
  const Bytes bytes = Pattern(50);
  const auto stream = Open(PipeOf(bytes, 50));
  EXPECT_FALSE(stream->Seek(128));
  EXPECT_TRUE(stream->Seek(0));
  EXPECT_EQ(TakeAll(*stream, 7), bytes);
}

TEST_F(FileStreamTest, AStreamOfADescriptorStartsAtItsPlace) {
  const Bytes bytes = Pattern(300000);
  const int given = ::open(FileOf(bytes).c_str(), O_RDONLY);
  ASSERT_EQ(::lseek(given, 1000, SEEK_SET), 1000);
  int error = -1;
  const auto stream = FileStream::FromDescriptor(given, error);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(::close(given), 0);
  EXPECT_EQ(stream->LeftAtMost(), 299000u);
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 1000, 10));
  ASSERT_TRUE(stream->Seek(200000));
  EXPECT_EQ(ReadUpTo(*stream, 10), Part(bytes, 201000, 10));
  EXPECT_EQ(stream->LeftAtMost(), 98990u);
  // From its start this would be the byte before it.
  EXPECT_FALSE(stream->Seek(kMost64));
  ASSERT_TRUE(stream->Seek(0));
  EXPECT_EQ(TakeAll(*stream, 1000), Part(bytes, 1000, kMost64));
}

TEST_F(FileStreamTest, AStreamOfADescriptorLeavesItToItsOwner) {
  const int given = ::open(FileOf(Pattern(10)).c_str(), O_RDONLY);
  int error = -1;
  const auto stream = FileStream::FromDescriptor(given, error);
  ASSERT_NE(stream, nullptr);
  EXPECT_NE(stream->Descriptor(), given);
  EXPECT_EQ(::fcntl(stream->Descriptor(), F_GETFD), FD_CLOEXEC);
  EXPECT_TRUE(stream->Close());
  EXPECT_EQ(::close(given), 0);
}

TEST_F(FileStreamTest, ADescriptorBehindTheEndOfItsFileIsAtTheEnd) {
  const int given = ::open(FileOf(Pattern(10)).c_str(), O_RDONLY);
  ASSERT_EQ(::lseek(given, 20, SEEK_SET), 20);
  int error = -1;
  const auto stream = FileStream::FromDescriptor(given, error);
  ::close(given);
  EXPECT_EQ(stream->LeftAtMost(), kMost64) << "nothing is known";
  EXPECT_EQ(ReadUpTo(*stream, 10), Bytes{});
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Error(), 0);
}

TEST_F(FileStreamTest, ADescriptorThatCannotBeSharedOrToldGivesNoStream) {
  const test::MemoryFile file(Pattern(10));
  const int open = OpenDescriptors();
  for (const FileCall call : {FileCall::kOpen, FileCall::kSeek}) {
    FileFailure calls;
    calls.FailCall(call, 1, EIO);
    int error = 0;
    EXPECT_EQ(FileStream::FromDescriptor(file.Descriptor(), error), nullptr);
    EXPECT_EQ(error, EIO);
  }
  EXPECT_EQ(OpenDescriptors(), open);
}

TEST_F(FileStreamTest, ADescriptorThatIsNoneGivesNoStream) {
  int error = 0;
  EXPECT_EQ(FileStream::FromDescriptor(-1, error), nullptr);
  EXPECT_EQ(error, EBADF);
}

TEST_F(FileStreamTest, WaitsForBytesWhereTheDescriptorDoesNot) {
  const Bytes bytes = Pattern(5000);
  std::array<int, 2> ends{};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0);
  int error = -1;
  const auto stream = FileStream::FromDescriptor(ends[0], error);
  ASSERT_NE(stream, nullptr);
  writer_ = std::thread([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(::write(ends[1], bytes.data(), bytes.size()), 5000);
    ::close(ends[1]);
  });
  const FileFailure calls;
  EXPECT_EQ(ReadUpTo(*stream, 5001), bytes);
  EXPECT_EQ(stream->Error(), 0);
  // In vain, for up to 4096 bytes, for the rest, and in vain or at the end, up to twice.
  EXPECT_LE(calls.Calls(FileCall::kRead), 6);
  writer_.join();
  ::close(ends[0]);
}

TEST_F(FileStreamTest, LeftAtMostCountsDownForAFile) {
  const auto stream = Open(FileOf(Pattern(100000)));
  EXPECT_EQ(stream->LeftAtMost(), 100000u);
  stream->Refill(1);
  EXPECT_EQ(stream->LeftAtMost(), 100000u);
  ReadUpTo(*stream, 30);
  EXPECT_EQ(stream->LeftAtMost(), 99970u);
  ReadUpTo(*stream, 70000);
  EXPECT_EQ(stream->LeftAtMost(), 29970u);
  stream->Seek(99999);
  EXPECT_EQ(stream->LeftAtMost(), 1u);
  stream->Skip(1);
  EXPECT_EQ(stream->LeftAtMost(), 0u);
}

TEST_F(FileStreamTest, LeftAtMostGoesByTheSizeAtFirstAndAGrownFileIsReadAllTheSame) {
  const Bytes bytes = Pattern(150);
  const std::string path = FileOf(Part(bytes, 0, 100));
  const auto stream = Open(path);
  EXPECT_EQ(stream->LeftAtMost(), 100u);
  test::WriteBytes(path, bytes);
  EXPECT_EQ(stream->LeftAtMost(), 100u);
  EXPECT_EQ(TakeAll(*stream, 10), bytes);
  EXPECT_EQ(stream->LeftAtMost(), 0u);
}

TEST_F(FileStreamTest, AFileThatGrewSinceItsSizeWasAskedIsReadToItsNewEnd) {
  const Bytes bytes = Pattern(200000);
  const std::string path = FileOf(Part(bytes, 0, 50000));
  const auto stream = Open(path);
  EXPECT_EQ(stream->LeftAtMost(), 50000u);
  test::WriteBytes(path, bytes);
  // The second of these reads ends behind the size that was asked, with as many bytes as it asked for.
  EXPECT_EQ(ReadUpTo(*stream, 40000), Part(bytes, 0, 40000));
  EXPECT_EQ(ReadUpTo(*stream, 20000), Part(bytes, 40000, 20000));
  EXPECT_FALSE(stream->AtEnd());
  EXPECT_EQ(TakeAll(*stream, 10000), Part(bytes, 60000, kMost64));
}

TEST_F(FileStreamTest, LeftAtMostSaysNothingOfAPipe) {
  const auto stream = Open(PipeOf(Pattern(10), 10));
  EXPECT_EQ(stream->LeftAtMost(), kMost64);
  EXPECT_EQ(TakeAll(*stream, 10).size(), 10u);
}

TEST_F(FileStreamTest, AFileThatShrinksMeanwhileEndsWhereItEnds) {
  const Bytes bytes = Pattern(200000);
  const std::string path = FileOf(bytes);
  const auto stream = Open(path);
  ReadUpTo(*stream, 100);
  ASSERT_EQ(::truncate(path.c_str(), 50000), 0);
  EXPECT_EQ(ReadUpTo(*stream, 150000), Part(bytes, 100, 49900));
  EXPECT_TRUE(stream->AtEnd());
  EXPECT_EQ(stream->Error(), 0);
}

/// What a stream did, beside what it should have done over the same bytes.
void ReadAtRandom(FileStream& stream, const Bytes& bytes, bool seeks, std::uint32_t seed) {
  std::mt19937 random(seed);
  const auto below = [&random](std::uint64_t limit) { return random() % limit; };
  std::uint64_t at = 0;
  for (int round = 0; round < 400; ++round) {
    const std::uint64_t left = bytes.size() - at;
    // Small steps mostly, now and then one past the window.
    const std::uint64_t count = below(8) == 0 ? below(90000) : below(700);
    switch (below(seeks ? 4 : 3)) {
      case 0: {
        ASSERT_EQ(ReadUpTo(stream, count), Part(bytes, at, count)) << round;
        at += std::min(count, left);
        break;
      }
      case 1: {
        ASSERT_EQ(stream.Skip(count), std::min(count, left)) << round;
        at += std::min(count, left);
        break;
      }
      case 2: {
        const auto wanted =
            static_cast<std::size_t>(std::min<std::uint64_t>(count, FileStream::kLargestWindow));
        ASSERT_EQ(stream.Refill(wanted), wanted <= left) << round;
        ASSERT_EQ(Bytes(stream.Window(), stream.Window() + stream.WindowSize()),
                  Part(bytes, at, stream.WindowSize()))
            << round;
        const std::uint64_t taken = below(stream.WindowSize() + 1);
        stream.Consume(taken);
        at += taken;
        break;
      }
      default: {
        const std::uint64_t back = std::min(at, below(70000));
        at = below(2) == 0 ? below(bytes.size() + 1) : at - back;
        ASSERT_TRUE(stream.Seek(at)) << round;
      }
    }
    ASSERT_EQ(stream.Error(), 0);
  }
}

TEST_F(FileStreamTest, AnyMixtureOfStepsGivesTheBytesOfTheFile) {
  const Bytes bytes = Pattern(400000);
  const std::string path = FileOf(bytes);
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    SCOPED_TRACE(seed);
    ReadAtRandom(*Open(path), bytes, true, seed);
  }
}

TEST_F(FileStreamTest, ShortAndInterruptedReadsGiveTheSameBytes) {
  const Bytes bytes = Pattern(400000);
  const std::string path = FileOf(bytes);
  for (const std::size_t most :
       {std::size_t{1}, std::size_t{3}, std::size_t{511}, std::size_t{9000}}) {
    SCOPED_TRACE(most);
    const auto stream = Open(path);
    FileFailure calls;
    calls.LimitCount(FileCall::kRead, most);
    calls.InterruptEveryCall();
    ReadAtRandom(*stream, bytes, true, 5);
  }
}

TEST_F(FileStreamTest, APipeGivesTheSameBytesInAnyMixtureOfSteps) {
  const Bytes bytes = Pattern(400000);
  const auto stream = Open(PipeOf(bytes, 1234));
  ReadAtRandom(*stream, bytes, false, 9);
  TakeAll(*stream, 1000);
}

TEST_F(FileStreamTest, AReadErrorStaysAndWhatCameBeforeIsGiven) {
  const Bytes bytes = Pattern(100000);
  const auto stream = Open(FileOf(bytes));
  FileFailure calls;
  calls.FailCall(FileCall::kRead, 2, EIO);
  EXPECT_EQ(ReadUpTo(*stream, 100), Part(bytes, 0, 100));
  EXPECT_EQ(ReadUpTo(*stream, 50000), Part(bytes, 100, 3996));
  EXPECT_EQ(stream->Error(), EIO);
  EXPECT_FALSE(stream->AtEnd());
  EXPECT_EQ(ReadUpTo(*stream, 10), Bytes{});
  EXPECT_FALSE(stream->Refill(1));
  EXPECT_EQ(stream->Skip(1), 0u);
  EXPECT_EQ(calls.Calls(FileCall::kRead), 2);
}

TEST_F(FileStreamTest, AFileWhoseStatusCannotBeReadIsReadAsOneOfUnknownSize) {
  const Bytes bytes = Pattern(100);
  const std::string path = FileOf(bytes);
  FileFailure calls;
  calls.FailCall(FileCall::kStat, 1, EIO);
  const auto stream = Open(path);
  EXPECT_EQ(stream->LeftAtMost(), kMost64);
  EXPECT_EQ(TakeAll(*stream, 10), bytes);
}

TEST_F(FileStreamTest, WritesWhatItIsGiven) {
  const std::string path = FileOf(Pattern(50));
  int error = -1;
  const auto stream = FileStream::OpenForWrite(path.c_str(), error);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(error, 0);
  EXPECT_EQ(test::ReadText(path), "") << "what was there is gone";
  FileFailure calls;
  calls.LimitCount(FileCall::kWrite, 7);
  const Bytes bytes = Pattern(1000);
  EXPECT_TRUE(stream->Write(bytes.data(), 600));
  EXPECT_TRUE(stream->Write(nullptr, 0));
  EXPECT_TRUE(stream->Write(&bytes[600], 400));
  EXPECT_TRUE(stream->Sync());
  EXPECT_TRUE(stream->Close());
  EXPECT_TRUE(stream->Close());
  EXPECT_EQ(test::ReadBytes(path), bytes);
}

TEST_F(FileStreamTest, AWriteErrorStays) {
  const std::string path = folder_.File("file");
  int error = -1;
  const auto stream = FileStream::OpenForWrite(path.c_str(), error);
  FileFailure calls;
  calls.FillDiskAfter(5);
  EXPECT_TRUE(stream->Write("abc", 3));
  EXPECT_FALSE(stream->Write("defg", 4));
  EXPECT_EQ(stream->Error(), ENOSPC);
  calls.FillDiskAfter(1000);
  EXPECT_FALSE(stream->Write("h", 1));
  EXPECT_FALSE(stream->Sync());
  EXPECT_FALSE(stream->Close());
  EXPECT_EQ(stream->Error(), ENOSPC);
  EXPECT_EQ(test::ReadText(path), "abcde");
}

TEST_F(FileStreamTest, AnErrorOfSyncOrCloseIsKept) {
  int error = -1;
  const auto first = FileStream::OpenForWrite(folder_.File("file").c_str(), error);
  const auto second = FileStream::OpenForWrite(folder_.File("file").c_str(), error);
  FileFailure calls;
  calls.FailCall(FileCall::kSync, 1, EIO);
  EXPECT_FALSE(first->Sync());
  EXPECT_EQ(first->Error(), EIO);
  calls.FailCall(FileCall::kClose, 1, EDQUOT);
  EXPECT_FALSE(second->Close());
  EXPECT_EQ(second->Error(), EDQUOT);
  EXPECT_FALSE(second->Close());
}

TEST_F(FileStreamTest, AFullDeviceIsAnError) {
  int error = -1;
  const auto stream = FileStream::OpenForWrite("/dev/full", error);
  ASSERT_NE(stream, nullptr);
  EXPECT_FALSE(stream->Write("x", 1));
  EXPECT_EQ(stream->Error(), ENOSPC);
}

TEST_F(FileStreamTest, EveryStreamGivesItsDescriptorBack) {
  const std::string path = FileOf(Pattern(10));
  const int before = OpenDescriptors();
  {
    const auto reading = Open(path);
    int error = -1;
    const auto writing = FileStream::OpenForWrite(folder_.File("other").c_str(), error);
    EXPECT_EQ(OpenDescriptors(), before + 2);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(FileStreamTest, TwoStreamsOfOneThreadDoNotShareTheirBytes) {
  const Bytes bytes = Pattern(100000);
  const std::string path = FileOf(bytes);
  const auto first = Open(path);
  ReadUpTo(*first, 10);
  {
    const auto second = Open(path);
    second->Seek(50000);
    EXPECT_EQ(ReadUpTo(*second, 10), Part(bytes, 50000, 10));
  }
  const auto third = Open(path);
  third->Seek(70000);
  EXPECT_EQ(ReadUpTo(*third, 10), Part(bytes, 70000, 10));
  EXPECT_EQ(ReadUpTo(*first, 5000), Part(bytes, 10, 5000));
}

/// In a thread of its own, which has no memory in reserve.
void InNewThread(const std::function<void()>& work) { std::thread(work).join(); }

TEST_F(FileStreamTest, WithoutMemoryForItsWindowAStreamFails) {
  const std::string path = FileOf(Pattern(100000));
  InNewThread([&] {
    const auto stream = Open(path);
    const test::AllocationFailure failure(1);
    EXPECT_FALSE(stream->Refill(1));
    EXPECT_EQ(stream->Error(), ENOMEM);
    EXPECT_EQ(stream->WindowSize(), 0u);
    EXPECT_TRUE(failure.Happened());
  });
}

TEST_F(FileStreamTest, WithoutMemoryForAStreamOpeningFailsAndLeavesNoDescriptor) {
  const std::string path = FileOf(Pattern(10));
  const std::string other = folder_.File("other");
  const int before = OpenDescriptors();
  int errorOfRead = -1;
  int errorOfWrite = -1;
  {
    const test::AllocationFailure failure(1);
    EXPECT_EQ(FileStream::OpenForRead(path.c_str(), errorOfRead), nullptr);
  }
  {
    const test::AllocationFailure failure(1);
    EXPECT_EQ(FileStream::OpenForWrite(other.c_str(), errorOfWrite), nullptr);
  }
  EXPECT_EQ(errorOfRead, ENOMEM);
  EXPECT_EQ(errorOfWrite, ENOMEM);
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(FileStreamTest, AStreamHoldsNoMoreMemoryThanItsWindowHoweverLargeItsFile) {
  const std::string path = folder_.File("sparse");
  test::WriteText(path, "");
  ASSERT_EQ(::truncate(path.c_str(), std::int64_t{1} << 40), 0);
  InNewThread([&] {
    const auto stream = Open(path);
    EXPECT_EQ(stream->LeftAtMost(), std::uint64_t{1} << 40);
    const test::AllocationWatch watch;
    ASSERT_TRUE(stream->Refill(FileStream::kLargestWindow));
    EXPECT_EQ(stream->Skip(10000000), 10000000u);
    EXPECT_LE(watch.LargestRequest(), FileStream::kLargestWindow);
    EXPECT_EQ(watch.Outstanding(), 1);
  });
}

}  // namespace
}  // namespace tessaret
