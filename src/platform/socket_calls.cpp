#include "platform/socket_calls.h"

#include <fcntl.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "platform/repeated_call.h"

namespace tessaret {
namespace {

SocketCallHook socketCallHook = nullptr;

bool CanBeCancelled(SocketCall call) {
  switch (call) {
    case SocketCall::kConnect:
    case SocketCall::kAccept:
    case SocketCall::kSend:
    case SocketCall::kReceive:
    case SocketCall::kWait:
      return true;
    case SocketCall::kSocket:
    case SocketCall::kBind:
    case SocketCall::kListen:
    case SocketCall::kOption:
    case SocketCall::kPair:
      break;
  }
  return false;
}

/// The error with which a call is to fail that was not made yet, or 0.
int Refused(SocketCall call, std::size_t& count) {
  if (AreFileCallsCancelled() && CanBeCancelled(call)) return ECANCELED;
  return socketCallHook == nullptr ? 0 : socketCallHook(call, count);
}

template <class Call>
SocketResult Run(SocketCall kind, std::size_t& count, Call call) {
  return RepeatedCall([&] { return Refused(kind, count); }, call);
}

template <class Call>
SocketResult Run(SocketCall kind, Call call) {
  std::size_t unused = 0;
  return Run(kind, unused, call);
}

/// A socket that is not descriptor 0, which means none to those above; it comes where a host has closed its standard input.
SocketResult NotZero(SocketResult opened) {
  if (!opened.Ok() || opened.value != 0) return opened;
  const int moved = ::fcntl(0, F_DUPFD_CLOEXEC, 3);
  const int error = errno;
  ::close(0);
  return moved == -1 ? SocketResult{-1, error} : SocketResult{moved, 0};
}

const sockaddr* Bare(const sockaddr_in& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

sockaddr* Bare(sockaddr_in& address) { return reinterpret_cast<sockaddr*>(&address); }

template <class Value>
SocketResult SetOption(int descriptor, int level, int option, const Value& value) {
  return Run(SocketCall::kOption,
             [&] { return ::setsockopt(descriptor, level, option, &value, sizeof value); });
}

}  // namespace

void SetSocketCallHook(SocketCallHook hook) { socketCallHook = hook; }

SocketResult OpenTcpSocket() {
  return NotZero(Run(SocketCall::kSocket,
                     [] { return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP); }));
}

SocketResult SetBlocking(int descriptor, bool blocking) {
  return Run(SocketCall::kOption, [&] {
    int nonBlocking = blocking ? 0 : 1;
    return ::ioctl(descriptor, FIONBIO, &nonBlocking);
  });
}

SocketResult ConnectSocket(int descriptor, const sockaddr_in& address) {
  // A connect that a signal broke goes on by itself, and is not to be asked for again.
  std::size_t unused = 0;
  const int refused = Refused(SocketCall::kConnect, unused);
  if (refused != 0) return {-1, refused == EINTR ? EINPROGRESS : refused};
  if (::connect(descriptor, Bare(address), sizeof address) == 0) return {};
  return {-1, errno == EINTR ? EINPROGRESS : errno};
}

SocketResult BindSocket(int descriptor, const sockaddr_in& address) {
  return Run(SocketCall::kBind, [&] { return ::bind(descriptor, Bare(address), sizeof address); });
}

SocketResult ListenOnSocket(int descriptor, int backlog) {
  return Run(SocketCall::kListen, [&] { return ::listen(descriptor, backlog); });
}

SocketResult AcceptPeer(int descriptor, sockaddr_in& address) {
  return NotZero(Run(SocketCall::kAccept, [&] {
    socklen_t size = sizeof address;
    return ::accept4(descriptor, Bare(address), &size, SOCK_CLOEXEC);
  }));
}

SocketResult SetReusable(int descriptor) {
  return SetOption(descriptor, SOL_SOCKET, SO_REUSEADDR, int{1});
}

SocketResult SetNoLinger(int descriptor, int seconds) {
  return SetOption(descriptor, SOL_SOCKET, SO_LINGER, linger{.l_onoff = 0, .l_linger = seconds});
}

SocketResult SetNoDelay(int descriptor) {
  return SetOption(descriptor, IPPROTO_TCP, TCP_NODELAY, int{1});
}

SocketResult AcknowledgeAtOnce(int descriptor) {
  // An odd number would have all that comes later acknowledged by itself, too, which costs near peers half of their speed.
  return SetOption(descriptor, IPPROTO_TCP, TCP_QUICKACK, int{2});
}

void ShutDownSocket(int descriptor) noexcept { ::shutdown(descriptor, SHUT_RDWR); }

SocketResult SendSome(int descriptor, const void* data, std::size_t count) {
  return Run(SocketCall::kSend, count,
             [&] { return ::send(descriptor, data, count, MSG_NOSIGNAL | MSG_DONTWAIT); });
}

SocketResult ReceiveSome(int descriptor, void* data, std::size_t count) {
  return Run(SocketCall::kReceive, count,
             [&] { return ::recv(descriptor, data, count, MSG_DONTWAIT); });
}

SocketResult WaitForSockets(const Waiting& first, const Waiting* second, const Deadline& deadline) {
  const auto asked = [](const Waiting& waiting) {
    return pollfd{.fd = waiting.descriptor,
                  .events = static_cast<short>(waiting.forWriting ? POLLOUT : POLLIN),
                  .revents = 0};
  };
  std::array<pollfd, 2> ready{asked(first), second == nullptr ? pollfd{-1, 0, 0} : asked(*second)};
  for (;;) {
    const int wait = MillisecondsTo(deadline);
    // A signal must not lengthen the wait, so what is left of it is computed anew.
    const SocketResult result = Run(SocketCall::kWait, [&] {
      return ::poll(ready.data(), second == nullptr ? 1 : 2, MillisecondsTo(deadline));
    });
    if (!result.Ok()) return result;
    // A wait longer than the system counts ends early.
    if (result.value == 0 && wait != 0 && MillisecondsTo(deadline) != 0) continue;
    return result;
  }
}

SocketResult OpenSocketPair(std::array<int, 2>& ends) {
  SocketResult result = Run(SocketCall::kPair, [&] {
    return ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data());
  });
  if (!result.Ok()) return result;
  // The system hands out the lowest number first.
  const SocketResult first = NotZero({ends[0], 0});
  if (!first.Ok()) ::close(ends[1]);
  ends[0] = static_cast<int>(first.value);
  return first.Ok() ? SocketResult{} : first;
}

}  // namespace tessaret
