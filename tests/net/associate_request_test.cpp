// The side that asks for an association.
#include <chrono>
#include <functional>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "support/socket_failure.h"

namespace tessaret::test {
namespace {

std::vector<std::string> SyntaxesOf(const PDU_Service& pdu) {
  std::vector<std::string> syntaxes;
  for (const TransferSyntax& syntax : pdu.ProposedTransferSyntaxes) {
    syntaxes.emplace_back(syntax.View());
  }
  return syntaxes;
}

/// A peer that reads the request, sends `answer`, and then receives all that comes. `received` is that.
auto AnswerWith(const Bytes& answer, Bytes* received = nullptr, Bytes* request = nullptr) {
  return [=](Peer& peer) {
    const Bytes asked = peer.ReceivePdu();
    if (request != nullptr) *request = asked;
    peer.SendAll(answer);
    const Bytes rest = peer.ReceiveToEnd();
    if (received != nullptr) *received = rest;
  };
}

Bytes AnswerOf(const Bytes& contexts) {
  return Associate(2, "US", "PEER", Joined({ApplicationItem(), contexts, PeersUserItem()}));
}

struct Refusal {
  int result;
  int source;
  int reason;
  const char* words;
};

bool operator==(const AAssociateRJ& pdu, const Refusal& numbers) {
  return pdu.Result == numbers.result && pdu.Source == numbers.source &&
         pdu.Reason == numbers.reason;
}

TEST(AssociateRequest, ProposesAContextForEachAbstractSyntaxWithAllTransferSyntaxes) {
  Bytes request;
  Bytes received;
  ScriptedServer server(
      AnswerWith(Joined({AnswerOf(Joined({AcceptItem(5, 0, kImplicit), AcceptItem(7, 3, "")})),
                         ReleaseAnswer()}),
                 &received, &request));
  PDU_Service pdu;
  pdu.SetCallingTitle("US");
  pdu.SetCalledTitle("PEER");
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.AddAbstractSyntax(UID(kCt));
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.AddTransferSyntax(UID(kExplicit));
  SetIdentifierCounter(4);
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1);
  // An even counter is raised first, and stands one above what was taken.
  EXPECT_EQ(IdentifierCounter(), 10u);  // 5, 7, and two contexts of the answer: 8, 9
  EXPECT_EQ(pdu.Link.Connected, 1);
  ASSERT_EQ(pdu.AcceptedContexts.size(), 1u);
  EXPECT_EQ(pdu.AcceptedContexts[0].PresentationContextID, 5);
  EXPECT_EQ(pdu.AcceptedContexts[0].AbstractSyntax.View(), kEcho);
  EXPECT_EQ(pdu.AcceptedContexts[0].TransferSyntax.View(), kImplicit);
  EXPECT_EQ(pdu.Close(), 1);
  EXPECT_EQ(pdu.Link.Connected, 0);
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(request,
            Associate(1, "PEER", "US",
                      Joined({ApplicationItem(), ContextItem({5, kEcho, {kExplicit, kImplicit}}),
                              ContextItem({7, kCt, {kExplicit, kImplicit}}), OurUserItem()})));
  EXPECT_EQ(received, ReleaseRequest());
}

TEST(AssociateRequest, PutsImplicitLittleEndianFirstWhereNothingWasAddedBefore) {
  PDU_Service pdu;
  PresentationContext context;
  pdu.FillTransferSyntaxes(context);
  pdu.AddTransferSyntax(UID(kExplicit));
  pdu.AddTransferSyntax(UID(kExplicit));
  PresentationContext further;
  pdu.FillTransferSyntaxes(further);
  EXPECT_EQ(context.TransferSyntaxes.size(), 1u);
  EXPECT_EQ(SyntaxesOf(pdu),
            (std::vector<std::string>{std::string(kImplicit), std::string(kExplicit)}));
  EXPECT_EQ(further.TransferSyntaxes.size(), 2u);
}

TEST(AssociateRequest, ProposesContextsThatTheCallerHasMade) {
  Bytes request;
  ScriptedServer server(AnswerWith(Reject(1, 1, 1), nullptr, &request));
  PDU_Service pdu;
  PresentationContext context;
  context.PresentationContextID = 11;
  context.AbstractSyntax.Set(kCt);
  context.TransferSyntaxes.emplace_back(kBigEndianSyntax);
  EXPECT_EQ(pdu.AAssociateRQ.AddPresentationContext(context), 1);
  pdu.AAssociateRQ.UserInformation.AddRoleSelect(SCPSCURoleSelect(UID(kCt), 1, 0));
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(request,
            Associate(1, "", "",
                      Joined({ApplicationItem(), ContextItem({11, kCt, {kBigEndianSyntax}}),
                              OurUserItem(16384, RoleItem(kCt, 0, 1))})));
}

TEST(AssociateRequest, SendsTitlesOfSixteenBytesAndCutsLongerOnes) {
  PDU_Service pdu;
  pdu.SetCallingTitle("A");
  pdu.SetCalledTitle("ABCDEFGHIJKLMNOPQ");
  EXPECT_STREQ(pdu.AAssociateRQ.CallingApTitle.data(), "A               ");
  EXPECT_STREQ(pdu.AAssociateRQ.CalledApTitle.data(), "ABCDEFGHIJKLMNOP");
  pdu.SetCalledTitle("B");
  EXPECT_STREQ(pdu.AAssociateRQ.CalledApTitle.data(), "B               ");
}

TEST(AssociateRequest, SendsTheApplicationContextThatIsSet) {
  Bytes request;
  ScriptedServer server(AnswerWith(Reject(1, 1, 2), nullptr, &request));
  PDU_Service pdu;
  pdu.SetApplicationContext(UID("1.2.3"));
  pdu.AddAbstractSyntax(UID(kEcho));
  SetIdentifierCounter(1);
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(request, Associate(1, "", "",
                               Joined({ApplicationItem("1.2.3"),
                                       ContextItem({1, kEcho, {kImplicit}}), OurUserItem()})));
}

TEST(AssociateRequest, WithNothingProposedOpensNoSocket) {
  const Listener listener;
  PDU_Service pdu;
  EXPECT_EQ(pdu.Connect("127.0.0.1", listener.Port()), 0);
  EXPECT_EQ(Words(pdu), "No SOP Class proposed");
  EXPECT_EQ(pdu.AAssociateRJ, (Refusal{1, 1, 1, ""}));
  pollfd ready{.fd = listener.Descriptor(), .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&ready, 1, 0), 0);
}

