// Every call of the system fails once, in each of several ways.
#include <cerrno>
#include <functional>

#include <gtest/gtest.h>

#include "net/socket.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"

namespace tessaret {
namespace {

using test::Descriptor;
using test::PlainListener;
using test::SocketFailure;

constexpr SocketCall kAllCalls[] = {SocketCall::kSocket,  SocketCall::kConnect, SocketCall::kBind,
                                    SocketCall::kListen,  SocketCall::kAccept,  SocketCall::kSend,
                                    SocketCall::kReceive, SocketCall::kWait,    SocketCall::kOption,
                                    SocketCall::kPair};
constexpr int kErrors[] = {EIO, ENOSPC, EINTR, EMFILE, EACCES};

/// Runs `scenario` with each call failing in each way. It answers whether it came through; if not there are words, and nothing stays
/// open either way.
void FailEveryCall(const std::function<bool(Socket&)>& scenario) {
  for (const SocketCall kind : kAllCalls) {
    for (const int error : kErrors) {
      // Of a connect that a signal broke the system makes the rest, which here nobody would.
      if (kind == SocketCall::kConnect && error == EINTR) continue;
      for (int nth = 1; nth <= 4; ++nth) {
        const int before = test::OpenDescriptors();
        {
          Socket socket;
          SocketFailure failure;
          failure.FailCall(kind, nth, error);
          const bool came = scenario(socket);
          EXPECT_TRUE(came || error != EINTR);
          EXPECT_TRUE(came || socket.GetLastError()[0] != '\0')
              << static_cast<int>(kind) << " " << error << " " << nth;
        }
        EXPECT_EQ(test::OpenDescriptors(), before);
      }
    }
  }
}

/// Sends a byte and receives one. A receive that fails leaves no words, as one at the end of the stream.
bool Exchanges(Socket& socket, const Descriptor& peer) {
  peer.Send({7});
  char byte = 0;
  if (socket.Send("a", 1) == 0) return false;
  EXPECT_EQ(peer.Receive(1), test::BytesOf("a"));
  socket.HasInput();
  const std::int64_t got = socket.Read(&byte, 1);
  EXPECT_TRUE(got == 1 || got == -1);
  return true;
}

TEST(AnySocketCallFailing, LeavesWordsOrAConnection) {
  testing::internal::CaptureStderr();
  FailEveryCall([](Socket& socket) {
    const PlainListener listener;
    if (socket.Open("127.0.0.1", listener.PortText()) == 0) {
      EXPECT_EQ(socket.Connected, 0);
      return false;
    }
    const Descriptor peer = listener.Accept();
    return Exchanges(socket, peer);
  });
  testing::internal::GetCapturedStderr();
}

TEST(AnySocketCallFailing, LeavesWordsOrAPeer) {
  FailEveryCall([](Socket& socket) {
    PlainListener free;
    free.Close();
    if (socket.Listen(free.PortText()) == 0) {
      EXPECT_EQ(socket.ListenSocket, 0);
      return false;
    }
    const Descriptor peer = test::ConnectTo(free.Port());
    if (socket.Accept() == 0) {
      EXPECT_EQ(socket.Listening, 0);
      return false;
    }
    return Exchanges(socket, peer);
  });
}

}  // namespace
}  // namespace tessaret
