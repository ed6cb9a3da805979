#include "net/standard_retrieve.h"

#include <sys/socket.h>

#include <chrono>
#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

#include "core/element_maker.h"
#include "core/module_dictionaries.h"
#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/retrieve_helpers.h"
#include "support/data_set_builder.h"
#include "support/file_failure.h"
#include "support/temp_folder.h"
#include "support/test_paths.h"

namespace tessaret::test {
namespace {

Bytes MoveResponse(std::uint16_t status, std::uint16_t field = 0x8021, std::uint16_t asked = 1) {
  return Data(7, kWholeCommand,
              Command()
                  .Uid(0x0002, kMove)
                  .Number(0x0100, field)
                  .Number(0x0120, asked)
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
    EXPECT_TRUE(!row.result || association.pdu.AbandonedMessages.empty()) << row.told;
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

TEST(Retrieve, TakesNothingThatStillComesForOneThatFailedByAPendingStatus) {
  Association association(kContexts);
  SetIdentifierCounter(31);
  association.peer.Send(Joined({MoveResponse(0xFF01, 0x8021, 31), MoveResponse(0xFF00, 0x8021, 31),
                                MoveResponse(0, 0x8021, 31), MoveResponse(0xB000, 0x8021, 32)}));
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  Moving first;
  EXPECT_FALSE(first.Write(&association.pdu, &what, "DEST"));
  EXPECT_EQ(first.told, "query=Q*;");
  EXPECT_EQ(Words(association.pdu), "The peer has answered with status 0xFF01");
  Moving second;
  EXPECT_TRUE(second.Write(&association.pdu, &what, "DEST"));
  EXPECT_EQ(second.told, "query=Q*;45056=;");
  EXPECT_TRUE(association.pdu.AbandonedMessages.empty());
}

TEST(Retrieve, CancelsItsOwnRequestThoughItsHookHasSentAnother) {
  class Asking : public Moving {
   public:
    bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject*) override {
      if (command == nullptr || isWithin_) return true;
      isWithin_ = true;
      Association other(kContexts);
      other.peer.SendAll(MoveAnswer(0));
      DICOMDataObject query;
      EXPECT_TRUE(Write(&other.pdu, &query, "DEST"));
      return false;
    }

   private:
    bool isWithin_ = false;
  };
  Association association(kContexts);
  SetIdentifierCounter(31);
  association.peer.SendAll(MoveAnswer(0xFF00));
  DICOMDataObject query;
  EXPECT_FALSE(Asking().Write(&association.pdu, &query, "DEST"));
  const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[1], CancelRequest(31, 7));
}

TEST(Retrieve, AnswersARequestWithoutADestination) {
  Moving move;
  EXPECT_EQ(AnswersOf(move, MoveRequest("")), MoveAnswer(0xC001));
  Command empty;
  empty.Uid(0x0002, kMove).Number(0x0100, 0x0021).Number(0x0110, 9).Text(0x0600, "");
  empty.Number(0x0700, 0).Number(0x0800, 0x0101);
  EXPECT_EQ(AnswersOf(move, Data(7, kWholeCommand, empty)), MoveAnswer(0xC001));
  // One that has come to hold an item has no value.
  const Bytes item = {0xFE, 0xFF, 0x00, 0xE0, 0, 0, 0, 0};
  Elements withItem;
  withItem.Uid(0x0000, 0x0002, kMove).Number(0x0000, 0x0100, 0x0021).Number(0x0000, 0x0110, 9);
  withItem.Text(0x0000, 0x0600, "DEST");
  const Bytes behind = Elements().Number(0x0000, 0x0700, 0).Number(0x0000, 0x0800, 0x0101);
  EXPECT_EQ(AnswersOf(move, Data(7, kWholeCommand, Joined({withItem, item, behind}))),
            MoveAnswer(0xC001));
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
  WriteBytes(folder.File("blanks"),
             FileOf(Encoding::kExplicitLittle,
                    DataSetBuilder(Encoding::kExplicitLittle).Element(0x0008, 0x0016, "UI", "  ")));
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
      {"blanks", false, gone, "", {folder.File("blanks")}, 0xC004, "Cannot load SOP", 15},
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

TEST(Retrieve, SendsTheSameNumbersWhateverTheOrderOfTheFile) {
  for (const Encoding encoding :
       {Encoding::kExplicitLittle, Encoding::kImplicitLittle, Encoding::kExplicitBig}) {
    SCOPED_TRACE(NameOf(encoding));
    const Bytes pixels = encoding == Encoding::kExplicitBig ? Bytes{0x01, 0x02, 0x80, 0xFF}
                                                            : Bytes{0x02, 0x01, 0xFF, 0x80};
    DataSetBuilder object(encoding);
    object.Element(0x0008, 0x0016, "UI", Evened(kCt)).Element(0x0008, 0x0018, "UI", Evened("1.1"));
    object.Number(0x0028, 0x0100, 16).Element(0x7FE0, 0x0010, "OW", pixels);
    ExpectMoved(FileOf(encoding, object), Elements()
                                              .Uid(0x0008, 0x0016, kCt)
                                              .Uid(0x0008, 0x0018, "1.1")
                                              .Number(0x0028, 0x0100, 16)
                                              .Value(0x7FE0, 0x0010, {0x02, 0x01, 0xFF, 0x80}));
  }
}

TEST(Retrieve, ReadsInstancesByTheDictionaryOfTheAssociation) {
  const auto dictionary = DictionaryOf("(0008,0018) VR=\"UI\"\n");
  const TempFolder folder;
  DataSetBuilder object(Encoding::kImplicitLittle);
  object.Element(0x0008, 0x0016, "UI", Evened(kCt)).Element(0x0008, 0x0018, "UI", "1.1 ");
  WriteBytes(folder.File("1.1"), FileOf(Encoding::kImplicitLittle, object));
  Moving move;
  move.files = {folder.File("1.1")};
  Destination destination({0});
  move.port = destination.Port();
  Association association(kContexts);
  association.pdu.AttachDictionary(dictionary.get(), false);
  association.peer.Send(MoveRequest("DEST"));
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(move.Read(&association.pdu, &command));
  EXPECT_EQ(destination.Wait(), "");
  // A blank behind a UID becomes NUL where it is known for one.
  EXPECT_EQ(destination.last,
            Data(destination.request.at(103), kLastPart,
                 Elements().Uid(0x0008, 0x0016, kCt).Value(0x0008, 0x0018, {'1', '.', '1', 0})));
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
  const FileFailure files;
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {2, 0, 1, 0}), MoveAnswer(0xFF00, {1, 0, 2, 0}),
                    MoveAnswer(0xFF00, {0, 0, 3, 0}), MoveAnswer(0, {0, 0, 3, 0})}));
  EXPECT_EQ(files.Calls(FileCall::kOpen), 4) << "three for their classes, and the first to be sent";
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

