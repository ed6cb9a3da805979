// Each message as bytes on the wire, and how each is known.
#include <gtest/gtest.h>

#include "net/c_echo.h"
#include "net/c_store.h"
#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/query_messages.h"
#include "net/scripted_peer.h"

namespace tessaret::test {
namespace {

const std::vector<Agreed> kContexts = {
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

void PutText(DICOMObject& object, std::uint16_t group, std::uint16_t element,
             std::string_view text) {
  PutBytes(object, group, element, type_code::LO, text);
}

/// An identifier, and its bytes.
void FillIdentifier(DICOMObject& object) { PutText(object, 0x0010, 0x0010, "A*"); }
Bytes IdentifierBytes() { return Elements().Text(0x0010, 0x0010, "A*"); }

/// A request as it was received.
void FillRequest(DICOMCommandObject& request, std::string_view sopClass) {
  PutUid(request, 0, 0x0002, sopClass);
  PutNumber16(request, 0, 0x0110, 0x1234);
  PutNumber16(request, 0, 0x0700, 1);
  PutNumber16(request, 0, 0x0800, 0x0102);
}

// --- requests ---

TEST(Requests, OfCEcho) {
  Association association(kContexts);
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
}

TEST(Requests, TakeTheirIdentifiersFromOneCounter) {
  Association first(kContexts);
  Association second(kContexts);
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

TEST(Requests, OfCStore) {
  for (const bool hasInstance : {true, false}) {
    Association association(kContexts);
    About<CStoreRQ> message(kCt);
    DICOMDataObject object;
    if (hasInstance) PutUid(object, 0x0008, 0x0018, "1.2.3");
    FillIdentifier(object);
    SetIdentifierCounter(9);
    EXPECT_TRUE(message.Write(&association.pdu, &object));
    EXPECT_TRUE(object.IsEmpty());
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

TEST(Requests, OfCFind) {
  Association association(kContexts);
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

TEST(Requests, OfCMove) {
  for (const std::string_view destination : {"ODD", "EVEN"}) {
    Association association(kContexts);
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

TEST(Requests, OfCGetWithAnIdentifierOrWithout) {
  for (const bool hasIdentifier : {true, false}) {
    Association association(kContexts);
    About<CGetRQ> message(kFind);
    DICOMDataObject object;
    FillIdentifier(object);
    SetIdentifierCounter(9);
    EXPECT_TRUE(message.Write(&association.pdu, hasIdentifier ? &object : nullptr));
    const std::uint16_t kind = hasIdentifier ? 0x0102 : 0x0101;
    const Bytes command = Data(5, kWholeCommand,
                               Command()
                                   .Uid(0x0002, kFind)
                                   .Number(0x0100, 0x0010)
                                   .Number(0x0110, 9)
                                   .Number(0x0700, 0)
                                   .Number(0x0800, kind));
    EXPECT_EQ(association.peer.Received(),
              hasIdentifier ? Joined({command, Data(5, kLastPart, IdentifierBytes())}) : command);
  }
}

TEST(Requests, OfCCancelGoOnTheContextOfTheLastMessage) {
  Association association(kContexts);
  association.pdu.PDataTF.MessagePresentationContextID = 7;  // whatever it is
  EXPECT_TRUE(CCancelRQ::Write(&association.pdu, 0xABCD));
  EXPECT_EQ(association.peer.Received(),
            Data(7, kWholeCommand,
                 Command().Number(0x0100, 0x0FFF).Number(0x0120, 0xABCD).Number(0x0800, 0x0101)));
}

TEST(Requests, AreRefusedWithoutWhatTheyNeed) {
  Association association(kContexts);
  DICOMDataObject object;
  FillIdentifier(object);
  PDU_Service* const pdu = &association.pdu;
  EXPECT_FALSE(About<CEchoRQ>(kEcho).Write(nullptr));
  EXPECT_FALSE(About<CEchoRQ>("").Write(pdu));
  EXPECT_FALSE(About<CStoreRQ>(kCt).Write(nullptr, &object));
  EXPECT_FALSE(About<CStoreRQ>(kCt).Write(pdu, nullptr));
  EXPECT_FALSE(About<CStoreRQ>("").Write(pdu, &object));
  EXPECT_FALSE(About<CFindRQ>(kFind).Write(nullptr, &object));
  EXPECT_FALSE(About<CFindRQ>(kFind).Write(pdu, nullptr));
  EXPECT_FALSE(About<CFindRQ>("").Write(pdu, &object));
  EXPECT_FALSE(About<CMoveRQ>(kFind).Write(nullptr, &object, "X"));
  EXPECT_FALSE(About<CMoveRQ>(kFind).Write(pdu, nullptr, "X"));
  EXPECT_FALSE(About<CMoveRQ>("").Write(pdu, &object, "X"));
  EXPECT_FALSE(About<CGetRQ>(kFind).Write(nullptr, &object));
  EXPECT_FALSE(About<CGetRQ>("").Write(pdu, &object));
  EXPECT_FALSE(CCancelRQ::Write(nullptr, 1));
  EXPECT_TRUE(association.peer.Received().empty());
  EXPECT_FALSE(About<CEchoRQ>("1.2.3").Write(pdu));
  EXPECT_EQ(Words(*pdu), "SOP Class not supported [1.2.3]");
}

// --- responses ---

TEST(Responses, OfCEchoTakeTheirElementsOutOfTheRequest) {
  Association association(kContexts);
  About<CEchoRSP> message(kEcho);
  DICOMCommandObject request;
  FillRequest(request, kEcho);
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

TEST(Responses, OfCEchoAreForTheirOwnClassAlone) {
  Association association(kContexts);
  About<CEchoRSP> message(kEcho);
  DICOMCommandObject request;
  FillRequest(request, kCt);
  EXPECT_FALSE(message.Write(&association.pdu, &request));
  DICOMCommandObject nothing;
  EXPECT_FALSE(message.Write(&association.pdu, &nothing));
  EXPECT_FALSE(message.Write(&association.pdu, nullptr));
  EXPECT_FALSE(message.Write(nullptr, &request));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Responses, OfCStore) {
  Association association(kContexts);
  About<CStoreRSP> message("");
  DICOMCommandObject request;
  FillRequest(request, kCt);
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
  EXPECT_FALSE(message.Write(&association.pdu, &request, 0));  // its class is gone
  EXPECT_FALSE(message.Write(&association.pdu, nullptr, 0));
  EXPECT_FALSE(message.Write(nullptr, &request, 0));
}

/// The elements that responses of queries have in common.
Command QueryResponse(std::uint16_t field, bool hasData, std::uint16_t status) {
  return Command()
      .Uid(0x0002, kFind)
      .Number(0x0100, field)
      .Number(0x0110, 0x1234)
      .Number(0x0120, 0x1234)
      .Number(0x0700, 1)
      .Number(0x0800, hasData ? 0x0102 : 0x0101)
      .Number(0x0900, status);
}

TEST(Responses, OfCFind) {
  Association association(kContexts);
  About<CFindRSP> message(kFind);
  DICOMCommandObject request;
  FillRequest(request, kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xFF00, &object));
  EXPECT_EQ(association.peer.Received(),
            Joined({Data(5, kWholeCommand, QueryResponse(0x8020, true, 0xFF00)),
                    Data(5, kLastPart, IdentifierBytes())}));
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0));
  EXPECT_EQ(association.peer.Received(), Data(5, kWholeCommand, QueryResponse(0x8020, false, 0)));
  EXPECT_NE(request.GetVR(0, 0x0002), nullptr);  // copied, for there are several
}

TEST(Responses, OfCMoveAndCGetHaveCounters) {
  const RetrieveCounters counters{.remaining = 1, .completed = 2, .failed = 3, .warning = 0xFFFF};
  Association association(kContexts);
  DICOMCommandObject request;
  FillRequest(request, kFind);
  About<CMoveRSP> move(kFind);
  EXPECT_TRUE(move.Write(&association.pdu, &request, 0xFF00, counters));
  const auto counted = [](Command command) {
    return command.Number(0x1020, 1).Number(0x1021, 2).Number(0x1022, 3).Number(0x1023, 0xFFFF);
  };
  EXPECT_EQ(association.peer.Received(),
            Data(5, kWholeCommand, counted(QueryResponse(0x8021, false, 0xFF00))));
  About<CGetRSP> get(kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_TRUE(get.Write(&association.pdu, &request, 0xB000, counters, &object));
  EXPECT_EQ(association.peer.Received(),
            Joined({Data(5, kWholeCommand, counted(QueryResponse(0x8010, true, 0xB000))),
                    Data(5, kLastPart, IdentifierBytes())}));
}

TEST(Responses, CopyInitiatorAndReceiverAndTakeAPriorityThatIsMissingForZero) {
  Association association(kContexts);
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

TEST(Responses, AreRefusedWithoutWhatTheyNeed) {
  Association association(kContexts);
  DICOMCommandObject request;
  FillRequest(request, kFind);
  PDU_Service* const pdu = &association.pdu;
  EXPECT_FALSE(About<CFindRSP>(kFind).Write(nullptr, &request, 0));
  EXPECT_FALSE(About<CFindRSP>(kFind).Write(pdu, nullptr, 0));
  EXPECT_FALSE(About<CFindRSP>("").Write(pdu, &request, 0));
  EXPECT_FALSE(About<CMoveRSP>(kFind).Write(nullptr, &request, 0, {}));
  EXPECT_FALSE(About<CMoveRSP>(kFind).Write(pdu, nullptr, 0, {}));
  EXPECT_FALSE(About<CGetRSP>("").Write(pdu, &request, 0, {}));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Responses, SendNothingWhereTheirDataCannotBeEncoded) {
  Association association({{5, kFind, "1.2.3"}});
  DICOMCommandObject request;
  FillRequest(request, kFind);
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_FALSE(About<CFindRSP>(kFind).Write(&association.pdu, &request, 0xFF00, &object));
  EXPECT_TRUE(association.peer.Received().empty());
}

// --- how they are known ---

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
      Association association(kContexts);
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
    Association association(kContexts);
    association.peer.EndSending();
    DICOMCommandObject command;
    PutNumber16(command, 0, 0x0100, kind.field);
    DICOMDataObject object;
    EXPECT_FALSE(kind.read(command, &association.pdu, &object)) << kind.name;
  }
}

TEST(StoreResponse, KeepsStatusAndTheCommentOfAFailure) {
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

  DICOMCommandObject stored;
  PutNumber16(stored, 0, 0x0100, 0x8001);
  PutText(stored, 0, 0x0902, "fine");
  EXPECT_TRUE(message.Read(stored));
  EXPECT_EQ(message.Status, 0);
  EXPECT_EQ(message.ErrorComment, nullptr);
  EXPECT_NE(stored.GetVR(0, 0x0902), nullptr);

  DICOMCommandObject other;
  PutNumber16(other, 0, 0x0100, 0x8030);
  EXPECT_FALSE(message.Read(other));
}

TEST(Cancel, IsLookedForWithoutWaiting) {
  Association association(kContexts);
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

// --- elements ---

TEST(CommandElements, TakeNumbersOfTheirOwnLengthOnly) {
  DICOMDataObject object;
  PutNumber16(object, 0x0028, 0x0010, 0x1234);
  PutNumber32(object, 0x0028, 0x0011, 0x1234);
  PutBytes(object, 0x0028, 0x0012, type_code::US, "");
  EXPECT_EQ(Number16(object, 0x0028, 0x0010), 0x1234);
  EXPECT_EQ(Number16(object, 0x0028, 0x0011), std::nullopt);
  EXPECT_EQ(Number16(object, 0x0028, 0x0012), std::nullopt);
  EXPECT_EQ(Number16(object, 0x0028, 0x0013), std::nullopt);
}

TEST(CommandElements, TakeUidsOfAtMost64BytesWithoutTheirPad) {
  const auto uidOf = [](std::string_view value) {
    DICOMDataObject object;
    auto* bytes = new std::uint8_t[value.size() + 1];
    std::copy(value.begin(), value.end(), bytes);
    object.Push(new VR(0x0008, 0x0016, static_cast<std::uint32_t>(value.size()), bytes));
    const auto uid = UidOf(object, 0x0008, 0x0016);
    return uid ? std::string(uid->Text.data(), uid->Size) : "refused";
  };
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(uidOf("1.2.3\0"sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3 "sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3x"sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3."sv), "1.2.3.");
  EXPECT_EQ(uidOf("1.2.34"sv), "1.2.34");
  EXPECT_EQ(uidOf("1.2.3\0\0"sv), "1.2.3\0"sv);
  EXPECT_EQ(uidOf(""sv), "refused");
  EXPECT_EQ(uidOf(std::string(64, '1')), std::string(64, '1'));
  EXPECT_EQ(uidOf(std::string(65, '1')), "refused");
  EXPECT_EQ(UidOf(DICOMDataObject(), 0x0008, 0x0016), std::nullopt);
}

}  // namespace
}  // namespace tessaret::test
