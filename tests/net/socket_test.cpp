// Sockets that are connected: sending, receiving, closing, and what they are before that.
#include "net/socket.h"

#include <netinet/tcp.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "core/trace.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"
#include "support/temp_folder.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::ConnectedPair;
using test::Descriptor;
using test::Pattern;
using test::SocketFailure;

/// A socket with its peer.
class ConnectedSocket : public testing::Test {
 protected:
  ConnectedSocket() { Connect(ConnectedPair()); }

  void Connect(std::array<Descriptor, 2> ends) {
    peer_ = std::move(ends[0]);
    socket_.Adopt(ends[1].Release());
  }
  /// Over TCP, which can be reset.
  void ConnectByTcp() {
    const test::PlainListener listener;
    Descriptor far = test::ConnectTo(listener.Port());
    Connect({std::move(far), listener.Accept()});
  }
  std::int64_t Read(std::uint32_t most) {
    received_.assign(most, 0);
    const std::int64_t got = socket_.Read(received_.data(), most);
    received_.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return got;
  }
  std::string Words() const { return socket_.GetLastError(); }

  Socket socket_;
  Descriptor peer_;
  Bytes received_;
};

TEST(NewSocket, IsIdleWithATimeoutOfFiveMinutes) {
  const Socket socket;
  EXPECT_EQ(socket.TimeoutSecs, 300);
  EXPECT_EQ(socket.Error, 0);
  EXPECT_EQ(socket.Connected, 0);
  EXPECT_EQ(socket.Listening, 0);
  EXPECT_EQ(socket.DataSocket, 0);
  EXPECT_EQ(socket.ListenSocket, 0);
  EXPECT_EQ(socket.CancelRead, 0);
  EXPECT_EQ(socket.CancelWrite, 0);
  EXPECT_STREQ(socket.GetLastError(), "");
  EXPECT_EQ(socket.ErrorText.size(), 256u);
}

TEST(NewSocket, IsCountedUntilItGoes) {
  const int before = Socket::InstanceCount();
  {
    const Socket first;
    {
      const Socket second;
      EXPECT_EQ(Socket::InstanceCount(), before + 2);
    }
    EXPECT_EQ(Socket::InstanceCount(), before + 1);
  }
  EXPECT_EQ(Socket::InstanceCount(), before);
}

TEST(NewSocket, SwitchesItsTraceOnWhereTheEnvironmentSaysSo) {
  SetDumpFlag(kDumpSocket, false);
  ::unsetenv("DCM_DUMP_SOCKET");
  { const Socket socket; }
  EXPECT_FALSE(IsDumping(kDumpSocket));
  ::setenv("DCM_DUMP_SOCKET", "", 1);
  { const Socket socket; }
  EXPECT_TRUE(IsDumping(kDumpSocket));
  ::unsetenv("DCM_DUMP_SOCKET");
  SetDumpFlag(kDumpSocket, false);
}

TEST(NewSocket, NeitherSendsNorReceives) {
  Socket socket;
  char byte = 0;
  EXPECT_EQ(socket.Send(&byte, 1), 0);
  EXPECT_EQ(socket.Read(&byte, 1), 0);
  EXPECT_STREQ(socket.GetLastError(), "");
  EXPECT_EQ(socket.Error, 0);
  EXPECT_FALSE(socket.HasInput());
}

TEST_F(ConnectedSocket, ReceivesWhatHasComeUpToTheLengthAskedFor) {
  peer_.Send(BytesOf("abcdef"));
  EXPECT_EQ(Read(4), 4);
  EXPECT_EQ(received_, BytesOf("abcd"));
  EXPECT_EQ(Read(100), 2);
  EXPECT_EQ(received_, BytesOf("ef"));
}

TEST_F(ConnectedSocket, GivesUpWhereThePeerSendsNothing) {
  socket_.TimeoutSecs = 0;
  EXPECT_EQ(Read(1), -1);
  EXPECT_EQ(Words(), "Timeout error reading from socket");
  EXPECT_EQ(socket_.Error, 1);
  EXPECT_EQ(socket_.Connected, 1);
}

