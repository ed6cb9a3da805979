// Services whose thread runs out of memory at any moment: the peer gets whole messages or the end of the link, and nothing is leaked.
#include <algorithm>

#include <gtest/gtest.h>

#include "core/trace.h"
#include "net/identifiers.h"
#include "net/query_helpers.h"
#include "net/retrieve_helpers.h"
#include "net/storage.h"
#include "net/verification.h"
#include "support/allocation_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

class Echo : public CEchoRQ {
 public:
  bool GetUID(UID& uid) override { return Verification().GetUID(uid); }
};

/// Whether each PDU of the stream is whole, and each data set that a command announces follows it, unless the stream ends.
bool IsInOrder(const Bytes& stream) {
  bool dataIsDue = false;
  for (const Bytes& pdu : SplitPdus(stream)) {
    if (pdu[0] != 4) continue;
    const bool isCommand = (pdu[11] & kCommandPart) != 0;
    if (isCommand == dataIsDue) return false;
    dataIsDue = isCommand ? NumberIn(pdu, 0x0800) != 0x0101 : (pdu[11] & kLastPart) == 0;
  }
  return true;
}

struct Outcome {
  bool isDone = false;
  bool threw = false;
  bool happened = false;
};

/// What comes of `work`, whose allocation `nth` fails, where it gets that far.
template <class Work>
Outcome WithFailing(std::uint64_t nth, Work work) {
  Outcome outcome;
  const AllocationFailure failure(nth);
  try {
    outcome.isDone = work();
  } catch (const std::bad_alloc&) {
    outcome.threw = true;
  }
  outcome.happened = failure.Happened();
  return outcome;
}

/// Lets every allocation of `work` fail once, each with an association of its own on which `sent` has come, and looks at what the peer
/// got: whole PDUs, also of what is sent with memory again; and where nothing fails, `whole` in front of that.
template <class Work>
void FailEach(const Bytes& sent, const Bytes& whole, Work work) {
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    Association association(kContexts);
    association.peer.Send(sent);
    SetIdentifierCounter(9);
    happened = WithFailing(nth, [&] { return work(association.pdu); }).happened;
    Echo().Write(&association.pdu);
    association.pdu.Link.Close();
    Bytes received = association.peer.ReceiveToEnd();
    EXPECT_TRUE(IsInOrder(received)) << "allocation " << nth;
    if (happened) continue;
    received.resize(std::min(received.size(), whole.size()));
    EXPECT_EQ(received, whole);
  }
}

TEST(WithoutMemory, AQueryIsAnsweredWholly) {
  const Bytes answers =
      Joined({FindAnswer(0xFF00, "AA"), FindAnswer(0xFF00, "BB"), FindAnswer(0, "")});
  FailEach(FindRequest(), answers, [](PDU_Service& pdu) {
    DICOMCommandObject command;
    Finding<StudyRootQuery> query;
    query.Match("AA");
    query.Match("BB");
    return pdu.Read(command) != 0 && query.Read(&pdu, &command);
  });
}

TEST(WithoutMemory, AStoreIsAnsweredWholly) {
  const Bytes request = Joined({StoreCommand(3, 77), Data(3, kLastPart, NameBytes("AA"))});
  const Bytes answer = Data(3, kWholeCommand,
                            Command()
                                .Uid(0x0002, kCt)
                                .Number(0x0100, 0x8001)
                                .Number(0x0120, 77)
                                .Number(0x0800, 0x0101)
                                .Number(0x0900, 0)
                                .Uid(0x1000, "1.2.3"));
  FailEach(request, answer, [](PDU_Service& pdu) {
    DICOMCommandObject command;
    DICOMDataObject object;
    return pdu.Read(command) != 0 && UnknownStorage().Read(&pdu, &command, &object);
  });
}

