#include "net/standard_retrieve.h"

#include <filesystem>
#include <stdexcept>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/service_helpers.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// A retrieval of the files that it is given, which writes down what it is asked and told.
template <class Retrieve>
class MovingIn : public Retrieve {
 public:
  bool FindDestination(std::string_view destination, PeerAddress& address) override {
    asked += "find[" + std::string(destination) + "]";
    if (throws == "find") throw std::runtime_error("no");
    address = {"127.0.0.1", port};
    return !port.empty();
  }
  bool PrepareMove(std::string_view destination, DICOMDataObject& identifier,
                   std::vector<std::string>& instances, std::uint16_t& count) override {
    asked += "prepare[" + std::string(destination) + "," + NameIn(identifier) + "]";
    if (throws == "prepare") throw std::runtime_error("no");
    instances = files;
    count = static_cast<std::uint16_t>(files.size());
    return !isUnknown;
  }
  bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    told += (command == nullptr ? "query" : std::to_string(*CommandNumber(*command, 0x0900))) +
            "=" + NameIn(*data) + ";";
    return ++calls != cancelAt;
  }
  std::vector<std::string> files;
  std::string port;
  std::string throws;
  bool isUnknown = false;
  std::string asked;
  std::string told;
  int calls = 0;
  int cancelAt = 0;
};

using Moving = MovingIn<StudyRootRetrieve>;

Bytes MoveResponse(std::uint16_t status, std::uint16_t field = 0x8021) {
  return Data(7, kWholeCommand,
              Command()
                  .Uid(0x0002, kMove)
                  .Number(0x0100, field)
                  .Number(0x0120, 1)
                  .Number(0x0800, 0x0101)
                  .Number(0x0900, status)
                  .Number(0x1020, 1));
}

TEST(Retrieve, HandsResponsesOnUpToTheLast) {
  const struct {
    Bytes responses;
    bool result;
    const char* told;
  } rows[] = {
      {MoveResponse(0), true, "query=Q*;0=;"},
      {MoveResponse(0xB000), true, "query=Q*;45056=;"},
      {MoveResponse(0xFE00), true, "query=Q*;65024=;"},
      {Joined({MoveResponse(0xFF00), MoveResponse(0xFF00), MoveResponse(0)}), true,
       "query=Q*;65280=;65280=;0=;"},
      {MoveResponse(0xFF01), false, "query=Q*;"},
      {MoveResponse(0xA801), false, "query=Q*;"},
      {MoveResponse(0xFF00, 0x8020), false, "query=Q*;"},
      {AbortPdu(0, 0), false, "query=Q*;"},
  };
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.SendAll(row.responses);
    Moving move;
    DICOMDataObject what;
    PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
    EXPECT_EQ(move.Write(&association.pdu, &what, "DEST"), row.result) << row.told;
    EXPECT_EQ(move.told, row.told);
    EXPECT_EQ(NameIn(what), "Q*");
  }
}

TEST(Retrieve, CancelsByItsMessageIdWhenTheCallerHasEnough) {
  Association association(kContexts);
  association.peer.Send(Joined({MoveResponse(0xFF00), MoveResponse(0)}));
  Moving move;
  move.cancelAt = 2;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  SetIdentifierCounter(31);
  EXPECT_FALSE(move.Write(&association.pdu, &what, "DEST"));
  const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
  ASSERT_EQ(sent.size(), 3u);
  EXPECT_EQ(sent[2], CancelRequest(31, 7));
  EXPECT_FALSE(move.Write(nullptr, &what, "DEST"));
  EXPECT_FALSE(move.Write(&association.pdu, nullptr, "DEST"));
}

Bytes MoveRequest(std::string_view destination, std::string_view sopClass = kMove) {
  Command command;
  command.Uid(0x0002, sopClass).Number(0x0100, 0x0021).Number(0x0110, 9);
  if (!destination.empty()) command.Text(0x0600, destination);
  command.Number(0x0700, 0).Number(0x0800, 0x0102);
  return Joined({Data(7, kWholeCommand, command), Data(7, kLastPart, NameBytes("Q*"))});
}

Bytes MoveAnswer(std::uint16_t status, std::vector<std::uint16_t> counters = {0, 0, 0, 0},
                 std::string_view comment = {}) {
  Command command;
  command.Uid(0x0002, kMove)
      .Number(0x0100, 0x8021)
      .Number(0x0110, 9)
      .Number(0x0120, 9)
      .Number(0x0700, 0)
      .Number(0x0800, 0x0101)
      .Number(0x0900, status);
  if (!comment.empty()) {
    std::string padded(comment);
    if (padded.size() % 2 != 0) padded.push_back('\0');
    command.Text(0x0902, padded);
  }
  for (std::uint16_t i = 0; i < 4; ++i)
    command.Number(static_cast<std::uint16_t>(0x1020 + i), counters[i]);
  return Data(7, kWholeCommand, command);
}