/// Expects that an instance fails of which `change` is done to its file when the destination is asked already.
void ExpectFailedBehind(const std::function<void(const std::string& path)>& change) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1")};
  ScriptedServer server([&](Peer& peer) {
    const Bytes request = peer.ReceivePdu();
    change(folder.File("1.1"));
    peer.Send(Associate(2, "DEST", "US",
                        Joined({AcceptItem(request.at(103), 0, kImplicit), PeersUserItem()})));
    static_cast<void>(peer.ReceivePdu());
    peer.Send(ReleaseAnswer());
  });
  move.port = server.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 0, 1, 0}), MoveAnswer(0, {0, 0, 1, 0})}));
}

TEST(Retrieve, CountsAFileThatHasGoneInTheMeantimeAsFailed) {
  ExpectFailedBehind([](const std::string& path) { std::filesystem::remove(path); });
}

TEST(Retrieve, CountsAFileThatHasLostItsClassInTheMeantimeAsFailed) {
  ExpectFailedBehind([](const std::string& path) {
    WriteBytes(path, FileOf(Encoding::kExplicitLittle,
                            DataSetBuilder(Encoding::kExplicitLittle).Number(0x0028, 0x0010, 1)));
  });
}

/// What our provider answers where this follows the request for so many instances, of which none is sent.
Bytes AnswersWhereItIsFollowedBy(const Bytes& next, bool expected, std::size_t instances = 2) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files.assign(instances, folder.File("1.1"));
  Destination destination({});
  move.port = destination.Port();
  const Bytes answers = AnswersOf(move, Joined({MoveRequest("DEST"), next}), expected);
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "5");
  return answers;
}

