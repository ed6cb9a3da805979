// Protocol data units, items and command sets as bytes, put together from their layouts in DICOM PS3.7 and PS3.8 without any of the
// library's code; and back.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace tessaret::test {

inline constexpr std::string_view kImplicit = "1.2.840.10008.1.2";
inline constexpr std::string_view kExplicit = "1.2.840.10008.1.2.1";
inline constexpr std::string_view kBigEndianSyntax = "1.2.840.10008.1.2.2";
inline constexpr std::string_view kEcho = "1.2.840.10008.1.1";
inline constexpr std::string_view kCt = "1.2.840.10008.5.1.4.1.1.2";
inline constexpr std::string_view kFind = "1.2.840.10008.5.1.4.1.2.2.1";
inline constexpr std::string_view kMove = "1.2.840.10008.5.1.4.1.2.2.2";

inline Bytes Big16(std::size_t value) {
  return {static_cast<std::uint8_t>(value >> 8), static_cast<std::uint8_t>(value)};
}

inline Bytes Big32(std::size_t value) { return Joined({Big16(value >> 16), Big16(value)}); }

/// Type, a reserved byte, a length of two bytes, and the body.
inline Bytes Item(std::uint8_t type, const Bytes& body) {
  return Joined({{type, 0}, Big16(body.size()), body});
}

inline Bytes Item(std::uint8_t type, std::string_view text) { return Item(type, BytesOf(text)); }

/// Type, a reserved byte, a length of four bytes, and the body.
inline Bytes Pdu(std::uint8_t type, const Bytes& body) {
  return Joined({{type, 0}, Big32(body.size()), body});
}

struct Proposal {
  std::uint8_t id;
  std::string_view abstractSyntax;
  std::vector<std::string_view> transferSyntaxes;
};

inline Bytes ContextItem(const Proposal& proposal) {
  Bytes body = Joined({{proposal.id, 0, 0, 0}, Item(0x30, proposal.abstractSyntax)});
  for (const std::string_view syntax : proposal.transferSyntaxes) {
    body = Joined({body, Item(0x40, syntax)});
  }
  return Item(0x20, body);
}

inline Bytes AcceptItem(std::uint8_t id, std::uint8_t result, std::string_view syntax) {
  return Item(0x21, Joined({{id, 0, result, 0}, Item(0x40, syntax)}));
}

inline Bytes RoleItem(std::string_view uid, std::uint8_t scu, std::uint8_t scp) {
  return Item(0x54, Joined({Big16(uid.size()), BytesOf(uid), {scu, scp}}));
}

inline Bytes UserItem(std::size_t maximum, std::string_view classUid, std::string_view version,
                      const Bytes& further = {}) {
  return Item(0x50, Joined({Item(0x51, Big32(maximum)), Item(0x52, classUid), Item(0x55, version),
                            further}));
}

/// What the library says of itself.
inline Bytes OurUserItem(std::size_t maximum = 16384, const Bytes& further = {}) {
  return UserItem(maximum, "1.2.826.0.1.5518204.7.460.20000624", "QX/W32/1.6.9", further);
}

inline Bytes PeersUserItem(const Bytes& further = {}) {
  return UserItem(32768, "1.2.3.4", "PEER", further);
}

inline Bytes Title(std::string_view text) {
  Bytes title = BytesOf(text);
  title.resize(16, ' ');
  return title;
}

/// An association request (1) or answer (2) around its items.
inline Bytes Associate(std::uint8_t type, std::string_view called, std::string_view calling,
                       const Bytes& items) {
  return Pdu(type, Joined({Big16(1), Big16(0), Title(called), Title(calling), Bytes(32), items}));
}

inline Bytes ApplicationItem(std::string_view name = "1.2.840.10008.3.1.1.1") {
  return Item(0x10, name);
}

/// A peer's request for these contexts, from PEER to US.
inline Bytes RequestFor(const std::vector<Proposal>& proposals,
                        const Bytes& user = PeersUserItem()) {
  Bytes items = ApplicationItem();
  for (const Proposal& proposal : proposals) items = Joined({items, ContextItem(proposal)});
  return Associate(1, "US", "PEER", Joined({items, user}));
}

inline Bytes ReleaseRequest() { return {5, 0, 0, 0, 0, 4, 0, 0, 0, 0}; }
inline Bytes ReleaseAnswer() { return {6, 0, 0, 0, 0, 4, 0, 0, 0, 0}; }
inline Bytes AbortPdu(std::uint8_t source, std::uint8_t reason) {
  return {7, 0, 0, 0, 0, 4, 0, 0, source, reason};
}
/// The one that the library sends.
inline Bytes OurAbort() { return AbortPdu(3, 1); }
inline Bytes Reject(std::uint8_t result, std::uint8_t source, std::uint8_t reason) {
  return {3, 0, 0, 0, 0, 4, 0, result, source, reason};
}

inline constexpr std::uint8_t kCommandPart = 1;
inline constexpr std::uint8_t kLastPart = 2;
inline constexpr std::uint8_t kWholeCommand = kCommandPart | kLastPart;

inline Bytes Pdv(std::uint8_t context, std::uint8_t header, const Bytes& bytes) {
  return Joined({Big32(bytes.size() + 2), {context, header}, bytes});
}

