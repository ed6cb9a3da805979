// The side that is asked for an association.
#include <fcntl.h>

#include <gtest/gtest.h>

#include "core/trace.h"
#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

/// What an acceptor makes of the bytes of a peer that then ends sending.
struct Answered {
  explicit Answered(const Bytes& request, PDU_Service* acceptor = nullptr)
      : pdu(acceptor == nullptr ? own : *acceptor) {
    Connection connection;
    connection.peer.SendAll(request);
    result = pdu.Listen(connection.ours);
    sent = connection.peer.Received();
    connected = pdu.Link.Connected;
    pdu.Link.Close();
  }
  PDU_Service own;
  PDU_Service& pdu;
  int result;
  int connected;
  Bytes sent;
};

Bytes AnswerOf(const Bytes& contexts, const Bytes& user) {
  return Associate(2, "US", "PEER", Joined({ApplicationItem(), contexts, user}));
}

/// Writes down what it is asked, and refuses what it is told to.
class Picky : public PDU_Service {
 public:
  bool AcceptCallingTitle(std::string_view title) override {
    log += "calling[" + std::string(title) + "]";
    return refused != "calling";
  }
  bool AcceptCalledTitle(std::string_view title) override {
    log += "called[" + std::string(title) + "]";
    return refused != "called";
  }
  bool AcceptApplicationContext(const UID& context) override {
    log += "context[" + std::string(context.View()) + "]";
    return refused != "context";
  }
  bool AcceptAbstractSyntax(const UID& syntax) override {
    log += "abstract[" + std::string(syntax.View()) + "]";
    return refused != "abstract";
  }
  std::string refused;
  std::string log;
};

class TakesBothNative : public PDU_Service {
 public:
  bool AcceptTransferSyntax(const UID& syntax) override {
    return syntax.View() == kImplicit || syntax.View() == kExplicit;
  }
};

TEST(AssociateAnswer, AnswersEachContextInTheOrderOfTheRequest) {
  const Answered answered(RequestFor({{1, kEcho, {kImplicit}},
                                      {3, kCt, {kExplicit}},
                                      {5, kCt, {kExplicit, kImplicit}},
                                      {7, kFind, {}}}));
  EXPECT_EQ(answered.result, 1);
  EXPECT_EQ(answered.connected, 1);
  // The maximum length is the requester's own, every refusal is a 3.
  EXPECT_EQ(answered.sent, AnswerOf(Joined({AcceptItem(1, 0, kImplicit), AcceptItem(3, 3, ""),
                                            AcceptItem(5, 0, kImplicit), AcceptItem(7, 3, "")}),
                                    OurUserItem(32768)));
  ASSERT_EQ(answered.pdu.AcceptedContexts.size(), 2u);
  EXPECT_EQ(answered.pdu.ContextIDFor(UID(kEcho)), 1);
  EXPECT_EQ(answered.pdu.ContextIDFor(UID(kCt), UID(kImplicit)), 5);
}

TEST(AssociateAnswer, GoesByTheRequestersOrderOfTransferSyntaxes) {
  TakesBothNative pdu;
  const Answered answered(RequestFor({{1, kCt, {kBigEndianSyntax, kExplicit, kImplicit}},
                                      {3, kCt, {kImplicit, kExplicit}}}),
                          &pdu);
  EXPECT_EQ(answered.sent,
            AnswerOf(Joined({AcceptItem(1, 0, kExplicit), AcceptItem(3, 0, kImplicit)}),
                     OurUserItem(32768)));
}

TEST(AssociateAnswer, AnswersRolesAndNothingElseOfTheUserInformation) {
  const Bytes asynchronous = Item(0x53, {0, 5, 0, 5});
  const Bytes extended = Item(0x56, Joined({Big16(kFind.size()), BytesOf(kFind), {1, 1, 1}}));
  const Bytes identity = Item(0x58, {1, 0, 0, 1, 'x', 0, 0});
  const Answered answered(
      RequestFor({{1, kCt, {kImplicit}}},
                 PeersUserItem(Joined({RoleItem(kCt, 1, 1), asynchronous, RoleItem(kEcho, 1, 0),
                                       RoleItem(kCt, 0, 0), extended, identity}))));
  // 4 unknown items' bytes are not in the way: only what was read is answered.
  EXPECT_EQ(answered.sent,
            AnswerOf(AcceptItem(1, 0, kImplicit),
                     OurUserItem(32768, Joined({RoleItem(kCt, 0, 1), RoleItem(kEcho, 0, 1)}))));
}