TEST(Retrieve, EndsWithACancelThatHasCome) {
  EXPECT_EQ(AnswersWhereItIsFollowedBy(CancelRequest(9, 7), true),
            MoveAnswer(0xFE00, {2, 0, 0, 0}));
}

TEST(Retrieve, SaysTheGreatestNumberWhereMoreAreLeft) {
  EXPECT_EQ(AnswersWhereItIsFollowedBy(CancelRequest(9, 7), true, 0x10001),
            MoveAnswer(0xFE00, {0xFFFF, 0, 0, 0}));
}

TEST(Retrieve, SendsNoMoreWhereItsResponsesCannotBeSent) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files.assign(3, folder.File("1.1"));
  Destination destination({0, 0, 0});
  move.port = destination.Port();
  Association association(kContexts);
  association.peer.Send(MoveRequest("DEST"));
  // It takes nothing, and does not say so.
  ::shutdown(association.peer.Descriptor(), SHUT_RD);
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_FALSE(move.Read(&association.pdu, &command));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "445");
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

TEST(Retrieve, SendsNothingAfterARelease) {
  EXPECT_EQ(AnswersWhereItIsFollowedBy(ReleaseRequest(), false), ReleaseAnswer());
}

TEST(Retrieve, GoesByTheListWhateverItsCountSays) {
  class Miscounting : public Moving {
   public:
    bool PrepareMove(std::string_view destination, DICOMDataObject& identifier,
                     std::vector<std::string>& instances, std::uint16_t& count) override {
      const bool isPrepared = Moving::PrepareMove(destination, identifier, instances, count);
      count = 100;
      return isPrepared;
    }
  };
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Miscounting move;
  move.files = {folder.File("1.1")};
  Destination destination({0});
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 1, 0, 0}), MoveAnswer(0, {0, 1, 0, 0})}));
}

TEST(Retrieve, IsNotCancelledByTheFirstCallOfItsHook) {
  Association association(kContexts);
  association.peer.Send(MoveResponse(0));
  Moving move;
  move.cancelAt = 1;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  EXPECT_TRUE(move.Write(&association.pdu, &what, "DEST"));
  EXPECT_EQ(move.told, "query=Q*;0=;");
}

TEST(Retrieve, HasTheStatusOfAFailureAsWords) {
  Association association(kContexts);
  association.peer.Send(MoveResponse(0xA801));
  Moving move;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  EXPECT_FALSE(move.Write(&association.pdu, &what, "DEST"));
  EXPECT_EQ(Words(association.pdu), "The peer has answered with status 0xA801");
}

