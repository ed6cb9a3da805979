// Connecting.
#include <netdb.h>
#include <netinet/tcp.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <future>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>

#include "net/end_in_time.h"
#include "net/socket.h"
#include "platform/host_lookup.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"

namespace tessaret {
namespace {

using test::Descriptor;
using test::PlainListener;
using test::SocketFailure;

/// What the look-up of this test answers, and what it was asked.
struct Names {
  std::mutex lock;
  std::condition_variable changed;
  std::vector<std::string> asked;
  std::optional<in_addr> answer;
  bool holds = false;  // answers nobody until this is over
  int running = 0;
};

Names names;

std::optional<in_addr> LookUp(const std::string& name) {
  std::unique_lock held(names.lock);
  names.asked.push_back(name);
  ++names.running;
  names.changed.notify_all();
  names.changed.wait(held, [] { return !names.holds; });
  --names.running;
  names.changed.notify_all();
  return names.answer;
}

class SocketOpen : public testing::Test {
 protected:
  SocketOpen() {
    names.asked.clear();
    names.answer.reset();
    SetHostLookup(&LookUp);
  }
  ~SocketOpen() override {
    {
      std::unique_lock held(names.lock);
      names.holds = false;
      names.changed.notify_all();
      names.changed.wait(held, [] { return names.running == 0; });
    }
    SetHostLookup(nullptr);
  }

  /// Keeps what goes to the standard error stream meanwhile.
  int Open(const std::string& host, const std::string& port) {
    testing::internal::CaptureStderr();
    const int answer = socket_.Open(host, port);
    errors_ = testing::internal::GetCapturedStderr();
    return answer;
  }
  std::string Words() const { return socket_.GetLastError(); }
  void ExpectIdle() const {
    EXPECT_EQ(socket_.Connected, 0);
    EXPECT_EQ(socket_.DataSocket, 0);
    EXPECT_EQ(socket_.CancelRead, 0);
    EXPECT_EQ(socket_.CancelWrite, 0);
  }