TEST_F(ConnectedSocket, WaitsForAllOfItsTimeout) {
  socket_.TimeoutSecs = 1;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(Read(1), -1);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(ConnectedSocket, TakesWhatHasComeWithATimeoutOfZero) {
  socket_.TimeoutSecs = 0;
  peer_.Send({7});
  EXPECT_EQ(Read(1), 1);
}

TEST_F(ConnectedSocket, ClearsTheErrorWithTheNextBytes) {
  socket_.Error = 1;
  peer_.Send({7});
  EXPECT_EQ(Read(1), 1);
  EXPECT_EQ(socket_.Error, 0);
}

TEST_F(ConnectedSocket, TellsTheEndByTheAnswerAlone) {
  socket_.TimeoutSecs = 0;
  ASSERT_EQ(Read(1), -1);
  socket_.Error = 5;
  peer_.Close();
  EXPECT_EQ(Read(1), -1);
  EXPECT_EQ(Words(), "Timeout error reading from socket");
  EXPECT_EQ(socket_.Error, 5);
}

TEST_F(ConnectedSocket, ClearsTheErrorWhereThePeerHasReset) {
  ConnectByTcp();
  socket_.Error = 5;
  peer_.Reset();
  EXPECT_EQ(Read(1), -1);
  EXPECT_EQ(socket_.Error, 0);
  EXPECT_EQ(Words(), "");
}

TEST_F(ConnectedSocket, AsksOnceMoreBeforeItSleeps) {
  SocketFailure failure;
  failure.RunBefore(SocketCall::kReceive, 2, [&] { peer_.Send(BytesOf("a")); });
  EXPECT_EQ(Read(1), 1);
  EXPECT_EQ(received_[0], 'a');
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 0);
}

TEST_F(ConnectedSocket, SleepsAtOnceForFifteenReadsAfterOneWhereNothingCameSoon) {
  SocketFailure failure;
  const auto sendAtCall = [&](SocketCall kind, int further) {
    failure.RunBefore(kind, failure.Calls(kind) + further, [&] { peer_.Send(BytesOf("a")); });
  };
  sendAtCall(SocketCall::kWait, 1);
  EXPECT_EQ(Read(1), 1);
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 1);
  for (int read = 0; read < 15; ++read) {
    const int receivedBefore = failure.Calls(SocketCall::kReceive);
    sendAtCall(SocketCall::kWait, 1);
    EXPECT_EQ(Read(1), 1);
    EXPECT_EQ(failure.Calls(SocketCall::kReceive) - receivedBefore, 2);
  }
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 16);
  sendAtCall(SocketCall::kReceive, 2);
  EXPECT_EQ(Read(1), 1);
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 16);
}

TEST_F(ConnectedSocket, TellsOfAWaitThatFailed) {
  SocketFailure failure;
  failure.FailCall(SocketCall::kWait, 1, EIO);
  EXPECT_EQ(Read(1), -1);
  EXPECT_EQ(Words(), "Read socket error: -1");
  EXPECT_EQ(socket_.Error, 1);
}

TEST_F(ConnectedSocket, CannotWaitForATimeBelowZero) {
  socket_.TimeoutSecs = -1;
  EXPECT_EQ(Read(1), -1);
  EXPECT_EQ(Words(), "Read socket error: -1");
}

TEST_F(ConnectedSocket, SendsAllBytes) {
  EXPECT_EQ(socket_.Send("abc", 3), 1);
  EXPECT_EQ(peer_.Receive(3), BytesOf("abc"));
  EXPECT_EQ(socket_.Send("", 0), 1);
}

