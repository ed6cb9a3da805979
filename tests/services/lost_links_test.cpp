// A queue of files on its way to a peer that goes at any byte of the negotiation or of the first file.
#include <cstddef>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/scripted_peer.h"
#include "services/heard_events.h"
#include "services/store_sender.h"
#include "services/store_target.h"
#include "support/data_set_builder.h"
#include "support/held_resources.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

using testing::ElementsAre;

constexpr std::size_t kAll = SIZE_MAX;

enum class Going { kEndsSending, kCloses, kResets };
constexpr Going kGoings[] = {Going::kEndsSending, Going::kCloses, Going::kResets};

const Bytes& Acceptance() {
  // The first context of a process that has taken no identifier before has number 1.
  static const Bytes bytes =
      Associate(2, "THERE", "HERE",
                Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit), PeersUserItem()}));
  return bytes;
}

const Bytes& Stored() {
  static const Bytes bytes = Data(1, kWholeCommand,
                                  Command()
                                      .Uid(0x0002, kCt)
                                      .Number(0x0100, 0x8001)
                                      .Number(0x0120, 1)
                                      .Number(0x0800, 0x0101)
                                      .Number(0x0900, 0)
                                      .Uid(0x1000, "1.2.3"));
  return bytes;
}

/// Goes when it has received, or sent, so many bytes.
class GoingPeer {
 public:
  GoingPeer(Peer& peer, std::size_t mayReceive, std::size_t maySend)
      : peer_(peer), mayReceive_(mayReceive), maySend_(maySend) {}

  /// Answers what comes, until it goes or is released.
  void Talk() {
    if (!ReceivePdu() || !Send(Acceptance())) return;
    for (;;) {
      if (!ReceivePdu()) return;
      if (last_[0] == 5) {
        Send(ReleaseAnswer());
        return;
      }
      // Each file is a command and a data set of one PDU each.
      if (!ReceivePdu() || !Send(Stored())) return;
    }
  }

  [[nodiscard]] std::size_t Received() const { return received_; }

 private:
  bool ReceivePdu() {
    last_ = Receive(6);
    if (last_.size() < 6) return false;
    const std::size_t length = std::size_t{last_[4]} << 8 | last_[5];
    return Receive(length).size() == length;
  }
  Bytes Receive(std::size_t count) {
    const Bytes bytes = peer_.Receive(std::min(count, mayReceive_ - received_));
    received_ += bytes.size();
    return bytes;
  }
  bool Send(const Bytes& bytes) {
    const std::size_t count = std::min(bytes.size(), maySend_ - sent_);
    peer_.Send(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)));
    sent_ += count;
    return count == bytes.size();
  }

  Peer& peer_;
  std::size_t mayReceive_;
  std::size_t maySend_;
  std::size_t received_ = 0;
  std::size_t sent_ = 0;
  Bytes last_;
};

void Go(Peer& peer, Going going) {
  switch (going) {
    case Going::kEndsSending:
      peer.EndSending();
      static_cast<void>(peer.ReceiveToEnd());
      break;
    case Going::kCloses:
      peer.Close();
      break;
    case Going::kResets:
      peer.Reset();
      break;
  }
}

class LostLink : public testing::Test {
 protected:
  LostLink() {
    for (const char* name : {"1", "2", "3"}) {
      DataSetBuilder data(Encoding::kImplicitLittle);
      data.Element(0x0008, 0x0016, "UI", Evened(kCt))
          .Element(0x0008, 0x0018, "UI", Evened("1.2.3"));
      data.Element(0x7FE0, 0x0010, "OW", Pattern(60));
      files_.push_back(folder_.File(name));
      WriteBytes(files_.back(), FileOf(Encoding::kImplicitLittle, data));
    }
  }

