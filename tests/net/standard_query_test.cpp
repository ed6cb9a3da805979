#include "net/standard_query.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/query_helpers.h"

namespace tessaret::test {
namespace {

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
    EXPECT_TRUE(!row.result || association.pdu.AbandonedMessages.empty()) << row.told;
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

TEST(Query, CancelsItsOwnRequestThoughItsHookHasSentAnother) {
  class Asking : public Finding<StudyRootQuery> {
   public:
    bool OnResponse(DICOMCommandObject* command, DICOMDataObject*) override {
      if (command == nullptr || isWithin_) return true;
      isWithin_ = true;
      Association other(kContexts);
      other.peer.SendAll(FindResponse(0, ""));
      DICOMDataObject query;
      EXPECT_TRUE(Write(&other.pdu, &query));
      return false;
    }

   private:
    bool isWithin_ = false;
  };
  Association association(kContexts);
  SetIdentifierCounter(21);
  association.peer.SendAll(FindResponse(0xFF00, "AA"));
  DICOMDataObject query;
  EXPECT_FALSE(Asking().Write(&association.pdu, &query));
  const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[1], CancelRequest(21));
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

/// What our provider answers to one request.
Bytes AnswersOf(StandardQuery& query, const Bytes& request, bool expected = true,
                const std::vector<Agreed>& contexts = kContexts) {
  Association association(contexts);
  association.peer.Send(request);
  DICOMCommandObject command;
  ReadCommand(association, command);
  EXPECT_EQ(query.Read(&association.pdu, &command), expected);
  return association.peer.Received();
}

TEST(Query, AnswersEachMatchAndTheEnd) {
  Finding<StudyRootQuery> query;
  query.Match("AA");
  query.Match("");  // says nothing
  query.matches.push_back(nullptr);
  query.Match("");
  PutUid(*query.matches.back(), 0x0002, 0x0010, kImplicit);  // neither is ever sent
  PutNumber32(*query.matches.back(), 0x0008, 0x0000, 12);
  query.Match("BB");
  EXPECT_EQ(AnswersOf(query, FindRequest()),
            Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0xFF00, "BB"), FindAnswer(0, "")}));
  EXPECT_EQ(query.asked, "Q*;");
}

TEST(Query, LooksForAnythingWhereNoIdentifierFollows) {
  Finding<StudyRootQuery> query;
  query.Match("AA");
  const Bytes request = Data(5, kWholeCommand,
                             Command()
                                 .Uid(0x0002, kFind)
                                 .Number(0x0100, 0x0020)
                                 .Number(0x0110, 9)
                                 .Number(0x0700, 2)
                                 .Number(0x0800, 0x0101));
  EXPECT_EQ(AnswersOf(query, request), Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0, "")}));
  EXPECT_EQ(query.asked, ";");
}

TEST(Query, WithNothingInItGoesAsACommandAlone) {
  Association association(kContexts);
  SetIdentifierCounter(1);
  association.peer.SendAll(Joined({FindResponse(0xFF00, "AA"), FindResponse(0, "")}));
  Finding<StudyRootQuery> query;
  DICOMDataObject nothing;
  EXPECT_TRUE(query.Write(&association.pdu, &nothing));
  EXPECT_EQ(query.told, "query=;65280=AA;0=;");
  EXPECT_EQ(association.peer.Received(), Data(5, kWholeCommand,
                                              Command()
                                                  .Uid(0x0002, kFind)
                                                  .Number(0x0100, 0x0020)
                                                  .Number(0x0110, 1)
                                                  .Number(0x0700, 2)
                                                  .Number(0x0800, 0x0102)));
}

TEST(Query, AnswersAFailureOfTheSearch) {
  for (const bool throws : {true, false}) {
    Finding<StudyRootQuery> query;
    query.throws = throws;
    query.fails = !throws;
    query.Match("AA");
    EXPECT_EQ(AnswersOf(query, FindRequest()), FindAnswer(0xC001, ""));
  }
}