TEST_F(ConnectedSocket, SendsAndReceivesTheSameBytesPieceByPieceAndAmidSignals) {
  // A pair of sockets holds some hundreds of single bytes.
  const Bytes bytes = Pattern(100);
  SocketFailure failure;
  failure.InterruptEveryCall();
  failure.LimitCount(SocketCall::kSend, 1);
  failure.LimitCount(SocketCall::kReceive, 1);
  EXPECT_EQ(socket_.Send(bytes.data(), 100), 1);
  EXPECT_EQ(peer_.Receive(100), bytes);
  EXPECT_EQ(failure.Calls(SocketCall::kSend), 200);
  peer_.Send(bytes);
  Bytes all;
  while (all.size() < bytes.size()) {
    ASSERT_EQ(Read(100), 1);
    all.push_back(received_[0]);
  }
  EXPECT_EQ(all, bytes);
}

TEST_F(ConnectedSocket, WaitsWhileThePeerTakesNothingAndGoesOnThen) {
  // More than a pair of sockets holds. The peer takes all that has come when the sender begins to wait, once.
  const Bytes bytes = Pattern(1 << 20);
  SocketFailure failure;
  Bytes taken;
  failure.RunBefore(SocketCall::kWait, 1, [&] { taken = peer_.ReceiveWhatHasCome(); });
  socket_.TimeoutSecs = 0;
  EXPECT_EQ(socket_.Send(bytes.data(), 1 << 20), 0);
  EXPECT_EQ(failure.Calls(SocketCall::kWait), 2);
  const Bytes more = peer_.ReceiveWhatHasCome();
  taken.insert(taken.end(), more.begin(), more.end());
  EXPECT_GT(more.size(), 0u);
  EXPECT_EQ(taken, Bytes(bytes.begin(), bytes.begin() + static_cast<long>(taken.size())));
}

TEST_F(ConnectedSocket, GivesUpSendingWhereThePeerTakesNothing) {
  socket_.TimeoutSecs = 0;
  const Bytes bytes(4 << 20);
  EXPECT_EQ(socket_.Send(bytes.data(), 4194304), 0);
  EXPECT_EQ(Words(),
            "Send(4194304d): Error binary send wsaerr=110 msg=" + std::string(std::strerror(110)));
}

TEST_F(ConnectedSocket, TellsOfAPeerThatHasClosedByWordsAndNoSignal) {
  peer_.Close();
  EXPECT_EQ(socket_.Send("abcde", 5), 0);
  EXPECT_EQ(Words(), "Send(5d): Error binary send wsaerr=32 msg=Broken pipe");
  EXPECT_EQ(socket_.Error, 0);
}

TEST_F(ConnectedSocket, TellsOfEveryErrorOfASend) {
  SocketFailure failure;
  failure.FailCall(SocketCall::kSend, 1, EIO);
  EXPECT_EQ(socket_.Send("abcde", 5), 0);
  EXPECT_EQ(Words(), "Send(5d): Error binary send wsaerr=5 msg=Input/output error");
}

TEST_F(ConnectedSocket, KnowsWhetherSomethingHasCome) {
  EXPECT_FALSE(socket_.HasInput());
  peer_.Send({1});
  EXPECT_TRUE(socket_.HasInput());
  EXPECT_EQ(Read(10), 1);
  EXPECT_FALSE(socket_.HasInput());
  peer_.Close();
  EXPECT_TRUE(socket_.HasInput());
}

TEST_F(ConnectedSocket, ClosesOnceAndAnswersOneEachTime) {
  const int descriptor = socket_.DataSocket;
  socket_.Listening = 1;
  EXPECT_EQ(socket_.Close(), 1);
  EXPECT_FALSE(test::IsOpen(descriptor));
  EXPECT_EQ(socket_.DataSocket, 0);
  EXPECT_EQ(socket_.Connected, 0);
  EXPECT_EQ(socket_.Listening, 0);
  EXPECT_TRUE(peer_.Receive(1).empty());
  // The number is somebody else's by now.
  const auto others = ConnectedPair();
  EXPECT_EQ(socket_.Close(), 1);
  EXPECT_TRUE(test::IsOpen(others[0].Number()) && test::IsOpen(others[1].Number()));
  EXPECT_EQ(Read(1), 0);
  EXPECT_EQ(socket_.Send("a", 1), 0);
}