TEST(AssociateAnswer, AsksADescendantForRoles) {
  class Both : public PDU_Service {
    std::uint8_t SCURoleReply(const UID&, std::uint8_t proposed) override { return proposed; }
    std::uint8_t SCPRoleReply(const UID& uid, std::uint8_t proposed) override {
      return uid.View() == kCt ? proposed : std::uint8_t{9};
    }
  };
  Both pdu;
  const Answered answered(
      RequestFor({{1, kCt, {kImplicit}}},
                 PeersUserItem(Joined({RoleItem(kCt, 1, 0), RoleItem(kEcho, 0, 1)}))),
      &pdu);
  EXPECT_EQ(answered.sent,
            AnswerOf(AcceptItem(1, 0, kImplicit),
                     OurUserItem(32768, Joined({RoleItem(kCt, 1, 0), RoleItem(kEcho, 0, 9)}))));
}

TEST(AssociateAnswer, RefusesByTheCalledTitleFirstThenTheCallingOneThenTheContext) {
  const struct {
    const char* refused;
    Bytes answer;
    const char* log;
  } rows[] = {
      {"called", Reject(1, 1, 7), "called[US              ]"},
      {"calling", Reject(1, 1, 3), "called[US              ]calling[PEER            ]"},
      {"context", Reject(1, 1, 2),
       "called[US              ]calling[PEER            ]context[1.2.840.10008.3.1.1.1]"},
      {"abstract", Reject(1, 1, 2),
       "called[US              ]calling[PEER            ]context[1.2.840.10008.3.1.1.1]"
       "abstract[1.2.840.10008.1.1]"},
  };
  for (const auto& row : rows) {
    Picky pdu;
    pdu.refused = row.refused;
    const Answered answered(RequestFor({{1, kEcho, {kImplicit}}}), &pdu);
    EXPECT_EQ(answered.result, 0) << row.refused;
    EXPECT_EQ(answered.connected, 0) << row.refused;
    EXPECT_EQ(answered.sent, row.answer) << row.refused;
    EXPECT_EQ(pdu.log, row.log);
  }
}

TEST(AssociateAnswer, RefusesWhereNoContextIsAccepted) {
  const Bytes requests[] = {
      RequestFor({{1, kCt, {kExplicit}}}),
      RequestFor({{1, kCt, {}}}),
      RequestFor({}),
  };
  for (const Bytes& request : requests) {
    const Answered answered(request);
    EXPECT_EQ(answered.result, 0);
    EXPECT_EQ(answered.sent, Reject(1, 1, 2));
    EXPECT_EQ(Words(answered.pdu), "No accepted presentation contexts");
  }
}

TEST(AssociateAnswer, TakesAnIdentifierOnce) {
  const Answered answered(
      RequestFor({{1, kEcho, {kImplicit}}, {1, kCt, {kImplicit}}, {2, kFind, {kImplicit}}}));
  EXPECT_EQ(answered.sent, AnswerOf(Joined({AcceptItem(1, 0, kImplicit), AcceptItem(1, 3, ""),
                                            AcceptItem(2, 0, kImplicit)}),
                                    OurUserItem(32768)));
}

TEST(AssociateAnswer, RefusesTheIdentifierThatMeansNone) {
  const Answered answered(RequestFor({{0, kCt, {kImplicit}}, {1, kCt, {kImplicit}}}));
  EXPECT_EQ(answered.sent, AnswerOf(Joined({AcceptItem(0, 3, ""), AcceptItem(1, 0, kImplicit)}),
                                    OurUserItem(32768)));
  EXPECT_EQ(answered.pdu.ContextIDFor(UID(kCt)), 1);
  const Answered alone(RequestFor({{0, kCt, {kImplicit}}}));
  EXPECT_EQ(alone.sent, Reject(1, 1, 2));
}

TEST(AssociateAnswer, AsksADescendantForContextsAndForWhatItSaysOfItself) {
  class OfItsOwn : public PDU_Service {
    bool AcceptPresentationContext(const PresentationContext& proposed,
                                   PresentationContextAccept& accept) override {
      accept.AbstractSyntax.Set("1.2.6");
      accept.TransferSyntax.Set("1.2.9");
      return proposed.PresentationContextID == 3;
    }
    void FillImplementationClass(ImplementationClass& item) override { item.Set("1.2.7"); }
    void FillImplementationVersion(ImplementationVersion& item) override { item.Set("OWN"); }
  };
  OfItsOwn pdu;
  const Answered answered(RequestFor({{1, kCt, {kImplicit}}, {3, kCt, {kImplicit}}}), &pdu);
  EXPECT_EQ(answered.sent, AnswerOf(Joined({AcceptItem(1, 3, "1.2.9"), AcceptItem(3, 0, "1.2.9")}),
                                    UserItem(32768, "1.2.7", "OWN")));
  EXPECT_EQ(pdu.ContextIDFor(UID("1.2.6"), UID("1.2.9")), 3);
}

