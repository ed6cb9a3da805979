#include "platform/whole_file.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::FileFailure;
using test::Pattern;

constexpr std::uint64_t kNoLimit = std::numeric_limits<std::uint64_t>::max();

class WholeFile : public testing::Test {
 public:
  test::TempFolder folder_;
  std::string path_ = folder_.File("file");
  Bytes bytes_ = {9, 9, 9};
};

TEST_F(WholeFile, AllBytesAreReadInPlaceOfWhatWasThere) {
  for (const std::size_t size : {0u, 1u, 100u, 8192u, 70000u, 1000000u}) {
    const Bytes written = Pattern(size);
    test::WriteBytes(path_, written);
    EXPECT_EQ(ReadWholeFile(path_, kNoLimit, bytes_), 0);
    EXPECT_EQ(bytes_, written) << size;
  }
}

TEST_F(WholeFile, AThreadThatIsCancelledReadsItToTheEndFirst) {
  test::WriteBytes(path_, Pattern(70000));
  pthread_t thread{};
  const auto read = [](void* given) -> void* {
    auto& fixture = *static_cast<WholeFile*>(given);
    ::pthread_cancel(::pthread_self());
    const int error = ReadWholeFile(fixture.path_, kNoLimit, fixture.bytes_);
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    return error == 0 ? given : nullptr;
  };
  ASSERT_EQ(::pthread_create(&thread, nullptr, read, this), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, this);
  EXPECT_EQ(bytes_, Pattern(70000));
}

TEST_F(WholeFile, AFileOfExactlyTheLimitIsRead) {
  test::WriteBytes(path_, Pattern(70000));
  EXPECT_EQ(ReadWholeFile(path_, 70000, bytes_), 0);
  EXPECT_EQ(bytes_, Pattern(70000));
  test::WriteText(path_, "");
  EXPECT_EQ(ReadWholeFile(path_, 0, bytes_), 0);
  EXPECT_EQ(bytes_, Bytes{});
}

TEST_F(WholeFile, AFileLongerThanTheLimitIsRefused) {
  test::WriteBytes(path_, Pattern(70001));
  EXPECT_EQ(ReadWholeFile(path_, 70000, bytes_), EFBIG);
  EXPECT_EQ(bytes_, Bytes{});
  test::WriteText(path_, "x");
  EXPECT_EQ(ReadWholeFile(path_, 0, bytes_), EFBIG);
}

TEST_F(WholeFile, ALargeFileTakesNoMemoryBeyondTheLimit) {
  test::WriteText(path_, "");
  ASSERT_EQ(::truncate(path_.c_str(), std::int64_t{1} << 40), 0);
  const test::AllocationWatch watch;
  EXPECT_EQ(ReadWholeFile(path_, 1000, bytes_), EFBIG);
  EXPECT_LE(watch.LargestRequest(), 256u * 1024);
}

TEST_F(WholeFile, APipeIsReadToItsEndOrTheLimit) {
  ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
  std::thread writer([&] { test::WriteBytes(path_, Pattern(50000)); });
  EXPECT_EQ(ReadWholeFile(path_, 50000, bytes_), 0);
  writer.join();
  EXPECT_EQ(bytes_, Pattern(50000));
}

TEST_F(WholeFile, APseudoFileThatSaysItIsEmptyIsReadWhole) {
  EXPECT_EQ(ReadWholeFile("/proc/version", 100000, bytes_), 0);
  EXPECT_EQ(bytes_, test::ReadBytes("/proc/version"));
}

TEST_F(WholeFile, ADeviceWithoutAnEndIsRefused) {
  EXPECT_EQ(ReadWholeFile("/dev/zero", kNoLimit, bytes_), ENODEV);
  EXPECT_EQ(bytes_, Bytes{});
}

TEST_F(WholeFile, WhatCannotBeReadGivesItsErrorNumberAndNoBytes) {
  EXPECT_EQ(ReadWholeFile(path_, kNoLimit, bytes_), ENOENT);
  EXPECT_EQ(bytes_, Bytes{});
  EXPECT_EQ(ReadWholeFile(folder_.Path(), kNoLimit, bytes_), EISDIR);
  EXPECT_EQ(ReadWholeFile("", kNoLimit, bytes_), ENOENT);
  test::WriteBytes(path_, Pattern(100000));
  FileFailure failure;
  failure.FailCall(FileCall::kRead, 2, EIO);
  EXPECT_EQ(ReadWholeFile(path_, kNoLimit, bytes_), EIO);
  EXPECT_EQ(bytes_, Bytes{});
}

TEST_F(WholeFile, APathWithANulIsNotReadAsWhatItsFirstPartNames) {
  test::WriteText(path_, "words");
  EXPECT_EQ(ReadWholeFile(path_ + std::string("\0.txt", 5), kNoLimit, bytes_), EINVAL);
  EXPECT_EQ(bytes_, Bytes{});
}

TEST_F(WholeFile, ShortAndInterruptedReadsGiveTheSameBytes) {
  test::WriteBytes(path_, Pattern(20000));
  FileFailure failure;
  failure.LimitCount(FileCall::kRead, 17);
  failure.InterruptEveryCall();
  EXPECT_EQ(ReadWholeFile(path_, kNoLimit, bytes_), 0);
  EXPECT_EQ(bytes_, Pattern(20000));
}

TEST_F(WholeFile, WritesANewFileAndReplacesAnOldOne) {
  const Bytes long1 = Pattern(100000);
  EXPECT_EQ(WriteWholeFile(path_, long1.data(), long1.size()), 0);
  EXPECT_EQ(test::ReadBytes(path_), long1);
  EXPECT_EQ(WriteWholeFile(path_, "short", 5), 0);
  EXPECT_EQ(test::ReadText(path_), "short");
  EXPECT_EQ(WriteWholeFile(path_, nullptr, 0), 0);
  EXPECT_EQ(test::ReadText(path_), "");
  EXPECT_EQ(folder_.Listing(), "file");
}

TEST_F(WholeFile, AnEmptyNameIsNoPlace) { EXPECT_EQ(WriteWholeFile("", "x", 1), ENOENT); }

TEST_F(WholeFile, WithoutMemoryNothingIsLeftBehind) {
  test::WriteText(path_, "old");
  int answer = -1;
  const auto write = [&] {
    try {
      answer = WriteWholeFile(path_, "new", 3);
    } catch (const std::bad_alloc&) {
      answer = ENOMEM;
    }
  };
  const std::uint64_t allocations = test::FailEveryAllocation(write, [&] {
    EXPECT_EQ(test::ReadText(path_), answer == 0 ? "new" : "old");
    EXPECT_TRUE(answer == 0 || answer == ENOMEM) << answer;
    EXPECT_EQ(folder_.Listing(), "file");
  });
  EXPECT_GT(allocations, 1u);
  EXPECT_EQ(folder_.Listing(), "file");
  EXPECT_EQ(test::ReadText(path_), "new");
}

}  // namespace
}  // namespace tessaret
