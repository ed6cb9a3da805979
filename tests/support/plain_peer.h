// The other side of a socket under test, over the system's calls alone.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "support/held_resources.h"

namespace tessaret::test {

/// A descriptor that is closed at the end.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {
    if (number < 0) throw std::runtime_error("no socket");
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    Close();
    number_ = other.Release();
    return *this;
  }
  ~Descriptor() { Close(); }

  [[nodiscard]] int Number() const { return number_; }
  int Release() {
    const int number = number_;
    number_ = -1;
    return number;
  }
  void Close() {
    if (number_ != -1) ::close(Release());
  }
  /// Ends the connection so that the other side is told of a reset, not of an end.
  void Reset() {
    const linger at_once{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(number_, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    Close();
  }

  void Send(const Bytes& bytes) const {
    if (::send(number_, bytes.data(), bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(bytes.size())) {
      throw std::runtime_error("cannot send");
    }
  }
  /// `count` bytes, or those before the end.
  [[nodiscard]] Bytes Receive(std::size_t count) const {
    Bytes bytes(count);
    std::size_t got = 0;
    while (got < count) {
      const ssize_t some = ::recv(number_, bytes.data() + got, count - got, 0);
      if (some <= 0) break;
      got += static_cast<std::size_t>(some);
    }
    bytes.resize(got);
    return bytes;
  }
  [[nodiscard]] Bytes ReceiveWhatHasCome() const {
    Bytes bytes;
    Bytes some(1 << 16);
    for (;;) {
      const ssize_t got = ::recv(number_, some.data(), some.size(), MSG_DONTWAIT);
      if (got <= 0) return bytes;
      bytes.insert(bytes.end(), some.begin(), some.begin() + got);
    }
  }

 private:
  int number_ = -1;
};

inline std::array<Descriptor, 2> ConnectedPair() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    throw std::runtime_error("no pair");
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

inline sockaddr_in Loopback(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/// Waits for peers on a port of its own.
class PlainListener {
 public:
  explicit PlainListener(int backlog = 5)
      : descriptor_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    auto* bare = reinterpret_cast<sockaddr*>(&address);
    if (::bind(Number(), bare, size) != 0 || ::listen(Number(), backlog) != 0 ||
        ::getsockname(Number(), bare, &size) != 0) {
      throw std::runtime_error("cannot listen");
    }
    port_ = ntohs(address.sin_port);
  }

  [[nodiscard]] int Number() const { return descriptor_.Number(); }
  [[nodiscard]] std::uint16_t Port() const { return port_; }
  [[nodiscard]] std::string PortText() const { return std::to_string(port_); }
  [[nodiscard]] Descriptor Accept() const {
    return Descriptor(::accept(Number(), nullptr, nullptr));
  }
  int Release() { return descriptor_.Release(); }
  void Close() { descriptor_.Close(); }

 private:
  Descriptor descriptor_;
  std::uint16_t port_ = 0;
};

inline Descriptor ConnectTo(std::uint16_t port) {
  Descriptor peer(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = Loopback(port);
  if (::connect(peer.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("cannot connect");
  }
  return peer;
}

/// A listener that answers no further peer, since as many wait as may: a connect to it goes on until it is given up.
class SilentListener {
 public:
  SilentListener() : listener_(0) {
    const sockaddr_in address = Loopback(listener_.Port());
    // One may wait; of the others the system drops what they send, again and again.
    for (int count = 0; count < 4; ++count) {
      waiting_.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
      ::connect(waiting_.back().Number(), reinterpret_cast<const sockaddr*>(&address),
                sizeof address);
    }
  }
  [[nodiscard]] std::string PortText() const { return listener_.PortText(); }

 private:
  PlainListener listener_;
  std::vector<Descriptor> waiting_;
};

inline bool IsOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) != -1; }
inline bool IsClosedOnExec(int descriptor) {
  return (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0;
}
inline bool WaitsInCalls(int descriptor) {
  return (::fcntl(descriptor, F_GETFL) & O_NONBLOCK) == 0;
}
inline int OptionOf(int descriptor, int level, int option) {
  int value = -1;
  socklen_t size = sizeof value;
  ::getsockopt(descriptor, level, option, &value, &size);
  return value;
}

}  // namespace tessaret::test
