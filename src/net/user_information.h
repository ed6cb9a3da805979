// Item 0x50 of association requests and answers: what the two sides tell each other about themselves (DICOM PS3.8, 9.3.2.3 and
// annex D).
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "net/pdu_items.h"

namespace tessaret {

/// Of role selections, and of extended negotiations, that are read from one request: each is for a SOP class, and no request has more
/// than 128 contexts for them.
inline constexpr std::size_t kMostItemsByUid = 128;

class UserInformation {
 public:
  void SetMax(std::uint32_t bytes) { MaximumSubLength.MaximumLength = bytes; }
  void SetImplementationClass(std::string_view uid) { ImplementationClass.Set(uid); }
  void SetImplementationVersion(std::string_view name) { ImplementationVersion.Set(name); }

  /// 1; 0, and nothing changes, where there is one for this UID already.
  int AddRoleSelect(const SCPSCURoleSelect& role);
  int AddExtendedNegotiation(const ExtendedNegotiation& negotiation);
  /// Null where there is none. Stays owned here, until one is added.
  [[nodiscard]] SCPSCURoleSelect* FindRoleSelect(const UID& uid);
  [[nodiscard]] ExtendedNegotiation* FindExtendedNegotiation(const UID& uid);

  /// Computes Length anew from what is kept here, and answers with the whole item's size. Of items that were skipped the last one
  /// counts.
  std::uint32_t Size();
  /// Without the items that were skipped, which are forgotten.
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  /// Without the type byte. True only where the items within fill this one exactly; those of unknown types are skipped, which leaves
  /// the reserved byte and length of the last of them in Reserved1 and Length. Of several role selections, or extended negotiations,
  /// for one UID the first is kept; more than kMostItemsByUid are refused.
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kUserInformation;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 0;
  std::uint32_t UnknownItemBytes =
      0;  // of the last item that was skipped, head included; never on the wire
  tessaret::MaximumSubLength MaximumSubLength;
  tessaret::ImplementationClass ImplementationClass;
  tessaret::ImplementationVersion ImplementationVersion;
  std::vector<SCPSCURoleSelect> RoleSelects;
  std::vector<ExtendedNegotiation> ExtendedNegotiations;

 private:
  /// Reads one item within, whose type is known, and takes what it counts for from `left`.
  bool ReadItem(Buffer& buffer, std::uint8_t type, std::uint32_t& left);
  bool SkipItem(Buffer& buffer, std::uint32_t& left);
};

}  // namespace tessaret
