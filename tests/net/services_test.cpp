// Each service in both roles, with the test as the other side.
#include <filesystem>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/dimse_status.h"
#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/storage.h"
#include "net/verification.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

const std::vector<Agreed> kContexts = {
    {1, kEcho, kImplicit}, {3, kCt, kImplicit}, {5, kFind, kImplicit}, {7, kMove, kImplicit}};

std::string NameIn(const DICOMObject& object) {
  const VR* vr = object.GetVR(0x0010, 0x0010);
  return vr == nullptr ? "" : std::string(reinterpret_cast<const char*>(vr->Data), vr->Length);
}

Bytes NameBytes(std::string_view name) { return Elements().Text(0x0010, 0x0010, name); }

/// Reads the command that has come, as a provider does.
void ReadCommand(Association& association, DICOMCommandObject& command) {
  ASSERT_NE(association.pdu.Read(command), 0) << Words(association.pdu);
}

// --- verification ---

Bytes EchoResponse(std::uint16_t status, std::uint16_t field = 0x8030) {
  return Data(1, kWholeCommand,
              Command()
                  .Uid(0x0002, kEcho)
                  .Number(0x0100, field)
                  .Number(0x0120, 1)
                  .Number(0x0800, 0x0101)
                  .Number(0x0900, status));
}

TEST(Verification, IsDoneByAnyResponseToAnEcho) {
  const struct {
    Bytes answer;
    bool isDone;
  } rows[] = {{EchoResponse(0), true},          {EchoResponse(0x0122), true},
              {EchoResponse(0, 0x8001), false}, {ReleaseRequest(), false},
              {AbortPdu(0, 0), false},          {{}, false}};
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.SendAll(row.answer);
    SetIdentifierCounter(1);
    EXPECT_EQ(Verification().Write(&association.pdu), row.isDone);
    const Bytes request = Data(1, kWholeCommand,
                               Command()
                                   .Uid(0x0002, kEcho)
                                   .Number(0x0100, 0x0030)
                                   .Number(0x0110, 1)
                                   .Number(0x0800, 0x0101));
    const Bytes sent = association.peer.Received();
    EXPECT_EQ(Bytes(sent.begin(), sent.begin() + static_cast<int>(request.size())), request);
  }
  EXPECT_FALSE(Verification().Write(nullptr));
}

TEST(Verification, AnswersARequestOfItsClass) {
  for (const bool isOdd : {true, false}) {
    Association association(kContexts);
    // The UID with its pad, and as some send it.
    Elements elements;
    elements.Value(0, 0x0002, Joined({BytesOf(kEcho), isOdd ? Bytes{0} : Bytes{' '}}));
    elements.Number(0, 0x0100, 0x0030).Number(0, 0x0110, 5).Number(0, 0x0800, 0x0101);
    association.peer.Send(Data(1, kWholeCommand, elements));
    DICOMCommandObject command;
    ReadCommand(association, command);
    EXPECT_TRUE(Verification().Read(&association.pdu, &command));
    EXPECT_EQ(TypesOf(association.peer.Received()), "4");
  }
}

TEST(Verification, TakesNothingElse) {
  Association association(kContexts);
  const auto answered = [&](std::string_view uid, std::uint16_t field) {
    DICOMCommandObject command;
    if (!uid.empty()) PutUid(command, 0, 0x0002, uid);
    PutNumber16(command, 0, 0x0100, field);
    return Verification().Read(&association.pdu, &command);
  };
  EXPECT_FALSE(answered(kCt, 0x0030));
  EXPECT_FALSE(answered("", 0x0030));
  EXPECT_FALSE(answered(std::string(66, '1'), 0x0030));
  EXPECT_FALSE(answered(kEcho, 0x0001));
  EXPECT_TRUE(answered(kEcho, 0x8030));
  DICOMCommandObject command;
  EXPECT_FALSE(Verification().Read(nullptr, &command));
  EXPECT_FALSE(Verification().Read(&association.pdu, nullptr));
  EXPECT_TRUE(association.peer.Received().empty());
}

// --- storage ---

