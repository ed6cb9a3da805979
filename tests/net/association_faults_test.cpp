// Associations with peers and systems that fail: short and broken calls, no memory, hundreds of bad peers.
#include <pthread.h>
#include <sys/resource.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <initializer_list>
#include <random>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "net/storage.h"
#include "net/verification.h"
#include "platform/socket_calls.h"
#include "support/allocation_failure.h"
#include "support/build_kind.h"
#include "support/child_process.h"
#include "support/held_resources.h"

namespace tessaret::test {
namespace {

const std::vector<Agreed> kContexts = {{1, kEcho, kImplicit}, {3, kCt, kImplicit}};

Bytes EchoRequest() {
  return Data(
      1, kWholeCommand,
      Command().Uid(0x0002, kEcho).Number(0x0100, 0x0030).Number(0x0110, 1).Number(0x0800, 0x0101));
}

Bytes StoreRequest() {
  return Joined(
      {StoreCommand(3), Fragmented(3, 0, Elements().Value(0x7FE0, 0x0010, Pattern(6000)))});
}

/// Request, echo, store and release, as a peer sends them.
Bytes Session() {
  return Joined({RequestFor({{1, kEcho, {kImplicit}}, {3, kCt, {kImplicit}}}), EchoRequest(),
                 StoreRequest(), ReleaseRequest()});
}

/// Serves one connection to its end. Whether an association stood.
bool Serve(PDU_Service& pdu, int connected) {
  if (pdu.Listen(connected) == 0) return false;
  for (;;) {
    DICOMCommandObject command;
    DICOMDataObject object;
    if (pdu.Read(command) == 0) break;
    if (!Verification().Read(&pdu, &command) && !UnknownStorage().Read(&pdu, &command, &object))
      break;
  }
  pdu.Link.Close();
  return true;
}

Bytes AnswersTo(const Bytes& session) {
  Connection connection;
  connection.peer.SendAll(session);
  PDU_Service pdu;
  Serve(pdu, connection.ours);
  return connection.peer.Received();
}

std::mt19937 chance(1);

/// Lets one byte through a call, and breaks calls by chance in one of the ways that are none of its fault.
int OneByteAtATime(SocketCall call, std::size_t& count) {
  count = std::min<std::size_t>(count, 1);
  if (call != SocketCall::kSend && call != SocketCall::kReceive && call != SocketCall::kWait)
    return 0;
  const auto what = chance() % 3;
  if (what == 0) return EINTR;
  return what == 1 && call != SocketCall::kWait ? EAGAIN : 0;
}

TEST(BrokenCalls, ChangeNothingOfWhatIsSent) {
  const Bytes expected = AnswersTo(Session());
  EXPECT_EQ(TypesOf(expected), "2446");
  SetSocketCallHook(OneByteAtATime);
  const Bytes answers = AnswersTo(Session());
  SetSocketCallHook(nullptr);
  EXPECT_EQ(answers, expected);
}

int sendsLeft = 0;

int LoseTheLink(SocketCall call, std::size_t&) {
  return call == SocketCall::kSend && sendsLeft-- <= 0 ? ECONNRESET : 0;
}

TEST(BrokenCalls, EndTheAssociationWhereTheLinkIsLostWithinAnAnswer) {
  for (int sends = 0; sends < 4; ++sends) {
    Connection connection;
    connection.peer.SendAll(Session());
    PDU_Service pdu;
    sendsLeft = sends;
    SetSocketCallHook(LoseTheLink);
    EXPECT_EQ(Serve(pdu, connection.ours), sends > 0);
    SetSocketCallHook(nullptr);
    EXPECT_EQ(pdu.Link.Connected, 0);
  }
}

TEST(BrokenPeers, ThatResetTheLinkEndTheAssociation) {
  const Bytes session = Session();
  for (std::size_t size = 0; size < session.size(); size += 97) {
    const Listener listener;
    Peer peer = ConnectTo(listener.Port());
    peer.Send(Bytes(session.begin(), session.begin() + static_cast<int>(size)));
    Peer accepted = listener.Accept();
    peer.Reset();
    PDU_Service pdu;
    Serve(pdu, ::dup(accepted.Descriptor()));
    EXPECT_EQ(pdu.Link.Connected, 0);
    EXPECT_FALSE(Words(pdu).empty());
  }
}

TEST(BrokenPeers, ByTheHundredsLeaveNoDescriptor) {
  const int before = OpenDescriptors();
  std::mt19937 random(20);
  const Bytes session = Session();
  for (int turn = 0; turn < 600; ++turn) {
    Bytes sent = session;
    switch (turn % 4) {
      case 0:
        sent.resize(random() % sent.size());
        break;
      case 1:
        for (int i = 0; i < 20; ++i)
          sent[random() % sent.size()] = static_cast<std::uint8_t>(random());
        break;
      case 2:
        sent = Joined({RequestFor({{1, kEcho, {kImplicit}}}), AbortPdu(0, 0)});
        break;
      default:
        break;
    }
    AnswersTo(sent);
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(BrokenPeers, MayChangeAnyByteOfASession) {
  const Bytes session = Session();
  // Every byte up to the store's object, whose bytes are no business of the association.
  for (std::size_t at = 0; at < session.size() - 6100; ++at) {
    for (const std::uint8_t value : Bytes{0, 1, 0x7F, 0xFF}) {
      Bytes sent = session;
      sent[at] = value;
      AnswersTo(sent);
    }
  }
}

/// What a peer answers to a request for two contexts, an echo, a store and a release.
Bytes AnswersOfAPeer() {
  const auto response = [](std::uint8_t context, std::string_view uid, std::uint16_t field) {
    return Data(context, kWholeCommand,
                Command()
                    .Uid(0x0002, uid)
                    .Number(0x0100, field)
                    .Number(0x0120, 1)
                    .Number(0x0800, 0x0101)
                    .Number(0x0900, 0));
  };
  return Joined({Associate(2, "PEER", "US",
                           Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit),
                                   AcceptItem(3, 0, kExplicit), PeersUserItem()})),
                 response(1, kEcho, 0x8030), response(3, kCt, 0x8001), ReleaseAnswer()});
}

/// Asks a peer that answers in this way, whatever it is asked. How many of three steps went well.
int StepsThatGoWell(const Bytes& answers) {
  ScriptedServer server([&](Peer& peer) {
    peer.SendAll(answers);
    static_cast<void>(peer.ReceiveToEnd());
  });
  SetIdentifierCounter(1);
  PDU_Service pdu;
  pdu.AddAbstractSyntax(UID(kEcho));
  pdu.AddAbstractSyntax(UID(kCt));
  pdu.AddTransferSyntax(UID(kImplicit));
  pdu.AddTransferSyntax(UID(kExplicit));
  int steps = 0;
  if (pdu.Connect("127.0.0.1", server.Port()) == 1) {
    ++steps;
    if (Verification().Write(&pdu)) ++steps;
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    if (CTStorage().Write(&pdu, &object)) ++steps;
    pdu.Close();
  } else {
    EXPECT_FALSE(Words(pdu).empty());
  }
  EXPECT_EQ(pdu.Link.Connected, 0);
  return steps;
}

TEST(BrokenPeers, MayChangeAnyByteOfTheirAnswers) {
  const Bytes answers = AnswersOfAPeer();
  ASSERT_EQ(StepsThatGoWell(answers), 3);
  const int before = OpenDescriptors();
  for (std::size_t at = 0; at < answers.size(); ++at) {
    for (const std::uint8_t value : Bytes{0, 1, 0x7F, 0xFF}) {
      Bytes changed = answers;
      changed[at] = value;
      StepsThatGoWell(changed);
    }
  }
  EXPECT_EQ(OpenDescriptors(), before);
}

TEST(Memory, EndsTheAssociationWithWordsWhereThereIsNone) {
  const Bytes requests = Joined({EchoRequest(), StoreRequest()});
  const std::uint64_t allocations = FailEveryAllocation([&] {
    try {
      Association association(kContexts);
      association.peer.Send(requests);
      for (int i = 0; i < 2; ++i) {
        DICOMCommandObject command;
        DICOMDataObject object;
        if (association.pdu.Read(command) == 0) {
          EXPECT_EQ(association.pdu.Link.Connected, 0);
          break;
        }
        if (!Verification().Read(&association.pdu, &command)) {
          UnknownStorage().Read(&association.pdu, &command, &object);
        }
      }
    } catch (const std::bad_alloc&) {  // out of what is written
    }
  });
  EXPECT_GT(allocations, 10u);
}

/// A node that takes every association under identifier 1, and answers its release.
class Taker {
 public:
  Taker() : thread_([this] { Serve(); }) {}
  ~Taker() {
    ::shutdown(listener_.Descriptor(), SHUT_RDWR);
    thread_.join();
  }
  [[nodiscard]] const std::string& Port() const { return listener_.Port(); }

