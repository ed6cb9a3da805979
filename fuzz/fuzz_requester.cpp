// All that a peer may answer to a requester: to its request for an association, to an echo, a store, a query and a move over it, and to
// its release. What is sent is not looked at, but that it is PDUs.
#include <sys/socket.h>
#include <unistd.h>

#include "core/type_code.h"
#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/pdu_service.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/storage.h"
#include "net/verification.h"
#include "preloaded_peer.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

int peerToConnectTo = -1;

/// Responses that are waited for; then the query is cancelled.
constexpr int kEnough = 3;

class Find : public StudyRootQuery {
 public:
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;
  }
  bool OnResponse(DICOMCommandObject* command, DICOMDataObject* data) override {
    Require(data != nullptr, "a response comes with its data");
    return command == nullptr || ++told_ < kEnough;
  }

 private:
  int told_ = 0;
};

class Move : public StudyRootRetrieve {
 public:
  bool FindDestination(std::string_view, PeerAddress&) override { return false; }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;
  }
  bool PrepareMove(std::string_view, DICOMDataObject&, std::vector<std::string>&,
                   std::uint16_t&) override {
    return false;
  }
  bool OnMoveResponse(DICOMCommandObject* command, DICOMDataObject*) override {
    return command == nullptr || ++told_ < kEnough;
  }

 private:
  int told_ = 0;
};

void FillQuery(DICOMDataObject& query) {
  PutBytes(query, 0x0008, 0x0052, type_code::CS, "STUDY ");
  PutBytes(query, 0x0010, 0x0010, type_code::PN, "");
}

void Ask(PDU_Service& pdu) {
  if (Verification().Write(&pdu)) Require(pdu.Link.Connected != 0, "an answer leaves the link");
  DICOMDataObject object;
  PutUid(object, 0x0008, 0x0018, "1.2.3");
  PutBytes(object, 0x7FE0, 0x0010, type_code::OW, "pixels");
  CTStorage().Write(&pdu, &object);
  DICOMDataObject found;
  FillQuery(found);
  Find().Write(&pdu, &found);
  DICOMDataObject moved;
  FillQuery(moved);
  Move().Write(&pdu, &moved, "DESTINATION");
}

}  // namespace
}  // namespace tessaret::fuzz

/// Every connect leads to the peer of the input.
extern "C" int connect(int descriptor, const sockaddr*, socklen_t) {
  return ::dup2(tessaret::fuzz::peerToConnectTo, descriptor) < 0 ? -1 : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tessaret;
  using namespace tessaret::fuzz;
  PreloadedPeer peer(data, size);
  if (!peer.IsThere()) return 0;
  peerToConnectTo = peer.Give();
  {
    // Contexts have the numbers 1, 3, 5 and 7 in this order.
    SetIdentifierCounter(1);
    PDU_Service pdu;
    pdu.Dictionary = StandardDictionary();
    pdu.Link.TimeoutSecs = 0;
    for (const char* uid : {sop_class::kVerification, sop_class::kCT, sop_class::kStudyRootQuery,
                            sop_class::kStudyRootMove}) {
      pdu.AddAbstractSyntax(UID(uid));
    }
    pdu.AddTransferSyntax(UID("1.2.840.10008.1.2"));
    pdu.AddTransferSyntax(UID("1.2.840.10008.1.2.1"));
    pdu.AddTransferSyntax(UID("1.2.840.10008.1.2.2"));
    const bool stands = pdu.Connect("127.0.0.1", "104") == 1;
    ::close(peerToConnectTo);
    Require(stands == (pdu.Link.Connected != 0), "a link is open where an association stands");
    Require(stands || pdu.GetLastError() != nullptr, "a failure has words");
    if (stands) {
      Require(!pdu.AcceptedContexts.empty(), "an association is for something");
      Ask(pdu);
      pdu.Close();
    }
    Require(pdu.Link.Connected == 0, "a link that is released is closed");
  }
  peer.CheckHeard("14567");
  return 0;
}