TEST(Retrieve, GivesASilentDestinationTheTimeoutOfTheAssociationOnce) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  const struct {
    bool accepts;
    Bytes answers;
  } rows[] = {
      {false, MoveAnswer(0xC005, {0, 0, 0, 0}, "Cannot connect to destination AE")},
      {true, Joined({MoveAnswer(0xFF00, {2, 0, 1, 0}), MoveAnswer(0xFF00, {1, 0, 2, 0}),
                     MoveAnswer(0xFF00, {0, 0, 3, 0}), MoveAnswer(0, {0, 0, 3, 0})})},
  };
  for (const auto& row : rows) {
    Moving move;
    move.files = {folder.File("1.1"), folder.File("1.1"), folder.File("1.1")};
    ScriptedServer server([&](Peer& peer) {
      const Bytes request = peer.ReceivePdu();
      if (row.accepts) {
        peer.Send(Associate(2, "DEST", "US",
                            Joined({AcceptItem(request.at(103), 0, kImplicit), PeersUserItem()})));
      }
      static_cast<void>(peer.ReceiveToEnd());
    });
    move.port = server.Port();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(AnswersOf(move, MoveRequest("DEST"), true, 1), row.answers);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken.count(), 0.9);
    EXPECT_LT(taken.count(), 2.5) << "not once an instance";
    EXPECT_EQ(server.Wait(), "");
  }
}

TEST(Retrieve, CountsAFileThatCannotBeReadToItsEndAsFailed) {
  const TempFolder folder;
  Bytes cut = FileOfCt("1.1");
  cut.resize(cut.size() - 1);
  WriteBytes(folder.File("1.1"), cut);
  Moving move;
  move.files = {folder.File("1.1")};
  Destination destination({});
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 0, 1, 0}), MoveAnswer(0, {0, 0, 1, 0})}));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "5");
}

TEST(Retrieve, SendsNothingByASyntaxThatWasNotOffered) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  for (const std::string_view syntax : {"1.2.840.10008.1.2.2", "1.2.840.10008.1.2.4.50", ""}) {
    Moving move;
    move.files = {folder.File("1.1")};
    Destination destination({}, syntax);
    move.port = destination.Port();
    EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
              Joined({MoveAnswer(0xFF00, {0, 0, 1, 0}), MoveAnswer(0, {0, 0, 1, 0})}));
    EXPECT_EQ(destination.Wait(), "");
    EXPECT_EQ(destination.received, "5") << syntax;
  }
}

TEST(Retrieve, PreparesForAnythingWhereNoIdentifierFollows) {
  Moving move;
  const Bytes request = Data(7, kWholeCommand,
                             Command()
                                 .Uid(0x0002, kMove)
                                 .Number(0x0100, 0x0021)
                                 .Number(0x0110, 9)
                                 .Text(0x0600, "DEST")
                                 .Number(0x0700, 0)
                                 .Number(0x0800, 0x0101));
  EXPECT_EQ(AnswersOf(move, request),
            MoveAnswer(0xC003, {0, 0, 0, 0}, "Cannot find destination AE"));
  EXPECT_EQ(move.asked, "prepare[DEST,]find[DEST]");
}

TEST(Retrieve, SendsByTheExplicitNameWhereThatIsWhatTheDestinationTook) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1")};
  Destination destination({0}, kExplicit);
  move.port = destination.Port();
  EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
            Joined({MoveAnswer(0xFF00, {0, 1, 0, 0}), MoveAnswer(0, {0, 1, 0, 0})}));
  EXPECT_EQ(destination.Wait(), "");
  EXPECT_EQ(destination.received, "445");
  EXPECT_EQ(destination.last, Data(destination.request.at(103), kLastPart,
                                   DataSetBuilder(Encoding::kExplicitLittle)
                                       .Element(0x0008, 0x0016, "UI", Evened(kCt))
                                       .Element(0x0008, 0x0018, "UI", Evened("1.1"))
                                       .Element(0x0010, 0x0010, "PN", "AA")
                                       .Done()));
}