/// What our provider answers to one request.
Bytes AnswersOf(Moving& move, const Bytes& request, bool expected = true) {
  Association association(kContexts);
  association.pdu.AAssociateRQ.CalledApTitle = MakeApTitle("US");
  association.peer.Send(request);
  DICOMCommandObject command;
  EXPECT_NE(association.pdu.Read(command), 0);
  EXPECT_EQ(move.Read(&association.pdu, &command), expected);
  return association.peer.Received();
}

TEST(Retrieve, AnswersARequestWithoutADestination) {
  Moving move;
  EXPECT_EQ(AnswersOf(move, MoveRequest("")), MoveAnswer(0xC001));
  EXPECT_EQ(move.asked, "");
}

TEST(Retrieve, CutsTheDestinationToSixteenBytes) {
  Moving move;
  EXPECT_EQ(AnswersOf(move, MoveRequest("ABCDEFGHIJKLMNOPQRST")),
            MoveAnswer(0xC003, {0, 0, 0, 0}, "Cannot find destination AE"));
  EXPECT_EQ(move.asked, "prepare[ABCDEFGHIJKLMNOP,Q*]find[ABCDEFGHIJKLMNOP]");
}

TEST(Retrieve, HasAnAnswerForEveryFailureBeforeTheFirstInstance) {
  const TempFolder folder;
  const Bytes object =
      DataSetBuilder(Encoding::kExplicitLittle).Element(0x0008, 0x0016, "UI", Evened(kCt));
  WriteBytes(folder.File("good"), FileOf(Encoding::kExplicitLittle, object));
  WriteBytes(folder.File("no class"),
             FileOf(Encoding::kExplicitLittle,
                    DataSetBuilder(Encoding::kExplicitLittle).Number(0x0028, 0x0010, 1)));
  const std::string gone = FreePort();
  const struct {
    const char* name;
    bool isUnknown;
    std::string port;
    std::string throws;
    std::vector<std::string> files;
    std::uint16_t status;
    const char* comment;
    std::size_t length;
  } rows[] = {
      {"nothing prepared", true, gone, "", {}, 0xC002, "Unspecified destination AE", 26},
      {"a prepare that throws",
       false,
       gone,
       "prepare",
       {},
       0xC002,
       "Unspecified destination AE",
       26},
      {"no destination", false, "", "", {}, 0xC003, "Cannot find destination AE", 26},
      {"a find that throws", false, gone, "find", {}, 0xC003, "Cannot find destination AE", 26},
      {"no file",
       false,
       gone,
       "",
       {folder.File("good"), folder.File("absent")},
       0xC004,
       "Cannot load SOP",
       15},
      {"no class", false, gone, "", {folder.File("no class")}, 0xC004, "Cannot load SOP", 15},
      {"nobody listens",
       false,
       gone,
       "",
       {folder.File("good")},
       0xC005,
       "Cannot connect to destination AE",
       32},
      {"nothing to send", false, gone, "", {}, 0xC005, "Cannot connect to destination AE", 32},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(std::string_view(row.comment).size(), row.length);
    Moving move;
    move.isUnknown = row.isUnknown;
    move.port = row.port;
    move.throws = row.throws;
    move.files = row.files;
    EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
              MoveAnswer(row.status, {0, 0, 0, 0}, row.comment))
        << row.name;
  }
}

/// A destination that takes an association for CT, and answers stores with these statuses; then closes. Writes down the types of the
/// PDUs that it received, and its request.
class Destination {
 public:
  explicit Destination(std::vector<std::uint16_t> statuses)
      : server_([this, statuses = std::move(statuses)](Peer& peer) {
          request = peer.ReceivePdu();
          // One proposal, whose identifier stands behind the application context: 74 + 4 + 21 + 4.
          peer.Send(Associate(2, "DEST", "US",
                              Joined({ApplicationItem(), AcceptItem(request.at(103), 0, kImplicit),
                                      PeersUserItem()})));
          for (const std::uint16_t status : statuses) {
            received += TypesOf(peer.ReceivePdu());
            last = peer.ReceivePdu();
            received += TypesOf(last);
            peer.Send(Data(request.at(103), kWholeCommand,
                           Command()
                               .Uid(0x0002, kCt)
                               .Number(0x0100, 0x8001)
                               .Number(0x0800, 0x0101)
                               .Number(0x0900, status)));
          }
          const Bytes rest = peer.ReceivePdu();
          if (!rest.empty()) received += TypesOf(rest);
          peer.Send(ReleaseAnswer());
        }) {}
  [[nodiscard]] const std::string& Port() const { return server_.Port(); }
  std::string Wait() { return server_.Wait(); }
  Bytes request;
  Bytes last;
  std::string received;

 private:
  ScriptedServer server_;
};