template <class Storage>
class Keeping : public Storage {
 public:
  std::uint32_t StoreObject(DICOMDataObject* object) override {
    if (object == nullptr) return 1;
    stored += NameIn(*object) + ";";
    if (throws) throw std::runtime_error("no");
    return status;
  }
  std::string stored;
  std::uint32_t status = 0;
  bool throws = false;
};

Bytes StoreRequest(std::string_view sopClass, std::uint16_t dataSetType = 0x0102) {
  return Data(3, kWholeCommand,
              Command()
                  .Uid(0x0002, sopClass)
                  .Number(0x0100, 0x0001)
                  .Number(0x0110, 77)
                  .Number(0x0700, 0)
                  .Number(0x0800, dataSetType)
                  .Uid(0x1000, "1.2.3"));
}

Bytes StoreResponse(std::string_view sopClass, std::uint16_t status) {
  return Data(3, kWholeCommand,
              Command()
                  .Uid(0x0002, sopClass)
                  .Number(0x0100, 0x8001)
                  .Number(0x0120, 77)
                  .Number(0x0800, 0x0101)
                  .Number(0x0900, status)
                  .Uid(0x1000, "1.2.3"));
}

TEST(Storage, IsDoneByAnyResponseWhateverItsStatus) {
  for (const std::uint16_t status : Bytes{0, 1}) {
    Association association(kContexts);
    association.peer.SendAll(StoreResponse(kCt, status));
    CTStorage storage;
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    EXPECT_TRUE(storage.Write(&association.pdu, &object));
    EXPECT_EQ(storage.Status, status);
    EXPECT_EQ(TypesOf(association.peer.Received()), "44");
  }
  for (const Bytes& answer : {EchoResponse(0), ReleaseRequest(), Bytes{}}) {
    Association association(kContexts);
    association.peer.SendAll(answer);
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    EXPECT_FALSE(CTStorage().Write(&association.pdu, &object));
  }
}

TEST(Storage, OfAnUnknownClassSendsNothing) {
  Association association(kContexts);
  DICOMDataObject object;
  UnknownStorage storage;
  UID uid;
  EXPECT_FALSE(storage.GetUID(uid));
  EXPECT_FALSE(storage.Write(&association.pdu, &object));
  EXPECT_EQ(storage.StoreObject(&object), 0u);
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Storage, AnswersWithTheStatusOfTheHookCutToTwoBytes) {
  const struct {
    std::uint32_t status;
    bool throws;
    std::uint16_t answer;
  } rows[] = {{0, false, 0}, {0xA700, false, 0xA700}, {0x1B000, false, 0xB000}, {0, true, 0xC001}};
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.Send(Joined({StoreRequest("1.2.840.99"), Data(3, kLastPart, NameBytes("A"))}));
    Keeping<UnknownStorage> storage;  // takes any class
    storage.status = row.status;
    storage.throws = row.throws;
    DICOMCommandObject command;
    ReadCommand(association, command);
    DICOMDataObject object;
    // The class was not agreed, so there is no context but that of the request to answer on.
    association.pdu.AcceptedContexts[1].AbstractSyntax.Set("1.2.840.99");
    EXPECT_TRUE(storage.Read(&association.pdu, &command, &object));
    EXPECT_EQ(storage.stored, "A ;");
    EXPECT_EQ(association.peer.Received(), StoreResponse("1.2.840.99", row.answer));
  }
}

TEST(Storage, EndsWhereTheHookClosesTheLink) {
  class Closing : public UnknownStorage {
   public:
    explicit Closing(PDU_Service& pdu) : pdu_(pdu) {}
    std::uint32_t StoreObject(DICOMDataObject*) override {
      pdu_.Link.Close();
      return 0;
    }

   private:
    PDU_Service& pdu_;
  };
  Association association(kContexts);
  association.peer.Send(Joined({StoreRequest(kCt), Data(3, kLastPart, NameBytes("A"))}));
  DICOMCommandObject command;
  ReadCommand(association, command);
  DICOMDataObject object;
  EXPECT_FALSE(Closing(association.pdu).Read(&association.pdu, &command, &object));
  EXPECT_EQ(association.pdu.Read(command), 0);
  EXPECT_TRUE(association.peer.ReceiveToEnd().empty());
}