 private:
  void Serve() {
    const Bytes answer = Joined(
        {Associate(2, "US", "PEER",
                   Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit), PeersUserItem()})),
         ReleaseAnswer()});
    for (;;) {
      const Peer peer = listener_.Accept();
      if (peer.Descriptor() < 0) return;
      try {
        static_cast<void>(peer.ReceivePdu());
        peer.SendAll(answer);
        static_cast<void>(peer.ReceiveToEnd());
      } catch (const std::exception&) {  // the requester has given up
      }
    }
  }

  Listener listener_;
  std::thread thread_;
};

TEST(Memory, ThatEndsWithinARequestLeavesTheLinkClosed) {
  const Taker taker;
  const std::string host = "127.0.0.1";
  int failures = 0;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kEcho));
    pdu.AddAbstractSyntax(UID(kCt));
    const auto connect = [&] {
      SetIdentifierCounter(1);
      try {
        return pdu.Connect(host, taker.Port());
      } catch (const std::bad_alloc&) {
        ++failures;
        return 0;
      }
    };
    int result = 0;
    {
      const AllocationFailure failure(nth);
      result = connect();
      happened = failure.Happened();
    }
    EXPECT_EQ(pdu.Link.Connected, result) << nth;
    // What is proposed later is all of it.
    if (result == 0) {
      EXPECT_EQ(connect(), 1) << nth << Words(pdu);
    }
    EXPECT_EQ(pdu.AAssociateRQ.PresentationContexts.size(), 2u) << nth;
    pdu.Link.Close();
  }
  EXPECT_GT(failures, 5);
}