  Socket socket_;
  std::string errors_;
};

constexpr const char* kHost = "127.0.0.1";

TEST_F(SocketOpen, ConnectsToAListener) {
  const PlainListener listener;
  socket_.Error = 5;
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  const Descriptor peer = listener.Accept();
  EXPECT_EQ(socket_.Connected, 1);
  EXPECT_EQ(socket_.Error, 0);
  EXPECT_EQ(Words(), "");
  EXPECT_EQ(socket_.Address.sin_family, AF_INET);
  EXPECT_EQ(ntohs(socket_.Address.sin_port), listener.Port());
  EXPECT_EQ(ntohl(socket_.Address.sin_addr.s_addr), 0x7f000001u);
  EXPECT_EQ(socket_.Send("abc", 3), 1);
  EXPECT_EQ(peer.Receive(3), test::BytesOf("abc"));
}

TEST_F(SocketOpen, LeavesASocketThatWaitsInCallsAndSendsAtOnceAndEndsAtExec) {
  const PlainListener listener;
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_TRUE(test::WaitsInCalls(socket_.DataSocket));
  EXPECT_TRUE(test::IsClosedOnExec(socket_.DataSocket));
  EXPECT_EQ(test::OptionOf(socket_.DataSocket, IPPROTO_TCP, TCP_NODELAY), 1);
}

TEST_F(SocketOpen, TakesAnAddressWithoutLookingItUp) {
  const PlainListener listener;
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_TRUE(names.asked.empty());
  EXPECT_EQ(ntohl(socket_.ResolvedAddress), 0x7f000001u);
  ASSERT_EQ(socket_.HostEntry.h_addr_list, socket_.ResolvedAddressList);
  EXPECT_EQ(socket_.HostEntry.h_addr_list[0], reinterpret_cast<char*>(&socket_.ResolvedAddress));
  EXPECT_EQ(socket_.HostEntry.h_addr_list[1], nullptr);
  EXPECT_EQ(socket_.HostEntry.h_length, 4);
  EXPECT_EQ(socket_.HostEntry.h_addrtype, AF_INET);
}

TEST_F(SocketOpen, LooksANameUp) {
  const PlainListener listener;
  names.answer = in_addr{htonl(INADDR_LOOPBACK)};
  ASSERT_EQ(Open("archive", listener.PortText()), 1);
  EXPECT_EQ(names.asked, std::vector<std::string>{"archive"});
  EXPECT_EQ(ntohl(socket_.Address.sin_addr.s_addr), 0x7f000001u);
}

TEST_F(SocketOpen, NeverLooksANameUpThatBeginsWithADigitOtherThanZero) {
  SocketFailure failure;
  failure.FailCall(SocketCall::kConnect, 1, ECONNREFUSED);
  EXPECT_EQ(Open("3com-host", "104"), 0);
  EXPECT_TRUE(names.asked.empty());
  EXPECT_EQ(ntohl(socket_.Address.sin_addr.s_addr), 0xffffffffu);
  EXPECT_EQ(Words(), "Open(3com-host,104): Error on connect wsaerr=111 msg=Connection refused");
  failure.FailCalls(SocketCall::kConnect, 1, 9, ECONNREFUSED);
  EXPECT_EQ(Open("0host", "104"), 0);
  EXPECT_EQ(names.asked, std::vector<std::string>{"0host"});
}

TEST_F(SocketOpen, TakesANameThatNobodyKnowsForAnAddress) {
  SocketFailure failure;
  failure.FailCalls(SocketCall::kConnect, 1, 9, ENETUNREACH);
  EXPECT_EQ(Open("nobody", "104"), 0);
  EXPECT_EQ(names.asked.size(), 1u);
  EXPECT_EQ(ntohl(socket_.Address.sin_addr.s_addr), 0xffffffffu);
  EXPECT_EQ(Words(), "Open(nobody,104): Error on connect wsaerr=101 msg=Network is unreachable");
  // A look-up that fails for an address that begins with 0 ends there, too.
  EXPECT_EQ(Open("0.0.0.9", "104"), 0);
  EXPECT_EQ(ntohl(socket_.Address.sin_addr.s_addr), 9u);
}

TEST_F(SocketOpen, TakesPortsBySixteenBits) {
  SocketFailure failure;
  failure.FailCalls(SocketCall::kConnect, 1, 9, ECONNREFUSED);
  Open(kHost, "104");
  EXPECT_EQ(ntohs(socket_.Address.sin_port), 104);
  Open(kHost, " 11112abc");
  EXPECT_EQ(ntohs(socket_.Address.sin_port), 11112);
  Open(kHost, "65537");
  EXPECT_EQ(ntohs(socket_.Address.sin_port), 1);
  Open(kHost, "-1");
  EXPECT_EQ(ntohs(socket_.Address.sin_port), 65535);
}

TEST_F(SocketOpen, LooksForTheServiceWhereThePortIsNoNumber) {
  for (const char* port : {"0", "65536", "no-such-service", ""}) {
    EXPECT_EQ(Open(kHost, port), 0);
    EXPECT_EQ(Words(),
              std::string("Open(127.0.0.1,") + port + "): could not resolve port[" + port + "]");
  }
  ExpectIdle();
  const servent* service = ::getservbyname("http", nullptr);
  if (service == nullptr) GTEST_SKIP() << "the system has no list of services";
  SocketFailure failure;
  failure.FailCall(SocketCall::kConnect, 1, ECONNREFUSED);
  Open(kHost, "http");
  EXPECT_EQ(socket_.Address.sin_port, service->s_port);
  EXPECT_EQ(socket_.ServiceEntry.s_port, service->s_port);
}

TEST_F(SocketOpen, TellsWhereNoSocketIsLeft) {
  SocketFailure failure;
  failure.FailCall(SocketCall::kSocket, 1, EMFILE);
  EXPECT_EQ(Open(kHost, "104"), 0);
  EXPECT_EQ(Words(),
            "Open(127.0.0.1,104): could not create sopcket wsaerr=24 msg=Too many open files");
  ExpectIdle();
}

TEST_F(SocketOpen, TellsOfARefusalThatComesAtOnce) {
  const int before = test::OpenDescriptors();
  SocketFailure failure;
  failure.FailCall(SocketCall::kConnect, 1, ECONNREFUSED);
  EXPECT_EQ(Open(kHost, "104"), 0);
  EXPECT_EQ(Words(), "Open(127.0.0.1,104): Error on connect wsaerr=111 msg=Connection refused");
  EXPECT_EQ(socket_.Error, 1);
  ExpectIdle();
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(SocketOpen, TakesARefusalThatIsWaitedForForALinkThatIsLost) {
  PlainListener listener;
  listener.Close();
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_EQ(errors_, "Socket::Open() Select returned 1\n");
  EXPECT_EQ(socket_.Error, 0);
  char byte = 0;
  EXPECT_EQ(socket_.Read(&byte, 1), -1);
}

TEST_F(SocketOpen, CutsItsWordsToFit) {
  EXPECT_EQ(Open(kHost, std::string(400, 'p')), 0);
  EXPECT_EQ(Words(), ("Open(127.0.0.1," + std::string(400, 'p')).substr(0, 255));
}

TEST_F(SocketOpen, EmptiesWordsAndClosesWhatWasOpen) {
  const PlainListener listener;
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  const Descriptor first = listener.Accept();
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_TRUE(first.Receive(1).empty());
  const Descriptor second = listener.Accept();
  EXPECT_EQ(Open(kHost, "0"), 0);
  ExpectIdle();
  EXPECT_TRUE(second.Receive(1).empty());
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_EQ(Words(), "");
}

/// Connects for the call that is said to go on.
void ConnectMeanwhile(const Socket& socket) {
  const auto* bare = reinterpret_cast<const sockaddr*>(&socket.Address);
  ::fcntl(socket.DataSocket, F_SETFL, 0);
  ::connect(socket.DataSocket, bare, sizeof socket.Address);
}

TEST_F(SocketOpen, WaitsForAConnectThatGoesOn) {
  const PlainListener listener;
  SocketFailure failure;
  failure.RunBefore(SocketCall::kConnect, 1, [&] { ConnectMeanwhile(socket_); });
  failure.FailCall(SocketCall::kConnect, 1, EINPROGRESS);
  int cancelRead = 0;
  failure.RunBefore(SocketCall::kWait, 1, [&] {
    cancelRead = socket_.CancelRead;
    EXPECT_NE(socket_.CancelWrite, 0);
    EXPECT_TRUE(test::IsClosedOnExec(socket_.CancelRead));
    EXPECT_TRUE(test::IsClosedOnExec(socket_.CancelWrite));
  });
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_EQ(errors_, "Socket::Open() Select returned 1\n");
  EXPECT_NE(cancelRead, 0);
  EXPECT_EQ(socket_.CancelRead, 0);
  EXPECT_EQ(socket_.CancelWrite, 0);
  EXPECT_FALSE(test::IsOpen(cancelRead));
  EXPECT_EQ(socket_.Send("a", 1), 1);
  EXPECT_EQ(listener.Accept().Receive(1), test::BytesOf("a"));
}

TEST_F(SocketOpen, ConnectsAmidSignals) {
  const PlainListener listener;
  SocketFailure failure;
  failure.InterruptEveryCall();
  failure.RunBefore(SocketCall::kConnect, 1, [&] { ConnectMeanwhile(socket_); });
  // The signal that breaks it leaves the connect going on.
  ASSERT_EQ(Open(kHost, listener.PortText()), 1);
  EXPECT_EQ(failure.Calls(SocketCall::kConnect), 1);
}

TEST_F(SocketOpen, GivesUpAfterItsTimeout) {
  const test::SilentListener listener;
  const int before = test::OpenDescriptors();
  socket_.TimeoutSecs = 1;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_EQ(Words(), "Operation timed out");
  EXPECT_EQ(errors_, "Socket::Open() Select returned 0\n");
  EXPECT_EQ(socket_.Error, -1);  // what the connect answered
  ExpectIdle();
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(SocketOpen, IsCancelledByCloseFromAnotherThread) {
  const test::SilentListener listener;
  const int before = test::OpenDescriptors();
  socket_.TimeoutSecs = test::kLongWait;
  test::ExpectEndInTime("a connect", [&] {
    test::MomentOfClose moment;
    std::thread closing([&] {
      while (socket_.CancelRead == 0) std::this_thread::yield();
      moment.Note();
      EXPECT_EQ(socket_.Close(), 1);
    });
    EXPECT_EQ(Open(kHost, listener.PortText()), 0);
    const auto end = std::chrono::steady_clock::now();
    closing.join();
    EXPECT_EQ(Words(), "Operation Canceled");
    // The socket, which is shut down, may be ready as well.
    if (errors_.size() > 31 && errors_[31] == '2') errors_[31] = '1';
    EXPECT_EQ(errors_, "Socket::Open() Select returned 1\nOperation cancelled\n");
    EXPECT_EQ(socket_.Error, 0);
    ExpectIdle();
    EXPECT_EQ(test::OpenDescriptors(), before);
    return moment.SecondsUntil(end);
  });
}

TEST_F(SocketOpen, IsCancelledByACloseThatComesBeforeItBeganToWait) {
  const test::SilentListener listener;
  for (const SocketCall kind : {SocketCall::kSocket, SocketCall::kConnect, SocketCall::kPair}) {
    SocketFailure failure;
    failure.RunBefore(kind, 1, [&] { socket_.Close(); });
    EXPECT_EQ(Open(kHost, listener.PortText()), 0);
    EXPECT_EQ(Words(), "Operation Canceled") << static_cast<int>(kind);
    EXPECT_EQ(failure.Calls(SocketCall::kConnect), kind == SocketCall::kSocket ? 0 : 1);
    EXPECT_EQ(errors_, kind == SocketCall::kSocket
                           ? ""
                           : "Socket::Open() Select returned 1\nOperation cancelled\n");
    ExpectIdle();
  }
}

TEST_F(SocketOpen, IsCancelledByACloseThatComesWhenItIsConnected) {
  const PlainListener listener;
  SocketFailure failure;
  // The socket is made to wait in calls again when it is connected.
  failure.RunBefore(SocketCall::kOption, 2, [&] { socket_.Close(); });
  EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  EXPECT_EQ(Words(), "Operation Canceled");
  ExpectIdle();
  EXPECT_TRUE(listener.Accept().Receive(1).empty());
}

TEST_F(SocketOpen, OpensAnewAfterItWasCancelled) {
  const PlainListener listener;
  {
    SocketFailure failure;
    failure.RunBefore(SocketCall::kSocket, 1, [&] { socket_.Close(); });
    EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  }
  EXPECT_EQ(Open(kHost, listener.PortText()), 1);
}

TEST_F(SocketOpen, TellsWhereThePipeOrTheWaitFails) {
  for (const SocketCall kind : {SocketCall::kPair, SocketCall::kWait}) {
    const int before = test::OpenDescriptors();
    SocketFailure failure;
    failure.FailCall(SocketCall::kConnect, 1, EINPROGRESS);
    failure.FailCall(kind, 1, EMFILE);
    EXPECT_EQ(Open(kHost, "104"), 0);
    EXPECT_EQ(Words(), "Open(127.0.0.1,104): Error on connect wsaerr=24 msg=Too many open files");
    EXPECT_EQ(socket_.Error, 1);
    ExpectIdle();
    EXPECT_EQ(test::OpenDescriptors(), before);
  }
  EXPECT_EQ(errors_, "Socket::Open() Select returned -1\n");
}

TEST_F(SocketOpen, TellsWhereTheSocketCannotBeMadeToWaitAgain) {
  const PlainListener listener;
  SocketFailure failure;
  failure.FailCall(SocketCall::kOption, 2, EIO);
  EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  EXPECT_EQ(Words(), "Open(127.0.0.1," + listener.PortText() +
                         "): Error on connect wsaerr=5 msg=Input/output error");
  EXPECT_EQ(socket_.Connected, 0);
  EXPECT_EQ(socket_.Error, 0);
}

TEST_F(SocketOpen, ConnectsNoSocketThatWouldWaitInCalls) {
  const PlainListener listener;
  const int before = test::OpenDescriptors();
  SocketFailure failure;
  failure.FailCall(SocketCall::kOption, 1, EIO);
  EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  EXPECT_EQ(Words(), "Open(127.0.0.1," + listener.PortText() +
                         "): Error on connect wsaerr=5 msg=Input/output error");
  EXPECT_EQ(socket_.Error, 1);
  EXPECT_EQ(failure.Calls(SocketCall::kConnect), 0);
  ExpectIdle();
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(SocketOpen, CannotWaitForATimeBelowZero) {
  const test::SilentListener listener;
  socket_.TimeoutSecs = -1;
  EXPECT_EQ(Open(kHost, listener.PortText()), 0);
  EXPECT_EQ(Words(), "Open(127.0.0.1," + listener.PortText() +
                         "): Error on connect wsaerr=22 msg=Invalid argument");
  EXPECT_EQ(errors_, "Socket::Open() Select returned -1\n");
}

TEST_F(SocketOpen, GivesASlowLookUpUpAfterItsTimeout) {
  names.holds = true;
  socket_.TimeoutSecs = 1;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Open("slow", "104"), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
  EXPECT_EQ(Words(), "Open(slow,104): could not resolve [slow]");
  ExpectIdle();
}

TEST_F(SocketOpen, LeavesASlowLookUpBehindWhenItIsClosed) {
  names.holds = true;
  socket_.TimeoutSecs = test::kLongWait;
  int turn = 0;
  test::ExpectEndInTime("a look-up", [&] {
    ++turn;
    test::MomentOfClose moment;
    std::thread closing([&] {
      std::unique_lock held(names.lock);
      // Those before are left behind, and still run.
      names.changed.wait(held, [&] { return names.running == turn; });
      held.unlock();
      moment.Note();
      socket_.Close();
    });
    EXPECT_EQ(Open("slow", "104"), 0);
    const auto end = std::chrono::steady_clock::now();
    closing.join();
    EXPECT_EQ(Words(), "Operation Canceled");
    ExpectIdle();
    return moment.SecondsUntil(end);
  });
}

}  // namespace
}  // namespace tessaret
