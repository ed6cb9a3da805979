// How each message is known, and what is read behind it.
#include "net/dimse_message.h"

#include <gtest/gtest.h>

#include "net/c_cancel.h"
#include "net/c_echo.h"
#include "net/c_find.h"
#include "net/c_get.h"
#include "net/c_move.h"
#include "net/c_store.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

struct Kind {
  const char* name;
  std::uint16_t field;
  bool (*test)(const DICOMCommandObject&);
  bool (*read)(const DICOMCommandObject&, PDU_Service*, DICOMDataObject*);
};

const Kind kKinds[] = {
    {"CEchoRQ", 0x0030, CEchoRQ::Test, CEchoRQ::Read},
    {"CEchoRSP", 0x8030, CEchoRSP::Test, CEchoRSP::Read},
    {"CStoreRQ", 0x0001, CStoreRQ::Test, CStoreRQ::Read},
    {"CFindRQ", 0x0020, CFindRQ::Test, CFindRQ::Read},
    {"CFindRSP", 0x8020, CFindRSP::Test, CFindRSP::Read},
    {"CMoveRQ", 0x0021, CMoveRQ::Test, CMoveRQ::Read},
    {"CMoveRSP", 0x8021, CMoveRSP::Test, CMoveRSP::Read},
    {"CGetRQ", 0x0010, CGetRQ::Test, CGetRQ::Read},
    {"CGetRSP", 0x8010, CGetRSP::Test, CGetRSP::Read},
};

TEST(Kinds, AreKnownByTheirFieldAlone) {
  for (const Kind& kind : kKinds) {
    for (const Kind& other : kKinds) {
      DICOMCommandObject command;
      PutNumber16(command, 0, 0x0100, other.field);
      EXPECT_EQ(kind.test(command), &kind == &other) << kind.name << " of a " << other.name;
      EXPECT_EQ(kind.read(command, nullptr, nullptr), &kind == &other);
    }
    DICOMCommandObject odd;
    PutNumber32(odd, 0, 0x0100, kind.field);
    EXPECT_FALSE(kind.test(odd)) << "a field of four bytes";
    DICOMCommandObject empty;
    EXPECT_FALSE(kind.test(empty));
    EXPECT_FALSE(kind.read(empty, nullptr, nullptr));
  }
  DICOMCommandObject store;
  PutNumber16(store, 0, 0x0100, 0x8001);
  EXPECT_TRUE(CStoreRSP::Test(store));
  DICOMCommandObject cancel;
  PutNumber16(cancel, 0, 0x0100, 0x0FFF);
  EXPECT_TRUE(CCancelRQ::Test(cancel));
  EXPECT_TRUE(CFindCancelRQ::Test(cancel));
  EXPECT_TRUE(CMoveCancelRQ::Test(cancel));
  EXPECT_TRUE(CGetCancelRQ::Test(cancel));
  EXPECT_FALSE(CCancelRQ::Test(store));
}

TEST(Kinds, ReadTheDataSetUnlessTheCommandSaysThatThereIsNone) {
  for (const Kind& kind : kKinds) {
    const struct {
      int type;  // -1: absent, -2: of four bytes
      bool follows;
    } rows[] = {{0x0101, false}, {0x0102, true}, {0, true}, {0xFFFF, true}, {-1, true}, {-2, true}};
    for (const auto& row : rows) {
      Association association(kMessageContexts);
      association.peer.Send(Data(5, kLastPart, IdentifierBytes()));
      DICOMCommandObject command;
      PutNumber16(command, 0, 0x0100, kind.field);
      if (row.type >= 0) PutNumber16(command, 0, 0x0800, static_cast<std::uint16_t>(row.type));
      if (row.type == -2) PutNumber32(command, 0, 0x0800, 0x0101);
      DICOMDataObject object;
      EXPECT_TRUE(kind.read(command, nullptr, &object));
      EXPECT_TRUE(kind.read(command, &association.pdu, nullptr));
      EXPECT_TRUE(kind.read(command, &association.pdu, &object)) << kind.name;
      EXPECT_EQ(object.GetVR(0x0010, 0x0010) != nullptr, row.follows) << kind.name << row.type;
    }
    Association association(kMessageContexts);
    association.peer.EndSending();
    DICOMCommandObject command;
    PutNumber16(command, 0, 0x0100, kind.field);
    DICOMDataObject object;
    EXPECT_FALSE(kind.read(command, &association.pdu, &object)) << kind.name;
  }
}

TEST(Kinds, TakeNoCommandForTheDataSet) {
  for (const Kind& kind : kKinds) {
    Association association(kMessageContexts);
    association.peer.Send(Data(5, kWholeCommand, Command().Number(0x0100, kind.field)));
    DICOMCommandObject command;
    PutNumber16(command, 0, 0x0100, kind.field);
    DICOMDataObject object;
    EXPECT_FALSE(kind.read(command, &association.pdu, &object)) << kind.name;
    EXPECT_EQ(Words(association.pdu), "Got a command where a data set was announced");
  }
}

TEST(Messages, TakeNoElementsWithItems) {
  DICOMCommandObject request;
  PutItems(request, 0x0200);
  PutItems(request, 0x1000);
  ASSERT_NE(request.GetVR(0, 0x0200)->Items, nullptr);
  DICOMCommandObject response;
  CopyElement(request, response, 0x0200);
  MoveElement(request, 0x1000, response, 0x1000);
  MoveElement(request, 0x0110, response, 0x0120);  // not there
  CopyElement(request, response, 0x0300);
  EXPECT_TRUE(response.IsEmpty());
}

TEST(Messages, MoveNumbersOfTwoBytesAlone) {
  DICOMCommandObject request;
  PutNumber32(request, 0, 0x0110, 7);
  PutNumber16(request, 0, 0x0800, 0x0101);
  DICOMCommandObject response;
  MoveNumber(request, 0x0110, response, 0x0120);
  MoveNumber(request, 0x0700, response, 0x0700);
  EXPECT_TRUE(response.IsEmpty());
  MoveNumber(request, 0x0800, response, 0x0800);
  EXPECT_EQ(CommandNumber(response, 0x0800), 0x0101);
  EXPECT_EQ(request.GetVR(0, 0x0800), nullptr);
}

TEST(Kinds, LeaveTheAssociationAloneWhereTheFieldIsAnother) {
  for (const Kind& kind : kKinds) {
    Association association(kMessageContexts);
    association.peer.Send(Data(5, kLastPart, IdentifierBytes()));
    DICOMCommandObject command;
    PutNumber16(command, 0, 0x0100, 0x0FFF);
    DICOMDataObject object;
    EXPECT_FALSE(kind.read(command, &association.pdu, &object)) << kind.name;
    EXPECT_EQ(association.pdu.Read(object), 5) << "it still waits";
  }
}

}  // namespace
}  // namespace tessaret::test