TEST(Memory, ThatEndsWithinAnAnswerIsAnAbortAndTheNextPeerIsTaken) {
  const Bytes request = RequestFor({{1, kEcho, {kImplicit}}});
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    const Listener listener;
    const Peer first = ConnectTo(listener.Port());
    first.Send(request);
    const Peer second = ConnectTo(listener.Port());
    second.Send(request);
    PDU_Service pdu;
    int handle = 0;
    {
      const AllocationFailure failure(nth);
      handle = pdu.AcceptNext(listener.Descriptor());
      happened = failure.Happened();
    }
    ASSERT_EQ(handle, listener.Descriptor()) << nth;
    EXPECT_EQ(pdu.Link.Connected, 1);
    EXPECT_EQ(TypesOf((happened ? second : first).ReceivePdu()), "2") << nth;
    if (happened) {
      EXPECT_EQ(first.ReceiveToEnd(), OurAbort()) << nth;
    }
    pdu.Link.Close();
  }
}

TEST(Memory, ThatEndsWithinAMessageLeavesNoHalfOfIt) {
  const Bytes pixels = Pattern(100000);
  const auto fill = [&](DICOMCommandObject& command, DICOMDataObject& object) {
    PutNumber16(command, 0x0000, 0x0100, 1);
    PutBytes(object, 0x7FE0, 0x0010, type_code::OW,
             {reinterpret_cast<const char*>(pixels.data()), pixels.size()});
  };
  const Bytes whole = Joined({Data(3, kWholeCommand, Command().Number(0x0100, 1)),
                              Fragmented(3, 0, Elements().Value(0x7FE0, 0x0010, pixels))});
  int open = 0;
  int closed = 0;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    Association association(kContexts);
    DICOMCommandObject command;
    DICOMDataObject object;
    fill(command, object);
    {
      const AllocationFailure failure(nth);
      try {
        EXPECT_TRUE(association.pdu.Write(command, &object, UID(kCt)));
      } catch (const std::bad_alloc&) {
      }
      happened = failure.Happened();
    }
    const Bytes sent = association.peer.Received();
    if (!happened) {
      EXPECT_EQ(sent, whole);
    } else if (association.pdu.Link.Connected == 0) {
      ++closed;
      EXPECT_LT(sent.size(), whole.size()) << nth;
      EXPECT_EQ(sent, Bytes(whole.begin(), whole.begin() + static_cast<int>(sent.size()))) << nth;
    } else {
      ++open;
      EXPECT_TRUE(sent.empty()) << nth;
      DICOMCommandObject again;
      DICOMDataObject data;
      fill(again, data);
      EXPECT_TRUE(association.pdu.Write(again, &data, UID(kCt)));
      EXPECT_EQ(association.peer.Received(), whole) << nth;
    }
  }
  EXPECT_GT(open, 2);
  EXPECT_GT(closed, 2);
}

