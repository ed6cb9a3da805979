#include "net/user_information.h"

#include "net/pdu_trace.h"

namespace tessaret {
namespace {

constexpr std::uint32_t kHeadBytes = 4;
constexpr std::uint32_t kHeadBytesBehindType = 3;

template <class Items>
auto* FindByUid(Items& items, const UID& uid) {
  for (auto& item : items) {
    if (item.UID == uid) return &item;
  }
  return static_cast<typename Items::value_type*>(nullptr);
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

void UserInformation::Clear() {
  RoleSelects.clear();
  ExtendedNegotiations.clear();
  UnknownItemBytes = 0;
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
  Size();
  pdu_trace::Start(false, 2, "User Information (0x50)", ItemType);
  pdu_trace::Field(3, "Length", 2, Length);
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
  pdu_trace::Start(true, 2, "User Information (0x50)", ItemType);
  pdu_trace::Field(3, "Length", 2, Length);
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
      left -= MaximumSubLength.Size();
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
      AddRoleSelect(role);
      return true;
    }
    case item_type::kExtendedNegotiation: {
      ExtendedNegotiation negotiation;
      if (!negotiation.ReadRest(buffer, room)) return false;
      left -= negotiation.Size();
      AddExtendedNegotiation(negotiation);
      return true;
    }
    default:
      return SkipItem(buffer, left);
  }
}

bool UserInformation::SkipItem(Buffer& buffer, std::uint32_t& left) {
  std::uint8_t reserved = 0;
  std::uint16_t length = 0;
  if (left < kHeadBytes || !buffer.Read8(&reserved) || !buffer.Read16(&length)) return false;
  if (length > left - kHeadBytes) return false;
  UnknownItemBytes = length + kHeadBytes;
  left -= UnknownItemBytes;
  return SkipBytes(buffer, length);
}

}  // namespace tessaret
