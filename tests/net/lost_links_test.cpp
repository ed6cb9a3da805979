// A provider whose peer goes at any byte of the negotiation, of a store and of the release.
#include <future>

#include <gtest/gtest.h>

#include "net/scripted_peer.h"
#include "net/storage.h"
#include "support/held_resources.h"

namespace tessaret::test {
namespace {

enum class Going { kEndsSending, kCloses, kResets };
constexpr Going kGoings[] = {Going::kEndsSending, Going::kCloses, Going::kResets};

const Bytes& Request() {
  static const Bytes bytes = RequestFor({{3, kCt, {kImplicit}}});
  return bytes;
}

const Bytes& Store() {
  static const Bytes bytes =
      Joined({StoreCommand(3), Data(3, 0, Elements().Value(0x0009, 0x0010, Pattern(60))),
              Data(3, kLastPart, Elements().Value(0x7FE0, 0x0010, Pattern(60)))});
  return bytes;
}

/// Keeps count of what it stores, if it is whole.
class Counting : public UnknownStorage {
 public:
  std::uint32_t StoreObject(DICOMDataObject* object) override {
    const VR* pixels = object->GetVR(0x7FE0, 0x0010);
    EXPECT_NE(pixels, nullptr);
    EXPECT_EQ(pixels->Length, 60u);
    ++stored;
    return 0;
  }
  int stored = 0;
};

struct Served {
  bool stood = false;
  int stored = 0;
  std::string words;
};

Served Serve(int connected) {
  Served served;
  PDU_Service pdu;
  served.stood = pdu.Listen(connected) == 1;
  Counting storage;
  while (served.stood) {
    DICOMCommandObject command;
    DICOMDataObject object;
    if (pdu.Read(command) == 0 || !storage.Read(&pdu, &command, &object)) break;
  }
  served.words = Words(pdu);
  pdu.Link.Close();
  served.stored = storage.stored;
  return served;
}

/// Sends the first `count` bytes of a session, each step when the one before is answered, and goes. The answers that it has heard by
/// then, and where it only ends sending, those that follow.
Bytes GoAfter(std::size_t count, Peer& peer, Going going) {
  Bytes heard;
  for (const Bytes& step : {Request(), Store(), ReleaseRequest()}) {
    const std::size_t sent = std::min(count, step.size());
    peer.Send(Bytes(step.begin(), step.begin() + static_cast<std::ptrdiff_t>(sent)));
    count -= sent;
    if (count == 0) break;
    heard = Joined({heard, peer.ReceivePdu()});
  }
  switch (going) {
    case Going::kEndsSending:
      peer.EndSending();
      return Joined({heard, peer.ReceiveToEnd()});
    case Going::kCloses:
      peer.Close();
      break;
    case Going::kResets:
      peer.Reset();
      break;
  }
  return heard;
}

TEST(LostLinks, AtAnyByteOfASessionEndAProviderAndStoreWhatCameWhole) {
  const int descriptors = OpenDescriptors();
  const std::size_t request = Request().size();
  const std::size_t store = request + Store().size();
  const std::size_t all = store + ReleaseRequest().size();
  for (const Going going : kGoings) {
    for (std::size_t count = 0; count <= all; ++count) {
      SCOPED_TRACE(std::to_string(count) + " bytes, way " +
                   std::to_string(static_cast<int>(going)));
      Bytes heard;
      Served served;
      {
        // The requester is there before it goes: of one that resets at once the connect itself may tell.
        const Listener listener;
        Peer ours = ConnectTo(listener.Port());
        Peer requester = listener.Accept();
        auto session =
            std::async(std::launch::async, [&] { return GoAfter(count, requester, going); });
        served = Serve(ours.Give());
        heard = session.get();
      }
      if (going == Going::kEndsSending) {
        EXPECT_EQ(served.stood, count >= request);
        EXPECT_EQ(TypesOf(heard), count == all       ? "246"
                                  : count >= store   ? "24"
                                  : count >= request ? "2"
                                                     : "");
      }
      // Whether the request is still answered when the link goes with its last byte is up to the system.
      if (count != request) {
        EXPECT_EQ(served.stood, count > request);
      }
      EXPECT_EQ(served.stored, count >= store ? 1 : 0);
      // A release has no words, and neither has one that is cut.
      EXPECT_EQ(served.words.empty(), count > store);
      if (testing::Test::HasFailure()) return;
    }
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
}

}  // namespace
}  // namespace tessaret::test
