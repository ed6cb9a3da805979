#include "net/c_cancel.h"

#include <gtest/gtest.h>

#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CCancel, GoesOnTheContextOfTheLastMessage) {
  Association association(kMessageContexts);
  association.pdu.PDataTF.MessagePresentationContextID = 7;  // whatever it is
  EXPECT_TRUE(CCancelRQ::Write(&association.pdu, 0xABCD));
  EXPECT_EQ(association.peer.Received(),
            Data(7, kWholeCommand,
                 Command().Number(0x0100, 0x0FFF).Number(0x0120, 0xABCD).Number(0x0800, 0x0101)));
}

TEST(CCancel, IsRefusedWithoutAnAssociation) { EXPECT_FALSE(CCancelRQ::Write(nullptr, 1)); }

TEST(CCancel, IsLookedForWithoutWaiting) {
  Association association(kMessageContexts);
  DICOMCommandObject command;
  EXPECT_FALSE(CCancelRQ::Read(&association.pdu, command));
  EXPECT_FALSE(CCancelRQ::Read(nullptr, command));
  association.peer.Send(Data(5, kWholeCommand, Command().Number(0x0100, 0x0FFF).Number(0x0120, 1)));
  EXPECT_TRUE(CCancelRQ::Read(&association.pdu, command));
  EXPECT_EQ(CommandNumber(command, 0x0120), 1);
  // Two in one go: the second one is waiting in memory.
  const Bytes echo = Data(1, kWholeCommand, Command().Number(0x0100, 0x0030));
  const Bytes cancel = Data(5, kWholeCommand, Command().Number(0x0100, 0x0FFF));
  association.peer.Send(Joined({echo, cancel}));
  DICOMCommandObject first;
  EXPECT_FALSE(CCancelRQ::Read(&association.pdu, first));
  EXPECT_EQ(CommandNumber(first, 0x0100), 0x0030);
  DICOMCommandObject second;
  EXPECT_TRUE(CCancelRQ::Read(&association.pdu, second));
  DICOMCommandObject none;
  EXPECT_FALSE(CCancelRQ::Read(&association.pdu, none));
  association.peer.EndSending();
  EXPECT_FALSE(CCancelRQ::Read(&association.pdu, none));
  EXPECT_EQ(association.pdu.Link.Connected, 0);
}

}  // namespace
}  // namespace tessaret::test