TEST(AssociateRequest, TellsByNumbersThatTheSocketCouldNotBeOpened) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.AAssociateRJ.Result = 2;
  pdu.AAssociateRJ.Reason = 7;
  EXPECT_EQ(pdu.Connect("127.0.0.1", "no such service"), 0);
  EXPECT_EQ(Words(pdu), "Open(127.0.0.1,no such service): could not resolve port[no such service]");
  EXPECT_EQ(pdu.AAssociateRJ, (Refusal{1, 2, 1, ""}));
}

TEST(AssociateRequest, HasWordsForEveryResultSourceAndReason) {
  const Refusal refusals[] = {
      {0, 0, 0, "Connection rejected : , "},
      {1, 1, 1, "Connection rejected permanent: service-user, no reason given"},
      {2, 2, 2,
       "Connection rejected transient: service-provider (ACSE related function), application "
       "context "
       "name not supported"},
      {1, 3, 3,
       "Connection rejected permanent: service-provider (Presentation related function), calling "
       "AE "
       "title not recognized"},
      {1, 1, 4, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 5, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 6, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 7, "Connection rejected permanent: service-user, called AE title not recognized"},
      {1, 1, 8, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 9, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 10, "Connection rejected permanent: service-user, reserved"},
      {1, 1, 12, "Connection rejected permanent: service-user, "},
      {3, 4, 11, "Connection rejected : , "},
      {255, 255, 255, "Connection rejected : , "},
  };
  for (const Refusal& refusal : refusals) {
    Bytes received = {1};
    ScriptedServer server(AnswerWith(
        Reject(static_cast<std::uint8_t>(refusal.result), static_cast<std::uint8_t>(refusal.source),
               static_cast<std::uint8_t>(refusal.reason)),
        &received));
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_EQ(server.Wait(), "");
    EXPECT_EQ(received, Bytes()) << refusal.words;
    EXPECT_EQ(Words(pdu), refusal.words);
    EXPECT_EQ(pdu.Link.Connected, 0);
    const Refusal kept{refusal.result > 2 ? 0 : refusal.result,
                       refusal.source > 3 ? 0 : refusal.source,
                       refusal.reason > 10 ? 0 : refusal.reason, ""};
    EXPECT_EQ(pdu.AAssociateRJ, kept) << refusal.words;
  }
}

TEST(AssociateRequest, LeavesNoNumbersOfARefusalBefore) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  const struct {
    Bytes answer;
    Refusal numbers;
  } rows[] = {{Reject(2, 1, 7), {2, 1, 7, nullptr}},
              {OurAbort(), {1, 3, 1, nullptr}},
              {Reject(2, 2, 2), {2, 2, 2, nullptr}},
              {AnswerOf(AcceptItem(1, 3, "")), {1, 3, 1, nullptr}}};
  for (const auto& row : rows) {
    ScriptedServer server(AnswerWith(row.answer));
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_TRUE(pdu.AAssociateRJ == row.numbers) << Words(pdu);
  }
}

TEST(AssociateRequest, SaysThatTheLinkFailedWithinARefusal) {
  const Bytes whole = Reject(1, 1, 1);
  for (std::size_t size = 1; size < whole.size(); ++size) {
    ScriptedServer server(AnswerWith(Bytes(whole.begin(), whole.begin() + static_cast<int>(size))));
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_EQ(Words(pdu), "Association rejected: link error") << size;
    EXPECT_EQ(pdu.Link.Connected, 0);
  }
}

TEST(AssociateRequest, ThatIsNotSentWholeIsRefusedButNotAccepted) {
  const struct {
    Bytes answer;
    const char* words;
  } rows[] = {
      {Reject(1, 1, 1), "Connection rejected permanent: service-user, no reason given"},
      {AnswerOf(AcceptItem(1, 0, kImplicit)), "Corrupt transmission reading AAssociateRQ"},
  };
  for (const auto& row : rows) {
    ScriptedServer server([&row](Peer& peer) {
      peer.Send(row.answer);
      static_cast<void>(peer.ReceiveToEnd());
    });
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    SetIdentifierCounter(1);
    SocketFailure failure;
    failure.RunBefore(SocketCall::kSend, 1, [&pdu] {
      pollfd answer{.fd = pdu.Link.DataSocket, .events = POLLIN, .revents = 0};
      ::poll(&answer, 1, kFarTooLong);
    });
    failure.FailCall(SocketCall::kSend, 1, ENETDOWN);
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_EQ(Words(pdu), row.words);
    EXPECT_EQ(pdu.Link.Connected, 0);
  }
}