TEST(AssociateAnswer, RepeatsNoReservedByteThatADescendantHasCopied) {
  class TakesTheLast : public PDU_Service {
    bool AcceptPresentationContext(const PresentationContext& proposed,
                                   PresentationContextAccept& accept) override {
      accept.AbstractSyntax = proposed.AbstractSyntax;
      accept.TransferSyntax = proposed.TransferSyntaxes.back();
      return proposed.PresentationContextID == 1;
    }
  };
  Bytes asked = RequestFor({{1, kCt, {kImplicit}}, {3, kCt, {kImplicit}}});
  // Behind head, titles and application context, a context has 8 bytes and its class in front of the transfer syntax.
  const std::size_t context = 74 + 4 + std::string_view("1.2.840.10008.3.1.1.1").size();
  const std::size_t syntax = 4 + 4 + 4 + kCt.size();
  const std::size_t size = syntax + 4 + kImplicit.size();
  ASSERT_EQ(asked[context + syntax], 0x40);
  ASSERT_EQ(asked[context + size + syntax], 0x40);
  asked[context + syntax + 1] = asked[context + size + syntax + 1] = 9;
  TakesTheLast pdu;
  EXPECT_EQ(Answered(asked, &pdu).sent,
            AnswerOf(Joined({AcceptItem(1, 0, kImplicit), AcceptItem(3, 3, kImplicit)}),
                     OurUserItem(32768)));
}

TEST(AssociateAnswer, IsToWhatWasAskedWhateverADecisionChanges) {
  class Changing : public PDU_Service {
    bool AcceptCalledTitle(std::string_view) override {
      SetCalledTitle("OTHER");
      AAssociateRQ.CallingApTitle = MakeApTitle("ANOTHER");
      return true;
    }
    bool AcceptCallingTitle(std::string_view title) override { return title.starts_with("PEER "); }
    bool AcceptAbstractSyntax(const UID&) override {
      AAssociateRQ.PresentationContexts.clear();
      return true;
    }
    std::uint8_t SCURoleReply(const UID&, std::uint8_t) override {
      AAssociateRQ.UserInformation.RoleSelects.clear();
      return 0;
    }
  };
  Changing pdu;
  const Answered answered(
      RequestFor({{1, kCt, {kImplicit}}, {3, kEcho, {kImplicit}}},
                 PeersUserItem(Joined({RoleItem(kCt, 1, 0), RoleItem(kEcho, 0, 1)}))),
      &pdu);
  EXPECT_EQ(answered.result, 1);
  EXPECT_EQ(answered.sent,
            AnswerOf(Joined({AcceptItem(1, 0, kImplicit), AcceptItem(3, 0, kImplicit)}),
                     OurUserItem(32768, Joined({RoleItem(kCt, 0, 1), RoleItem(kEcho, 0, 1)}))));
}

TEST(AssociateAnswer, AbortsWhereADecisionThrows) {
  class Throwing : public PDU_Service {
   public:
    bool AcceptAbstractSyntax(const UID&) override { throw std::runtime_error("no"); }
  };
  Throwing pdu;
  const Answered answered(RequestFor({{1, kCt, {kImplicit}}}), &pdu);
  EXPECT_EQ(answered.result, 0);
  EXPECT_EQ(answered.connected, 0);
  EXPECT_EQ(answered.sent, OurAbort());
  EXPECT_EQ(Words(pdu), "The request could not be answered, sending A-Abort-RQ");
}

TEST(AssociateAnswer, AbortsWithoutTheAnswerThatCouldNotBeSent) {
  class ThrowsOnce : public PDU_Service {
    int SendBinary(const void* data, std::uint32_t count) override {
      if (std::exchange(throws_, false)) throw std::runtime_error("not now");
      return PDU_Service::SendBinary(data, count);
    }
    bool throws_ = true;
  };
  ThrowsOnce pdu;
  const Answered answered(RequestFor({{1, kCt, {kImplicit}}}), &pdu);
  EXPECT_EQ(answered.result, 0);
  EXPECT_EQ(answered.sent, OurAbort());
}