/// A PDU of data with one PDV.
inline Bytes Data(std::uint8_t context, std::uint8_t header, const Bytes& bytes) {
  return Pdu(4, Pdv(context, header, bytes));
}

/// A message as the library cuts it: fragments of 4096 bytes and a rest.
inline Bytes Fragmented(std::uint8_t context, std::uint8_t kind, const Bytes& bytes) {
  Bytes all;
  for (std::size_t at = 0; at < bytes.size(); at += 4096) {
    const std::size_t end = std::min<std::size_t>(at + 4096, bytes.size());
    const auto header = static_cast<std::uint8_t>(kind | (end == bytes.size() ? kLastPart : 0));
    all = Joined({all, Data(context, header,
                            Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                                  bytes.begin() + static_cast<std::ptrdiff_t>(end)))});
  }
  return all;
}

/// A data set in implicit little endian, by elements in the order of their tags.
class Elements {
 public:
  Elements& Value(std::uint16_t group, std::uint16_t element, const Bytes& value) {
    for (const std::size_t number : {std::size_t{group}, std::size_t{element}}) Little16(number);
    Little16(value.size());
    Little16(value.size() >> 16);
    bytes_ = Joined({bytes_, value});
    return *this;
  }
  /// Padded with a NUL.
  Elements& Uid(std::uint16_t group, std::uint16_t element, std::string_view text) {
    return Value(group, element, Padded(text, '\0'));
  }
  /// Padded with a blank.
  Elements& Text(std::uint16_t group, std::uint16_t element, std::string_view text) {
    return Value(group, element, Padded(text, ' '));
  }
  Elements& Number(std::uint16_t group, std::uint16_t element, std::uint16_t value) {
    return Value(group, element,
                 {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)});
  }
  operator const Bytes&() const { return bytes_; }
  [[nodiscard]] const Bytes& Done() const { return bytes_; }

 private:
  static Bytes Padded(std::string_view text, char pad) {
    Bytes value = BytesOf(text);
    if (value.size() % 2 != 0) value.push_back(static_cast<std::uint8_t>(pad));
    return value;
  }
  void Little16(std::size_t value) {
    bytes_.push_back(static_cast<std::uint8_t>(value));
    bytes_.push_back(static_cast<std::uint8_t>(value >> 8));
  }
  Bytes bytes_;
};

/// A command set: the elements of group 0000, and in front of them their length.
class Command {
 public:
  Command& Uid(std::uint16_t element, std::string_view text) {
    elements_.Uid(0, element, text);
    return *this;
  }
  Command& Text(std::uint16_t element, std::string_view text) {
    elements_.Text(0, element, text);
    return *this;
  }
  Command& Number(std::uint16_t element, std::uint16_t value) {
    elements_.Number(0, element, value);
    return *this;
  }
  operator Bytes() const { return Done(); }
  [[nodiscard]] Bytes Done() const {
    const std::size_t length = elements_.Done().size();
    Elements head;
    head.Value(0, 0,
               {static_cast<std::uint8_t>(length), static_cast<std::uint8_t>(length >> 8), 0, 0});
    return Joined({head, elements_});
  }

 private:
  Elements elements_;
};

/// A request to store image 1.2.3 of a CT, whose data set follows.
inline Bytes StoreCommand(std::uint8_t context, std::uint16_t messageID = 3) {
  return Data(context, kWholeCommand,
              Command()
                  .Uid(0x0002, kCt)
                  .Number(0x0100, 0x0001)
                  .Number(0x0110, messageID)
                  .Number(0x0800, 0x0102)
                  .Uid(0x1000, "1.2.3"));
}

/// The command of a response to message 1: refused, with a comment that has come to hold an item.
inline Bytes RefusalWithItemInComment(std::uint16_t field) {
  const Bytes refusal = Elements()
                            .Number(0x0000, 0x0100, field)
                            .Number(0x0000, 0x0120, 1)
                            .Number(0x0000, 0x0800, 0x0101)
                            .Number(0x0000, 0x0900, 0xA700)
                            .Text(0x0000, 0x0902, "no");
  return Joined({refusal, {0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 0}});
}

/// The PDUs of a stream, each whole.
inline std::vector<Bytes> SplitPdus(const Bytes& stream) {
  std::vector<Bytes> pdus;
  for (std::size_t at = 0; at < stream.size();) {
    if (stream.size() - at < 6) throw std::runtime_error("a PDU ends within its head");
    std::size_t length = 0;
    for (std::size_t i = at + 2; i < at + 6; ++i) length = length << 8 | stream[i];
    if (stream.size() - at - 6 < length) throw std::runtime_error("a PDU ends early");
    const auto from = stream.begin() + static_cast<std::ptrdiff_t>(at);
    pdus.emplace_back(from, from + static_cast<std::ptrdiff_t>(6 + length));
    at += 6 + length;
  }
  return pdus;
}

/// The types of the PDUs of a stream, one digit each.
inline std::string TypesOf(const Bytes& stream) {
  std::string types;
  for (const Bytes& pdu : SplitPdus(stream)) types += static_cast<char>('0' + pdu[0]);
  return types;
}

}  // namespace tessaret::test
