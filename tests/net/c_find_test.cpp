#include "net/c_find.h"

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CFindRequest, IsThisOnTheWire) {
  Association association(kMessageContexts);
  About<CFindRQ> message(kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  SetIdentifierCounter(9);
  EXPECT_TRUE(message.Write(&association.pdu, &object));
  EXPECT_EQ(message.MessageID, 9);
  EXPECT_EQ(association.peer.Received(), Joined({Data(5, kWholeCommand,
                                                      Command()
                                                          .Uid(0x0002, kFind)
                                                          .Number(0x0100, 0x0020)
                                                          .Number(0x0110, 9)
                                                          .Number(0x0700, 2)
                                                          .Number(0x0800, 0x0102)),
                                                 Data(5, kLastPart, IdentifierBytes())}));
}

TEST(CFindRequest, IsRefusedWithoutWhatItNeeds) {
  ExpectRequestRefused<CFindRQ>(kFind, DataSetOf::kNeeded);
}

TEST(CFindResponse, IsThisOnTheWire) {
  Association association(kMessageContexts);
  About<CFindRSP> message(kFind);
  DICOMCommandObject request;
  FillReceived(request, kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xFF00, &object));
  EXPECT_EQ(association.peer.Received(),
            Joined({Data(5, kWholeCommand, ResponseToReceived(0x8020, true, 0xFF00)),
                    Data(5, kLastPart, IdentifierBytes())}));
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0));
  EXPECT_EQ(association.peer.Received(),
            Data(5, kWholeCommand, ResponseToReceived(0x8020, false, 0)));
  EXPECT_NE(request.GetVR(0, 0x0002), nullptr);  // copied, for there are several
}

TEST(CFindResponse, CopiesInitiatorAndReceiverAndTakesAPriorityThatIsMissingForZero) {
  Association association(kMessageContexts);
  About<CFindRSP> message(kFind);
  DICOMCommandObject request;
  PutUid(request, 0, 0x0002, kFind);
  PutText(request, 0, 0x0200, "RECEIVER");
  PutText(request, 0, 0x0300, "FROM");
  PutNumber16(request, 0, 0x0110, 7);
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xC001));
  EXPECT_EQ(association.peer.Received(), Data(5, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kFind)
                                                  .Number(0x0100, 0x8020)
                                                  .Number(0x0110, 7)
                                                  .Number(0x0120, 7)
                                                  .Text(0x0200, "RECEIVER")
                                                  .Text(0x0300, "FROM")
                                                  .Number(0x0700, 0)
                                                  .Number(0x0800, 0x0101)
                                                  .Number(0x0900, 0xC001)));
}

TEST(CFindResponse, IsRefusedWithoutWhatItNeeds) { ExpectResponseRefused<CFindRSP>(); }

TEST(CFindResponse, SendsNothingWhereItsDataCannotBeEncoded) {
  Association association({{5, kFind, "1.2.3"}});
  DICOMCommandObject request;
  FillReceived(request, kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_FALSE(About<CFindRSP>(kFind).Write(&association.pdu, &request, 0xFF00, &object));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(CFindRequest, SendsNothingWhereItsIdentifierCannotBeEncoded) {
  Association association({{1, kEcho, kImplicit}, {5, kFind, "1.2.3"}});
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_FALSE(About<CFindRQ>(kFind).Write(&association.pdu, &object));
  EXPECT_EQ(Words(association.pdu), "Bad Transfer Syntax[1.2.3], codec not found");
  EXPECT_TRUE(association.peer.Received().empty());
  EXPECT_NE(association.pdu.Link.Connected, 0) << "nothing is amiss on it";
}

TEST(CFindResponse, SaysZeroForNumbersThatTheRequestLacks) {
  Association association(kMessageContexts);
  DICOMCommandObject request;
  PutNumber32(request, 0, 0x0110, 5);  // of another length
  PutText(request, 0, 0x0700, "high");
  EXPECT_TRUE(About<CFindRSP>(kFind).Write(&association.pdu, &request, 0xC001));
  EXPECT_EQ(association.peer.Received(), Data(5, kWholeCommand,
                                              Command()
                                                  .Number(0x0100, 0x8020)
                                                  .Number(0x0110, 0)
                                                  .Number(0x0120, 0)
                                                  .Number(0x0700, 0)
                                                  .Number(0x0800, 0x0101)
                                                  .Number(0x0900, 0xC001)));
}

}  // namespace
}  // namespace tessaret::test