TEST(AssociateAnswer, WritesInTheContextThatWasAcceptedOfTwoWithOneIdentifier) {
  Connection connection;
  PDU_Service pdu;
  connection.peer.Send(RequestFor({{1, kEcho, {kExplicit}}, {1, kCt, {kImplicit}}}));
  ASSERT_EQ(pdu.Listen(connection.ours), 1);
  DICOMDataObject object;
  object.Push(new VR(0x0010, 0x0010, 2, true));
  object.GetVR(0x0010, 0x0010)->Data[0] = 'A';
  object.GetVR(0x0010, 0x0010)->Data[1] = 'B';
  static_cast<void>(connection.peer.Received());
  EXPECT_TRUE(pdu.Write(object, UID(kCt))) << Words(pdu);
  EXPECT_EQ(connection.peer.Received(), Data(1, kLastPart, Elements().Text(0x0010, 0x0010, "AB")));
  pdu.Link.Close();
}

TEST(AssociateAnswer, EchoesTheVeryMaximumLength) {
  for (const std::size_t maximum :
       {std::size_t{0}, std::size_t{1}, std::size_t{8}, std::size_t{0xFFFFFFFF}}) {
    const Answered answered(RequestFor({{1, kEcho, {kImplicit}}}, UserItem(maximum, "1.2", "V")));
    EXPECT_EQ(answered.sent, AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(maximum)));
  }
}

TEST(AssociateAnswer, AbortsWhereSomethingElseIsSpoken) {
  const struct {
    Bytes bytes;
    const char* type;
  } rows[] = {
      {BytesOf("GET / HTTP/1.1\r\n\r\n"), "47"},
      {{0x16, 3, 1, 2, 0, 1, 0}, "16"},  // TLS
      {BytesOf("SSH-2.0-OpenSSH_9\r\n"), "53"},
      {{0}, "0"},
      {Associate(2, "US", "PEER", ApplicationItem()), "2"},
      {Reject(1, 1, 1), "3"},
      {ReleaseAnswer(), "6"},
      {ReleaseRequest(), "5"},
      {Data(1, 3, Bytes(8)), "4"},
      {AbortPdu(0, 0), "7"},
  };
  for (const auto& row : rows) {
    PDU_Service pdu;
    // The numbers of an abort that was received before are not sent on.
    pdu.AAbortRQ.Source = 0;
    pdu.AAbortRQ.Reason = 6;
    const Answered answered(row.bytes, &pdu);
    EXPECT_EQ(answered.result, 0);
    EXPECT_EQ(answered.connected, 0);
    EXPECT_EQ(pdu.InSize, 0) << row.type;
    EXPECT_EQ(answered.sent, OurAbort());
    EXPECT_EQ(Words(pdu),
              "DUL: Received unknown item type " + std::string(row.type) + ", sending A-Abort-RQ");
  }
}

TEST(AssociateAnswer, AnswersNothingWhereThePeerClosesAtAnyByteOfTheRequest) {
  const Bytes whole = RequestFor({{1, kEcho, {kImplicit}}});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const Answered answered(Bytes(whole.begin(), whole.begin() + static_cast<int>(size)));
    ASSERT_EQ(answered.result, 0) << size;
    ASSERT_TRUE(answered.sent.empty()) << size;
    ASSERT_EQ(Words(answered.pdu), "The peer has closed the link");
  }
}

TEST(AssociateAnswer, DropsAPeerThatSaysNothing) {
  Connection connection;
  PDU_Service pdu;
  pdu.Link.TimeoutSecs = 1;
  connection.peer.Send({1, 0, 0, 0});
  EXPECT_EQ(pdu.Listen(connection.ours), 0);
  EXPECT_EQ(Words(pdu), "Timeout error reading from socket");
  EXPECT_EQ(connection.peer.ReceiveToEnd(), OurAbort());
}