TEST(Storage, StoresAnEmptyObjectWhereTheRequestSaysThatNoneFollows) {
  Association association(kContexts);
  association.peer.Send(StoreRequest(kCt, 0x0101));
  Keeping<CTStorage> storage;
  DICOMCommandObject command;
  ReadCommand(association, command);
  DICOMDataObject object;
  EXPECT_TRUE(storage.Read(&association.pdu, &command, &object));
  EXPECT_EQ(storage.stored, ";");
}

TEST(Storage, TakesAResponseInsteadAndNothingElse) {
  Association association(kContexts);
  Keeping<UnknownStorage> storage;
  DICOMDataObject object;
  DICOMCommandObject response;
  PutNumber16(response, 0, 0x0100, 0x8001);
  PutNumber16(response, 0, 0x0900, 0xA900);
  EXPECT_TRUE(storage.Read(&association.pdu, &response, &object));
  EXPECT_EQ(storage.Status, 0xA900);
  DICOMCommandObject other;
  PutNumber16(other, 0, 0x0100, 0x0030);
  EXPECT_FALSE(storage.Read(&association.pdu, &other, &object));
  EXPECT_FALSE(storage.Read(nullptr, &response, &object));
  EXPECT_FALSE(storage.Read(&association.pdu, nullptr, &object));
  EXPECT_FALSE(storage.Read(&association.pdu, &response, nullptr));
  EXPECT_EQ(storage.stored, "");
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Storage, StoresNothingWhereTheObjectDoesNotCome) {
  Association association(kContexts);
  association.peer.SendAll(StoreRequest(kCt));
  Keeping<CTStorage> storage;
  DICOMCommandObject command;
  ReadCommand(association, command);
  DICOMDataObject object;
  EXPECT_FALSE(storage.Read(&association.pdu, &command, &object));
  EXPECT_EQ(storage.stored, "");
}

TEST(Storage, OfOneClassTakesNoOther) {
  Association association(kContexts);
  Keeping<CTStorage> storage;
  const auto taken = [&](std::string_view uid) {
    DICOMCommandObject command;
    if (!uid.empty()) PutUid(command, 0, 0x0002, uid);
    PutNumber16(command, 0, 0x0100, 0x0001);
    PutNumber16(command, 0, 0x0800, 0x0101);
    DICOMDataObject object;
    return storage.Read(&association.pdu, &command, &object);
  };
  EXPECT_FALSE(taken(kFind));
  EXPECT_FALSE(taken(""));
  EXPECT_EQ(storage.stored, "");
  EXPECT_TRUE(taken(kCt));
  DICOMDataObject object;
  EXPECT_FALSE(storage.Read(&association.pdu, nullptr, &object));
}

template <class Service>
std::string UidOfService() {
  class Named : public Service {};
  Named service;
  UID uid;
  EXPECT_TRUE(service.GetUID(uid));
  return std::string(uid.View());
}

/// A query that finds what it is given, and writes down what it is told.
template <class Query>
class Finding : public Query {
 public:
  bool SearchDatabase(DICOMDataObject& query,
                      std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
    asked += NameIn(query) + ";";
    if (throws) throw std::runtime_error("no");
    response = std::move(matches);
    return !fails;
  }
  bool OnResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    told += (command == nullptr ? "query" : std::to_string(*CommandNumber(*command, 0x0900))) +
            "=" + NameIn(*data) + ";";
    return ++calls != cancelAt;
  }
  void Match(std::string_view name) {
    matches.push_back(std::make_unique<DICOMDataObject>());
    if (!name.empty()) PutBytes(*matches.back(), 0x0010, 0x0010, type_code::PN, name);
  }
  std::vector<std::unique_ptr<DICOMDataObject>> matches;
  std::string asked;
  std::string told;
  bool throws = false;
  bool fails = false;
  int calls = 0;
  int cancelAt = 0;
};