TEST(AssociateRequest, TakesNoOtherAnswerAndSaysNothingToIt) {
  const Bytes answers[] = {{},
                           {0},
                           RequestFor({{1, kEcho, {kImplicit}}}),
                           {4, 0, 0, 0},
                           Data(1, kWholeCommand, Command().Number(0x0100, 1)),
                           ReleaseRequest(),
                           ReleaseAnswer(),
                           OurAbort(),
                           AbortPdu(2, 6),
                           // An acceptance comes too late behind an abort.
                           Joined({AbortPdu(0, 0), AnswerOf(AcceptItem(1, 0, kImplicit))}),
                           {8},
                           {255},
                           BytesOf("HTTP/1.1 400")};
  for (const Bytes& answer : answers) {
    const int type = answer.empty() ? -1 : answer[0];
    Bytes received = {1};
    ScriptedServer server(AnswerWith(answer, &received));
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    SetIdentifierCounter(1);
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0) << type;
    EXPECT_EQ(server.Wait(), "") << type;
    EXPECT_EQ(received, Bytes()) << type;
    EXPECT_EQ(Words(pdu), "Corrupt transmission reading AAssociateRQ") << type;
    EXPECT_EQ(pdu.Link.Connected, 0) << type;
    EXPECT_EQ(pdu.InSize, 0) << type;
  }
}

TEST(AssociateRequest, FailsWhereThePeerClosesAtAnyByteOfItsAnswer) {
  const Bytes whole = AnswerOf(AcceptItem(1, 0, kImplicit));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    ScriptedServer server(AnswerWith(Bytes(whole.begin(), whole.begin() + static_cast<int>(size))));
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    SetIdentifierCounter(1);
    ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0) << size;
    ASSERT_EQ(Words(pdu), "Corrupt transmission reading AAssociateRQ") << size;
    ASSERT_EQ(pdu.Link.Connected, 0);
  }
}

TEST(AssociateRequest, ReleasesAnAssociationOfWhichNothingWasAccepted) {
  Bytes received;
  ScriptedServer server(
      AnswerWith(Joined({AnswerOf(Joined({AcceptItem(1, 3, ""), AcceptItem(3, 4, kImplicit)})),
                         ReleaseAnswer()}),
                 &received));
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.AddAbstractSyntax(UID(kCt));
  SetIdentifierCounter(1);
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(Words(pdu), "No Accepted presentation Context found");
  EXPECT_EQ(pdu.Link.Connected, 0);
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(received, ReleaseRequest());
}

TEST(AssociateRequest, DigestsAnswersAsTheyStand) {
  PDU_Service pdu;
  for (const std::uint8_t id : Bytes{1, 3, 5}) {
    PresentationContext context;
    context.PresentationContextID = id;
    context.AbstractSyntax.Set(id == 1 ? kEcho : kCt);
    pdu.AAssociateRQ.AddPresentationContext(context);
  }
  const auto answer = [&](std::uint8_t id, std::uint8_t result, std::string_view syntax) {
    PresentationContextAccept context;
    context.PresentationContextID = id;
    context.Result = result;
    context.TransferSyntax.Set(syntax);
    pdu.AAssociateAC.PresentationContexts.push_back(context);
  };
  answer(5, 0, "1.2.3.4");  // never proposed
  answer(7, 0, kImplicit);  // of no proposal
  answer(3, 1, kImplicit);
  answer(1, 0, kExplicit);
  pdu.AcceptedContexts.emplace_back();  // of an association before
  ASSERT_EQ(pdu.CheckAccept(), 1);
  ASSERT_EQ(pdu.AcceptedContexts.size(), 2u);
  EXPECT_EQ(pdu.AcceptedContexts[0].AbstractSyntax.View(), kCt);
  EXPECT_EQ(pdu.AcceptedContexts[0].TransferSyntax.View(), "1.2.3.4");
  EXPECT_EQ(pdu.AcceptedContexts[1].AbstractSyntax.View(), kEcho);
  EXPECT_EQ(pdu.ContextIDFor(UID(kCt)), 5);

  // Of two with one identifier the first is meant.
  auto& proposed = pdu.AAssociateRQ.PresentationContexts;
  proposed[1].PresentationContextID = proposed[2].PresentationContextID = 1;
  pdu.AAssociateAC.PresentationContexts.clear();
  answer(1, 0, kImplicit);
  ASSERT_EQ(pdu.CheckAccept(), 1);
  ASSERT_EQ(pdu.AcceptedContexts.size(), 1u);
  EXPECT_EQ(pdu.AcceptedContexts[0].AbstractSyntax.View(), kEcho);
}

TEST(AssociateRequest, ProposesAgainWhatWasProposedBefore) {
  Bytes requests[2];
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  SetIdentifierCounter(41);
  for (Bytes& request : requests) {
    ScriptedServer server(AnswerWith(Reject(1, 1, 1), nullptr, &request));
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_EQ(server.Wait(), "");
    // What comes to the list later is not proposed while contexts are there.
    pdu.AddAbstractSyntax(UID(kCt));
  }
  EXPECT_EQ(requests[0], requests[1]);
  EXPECT_EQ(
      requests[0],
      Associate(1, "", "",
                Joined({ApplicationItem(), ContextItem({41, kEcho, {kImplicit}}), OurUserItem()})));
}

