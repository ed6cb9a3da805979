// Every call by which the library touches the network: TCP over IPv4. Each is the system's own, repeated when a signal broke it,
// with a failure told as the error number; and each can be made to fail by a test. Descriptors are closed on exec, and a write to a
// peer that has closed is an error and never a signal.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/file_calls.h"
#include "platform/wake_pipe.h"

namespace tessaret {

enum class SocketCall {
  kSocket,
  kConnect,
  kBind,
  kListen,
  kAccept,
  kSend,
  kReceive,
  kWait,
  kOption,  // modes too
  kPair,
};

/// Consulted before every call, as FileCallHook is. For kSend and kReceive it may lower `count`.
using SocketCallHook = int (*)(SocketCall call, std::size_t& count);

/// Installs `hook`, or none with null. For tests; not to be changed while another thread works with sockets.
void SetSocketCallHook(SocketCallHook hook);

/// What a call answered: `value` when `error` is 0, otherwise the system's error number.
using SocketResult = FileResult;

/// A new TCP socket; value is the descriptor, which the caller closes by CloseFile.
SocketResult OpenTcpSocket();
/// Whether calls on the socket wait; for connecting only, since no other call here waits by itself.
SocketResult SetBlocking(int descriptor, bool blocking);
SocketResult ConnectSocket(int descriptor, const sockaddr_in& address);
SocketResult BindSocket(int descriptor, const sockaddr_in& address);
SocketResult ListenOnSocket(int descriptor, int backlog);
/// The next peer of a listening socket, its address in `address`. EAGAIN where none waits, or a wait for one is due.
SocketResult AcceptPeer(int descriptor, sockaddr_in& address);
SocketResult SetReusable(int descriptor);
/// Closing does not wait for what is still to be sent; the time is stored for whoever switches waiting on.
SocketResult SetNoLinger(int descriptor, int seconds);
/// Small writes go at once, not when the peer has acknowledged the one before.
SocketResult SetNoDelay(int descriptor);
/// What has come is acknowledged now, not with what is sent next: a peer whose small writes wait for that would wait for 40 milliseconds
/// each. Fails on what is no TCP socket.
SocketResult AcknowledgeAtOnce(int descriptor);
/// Ends both directions, which wakes every thread that waits on the socket. The descriptor stays.
void ShutDownSocket(int descriptor) noexcept;

/// Sends up to `count` bytes without waiting; EAGAIN where the system takes none now.
SocketResult SendSome(int descriptor, const void* data, std::size_t count);
/// Receives up to `count` bytes without waiting; value 0 is the end, EAGAIN means that none has come.
SocketResult ReceiveSome(int descriptor, void* data, std::size_t count);

/// What to wait for on one descriptor.
struct Waiting {
  int descriptor;
  bool forWriting;
};

/// Waits until at least one of two is ready or the deadline passes; value is how many are, 0 at the deadline. With a second of null
/// there is one. An error on a descriptor makes it ready: the next call on it tells.
SocketResult WaitForSockets(const Waiting& first, const Waiting* second, const Deadline& deadline);

/// Two sockets that are connected with each other, both non-blocking, for the caller to close.
SocketResult OpenSocketPair(std::array<int, 2>& ends);

}  // namespace tessaret
