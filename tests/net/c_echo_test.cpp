#include "net/c_echo.h"

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CEchoRequest, IsThisOnTheWire) {
  Association association(kMessageContexts);
  About<CEchoRQ> message(kEcho);
  SetIdentifierCounter(0x10006);
  EXPECT_TRUE(message.Write(&association.pdu));
  // 0x10006 is even, so 0x10007 is taken, of which two bytes count.
  EXPECT_EQ(association.peer.Received(), Data(1, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kEcho)
                                                  .Number(0x0100, 0x0030)
                                                  .Number(0x0110, 7)
                                                  .Number(0x0800, 0x0101)));
  EXPECT_EQ(IdentifierCounter(), 0x10008u);
  EXPECT_EQ(message.MessageID, 7);
}

TEST(CEchoRequest, TakesItsIdentifierFromTheCounterOfAllAssociations) {
  Association first(kMessageContexts);
  Association second(kMessageContexts);
  About<CEchoRQ> message(kEcho);
  SetIdentifierCounter(1);
  for (Association* association : {&first, &second, &first})
    EXPECT_TRUE(message.Write(&association->pdu));
  const auto echo = [](std::uint16_t id) {
    return Data(1, kWholeCommand,
                Command()
                    .Uid(0x0002, kEcho)
                    .Number(0x0100, 0x0030)
                    .Number(0x0110, id)
                    .Number(0x0800, 0x0101));
  };
  EXPECT_EQ(first.peer.Received(), Joined({echo(1), echo(5)}));
  EXPECT_EQ(second.peer.Received(), echo(3));
}

TEST(CEchoRequest, IsRefusedWithoutWhatItNeeds) {
  Association association(kMessageContexts);
  PDU_Service* const pdu = &association.pdu;
  EXPECT_FALSE(About<CEchoRQ>(kEcho).Write(nullptr));
  EXPECT_FALSE(About<CEchoRQ>("").Write(pdu));
  EXPECT_FALSE(About<CEchoRQ>("1.2.3").Write(pdu));
  EXPECT_EQ(Words(*pdu), "SOP Class not supported [1.2.3]");
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(CEchoResponse, TakesItsElementsOutOfTheRequest) {
  Association association(kMessageContexts);
  About<CEchoRSP> message(kEcho);
  DICOMCommandObject request;
  FillReceived(request, kEcho);
  EXPECT_TRUE(message.Write(&association.pdu, &request));
  EXPECT_EQ(association.peer.Received(), Data(1, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kEcho)
                                                  .Number(0x0100, 0x8030)
                                                  .Number(0x0120, 0x1234)
                                                  .Number(0x0800, 0x0102)
                                                  .Number(0x0900, 0)));
  EXPECT_EQ(request.GetVR(0, 0x0002), nullptr);
  EXPECT_EQ(request.GetVR(0, 0x0110), nullptr);
  EXPECT_EQ(request.GetVR(0, 0x0800), nullptr);
}

TEST(CEchoResponse, IsForItsOwnClassAlone) {
  Association association(kMessageContexts);
  About<CEchoRSP> message(kEcho);
  DICOMCommandObject request;
  FillReceived(request, kCt);
  EXPECT_FALSE(message.Write(&association.pdu, &request));
  DICOMCommandObject nothing;
  EXPECT_FALSE(message.Write(&association.pdu, &nothing));
  EXPECT_FALSE(message.Write(&association.pdu, nullptr));
  EXPECT_FALSE(message.Write(nullptr, &request));
  DICOMCommandObject own;
  FillReceived(own, kEcho);
  EXPECT_FALSE(About<CEchoRSP>("").Write(&association.pdu, &own));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(CEchoResponse, LeavesOutWhatTheRequestHasInAnotherLength) {
  Association association(kMessageContexts);
  DICOMCommandObject request;
  PutUid(request, 0, 0x0002, kEcho);
  PutNumber32(request, 0, 0x0110, 5);
  PutText(request, 0, 0x0800, "none");
  EXPECT_TRUE(About<CEchoRSP>(kEcho).Write(&association.pdu, &request));
  EXPECT_EQ(association.peer.Received(),
            Data(1, kWholeCommand,
                 Command().Uid(0x0002, kEcho).Number(0x0100, 0x8030).Number(0x0900, 0)));
}

}  // namespace
}  // namespace tessaret::test