TEST(AssociateRequest, ProposesItsOwnAfterItHasAnsweredPeers) {
  PDU_Service pdu;
  pdu.SetCallingTitle("ME");
  pdu.SetApplicationContext(UID("1.2.3"));
  pdu.AddAbstractSyntax(UID(kCt));
  pdu.AAssociateRQ.UserInformation.AddRoleSelect(SCPSCURoleSelect(UID(kCt), 1, 0));
  Bytes asked = RequestFor({{1, kEcho, {kImplicit}}}, PeersUserItem(RoleItem(kEcho, 1, 1)));
  asked[1] = asked[7] = asked[9] = asked[42] = 9;  // reserved bytes, and the version
  for (const char* const called : {"FIRST", "SECOND"}) {
    for (int turn = 0; turn < 2; ++turn) {
      Connection connection;
      connection.peer.Send(asked);
      ASSERT_EQ(pdu.Listen(connection.ours), 1);
      EXPECT_STREQ(pdu.AAssociateRQ.CallingApTitle.data(), "PEER            ");
      ASSERT_EQ(pdu.AAssociateRQ.PresentationContexts.size(), 1u);
      EXPECT_EQ(pdu.AAssociateRQ.PresentationContexts[0].AbstractSyntax.View(), kEcho);
      pdu.Link.Close();
    }
    pdu.SetCallingTitle(called + 1);
    pdu.SetCalledTitle(called);
    pdu.SetApplicationContext(UID(called == std::string_view("FIRST") ? "1.2.4" : "1.2.3"));
    // What the peer has said stays to be read.
    EXPECT_STREQ(pdu.AAssociateRQ.CallingApTitle.data(), "PEER            ");
    EXPECT_STREQ(pdu.AAssociateRQ.CalledApTitle.data(), "US              ");
    EXPECT_EQ(pdu.AAssociateRQ.ApplicationContext.View(), "1.2.840.10008.3.1.1.1");
    Bytes request;
    ScriptedServer server(AnswerWith(Reject(1, 1, 1), nullptr, &request));
    // The context that the first request has built is proposed again.
    SetIdentifierCounter(called == std::string_view("FIRST") ? 41 : 61);
    EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
    EXPECT_EQ(server.Wait(), "");
    EXPECT_EQ(
        request,
        Associate(1, called, called + 1,
                  Joined({ApplicationItem(called == std::string_view("FIRST") ? "1.2.4" : "1.2.3"),
                          ContextItem({41, kCt, {kImplicit}}),
                          OurUserItem(16384, RoleItem(kCt, 0, 1))})));
  }
}

/// What `pdu` proposes now, to a peer that refuses it.
Bytes ProposedBy(PDU_Service& pdu) {
  Bytes request;
  ScriptedServer server(AnswerWith(Reject(1, 1, 1), nullptr, &request));
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(server.Wait(), "");
  return request;
}

/// Has `pdu` answer a peer that asks so.
void LetAsk(PDU_Service& pdu, const Bytes& request, int expected) {
  const Connection connection;
  connection.peer.Send(request);
  EXPECT_EQ(pdu.Listen(connection.ours), expected) << Words(pdu);
  pdu.Link.Close();
}

PresentationContext ContextOf(const Proposal& proposal) {
  PresentationContext context;
  context.PresentationContextID = proposal.id;
  context.AbstractSyntax.Set(proposal.abstractSyntax);
  for (const auto& syntax : proposal.transferSyntaxes)
    context.TransferSyntaxes.emplace_back(syntax);
  return context;
}

TEST(AssociateRequest, ProposesItsContextsAfterPeersOfWhomTheLastSentNone) {
  PDU_Service pdu;
  pdu.AAssociateRQ.AddPresentationContext(ContextOf({5, kCt, {kImplicit}}));
  LetAsk(pdu, RequestFor({{1, kEcho, {kImplicit}}}), 1);
  LetAsk(pdu, BytesOf("GET /"), 0);
  EXPECT_EQ(ProposedBy(pdu),
            Associate(1, "", "",
                      Joined({ApplicationItem(), ContextItem({5, kCt, {kImplicit}}),
                              OurUserItem(16384)})));
}

TEST(AssociateRequest, ProposesItsListsWhereThePeersContextsWereEmptied) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kCt));
  const auto expectProposed = [&](const Bytes& second) {
    SetIdentifierCounter(41);
    EXPECT_EQ(ProposedBy(pdu),
              Associate(1, "", "",
                        Joined({ApplicationItem(), ContextItem({41, kCt, {kImplicit}}), second,
                                OurUserItem(16384)})));
  };
  expectProposed({});
  LetAsk(pdu, RequestFor({{1, kEcho, {kImplicit}}}), 1);
  pdu.AAssociateRQ.PresentationContexts.clear();
  pdu.AddAbstractSyntax(UID(kEcho));
  // Peers that come afterwards change nothing.
  LetAsk(pdu, BytesOf("GET /"), 0);
  LetAsk(pdu, RequestFor({{1, kFind, {kImplicit}}}), 1);
  expectProposed(ContextItem({43, kEcho, {kImplicit}}));
}

TEST(AssociateRequest, ProposesWhatTheCallerHasPutInThePlaceOfAPeersRequest) {
  const Bytes negotiation = Item(0x56, Joined({Big16(kCt.size()), BytesOf(kCt), {1, 2}}));
  const Bytes asked = RequestFor({{1, kEcho, {kImplicit}}},
                                 PeersUserItem(Joined({RoleItem(kEcho, 1, 1), negotiation})));
  using Request = tessaret::AAssociateRQ;
  const struct {
    std::function<void(Request&)> change;
    Bytes expected;
  } rows[] = {
      {[](Request& request) {
         request.PresentationContexts.clear();
         request.AddPresentationContext(ContextOf({5, kCt, {kExplicit}}));
       },
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({5, kCt, {kExplicit}}), OurUserItem()}))},
      {[](Request& request) {
         request.PresentationContexts[0].TransferSyntaxes.emplace_back(kExplicit);
       },
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({1, kEcho, {kImplicit, kExplicit}}),
                         OurUserItem()}))},
      {[](Request& request) { request.PresentationContexts[0].PresentationContextID = 9; },
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({9, kEcho, {kImplicit}}), OurUserItem()}))},
      {[](Request& request) {
         request.UserInformation.RoleSelects.clear();
         request.UserInformation.AddRoleSelect(SCPSCURoleSelect(UID(kFind), 1, 0));
       },
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({7, kFind, {kImplicit}}),
                         OurUserItem(16384, RoleItem(kFind, 0, 1))}))},
      {[](Request& request) {
         request.UserInformation.FindExtendedNegotiation(UID(kCt))->ApplicationInfo = {3};
       },
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({7, kFind, {kImplicit}}),
                         OurUserItem(
                             16384, Item(0x56, Joined({Big16(kCt.size()), BytesOf(kCt), {3}})))}))},
      {[](Request& request) {
         request.CallingApTitle = MakeApTitle("NEW");
         request.CalledApTitle = MakeApTitle("OTHER");
         request.ApplicationContext.Set("1.2.9");
       },
       Associate(1, "OTHER", "NEW",
                 Joined({ApplicationItem("1.2.9"), ContextItem({7, kFind, {kImplicit}}),
                         OurUserItem()}))},
      {[](Request&) {},
       Associate(1, "", "",
                 Joined({ApplicationItem(), ContextItem({7, kFind, {kImplicit}}), OurUserItem()}))},
  };
  for (const auto& row : rows) {
    PDU_Service pdu;
    pdu.AAssociateRQ.AddPresentationContext(ContextOf({7, kFind, {kImplicit}}));
    LetAsk(pdu, asked, 1);
    row.change(pdu.AAssociateRQ);
    EXPECT_EQ(ProposedBy(pdu), row.expected);
    // It is proposed again.
    EXPECT_EQ(ProposedBy(pdu), row.expected);
  }
}

