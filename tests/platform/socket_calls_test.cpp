#include "platform/socket_calls.h"

#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include <gtest/gtest.h>

#include "support/child_process.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::Descriptor;
using test::SocketFailure;

using Clock = std::chrono::steady_clock;

Descriptor Taken(const SocketResult& result) { return Descriptor(static_cast<int>(result.value)); }

TEST(SocketCalls, OpenDescriptorsThatEndAtExec) {
  const Descriptor plain = Taken(OpenTcpSocket());
  EXPECT_TRUE(test::IsClosedOnExec(plain.Number()));
  std::array<int, 2> ends{};
  ASSERT_TRUE(OpenSocketPair(ends).Ok());
  const Descriptor first(ends[0]);
  const Descriptor second(ends[1]);
  for (const int end : ends) {
    EXPECT_TRUE(test::IsClosedOnExec(end));
    EXPECT_FALSE(test::WaitsInCalls(end));
  }
  const test::PlainListener listener;
  const Descriptor peer = test::ConnectTo(listener.Port());
  sockaddr_in address{};
  const Descriptor accepted = Taken(AcceptPeer(listener.Number(), address));
  EXPECT_TRUE(test::IsClosedOnExec(accepted.Number()));
}

TEST(SocketCalls, NeverHandOutDescriptorZero) {
  const int zeros = test::RunInChild([] {
    int count = 0;
    sockaddr_in address{};
    std::array<int, 2> ends{};
    const test::PlainListener listener;
    const Descriptor peer = test::ConnectTo(listener.Port());
    ::close(0);
    if (OpenTcpSocket().value == 0 || test::IsOpen(0)) ++count;
    if (AcceptPeer(listener.Number(), address).value == 0 || test::IsOpen(0)) ++count;
    if (!OpenSocketPair(ends).Ok() || ends[0] == 0 || ends[1] == 0 || test::IsOpen(0)) ++count;
    return count;
  });
  EXPECT_EQ(zeros, 0);
}

TEST(SocketCalls, FailWhereDescriptorZeroIsTheOnlyOneLeft) {
  const int wrong = test::RunInChild([] {
    ::close(0);
    const rlimit three{.rlim_cur = 3, .rlim_max = 3};
    ::setrlimit(RLIMIT_NOFILE, &three);
    const SocketResult opened = OpenTcpSocket();
    if (opened.Ok() || test::IsOpen(0)) return 1;
    // Of a pair the other one goes with it.
    ::close(1);
    std::array<int, 2> ends{};
    if (OpenSocketPair(ends).Ok() || test::IsOpen(0) || test::IsOpen(1)) return 2;
    return 0;
  });
  EXPECT_EQ(wrong, 0);
}

TEST(SocketCalls, SendAndReceiveWithoutWaiting) {
  const auto ends = test::ConnectedPair();
  char byte = 0;
  EXPECT_EQ(ReceiveSome(ends[0].Number(), &byte, 1).error, EAGAIN);
  EXPECT_EQ(SendSome(ends[1].Number(), "a", 1).value, 1);
  EXPECT_EQ(ReceiveSome(ends[0].Number(), &byte, 1).value, 1);
  EXPECT_EQ(byte, 'a');
  const Bytes much(1 << 24);
  const SocketResult some = SendSome(ends[1].Number(), much.data(), much.size());
  EXPECT_TRUE(some.Ok());
  EXPECT_LT(some.value, 1 << 24);
  EXPECT_EQ(SendSome(ends[1].Number(), much.data(), much.size()).error, EAGAIN);
}

TEST(SocketCalls, TellOfAPeerThatHasClosedWithoutASignal) {
  auto ends = test::ConnectedPair();
  ends[0].Close();
  EXPECT_EQ(SendSome(ends[1].Number(), "a", 1).error, EPIPE);
  char byte = 0;
  const SocketResult end = ReceiveSome(ends[1].Number(), &byte, 1);
  EXPECT_TRUE(end.Ok());
  EXPECT_EQ(end.value, 0);
}

TEST(SocketCalls, TellTheSystemsErrors) {
  sockaddr_in address{};
  char byte = 0;
  EXPECT_EQ(SetBlocking(-1, true).error, EBADF);
  EXPECT_EQ(ConnectSocket(-1, address).error, EBADF);
  EXPECT_EQ(BindSocket(-1, address).error, EBADF);
  EXPECT_EQ(ListenOnSocket(-1, 5).error, EBADF);
  EXPECT_EQ(AcceptPeer(-1, address).error, EBADF);
  EXPECT_EQ(SetReusable(-1).error, EBADF);
  EXPECT_EQ(SetNoLinger(-1, 30).error, EBADF);
  EXPECT_EQ(SetNoDelay(-1).error, EBADF);
  EXPECT_EQ(SendSome(-1, &byte, 1).error, EBADF);
  EXPECT_EQ(ReceiveSome(-1, &byte, 1).error, EBADF);
  ShutDownSocket(-1);
}

