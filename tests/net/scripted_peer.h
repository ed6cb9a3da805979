// The other end of an association, in the hands of a test: it writes bytes and looks at those that came.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "net/pdu_bytes.h"
#include "net/pdu_service.h"

namespace tessaret::test {

/// Beyond all that a test waits for; reached only where one fails.
inline constexpr int kFarTooLong = 20000;  // milliseconds

class Peer {
 public:
  Peer() = default;
  explicit Peer(int descriptor) : descriptor_(descriptor) {}
  Peer(Peer&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  Peer& operator=(Peer&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~Peer() { Close(); }

  [[nodiscard]] int Descriptor() const { return descriptor_; }

  void Send(const Bytes& bytes) const {
    for (std::size_t at = 0; at < bytes.size();) {
      const ssize_t sent = ::send(descriptor_, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
      if (sent <= 0) throw std::runtime_error("the library has closed its end");
      at += static_cast<std::size_t>(sent);
    }
  }

  /// No more will come from here.
  void EndSending() const { ::shutdown(descriptor_, SHUT_WR); }

  /// Sends, and ends sending: the script of a peer that does not look at answers.
  void SendAll(const Bytes& bytes) const {
    Send(bytes);
    EndSending();
  }

  /// Waits for that many bytes; fewer where the library closes first.
  [[nodiscard]] Bytes Receive(std::size_t count) const {
    Bytes bytes;
    Bytes some(std::min<std::size_t>(count, 1 << 16));
    while (bytes.size() < count) {
      pollfd ready{.fd = descriptor_, .events = POLLIN, .revents = 0};
      if (::poll(&ready, 1, kFarTooLong) <= 0) throw std::runtime_error("nothing comes");
      const std::size_t wanted = std::min(some.size(), count - bytes.size());
      const ssize_t received = ::recv(descriptor_, some.data(), wanted, 0);
      if (received <= 0) break;
      bytes.insert(bytes.end(), some.begin(), some.begin() + received);
    }
    return bytes;
  }

  /// Waits for one PDU; fewer bytes where the library closes first.
  [[nodiscard]] Bytes ReceivePdu() const {
    Bytes pdu = Receive(6);
    if (pdu.size() < 6) return pdu;
    std::size_t length = 0;
    for (std::size_t i = 2; i < 6; ++i) length = length << 8 | pdu[i];
    return Joined({pdu, Receive(length)});
  }

  /// What has come up to now.
  [[nodiscard]] Bytes Received() const {
    Bytes bytes(1 << 20);
    const ssize_t received = ::recv(descriptor_, bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(received > 0 ? static_cast<std::size_t>(received) : 0);
    return bytes;
  }

  /// All that comes until the library closes its end.
  [[nodiscard]] Bytes ReceiveToEnd() const { return Receive(std::size_t{1} << 24); }

  /// The descriptor is the caller's from here on.
  int Give() { return std::exchange(descriptor_, -1); }
  void Close() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
  }

  /// Closes so that the other side is told of a reset, not of an end.
  void Reset() {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(descriptor_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    Close();
  }

 private:
  int descriptor_ = -1;
};

/// A pair of connected sockets: the library's end as a descriptor, and the test's.
struct Connection {
  Connection() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
      throw std::runtime_error("no socket pair");
    }
    const int room = 1 << 20;
    for (const int end : ends) ::setsockopt(end, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    ours = ends[0];
    peer = Peer(ends[1]);
  }
  int ours;
  Peer peer;
};

/// A listening socket on a free port of the loopback interface.
class Listener {
 public:
  explicit Listener(int backlog = 16)
      : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(descriptor_, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(descriptor_, backlog) != 0 ||
        ::getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
      throw std::runtime_error("no listener");
    }
    port_ = std::to_string(ntohs(address.sin_port));
  }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;
  ~Listener() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  [[nodiscard]] const std::string& Port() const { return port_; }
  [[nodiscard]] int Descriptor() const { return descriptor_; }
  /// The descriptor is the caller's from here on.
  int Give() { return std::exchange(descriptor_, -1); }
  [[nodiscard]] Peer Accept() const {
    pollfd ready{.fd = descriptor_, .events = POLLIN, .revents = 0};
    if (::poll(&ready, 1, kFarTooLong) <= 0) throw std::runtime_error("nobody connects");
    return Peer(::accept4(descriptor_, nullptr, nullptr, SOCK_CLOEXEC));
  }

 private:
  int descriptor_;
  std::string port_;
};

/// A port on which nobody listens, of those that the system hands out to nobody.
inline std::string FreePort() {
  static int next = 20000 + ::getpid() % 1000 * 10;
  for (;; ++next) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(next));
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int result = ::bind(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::close(descriptor);
    if (result == 0) return std::to_string(next++);
  }
}

/// Connects to a port of this machine.
inline Peer ConnectTo(const std::string& port) {
  const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port)));
  if (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    ::close(descriptor);
    throw std::runtime_error("cannot connect");
  }
  return Peer(descriptor);
}

/// Takes one connection and follows a script on a thread of its own.
class ScriptedServer {
 public:
  explicit ScriptedServer(std::function<void(Peer&)> script)
      : thread_([this, script = std::move(script)] {
          try {
            Peer peer = listener_.Accept();
            script(peer);
          } catch (const std::exception& failure) {
            failure_ = failure.what();
          }
        }) {}
  ~ScriptedServer() { Wait(); }
  [[nodiscard]] const std::string& Port() const { return listener_.Port(); }
  /// Waits for the end of the script. What went wrong in it, or nothing.
  std::string Wait() {
    if (thread_.joinable()) thread_.join();
    return failure_;
  }

 private:
  Listener listener_;
  std::string failure_;
  std::thread thread_;
};

/// A context as if it had been negotiated.
struct Agreed {
  std::uint8_t id;
  std::string_view abstractSyntax;
  std::string_view transferSyntax;
};

/// An association that stands, between a PDU_Service and the test.
struct Association {
  explicit Association(const std::vector<Agreed>& contexts) {
    for (const Agreed& agreed : contexts) {
      PresentationContextAccept context;
      context.PresentationContextID = agreed.id;
      context.Result = 0;
      context.AbstractSyntax.Set(agreed.abstractSyntax);
      context.TransferSyntax.Set(agreed.transferSyntax);
      pdu.AcceptedContexts.push_back(context);
      pdu.AAssociateAC.PresentationContexts.push_back(context);
    }
    Connection connection;
    pdu.Link.Adopt(connection.ours);
    peer = std::move(connection.peer);
  }
  ~Association() { pdu.Link.Close(); }

  PDU_Service pdu;
  Peer peer;
};

/// The words of the last failure, or nothing.
inline std::string Words(const PDU_Service& pdu) {
  return pdu.GetLastError() == nullptr ? "" : pdu.GetLastError();
}

}  // namespace tessaret::test