TEST(AssociateRequest, ProposesNoReservedByteOfAPeer) {
  const Bytes context = ContextItem({1, kEcho, {kImplicit}});
  const Bytes role = RoleItem(kEcho, 1, 1);
  const Bytes negotiation = Item(0x56, Joined({Big16(kCt.size()), BytesOf(kCt), {1, 2}}));
  // The second byte of an item is reserved, and of a context three behind its identifier.
  const auto reserved = [](Bytes item) {
    item[1] = 0x7F;
    return item;
  };
  Bytes asked = reserved(context);
  asked[5] = asked[6] = asked[7] = asked[9] = asked[9 + 4 + kEcho.size()] = 0x7F;
  const Bytes user = PeersUserItem(Joined({reserved(role), reserved(negotiation)}));
  PDU_Service pdu;
  LetAsk(pdu, Associate(1, "US", "PEER", Joined({reserved(ApplicationItem()), asked, user})), 1);
  tessaret::AAssociateRQ& request = pdu.AAssociateRQ;
  EXPECT_EQ(request.PresentationContexts[0].TransferSyntaxes[0].Reserved1, 0x7F);
  request.ApplicationContext.Set("1.2.9");
  request.PresentationContexts[0].PresentationContextID = 3;
  request.UserInformation.RoleSelects[0].SCURole = 0;
  request.UserInformation.ExtendedNegotiations[0].ApplicationInfo = {1};
  EXPECT_EQ(
      ProposedBy(pdu),
      Associate(
          1, "", "",
          Joined(
              {ApplicationItem("1.2.9"), ContextItem({3, kEcho, {kImplicit}}),
               OurUserItem(
                   16384, Joined({RoleItem(kEcho, 0, 1),
                                  Item(0x56, Joined({Big16(kCt.size()), BytesOf(kCt), {1}}))}))})));
}

TEST(AssociateRequest, ProposesTheTitlesThatWereSetLast) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kCt));
  for (const bool isSetLast : {false, true}) {
    LetAsk(pdu, RequestFor({{1, kEcho, {kImplicit}}}), 1);
    const auto set = [&] {
      pdu.SetCalledTitle("SET");
      pdu.SetCallingTitle("SET TOO");
      pdu.SetApplicationContext(UID("1.2.8"));
    };
    if (!isSetLast) set();
    pdu.AAssociateRQ.CalledApTitle = MakeApTitle("PUT");
    pdu.AAssociateRQ.CallingApTitle = MakeApTitle("PUT TOO");
    pdu.AAssociateRQ.ApplicationContext.Set("1.2.9");
    if (isSetLast) set();
    SetIdentifierCounter(41);
    EXPECT_EQ(ProposedBy(pdu),
              Associate(1, isSetLast ? "SET" : "PUT", isSetLast ? "SET TOO" : "PUT TOO",
                        Joined({ApplicationItem(isSetLast ? "1.2.8" : "1.2.9"),
                                ContextItem({41, kCt, {kImplicit}}), OurUserItem()})));
  }
}

TEST(AssociateRequest, AsksADescendantForWhatItSaysOfItself) {
  class OfItsOwn : public PDU_Service {
    void FillTransferSyntaxes(PresentationContext& context) override {
      context.TransferSyntaxes.emplace_back("1.2.8");
    }
    void FillImplementationClass(ImplementationClass& item) override { item.Set("1.2.7"); }
    void FillImplementationVersion(ImplementationVersion& item) override { item.Set("OWN"); }
  };
  OfItsOwn pdu;
  pdu.AddAbstractSyntax(UID(kCt));
  pdu.AddTransferSyntax(UID(kExplicit));
  SetIdentifierCounter(41);
  EXPECT_EQ(ProposedBy(pdu), Associate(1, "", "",
                                       Joined({ApplicationItem(), ContextItem({41, kCt, {"1.2.8"}}),
                                               UserItem(16384, "1.2.7", "OWN")})));
}

