#include "net/pdu_items.h"

#include <algorithm>
#include <array>

#include "net/pdu_trace.h"

namespace tessaret {
namespace {

// Type, reserved byte and length stand before every item; behind the type byte there are three.
constexpr std::uint32_t kHeadBytes = 4;
constexpr std::uint32_t kHeadBytesBehindType = 3;

/// What the trace calls an item of one text, as it is read and written.
struct TextItemName {
  std::uint8_t type;
  const char* reading;
  const char* writing;
  const char* text;
};

constexpr TextItemName kTextItemNames[] = {
    {item_type::kApplicationContext, "Applicationm Context (0x10)", "Application Context (0x10)",
     "Application Context"},
    {item_type::kAbstractSyntax, "Abstract Syntax (0x30)", "Abstract Syntax (0x30)",
     "Abstract Syntax"},
    {item_type::kTransferSyntax, "Transfer Syntax (0x40)", "Tranfer Syntax", "Transfer Syntax"},
    {item_type::kImplementationClass, "Implementation Class (0x52)", "Implementation Class (0x52)",
     "Impl. Class"},
    {item_type::kImplementationVersion, "Implementation Version (0x55)",
     "Implementation Version (0x55)", "Impl. Vesrion"},
};

void TraceText(const TextItem& item, bool isReading) {
  if (!IsDumping(kDumpPdu)) return;
  for (const TextItemName& name : kTextItemNames) {
    if (name.type != item.ItemType) continue;
    pdu_trace::Start(isReading, isReading ? name.reading : name.writing, item.ItemType);
    pdu_trace::Head(4, item.Reserved1, item.Length);
    pdu_trace::Field(4, name.text, item.View());
  }
}

void TraceMaximum(const MaximumSubLength& item) {
  DumpTrace(kDumpPdu, "\t\t\tMaximum Sub Length (0x51):%2.2X\n", item.ItemType);
  pdu_trace::Head(4, item.Reserved1, item.Length);
  pdu_trace::Field(4, "Maximum Length", 4, item.MaximumLength);
}

void TraceRole(const SCPSCURoleSelect& item, bool isReading) {
  pdu_trace::Start(isReading, "SCP/SCU Role Select (0x54)", item.ItemType);
  pdu_trace::Head(4, item.Reserved1, item.Length);
  pdu_trace::Field(4, "UID Length", 2, item.UID.Size);
  pdu_trace::Field(4, "UID", item.UID.View());
  pdu_trace::Field(4, "SCU Role", 1, item.SCURole);
  pdu_trace::Field(4, "SCP Role", 1, item.SCPRole);
}

void TraceExtended(const ExtendedNegotiation& item, std::uint16_t length, bool isReading) {
  pdu_trace::Start(isReading, "Extended Negotiation (0x56)", item.ItemType);
  pdu_trace::Head(4, item.Reserved1, length);
  pdu_trace::Field(4, "UID Length", 2, item.UID.Size);
  pdu_trace::Field(4, "UID", item.UID.View());
  pdu_trace::Field(4, "Application Info Length", 2, item.ApplicationInfoLength);
  pdu_trace::Field(4, "Application Info", item.ApplicationInfo);
}

/// Reads a text of `size` bytes, of which there may be none. False also where it is too long.
bool ReadUid(Buffer& buffer, std::uint32_t size, UID& uid) {
  if (size > UID::kMostBytes) return false;
  uid = UID();
  uid.Size = size;
  return size == 0 || buffer.Read(uid.Text.data(), size) > 0;
}

bool WriteUid(Buffer& buffer, const UID& uid) { return buffer.Write(uid.Text.data(), uid.Size); }

}  // namespace

bool SkipBytes(Buffer& buffer, std::uint32_t count) {
  std::array<std::uint8_t, 1024> scratch;
  while (count != 0) {
    const auto piece = std::min(count, static_cast<std::uint32_t>(scratch.size()));
    if (buffer.Read(scratch.data(), piece) <= 0) return false;
    count -= piece;
  }
  return true;
}

std::uint32_t TextItem::Size() {
  Length = static_cast<std::uint16_t>(UID::Size);
  return kHeadBytes + Length;
}

bool TextItem::Write(Buffer& buffer) {
  Size();
  TraceText(*this, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
         WriteUid(buffer, *this);
}

bool TextItem::Read(Buffer& buffer) { return buffer.Read8(&ItemType) && ReadRest(buffer); }

bool TextItem::ReadRest(Buffer& buffer, std::uint32_t room) {
  if (room < kHeadBytesBehindType) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length)) return false;
  if (Length > room - kHeadBytesBehindType) return false;
  if (Length == 0 && !mayBeEmpty_) return false;
  if (!ReadUid(buffer, Length, *this)) return false;
  TraceText(*this, true);
  return true;
}

