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
  ExpectRequestRefused<CMoveRQ>(kFind, DataSetOf::kNeeded, "X");
}

TEST(CMoveRequest, ClosesTheLinkWhereItsIdentifierCannotBeEncoded) {
  const Command command = Command()
                              .Uid(0x0002, kFind)
                              .Number(0x0100, 0x0021)
                              .Number(0x0110, 9)
                              .Text(0x0600, "X")
                              .Number(0x0700, 0)
                              .Number(0x0800, 0x0102);
  ExpectLinkClosedBehind<CMoveRQ>(command, "X");
}

}  // namespace
}  // namespace tessaret::test
