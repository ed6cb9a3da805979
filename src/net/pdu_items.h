// The items of association requests and answers that hold one text or a few numbers (DICOM PS3.8, 9.3.2 and annex D). Each knows its
// layout, which the body shows, and its own length. Numbers go in the byte order of the stream, which is big endian for an
// association.
//
// Readers answer false where the stream ends and where an item contradicts itself or what encloses it; what was read so far stays.
// `room` is how many bytes the enclosing item still has behind the type byte.
#pragma once

#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "core/buffer.h"
#include "net/uid.h"

namespace tessaret {

inline constexpr std::uint32_t kAnyRoom = std::numeric_limits<std::uint32_t>::max();
/// The longest item, head included: its length has 16 bits. Writers answer false to a longer one, with nothing written.
inline constexpr std::uint32_t kMostItemBytes = 4 + std::numeric_limits<std::uint16_t>::max();

namespace item_type {
inline constexpr std::uint8_t kApplicationContext = 0x10;
inline constexpr std::uint8_t kPresentationContext = 0x20;
inline constexpr std::uint8_t kPresentationContextAccept = 0x21;
inline constexpr std::uint8_t kAbstractSyntax = 0x30;
inline constexpr std::uint8_t kTransferSyntax = 0x40;
inline constexpr std::uint8_t kUserInformation = 0x50;
inline constexpr std::uint8_t kMaximumSubLength = 0x51;
inline constexpr std::uint8_t kImplementationClass = 0x52;
inline constexpr std::uint8_t kRoleSelect = 0x54;
inline constexpr std::uint8_t kImplementationVersion = 0x55;
inline constexpr std::uint8_t kExtendedNegotiation = 0x56;
}  // namespace item_type

/// An item that is one text.
class TextItem : public UID {
 public:
  /// Computes Length and answers with the whole item's size in bytes. It hides the text's own, which is UID::Size.
  std::uint32_t Size();
  bool Write(Buffer& buffer);
  /// With the type byte, whatever it is.
  bool Read(Buffer& buffer);
  /// Without the type byte. A text of more than 64 bytes is no unique identifier, and fails; so does an empty one where
  /// the item is to say something.
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 0;

 protected:
  TextItem(std::uint8_t type, std::string_view text)
      : UID(text), ItemType(type), mayBeEmpty_(type == item_type::kTransferSyntax) {}

 private:
  bool mayBeEmpty_;  // when read
};

class ApplicationContext : public TextItem {
 public:
  explicit ApplicationContext(std::string_view text = {})
      : TextItem(item_type::kApplicationContext, text) {}
};

class AbstractSyntax : public TextItem {
 public:
  explicit AbstractSyntax(std::string_view text = {})
      : TextItem(item_type::kAbstractSyntax, text) {}
};

/// May be empty.
class TransferSyntax : public TextItem {
 public:
  explicit TransferSyntax(std::string_view text = {})
      : TextItem(item_type::kTransferSyntax, text) {}
};

class ImplementationClass : public TextItem {
 public:
  explicit ImplementationClass(std::string_view text = {})
      : TextItem(item_type::kImplementationClass, text) {}
};

class ImplementationVersion : public TextItem {
 public:
  explicit ImplementationVersion(std::string_view text = {})
      : TextItem(item_type::kImplementationVersion, text) {}
};

/// The longest PDU of data that its sender takes.
class MaximumSubLength {
 public:
  std::uint32_t Size();
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kMaximumSubLength;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 4;
  std::uint32_t MaximumLength = 0;  // bytes; 0 is any
};

/// Which roles are proposed or accepted for one SOP class; 0 and 1 by the standard, taken as they come.
class SCPSCURoleSelect {
 public:
  SCPSCURoleSelect() = default;
  SCPSCURoleSelect(const tessaret::UID& uid, std::uint8_t scpRole, std::uint8_t scuRole)
      : UID(uid), SCURole(scuRole), SCPRole(scpRole) {}
  virtual ~SCPSCURoleSelect() = default;

  std::uint32_t Size();
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kRoleSelect;
  std::uint8_t Reserved1 = 0;
  std::uint16_t Length = 0;
  tessaret::UID UID;
  std::uint8_t SCURole = 0;
  std::uint8_t SCPRole = 0;
};

/// What is agreed about one SOP class in words of its own.
class ExtendedNegotiation {
 public:
  std::uint32_t Size();
  bool Write(Buffer& buffer);
  bool Read(Buffer& buffer);
  bool ReadRest(Buffer& buffer, std::uint32_t room = kAnyRoom);

  std::uint8_t ItemType = item_type::kExtendedNegotiation;
  std::uint8_t Reserved1 = 0;
  tessaret::UID UID;
  std::uint16_t ApplicationInfoLength = 0;
  std::vector<std::uint8_t> ApplicationInfo;
};

/// Reads and drops `count` bytes. False where the stream ends first.
bool SkipBytes(Buffer& buffer, std::uint32_t count);

}  // namespace tessaret
