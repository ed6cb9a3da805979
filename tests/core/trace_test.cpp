#include "core/trace.h"

#include <fcntl.h>
#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "support/bytes.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::FileFailure;
using test::ReadText;
using test::WriteText;

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

// Before any test has changed it.
const std::uint32_t kFlagsAtStart = DumpFlags.load();

/// Each test has a folder of its own as the working directory and starts and ends with nothing switched on.
class Trace : public testing::Test {
 protected:
  Trace() : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(folder_.Path());
    ::unsetenv("DCM_DUMP_SOCKET");
    ::unsetenv("DCM_DUMP_PDATA");
    SwitchOff();
  }
  ~Trace() override {
    ::unsetenv("DCM_DUMP_SOCKET");
    ::unsetenv("DCM_DUMP_PDATA");
    SwitchOff();
    std::filesystem::current_path(before_);
  }

  static void SwitchOff() {
    SetDumpFlag(kAllBits, false);
    SetDumpFile(nullptr);
  }

  /// Names a file in the folder and switches everything on.
  std::string TraceTo(const std::string& name) {
    std::string path = folder_.File(name);
    SetDumpFile(path.c_str());
    SetDumpFlag(kAllBits, true);
    return path;
  }

  test::TempFolder folder_;
  std::filesystem::path before_;
};

TEST_F(Trace, BitsHaveTheirNumbers) {
  EXPECT_EQ(kDumpSocket, 1u);
  EXPECT_EQ(kDumpData, 2u);
  EXPECT_EQ(kDumpParse, 4u);
  EXPECT_EQ(kDumpPdu, 16u);
}

TEST_F(Trace, NothingIsSwitchedOnAtFirst) { EXPECT_EQ(kFlagsAtStart, 0u); }

