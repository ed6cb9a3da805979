#include "net/c_store.h"

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CStoreRequest, IsThisOnTheWire) {
  for (const bool hasInstance : {true, false}) {
    Association association(kMessageContexts);
    About<CStoreRQ> message(kCt);
    DICOMDataObject object;
    if (hasInstance) PutUid(object, 0x0008, 0x0018, "1.2.3");
    FillIdentifier(object);
    SetIdentifierCounter(9);
    EXPECT_TRUE(message.Write(&association.pdu, &object));
    EXPECT_TRUE(object.IsEmpty());
    EXPECT_EQ(message.MessageID, 9);
    Command command;
    command.Uid(0x0002, kCt)
        .Number(0x0100, 0x0001)
        .Number(0x0110, 9)
        .Number(0x0700, 0)
        .Number(0x0800, 0x0102);
    if (hasInstance) command.Uid(0x1000, "1.2.3");
    const Bytes instance = hasInstance ? Elements().Uid(0x0008, 0x0018, "1.2.3").Done() : Bytes{};
    EXPECT_EQ(association.peer.Received(),
              Joined({Data(3, kWholeCommand, command),
                      Data(3, kLastPart, Joined({instance, IdentifierBytes()}))}));
  }
}

TEST(CStoreRequest, IsRefusedWithoutWhatItNeeds) {
  ExpectRequestRefused<CStoreRQ>(kCt, DataSetOf::kNeeded);
}

TEST(CStoreResponse, TakesItsElementsOutOfTheRequest) {
  Association association(kMessageContexts);
  About<CStoreRSP> message("");
  DICOMCommandObject request;
  FillReceived(request, kCt);
  PutUid(request, 0, 0x1000, "1.2.3");
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xA700));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kCt)
                                                  .Number(0x0100, 0x8001)
                                                  .Number(0x0120, 0x1234)
                                                  .Number(0x0800, 0x0101)
                                                  .Number(0x0900, 0xA700)
                                                  .Uid(0x1000, "1.2.3")));
  EXPECT_EQ(request.GetVR(0, 0x1000), nullptr);
  // Its class and instance are gone, and the sender waits all the same.
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand,
                                              Command()
                                                  .Number(0x0100, 0x8001)
                                                  .Number(0x0120, 0x1234)
                                                  .Number(0x0800, 0x0101)
                                                  .Number(0x0900, 0)));
  EXPECT_FALSE(message.Write(&association.pdu, nullptr, 0));
  EXPECT_FALSE(message.Write(nullptr, &request, 0));
}

TEST(CStoreResponse, KeepsStatusAndTheCommentOfAFailure) {
  About<CStoreRSP> message(kCt);
  DICOMCommandObject failed;
  PutNumber16(failed, 0, 0x0100, 0x8001);
  PutNumber16(failed, 0, 0x0900, 0xA700);
  PutText(failed, 0, 0x0902, "full");
  EXPECT_TRUE(message.Read(failed));
  EXPECT_EQ(message.Status, 0xA700);
  EXPECT_EQ(message.GetStatus(), 0xA700);
  ASSERT_NE(message.ErrorComment, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(message.ErrorComment->Data),
                        message.ErrorComment->Length),
            "full");
  EXPECT_EQ(failed.GetVR(0, 0x0902), nullptr);

  DICOMCommandObject other;
  PutNumber16(other, 0, 0x0100, 0x8030);
  EXPECT_FALSE(message.Read(other));
  EXPECT_EQ(message.ErrorComment, nullptr);  // of the response before

  DICOMCommandObject stored;
  PutNumber16(stored, 0, 0x0100, 0x8001);
  PutText(stored, 0, 0x0902, "fine");
  EXPECT_TRUE(message.Read(stored));
  EXPECT_EQ(message.Status, 0);
  EXPECT_EQ(message.ErrorComment, nullptr);
  EXPECT_NE(stored.GetVR(0, 0x0902), nullptr);
}

TEST(CStoreResponse, SaysZeroWhereTheRequestHasNoMessageId) {
  Association association(kMessageContexts);
  DICOMCommandObject request;
  PutUid(request, 0, 0x0002, kCt);
  PutNumber32(request, 0, 0x0110, 5);  // of another length
  PutItems(request, 0x1000);
  EXPECT_TRUE(About<CStoreRSP>("").Write(&association.pdu, &request, 0));
  EXPECT_EQ(association.peer.Received(), Data(3, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kCt)
                                                  .Number(0x0100, 0x8001)
                                                  .Number(0x0120, 0)
                                                  .Number(0x0800, 0x0101)
                                                  .Number(0x0900, 0)));
}

TEST(CStoreResponse, TakesAStatusOfAnotherLengthForSuccess) {
  About<CStoreRSP> message(kCt);
  message.Status = 1;
  DICOMCommandObject response;
  PutNumber16(response, 0, 0x0100, 0x8001);
  PutNumber32(response, 0, 0x0900, 0xA700);
  EXPECT_TRUE(message.Read(response));
  EXPECT_EQ(message.Status, 0);
}

TEST(CStoreRequest, SendsNothingWhereTheObjectCannotBeEncoded) {
  Association association({{3, kCt, "1.2.3"}});
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_FALSE(About<CStoreRQ>(kCt).Write(&association.pdu, &object));
  EXPECT_TRUE(association.peer.Received().empty());
  EXPECT_EQ(Words(association.pdu), "Bad Transfer Syntax[1.2.3], codec not found");
}

}  // namespace
}  // namespace tessaret::test