class Moving : public StudyRootRetrieve {
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

TEST(SopClasses, EachServiceNamesItsOwn) {
  EXPECT_EQ(UidOfService<Verification>(), "1.2.840.10008.1.1");
  EXPECT_EQ(UidOfService<ComputedRadiographyStorage>(), "1.2.840.10008.5.1.4.1.1.1");
  EXPECT_EQ(UidOfService<CTStorage>(), "1.2.840.10008.5.1.4.1.1.2");
  EXPECT_EQ(UidOfService<RetiredUltrasoundMultiframeStorage>(), "1.2.840.10008.5.1.4.1.1.3");
  EXPECT_EQ(UidOfService<MRStorage>(), "1.2.840.10008.5.1.4.1.1.4");
  EXPECT_EQ(UidOfService<RetiredNuclearMedicineStorage>(), "1.2.840.10008.5.1.4.1.1.5");
  EXPECT_EQ(UidOfService<RetiredUltrasoundStorage>(), "1.2.840.10008.5.1.4.1.1.6");
  EXPECT_EQ(UidOfService<SecondaryCaptureStorage>(), "1.2.840.10008.5.1.4.1.1.7");
  EXPECT_EQ(UidOfService<OverlayStorage>(), "1.2.840.10008.5.1.4.1.1.8");
  EXPECT_EQ(UidOfService<CurveStorage>(), "1.2.840.10008.5.1.4.1.1.9");
  EXPECT_EQ(UidOfService<ModalityLutStorage>(), "1.2.840.10008.5.1.4.1.1.10");
  EXPECT_EQ(UidOfService<VoiLutStorage>(), "1.2.840.10008.5.1.4.1.1.11");
  EXPECT_EQ(UidOfService<GEPrivateStorage>(), "1.2.840.113619.4.2");
  EXPECT_EQ(UidOfService<GESecondPrivateStorage>(), "1.2.840.113619.4.3");
  EXPECT_EQ(UidOfService<StandardGet>(), "1.2.840.10008.5.1.4.1.2.2.3");
  EXPECT_EQ(UidOfService<Finding<PatientRootQuery>>(), "1.2.840.10008.5.1.4.1.2.1.1");
  EXPECT_EQ(UidOfService<Finding<StudyRootQuery>>(), "1.2.840.10008.5.1.4.1.2.2.1");
  EXPECT_EQ(UidOfService<Finding<PatientStudyOnlyQuery>>(), "1.2.840.10008.5.1.4.1.2.3.1");
  EXPECT_EQ(UidOfService<Moving>(), "1.2.840.10008.5.1.4.1.2.2.2");
  EXPECT_STREQ(sop_class::kPatientRootMove, "1.2.840.10008.5.1.4.1.2.1.2");
  EXPECT_STREQ(sop_class::kPatientStudyOnlyMove, "1.2.840.10008.5.1.4.1.2.3.2");
  UID uid;
  Finding<StudyRootQuery> query;
  EXPECT_TRUE(query.GetQueryUID(uid));
  EXPECT_EQ(uid.View(), kFind);
  Moving move;
  EXPECT_TRUE(move.GetMoveUID(uid));
  EXPECT_EQ(uid.View(), kMove);
}

// --- query ---

/// A response to a query: without a status, and with one.
Bytes FindResponse(int status, std::string_view name, std::uint16_t field = 0x8020) {
  Command command;
  command.Uid(0x0002, kFind)
      .Number(0x0100, field)
      .Number(0x0120, 1)
      .Number(0x0800, name.empty() ? 0x0101 : 0x0102);
  if (status >= 0) command.Number(0x0900, static_cast<std::uint16_t>(status));
  const Bytes whole = Data(5, kWholeCommand, command);
  return name.empty() ? whole : Joined({whole, Data(5, kLastPart, NameBytes(name))});
}

Bytes CancelRequest(std::uint16_t message, std::uint8_t context = 5) {
  return Data(context, kWholeCommand,
              Command().Number(0x0100, 0x0FFF).Number(0x0120, message).Number(0x0800, 0x0101));
}

TEST(Query, HandsResponsesOnUpToTheLast) {
  const struct {
    Bytes responses;
    bool result;
    const char* told;
  } rows[] = {
      {FindResponse(0, ""), true, "query=Q*;0=;"},
      {Joined({FindResponse(0xFF00, "AA"), FindResponse(0xFF01, "BB"), FindResponse(0, "")}), true,
       "query=Q*;65280=AA;65281=BB;0=;"},
      {Joined({FindResponse(0xFF00, ""), FindResponse(0xFF00, "BB"), FindResponse(0xFE00, "")}),
       true, "query=Q*;65280=BB;65024=;"},
      {Joined({FindResponse(0xFF00, "AA"), FindResponse(0, "CC")}), true,
       "query=Q*;65280=AA;0=CC;"},
      {FindResponse(0xA700, ""), false, "query=Q*;"},
      {FindResponse(0xC001, "AA"), false, "query=Q*;"},
      {FindResponse(0xB000, ""), false, "query=Q*;"},
      {FindResponse(0xFF00, "AA", 0x8021), false, "query=Q*;"},
      {Joined({FindResponse(0xFF00, "AA"), ReleaseRequest()}), false, "query=Q*;65280=AA;"},
      {FindResponse(0xFF00, "AA"), false, "query=Q*;65280=AA;"},
      {{}, false, "query=Q*;"},
  };
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.SendAll(row.responses);
    Finding<StudyRootQuery> query;
    DICOMDataObject what;
    PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
    EXPECT_EQ(query.Write(&association.pdu, &what), row.result) << row.told;
    EXPECT_EQ(query.told, row.told);
    EXPECT_EQ(NameIn(what), "Q*") << "the query stays the caller's";
  }
}