TEST(WithoutMemory, RequestsAreSentWholly) {
  FailEach(EchoResponse(0), FindRequest(), [](PDU_Service& pdu) {
    DICOMDataObject query;
    PutBytes(query, 0x0010, 0x0010, type_code::PN, "Q*");
    return Finding<StudyRootQuery>().Write(&pdu, &query);
  });
  FailEach(EchoResponse(0), MoveRequest("DEST"), [](PDU_Service& pdu) {
    DICOMDataObject query;
    PutBytes(query, 0x0010, 0x0010, type_code::PN, "Q*");
    return Moving().Write(&pdu, &query, "DEST");
  });
  const Bytes store = Joined(
      {Data(3, kWholeCommand,
            Command()
                .Uid(0x0002, kCt)
                .Number(0x0100, 0x0001)
                .Number(0x0110, 9)
                .Number(0x0700, 0)
                .Number(0x0800, 0x0102)
                .Uid(0x1000, "1.2.3")),
       Data(3, kLastPart, Elements().Uid(0x0008, 0x0018, "1.2.3").Text(0x0010, 0x0010, "AA"))});
  FailEach(EchoResponse(0), store, [](PDU_Service& pdu) {
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    PutBytes(object, 0x0010, 0x0010, type_code::PN, "AA");
    return CTStorage().Write(&pdu, &object);
  });
}

/// Lets every allocation of `write` fail once, which is to send a query of two elements. It answers nothing but by throwing, unless the
/// whole query has gone.
template <class Write>
void ExpectWholeQueryOrThrow(const Bytes& whole, Write write) {
  for (std::uint64_t nth = 1;; ++nth) {
    Association association(kContexts);
    association.peer.SendAll({});
    DICOMDataObject query;
    PutBytes(query, 0x0010, 0x0010, type_code::PN, "Q*");
    PutBytes(query, 0x0010, 0x0020, type_code::LO, "12");
    const Outcome outcome = WithFailing(nth, [&] { return write(association.pdu, query); });
    association.pdu.Link.Close();
    const std::vector<Bytes> sent = SplitPdus(association.peer.ReceiveToEnd());
    const bool hasData = sent.size() > 1 && sent[1].at(0) == 4;
    EXPECT_TRUE(hasData || outcome.threw) << "allocation " << nth;
    if (hasData) {
      EXPECT_EQ(Bytes(sent[1].begin() + 12, sent[1].end()), whole) << "allocation " << nth;
    }
    if (!outcome.happened) return;
  }
}

TEST(WithoutMemory, AQueryThatCannotBeCopiedThrows) {
  const Bytes whole = Elements().Text(0x0010, 0x0010, "Q*").Text(0x0010, 0x0020, "12");
  ExpectWholeQueryOrThrow(whole, [](PDU_Service& pdu, DICOMDataObject& query) {
    return Finding<StudyRootQuery>().Write(&pdu, &query);
  });
  ExpectWholeQueryOrThrow(whole, [](PDU_Service& pdu, DICOMDataObject& query) {
    return Moving().Write(&pdu, &query, "DEST");
  });
}

TEST(WithoutMemory, AnAbandonedRequestLeavesNothingForTheNext) {
  const auto response = [](std::uint16_t field, std::uint16_t message, std::uint16_t status) {
    return Data(5, kWholeCommand,
                Command()
                    .Number(0x0100, field)
                    .Number(0x0120, message)
                    .Number(0x0800, 0x0101)
                    .Number(0x0900, status));
  };
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    Association association(kContexts);
    SetIdentifierCounter(1);
    // A response in another one's place, and late its own.
    association.peer.Send(
        Joined({response(0x8001, 1, 0), response(0x8020, 1, 0), response(0x8030, 3, 0)}));
    Finding<StudyRootQuery> query;
    DICOMDataObject what;
    PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
    happened = WithFailing(nth, [&] { return query.Write(&association.pdu, &what); }).happened;
    if (query.calls == 0) continue;  // it was not sent
    EXPECT_TRUE(Verification().Write(&association.pdu) || association.pdu.Link.Connected == 0)
        << "allocation " << nth << ": " << Words(association.pdu);
  }
}

TEST(WithoutMemory, AMoveIsAnsweredWholly) {
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  // Nobody listens.
  const Bytes answer = MoveAnswer(0xC005, {0, 0, 0, 0}, "Cannot connect to destination AE");
  FailEach(MoveRequest("DEST"), answer, [&](PDU_Service& pdu) {
    Moving move;
    move.files = {folder.File("1.1"), folder.File("1.1")};
    move.port = "1";
    DICOMCommandObject command;
    return pdu.Read(command) != 0 && move.Read(&pdu, &command);
  });
}

/// How many responses with this status our provider has sent.
std::ptrdiff_t CountWithStatus(const std::vector<Bytes>& sent, std::uint16_t status) {
  return std::count_if(sent.begin(), sent.end(), [&](const Bytes& pdu) {
    return pdu[0] == 4 && (pdu[11] & kCommandPart) != 0 && NumberIn(pdu, 0x0900) == status;
  });
}

