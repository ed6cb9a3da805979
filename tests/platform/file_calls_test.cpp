#include "platform/file_calls.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/bytes.h"
#include "support/child_process.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::FileFailure;

bool IsOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) != -1; }

/// A file with the letters "abcdef", open for reading and writing at its start.
class FileCalls : public testing::Test {
 protected:
  FileCalls() : path_(folder_.File("file")) {
    test::WriteText(path_, "abcdef");
    descriptor_ = ::open(path_.c_str(), O_RDWR);
  }
  ~FileCalls() override {
    if (IsOpen(descriptor_)) ::close(descriptor_);
  }

  test::TempFolder folder_;
  std::string path_;
  int descriptor_;
};

TEST_F(FileCalls, OpenGivesADescriptorThatEndsWithTheProgram) {
  const FileResult opened = OpenFile(path_.c_str(), O_RDONLY);
  ASSERT_TRUE(opened.Ok());
  const int descriptor = static_cast<int>(opened.value);
  EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  EXPECT_TRUE(CloseFile(descriptor).Ok());
  EXPECT_FALSE(IsOpen(descriptor));
}

TEST_F(FileCalls, AreCancelledButForWhatTidiesUp) {
  const std::string other = folder_.File("other");
  std::array<char, 4> bytes{};
  struct stat status {};
  CancelFileCalls(true);
  EXPECT_EQ(OpenFile(path_.c_str(), O_RDONLY).error, ECANCELED);
  EXPECT_EQ(ReadSome(descriptor_, bytes.data(), bytes.size()).error, ECANCELED);
  EXPECT_EQ(WriteSome(descriptor_, bytes.data(), bytes.size()).error, ECANCELED);
  EXPECT_EQ(SyncFile(descriptor_).error, ECANCELED);
  EXPECT_EQ(RenameFile(path_.c_str(), other.c_str()).error, ECANCELED);
  EXPECT_EQ(LinkFile(path_.c_str(), other.c_str()).error, ECANCELED);
  EXPECT_TRUE(SeekFile(descriptor_, 2).Ok());
  EXPECT_TRUE(StatPath(path_.c_str(), status).Ok());
  EXPECT_TRUE(SetFileMode(descriptor_, 0600).Ok());
  EXPECT_TRUE(LockFile(descriptor_).Ok());
  EXPECT_TRUE(RemoveFile(path_.c_str()).Ok());
  CancelFileCalls(false);
  EXPECT_EQ(ReadSome(descriptor_, bytes.data(), bytes.size()).value, 4);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "cdef");
}