TEST(Query, CancelsByItsMessageIdWhenTheCallerHasEnough) {
  Association association(kContexts);
  association.peer.Send(
      Joined({FindResponse(0xFF00, "AA"), FindResponse(0xFF00, "BB"), FindResponse(0, "")}));
  Finding<StudyRootQuery> query;
  query.cancelAt = 3;  // the query itself, AA, BB
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  SetIdentifierCounter(21);
  EXPECT_FALSE(query.Write(&association.pdu, &what));
  EXPECT_EQ(query.told, "query=Q*;65280=AA;65280=BB;");
  const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
  ASSERT_EQ(sent.size(), 3u);
  EXPECT_EQ(sent[2], CancelRequest(21));
}

TEST(Query, ThrowsWhatTheRequestersHookThrows) {
  class Throwing : public Finding<StudyRootQuery> {
   public:
    bool OnResponse(DICOMCommandObject* command, DICOMDataObject*) override {
      if (command != nullptr) throw std::runtime_error("enough");
      return true;
    }
  };
  Association association(kContexts);
  association.peer.Send(FindResponse(0xFF00, "AA"));
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  EXPECT_THROW(Throwing().Write(&association.pdu, &what), std::runtime_error);
  EXPECT_EQ(NameIn(what), "Q*");
}

TEST(Query, WithoutAnAssociationOrAQueryIsRefused) {
  Association association(kContexts);
  Finding<StudyRootQuery> query;
  DICOMDataObject what;
  EXPECT_FALSE(query.Write(nullptr, &what));
  EXPECT_FALSE(query.Write(&association.pdu, nullptr));
  DICOMCommandObject command;
  EXPECT_FALSE(query.Read(nullptr, &command));
  EXPECT_FALSE(query.Read(&association.pdu, nullptr));
  EXPECT_EQ(query.told, "");
}

Bytes FindRequest(std::string_view sopClass = kFind, std::uint16_t field = 0x0020) {
  return Joined({Data(5, kWholeCommand,
                      Command()
                          .Uid(0x0002, sopClass)
                          .Number(0x0100, field)
                          .Number(0x0110, 9)
                          .Number(0x0700, 2)
                          .Number(0x0800, 0x0102)),
                 Data(5, kLastPart, NameBytes("Q*"))});
}

/// What our provider answers.
Bytes FindAnswer(std::uint16_t status, std::string_view name) {
  const Bytes command = Data(5, kWholeCommand,
                             Command()
                                 .Uid(0x0002, kFind)
                                 .Number(0x0100, 0x8020)
                                 .Number(0x0110, 9)
                                 .Number(0x0120, 9)
                                 .Number(0x0700, 2)
                                 .Number(0x0800, name.empty() ? 0x0101 : 0x0102)
                                 .Number(0x0900, status));
  return name.empty() ? command : Joined({command, Data(5, kLastPart, NameBytes(name))});
}

