// What a socket does and says where no memory is left.
#include <cerrno>
#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "net/socket.h"
#include "platform/host_lookup.h"
#include "support/allocation_failure.h"
#include "support/plain_peer.h"
#include "support/socket_failure.h"

namespace tessaret {
namespace {

using test::ConnectedPair;
using test::Descriptor;
using test::SocketFailure;

const std::string kAddress = "127.0.0.1";
const std::string kPort = "104";

class SocketWithoutMemory : public testing::Test {
 protected:
  SocketWithoutMemory() { Connect(); }
  ~SocketWithoutMemory() override { SetHostLookup(nullptr); }

  void Connect() {
    auto ends = ConnectedPair();
    peer_ = std::move(ends[0]);
    socket_.emplace();
    socket_->TimeoutSecs = 0;
    socket_->Adopt(ends[1].Release());
  }
  /// Whatever allocation fails, `call` fails as ever, and leaves these words.
  void Expect(const std::function<std::int64_t(Socket&)>& call, std::int64_t answer,
              const std::string& words) {
    const int before = test::OpenDescriptors();
    std::int64_t answered = -2;
    bool isThrown = false;
    test::FailEveryAllocation(
        [&] {
          try {
            answered = call(*socket_);
          } catch (...) {
            isThrown = true;
          }
        },
        [&] {
          EXPECT_FALSE(isThrown);
          EXPECT_EQ(answered, answer);
          EXPECT_EQ(socket_->GetLastError(), words);
          peer_.Close();
          Connect();
          EXPECT_EQ(test::OpenDescriptors(), before);
          answered = -2;
          isThrown = false;
        });
  }

  std::optional<Socket> socket_;
  Descriptor peer_;
};

TEST_F(SocketWithoutMemory, TellsOfReadsAndSendsThatFail) {
  char byte = 0;
  Expect([&](Socket& socket) { return socket.Read(&byte, 1); }, -1,
         "Timeout error reading from socket");
  {
    SocketFailure failure;
    failure.FailCalls(SocketCall::kWait, 1, 1 << 30, EIO);
    Expect([&](Socket& socket) { return socket.Read(&byte, 1); }, -1, "Read socket error: -1");
  }
  SocketFailure failure;
  failure.FailCalls(SocketCall::kSend, 1, 1 << 30, EPIPE);
  Expect([&](Socket& socket) { return socket.Send("ab", 2); }, 0,
         "Send(2d): Error binary send wsaerr=32 msg=Broken pipe");
}

TEST_F(SocketWithoutMemory, TellsOfConnectsThatFail) {
  const std::string service = "no-such-service";
  Expect([&](Socket& socket) { return socket.Open(kAddress, service); }, 0,
         "Open(127.0.0.1,no-such-service): could not resolve port[no-such-service]");
  {
    SocketFailure failure;
    failure.FailCalls(SocketCall::kConnect, 1, 1 << 30, ECONNREFUSED);
    Expect([&](Socket& socket) { return socket.Open(kAddress, kPort); }, 0,
           "Open(127.0.0.1,104): Error on connect wsaerr=111 msg=Connection refused");
  }
  SocketFailure failure;
  failure.FailCalls(SocketCall::kSocket, 1, 1 << 30, EMFILE);
  Expect([&](Socket& socket) { return socket.Open(kAddress, kPort); }, 0,
         "Open(127.0.0.1,104): could not create sopcket wsaerr=24 msg=Too many open files");
}

TEST_F(SocketWithoutMemory, LooksNamesUpWhereItIs) {
  SetHostLookup([](const std::string&) { return std::optional(in_addr{htonl(0x0a010203)}); });
  const std::string name = "a-name-that-needs-memory-of-its-own";
  SocketFailure failure;
  failure.FailCalls(SocketCall::kConnect, 1, 1 << 30, ECONNREFUSED);
  Expect(
      [&](Socket& socket) {
        socket.TimeoutSecs = 300;
        const int answer = socket.Open(name, kPort);
        EXPECT_EQ(socket.Address.sin_addr.s_addr, htonl(0x0a010203));
        return answer;
      },
      0, "Open(" + name + ",104): Error on connect wsaerr=111 msg=Connection refused");
}

TEST_F(SocketWithoutMemory, TellsOfListeningThatFails) {
  const test::PlainListener taken;
  const std::string port = taken.PortText();
  Expect([&](Socket& socket) { return socket.Listen(port); }, 0,
         "bind(): wsaerr=98 msg=[Address already in use]\n");
  const std::string service = "no-such-service";
  Expect([&](Socket& socket) { return socket.Listen(service); }, 0,
         "Error getservbyname(no-such-service, NULL)");
  Expect([&](Socket& socket) { return socket.Accept(); }, 0, "Accept(): Not listening");
  SocketFailure failure;
  failure.FailCalls(SocketCall::kAccept, 1, 1 << 30, EPERM);
  const Descriptor peer = test::ConnectTo(taken.Port());
  Expect(
      [&](Socket& socket) {
        socket.AdoptListener(::dup(taken.Number()));
        return socket.Accept();
      },
      0, "Accept(): wsaerr=1 msg=[Operation not permitted]\n");
}

}  // namespace
}  // namespace tessaret
