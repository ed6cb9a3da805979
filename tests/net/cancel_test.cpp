// Cancels at any point of a query and of a move, with our provider at the other end, and with our requester.
#include <sys/socket.h>

#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "net/query_helpers.h"
#include "net/retrieve_helpers.h"
#include "net/verification.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

constexpr int kMatches = 20;

/// Answers queries with that many matches, moves with what is prepared for them, and echoes, until the peer goes. Cancels that come too
/// late are passed over.
class Provider {
 public:
  explicit Provider(Association& association) : pdu_(association.pdu) {
    // What one response takes, and not all of them: the provider waits for the peer to read, and meets cancels on its way.
    const int room = 1;
    ::setsockopt(pdu_.Link.DataSocket, SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
    thread_ = std::thread([this] { Serve(); });
  }
  ~Provider() { thread_.join(); }
  std::vector<std::string> files;
  std::string port;

 private:
  void Serve() {
    for (;;) {
      DICOMCommandObject command;
      if (pdu_.Read(command) == 0) return;
      if (CCancelRQ::Test(command)) continue;
      if (CEchoRQ::Test(command)) {
        if (!Verification().Read(&pdu_, &command)) return;
      } else if (CFindRQ::Test(command)) {
        Finding<StudyRootQuery> query;
        for (int i = 0; i < kMatches; ++i) query.Match("AA");
        if (!query.Read(&pdu_, &command)) return;
      } else {
        Moving move;
        move.files = files;
        move.port = port;
        if (!move.Read(&pdu_, &command)) return;
      }
    }
  }

  PDU_Service& pdu_;
  std::thread thread_;
};

/// Reads the responses to one request up to the last, and sends its cancel when so many have come.
struct Outcome {
  int pending = 0;
  std::uint16_t last = 0;
};

Outcome Follow(const Peer& peer, std::uint16_t message, std::uint8_t context, int cancelAt) {
  Outcome outcome;
  for (;;) {
    if (outcome.pending == cancelAt) peer.Send(CancelRequest(message, context));
    const Bytes response = peer.ReceivePdu();
    if (NumberIn(response, 0x0120) != message) throw std::runtime_error("of another request");
    outcome.last = NumberIn(response, 0x0900);
    if (NumberIn(response, 0x0800) != 0x0101) static_cast<void>(peer.ReceivePdu());
    if (outcome.last != 0xFF00) return outcome;
    if (++outcome.pending > kMatches) throw std::runtime_error("too many");
  }
}

TEST(Cancel, OfAQueryAtAnyPointEndsItOrComesTooLate) {
  Association association(kContexts);
  const Provider provider(association);
  const Peer& peer = association.peer;
  std::mt19937 random(31);
  std::map<std::uint16_t, int> ends;
  for (int round = 0; round < 1000; ++round) {
    const auto message = static_cast<std::uint16_t>(round * 2 + 1);
    // -1: before the request; kMatches: before the last response was read; above: after it.
    const int cancelAt = std::uniform_int_distribution<int>(-1, kMatches + 1)(random);
    if (cancelAt == -1) peer.Send(CancelRequest(message));
    peer.Send(FindRequest(kFind, 0x0020, message));
    const Outcome outcome = Follow(peer, message, 5, cancelAt);
    if (cancelAt > kMatches) peer.Send(CancelRequest(message));
    ++ends[outcome.last];
    if (outcome.last == 0) {
      EXPECT_EQ(outcome.pending, kMatches);
    } else {
      EXPECT_EQ(outcome.last, 0xFE00);
      EXPECT_GE(outcome.pending, cancelAt);
      EXPECT_GE(cancelAt, 0) << "a cancel before the request is of none";
    }
  }
  // Both happen, or this has looked at one of them alone.
  EXPECT_GT(ends[0x0000], 50);
  EXPECT_GT(ends[0xFE00], 50);
  // Nothing follows the last response.
  EXPECT_TRUE(peer.Received().empty());
  peer.EndSending();
}

TEST(Cancel, ThatComesWithTheQueryLeavesNoMatch) {
  Association association(kContexts);
  const Provider provider(association);
  association.peer.Send(Joined({FindRequest(kFind, 0x0020, 9), CancelRequest(9)}));
  const Outcome outcome = Follow(association.peer, 9, 5, -1);
  EXPECT_EQ(outcome.last, 0xFE00);
  EXPECT_EQ(outcome.pending, 0);
  association.peer.EndSending();
}

TEST(Cancel, OfAMoveAtAnyPointEndsItWithItsCounters) {
  constexpr int kInstances = 3;
  const TempFolder folder;
  WriteBytes(folder.File("1.1"), FileOfCt("1.1"));
  Association association(kContexts);
  std::mt19937 random(15);
  for (int round = 0; round < 60; ++round) {
    const auto message = static_cast<std::uint16_t>(round * 2 + 1);
    const int cancelAt = std::uniform_int_distribution<int>(0, kInstances)(random);
    Destination destination(std::vector<std::uint16_t>(kInstances, 0));
    Moving move;
    move.files = std::vector<std::string>(kInstances, folder.File("1.1"));
    move.port = destination.Port();
    association.peer.Send(MoveRequest("DEST", kMove, message));
    std::thread provider([&] {
      DICOMCommandObject command;
      EXPECT_NE(association.pdu.Read(command), 0);
      if (CCancelRQ::Test(command)) {  // of the round before, too late
        command.Reset();
        EXPECT_NE(association.pdu.Read(command), 0);
      }
      EXPECT_TRUE(move.Read(&association.pdu, &command));
    });
    const Outcome outcome = Follow(association.peer, message, 7, cancelAt);
    provider.join();
    if (outcome.last == 0) {
      EXPECT_EQ(outcome.pending, kInstances);
    } else {
      EXPECT_EQ(outcome.last, 0xFE00);
      EXPECT_GE(outcome.pending, cancelAt);
    }
  }
}

TEST(Cancel, OfARequesterLeavesNothingForItsNextRequest) {
  Association provided(kContexts);
  Association asking(kContexts);
  // The two ends of one link.
  Connection connection;
  asking.pdu.Link.Close();
  asking.pdu.Link.Adopt(connection.ours);
  provided.pdu.Link.Close();
  provided.pdu.Link.Adopt(connection.peer.Give());
  {
    const Provider provider(provided);
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
      Finding<StudyRootQuery> query;
      // The query itself is the first call.
      query.cancelAt = std::uniform_int_distribution<int>(2, kMatches + 3)(random);
      DICOMDataObject what;
      PutBytes(what, 0x0010, 0x0010, type_code::PN, "Q*");
      EXPECT_EQ(query.Write(&asking.pdu, &what), query.cancelAt > kMatches + 1);
      EXPECT_EQ(query.calls, std::min(query.cancelAt, kMatches + 2));
      if (round % 2 == 0) {
        EXPECT_TRUE(Verification().Write(&asking.pdu)) << Words(asking.pdu);
      }
    }
    asking.pdu.Link.Close();
  }
}

}  // namespace
}  // namespace tessaret::test
