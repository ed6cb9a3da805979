#include "net/c_cancel.h"

#include <gtest/gtest.h>

#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

/// One on which a message has come, in context 3.
struct AssociationInUse : Association {
  AssociationInUse() : Association(kMessageContexts) {
    peer.Send(Data(3, kWholeCommand, Command().Number(0x0100, 0x8001)));
    DICOMCommandObject command;
    EXPECT_EQ(pdu.Read(command), 3);
  }
};

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

TEST(CCancel, HasNoContextBeforeTheFirstMessage) {
  Association association(kMessageContexts);
  EXPECT_FALSE(CCancelRQ::Write(&association.pdu, 1));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(CCancel, HasNoContextOfAnAssociationBefore) {
  AssociationInUse association;
  EXPECT_EQ(association.pdu.Connect("127.0.0.1", FreePort()), 0);
  Connection next;
  association.pdu.Link.Adopt(next.ours);
  EXPECT_FALSE(CCancelRQ::Write(&association.pdu, 1));
  EXPECT_TRUE(next.peer.Received().empty());
}

TEST(CCancel, GoesOnTheContextOfTheMessageReadLast) {
  AssociationInUse association;
  EXPECT_TRUE(CCancelRQ::Write(&association.pdu, 1));
  EXPECT_EQ(association.peer.Received(),
            Data(3, kWholeCommand,
                 Command().Number(0x0100, 0x0FFF).Number(0x0120, 1).Number(0x0800, 0x0101)));
}

TEST(CCancel, IsACommand) {
  const Bytes data = Data(5, kLastPart, Elements().Number(0, 0x0100, 0x0FFF));
  Association association(kMessageContexts);
  association.peer.Send(Joined({data, data}));
  DICOMCommandObject command;
  EXPECT_FALSE(CCancelRQ::Read(&association.pdu, command));
  EXPECT_EQ(CCancelRQ::Look(association.pdu), Interruption::kNone);
}

TEST(CCancel, IsToldFromTheEndOfTheAssociation) {
  const struct {
    Bytes sent;
    Interruption found;
  } rows[] = {
      {{}, Interruption::kNone},
      {Data(5, kWholeCommand, Command().Number(0x0100, 0x0FFF)), Interruption::kCancel},
      {Data(5, kWholeCommand, Command().Number(0x0100, 0x0030)), Interruption::kNone},
      {ReleaseRequest(), Interruption::kEnd},
      {AbortPdu(0, 0), Interruption::kEnd},
      {Pdu(4, {0, 0, 0, 1}), Interruption::kEnd},
      {{9, 9}, Interruption::kEnd},
  };
  for (const auto& row : rows) {
    Association association(kMessageContexts);
    association.peer.Send(row.sent);
    EXPECT_EQ(CCancelRQ::Look(association.pdu), row.found);
  }
  Association association(kMessageContexts);
  association.peer.EndSending();
  EXPECT_EQ(CCancelRQ::Look(association.pdu), Interruption::kEnd);
  // Closed by this side, whatever has come.
  Association closed(kMessageContexts);
  closed.peer.Send(Data(5, kWholeCommand, Command().Number(0x0100, 0x0FFF)));
  closed.pdu.Link.Close();
  EXPECT_EQ(CCancelRQ::Look(closed.pdu), Interruption::kEnd);
}

}  // namespace
}  // namespace tessaret::test
