// Listening and accepting.
#include <netinet/tcp.h>

#include <chrono>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "net/end_in_time.h"
#include "net/socket.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"

namespace tessaret {
namespace {

using test::ConnectTo;
using test::Descriptor;
using test::PlainListener;
using test::SocketFailure;

class SocketListen : public testing::Test {
 protected:
  /// Listens on a port that was free a moment ago.
  void Listen() {
    for (int turn = 0; turn < 50 && socket_.Listening == 0; ++turn) {
      PlainListener free;
      free.Close();
      port_ = free.Port();
      socket_.Listen(std::to_string(port_));
    }
    ASSERT_EQ(socket_.Listening, 1);
  }
  std::string Words() const { return socket_.GetLastError(); }
  void ExpectIdle() const {
    EXPECT_EQ(socket_.Connected, 0);
    EXPECT_EQ(socket_.Listening, 0);
    EXPECT_EQ(socket_.DataSocket, 0);
    EXPECT_EQ(socket_.ListenSocket, 0);
  }

  Socket socket_;
  std::uint16_t port_ = 0;
};

TEST_F(SocketListen, WaitsForPeersOnEveryLocalAddress) {
  Listen();
  EXPECT_EQ(socket_.Connected, 0);
  EXPECT_EQ(socket_.DataSocket, 0);
  EXPECT_EQ(socket_.Address.sin_family, AF_INET);
  EXPECT_EQ(ntohs(socket_.Address.sin_port), port_);
  EXPECT_EQ(socket_.Address.sin_addr.s_addr, htonl(INADDR_ANY));
  sockaddr_in bound{};
  socklen_t size = sizeof bound;
  ::getsockname(socket_.ListenSocket, reinterpret_cast<sockaddr*>(&bound), &size);
  EXPECT_EQ(bound.sin_addr.s_addr, htonl(INADDR_ANY));
  EXPECT_EQ(ntohs(bound.sin_port), port_);
}

TEST_F(SocketListen, DoesNotLingerAndMayReuseTheAddress) {
  Listen();
  linger stored{.l_onoff = 1, .l_linger = 0};
  socklen_t size = sizeof stored;
  ::getsockopt(socket_.ListenSocket, SOL_SOCKET, SO_LINGER, &stored, &size);
  EXPECT_EQ(stored.l_onoff, 0);
  EXPECT_EQ(test::OptionOf(socket_.ListenSocket, SOL_SOCKET, SO_REUSEADDR), 1);
  EXPECT_TRUE(test::IsClosedOnExec(socket_.ListenSocket));
}

TEST_F(SocketListen, LetsFivePeersWait) {
  Listen();
  // Of a socket that listens the system tells here how many may wait.
  tcp_info info{};
  socklen_t size = sizeof info;
  ASSERT_EQ(::getsockopt(socket_.ListenSocket, IPPROTO_TCP, TCP_INFO, &info, &size), 0);
  EXPECT_EQ(info.tcpi_sacked, 5u);
}

TEST_F(SocketListen, TakesOnePeerAfterTheOther) {
  Listen();
  const int listener = socket_.ListenSocket;
  const Descriptor first = ConnectTo(port_);
  ASSERT_EQ(socket_.Accept(), 1);
  EXPECT_EQ(socket_.Connected, 1);
  EXPECT_TRUE(test::IsClosedOnExec(socket_.DataSocket));
  EXPECT_EQ(test::OptionOf(socket_.DataSocket, IPPROTO_TCP, TCP_NODELAY), 1);
  sockaddr_in own{};
  socklen_t size = sizeof own;
  ::getsockname(first.Number(), reinterpret_cast<sockaddr*>(&own), &size);
  EXPECT_EQ(socket_.Address.sin_port, own.sin_port);
  EXPECT_EQ(socket_.Address.sin_addr.s_addr, htonl(INADDR_LOOPBACK));
  first.Send({7});
  std::uint8_t byte = 0;
  EXPECT_EQ(socket_.Read(&byte, 1), 1);
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(socket_.Listening, 1);
  EXPECT_EQ(socket_.ListenSocket, listener);
  const Descriptor second = ConnectTo(port_);
  ASSERT_EQ(socket_.Accept(), 1);
  EXPECT_TRUE(first.Receive(1).empty());
  EXPECT_EQ(socket_.Send("x", 1), 1);
  EXPECT_EQ(second.Receive(1), test::BytesOf("x"));
}

TEST_F(SocketListen, TellsOfAPortThatIsTaken) {
  const PlainListener other;
  const int before = test::OpenDescriptors();
  EXPECT_EQ(socket_.Listen(other.PortText()), 0);
  EXPECT_EQ(Words(), "bind(): wsaerr=98 msg=[Address already in use]\n");
  ExpectIdle();
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(SocketListen, TellsOfEachStepThatFails) {
  struct Step {
    SocketCall kind;
    const char* words;
  };
  for (const Step& step :
       {Step{SocketCall::kSocket,
             "socket(PF_INET, SOCK_STREM, IPPROT_TCP): wsaerr=5 msg=[Input/output error]\n"},
        Step{SocketCall::kBind, "bind(): wsaerr=5 msg=[Input/output error]\n"},
        Step{SocketCall::kListen, "listen(): wsaerr=5 msg=[Input/output error]\n"}}) {
    const int before = test::OpenDescriptors();
    PlainListener free;
    free.Close();
    SocketFailure failure;
    failure.FailCall(step.kind, 1, EIO);
    EXPECT_EQ(socket_.Listen(free.PortText()), 0);
    EXPECT_EQ(Words(), step.words);
    ExpectIdle();
    EXPECT_EQ(test::OpenDescriptors(), before);
  }
}

TEST_F(SocketListen, KeepsTheWordsOfAServiceThatIsNotThere) {
  for (const char* port : {"0", "no-such-service"}) {
    EXPECT_EQ(socket_.Listen(port), 0);
    EXPECT_EQ(Words(), std::string("Error getservbyname(") + port + ", NULL)");
  }
  ExpectIdle();
}

TEST_F(SocketListen, ClosesAConnectionAndAListenerFromBefore) {
  Listen();
  const int listener = socket_.ListenSocket;
  const Descriptor peer = ConnectTo(port_);
  ASSERT_EQ(socket_.Accept(), 1);
  const int before = test::OpenDescriptors();
  socket_.Listening = 0;
  Listen();
  EXPECT_TRUE(peer.Receive(1).empty());
  EXPECT_EQ(socket_.Connected, 0);
  EXPECT_TRUE(socket_.ListenSocket == listener || !test::IsOpen(listener));
  EXPECT_EQ(test::OpenDescriptors(), before - 1);
}

TEST_F(SocketListen, ListensAnewOnThePortThatItHas) {
  Listen();
  const int before = test::OpenDescriptors();
  EXPECT_EQ(socket_.Listen(std::to_string(port_)), 1) << Words();
  EXPECT_EQ(test::OpenDescriptors(), before);
  const Descriptor peer = ConnectTo(port_);
  EXPECT_EQ(socket_.Accept(), 1);
}

TEST_F(SocketListen, LeavesNoPeerWaitingWhereItCannotListenAnew) {
  Listen();
  const PlainListener other;
  EXPECT_EQ(socket_.Listen(other.PortText()), 0);
  ExpectIdle();
  EXPECT_THROW(ConnectTo(port_), std::runtime_error);
}

TEST_F(SocketListen, IsOverWhenItIsClosedOnTheWay) {
  PlainListener free;
  free.Close();
  const int before = test::OpenDescriptors();
  for (const SocketCall kind : {SocketCall::kSocket, SocketCall::kBind, SocketCall::kListen}) {
    SocketFailure failure;
    failure.RunBefore(kind, 1, [&] { socket_.Close(); });
    EXPECT_EQ(socket_.Listen(free.PortText()), 0);
    EXPECT_EQ(Words(), "Operation Canceled");
    ExpectIdle();
  }
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(SocketListen, AcceptsNobodyWhereItDoesNotListen) {
  EXPECT_EQ(socket_.Accept(), 0);
  EXPECT_EQ(Words(), "Accept(): Not listening");
  socket_.Listening = 1;
  EXPECT_EQ(socket_.Accept(), 0);
  EXPECT_EQ(Words(), "Accept(): No socket opened for listening");
}

TEST_F(SocketListen, ClosesAllAndTellsWhereAcceptingFails) {
  Listen();
  const int listener = socket_.ListenSocket;
  const Descriptor before = ConnectTo(port_);
  ASSERT_EQ(socket_.Accept(), 1);
  const Descriptor peer = ConnectTo(port_);
  SocketFailure failure;
  failure.FailCall(SocketCall::kAccept, 1, EPERM);
  EXPECT_EQ(socket_.Accept(), 0);
  EXPECT_EQ(Words(), "Accept(): wsaerr=1 msg=[Operation not permitted]\n");
  ExpectIdle();
  EXPECT_FALSE(test::IsOpen(listener));
  EXPECT_TRUE(before.Receive(1).empty());
}

TEST_F(SocketListen, TellsOfAWaitThatFails) {
  Listen();
  SocketFailure failure;
  failure.FailCall(SocketCall::kWait, 1, EIO);
  EXPECT_EQ(socket_.Accept(), 0);
  EXPECT_EQ(Words(), "Accept(): wsaerr=5 msg=[Input/output error]\n");
  ExpectIdle();
}

TEST_F(SocketListen, PausesWithoutDescriptorsAndGoesOn) {
  for (const int error : {EMFILE, ENFILE, ENOMEM, ENOBUFS}) {
    Listen();
    const Descriptor peer = ConnectTo(port_);
    SocketFailure failure;
    failure.FailCalls(SocketCall::kAccept, 1, 3, error);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(socket_.Accept(), 1) << error;
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(150));
    EXPECT_EQ(failure.Calls(SocketCall::kAccept), 4);
    socket_.Close();
  }
}

TEST_F(SocketListen, GoesOnAfterAPeerThatHasGoneAgain) {
  Listen();
  const Descriptor peer = ConnectTo(port_);
  for (const int error :
       {ECONNABORTED, EPROTO, EHOSTDOWN, EHOSTUNREACH, ENETDOWN, ENETUNREACH, EAGAIN}) {
    SocketFailure failure;
    failure.FailCall(SocketCall::kAccept, 1, error);
    const Descriptor next = ConnectTo(port_);
    EXPECT_EQ(socket_.Accept(), 1) << error;
  }
}

TEST_F(SocketListen, EndsBehindThePauseInWhichItIsClosed) {
  Listen();
  const Descriptor peer = ConnectTo(port_);
  SocketFailure failure;
  failure.FailCalls(SocketCall::kAccept, 1, 1 << 30, EMFILE);
  int callsBefore = 0;
  test::MomentOfClose moment;
  std::thread closing([&] {
    while (failure.Calls(SocketCall::kAccept) < 2) std::this_thread::yield();
    moment.Note();
    socket_.Close();
    callsBefore = failure.Calls(SocketCall::kAccept);
  });
  EXPECT_EQ(socket_.Accept(), 0);
  const auto end = std::chrono::steady_clock::now();
  const int calls = failure.Calls(SocketCall::kAccept);
  closing.join();
  EXPECT_LT(moment.SecondsUntil(end), test::kEndUnderLoad);
  EXPECT_LE(calls, callsBefore + 1) << "it looks once more and not again and again";
  EXPECT_EQ(Words(), "Accept(): wsaerr=24 msg=[Too many open files]\n");
  ExpectIdle();
}

TEST_F(SocketListen, KeepsNoPeerThatComesAsItIsClosed) {
  Listen();
  Descriptor peer = ConnectTo(port_);
  const int before = test::OpenDescriptors();
  SocketFailure failure;
  // Small writes are switched on when the peer has been taken.
  failure.RunBefore(SocketCall::kOption, 1, [&] { socket_.Close(); });
  EXPECT_EQ(socket_.Accept(), 0);
  ExpectIdle();
  EXPECT_TRUE(peer.Receive(1).empty());
  EXPECT_EQ(test::OpenDescriptors(), before - 1);
}

TEST_F(SocketListen, BorrowsAListenerAndGivesItBack) {
  const PlainListener listener;
  {
    Socket socket;
    socket.AdoptListener(listener.Number());
    EXPECT_EQ(socket.Listening, 1);
    const Descriptor peer = ConnectTo(listener.Port());
    EXPECT_EQ(socket.Accept(), 1);
    EXPECT_EQ(socket.GiveListener(), listener.Number());
    EXPECT_EQ(socket.Listening, 0);
    EXPECT_EQ(socket.ListenSocket, 0);
    EXPECT_EQ(socket.Connected, 1);
  }
  EXPECT_TRUE(test::IsOpen(listener.Number()));
  Socket socket;
  socket.AdoptListener(0);
  EXPECT_EQ(socket.Listening, 0);
}

TEST_F(SocketListen, ClosesItsOwnListenerWhenItBorrowsAnother) {
  const PlainListener listener;
  Listen();
  const int own = socket_.ListenSocket;
  socket_.AdoptListener(listener.Number());
  EXPECT_FALSE(test::IsOpen(own));
  socket_.AdoptListener(listener.Number());
  EXPECT_EQ(socket_.GiveListener(), listener.Number());
}

}  // namespace
}  // namespace tessaret