TEST(AssociateAnswer, SurvivesRequestsThatLieAboutLengths) {
  const Bytes good = RequestFor({{1, kEcho, {kImplicit}}});
  const auto withLength = [&](std::size_t length) {
    Bytes request = good;
    const Bytes field = Big32(length);
    std::copy(field.begin(), field.end(), request.begin() + 2);
    return request;
  };
  for (const std::size_t length :
       {std::size_t{0}, std::size_t{67}, std::size_t{0xFFFFFFFF}, (std::size_t{4} << 20) + 1}) {
    const Answered answered(withLength(length));
    EXPECT_EQ(answered.result, 0) << length;
    EXPECT_EQ(answered.sent, Reject(1, 1, 2)) << length;
  }
  // One more than comes: the rest is waited for, and the end is the end.
  const Answered waiting(withLength(good.size() - 6 + 1));
  EXPECT_EQ(waiting.result, 0);
  EXPECT_TRUE(waiting.sent.empty());

  // Items that are longer than their PDU, and a context that is longer than its own.
  for (const Bytes& items :
       {Joined({{0x10, 0, 0xFF, 0xFF}, Bytes(9)}), Joined({{0x20, 0, 0, 40}, Bytes(9)}),
        Joined({{0x50, 0, 0, 3}, Bytes(2)}), Item(0x20, Bytes(3)),
        Joined({{0x99, 0, 0xFF, 0xFF, 0xFF, 0xFF}, Bytes(5)})}) {
    const Answered answered(Associate(1, "US", "PEER", items));
    EXPECT_EQ(answered.result, 0);
    EXPECT_EQ(answered.sent, Reject(1, 1, 2));
  }
}

TEST(AssociateAnswer, AnswersWhatCouldBeReadOfARequestThatDoesNotAddUp) {
  const Bytes items = Joined({ApplicationItem(), ContextItem({1, kEcho, {kImplicit}}),
                              Joined({{0x20, 0, 0xFF, 0xFF}, Bytes(20)})});
  const Answered answered(Associate(1, "US", "PEER", items));
  EXPECT_EQ(answered.result, 1);
  EXPECT_EQ(answered.sent, AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(0)));
}

TEST(AssociateAnswer, TakesNoMoreContextsThanThereCanBe) {
  std::vector<Proposal> many;
  for (int i = 1; i < 201; ++i) many.push_back({static_cast<std::uint8_t>(i), kEcho, {kImplicit}});
  const Answered answered(RequestFor(many));
  EXPECT_EQ(answered.result, 1);
  EXPECT_EQ(answered.pdu.AcceptedContexts.size(), 128u);
}

TEST(AssociateAnswer, RepeatsNoReservedByteOfTheRequest) {
  Bytes request = RequestFor({{1, kEcho, {kImplicit}}});
  // Of the application context, behind the fixed part, and of the transfer syntax: 74 + 25 of the former + 8 + 4 + 17 of the class.
  request[75] = 9;
  ASSERT_EQ(request[128], 0x40);
  request[129] = 9;
  const Answered answered(request);
  EXPECT_EQ(answered.sent, AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(32768)));
}

TEST(AssociateAnswer, RepeatsNothingThatAPeerHasAnsweredBefore) {
  // An answer with other numbers wherever they are reserved, or the version, and with an unknown item.
  const Bytes unknown = {0x53, 9, 0, 1, 7};
  Bytes answer =
      Associate(2, "US", "PEER",
                Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit), PeersUserItem(unknown)}));
  answer[1] = 9;
  for (const std::size_t at : {std::size_t{7}, std::size_t{9}, std::size_t{42}, std::size_t{73}}) {
    answer[at] = 9;
  }
  ScriptedServer server([&](Peer& peer) {
    static_cast<void>(peer.ReceivePdu());
    peer.SendAll(answer);
  });
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  SetIdentifierCounter(1);
  ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
  pdu.Link.Close();
  const Answered answered(RequestFor({{1, kEcho, {kImplicit}}}), &pdu);
  EXPECT_EQ(answered.sent, AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(32768)));
}

TEST(AssociateAnswer, RepeatsNothingOfARefusalThatAPeerHasAnsweredBefore) {
  ScriptedServer server([&](Peer& peer) {
    static_cast<void>(peer.ReceivePdu());
    peer.SendAll({3, 9, 0, 0, 0, 4, 9, 2, 3, 4});
  });
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  EXPECT_EQ(pdu.Connect("127.0.0.1", server.Port()), 0);
  const Answered answered(RequestFor({}), &pdu);
  EXPECT_EQ(answered.sent, Reject(1, 1, 2));
}

TEST(AssociateAnswer, FailsWhereTheAnswerCannotBeSent) {
  Connection connection;
  connection.peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  connection.peer.Close();
  PDU_Service pdu;
  EXPECT_EQ(pdu.Listen(connection.ours), 0);
  EXPECT_THAT(Words(pdu), testing::EndsWith("msg=Broken pipe"));
  EXPECT_EQ(pdu.Link.Connected, 0);
}