TEST_F(ConnectedSocket, ClosesWhatIsOpenWhenItTakesAnother) {
  const int first = socket_.DataSocket;
  Descriptor before = std::move(peer_);
  Connect(ConnectedPair());
  EXPECT_TRUE(first == socket_.DataSocket || !test::IsOpen(first));
  EXPECT_TRUE(before.Receive(1).empty());
  peer_.Send({1});
  EXPECT_EQ(Read(1), 1);
}

TEST_F(ConnectedSocket, ClosesWhatIsOpenWhenItTakesNone) {
  for (const int none : {0, -1}) {
    Connect(ConnectedPair());
    socket_.Adopt(none);
    EXPECT_EQ(socket_.Connected, 0);
    EXPECT_EQ(socket_.DataSocket, 0);
    EXPECT_TRUE(peer_.Receive(1).empty());
  }
}

TEST_F(ConnectedSocket, KeepsItsOwnConnectionOpenWhenItTakesThat) {
  socket_.Adopt(socket_.DataSocket);
  EXPECT_EQ(socket_.Connected, 1);
  peer_.Send({1});
  EXPECT_EQ(Read(1), 1);
}

TEST_F(ConnectedSocket, SendsAtOnceOverAnyConnectionThatItTakes) {
  ConnectByTcp();
  EXPECT_EQ(test::OptionOf(socket_.DataSocket, IPPROTO_TCP, TCP_NODELAY), 1);
}

TEST_F(ConnectedSocket, ClosesThePeerAlone) {
  test::PlainListener listener;
  socket_.AdoptListener(listener.Number());
  socket_.ClosePeer();
  EXPECT_EQ(socket_.Connected, 0);
  EXPECT_EQ(socket_.DataSocket, 0);
  EXPECT_TRUE(peer_.Receive(1).empty());
  EXPECT_EQ(socket_.Listening, 1);
  EXPECT_EQ(socket_.GiveListener(), listener.Number());
  EXPECT_TRUE(test::IsOpen(listener.Number()));
}

TEST_F(ConnectedSocket, ClosesWithItsLife) {
  const int before = test::OpenDescriptors();
  auto ends = ConnectedPair();
  {
    Socket socket;
    socket.Adopt(ends[1].Release());
    socket.AdoptListener(test::PlainListener().Release());
  }
  EXPECT_TRUE(ends[0].Receive(1).empty());
  ends[0].Close();
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(ConnectedSocket, TracesItsBytes) {
  const test::TempFolder folder;
  SetDumpFile(folder.File("trace").c_str());
  SetDumpFlag(kDumpSocket, true);
  EXPECT_EQ(socket_.Send("AB", 2), 1);
  peer_.Send(BytesOf("xyz"));
  EXPECT_EQ(Read(10), 3);
  SetDumpFlag(kDumpSocket, false);
  SetDumpFile(nullptr);
  const std::string trace = test::ReadText(folder.File("trace"));
  const std::size_t sent = trace.find("Sending 2 bytes\n");
  const std::size_t received = trace.find("received 3 bytes\n");
  ASSERT_EQ(sent, 0u);
  ASSERT_NE(received, std::string::npos);
  EXPECT_NE(trace.substr(sent, received).find("41 42"), std::string::npos) << trace;
  EXPECT_NE(trace.substr(received).find("78 79 7A"), std::string::npos) << trace;
}

TEST_F(ConnectedSocket, TracesNothingWithoutTheBit) {
  const test::TempFolder folder;
  SetDumpFile(folder.File("trace").c_str());
  EXPECT_EQ(socket_.Send("AB", 2), 1);
  SetDumpFile(nullptr);
  EXPECT_EQ(folder.Listing(), "");
}

}  // namespace
}  // namespace tessaret