TEST_F(FileCalls, ACancelledReadEndsWhenASignalBreaksIt) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  struct sigaction action {};
  action.sa_handler = [](int) { CancelFileCalls(true); };
  ::sigemptyset(&action.sa_mask);
  ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
  std::atomic<int> error = 0;
  std::atomic<bool> isDone = false;
  std::thread reader([&] {
    char byte = 0;
    error = ReadSome(pipe[0], &byte, 1).error;
    isDone = true;
  });
  // A signal that comes before the read waits breaks nothing.
  while (!isDone) {
    ::pthread_kill(reader.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  reader.join();
  CancelFileCalls(false);
  ::signal(SIGUSR1, SIG_DFL);
  EXPECT_EQ(error, ECANCELED);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

TEST_F(FileCalls, OpenTellsTheErrorNumber) {
  EXPECT_EQ(OpenFile(folder_.File("none").c_str(), O_RDONLY).error, ENOENT);
  EXPECT_EQ(OpenFile(folder_.Path().c_str(), O_WRONLY).error, EISDIR);
  EXPECT_EQ(OpenFile((path_ + "/x").c_str(), O_RDONLY).error, ENOTDIR);
}

TEST_F(FileCalls, OpenCreatesWithTheModeAsked) {
  const std::string path = folder_.File("made");
  const FileResult opened = OpenFile(path.c_str(), O_WRONLY | O_CREAT, 0600);
  ASSERT_TRUE(opened.Ok());
  CloseFile(static_cast<int>(opened.value));
  struct stat status {};
  ASSERT_TRUE(StatPath(path.c_str(), status).Ok());
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

TEST_F(FileCalls, ReadGivesWhatIsThereAndZeroAtTheEnd) {
  std::array<char, 10> bytes{};
  EXPECT_EQ(ReadSome(descriptor_, bytes.data(), 4).value, 4);
  EXPECT_EQ(std::string(bytes.data(), 4), "abcd");
  EXPECT_EQ(ReadSome(descriptor_, bytes.data(), 10).value, 2);
  const FileResult end = ReadSome(descriptor_, bytes.data(), 10);
  EXPECT_TRUE(end.Ok());
  EXPECT_EQ(end.value, 0);
}

TEST_F(FileCalls, SeekGoesToAnOffsetFromTheStart) {
  std::array<char, 1> byte{};
  EXPECT_EQ(SeekFile(descriptor_, 4).value, 4);
  ReadSome(descriptor_, byte.data(), 1);
  EXPECT_EQ(byte[0], 'e');
  EXPECT_EQ(SeekFile(descriptor_, 0xFFFFFFFFFFFFFFFFu).error, EINVAL);
}

TEST_F(FileCalls, WriteAllWritesAllThroughShortWrites) {
  FileFailure calls;
  calls.LimitCount(FileCall::kWrite, 3);
  EXPECT_TRUE(WriteAll(descriptor_, "0123456789", 10).Ok());
  EXPECT_EQ(calls.Calls(FileCall::kWrite), 4);
  EXPECT_EQ(test::ReadText(path_), "0123456789");
}

TEST_F(FileCalls, WriteAllOfNothingCallsNothing) {
  const FileFailure calls;
  EXPECT_TRUE(WriteAll(-1, nullptr, 0).Ok());
  EXPECT_EQ(calls.Calls(), 0);
}

TEST_F(FileCalls, WriteAllEndsWhereNothingGoesOut) {
  FileFailure calls;
  calls.LimitCount(FileCall::kWrite, 0);
  EXPECT_EQ(WriteAll(descriptor_, "01", 2).error, ENOSPC);
  EXPECT_EQ(calls.Calls(FileCall::kWrite), 1);
}

TEST_F(FileCalls, WriteAllEndsAtTheFirstError) {
  FileFailure calls;
  calls.FillDiskAfter(4);
  EXPECT_EQ(WriteAll(descriptor_, "0123456789", 10).error, ENOSPC);
  EXPECT_EQ(test::ReadText(path_), "0123ef");
}

TEST_F(FileCalls, StatTellsOfOpenFilesAndOfPaths) {
  struct stat status {};
  ASSERT_TRUE(StatDescriptor(descriptor_, status).Ok());
  EXPECT_EQ(status.st_size, 6);
  ASSERT_TRUE(StatPath(folder_.Path().c_str(), status).Ok());
  EXPECT_TRUE(S_ISDIR(status.st_mode));
  EXPECT_EQ(StatPath(folder_.File("none").c_str(), status).error, ENOENT);
  EXPECT_EQ(StatDescriptor(-1, status).error, EBADF);
}

TEST_F(FileCalls, RenameReplacesAndRemoveRemoves) {
  const std::string other = folder_.File("other");
  test::WriteText(other, "other");
  EXPECT_TRUE(RenameFile(path_.c_str(), other.c_str()).Ok());
  EXPECT_EQ(folder_.Listing(), "other");
  EXPECT_EQ(test::ReadText(other), "abcdef");
  EXPECT_EQ(RenameFile(path_.c_str(), other.c_str()).error, ENOENT);
  EXPECT_TRUE(RemoveFile(other.c_str()).Ok());
  EXPECT_EQ(folder_.Listing(), "");
  EXPECT_EQ(RemoveFile(other.c_str()).error, ENOENT);
}

TEST_F(FileCalls, ModeIsSetWhateverTheMask) {
  ASSERT_TRUE(SetFileMode(descriptor_, 0666).Ok());
  struct stat status {};
  StatDescriptor(descriptor_, status);
  EXPECT_EQ(status.st_mode & 07777, 0666u);
}

TEST_F(FileCalls, SyncOfWhatHasNoMediumIsASuccess) {
  EXPECT_TRUE(SyncFile(descriptor_).Ok());
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  EXPECT_TRUE(SyncFile(pipe[1]).Ok());
  ::close(pipe[0]);
  ::close(pipe[1]);
  EXPECT_EQ(SyncFile(-1).error, EBADF);
}

TEST_F(FileCalls, TheLockIsForOneOpenFileAtATime) {
  const int other = ::open(path_.c_str(), O_RDONLY);
  EXPECT_TRUE(LockFile(descriptor_).Ok());
  EXPECT_EQ(LockFile(other).error, EWOULDBLOCK);
  CloseFile(descriptor_);
  EXPECT_TRUE(LockFile(other).Ok());
  ::close(other);
}

TEST_F(FileCalls, EachKindOfCallCanBeMadeToFail) {
  const auto failing = [&](FileCall kind, auto call) {
    FileFailure calls;
    calls.FailCall(kind, 1, EIO);
    const FileResult failed = call();
    EXPECT_EQ(calls.Calls(kind), 1);
    EXPECT_EQ(calls.Calls(), 1);
    return failed.error;
  };
  const char* path = path_.c_str();
  char byte = 'x';
  struct stat status {};
  EXPECT_EQ(failing(FileCall::kOpen, [&] { return OpenFile(path, O_RDONLY); }), EIO);
  EXPECT_EQ(failing(FileCall::kRead, [&] { return ReadSome(descriptor_, &byte, 1); }), EIO);
  EXPECT_EQ(failing(FileCall::kWrite, [&] { return WriteSome(descriptor_, &byte, 1); }), EIO);
  EXPECT_EQ(failing(FileCall::kSeek, [&] { return SeekFile(descriptor_, 1); }), EIO);
  EXPECT_EQ(failing(FileCall::kStat, [&] { return StatPath(path, status); }), EIO);
  EXPECT_EQ(failing(FileCall::kStat, [&] { return StatDescriptor(descriptor_, status); }), EIO);
  EXPECT_EQ(failing(FileCall::kSync, [&] { return SyncFile(descriptor_); }), EIO);
  EXPECT_EQ(failing(FileCall::kRename, [&] { return RenameFile(path, path); }), EIO);
  EXPECT_EQ(failing(FileCall::kRemove, [&] { return RemoveFile(path); }), EIO);
  EXPECT_EQ(failing(FileCall::kMode, [&] { return SetFileMode(descriptor_, 0); }), EIO);
  EXPECT_EQ(failing(FileCall::kLock, [&] { return LockFile(descriptor_); }), EIO);
  EXPECT_EQ(test::ReadText(path_), "abcdef") << "a call that fails does nothing";
  EXPECT_EQ(failing(FileCall::kClose, [&] { return CloseFile(descriptor_); }), EIO);
  EXPECT_FALSE(IsOpen(descriptor_)) << "the descriptor is gone whatever close answers";
}

TEST_F(FileCalls, ACallThatASignalBrokeIsRepeated) {
  FileFailure calls;
  calls.InterruptEveryCall();
  std::array<char, 6> bytes{};
  EXPECT_EQ(ReadSome(descriptor_, bytes.data(), 6).value, 6);
  EXPECT_EQ(calls.Calls(FileCall::kRead), 2);
  EXPECT_TRUE(SyncFile(descriptor_).Ok());
  EXPECT_EQ(calls.Calls(FileCall::kSync), 2);
}

TEST_F(FileCalls, CloseIsNotRepeatedAfterASignal) {
  FileFailure calls;
  calls.InterruptEveryCall();
  EXPECT_TRUE(CloseFile(descriptor_).Ok());
  EXPECT_EQ(calls.Calls(FileCall::kClose), 1);
  EXPECT_FALSE(IsOpen(descriptor_));
}

TEST_F(FileCalls, CloseOfWhatIsNotOpenIsAnError) { EXPECT_EQ(CloseFile(-1).error, EBADF); }

std::atomic<int> signalsSeen = 0;

TEST_F(FileCalls, AReadThatWaitsOutlivesARealSignal) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) { ++signalsSeen; };
  ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0);
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  FileResult got;
  char byte = 0;
  std::thread reader([&] { got = ReadSome(pipe[0], &byte, 1); });
  // Whether the reader waits already cannot be seen, so it gets several signals over a while.
  for (int round = 0; round < 20; ++round) {
    ::pthread_kill(reader.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  ASSERT_EQ(::write(pipe[1], "z", 1), 1);
  reader.join();
  EXPECT_GT(signalsSeen, 0);
  EXPECT_TRUE(got.Ok());
  EXPECT_EQ(got.value, 1);
  EXPECT_EQ(byte, 'z');
  ::sigaction(SIGUSR1, &before, nullptr);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

/// A pipe that nobody will read.
int PipeWithoutReader() {
  std::array<int, 2> pipe{};
  if (::pipe(pipe.data()) != 0) return -1;
  ::close(pipe[0]);
  return pipe[1];
}

bool Waits(int signal) {
  sigset_t waiting;
  ::sigemptyset(&waiting);
  ::sigpending(&waiting);
  return ::sigismember(&waiting, signal) == 1;
}

bool IsHeldBack(int signal) {
  sigset_t mask;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
  return ::sigismember(&mask, signal) == 1;
}

TEST_F(FileCalls, AWriteThatNobodyReadsIsAnErrorAndNoSignal) {
  EXPECT_EQ(test::RunInChild([] {
              ::signal(SIGPIPE, SIG_DFL);
              const int descriptor = PipeWithoutReader();
              for (int times = 0; times < 2; ++times) {
                if (WriteAll(descriptor, "words", 5).error != EPIPE) return 1;
                if (Waits(SIGPIPE) || IsHeldBack(SIGPIPE)) return 2;
              }
              return 0;
            }),
            0);
}

TEST_F(FileCalls, AWriteWhoseReaderGoesInItsMiddleTellsWhatWentAndRaisesNoSignal) {
  EXPECT_EQ(test::RunInChild([] {
              ::signal(SIGPIPE, SIG_DFL);
              std::array<int, 2> pipe{};
              if (::pipe(pipe.data()) != 0) return 1;
              // More than a pipe takes, so that the write waits; the byte read tells that it has begun.
              const std::string words(std::size_t{1} << 20, 'w');
              std::thread reader([&pipe] {
                char byte = 0;
                while (::read(pipe[0], &byte, 1) != 1) continue;
                ::close(pipe[0]);
              });
              const FileResult written = WriteSome(pipe[1], words.data(), words.size());
              const bool waits = Waits(SIGPIPE);
              reader.join();
              if (!written.Ok() || written.value >= std::int64_t{1} << 20) return 2;
              if (waits || IsHeldBack(SIGPIPE)) return 3;
              return WriteAll(pipe[1], words.data(), words.size()).error == EPIPE ? 0 : 4;
            }),
            0);
}

TEST_F(FileCalls, AWriteBeyondTheSizeThatAFileMayHaveIsAnErrorAndNoSignal) {
  EXPECT_EQ(test::RunInChild([this] {
              ::signal(SIGXFSZ, SIG_DFL);
              const rlimit most{6, 6};
              ::setrlimit(RLIMIT_FSIZE, &most);
              if (WriteAll(descriptor_, "0123456789", 10).error != EFBIG) return 1;
              return Waits(SIGXFSZ) || IsHeldBack(SIGXFSZ) ? 2 : 0;
            }),
            0);
  EXPECT_EQ(test::ReadText(path_), "012345");
}

TEST_F(FileCalls, ASignalThatTheHostHoldsBackStaysForIt) {
  EXPECT_EQ(test::RunInChild([] {
              sigset_t held;
              ::sigemptyset(&held);
              ::sigaddset(&held, SIGPIPE);
              ::pthread_sigmask(SIG_BLOCK, &held, nullptr);
              ::raise(SIGPIPE);
              if (WriteAll(PipeWithoutReader(), "words", 5).error != EPIPE) return 1;
              return Waits(SIGPIPE) && IsHeldBack(SIGPIPE) && !IsHeldBack(SIGXFSZ) ? 0 : 2;
            }),
            0);
}

TEST_F(FileCalls, AWriteThatSucceedsLeavesTheSignalsAsTheyWere) {
  EXPECT_TRUE(WriteAll(descriptor_, "words", 5).Ok());
  EXPECT_FALSE(IsHeldBack(SIGPIPE));
  EXPECT_FALSE(IsHeldBack(SIGXFSZ));
}

TEST_F(FileCalls, AThreadThatCannotBeCancelledStaysSoBehindAClose) {
  int state = PTHREAD_CANCEL_ENABLE;
  std::thread([&state] {
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    EXPECT_EQ(CloseFile(-1).error, EBADF);
    ::pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
  }).join();
  EXPECT_EQ(state, PTHREAD_CANCEL_DISABLE);
}

TEST(HasNul, TellsWhetherTheSystemWouldSeeAnotherPath) {
  EXPECT_FALSE(HasNul(""));
  EXPECT_FALSE(HasNul("/some/path"));
  EXPECT_TRUE(HasNul(std::string(1, '\0')));
  EXPECT_TRUE(HasNul(std::string("path\0", 5)));
  EXPECT_TRUE(HasNul(std::string("a\0b", 3)));
}

TEST(SystemErrorText, GivesTheWordsOfTheSystem) {
  EXPECT_EQ(SystemErrorText(ENOENT), "No such file or directory");
  EXPECT_EQ(SystemErrorText(ENOSPC), "No space left on device");
  EXPECT_NE(SystemErrorText(99999), "");
}

}  // namespace
}  // namespace tessaret