TEST_F(Trace, WithoutAnyVariableAndFlagNoFileIsMade) {
  SetSocketDumpFromEnvironment();
  SetDataDumpFromEnvironment();
  EXPECT_FALSE(IsDumping(kAllBits));
  DumpTrace(kAllBits, "received %d bytes\n", 5);
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(Trace, FlagsAreSetAndClearedOneByOne) {
  SetDumpFlag(kDumpSocket | kDumpPdu, true);
  EXPECT_EQ(DumpFlags.load(), 17u);
  SetDumpFlag(kDumpParse, true);
  EXPECT_EQ(DumpFlags.load(), 21u);
  SetDumpFlag(kDumpSocket | kDumpData, false);
  EXPECT_EQ(DumpFlags.load(), 20u);
  SetDumpFlag(0, true);
  SetDumpFlag(0, false);
  EXPECT_EQ(DumpFlags.load(), 20u);
}

TEST_F(Trace, IsDumpingIsTrueIfAnyOfTheBitsIsOn) {
  SetDumpFlag(kDumpData, true);
  EXPECT_TRUE(IsDumping(kDumpData));
  EXPECT_TRUE(IsDumping(kDumpData | kDumpParse));
  EXPECT_FALSE(IsDumping(kDumpSocket | kDumpParse | kDumpPdu));
  EXPECT_FALSE(IsDumping(0));
}

TEST_F(Trace, AVariableCountsByItsPresenceAlone) {
  ::setenv("DCM_DUMP_SOCKET", "", 1);
  SetDataDumpFromEnvironment();
  EXPECT_EQ(DumpFlags.load(), 0u);
  SetSocketDumpFromEnvironment();
  EXPECT_EQ(DumpFlags.load(), kDumpSocket);
  ::setenv("DCM_DUMP_PDATA", "0", 1);
  SetDataDumpFromEnvironment();
  EXPECT_EQ(DumpFlags.load(), kDumpSocket | kDumpData);
}

TEST_F(Trace, AVariableThatIsGoneSwitchesNothingOff) {
  SetDumpFlag(kDumpSocket | kDumpData, true);
  SetSocketDumpFromEnvironment();
  SetDataDumpFromEnvironment();
  EXPECT_EQ(DumpFlags.load(), kDumpSocket | kDumpData);
}

TEST_F(Trace, AThreadThatIsCancelledWritesItsTextFirst) {
  const std::string path = TraceTo("trace.txt");
  pthread_t thread{};
  const auto trace = [](void*) -> void* {
    ::pthread_cancel(::pthread_self());
    DumpTrace(kAllBits, "%s\n", "all of it");
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    return nullptr;
  };
  ASSERT_EQ(::pthread_create(&thread, nullptr, trace, nullptr), 0);
  void* answer = nullptr;
  EXPECT_EQ(::pthread_join(thread, &answer), 0);
  EXPECT_EQ(answer, nullptr);
  EXPECT_EQ(ReadText(path), "all of it\n");
}

TEST_F(Trace, TheUsualFileIsInTheWorkingDirectory) {
  EXPECT_EQ(GetDumpFile(), "DcmServiceDump.log");
  SetDumpFlag(kDumpSocket, true);
  DumpTrace(kDumpSocket, "Sending %d bytes\n", 12);
  EXPECT_EQ(folder_.Listing(), "DcmServiceDump.log");
  EXPECT_EQ(ReadText(folder_.File("DcmServiceDump.log")), "Sending 12 bytes\n");
}

TEST_F(Trace, TheNameOfTheFileIsCopied) {
  std::string name = "first.log";
  SetDumpFile(name.c_str());
  name = "other.log";
  EXPECT_EQ(GetDumpFile(), "first.log");
  SetDumpFile("second.log");
  EXPECT_EQ(GetDumpFile(), "second.log");
  SetDumpFile(nullptr);
  EXPECT_EQ(GetDumpFile(), "DcmServiceDump.log");
}

TEST_F(Trace, TextsAreAppendedWhenOneOfTheirBitsIsOn) {
  const std::string path = TraceTo("trace");
  SetDumpFlag(kDumpParse, false);
  DumpTrace(kDumpSocket, "one %s\n", "two");
  DumpTrace(kDumpParse, "unseen\n");
  DumpTrace(kDumpParse | kDumpData, "%4.4X\n", 0x2Au);
  EXPECT_EQ(ReadText(path), "one two\n002A\n");
}

TEST_F(Trace, WhatTheFileHeldStays) {
  const std::string path = TraceTo("trace");
  WriteText(path, "of yesterday\n");
  DumpTrace(kDumpSocket, "of today\n");
  EXPECT_EQ(ReadText(path), "of yesterday\nof today\n");
}

TEST_F(Trace, ATextOfAnyLengthIsWrittenWhole) {
  const std::string path = TraceTo("trace");
  std::string expected;
  for (const unsigned length : {1022u, 1023u, 1024u, 1025u, 100000u}) {
    const std::string words(length, 'w');
    DumpTrace(kDumpSocket, "%s.", words.c_str());
    expected += words + ".";
  }
  EXPECT_EQ(ReadText(path), expected);
}

TEST_F(Trace, ATextIsNotTakenForAFormat) {
  const std::string path = TraceTo("trace");
  AppendToDump("100%s %n\n");
  DumpTrace(kDumpSocket, "%s", "50%d\n");
  EXPECT_EQ(ReadText(path), "100%s %n\n50%d\n");
}

TEST_F(Trace, EachTextIsOneWriteBetweenOpeningAndClosing) {
  TraceTo("trace");
  const FileFailure calls;
  const std::string words(5000, 'w');
  DumpTrace(kDumpSocket, "%s\n", words.c_str());
  EXPECT_EQ(calls.Calls(FileCall::kOpen), 1);
  EXPECT_EQ(calls.Calls(FileCall::kWrite), 1);
  EXPECT_EQ(calls.Calls(FileCall::kClose), 1);
  EXPECT_EQ(calls.Calls(), 3);
}

TEST_F(Trace, SiteThatIsOffTouchesNoFileAndNoMemory) {
  const FileFailure calls;
  const test::AllocationWatch watch;
  DumpTrace(kAllBits, "%s\n", "unseen");
  EXPECT_EQ(watch.Count(), 0u);
  EXPECT_EQ(calls.Calls(), 0);
}

TEST_F(Trace, TheFileIsForItsOwnerOnly) {
  const mode_t mask = ::umask(0);
  const std::string path = TraceTo("trace");
  DumpTrace(kDumpSocket, "x");
  ::umask(mask);
  struct stat status {};
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(Trace, AFileThatCannotBeOpenedIsIgnored) {
  TraceTo("no such folder/trace");
  DumpTrace(kDumpSocket, "lost\n");
  SetDumpFile(folder_.Path().c_str());
  DumpTrace(kDumpSocket, "lost\n");
  SetDumpFile("");
  DumpTrace(kDumpSocket, "lost\n");
  EXPECT_EQ(GetDumpFile(), "");
  EXPECT_EQ(folder_.Listing(), "");
}

TEST_F(Trace, AFileThatCannotBeOpenedIsNeitherWrittenNorClosed) {
  TraceTo("no such folder/trace");
  const FileFailure calls;
  DumpTrace(kDumpSocket, "lost\n");
  EXPECT_EQ(calls.Calls(FileCall::kOpen), 1);
  EXPECT_EQ(calls.Calls(), 1);
}

TEST_F(Trace, APipeThatNobodyReadsStopsNoWork) {
  const std::string path = TraceTo("pipe");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  DumpTrace(kDumpSocket, "lost\n");
  const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  // More than a pipe holds: what has no room is lost.
  const std::string words(1 << 20, 'w');
  DumpTrace(kDumpSocket, "%s\n", words.c_str());
  char first = 0;
  EXPECT_EQ(::read(reader, &first, 1), 1);
  EXPECT_EQ(first, 'w');
  ::close(reader);
}

TEST_F(Trace, AFullDiskIsIgnoredAndTracingGoesOnWhenThereIsRoomAgain) {
  const std::string path = TraceTo("trace");
  {
    FileFailure disk;
    disk.FillDiskAfter(4);
    DumpTrace(kDumpSocket, "first line\n");
    DumpTrace(kDumpSocket, "second line\n");
    EXPECT_EQ(disk.Calls(FileCall::kOpen), 2);
    EXPECT_EQ(disk.Calls(FileCall::kClose), 2);
  }
  DumpTrace(kDumpSocket, "\nthird line\n");
  EXPECT_EQ(ReadText(path), "firs\nthird line\n");
}

TEST_F(Trace, ErrnoIsAsItWasBefore) {
  TraceTo("no such folder/trace");
  errno = ECONNRESET;
  DumpTrace(kDumpSocket, "lost\n");
  AppendToDump("lost\n");
  DumpTimeStamped("lost");
  EXPECT_EQ(errno, ECONNRESET);
}

TEST_F(Trace, ErrnoIsAsItWasBeforeAlsoWhenATextCannotBeMade) {
  const std::string path = TraceTo("trace");
  errno = ECONNRESET;
  // No character has this number.
  DumpTrace(kDumpSocket, "%ls\n", L"\x7FFFFFFF");
  EXPECT_EQ(errno, ECONNRESET);
  const std::string words(3000, 'w');
  const auto keepsErrno = [&](auto trace) {
    return test::FailEveryAllocation([&] {
      errno = ECONNRESET;
      trace();
      EXPECT_EQ(errno, ECONNRESET);
    });
  };
  EXPECT_GT(keepsErrno([&] { DumpTrace(kDumpSocket, "%s\n", words.c_str()); }), 0u);
  EXPECT_GT(keepsErrno([&] { DumpTimeStamped(words); }), 0u);
  EXPECT_GT(keepsErrno([&] { AppendToDump("!"); }), 0u);
}

TEST_F(Trace, WithoutMemoryATextIsLostAndNothingIsThrown) {
  // Longer than what a string keeps in itself, so that the name takes memory.
  const std::string path = TraceTo("a name of more than sixteen characters");
  const std::string words(3000, 'w');
  const std::uint64_t allocations = test::FailEveryAllocation([&] {
    DumpTrace(kDumpSocket, "%s\n", words.c_str());
    DumpTimeStamped(words);
    AppendToDump("!");
  });
  EXPECT_GT(allocations, 2u);
  const std::string text = ReadText(path);
  EXPECT_EQ(text.substr(text.size() - 1), "!");
}

/// Puts the process five and a half hours east of Greenwich.
class FarEast {
 public:
  FarEast() {
    if (const char* zone = std::getenv("TZ"); zone != nullptr) before_ = zone;
    ::setenv("TZ", "TST-05:30", 1);
    ::tzset();
  }
  FarEast(const FarEast&) = delete;
  FarEast& operator=(const FarEast&) = delete;
  ~FarEast() {
    before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }

  static constexpr std::time_t kOffset = (5 * 60 + 30) * 60;

 private:
  std::optional<std::string> before_;
};

TEST_F(Trace, ATimeStampedLineHasTheLocalTimeAndTheText) {
  const FarEast zone;
  const std::string path = TraceTo("trace");
  SetDumpFlag(kAllBits, false);
  const std::time_t start = std::time(nullptr);
  DumpTimeStamped("100% of it");
  const std::time_t end = std::time(nullptr);
  std::vector<std::string> possible;
  for (std::time_t second = start; second <= end; ++second) {
    const std::time_t shifted = second + FarEast::kOffset;
    std::tm parts{};
    ::gmtime_r(&shifted, &parts);
    char text[200];
    ASSERT_GT(std::strftime(text, sizeof text, "%c", &parts), 0u);
    possible.push_back(std::string(text) + " : 100% of it\n");
  }
  EXPECT_THAT(possible, testing::Contains(ReadText(path)));
}

}  // namespace
}  // namespace tessaret
