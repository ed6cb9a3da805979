// All that a peer may send to a provider over one connection: its request for an association, and messages, which the services
// answer until the stream ends. Nothing that is answered is looked at, but that it is PDUs.
#include <sys/socket.h>
#include <unistd.h>

#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/pdu_service.h"
#include "net/standard_query.h"
#include "net/standard_retrieve.h"
#include "net/storage.h"
#include "net/verification.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

/// What the system takes in one go of what a peer has said.
constexpr std::size_t kMostInput = 64 << 10;
/// Below what it has room for.
constexpr std::size_t kMostAnswers = 64 << 10;
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

/// Knows nobody to send to: an association of its own is not for an input to ask for.
class Move : public StudyRootRetrieve {
 public:
  bool FindDestination(std::string_view, PeerAddress&) override { return false; }
  bool SearchDatabase(DICOMDataObject&, std::vector<std::unique_ptr<DICOMDataObject>>&) override {
    return false;
  }
  bool PrepareMove(std::string_view destination, DICOMDataObject&, std::vector<std::string>&,
                   std::uint16_t&) override {
    Require(destination.size() <= 16, "a destination has at most 16 bytes");
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

/// What the provider has answered, up to where the system takes no more: whole PDUs of the kinds that an acceptor sends.
void CheckAnswers(int descriptor) {
  std::vector<std::uint8_t> answers(kMostAnswers);
  const ssize_t received =
      ::recv(descriptor, answers.data(), answers.size(), MSG_DONTWAIT | MSG_WAITALL);
  if (received == static_cast<ssize_t>(kMostAnswers)) return;
  answers.resize(received > 0 ? static_cast<std::size_t>(received) : 0);
  for (std::size_t at = 0; at < answers.size();) {
    Require(answers.size() - at >= 6, "an answer has its head");
    const std::size_t length = LoadBig32(&answers[at + 2]);
    Require(answers[at] >= 2 && answers[at] <= 7, "an answer is a PDU");
    Require(answers[at] != 4 || (length >= 6 && length <= 4096 + 6), "a fragment is short");
    Require(answers.size() - at - 6 >= length, "an answer is whole");
    at += 6 + length;
  }
}

}  // namespace
}  // namespace tessaret::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tessaret::fuzz;
  int ends[2];
  if (size > kMostInput || ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) return 0;
  // It has ended before the provider begins, so that nothing waits for anything; answers that the system has no room for end it.
  const bool isSent =
      ::send(ends[1], data, size, MSG_NOSIGNAL | MSG_DONTWAIT) == static_cast<ssize_t>(size);
  ::shutdown(ends[1], SHUT_WR);
  {
    Acceptor pdu;
    pdu.Dictionary = StandardDictionary();
    pdu.Link.TimeoutSecs = 0;
    if (isSent) Serve(pdu, ends[0]);
  }
  if (!isSent) ::close(ends[0]);
  CheckAnswers(ends[1]);
  ::close(ends[1]);
  return 0;
}