  /// Sends the files to a peer that goes. Whether there was an association.
  bool Send(std::size_t mayReceive, std::size_t maySend, Going going) {
    SetIdentifierCounter(1);
    heard_.lines.clear();
    heard_.errors.clear();
    StoreSender sender(files_, heard_);
    ScriptedServer server([&](Peer& peer) {
      GoingPeer talking(peer, mayReceive, maySend);
      talking.Talk();
      received_ = talking.Received();
      Go(peer, going);
    });
    const bool isSent = sender.Send(TargetAt(server.Port()), {std::string(kCt)}, isCancelled_);
    EXPECT_EQ(server.Wait(), "");
    linkWords_ = sender.LinkWords;
    return isSent;
  }

  /// What is to be told where the first `sent` of the three files have their answer.
  void ExpectEvents(std::size_t sent) const {
    static const std::vector<std::string> kLines[] = {
        {"error 1 0", "error 2 1", "error 3 2", "finished 0 3"},
        {"sent 1 0", "error 2 1", "error 3 2", "finished 1 2"},
        {"sent 1 0", "sent 2 1", "error 3 2", "finished 2 1"},
        {"sent 1 0", "sent 2 1", "sent 3 2", "finished 3 0"},
    };
    EXPECT_EQ(heard_.lines, kLines[sent]);
    ASSERT_EQ(heard_.errors.size(), files_.size() - sent);
    for (std::size_t at = 0; at < heard_.errors.size(); ++at) {
      EXPECT_THAT(heard_.errors[at],
                  testing::StartsWith("Error sending [" + files_[sent + at] + "]: "));
      EXPECT_GT(heard_.errors[at].size(), ("Error sending [" + files_[sent + at] + "]: ").size());
    }
  }

  void ExpectNoAssociation(bool isSent) const {
    EXPECT_FALSE(isSent);
    EXPECT_THAT(heard_.lines, ElementsAre());
    EXPECT_NE(linkWords_, "");
  }

  const TempFolder folder_;
  std::vector<std::string> files_;
  const std::atomic<bool> isCancelled_ = false;
  Heard heard_;
  std::size_t received_ = 0;
  std::string linkWords_;
};

TEST_F(LostLink, ThatIsNotLostSendsAll) {
  EXPECT_TRUE(Send(kAll, kAll, Going::kCloses));
  ExpectEvents(3);
}

TEST_F(LostLink, AtAnyByteOfThePeersAnswersLosesNoEvent) {
  const int descriptors = OpenDescriptors();
  const std::size_t accepted = Acceptance().size();
  for (const Going going : kGoings) {
    for (std::size_t sent = 0; sent <= accepted + Stored().size(); ++sent) {
      SCOPED_TRACE(std::to_string(sent) + " bytes, way " + std::to_string(static_cast<int>(going)));
      const bool isSent = Send(kAll, sent, going);
      if (sent < accepted) {
        ExpectNoAssociation(isSent);
      } else {
        EXPECT_TRUE(isSent);
        ExpectEvents((sent - accepted) / Stored().size());
      }
      if (HasFailure()) return;
    }
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

TEST_F(LostLink, AtAnyByteOfWhatIsSentLosesNoEvent) {
  const int descriptors = OpenDescriptors();
  ASSERT_FALSE(Send(kAll, 0, Going::kCloses));
  const std::size_t request = received_;
  ASSERT_TRUE(Send(kAll, Acceptance().size(), Going::kCloses));
  const std::size_t file = received_ - request;
  EXPECT_GT(request, 150u);
  EXPECT_GT(file, 150u);
  for (const Going going : kGoings) {
    for (std::size_t received = 0; received <= request + file; ++received) {
      SCOPED_TRACE(std::to_string(received) + " bytes, way " +
                   std::to_string(static_cast<int>(going)));
      const bool isSent = Send(received, kAll, going);
      if (received < request) {
        ExpectNoAssociation(isSent);
      } else {
        EXPECT_TRUE(isSent);
        ExpectEvents((received - request) / file);
      }
      if (HasFailure()) return;
    }
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

}  // namespace
}  // namespace tessaret::test
