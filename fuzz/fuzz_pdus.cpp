// The PDUs and items that associations are negotiated by. Nothing is read beyond the length that one states; and what was read is
// written to the same bytes again, where they are in the order in which the library writes and nothing in them was skipped.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "net/associate_pdus.h"
#include "net/short_pdus.h"
#include "support.h"

namespace {

using tessaret::fuzz::Require;
using Bytes = std::span<const std::uint8_t>;
using Types = std::vector<std::uint8_t>;

/// What a peer sends.
class Incoming : public tessaret::MemoryBuffer {
 public:
  explicit Incoming(Bytes bytes)
      : MemoryBuffer(tessaret::fuzz::BlockOf(bytes), static_cast<std::uint32_t>(bytes.size()),
                     false, tessaret::kBigEndian) {}
};

std::size_t Length16(Bytes item) { return std::size_t{item[2]} << 8 | item[3]; }

/// The items that fill `bytes`.
std::vector<Bytes> ItemsIn(Bytes bytes) {
  std::vector<Bytes> items;
  while (bytes.size() >= 4) {
    const std::size_t size = std::min(bytes.size(), Length16(bytes) + 4);
    items.push_back(bytes.first(size));
    bytes = bytes.subspan(size);
  }
  return items;
}

/// Whether `items` are one of each of `once`, in this order, and then any number of each of `many`.
bool AreInOrder(const std::vector<Bytes>& items, const Types& once, const Types& many) {
  if (items.size() < once.size()) return false;
  for (std::size_t at = 0; at < once.size(); ++at) {
    if (items[at][0] != once[at]) return false;
  }
  auto at = items.begin() + static_cast<std::ptrdiff_t>(once.size());
  for (const std::uint8_t type : many) {
    at = std::find_if(at, items.end(), [&](Bytes item) { return item[0] != type; });
  }
  return at == items.end();
}

bool IsPlain(const tessaret::TextItem&, Bytes) { return true; }
bool IsPlain(const tessaret::SCPSCURoleSelect&, Bytes) { return true; }
bool IsPlain(const tessaret::ExtendedNegotiation&, Bytes) { return true; }
bool IsPlain(const tessaret::MaximumSubLength&, Bytes bytes) { return Length16(bytes) == 4; }

bool IsPlain(const tessaret::PresentationContext&, Bytes bytes) {
  return AreInOrder(ItemsIn(bytes.subspan(8)), {0x30}, {0x40});
}

bool IsPlain(const tessaret::PresentationContextAccept&, Bytes bytes) {
  return AreInOrder(ItemsIn(bytes.subspan(8)), {0x40}, {});
}

bool IsPlain(const tessaret::UserInformation& information, Bytes bytes) {
  const std::vector<Bytes> items = ItemsIn(bytes.subspan(4));
  // None was dropped for its UID.
  return AreInOrder(items, {0x51, 0x52, 0x55}, {0x54, 0x56}) && Length16(items[0]) == 4 &&
         information.RoleSelects.size() + information.ExtendedNegotiations.size() + 3 ==
             items.size();
}

template <class Pdu>
bool IsPlainPdu(const Pdu& pdu, Bytes bytes, std::uint8_t contextType) {
  std::vector<Bytes> items = ItemsIn(bytes.subspan(74));
  if (items.size() < 2 || items.back()[0] != 0x50 || !IsPlain(pdu.UserInformation, items.back())) {
    return false;
  }
  items.pop_back();
  if (!AreInOrder(items, {0x10}, {contextType})) return false;
  for (std::size_t at = 1; at < items.size(); ++at) {
    if (!IsPlain(pdu.PresentationContexts[at - 1], items[at])) return false;
  }
  return true;
}

bool IsPlain(const tessaret::AAssociateRQ& pdu, Bytes bytes) {
  return IsPlainPdu(pdu, bytes, 0x20);
}
bool IsPlain(const tessaret::AAssociateAC& pdu, Bytes bytes) {
  return IsPlainPdu(pdu, bytes, 0x21);
}

template <class Pdu>
requires requires(Pdu& pdu) { pdu.Source; } || std::is_base_of_v<tessaret::ReleasePdu, Pdu>
bool IsPlain(const Pdu&, Bytes) { return true; }

template <class Item>
void RequireSameWritten(Item& item, Bytes bytes) {
  tessaret::fuzz::CollectingBuffer stream;
  stream.OutEndian = tessaret::kBigEndian;
  Require(item.Write(stream), "what was read can be written");
  if (!IsPlain(item, bytes)) return;
  const std::vector<std::uint8_t>& written = stream.Written();
  Require(std::equal(written.begin(), written.end(), bytes.begin(), bytes.end()),
          "what was read is written to the same bytes");
}

template <class Item>
void CheckItem(Bytes input) {
  Item item;
  Incoming stream(input);
  if (!item.Read(stream)) return;
  // A maximum length takes four bytes whatever it states.
  if constexpr (!std::is_same_v<Item, tessaret::MaximumSubLength>) {
    Require(stream.Position == Length16(input) + 4, "an item ends where its length says");
  }
  RequireSameWritten(item, input.first(stream.Position));
}

/// The type byte was read by whoever chose the reader.
template <class Pdu>
void CheckPdu(Bytes input) {
  Pdu pdu;
  if (input.empty()) return;
  Incoming stream(input.subspan(1));
  const bool isRead = pdu.Read(stream);
  if (input.size() < 6) return Require(!isRead, "a PDU without a length is none");
  const std::uint64_t length = std::uint64_t{Length16(input)} << 16 | Length16(input.subspan(2));
  Require(stream.Position <= length + 5, "no more is read than the PDU has");
  if (!isRead) return;
  Require(stream.Position == length + 5, "a PDU ends where its length says");
  std::vector<std::uint8_t> bytes(input.begin(), input.begin() + stream.Position + 1);
  bytes[0] = pdu.ItemType;
  RequireSameWritten(pdu, bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Bytes input(data, size);
  CheckItem<tessaret::ApplicationContext>(input);
  CheckItem<tessaret::AbstractSyntax>(input);
  CheckItem<tessaret::TransferSyntax>(input);
  CheckItem<tessaret::ImplementationClass>(input);
  CheckItem<tessaret::ImplementationVersion>(input);
  CheckItem<tessaret::MaximumSubLength>(input);
  CheckItem<tessaret::SCPSCURoleSelect>(input);
  CheckItem<tessaret::ExtendedNegotiation>(input);
  CheckItem<tessaret::PresentationContext>(input);
  CheckItem<tessaret::PresentationContextAccept>(input);
  CheckItem<tessaret::UserInformation>(input);
  CheckPdu<tessaret::AAssociateRQ>(input);
  CheckPdu<tessaret::AAssociateAC>(input);
  CheckPdu<tessaret::AAssociateRJ>(input);
  CheckPdu<tessaret::AReleaseRQ>(input);
  CheckPdu<tessaret::AReleaseRP>(input);
  CheckPdu<tessaret::AAbortRQ>(input);
  return 0;
}
