// Items and PDUs as bytes: written down in hexadecimal, read from a stream that gives one byte at a time, and written to one that
// keeps them.
#pragma once

#include <string_view>

#include <gtest/gtest.h>

#include "net/pdu_items.h"
#include "support/bytes.h"
#include "support/odd_streams.h"

namespace tessaret::test {

/// The bytes that `text` names in hexadecimal, with blanks anywhere between them.
inline Bytes Hex(std::string_view text) {
  Bytes bytes;
  int digits = 0;
  int value = 0;
  for (const char c : text) {
    if (c == ' ') continue;
    value = value * 16 + (c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10);
    if (++digits % 2 != 0) continue;
    bytes.push_back(static_cast<std::uint8_t>(value));
    value = 0;
  }
  return bytes;
}

/// Type, reserved byte, length in 16 bits, and the text.
inline Bytes TextItemBytes(std::uint8_t type, std::string_view text) {
  return Joined({{type, 0, static_cast<std::uint8_t>(text.size() >> 8),
                  static_cast<std::uint8_t>(text.size())},
                 BytesOf(text)});
}

/// The same around other bytes.
inline Bytes ItemBytes(std::uint8_t type, const Bytes& content) {
  return TextItemBytes(type, TextOf(content));
}

/// What a peer sends, a byte at a time.
class Received : public DrippingBuffer {
 public:
  explicit Received(Bytes bytes) : DrippingBuffer(std::move(bytes)) { InEndian = kBigEndian; }
  /// How many bytes have not been read.
  std::uint32_t Left() { return Available(); }
};

/// What a peer gets.
class Sent : public CollectingBuffer {
 public:
  Sent() { OutEndian = kBigEndian; }
};

template <class Item>
Bytes Written(Item& item) {
  Sent sent;
  EXPECT_TRUE(item.Write(sent));
  return sent.Written();
}

/// Reads `bytes` into `item`, with the type byte.
template <class Item>
bool Reads(Item& item, const Bytes& bytes) {
  Received received(bytes);
  return item.Read(received);
}

/// Reads a PDU behind its type byte, as associations do, and nothing behind it.
template <class Pdu>
bool ReadsWholeBehindType(Pdu& pdu, const Bytes& bytes) {
  Received received({bytes.begin() + 1, bytes.end()});
  return pdu.Read(received) && received.Left() == 0;
}

/// Reads them behind the type byte, within an item that has room for just these.
template <class Item>
bool ReadsRest(Item& item, const Bytes& bytes) {
  Received received({bytes.begin() + 1, bytes.end()});
  return item.ReadRest(received, static_cast<std::uint32_t>(bytes.size()) - 1);
}

/// A new item of the kind fails to be read from each beginning of `bytes`.
template <class Item>
void ExpectFailsCutAnywhere(const Bytes& bytes) {
  for (std::size_t kept = 1; kept < bytes.size(); ++kept) {
    Item item;
    Received received({bytes.begin() + 1, bytes.begin() + static_cast<std::ptrdiff_t>(kept)});
    EXPECT_FALSE(item.ReadRest(received)) << kept;
  }
}

}  // namespace tessaret::test
