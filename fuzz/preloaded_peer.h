// The other end of an association, which has said everything and ended before the library begins, so that nothing waits for anything.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "base/byte_order.h"
#include "support.h"

namespace tessaret::fuzz {

class PreloadedPeer {
 public:
  PreloadedPeer(const std::uint8_t* data, std::size_t size) {
    int ends[2];
    if (size > kMostInput || ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return;
    libraryEnd_ = ends[0];
    ownEnd_ = ends[1];
    // What the system has no room for ends it.
    isThere_ =
        ::send(ownEnd_, data, size, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(size);
    ::shutdown(ownEnd_, SHUT_WR);
  }
  PreloadedPeer(const PreloadedPeer&) = delete;
  PreloadedPeer& operator=(const PreloadedPeer&) = delete;
  ~PreloadedPeer() {
    for (const int end : {libraryEnd_, ownEnd_}) {
      if (end >= 0) ::close(end);
    }
  }

  [[nodiscard]] bool IsThere() const { return isThere_; }
  /// The library's end, which is the caller's from here on.
  int Give() { return std::exchange(libraryEnd_, -1); }

  /// Holds what the library has said, up to where the system takes no more, to being whole PDUs of these types, a digit each.
  void CheckHeard(std::string_view types) const {
    std::vector<std::uint8_t> heard(kMostHeard);
    const ssize_t received =
        ::recv(ownEnd_, heard.data(), heard.size(), MSG_DONTWAIT | MSG_WAITALL);
    if (received == static_cast<ssize_t>(kMostHeard)) return;
    heard.resize(received > 0 ? static_cast<std::size_t>(received) : 0);
    for (std::size_t at = 0; at < heard.size();) {
      Require(heard.size() - at >= 6, "what is said has its head");
      const std::size_t length = LoadBig32(&heard[at + 2]);
      Require(types.find(static_cast<char>('0' + heard[at])) != std::string_view::npos,
              "what is said is a PDU of this side");
      Require(heard[at] != 4 || (length >= 6 && length <= 4096 + 6), "a fragment is short");
      Require(heard.size() - at - 6 >= length, "what is said is whole");
      at += 6 + length;
    }
  }

 private:
  /// What the system takes in one go.
  static constexpr std::size_t kMostInput = 64 << 10;
  /// Below what it has room for.
  static constexpr std::size_t kMostHeard = 64 << 10;

  int libraryEnd_ = -1;
  int ownEnd_ = -1;
  bool isThere_ = false;
};

}  // namespace tessaret::fuzz