TEST(WithoutMemory, AMoveCountsWhatCannotBeSentAsFailedAndSendsTheOthers) {
  constexpr int kInstances = 3;
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  int withOneLess = 0;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    Destination destination({0, 0, 0});
    Moving move;
    move.files.assign(kInstances, folder.File("1.1"));
    move.port = destination.Port();
    Association association(kContexts);
    association.peer.Send(MoveRequest("DEST"));
    DICOMCommandObject command;
    ReadCommand(association, command);
    const Outcome outcome = WithFailing(nth, [&] { return move.Read(&association.pdu, &command); });
    happened = outcome.happened;
    const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
    // It waits for somebody, also where we did not come.
    static_cast<void>(ConnectTo(destination.Port()));
    destination.Wait();
    const auto stored =
        std::count(destination.received.begin(), destination.received.end(), '4') / 2;
    const auto pending = CountWithStatus(sent, 0xFF00);
    // Behind an abort it waits for a data set still.
    if (destination.received.find('7') == std::string::npos && stored != 0) {
      EXPECT_EQ(destination.last, Data(destination.request.at(103), kLastPart,
                                       Elements()
                                           .Uid(0x0008, 0x0016, kCt)
                                           .Uid(0x0008, 0x0018, "1.1")
                                           .Text(0x0010, 0x0010, "AA")));
    }
    if (outcome.threw) {
      // A response, behind an instance that has arrived.
      EXPECT_EQ(stored, std::min<std::ptrdiff_t>(pending + 1, kInstances));
      EXPECT_GT(stored, 0);
    } else if (!outcome.isDone) {
      EXPECT_EQ(move.asked, "");  // the identifier did not come
    } else if (NumberIn(sent.back(), 0x0900) == 0) {
      const int failed = NumberIn(sent.back(), 0x1022);
      EXPECT_EQ(pending, kInstances);
      EXPECT_EQ(NumberIn(sent.back(), 0x1020), 0);
      EXPECT_EQ(NumberIn(sent.back(), 0x1021) + failed, kInstances);
      if (failed == 1 && stored == kInstances - 1) ++withOneLess;
    } else {
      EXPECT_EQ(sent.size(), 1u);
    }
  }
  EXPECT_GT(withOneLess, kInstances) << "each instance fails by itself at several steps";
}

/// How many failing allocations end the sending of a message of two fragments.
int FailuresOfAMessage() {
  int failures = 0;
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    Association association(kContexts);
    tessaret::PDataTF data;
    const Bytes message(5000, 7);
    data.VRBuffer.Write(message.data(), static_cast<std::uint32_t>(message.size()));
    const Outcome outcome = WithFailing(nth, [&] { return data.Write(association.pdu); });
    if (!outcome.isDone) ++failures;
    happened = outcome.happened;
  }
  return failures;
}

TEST(WithoutMemory, ATraceEndsNoMessage) {
  const int untraced = FailuresOfAMessage();
  const TempFolder folder;
  SetDumpFile(folder.File("trace").c_str());
  SetDumpFlag(kDumpData, true);
  EXPECT_EQ(FailuresOfAMessage(), untraced);
  SetDumpFlag(kDumpData, false);
  SetDumpFile(nullptr);
}

TEST(WithoutMemory, AQueryWithAMatchThatCannotBeSentFails) {
  bool happened = true;
  for (std::uint64_t nth = 1; happened; ++nth) {
    SCOPED_TRACE("allocation " + std::to_string(nth));
    Finding<StudyRootQuery> query;
    for (const char* name : {"AA", "BB"}) query.Match(name);
    Association association(kContexts);
    association.peer.Send(FindRequest());
    DICOMCommandObject command;
    ReadCommand(association, command);
    const Outcome outcome =
        WithFailing(nth, [&] { return query.Read(&association.pdu, &command); });
    happened = outcome.happened;
    const std::vector<Bytes> sent = SplitPdus(association.peer.Received());
    const auto pending = CountWithStatus(sent, 0xFF00);
    if (outcome.threw) {
      EXPECT_EQ(pending, 2) << "all but the last response";
    } else if (outcome.isDone) {
      EXPECT_EQ(NumberIn(sent.back(), 0x0900), pending == 2 ? 0 : 0xC001);
    } else {
      EXPECT_EQ(association.pdu.Link.Connected, 0);
    }
  }
}

}  // namespace
}  // namespace tessaret::test