Bytes FileOfCt(std::string_view instance) {
  return FileOf(Encoding::kExplicitLittle, DataSetBuilder(Encoding::kExplicitLittle)
                                               .Element(0x0008, 0x0016, "UI", Evened(kCt))
                                               .Element(0x0008, 0x0018, "UI", Evened(instance))
                                               .Element(0x0010, 0x0010, "PN", "AA"));
}

TEST(Retrieve, SendsEachInstanceAndCountsWhatBecameOfIt) {
  const TempFolder folder;
  Moving move;
  for (const char* name : {"1.1", "1.2", "1.3"}) {
    WriteBytes(folder.File(name), FileOfCt(name));
    move.files.push_back(folder.File(name));
  }
  Destination destination({0, 0xA700, 0xB000});
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {2, 1, 0, 0}), MoveAnswer(0xFF00, {1, 1, 1, 0}),
                    MoveAnswer(0xFF00, {0, 1, 1, 1}), MoveAnswer(0, {0, 1, 1, 1})}));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "4444445");
  // From the title that we were called by, to the destination, for the one class of all instances.
  EXPECT_EQ(destination.request,
            Associate(1, "DEST", "US",
                      Joined({ApplicationItem(),
                              ContextItem({destination.request.at(103), kCt, {kImplicit}}),
                              OurUserItem()})));
  EXPECT_EQ(destination.last, Data(destination.request.at(103), kLastPart,
                                   Elements()
                                       .Uid(0x0008, 0x0016, kCt)
                                       .Uid(0x0008, 0x0018, "1.3")
                                       .Text(0x0010, 0x0010, "AA")));
}

TEST(Retrieve, CountsWhatIsLeftAsFailedWhereTheDestinationGoes) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1"), folder.File("1.1"), folder.File("1.1")};
  ScriptedServer server([](Peer& peer) {
    const Bytes request = peer.ReceivePdu();
    peer.Send(Associate(2, "DEST", "US",
                        Joined({AcceptItem(request.at(103), 0, kImplicit), PeersUserItem()})));
  });
  move.port = server.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {2, 0, 1, 0}), MoveAnswer(0xFF00, {1, 0, 2, 0}),
                    MoveAnswer(0xFF00, {0, 0, 3, 0}), MoveAnswer(0, {0, 0, 3, 0})}));
}

TEST(Retrieve, TellsOfADestinationThatRefuses) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1")};
  ScriptedServer server([](Peer& peer) {
    static_cast<void>(peer.ReceivePdu());
    peer.Send(Reject(1, 1, 7));
  });
  move.port = server.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            MoveAnswer(0xC005, {0, 0, 0, 0}, "Cannot connect to destination AE"));
}

TEST(Retrieve, CountsAFileThatHasGoneInTheMeantimeAsFailed) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1")};
  ScriptedServer server([&](Peer& peer) {
    const Bytes request = peer.ReceivePdu();
    std::filesystem::remove(folder.File("1.1"));
    peer.Send(Associate(2, "DEST", "US",
                        Joined({AcceptItem(request.at(103), 0, kImplicit), PeersUserItem()})));
    static_cast<void>(peer.ReceivePdu());
    peer.Send(ReleaseAnswer());
  });
  move.port = server.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 0, 1, 0}), MoveAnswer(0, {0, 0, 1, 0})}));
}

TEST(Retrieve, EndsWithACancelThatHasCome) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1"), folder.File("1.1")};
  Destination destination({});
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, Joined({MoveRequest("DEST"), CancelRequest(9, 7)})),
            MoveAnswer(0xFE00, {2, 0, 0, 0}));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "5");
}

TEST(Retrieve, TakesRequestsOfItsClassAndKindAlone) {
  Moving move;
  EXPECT_TRUE(AnswersOf(move, MoveRequest("DEST", kFind), false).empty());
  EXPECT_TRUE(AnswersOf(move, FindRequest(kMove), false).empty());
  EXPECT_EQ(move.asked, "");
  Association association(kContexts);
  DICOMCommandObject command;
  EXPECT_FALSE(move.Read(nullptr, &command));
  EXPECT_FALSE(move.Read(&association.pdu, nullptr));
}

TEST(Retrieve, HasAClassForEachSopClass) {
  EXPECT_EQ(UidOfService<MovingIn<PatientRootRetrieve>>(), "1.2.840.10008.5.1.4.1.2.1.2");
  EXPECT_EQ(UidOfService<Moving>(), "1.2.840.10008.5.1.4.1.2.2.2");
  EXPECT_EQ(UidOfService<MovingIn<PatientStudyOnlyRetrieve>>(), "1.2.840.10008.5.1.4.1.2.3.2");
  EXPECT_EQ(UidOfService<StandardGet>(), "1.2.840.10008.5.1.4.1.2.2.3");
  UID uid;
  Moving move;
  EXPECT_TRUE(move.GetMoveUID(uid));
  EXPECT_EQ(uid.View(), kMove);
}

}  // namespace
}  // namespace tessaret::test