TEST(AssociateAnswer, SaysThatItsLinkWasClosedWhileItDecided) {
  class Closing : public PDU_Service {
   public:
    bool AcceptCalledTitle(std::string_view) override { return Link.Close() != 0; }
  };
  const Connection connection;
  connection.peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  Closing pdu;
  EXPECT_EQ(pdu.Listen(connection.ours), 0);
  EXPECT_EQ(Words(pdu), "The link was closed");
}

TEST(AssociateAnswer, HoldsNothingOfTheAssociationBefore) {
  PDU_Service pdu;
  const Answered first(RequestFor({{1, kCt, {kImplicit}}, {3, kEcho, {kImplicit}}},
                                  PeersUserItem(RoleItem(kCt, 1, 1))),
                       &pdu);
  EXPECT_EQ(first.result, 1);
  const Answered second(RequestFor({{3, kFind, {kImplicit}}}), &pdu);
  EXPECT_EQ(second.sent, AnswerOf(AcceptItem(3, 0, kImplicit), OurUserItem(32768)));
  ASSERT_EQ(pdu.AcceptedContexts.size(), 1u);
  EXPECT_EQ(pdu.ContextIDFor(UID(kFind)), 3);

  Connection silent;
  pdu.Link.TimeoutSecs = 0;
  EXPECT_EQ(pdu.Listen(silent.ours), 0);
  EXPECT_EQ(Words(pdu), "Timeout error reading from socket");
  const Answered closed({}, &pdu);
  EXPECT_EQ(Words(pdu), "The peer has closed the link");
  EXPECT_TRUE(closed.sent.empty());
}

// --- listening ---

TEST(AcceptNext, TakesPeersUntilOneAssociationStandsAndGivesTheListenerBack) {
  Listener listener;
  const std::string port = listener.Port();
  const int handle = listener.Give();
  Peer silent = ConnectTo(port);
  silent.Close();
  Peer half = ConnectTo(port);
  half.SendAll({1, 0, 0, 0});
  Peer browser = ConnectTo(port);
  browser.Send(BytesOf("GET /"));
  Peer refused = ConnectTo(port);
  refused.Send(RequestFor({{1, kCt, {kExplicit}}}));
  Peer good = ConnectTo(port);
  good.Send(RequestFor({{1, kEcho, {kImplicit}}}));

  PDU_Service pdu;
  ASSERT_EQ(pdu.AcceptNext(handle), handle) << Words(pdu);
  EXPECT_EQ(pdu.Link.Connected, 1);
  EXPECT_EQ(pdu.Link.ListenSocket, 0);
  EXPECT_EQ(pdu.Link.Listening, 0);
  EXPECT_EQ(half.ReceiveToEnd(), Bytes{});
  EXPECT_EQ(browser.ReceiveToEnd(), OurAbort());
  EXPECT_EQ(refused.ReceiveToEnd(), Reject(1, 1, 2));
  EXPECT_EQ(TypesOf(good.ReceivePdu()), "2");

  // The listener goes to the next object, while the first association stands.
  Peer second = ConnectTo(port);
  second.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  PDU_Service next;
  EXPECT_EQ(next.AcceptNext(handle), handle);
  next.Link.Close();
  pdu.Link.Close();
  ASSERT_NE(::fcntl(handle, F_GETFD), -1);
  ::close(handle);
}

TEST(AcceptNext, ClosesAPeerThatIsRefusedBeforeItWaitsForTheNext) {
  const Listener listener;
  const Peer refused = ConnectTo(listener.Port());
  refused.Send(RequestFor({{1, kCt, {kExplicit}}}));
  PDU_Service pdu;
  std::thread acceptor([&] { pdu.AcceptNext(listener.Descriptor()); });
  EXPECT_EQ(refused.ReceiveToEnd(), Reject(1, 1, 2));
  const Peer good = ConnectTo(listener.Port());
  good.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  acceptor.join();
  EXPECT_EQ(TypesOf(good.ReceivePdu()), "2");
  pdu.Link.Close();
}

TEST(AcceptNext, HoldsNothingAgainstAPeerThatTheOneBeforeHasSaid) {
  Listener listener;
  Peer refused = ConnectTo(listener.Port());
  refused.Send(RequestFor({{1, kCt, {kExplicit}}}, PeersUserItem(RoleItem(kCt, 1, 1))));
  Peer good = ConnectTo(listener.Port());
  good.Send(Associate(1, "B", "A", ContextItem({1, kEcho, {kImplicit}})));
  PDU_Service pdu;
  ASSERT_EQ(pdu.AcceptNext(listener.Descriptor()), listener.Descriptor());
  EXPECT_EQ(good.ReceivePdu(),
            Associate(2, "B", "A",
                      Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit), OurUserItem(0)})));
  pdu.Link.Close();
}