TEST(Memory, ThatEndsWithinAReleaseEndsTheAssociationAllTheSame) {
  const std::uint64_t allocations = FailEveryAllocation([&] {
    std::unique_ptr<Association> association;
    try {
      association = std::make_unique<Association>(kContexts);
      association->peer.Send(ReleaseAnswer());
    } catch (const std::bad_alloc&) {
      return;
    }
    EXPECT_EQ(association->pdu.Close(), 1);
    EXPECT_EQ(association->pdu.Link.Connected, 0);
  });
  EXPECT_GT(allocations, 2u);
}

TEST(Cancellation, OfAThreadWaitsForTheEndOfADestructor) {
  EXPECT_EQ(RunInChild([] {
              Connection connection;
              std::thread destroyer([&] {
                PDU_Service pdu;
                pdu.Link.TimeoutSecs = 1;
                pdu.Link.Adopt(connection.ours);
              });
              // Within its wait for an answer to the release.
              const Bytes release = connection.peer.ReceivePdu();
              ::pthread_cancel(destroyer.native_handle());
              destroyer.join();
              return release == ReleaseRequest() ? 0 : 1;
            }),
            0);
}

/// Two ends of a link, and a place to connect to.
struct Meeting {
  /// The peer takes nothing more: what is sent then waits. What has gone is all zero.
  void Fill() const {
    const Bytes some(1 << 16);
    while (::send(connection.ours, some.data(), some.size(), MSG_DONTWAIT) > 0) {
    }
    while (::send(connection.ours, some.data(), 1, MSG_DONTWAIT) > 0) {
    }
  }
  Connection connection;
  Listener listener;
};

Bytes WithoutZeros(Bytes bytes) {
  std::erase(bytes, 0);
  return bytes;
}

/// Something that waits for its peer.
struct Waiting {
  const char* name;
  std::function<void(Meeting&)> prepare;
  std::function<void(PDU_Service&, Meeting&)> work;
  Bytes received;  // by the peer, without zeros
};