std::uint32_t MaximumSubLength::Size() {
  Length = 4;
  return kHeadBytes + Length;
}

bool MaximumSubLength::Write(Buffer& buffer) {
  Size();
  TraceMaximum(*this);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
         buffer.Write32(MaximumLength);
}

bool MaximumSubLength::Read(Buffer& buffer) { return buffer.Read8(&ItemType) && ReadRest(buffer); }

bool MaximumSubLength::ReadRest(Buffer& buffer, std::uint32_t room) {
  if (room < kHeadBytesBehindType + 4) return false;
  // Whatever length it states, it has one number.
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length) || !buffer.Read32(&MaximumLength)) {
    return false;
  }
  TraceMaximum(*this);
  return true;
}

std::uint32_t SCPSCURoleSelect::Size() {
  Length = static_cast<std::uint16_t>(UID.Size + 4);
  return kHeadBytes + Length;
}

bool SCPSCURoleSelect::Write(Buffer& buffer) {
  Size();
  TraceRole(*this, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
         buffer.Write16(static_cast<std::uint16_t>(UID.Size)) && WriteUid(buffer, UID) &&
         buffer.Write8(SCURole) && buffer.Write8(SCPRole);
}

bool SCPSCURoleSelect::Read(Buffer& buffer) { return buffer.Read8(&ItemType) && ReadRest(buffer); }

bool SCPSCURoleSelect::ReadRest(Buffer& buffer, std::uint32_t room) {
  std::uint16_t size = 0;
  if (room < kHeadBytesBehindType + 4) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length) || !buffer.Read16(&size)) return false;
  // Both lengths say the same, or one of them lies.
  if (Length > room - kHeadBytesBehindType || std::uint32_t{size} + 4 != Length) return false;
  if (!ReadUid(buffer, size, UID) || !buffer.Read8(&SCURole) || !buffer.Read8(&SCPRole)) {
    return false;
  }
  TraceRole(*this, true);
  return true;
}

std::uint32_t ExtendedNegotiation::Size() {
  ApplicationInfoLength = static_cast<std::uint16_t>(ApplicationInfo.size());
  return kHeadBytes + 2 + UID.Size + static_cast<std::uint32_t>(ApplicationInfo.size());
}

bool ExtendedNegotiation::Write(Buffer& buffer) {
  const std::uint32_t size = Size();
  if (size > kMostItemBytes) return false;
  const auto length = static_cast<std::uint16_t>(size - kHeadBytes);
  TraceExtended(*this, length, false);
  return buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(length) &&
         buffer.Write16(static_cast<std::uint16_t>(UID.Size)) && WriteUid(buffer, UID) &&
         buffer.Write(ApplicationInfo.data(), ApplicationInfoLength);
}

bool ExtendedNegotiation::Read(Buffer& buffer) {
  return buffer.Read8(&ItemType) && ReadRest(buffer);
}

bool ExtendedNegotiation::ReadRest(Buffer& buffer, std::uint32_t room) {
  std::uint16_t length = 0;
  std::uint16_t size = 0;
  if (room < kHeadBytesBehindType + 2) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&length) || !buffer.Read16(&size)) return false;
  if (length > room - kHeadBytesBehindType || std::uint32_t{size} + 2 > length) return false;
  if (!ReadUid(buffer, size, UID)) return false;
  ApplicationInfoLength = static_cast<std::uint16_t>(length - 2 - size);
  ApplicationInfo.assign(ApplicationInfoLength, 0);
  if (ApplicationInfoLength != 0 &&
      buffer.Read(ApplicationInfo.data(), ApplicationInfoLength) <= 0) {
    return false;
  }
  TraceExtended(*this, length, true);
  return true;
}

}  // namespace tessaret