TEST(Retrieve, SendsAValueTooLongForTheExplicitFormOfItsTypeWhole) {
  const TempFolder folder;
  // (3006,0050), contour data, is DS, for whose length there are two bytes.
  const std::string contour(65536, '2');
  WriteBytes(folder.File("1.1"),
             FileOf(Encoding::kImplicitLittle, DataSetBuilder(Encoding::kImplicitLittle)
                                                   .Element(0x0008, 0x0016, "UI", Evened(kCt))
                                                   .Element(0x3006, 0x0050, "DS", contour)));
  Moving move;
  move.files = {folder.File("1.1")};
  std::size_t received = 0;
  ScriptedServer server([&](Peer& peer) {
    const Bytes request = peer.ReceivePdu();
    peer.Send(Associate(
        2, "DEST", "US",
        Joined({ApplicationItem(), AcceptItem(request.at(103), 0, kExplicit), PeersUserItem()})));
    static_cast<void>(peer.ReceivePdu());
    Bytes data;
    for (Bytes pdu = peer.ReceivePdu(); pdu.size() > 12; pdu = peer.ReceivePdu()) {
      data.insert(data.end(), pdu.begin() + 12, pdu.end());
      if ((pdu[11] & kLastPart) != 0) break;
    }
    const Bytes expected = DataSetBuilder(Encoding::kExplicitLittle)
                               .Element(0x0008, 0x0016, "UI", Evened(kCt))
                               .Element(0x3006, 0x0050, "UN", contour)
                               .Done();
    received = data == expected ? data.size() : 0;
  });
  move.port = server.Port();
  ASSERT_TRUE(StartDictionaries(kDataDir));
  Association association(kContexts);
  association.pdu.AttachDictionary(&ModuleDictionary(), false);
  association.peer.Send(MoveRequest("DEST"));
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(move.Read(&association.pdu, &command));
  StopDictionaries();
  EXPECT_EQ(server.Wait(), "");
  EXPECT_GT(received, contour.size());
}

TEST(Retrieve, CallsItselfAsItWasCalledWhateverIsSetForLater) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Moving move;
  move.files = {folder.File("1.1")};
  Destination destination({0});
  move.port = destination.Port();
  const Connection connection;
  // "US" is called.
  connection.peer.Send(Joined({RequestFor({{7, kMove, {kImplicit}}}), MoveRequest("DEST")}));
  PDU_Service pdu;
  ASSERT_EQ(pdu.Listen(connection.ours), 1);
  pdu.SetCalledTitle("NEXT");
  pdu.SetCallingTitle("LATER");
  DICOMCommandObject command;
  ASSERT_NE(pdu.Read(command), 0);
  EXPECT_TRUE(move.Read(&pdu, &command));
  EXPECT_EQ(destination.Wait(), "");
  const Bytes titles(destination.request.begin() + 10, destination.request.begin() + 42);
  EXPECT_EQ(titles, Joined({Title("DEST"), Title("US")}));
  pdu.Link.Close();
}

TEST(Retrieve, ProposesEachClassOfTheInstancesOnce) {
  const TempFolder folder;
  const auto write = [&](const char* name, std::string_view sopClass) {
    WriteBytes(folder.File(name), FileOf(Encoding::kExplicitLittle,
                                         DataSetBuilder(Encoding::kExplicitLittle)
                                             .Element(0x0008, 0x0016, "UI", Evened(sopClass))));
    return folder.File(name);
  };
  Moving move;
  move.files = {write("1", "1.2.3.45"), write("2", kCt), write("3", "1.2.3.45")};
  Bytes request;
  ScriptedServer server([&](Peer& peer) {
    request = peer.ReceivePdu();
    peer.Send(Reject(1, 1, 7));
  });
  move.port = server.Port();
  static_cast<void>(AnswersOf(move, MoveRequest("DEST")));
  EXPECT_EQ(server.Wait(), "");
  // Identifiers as they stand behind the application context and the first proposal.
  const std::uint8_t first = request.at(103);
  const std::size_t firstSize = ContextItem({first, "1.2.3.45", {kImplicit}}).size();
  const std::uint8_t second = request.at(103 + firstSize);
  EXPECT_EQ(request,
            Associate(1, "DEST", "US",
                      Joined({ApplicationItem(), ContextItem({first, "1.2.3.45", {kImplicit}}),
                              ContextItem({second, kCt, {kImplicit}}), OurUserItem()})));
}

}  // namespace
}  // namespace tessaret::test