const std::vector<Waiting> kWaiting = {
    {"a release", [](Meeting&) {},
     [](PDU_Service& pdu, Meeting& meeting) {
       pdu.Link.Adopt(meeting.connection.ours);
       pdu.Close();
     },
     WithoutZeros(ReleaseRequest())},
    {"a message",
     [](Meeting&) {},
     [](PDU_Service& pdu, Meeting& meeting) {
       pdu.Link.Adopt(meeting.connection.ours);
       DICOMCommandObject command;
       pdu.Read(command);
     },
     {}},
    {"an abort",
     [](Meeting& meeting) {
       meeting.Fill();
       meeting.connection.peer.Send({9});
     },
     [](PDU_Service& pdu, Meeting& meeting) {
       pdu.Link.Adopt(meeting.connection.ours);
       DICOMCommandObject command;
       pdu.Read(command);
     },
     {}},
    {"a write",
     [](Meeting& meeting) { meeting.Fill(); },
     [](PDU_Service& pdu, Meeting& meeting) {
       pdu.Link.Adopt(meeting.connection.ours);
       DICOMCommandObject command;
       PutNumber16(command, 0, 0x0100, 0x0030);
       pdu.Write(command, std::uint8_t{1});
     },
     {}},
    {"a peer's request",
     [](Meeting& meeting) {
       const Bytes request = RequestFor({{1, kEcho, {kImplicit}}});
       meeting.connection.peer.Send(Bytes(request.begin(), request.begin() + 20));
     },
     [](PDU_Service& pdu, Meeting& meeting) { pdu.Listen(meeting.connection.ours); },
     {}},
    {"the request of a peer that was taken",
     [](Meeting& meeting) { meeting.connection.peer = ConnectTo(meeting.listener.Port()); },
     [](PDU_Service& pdu, Meeting& meeting) { pdu.AcceptNext(meeting.listener.Give()); },
     {}},
};

/// Cancels a thread that waits so. 0 where it ends long before the association would have waited for its peer, and the peer was told of
/// nothing but the end.
int StatusOfCancelled(const Waiting& waiting) {
  Meeting meeting;
  waiting.prepare(meeting);
  std::atomic<bool> hasBegun = false;
  std::thread thread([&] {
    PDU_Service pdu;
    pdu.Link.TimeoutSecs = 30;
    hasBegun = true;
    waiting.work(pdu, meeting);
  });
  while (!hasBegun) std::this_thread::yield();
  if (waiting.received.empty()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(kInstrumented ? 400 : 100));
  } else {
    pollfd sent{.fd = meeting.connection.peer.Descriptor(), .events = POLLIN, .revents = 0};
    ::poll(&sent, 1, kFarTooLong);
  }
  const auto start = std::chrono::steady_clock::now();
  ::pthread_cancel(thread.native_handle());
  thread.join();
  if (std::chrono::steady_clock::now() - start > std::chrono::seconds(10)) return 1;
  return WithoutZeros(meeting.connection.peer.ReceiveToEnd()) == waiting.received ? 0 : 2;
}

TEST(Cancellation, EndsTheLinkAtOnceWhateverItsThreadWaitsFor) {
  for (const Waiting& waiting : kWaiting) {
    EXPECT_EQ(RunInChild([&] { return StatusOfCancelled(waiting); }), 0) << waiting.name;
  }
}

TEST(Cancellation, EndsTheLinkOfARequestThatIsNotAnswered) {
  EXPECT_EQ(RunInChild([] {
              const Listener listener;
              std::thread requester([&] {
                PDU_Service pdu;
                pdu.Link.TimeoutSecs = 30;
                pdu.AddAbstractSyntax(UID(kEcho));
                pdu.Connect("127.0.0.1", listener.Port());
              });
              const Peer peer = listener.Accept();
              const Bytes request = peer.ReceivePdu();
              ::pthread_cancel(requester.native_handle());
              requester.join();
              return TypesOf(request) == "1" && peer.ReceiveToEnd().empty() ? 0 : 1;
            }),
            0);
}

