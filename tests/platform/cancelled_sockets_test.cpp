// Waiting on the network that is given up along with file calls, as an interrupted program does it.
#include <pthread.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "platform/file_calls.h"
#include "platform/socket_calls.h"

namespace tessaret {
namespace {

class CancelledSockets : public testing::Test {
 protected:
  CancelledSockets() { EXPECT_TRUE(OpenSocketPair(ends_).Ok()); }
  ~CancelledSockets() override {
    CancelFileCalls(false);
    for (const int end : ends_) CloseFile(end);
  }
  std::array<int, 2> ends_{};
};

TEST_F(CancelledSockets, FailInAllCallsThatMayTakeLong) {
  EXPECT_FALSE(AreFileCallsCancelled());
  char byte = 'a';
  Waiting room{.descriptor = ends_[0], .forWriting = true};
  CancelFileCalls(true);
  EXPECT_TRUE(AreFileCallsCancelled());
  EXPECT_EQ(SendSome(ends_[0], &byte, 1).error, ECANCELED);
  EXPECT_EQ(ReceiveSome(ends_[1], &byte, 1).error, ECANCELED);
  EXPECT_EQ(WaitForSockets(room, nullptr, std::nullopt).error, ECANCELED);
  EXPECT_EQ(ConnectSocket(ends_[0], {}).error, ECANCELED);
  sockaddr_in address{};
  EXPECT_EQ(AcceptPeer(ends_[0], address).error, ECANCELED);
  CancelFileCalls(false);
  EXPECT_EQ(SendSome(ends_[0], &byte, 1).value, 1);
  EXPECT_EQ(ReceiveSome(ends_[1], &byte, 1).value, 1);
}

TEST_F(CancelledSockets, EndTheirWaitingWhenASignalBreaksIt) {
  struct sigaction action {};
  action.sa_handler = [](int) { CancelFileCalls(true); };
  ::sigemptyset(&action.sa_mask);
  ASSERT_EQ(::sigaction(SIGUSR1, &action, nullptr), 0);
  std::atomic<int> error = 0;
  std::atomic<bool> isDone = false;
  std::thread waiter([&] {
    Waiting input{.descriptor = ends_[1], .forWriting = false};
    error = WaitForSockets(input, nullptr, std::nullopt).error;
    isDone = true;
  });
  // A signal that comes before the wait breaks nothing.
  while (!isDone) {
    ::pthread_kill(waiter.native_handle(), SIGUSR1);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  waiter.join();
  ::signal(SIGUSR1, SIG_DFL);
  EXPECT_EQ(error, ECANCELED);
}

}  // namespace
}  // namespace tessaret