TEST(AssociateRequest, ProposesAtMostAsManyContextsAsThereAreIdentifiers) {
  Bytes request;
  ScriptedServer server(AnswerWith(Reject(1, 1, 1), nullptr, &request));
  PDU_Service pdu;
  for (int i = 0; i < 128; ++i) pdu.AddAbstractSyntax(UID("1.2." + std::to_string(i)));
  // The low byte comes round within these.
  SetIdentifierCounter(0x1FE);
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(Words(pdu), "Connection rejected permanent: service-user, no reason given");
  ASSERT_EQ(pdu.AAssociateRQ.PresentationContexts.size(), 128u);
  std::vector<bool> isTaken(256);
  for (const PresentationContext& context : pdu.AAssociateRQ.PresentationContexts) {
    EXPECT_EQ(context.PresentationContextID % 2, 1);
    EXPECT_FALSE(isTaken[context.PresentationContextID]);
    isTaken[context.PresentationContextID] = true;
  }

  PDU_Service more;
  for (int i = 0; i < 129; ++i) more.AddAbstractSyntax(UID("1.2." + std::to_string(i)));
  EXPECT_EQ(more.Connect("127.0.0.1", server.Port()), 0);
  EXPECT_EQ(Words(more), "Too many SOP Classes proposed");
  EXPECT_EQ(more.AAssociateRJ, (Refusal{1, 1, 1, ""}));
}

TEST(AssociateRequest, WithMoreThanItsItemsCanSayOpensNoSocket) {
  const Listener listener;
  // 4 bytes, 4 + 17 of the class, and 4 + n for each transfer syntax: these alone are more than the 65535 that a context can have.
  PDU_Service syntaxes;
  syntaxes.AddAbstractSyntax(UID(kEcho));
  for (int i = 10000; i < 15000; ++i) syntaxes.AddTransferSyntax(UID("1.2.3." + std::to_string(i)));
  PDU_Service roles;
  roles.AddAbstractSyntax(UID(kEcho));
  for (int i = 10000; i < 15000; ++i) {
    roles.AAssociateRQ.UserInformation.AddRoleSelect(
        SCPSCURoleSelect(UID("1.2.3." + std::to_string(i)), 1, 1));
  }
  for (PDU_Service* pdu : {&syntaxes, &roles}) {
    pdu->Link.TimeoutSecs = 2;
    EXPECT_EQ(pdu->Connect("127.0.0.1", listener.Port()), 0);
    EXPECT_EQ(Words(*pdu), "Association request too long");
    EXPECT_EQ(pdu->AAssociateRJ, (Refusal{1, 1, 1, ""}));
    EXPECT_EQ(pdu->Link.Connected, 0);
  }
  pollfd ready{.fd = listener.Descriptor(), .events = POLLIN, .revents = 0};
  EXPECT_EQ(::poll(&ready, 1, 0), 0);
}

TEST(AssociateRequest, GivesUpOnAPeerThatNeverAnswers) {
  const Listener silent;
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.Link.TimeoutSecs = 1;
  EXPECT_EQ(pdu.Connect("127.0.0.1", silent.Port()), 0);
  EXPECT_EQ(Words(pdu), "Corrupt transmission reading AAssociateRQ");
  EXPECT_EQ(pdu.Link.Connected, 0);
}

TEST(AssociateRequest, GivesUpOnAPeerThatFallsSilentWithinItsAnswer) {
  const struct {
    Bytes sent;
    const char* words;
  } rows[] = {
      {{2, 0, 0}, "Corrupt transmission reading AAssociateRQ"},
      {{3, 0, 0, 0, 0, 4, 0, 1}, "Association rejected: link error"},
  };
  for (const auto& row : rows) {
    const Listener listener;
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    pdu.Link.TimeoutSecs = 1;
    Peer peer;
    std::thread silent([&] {
      peer = listener.Accept();
      peer.Send(row.sent);
    });
    EXPECT_EQ(pdu.Connect("127.0.0.1", listener.Port()), 0);
    silent.join();
    EXPECT_EQ(Words(pdu), row.words);
    EXPECT_EQ(pdu.Link.Connected, 0);
  }
}

TEST(AssociateRequest, ThatFailsClosesWhatWasOpenBefore) {
  for (const bool isProposing : {false, true}) {
    Association association({{1, kEcho, kImplicit}});
    if (isProposing) {
      for (int i = 0; i < 129; ++i) {
        association.pdu.AddAbstractSyntax(UID("1.2." + std::to_string(i)));
      }
    }
    EXPECT_EQ(association.pdu.Connect("127.0.0.1", "no such service"), 0);
    EXPECT_EQ(Words(association.pdu),
              isProposing ? "Too many SOP Classes proposed" : "No SOP Class proposed");
    EXPECT_EQ(association.pdu.Link.Connected, 0);
    EXPECT_EQ(association.peer.ReceiveToEnd(), Bytes());
  }
}

TEST(AssociateRequest, ConnectsAgainWithoutWhatWasLeftOfTheLinkBefore) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  const Bytes answer = AnswerOf(AcceptItem(1, 0, kImplicit));
  SetIdentifierCounter(1);
  for (int turn = 0; turn < 2; ++turn) {
    // Half a message, and then the end.
    const Bytes half = Data(1, kCommandPart, Bytes(20));
    ScriptedServer server(AnswerWith(Joined({answer, half, {4, 0, 0}})));
    ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
    DICOMCommandObject command;
    EXPECT_EQ(pdu.Read(command), 0);
    EXPECT_TRUE(command.IsEmpty());
    pdu.Link.Close();
  }
}