TEST(Query, AnswersAFailureBehindTheLastMatchThatCouldBeEncoded) {
  Finding<StudyRootQuery> query;
  for (const char* name : {"AA", "BB", "CC"}) query.Match(name);
  // As pixel data stands in an object that was loaded without it.
  ASSERT_TRUE(query.matches[1]->Push(new VR(0x7FE0, 0x0010, 512, nullptr)));
  EXPECT_EQ(AnswersOf(query, FindRequest()),
            Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0xC001, "")}));
}

TEST(Query, EndsWithACancelThatHasCome) {
  Finding<StudyRootQuery> query;
  for (int i = 0; i < 100; ++i) query.Match("AA");
  EXPECT_EQ(AnswersOf(query, Joined({FindRequest(), CancelRequest(9)})), FindAnswer(0xFE00, ""));
}

TEST(Query, GoesOnThoughSomethingElseThanACancelComes) {
  Finding<StudyRootQuery> query;
  query.Match("AA");
  EXPECT_EQ(AnswersOf(query, Joined({FindRequest(), EchoResponse(0)})),
            Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0, "")}));
}

TEST(Query, AnswersInTheContextOfTheRequestWhateverComesInAnother) {
  // The class has two contexts, of which the request takes the second one.
  const std::vector<Agreed> contexts = {
      {1, kEcho, kImplicit}, {9, kFind, kImplicit}, {5, kFind, kImplicit}};
  Finding<StudyRootQuery> query;
  for (const char* name : {"AA", "BB"}) query.Match(name);
  EXPECT_EQ(AnswersOf(query, Joined({FindRequest(), EchoResponse(0), CancelRequest(9, 1)}), true,
                      contexts),
            Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0xFE00, "")}));
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
    Finding<StudyRootQuery> query;
    EXPECT_TRUE(AnswersOf(query, request, false).empty());
    EXPECT_EQ(query.asked, "");
  }
}

TEST(Query, HasAClassForEachSopClass) {
  EXPECT_EQ(UidOfService<Finding<PatientRootQuery>>(), "1.2.840.10008.5.1.4.1.2.1.1");
  EXPECT_EQ(UidOfService<Finding<StudyRootQuery>>(), "1.2.840.10008.5.1.4.1.2.2.1");
  EXPECT_EQ(UidOfService<Finding<PatientStudyOnlyQuery>>(), "1.2.840.10008.5.1.4.1.2.3.1");
  UID uid;
  Finding<StudyRootQuery> query;
  EXPECT_TRUE(query.GetQueryUID(uid));
  EXPECT_EQ(uid.View(), kFind);
}

TEST(Query, IsNotCancelledByTheFirstCallOfItsHook) {
  Association association(kContexts);
  association.peer.Send(FindResponse(0, ""));
  Finding<StudyRootQuery> query;
  query.cancelAt = 1;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  EXPECT_TRUE(query.Write(&association.pdu, &what));
  EXPECT_EQ(query.told, "query=Q*;0=;");
}

TEST(Query, SendsNothingAfterARelease) {
  Finding<StudyRootQuery> query;
  for (int i = 0; i < 3; ++i) query.Match("AA");
  EXPECT_EQ(AnswersOf(query, Joined({FindRequest(), ReleaseRequest()}), false), ReleaseAnswer());
}

TEST(Query, LooksAtNoDatabaseWhereTheIdentifierDoesNotCome) {
  const Bytes request = Data(
      5, kWholeCommand,
      Command().Uid(0x0002, kFind).Number(0x0100, 0x0020).Number(0x0110, 9).Number(0x0800, 0x0102));
  Finding<StudyRootQuery> query;
  // A command comes in its place.
  EXPECT_TRUE(AnswersOf(query, Joined({request, request}), false).empty());
  EXPECT_EQ(query.asked, "");
}

TEST(Query, HasTheStatusOfAFailureAsWords) {
  Association association(kContexts);
  association.peer.Send(FindResponse(0xA700, ""));
  Finding<StudyRootQuery> query;
  DICOMDataObject what;
  PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
  EXPECT_FALSE(query.Write(&association.pdu, &what));
  EXPECT_EQ(Words(association.pdu), "The peer has answered with status 0xA700");
}

}  // namespace
}  // namespace tessaret::test