TEST(Query, AnswersEachMatchAndTheEnd) {
  Association association(kContexts);
  association.peer.Send(FindRequest());
  Finding<StudyRootQuery> query;
  query.Match("AA");
  query.Match("");  // says nothing
  query.matches.push_back(nullptr);
  query.Match("BB");
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(query.Read(&association.pdu, &command));
  EXPECT_EQ(query.asked, "Q*;");
  EXPECT_EQ(association.peer.Received(),
            Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0xFF00, "BB"), FindAnswer(0, "")}));
}

TEST(Query, AnswersAFailureOfTheSearch) {
  for (const bool throws : {true, false}) {
    Association association(kContexts);
    association.peer.Send(FindRequest());
    Finding<StudyRootQuery> query;
    query.throws = throws;
    query.fails = !throws;
    query.Match("AA");
    DICOMCommandObject command;
    ReadCommand(association, command);
    EXPECT_TRUE(query.Read(&association.pdu, &command));
    EXPECT_EQ(association.peer.Received(), FindAnswer(0xC001, ""));
  }
}

TEST(Query, EndsWithACancelThatHasCome) {
  Association association(kContexts);
  association.peer.Send(Joined({FindRequest(), CancelRequest(9)}));
  Finding<StudyRootQuery> query;
  for (int i = 0; i < 100; ++i) query.Match("AA");
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(query.Read(&association.pdu, &command));
  EXPECT_EQ(association.peer.Received(), FindAnswer(0xFE00, ""));
}

TEST(Query, GoesOnThoughSomethingElseThanACancelComes) {
  Association association(kContexts);
  association.peer.Send(Joined({FindRequest(), EchoResponse(0)}));
  Finding<StudyRootQuery> query;
  query.Match("AA");
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(query.Read(&association.pdu, &command));
  EXPECT_EQ(association.peer.Received(), Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0, "")}));
}

TEST(Query, StopsWhereThePeerHasGone) {
  Association association(kContexts);
  association.peer.SendAll(FindRequest());
  Finding<StudyRootQuery> query;
  for (int i = 0; i < 100; ++i) query.Match("AA");
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_FALSE(query.Read(&association.pdu, &command));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Query, TakesRequestsOfItsClassAndKindAlone) {
  for (const Bytes& request :
       {FindRequest("1.2.840.10008.5.1.4.1.2.1.1"), FindRequest(kFind, 0x0021)}) {
    Association association(kContexts);
    association.peer.Send(request);
    Finding<StudyRootQuery> query;
    DICOMCommandObject command;
    ReadCommand(association, command);
    EXPECT_FALSE(query.Read(&association.pdu, &command));
    EXPECT_EQ(query.asked, "");
    EXPECT_TRUE(association.peer.Received().empty());
  }
}

TEST(Query, AnswersManyMatchesInTheirOrder) {
  Association association(kContexts);
  Finding<StudyRootQuery> query;
  constexpr int kMatches = 5000;
  for (int i = 0; i < kMatches; ++i) query.Match("AA");
  association.peer.Send(FindRequest());
  Bytes received;
  std::thread reader([&] {
    const std::size_t expected =
        FindAnswer(0xFF00, "AA").size() * kMatches + FindAnswer(0, "").size();
    received = association.peer.Receive(expected);
  });
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_TRUE(query.Read(&association.pdu, &command));
  reader.join();
  EXPECT_EQ(SplitPdus(received).size(), 2u * kMatches + 1);
}

// --- retrieval ---

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
  std::string gone;
  {
    const Listener listener;
    gone = listener.Port();
  }
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

TEST(Statuses, OfWarningsAreThoseThatBeginWithB) {
  EXPECT_TRUE(dimse_status::IsWarning(0xB000));
  EXPECT_TRUE(dimse_status::IsWarning(0xB007));
  EXPECT_FALSE(dimse_status::IsWarning(0));
  EXPECT_FALSE(dimse_status::IsWarning(0xA700));
  EXPECT_FALSE(dimse_status::IsWarning(0xC000));
}

}  // namespace
}  // namespace tessaret::test
