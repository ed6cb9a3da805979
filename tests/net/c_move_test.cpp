#include "net/c_move.h"

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CMoveRequest, IsThisOnTheWire) {
  for (const std::string_view destination : {"ODD", "EVEN"}) {
    Association association(kMessageContexts);
    About<CMoveRQ> message(kFind);
    DICOMDataObject object;
    FillIdentifier(object);
    SetIdentifierCounter(9);
    EXPECT_TRUE(message.Write(&association.pdu, &object, destination));
    EXPECT_EQ(message.MessageID, 9);
    EXPECT_EQ(association.peer.Received(), Joined({Data(5, kWholeCommand,
                                                        Command()
                                                            .Uid(0x0002, kFind)
                                                            .Number(0x0100, 0x0021)
                                                            .Number(0x0110, 9)
                                                            .Text(0x0600, destination)
                                                            .Number(0x0700, 0)
                                                            .Number(0x0800, 0x0102)),
                                                   Data(5, kLastPart, IdentifierBytes())}));
  }
}

TEST(CMoveRequest, IsRefusedWithoutWhatItNeeds) {
  Association association(kMessageContexts);
  DICOMDataObject object;
  FillIdentifier(object);
  PDU_Service* const pdu = &association.pdu;
  EXPECT_FALSE(About<CMoveRQ>(kFind).Write(nullptr, &object, "X"));
  EXPECT_FALSE(About<CMoveRQ>(kFind).Write(pdu, nullptr, "X"));
  EXPECT_FALSE(About<CMoveRQ>("").Write(pdu, &object, "X"));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(CMoveRequest, ClosesTheLinkWhereItsIdentifierCannotBeEncoded) {
  Association association({{5, kFind, "1.2.3"}});
  DICOMDataObject object;
  FillIdentifier(object);
  SetIdentifierCounter(9);
  EXPECT_FALSE(About<CMoveRQ>(kFind).Write(&association.pdu, &object, "X"));
  EXPECT_EQ(Words(association.pdu), "Bad Transfer Syntax[1.2.3], codec not found");
  // The command has gone, and the peer would take any other message for the identifier.
  EXPECT_EQ(association.peer.ReceiveToEnd(), Data(5, kWholeCommand,
                                                  Command()
                                                      .Uid(0x0002, kFind)
                                                      .Number(0x0100, 0x0021)
                                                      .Number(0x0110, 9)
                                                      .Text(0x0600, "X")
                                                      .Number(0x0700, 0)
                                                      .Number(0x0800, 0x0102)));
}

}  // namespace
}  // namespace tessaret::test
