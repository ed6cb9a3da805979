// All that a peer may send to a provider over one connection: its request for an association, and messages, which the services
// answer until the stream ends. Nothing that is answered is looked at, but that it is PDUs.
#include <string>

#include "core/transfer_syntax.h"
#include "move_destination.h"
#include "net/command_elements.h"
#include "net/pdu_service.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/storage.h"
#include "net/verification.h"
#include "preloaded_peer.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

/// Requests that are answered; more of the same say nothing new, and each may ask for many responses.
constexpr int kMostRequests = 64;

class Acceptor : public PDU_Service {
 public:
  bool AcceptTransferSyntax(const UID& syntax) override {
    return FindTransferSyntax(syntax.View()).has_value();
  }
};

class Store : public UnknownStorage {
 public:
  std::uint32_t StoreObject(DICOMDataObject* object) override {
    if (Number16(*object, 0x0028, 0x0010) == 1) throw std::bad_alloc();
    return Number16(*object, 0x0028, 0x0011).value_or(0);
  }
};

class Find : public StudyRootQuery {
 public:
  bool SearchDatabase(DICOMDataObject& query,
                      std::vector<std::unique_ptr<DICOMDataObject>>& response) override {
    for (int i = 0; i < 3; ++i) {
      response.push_back(std::make_unique<DICOMDataObject>());
      if (!response.back()->CopyFrom(query)) return false;
    }
    return !query.IsEmpty();
  }
  bool OnResponse(DICOMCommandObject*, DICOMDataObject*) override { return true; }
};

/// By the first letter of their titles, destinations are unknown, refuse the link, or take what is sent; of one the files are lost.
class Move : public StudyRootRetrieve {
 public:
  bool FindDestination(std::string_view destination, PeerAddress& address) override {
    address = {"127.0.0.1", "104"};
    if (destination.starts_with('U')) return false;
    if (!destination.starts_with('R')) MoveDestination::Await();
    return true;
  }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;
  }
  bool PrepareMove(std::string_view destination, DICOMDataObject&, std::vector<std::string>& files,
                   std::uint16_t&) override {
    Require(destination.size() <= 16, "a destination has at most 16 bytes");
    files.assign(3, destination.starts_with('L') ? "/dev/null" : MoveDestination::File());
    return destination != "NONE";
  }
  bool OnMoveResponse(DICOMCommandObject*, DICOMDataObject*) override { return true; }
};

bool Answer(PDU_Service& pdu, DICOMCommandObject& command) {
  if (CEchoRQ::Test(command)) return Verification().Read(&pdu, &command);
  if (CFindRQ::Test(command)) return Find().Read(&pdu, &command);
  if (CMoveRQ::Test(command)) return Move().Read(&pdu, &command);
  if (CCancelRQ::Test(command)) return true;
  DICOMDataObject object;
  return Store().Read(&pdu, &command, &object);
}

void Serve(PDU_Service& pdu, int connected) {
  if (pdu.Listen(connected) == 0) {
    Require(pdu.Link.Connected == 0, "a refused peer is gone");
    return;
  }
  Require(!pdu.AcceptedContexts.empty(), "an association is for something");
  for (int i = 0; i < kMostRequests; ++i) {
    DICOMCommandObject command;
    const std::uint8_t context = pdu.Read(command);
    if (context == 0 || !Answer(pdu, command)) break;
  }
  pdu.Link.Close();
}

}  // namespace
}  // namespace tessaret::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tessaret::fuzz;
  PreloadedPeer peer(data, size);
  if (!peer.IsThere()) return 0;
  {
    Acceptor pdu;
    pdu.Dictionary = StandardDictionary();
    pdu.Link.TimeoutSecs = 0;
    Serve(pdu, peer.Give());
  }
  peer.CheckHeard("234567");
  MoveDestination::Leave();
  return 0;
}