TEST(SocketCalls, AreRepeatedWhenASignalBreaksThem) {
  SocketFailure failure;
  failure.InterruptEveryCall();
  const Descriptor plain = Taken(OpenTcpSocket());
  EXPECT_EQ(failure.Calls(SocketCall::kSocket), 2);
  EXPECT_TRUE(BindSocket(plain.Number(), test::Loopback(0)).Ok());
  EXPECT_TRUE(ListenOnSocket(plain.Number(), 1).Ok());
  EXPECT_TRUE(SetReusable(plain.Number()).Ok());
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ASSERT_EQ(::getsockname(plain.Number(), reinterpret_cast<sockaddr*>(&address), &size), 0);
  const Descriptor peer = test::ConnectTo(ntohs(address.sin_port));
  const Descriptor accepted = Taken(AcceptPeer(plain.Number(), address));
  EXPECT_EQ(failure.Calls(SocketCall::kAccept), 2);
  EXPECT_EQ(address.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
  const Waiting room{.descriptor = accepted.Number(), .forWriting = true};
  EXPECT_EQ(WaitForSockets(room, nullptr, std::nullopt).value, 1);
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 2);
}

TEST(SocketCalls, LeaveAConnectGoingOnThatASignalBreaks) {
  SocketFailure failure;
  failure.FailCall(SocketCall::kConnect, 1, EINTR);
  const Descriptor plain = Taken(OpenTcpSocket());
  EXPECT_EQ(ConnectSocket(plain.Number(), test::Loopback(9)).error, EINPROGRESS);
  EXPECT_EQ(failure.Calls(SocketCall::kConnect), 1);
}

TEST(SocketCalls, WaitForEitherOfTwo) {
  const auto first = test::ConnectedPair();
  const auto second = test::ConnectedPair();
  const Waiting input{.descriptor = first[0].Number(), .forWriting = false};
  const Waiting other{.descriptor = second[0].Number(), .forWriting = false};
  EXPECT_EQ(WaitForSockets(input, &other, DeadlineIn(0)).value, 0);
  second[1].Send({1});
  EXPECT_EQ(WaitForSockets(input, &other, std::nullopt).value, 1);
  const Waiting output{.descriptor = first[0].Number(), .forWriting = true};
  EXPECT_EQ(WaitForSockets(output, &other, std::nullopt).value, 2);
}

TEST(SocketCalls, WaitUntilTheDeadline) {
  const auto ends = test::ConnectedPair();
  const Waiting input{.descriptor = ends[0].Number(), .forWriting = false};
  const auto begin = Clock::now();
  EXPECT_EQ(WaitForSockets(input, nullptr, DeadlineIn(30)).value, 0);
  EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
}

TEST(SocketCalls, AreReadyWhereTheNextCallWouldTellAnError) {
  auto ends = test::ConnectedPair();
  ends[1].Close();
  const Waiting input{.descriptor = ends[0].Number(), .forWriting = false};
  EXPECT_EQ(WaitForSockets(input, nullptr, std::nullopt).value, 1);
}

TEST(SocketCalls, WaitNoLongerForManySignals) {
  struct sigaction action {};
  struct sigaction before {};
  action.sa_handler = [](int) {};
  ::sigaction(SIGALRM, &action, &before);
  const itimerval often{.it_interval = {0, 2000}, .it_value = {0, 2000}};
  ::setitimer(ITIMER_REAL, &often, nullptr);
  const auto ends = test::ConnectedPair();
  const Waiting input{.descriptor = ends[0].Number(), .forWriting = false};
  const auto begin = Clock::now();
  EXPECT_EQ(WaitForSockets(input, nullptr, DeadlineIn(100)).value, 0);
  const auto waited = Clock::now() - begin;
  const itimerval never{};
  ::setitimer(ITIMER_REAL, &never, nullptr);
  ::sigaction(SIGALRM, &before, nullptr);
  EXPECT_GE(waited, std::chrono::milliseconds(100));
  EXPECT_LT(waited, std::chrono::seconds(30));
}

TEST(SocketCalls, EndWhatWaitsWhenASocketIsShutDown) {
  const auto ends = test::ConnectedPair();
  ShutDownSocket(ends[0].Number());
  const Waiting input{.descriptor = ends[0].Number(), .forWriting = false};
  EXPECT_EQ(WaitForSockets(input, nullptr, std::nullopt).value, 1);
  EXPECT_TRUE(test::IsOpen(ends[0].Number()));
  EXPECT_TRUE(ends[1].Receive(1).empty());
}

}  // namespace
}  // namespace tessaret