TEST(AssociateRequest, ConnectsAgainWithoutWhatWasNotReadOfTheLinkBefore) {
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kCt));
  SetIdentifierCounter(1);
  const Bytes stale = Data(1, kLastPart, Elements().Text(0x0010, 0x0010, "OLD"));
  {
    ScriptedServer server(AnswerWith(Joined({AnswerOf(AcceptItem(1, 0, kImplicit)), stale})));
    ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
    pdu.Link.Close();
  }
  {
    const Bytes half = Data(1, 0, Elements().Text(0x0010, 0x0010, "HALF"));
    ScriptedServer server(AnswerWith(Joined({AnswerOf(AcceptItem(1, 0, kImplicit)), half})));
    ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
    DICOMDataObject object;
    EXPECT_EQ(pdu.Read(object), 0);
  }
  // The last one takes another syntax under the same identifier.
  Bytes received;
  const Bytes fresh = Data(1, kLastPart, {0x10, 0, 0x20, 0, 'L', 'O', 2, 0, 'I', 'D'});
  ScriptedServer server(
      AnswerWith(Joined({AnswerOf(AcceptItem(1, 0, kExplicit)), fresh}), &received));
  ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
  ASSERT_EQ(pdu.AcceptedContexts.size(), 1u);
  DICOMDataObject object;
  EXPECT_EQ(pdu.Read(object), 1) << Words(pdu);
  EXPECT_EQ(object.GetVR(0x0010, 0x0010), nullptr);
  ASSERT_NE(object.GetVR(0x0010, 0x0020), nullptr);
  EXPECT_EQ(object.GetVR(0x0010, 0x0020)->Length, 2u);
  DICOMDataObject answer;
  PutBytes(answer, 0x0010, 0x0020, type_code::LO, "ID");
  EXPECT_TRUE(pdu.Write(answer, UID(kCt))) << Words(pdu);
  pdu.Link.Close();
  EXPECT_EQ(server.Wait(), "");
  EXPECT_EQ(received, fresh);
}

// --- release ---

TEST(Release, EndsThoughThePeerJustCloses) {
  Association association({{1, kEcho, kImplicit}});
  association.peer.EndSending();
  EXPECT_EQ(association.pdu.Close(), 1);
  EXPECT_EQ(association.pdu.Link.Connected, 0);
  EXPECT_FALSE(association.pdu.IsEnd());  // of the link that may come
  EXPECT_EQ(association.peer.Received(), ReleaseRequest());
}

TEST(Release, TakesWhateverComesForTheAnswer) {
  Association association({{1, kEcho, kImplicit}});
  association.peer.Send(Joined({{9}, Bytes(9)}));
  association.pdu.PDataTF.Length = 77;
  association.pdu.PDataTF.MsgStatus = 1;
  EXPECT_EQ(association.pdu.Close(), 1);
  EXPECT_EQ(association.pdu.PDataTF.Length, 0u);
  EXPECT_EQ(association.pdu.PDataTF.MsgStatus, 0);
  EXPECT_EQ(association.peer.ReceiveToEnd(), ReleaseRequest());
  EXPECT_EQ(association.pdu.AReleaseRP.ItemType, 9);
}

TEST(Release, TakesAnyPduForTheAnswerAtOnceAndSaysNothingToIt) {
  const Bytes command = Command().Number(0x0100, 1);
  const Bytes answers[] = {
      {0, 0, 0, 0, 0, 4, 0, 0, 0, 0},
      RequestFor({{1, kEcho, {kImplicit}}}),
      AnswerOf(AcceptItem(1, 0, kImplicit)),
      Reject(1, 1, 1),
      Data(1, kWholeCommand, command),
      // Of these the next one is no answer any longer.
      Joined({Data(1, kCommandPart, command), ReleaseAnswer()}),
      Pdu(4, {}),
      ReleaseRequest(),
      Joined({ReleaseRequest(), ReleaseAnswer()}),
      ReleaseAnswer(),
      Joined({ReleaseAnswer(), Data(1, kWholeCommand, command)}),
      AbortPdu(0, 0),
      AbortPdu(2, 6),
      Joined({AbortPdu(0, 0), Bytes(1000, 0xEE)}),
      {8, 0, 0, 0, 0, 4, 0, 0, 0, 0},
      {255, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0},
  };
  for (const Bytes& answer : answers) {
    const int type = answer[0];
    Association association({{1, kEcho, kImplicit}});
    association.pdu.Link.TimeoutSecs = 10;
    association.peer.Send(answer);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(association.pdu.Close(), 1) << type;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5)) << type;
    EXPECT_EQ(association.pdu.AReleaseRP.ItemType, type);
    EXPECT_EQ(association.pdu.Link.Connected, 0) << type;
    EXPECT_EQ(Words(association.pdu), "") << type;
    EXPECT_EQ(association.pdu.InSize, 0) << type;
    EXPECT_TRUE(association.pdu.PDataTF.Message().empty()) << type;
    EXPECT_EQ(association.peer.ReceiveToEnd(), ReleaseRequest()) << type;
  }
}

TEST(Release, RepeatsNothingThatAPeerHasSaidBefore) {
  PDU_Service pdu;
  for (int turn = 0; turn < 2; ++turn) {
    Connection connection;
    pdu.Link.Adopt(connection.ours);
    connection.peer.Send({5, 9, 0, 0, 0, 4, 9, 9, 9, 9});
    DICOMCommandObject command;
    EXPECT_EQ(pdu.Read(command), 0);
    EXPECT_EQ(connection.peer.Received(), ReleaseAnswer());
    // Whatever comes for the answer.
    connection.peer.Send({8, 9, 0, 0, 0, 4, 9, 9, 9, 9});
    EXPECT_EQ(pdu.Close(), 1);
    EXPECT_EQ(connection.peer.ReceiveToEnd(), ReleaseRequest());
  }
}

TEST(Release, AnswerIsReadAsOneWhateverWasReadForOneBefore) {
  Association association({{1, kEcho, kImplicit}});
  association.pdu.AReleaseRP.ItemType = 9;
  association.peer.Send(ReleaseAnswer());
  DICOMCommandObject command;
  EXPECT_EQ(association.pdu.Read(command), 0);
  EXPECT_EQ(association.pdu.AReleaseRP.ItemType, 6);
}

