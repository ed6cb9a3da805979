// What tests of the messages have in common: an association for all of them, messages of any class, and a request as it was received.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
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

/// A data set whose elements are none that is sent.
inline void FillWithNothingToSend(DICOMObject& object) {
  PutUid(object, 0x0002, 0x0010, kImplicit);
  PutNumber32(object, 0x0008, 0x0000, 12);
}

/// Expects a whole command in a PDU, and nothing behind it.
inline void ExpectOneCommand(const Bytes& sent) {
  ASSERT_GE(sent.size(), 12u);
  EXPECT_EQ(TypesOf(sent), "4");
  EXPECT_EQ(sent[11], kWholeCommand);
}

enum class DataSetOf { kNeeded, kOptional };

/// Expects that the request is not sent without an association, its class and a data set; that of an empty one goes alone.
/// `more` are further arguments of Write.
template <class Request, class... More>
void ExpectRequestRefused(std::string_view sopClass, DataSetOf dataSet, More... more) {
  Association association(kMessageContexts);
  PDU_Service* const pdu = &association.pdu;
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_FALSE(About<Request>(sopClass).Write(nullptr, &object, more...));
  EXPECT_FALSE(About<Request>("").Write(pdu, &object, more...));
  DICOMDataObject* const none = nullptr;
  if (dataSet == DataSetOf::kNeeded) {
    EXPECT_FALSE(About<Request>(sopClass).Write(pdu, none, more...));
  }
  EXPECT_EQ(Words(*pdu), "");
  EXPECT_TRUE(association.peer.Received().empty());
  DICOMDataObject empty;
  FillWithNothingToSend(empty);
  EXPECT_TRUE(About<Request>(sopClass).Write(pdu, &empty, more...));
  ExpectOneCommand(association.peer.Received());
  EXPECT_NE(pdu->Link.Connected, 0);
}

/// The same of a response to a query. `more` stand in front of its data set.
template <class Response, class... More>
void ExpectResponseRefused(More... more) {
  Association association(kMessageContexts);
  PDU_Service* const pdu = &association.pdu;
  DICOMCommandObject request;
  FillReceived(request, kFind);
  EXPECT_FALSE(About<Response>(kFind).Write(nullptr, &request, 0, more...));
  EXPECT_FALSE(About<Response>(kFind).Write(pdu, nullptr, 0, more...));
  EXPECT_FALSE(About<Response>("").Write(pdu, &request, 0, more...));
  EXPECT_TRUE(association.peer.Received().empty());
  DICOMDataObject empty;
  FillWithNothingToSend(empty);
  EXPECT_TRUE(About<Response>(kFind).Write(pdu, &request, 0xFF00, more..., &empty));
  ExpectOneCommand(association.peer.Received());
}

/// Expects that the link is closed behind the command of a request whose identifier cannot be encoded: the peer would take any other
/// message for it.
template <class Request, class... More>
void ExpectLinkClosedBehind(const Command& command, More... more) {
  Association association({{5, kFind, "1.2.3"}});
  DICOMDataObject object;
  FillIdentifier(object);
  SetIdentifierCounter(9);
  EXPECT_FALSE(About<Request>(kFind).Write(&association.pdu, &object, more...));
  EXPECT_EQ(Words(association.pdu), "Bad Transfer Syntax[1.2.3], codec not found");
  EXPECT_EQ(association.peer.ReceiveToEnd(), Data(5, kWholeCommand, command));
}

}  // namespace tessaret::test
