#include "move_destination.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "net/identifiers.h"
#include "preloaded_peer.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

std::unique_ptr<PreloadedPeer> destination;

/// A length, as its two last bytes.
std::string Big16(std::size_t size) {
  return {static_cast<char>(size >> 8), static_cast<char>(size & 0xFF)};
}

std::string Item(char type, std::string_view content) {
  return std::string{type, '\0'} + Big16(content.size()) + std::string(content);
}

std::string Pdu(char type, std::string_view content) {
  return std::string{type, '\0', '\0', '\0'} + Big16(content.size()) + std::string(content);
}

/// Of context 1, which it accepts in implicit little endian.
std::string Answer() {
  const std::string context = Item('\x21', "\x01\0\0\0"s + Item('\x40', "1.2.840.10008.1.2"));
  const std::string user =
      Item('\x51', "\0\0\x40\0"sv) + Item('\x52', "1.2.3") + Item('\x55', "DEST");
  return Pdu(2, "\0\x01\0\0"s + std::string(16 + 16, ' ') + std::string(32, '\0') +
                    Item('\x10', "1.2.840.10008.3.1.1.1") + context + Item('\x50', user));
}

/// A value of a command set, or of a file where its type stands before the length.
std::string Element(std::string_view head, std::string_view value, std::size_t lengthBytes) {
  std::string element(head);
  element += static_cast<char>(value.size());
  element.append(lengthBytes - 1, '\0');
  return element + std::string(value);
}

std::string StoreResponse(std::string_view status) {
  const std::string command = Element("\0\0\0\x01"sv, "\x01\x80"sv, 4) +
                              Element("\0\0\0\x08"sv, "\x01\x01"sv, 4) +
                              Element("\0\0\0\x09"sv, status, 4);
  return Pdu(4, "\0\0"s + Big16(command.size() + 2) + "\x01\x03" + command);
}

const std::string& Script() {
  static const std::string script = Answer() + StoreResponse("\0\0"sv) + StoreResponse("\0\xB0"sv) +
                                    StoreResponse("\0\xA7"sv) + Pdu(6, "\0\0\0\0"sv);
  return script;
}

std::string Image() {
  const std::string meta = Element("\x02\0\x10\0UI"sv, "1.2.840.10008.1.2.1\0"sv, 2);
  const std::string length{static_cast<char>(meta.size()), '\0', '\0', '\0'};
  return std::string(128, '\0') + "DICM" + Element("\x02\0\0\0UL"sv, length, 2) + meta +
         Element("\x08\0\x16\0UI"sv, "1.2.840.10008.5.1.4.1.1.2\0"sv, 2) +
         Element("\x08\0\x18\0UI"sv, "1.2.3\0"sv, 2);
}

std::span<const std::uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

void MoveDestination::Await() {
  Leave();
  const auto script = BytesOf(Script());
  destination = std::make_unique<PreloadedPeer>(script.data(), script.size());
  // The first context that is proposed has the number 1.
  SetIdentifierCounter(1);
}

void MoveDestination::Leave() {
  if (destination != nullptr) destination->CheckHeard("1457");
  destination.reset();
}

const char* MoveDestination::File() {
  static MemoryFile* const file = [] {
    auto* image = new MemoryFile;
    image->Hold(BytesOf(Image()));
    return image;
  }();
  return file->Path();
}

}  // namespace tessaret::fuzz

extern "C" int connect(int descriptor, const sockaddr*, socklen_t) {
  const int end = tessaret::fuzz::destination == nullptr ? -1 : tessaret::fuzz::destination->Give();
  if (end < 0) {
    errno = ECONNREFUSED;
    return -1;
  }
  const bool isConnected = ::dup2(end, descriptor) >= 0;
  ::close(end);
  return isConnected ? 0 : -1;
}