TEST(Release, EndsThoughThePeerSaysNothingOrHalfOfIt) {
  for (const Bytes& said : {Bytes{}, Bytes{6}, Bytes{6, 0, 0, 0, 0, 4, 0}}) {
    Association association({{1, kEcho, kImplicit}});
    association.pdu.Link.TimeoutSecs = 0;
    association.peer.Send(said);
    EXPECT_EQ(association.pdu.Close(), 1);
    EXPECT_EQ(association.pdu.Link.Connected, 0);
    EXPECT_EQ(association.peer.ReceiveToEnd(), ReleaseRequest());
  }
}

TEST(Release, WaitsForNoAnswerWhereItCouldNotBeSent) {
  Association association({{1, kEcho, kImplicit}});
  SocketFailure failure;
  failure.FailCall(SocketCall::kSend, 1, ENETDOWN);
  EXPECT_EQ(association.pdu.Close(), 1);
  EXPECT_EQ(association.pdu.Link.Connected, 0);
  EXPECT_EQ(failure.Calls(SocketCall::kReceive), 0);
}

TEST(Release, TakesARequestThatCrossesItForTheAnswer) {
  Association association({{1, kEcho, kImplicit}});
  association.peer.Send(ReleaseRequest());
  EXPECT_EQ(association.pdu.Close(), 1);
  EXPECT_EQ(association.peer.ReceiveToEnd(), ReleaseRequest());
}

TEST(Release, OfAnAssociationThatIsNotOpenSendsNothing) {
  PDU_Service pdu;
  EXPECT_EQ(pdu.Close(), 1);
  EXPECT_EQ(pdu.Close(), 1);
  EXPECT_TRUE(Words(pdu).empty());
}

TEST(Release, IsDoneByTheDestructor) {
  Connection connection;
  connection.peer.Send(ReleaseAnswer());
  {
    PDU_Service pdu;
    pdu.Link.Adopt(connection.ours);
  }
  EXPECT_EQ(connection.peer.ReceiveToEnd(), ReleaseRequest());
}

// --- lists ---

TEST(AcceptedContexts, AreFoundByEachOfTheirNames) {
  const Association association({{3, kCt, kImplicit}, {5, kCt, kExplicit}, {7, kEcho, kExplicit}});
  const PDU_Service& pdu = association.pdu;
  EXPECT_EQ(pdu.ContextIDFor(UID(kCt)), 3);
  EXPECT_EQ(pdu.ContextIDFor(UID(kEcho)), 7);
  EXPECT_EQ(pdu.ContextIDFor(UID("1.2")), 0);
  EXPECT_EQ(pdu.ContextIDFor(UID(kCt), UID(kExplicit)), 5);
  EXPECT_EQ(pdu.ContextIDFor(UID(kEcho), UID(kImplicit)), 0);
  EXPECT_EQ(pdu.ContextIDForTransfer(UID(kExplicit)), 5);
  EXPECT_EQ(pdu.ContextIDForTransfer(UID(kBigEndianSyntax)), 0);
  EXPECT_TRUE(pdu.IsAccepted(UID(kEcho)));
  EXPECT_FALSE(pdu.IsAccepted(UID("1.2")));
  UID syntax;
  EXPECT_TRUE(pdu.TransferSyntaxOf(7, syntax));
  EXPECT_EQ(syntax.View(), kExplicit);
  EXPECT_FALSE(pdu.TransferSyntaxOf(9, syntax));
}

TEST(AcceptedContexts, TakeAFurtherSyntaxUnderTheSameIdentifier) {
  Association association({{3, kCt, kImplicit}});
  PDU_Service& pdu = association.pdu;
  EXPECT_EQ(pdu.AddAcceptedContext(UID(kCt), UID(kExplicit)), 1);
  EXPECT_EQ(pdu.AddAcceptedContext(UID(kEcho), UID(kExplicit)), 0);
  ASSERT_EQ(pdu.AcceptedContexts.size(), 2u);
  EXPECT_EQ(pdu.AcceptedContexts[1].PresentationContextID, 3);
  EXPECT_EQ(pdu.AcceptedContexts[1].Result, 0);
  EXPECT_EQ(pdu.ContextIDFor(UID(kCt), UID(kExplicit)), 3);
}

TEST(PduService, BeginsWithItsDefaults) {
  const PDU_Service pdu;
  EXPECT_EQ(pdu.ByteOrderFlag, 1);
  EXPECT_EQ(pdu.InEndian, kBigEndian);
  EXPECT_EQ(pdu.OutEndian, kBigEndian);
  EXPECT_EQ(pdu.GetLastError(), nullptr);
  EXPECT_EQ(pdu.Dictionary, nullptr);
  EXPECT_EQ(pdu.Link.TimeoutSecs, 300);
  EXPECT_EQ(pdu.AAssociateRJ, (Refusal{1, 3, 1, ""}));
  EXPECT_EQ(pdu.AAbortRQ.Source, 3);
  EXPECT_EQ(pdu.AAbortRQ.Reason, 1);
}

TEST(PduService, DeletesADictionaryThatItOwnsWhenAnotherTakesItsPlace) {
  const RTC other;
  {
    PDU_Service pdu;
    pdu.AttachDictionary(new RTC, true);
    EXPECT_EQ(pdu.OwnsDictionary, 1);
    const auto* const again = new RTC;
    pdu.AttachDictionary(again, true);  // a leak would show under the sanitizer
    pdu.AttachDictionary(again, true);
    pdu.AttachDictionary(&other, false);
    EXPECT_EQ(pdu.Dictionary, &other);
    EXPECT_EQ(pdu.OwnsDictionary, 0);
  }
  PDU_Service last;
  last.AttachDictionary(new RTC, true);
}

}  // namespace
}  // namespace tessaret::test