TEST(AcceptNext, GoesOnAfterAPeerToWhomNothingCanBeSent) {
  class ThrowsTwice : public PDU_Service {
    int SendBinary(const void* data, std::uint32_t count) override {
      // The answer, and the abort in place of it.
      if (++sent_ <= 2) throw std::runtime_error("not now");
      return PDU_Service::SendBinary(data, count);
    }
    int sent_ = 0;
  };
  Listener listener;
  const Peer first = ConnectTo(listener.Port());
  const Peer second = ConnectTo(listener.Port());
  for (const Peer* peer : {&first, &second}) peer->Send(RequestFor({{1, kEcho, {kImplicit}}}));
  ThrowsTwice pdu;
  EXPECT_EQ(pdu.AcceptNext(listener.Descriptor()), listener.Descriptor());
  EXPECT_EQ(first.ReceiveToEnd(), Bytes());
  EXPECT_EQ(second.ReceivePdu(), AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(32768)));
  pdu.Link.Close();
}

TEST(AcceptNext, ClosesWhatListensWhereItIsGivenNone) {
  for (const int none : {0, -1}) {
    Listener listener;
    const Connection connection;
    PDU_Service pdu;
    pdu.Link.AdoptListener(listener.Give());
    pdu.Link.Adopt(connection.ours);
    EXPECT_EQ(pdu.AcceptNext(none), 0);
    EXPECT_EQ(Words(pdu), "Accept(): Not listening");
    EXPECT_EQ(connection.peer.ReceiveToEnd(), Bytes());
    EXPECT_THROW(ConnectTo(listener.Port()), std::runtime_error);
  }
}

TEST(AcceptNext, GoesOnWithTheListenerOfTheObjectItself) {
  Listener listener;
  PDU_Service pdu;
  const int handle = listener.Give();
  pdu.Link.AdoptListener(handle);
  for (int turn = 0; turn < 2; ++turn) {
    Peer peer = ConnectTo(listener.Port());
    peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
    ASSERT_EQ(pdu.AcceptNext(handle), handle);
    pdu.Link.AdoptListener(handle);
    EXPECT_EQ(TypesOf(peer.ReceivePdu()), "2");
  }
  pdu.Link.Close();
}

TEST(AcceptNext, ClosesAnAssociationThatStandsBeforeItWaits) {
  Connection standing;
  standing.peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  PDU_Service pdu;
  ASSERT_EQ(pdu.Listen(standing.ours), 1);
  const Listener listener;
  int handle = 0;
  std::thread acceptor([&] { handle = pdu.AcceptNext(listener.Descriptor()); });
  EXPECT_EQ(TypesOf(standing.peer.ReceiveToEnd()), "2");
  const Peer next = ConnectTo(listener.Port());
  next.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  acceptor.join();
  EXPECT_EQ(handle, listener.Descriptor());
  pdu.Link.Close();
}

TEST(AcceptNext, MarksAnAssociationInTheTrace) {
  const TempFolder folder;
  const std::string path = folder.File("trace");
  const Listener listener;
  Peer peer = ConnectTo(listener.Port());
  peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  PDU_Service pdu;
  SetDumpFile(path.c_str());
  SetDumpFlag(kDumpPdu, true);
  EXPECT_EQ(pdu.AcceptNext(listener.Descriptor()), listener.Descriptor());
  SetDumpFlag(kDumpPdu, false);
  SetDumpFile(nullptr);
  EXPECT_TRUE(ReadText(path).ends_with("Accepted association\n"));
  pdu.Link.Close();
}

TEST(AcceptNext, SaysThatItsLinkWasClosedAsTheAnswerWent) {
  class ClosedOnce : public PDU_Service {
    int SendBinary(const void* data, std::uint32_t count) override {
      const int isSent = PDU_Service::SendBinary(data, count);
      Link.Close();
      return isSent;
    }
  };
  Listener listener;
  const Peer peer = ConnectTo(listener.Port());
  peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  ClosedOnce pdu;
  EXPECT_EQ(pdu.AcceptNext(listener.Give()), 0);
  EXPECT_EQ(Words(pdu), "The link was closed");
  EXPECT_EQ(TypesOf(peer.ReceiveToEnd()), "2");
}

