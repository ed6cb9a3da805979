// Close from another thread, at any moment of what the socket does.
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "net/socket.h"
#include "support/build_kind.h"
#include "support/plain_peer.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::ConnectedPair;
using test::Descriptor;
using test::PlainListener;

constexpr int kTurns = test::kInstrumented ? 30 : 200;

/// Closes a socket from another thread, a moment after this begins.
class ClosedSoon {
 public:
  explicit ClosedSoon(Socket& socket)
      : thread_([&socket, moment = std::uniform_int_distribution<int>(0, 400)(dice_)] {
          std::this_thread::sleep_for(std::chrono::microseconds(moment));
          EXPECT_EQ(socket.Close(), 1);
        }) {}
  ClosedSoon(const ClosedSoon&) = delete;
  ClosedSoon& operator=(const ClosedSoon&) = delete;
  ~ClosedSoon() { thread_.join(); }

 private:
  static inline std::mt19937 dice_{20260722};
  std::thread thread_;
};

/// Every turn with a new socket, whose call would last for minutes; afterwards nothing of it is open.
void InTurns(const std::function<void(Socket&)>& turn) {
  testing::internal::CaptureStderr();
  const int before = test::OpenDescriptors();
  for (int count = 0; count < kTurns; ++count) {
    Socket socket;
    turn(socket);
    EXPECT_EQ(socket.Connected, 0);
    EXPECT_EQ(socket.Listening, 0);
    EXPECT_EQ(socket.DataSocket, 0);
    EXPECT_EQ(socket.ListenSocket, 0);
    EXPECT_EQ(socket.CancelRead, 0);
  }
  EXPECT_EQ(test::OpenDescriptors(), before);
  testing::internal::GetCapturedStderr();
}

TEST(CloseByAnotherThread, EndsAConnectInProgress) {
  const test::SilentListener listener;
  InTurns([&](Socket& socket) {
    // A Close before the call has nothing to end.
    std::atomic<bool> isOver = false;
    std::thread closing([&] {
      while (!isOver) socket.Close();
    });
    EXPECT_EQ(socket.Open("127.0.0.1", listener.PortText()), 0);
    EXPECT_STREQ(socket.GetLastError(), "Operation Canceled");
    isOver = true;
    closing.join();
  });
}

TEST(CloseByAnotherThread, LeavesNothingOfAConnectThatSucceedsMeanwhile) {
  const PlainListener listener(128);
  InTurns([&](Socket& socket) {
    bool isOpen = false;
    {
      const ClosedSoon closed(socket);
      isOpen = socket.Open("127.0.0.1", listener.PortText()) == 1;
      if (!isOpen) {
        EXPECT_STREQ(socket.GetLastError(), "Operation Canceled");
      }
    }
    // It may have come before the connect began.
    if (isOpen) socket.Close();
    ::fcntl(listener.Number(), F_SETFL, O_NONBLOCK);
    const int peer = ::accept(listener.Number(), nullptr, nullptr);
    if (peer != -1) ::close(peer);
  });
}

TEST(CloseByAnotherThread, EndsARead) {
  InTurns([](Socket& socket) {
    auto ends = ConnectedPair();
    socket.Adopt(ends[1].Release());
    const ClosedSoon closed(socket);
    char byte = 0;
    EXPECT_LE(socket.Read(&byte, 1), 0);
  });
}

TEST(CloseByAnotherThread, EndsASendThatNobodyTakes) {
  const Bytes bytes(1 << 20);
  InTurns([&](Socket& socket) {
    auto ends = ConnectedPair();
    socket.Adopt(ends[1].Release());
    const ClosedSoon closed(socket);
    EXPECT_EQ(socket.Send(bytes.data(), 1 << 20), 0);
  });
}

TEST(CloseByAnotherThread, EndsAnAccept) {
  InTurns([](Socket& socket) {
    PlainListener listener;
    socket.AdoptListener(listener.Release());
    const ClosedSoon closed(socket);
    EXPECT_EQ(socket.Accept(), 0);
  });
}

TEST(CloseByAnotherThread, LeavesNothingOfAPeerThatComesMeanwhile) {
  InTurns([](Socket& socket) {
    PlainListener listener;
    const std::uint16_t port = listener.Port();
    socket.AdoptListener(listener.Release());
    const Descriptor peer = test::ConnectTo(port);
    const ClosedSoon closed(socket);
    if (socket.Accept() == 1) {
      char byte = 0;
      EXPECT_LE(socket.Read(&byte, 1), 0);
    }
  });
}

TEST(CloseByAnotherThread, MayComeFromManyAtOnce) {
  InTurns([](Socket& socket) {
    auto ends = ConnectedPair();
    socket.Adopt(ends[1].Release());
    const ClosedSoon first(socket);
    const ClosedSoon second(socket);
    char byte = 0;
    EXPECT_LE(socket.Read(&byte, 1), 0);
  });
}

TEST(SocketsOfManyThreads, AreCounted) {
  const int before = Socket::InstanceCount();
  std::vector<std::thread> threads;
  for (int count = 0; count < 8; ++count) {
    threads.emplace_back([] {
      for (int turn = 0; turn < 1000; ++turn) const Socket socket;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(Socket::InstanceCount(), before);
}

}  // namespace
}  // namespace tessaret