TEST(Close, EndsTheLinkWhateverComesOfTheRelease) {
  class Throwing : public PDU_Service {
   public:
    int SendBinary(const void*, std::uint32_t) override { throw std::runtime_error("no"); }
  };
  class ThrowingLater : public PDU_Service {
   public:
    std::int64_t ReadBinary(void*, std::uint32_t) override { throw std::runtime_error("no"); }
  };
  Throwing writes;
  ThrowingLater reads;
  for (PDU_Service* pdu : std::initializer_list<PDU_Service*>{&writes, &reads}) {
    const Connection connection;
    pdu->Link.Adopt(connection.ours);
    EXPECT_EQ(pdu->Close(), 1);
    EXPECT_EQ(pdu->Link.Connected, 0);
    EXPECT_EQ(pdu->OutSize, 0);
    EXPECT_EQ(connection.peer.ReceiveToEnd(), pdu == &writes ? Bytes() : ReleaseRequest());
  }
}

TEST(Read, EndsTheLinkOfAStreamThatThrows) {
  class ThrowingAtTheSecond : public PDU_Service {
   public:
    std::int64_t ReadBinary(void* data, std::uint32_t count) override {
      if (++reads_ > 1) throw std::runtime_error("no");
      return PDU_Service::ReadBinary(data, count);
    }
    int reads_ = 0;
  };
  class ThrowingAnswer : public PDU_Service {
   public:
    int SendBinary(const void*, std::uint32_t) override { throw std::runtime_error("no"); }
  };
  ThrowingAtTheSecond inAPdu;
  ThrowingAnswer answer;
  for (PDU_Service* pdu : std::initializer_list<PDU_Service*>{&inAPdu, &answer}) {
    const Connection connection;
    pdu->Link.Adopt(connection.ours);
    const Bytes release = ReleaseRequest();
    connection.peer.Send(pdu == &inAPdu ? Bytes(release.begin(), release.begin() + 4) : release);
    DICOMCommandObject command;
    EXPECT_THROW(pdu->Read(command), std::runtime_error);
    EXPECT_EQ(pdu->Link.Connected, 0);
    EXPECT_EQ(pdu->OutSize, 0);
    EXPECT_EQ(pdu->InSize, 0);
    EXPECT_EQ(connection.peer.ReceiveToEnd(), Bytes());
  }
}

TEST(Memory, IsTakenOnlyForWhatHasCome) {
  if (kInstrumented) GTEST_SKIP() << "their shadow needs address space";
  EXPECT_EQ(RunInChild([] {
              Association association(kContexts);
              // 2 GiB are announced, by the PDU and by the PDV, and 100 bytes come.
              association.peer.SendAll(
                  Joined({{4, 0}, Big32(0x7FFFFFFF), Big32(0x7FFFFFFB), {3, 2}, Bytes(100)}));
              long pages = 0;
              std::ifstream("/proc/self/statm") >> pages;
              const auto most =
                  static_cast<rlim_t>(pages * ::sysconf(_SC_PAGESIZE)) + (rlim_t{16} << 20);
              const rlimit limit{.rlim_cur = most, .rlim_max = most};
              ::setrlimit(RLIMIT_AS, &limit);
              DICOMDataObject object;
              if (association.pdu.Read(object) != 0) return 1;
              return Words(association.pdu) == "Error reading P-DATA-TF from network" ? 0 : 2;
            }),
            0);
}

TEST(Memory, OfAnIdleAssociationIsSmall) {
  if (kInstrumented) GTEST_SKIP() << "the bound is for what is shipped";
  std::vector<std::unique_ptr<PDU_Service>> idle;
  std::vector<Peer> peers;
  const std::ptrdiff_t before = ResidentMemory();
  constexpr int kIdle = 64;
  for (int i = 0; i < kIdle; ++i) {
    Connection connection;
    connection.peer.Send(RequestFor({{1, kEcho, {kImplicit}}, {3, kCt, {kImplicit}}}));
    idle.push_back(std::make_unique<PDU_Service>());
    ASSERT_EQ(idle.back()->Listen(connection.ours), 1);
    peers.push_back(std::move(connection.peer));
  }
  EXPECT_LT((ResidentMemory() - before) / kIdle, 256 << 10);
  for (const auto& pdu : idle) pdu->Link.Close();
}

}  // namespace
}  // namespace tessaret::test