TEST(AcceptNext, ListensOnAPortOfItsOwn) {
  const std::string port = FreePort();
  std::thread client([&] {
    for (int turn = 0; turn < 1000; ++turn) {
      try {
        Peer peer = ConnectTo(port);
        peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
        static_cast<void>(peer.ReceivePdu());
        return;
      } catch (const std::exception&) {  // it does not listen yet
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    }
  });
  PDU_Service pdu;
  const int handle = pdu.AcceptNext(port);
  EXPECT_GT(handle, 0) << Words(pdu);
  client.join();
  pdu.Link.Close();
  ::close(handle);
}

TEST(AcceptNext, EndsWithWordsWhereNoPeerCanBeTaken) {
  PDU_Service pdu;
  for (const int none : {0, -1}) {
    EXPECT_EQ(pdu.AcceptNext(none), 0);
    EXPECT_EQ(Words(pdu), "Accept(): Not listening");
  }
  EXPECT_EQ(pdu.AcceptNext("no such service"), 0);
  EXPECT_EQ(Words(pdu), "Error getservbyname(no such service, NULL)");
}

TEST(Listen, TakesOnePeerOnAPort) {
  const std::string port = FreePort();
  Bytes answer;
  std::thread client([&] {
    for (int turn = 0; turn < 1000 && answer.empty(); ++turn) {
      try {
        Peer peer = ConnectTo(port);
        peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
        answer = peer.ReceivePdu();
      } catch (const std::exception&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
      }
    }
  });
  PDU_Service pdu;
  EXPECT_EQ(pdu.Listen(port), 1) << Words(pdu);
  client.join();
  EXPECT_EQ(TypesOf(answer), "2");
  pdu.Link.Close();
  EXPECT_EQ(pdu.Listen("no such service"), 0);
  EXPECT_EQ(Words(pdu), "Error getservbyname(no such service, NULL)");
}

TEST(Listen, ClosesALinkThatIsOpen) {
  Connection first;
  Connection second;
  first.peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  // What came ahead of its reading ends with the link, too.
  second.peer.Send(Joined({RequestFor({{1, kEcho, {kImplicit}}}), ReleaseRequest()}));
  PDU_Service pdu;
  ASSERT_EQ(pdu.Listen(first.ours), 1);
  ASSERT_EQ(pdu.Listen(second.ours), 1);
  EXPECT_EQ(TypesOf(first.peer.ReceiveToEnd()), "2");
  EXPECT_TRUE(pdu.HasInput());
  EXPECT_EQ(pdu.Listen("no such service"), 0);
  EXPECT_FALSE(pdu.HasInput());
  EXPECT_EQ(TypesOf(second.peer.ReceiveToEnd()), "2");
  Connection third;
  third.peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
  ASSERT_EQ(pdu.Listen(third.ours), 1);
  EXPECT_EQ(pdu.AcceptNext("no such service"), 0);
  EXPECT_EQ(TypesOf(third.peer.ReceiveToEnd()), "2");
}

TEST(Listen, TakesNoPeerFromWhatIsNoDescriptor) {
  PDU_Service pdu;
  for (const int descriptor : {0, -1}) {
    EXPECT_EQ(pdu.Listen(descriptor), 0);
    EXPECT_EQ(Words(pdu), "The link was closed");
    pdu.Link.Adopt(descriptor);
    EXPECT_EQ(pdu.Link.Connected, 0);
    EXPECT_EQ(pdu.Link.DataSocket, 0);
  }
}

TEST(Listen, TakesThePeerThatTheLinkHasAlready) {
  Listener listener;
  PDU_Service pdu;
  pdu.Link.AdoptListener(listener.Descriptor());
  const Peer peer = ConnectTo(listener.Port());
  ASSERT_EQ(pdu.Link.Accept(), 1);
  const int descriptor = pdu.Link.DataSocket;
  for (int turn = 0; turn < 2; ++turn) {
    peer.Send(RequestFor({{1, kEcho, {kImplicit}}}));
    ASSERT_EQ(pdu.Listen(descriptor), 1) << Words(pdu);
    EXPECT_EQ(pdu.Link.DataSocket, descriptor);
    EXPECT_EQ(peer.ReceivePdu(), AnswerOf(AcceptItem(1, 0, kImplicit), OurUserItem(32768)));
  }
  EXPECT_EQ(pdu.Link.GiveListener(), listener.Descriptor());
  pdu.Link.Close();
}

}  // namespace
}  // namespace tessaret::test
