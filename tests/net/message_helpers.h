// What tests of the messages have in common: an association for all of them, messages of any class, and a request as it was received.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "net/command_elements.h"
#include "net/scripted_peer.h"

namespace tessaret::test {

inline const std::vector<Agreed> kMessageContexts = {
    {1, kEcho, kImplicit}, {3, kCt, kImplicit}, {5, kFind, kImplicit}};

/// A message about one SOP class, or none.
template <class Message>
class About : public Message {
 public:
  explicit About(std::string_view uid) : uid_(uid) {}
  bool GetUID(UID& uid) override {
    uid = UID(uid_);
    return !uid_.empty();
  }

 private:
  std::string uid_;
};

inline void PutText(DICOMObject& object, std::uint16_t group, std::uint16_t element,
                    std::string_view text) {
  PutBytes(object, group, element, type_code::LO, text);
}

/// An identifier, and its bytes.
inline void FillIdentifier(DICOMObject& object) { PutText(object, 0x0010, 0x0010, "A*"); }
inline Bytes IdentifierBytes() { return Elements().Text(0x0010, 0x0010, "A*"); }

/// A request as it was received.
inline void FillReceived(DICOMCommandObject& request, std::string_view sopClass) {
  PutUid(request, 0, 0x0002, sopClass);
  PutNumber16(request, 0, 0x0110, 0x1234);
  PutNumber16(request, 0, 0x0700, 1);
  PutNumber16(request, 0, 0x0800, 0x0102);
}

/// An element with one empty item, as it stands in a command that lies.
inline void PutItems(DICOMObject& object, std::uint16_t element) {
  auto* vr = new VR(std::uint16_t{0x0000}, element, 0U, false);
  object.Push(vr);
  object.Push(new DICOMDataObject());
}

/// What responses to it have in common, where it was a query.
inline Command ResponseToReceived(std::uint16_t field, bool hasData, std::uint16_t status) {
  return Command()
      .Uid(0x0002, kFind)
      .Number(0x0100, field)
      .Number(0x0110, 0x1234)
      .Number(0x0120, 0x1234)
      .Number(0x0700, 1)
      .Number(0x0800, hasData ? 0x0102 : 0x0101)
      .Number(0x0900, status);
}

}  // namespace tessaret::test
