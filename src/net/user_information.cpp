#include "net/user_information.h"

#include <utility>

#include "net/pdu_trace.h"

namespace tessaret {
namespace {

constexpr std::uint32_t kHeadBytes = 4;
constexpr std::uint32_t kHeadBytesBehindType = 3;
// What a maximum length is, whatever length it states for itself.
constexpr std::uint32_t kMaximumSubLengthBytes = 8;

template <class Items>
auto* FindByUid(Items& items, const UID& uid) {
  for (auto& item : items) {
    if (item.UID == uid) return &item;
  }
  return static_cast<typename Items::value_type*>(nullptr);
}

/// Keeps an item that was read unless there is one for its UID. False where there would be more than a request has use for.
template <class Items>
bool Keep(Items& items, typename Items::value_type&& item) {
  if (FindByUid(items, item.UID) != nullptr) return true;
  if (items.size() == kMostItemsByUid) return false;
  items.push_back(std::move(item));
  return true;
}

}  // namespace

int UserInformation::AddRoleSelect(const SCPSCURoleSelect& role) {
  if (FindRoleSelect(role.UID) != nullptr) return 0;
  RoleSelects.push_back(role);
  return 1;
}

int UserInformation::AddExtendedNegotiation(const ExtendedNegotiation& negotiation) {
  if (FindExtendedNegotiation(negotiation.UID) != nullptr) return 0;
  ExtendedNegotiations.push_back(negotiation);
  return 1;
}

SCPSCURoleSelect* UserInformation::FindRoleSelect(const UID& uid) {
  return FindByUid(RoleSelects, uid);
}

ExtendedNegotiation* UserInformation::FindExtendedNegotiation(const UID& uid) {
  return FindByUid(ExtendedNegotiations, uid);
}

std::uint32_t UserInformation::Size() {
  std::uint32_t size =
      MaximumSubLength.Size() + ImplementationClass.Size() + ImplementationVersion.Size();
  for (SCPSCURoleSelect& role : RoleSelects) size += role.Size();
  for (ExtendedNegotiation& negotiation : ExtendedNegotiations) size += negotiation.Size();
  size += UnknownItemBytes;
  Length = static_cast<std::uint16_t>(size);
  return kHeadBytes + size;
}

bool UserInformation::Write(Buffer& buffer) {
  // What was skipped is not there to be written.
  UnknownItemBytes = 0;
  if (Size() > kMostItemBytes) return false;
  pdu_trace::Start(false, "User Information (0x50)", ItemType);
  pdu_trace::Head(3, Reserved1, Length);
  bool isWritten = buffer.Write8(ItemType) && buffer.Write8(Reserved1) && buffer.Write16(Length) &&
                   MaximumSubLength.Write(buffer) && ImplementationClass.Write(buffer) &&
                   ImplementationVersion.Write(buffer);
  for (SCPSCURoleSelect& role : RoleSelects) isWritten = isWritten && role.Write(buffer);
  for (ExtendedNegotiation& negotiation : ExtendedNegotiations) {
    isWritten = isWritten && negotiation.Write(buffer);
  }
  return isWritten;
}

bool UserInformation::Read(Buffer& buffer) { return buffer.Read8(&ItemType) && ReadRest(buffer); }

bool UserInformation::ReadRest(Buffer& buffer, std::uint32_t room) {
  if (room < kHeadBytesBehindType) return false;
  if (!buffer.Read8(&Reserved1) || !buffer.Read16(&Length)) return false;
  pdu_trace::Start(true, "User Information (0x50)", ItemType);
  pdu_trace::Head(3, Reserved1, Length);
  if (Length > room - kHeadBytesBehindType) return false;
  for (std::uint32_t left = Length; left != 0;) {
    std::uint8_t type = 0;
    if (!buffer.Read8(&type) || !ReadItem(buffer, type, left)) return false;
  }
  return true;
}

bool UserInformation::ReadItem(Buffer& buffer, std::uint8_t type, std::uint32_t& left) {
  const std::uint32_t room = left - 1;
  switch (type) {
    case item_type::kMaximumSubLength:
      if (!MaximumSubLength.ReadRest(buffer, room)) return false;
      left -= kMaximumSubLengthBytes;
      return true;
    case item_type::kImplementationClass:
      if (!ImplementationClass.ReadRest(buffer, room)) return false;
      left -= ImplementationClass.Size();
      return true;
    case item_type::kImplementationVersion:
      if (!ImplementationVersion.ReadRest(buffer, room)) return false;
      left -= ImplementationVersion.Size();
      return true;
    case item_type::kRoleSelect: {
      SCPSCURoleSelect role;
      if (!role.ReadRest(buffer, room)) return false;
      left -= role.Size();
      return Keep(RoleSelects, std::move(role));
    }
    case item_type::kExtendedNegotiation: {
      ExtendedNegotiation negotiation;
      if (!negotiation.ReadRest(buffer, room)) return false;
      left -= negotiation.Size();
      return Keep(ExtendedNegotiations, std::move(negotiation));
    }
    default:
      return SkipItem(buffer, left);
  }
}

bool UserInformation::SkipItem(Buffer& buffer, std::uint32_t& left) {
  if (left < kHeadBytes || !buffer.Read8(&Reserved1) || !buffer.Read16(&Length)) return false;
  if (Length > left - kHeadBytes) return false;
  UnknownItemBytes = Length + kHeadBytes;
  left -= UnknownItemBytes;
  return SkipBytes(buffer, Length);
}

}  // namespace tessaret
