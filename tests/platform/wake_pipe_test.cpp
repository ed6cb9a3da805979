// The descriptor by which a waiting thread is woken.
#include "platform/wake_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <chrono>
#include <csignal>

#include <gtest/gtest.h>

#include "support/child_process.h"

namespace tessaret {
namespace {

using Clock = std::chrono::steady_clock;

class Pipe : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(pipe_.Open()); }
  [[nodiscard]] bool IsReadable() const {
    pollfd ready{.fd = pipe_.Descriptor(), .events = POLLIN, .revents = 0};
    return ::poll(&ready, 1, 0) == 1;
  }

  WakePipe pipe_;
};

TEST_F(Pipe, IsReadableFromAWakeToTheNextClear) {
  EXPECT_FALSE(IsReadable());
  pipe_.Wake();
  EXPECT_TRUE(IsReadable());
  pipe_.Clear();
  EXPECT_FALSE(IsReadable());
  pipe_.Clear();
  EXPECT_FALSE(IsReadable());
}

TEST_F(Pipe, TakesAnyNumberOfWakes) {
  // More than a pipe holds, which is 65,536 bytes.
  for (int turn = 0; turn < 100000; ++turn) pipe_.Wake();
  pipe_.Clear();
  EXPECT_FALSE(IsReadable());
}

TEST_F(Pipe, DoesNotReachProgramsThatAreExecuted) {
  EXPECT_NE(::fcntl(pipe_.Descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(Pipe, IsTheParentsInAChildOfFork) {
  EXPECT_TRUE(pipe_.IsOfThisProcess());
  EXPECT_EQ(test::RunInChild([&] { return pipe_.IsOfThisProcess() ? 1 : 0; }), 0);
}

TEST_F(Pipe, IsWaitedForUntilTheDeadline) {
  EXPECT_FALSE(pipe_.Wait(DeadlineIn(0)));
  const auto begin = Clock::now();
  EXPECT_FALSE(pipe_.Wait(DeadlineIn(30)));
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
  pipe_.Wake();
  EXPECT_TRUE(pipe_.Wait(DeadlineIn(0)));
  EXPECT_TRUE(pipe_.Wait(DeadlineIn(-1)));
}

volatile std::sig_atomic_t signals = 0;

/// Signals every 5 milliseconds while it lives, which break what the thread waits in.
class ManySignals {
 public:
  ManySignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { signals = signals + 1; };
    ::sigaction(SIGALRM, &action, &before_);
    const itimerval often{.it_interval = {0, 5000}, .it_value = {0, 5000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
  }
  ManySignals(const ManySignals&) = delete;
  ManySignals& operator=(const ManySignals&) = delete;
  ~ManySignals() {
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before_, nullptr);
  }

 private:
  struct sigaction before_ {};
};

TEST_F(Pipe, IsWaitedForWhateverSignalsCome) {
  const ManySignals many;
  signals = 0;
  const auto begin = Clock::now();
  EXPECT_FALSE(pipe_.Wait(DeadlineIn(100)));
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(100));
  EXPECT_GT(signals, 2);
}

TEST(WakePipe, ServesAThreadThatIsToEndUntilItEnds) {
  const auto work = [](void* wasReadable) -> void* {
    ::pthread_cancel(::pthread_self());
    {
      WakePipe pipe;
      if (!pipe.Open()) return nullptr;
      pipe.Wake();
      pollfd ready{.fd = pipe.Descriptor(), .events = POLLIN, .revents = 0};
      int before = 0;
      ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before);
      *static_cast<bool*>(wasReadable) = ::poll(&ready, 1, 0) == 1;
      ::pthread_setcancelstate(before, nullptr);
      pipe.Clear();
    }
    ::pthread_testcancel();
    return nullptr;
  };
  bool wasReadable = false;
  pthread_t thread{};
  ASSERT_EQ(::pthread_create(&thread, nullptr, work, &wasReadable), 0);
  void* result = nullptr;
  ASSERT_EQ(::pthread_join(thread, &result), 0);
  EXPECT_EQ(result, PTHREAD_CANCELED);
  EXPECT_TRUE(wasReadable);
}

TEST(WakePipe, IsNotThereWhereNoDescriptorIsLeft) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  WakePipe pipe;
  EXPECT_FALSE(pipe.Open());
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

}  // namespace
}  // namespace tessaret
