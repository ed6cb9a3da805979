#include "net/standard_retrieve.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "core/comp_engine.h"
#include "core/transfer_syntax.h"
#include "net/command_elements.h"
#include "net/contained.h"
#include "net/dimse_status.h"
#include "net/exchange.h"
#include "net/outgoing_file.h"
#include "net/storage.h"

namespace tessaret {
namespace {

/// Sends objects of whatever SOP class they are of.
class ObjectStorage : public UnknownStorage {
 public:
  explicit ObjectStorage(const UID& uid) : uid_(uid) {}
  bool GetUID(UID& uid) override {
    uid = uid_;
    return true;
  }

 private:
  UID uid_;
};

/// The destination was offered native data alone. False for fragments that cannot be decoded.
bool MakeNative(DICOMDataObject& object) {
  if (!HasFragments(object)) return true;
  DcmCompEngine engine;
  return engine.Decompress(&object, nullptr, nullptr) && !HasFragments(object);
}

/// Whether the destination has accepted the class in a syntax by which little endian native data are what they are. It was offered the
/// implicit one; by the name of another, numbers or pixels would be taken for what they are not.
bool TakesNativeData(const PDU_Service& link, const UID& sopClass) {
  UID accepted;
  return link.TransferSyntaxOf(link.ContextIDFor(sopClass), accepted) &&
         IsOfNativePixels(accepted.View()) &&
         !IsBigEndian(FindTransferSyntax(accepted.View()).value_or(kExplicitBig));
}

/// Sends one file. The counter of what became of it.
std::uint16_t RetrieveCounters::*SendOneFile(PDU_Service& link, const std::string& path) {
  // Nothing is loaded for a link that is lost.
  if (link.Link.Connected == 0) return &RetrieveCounters::failed;
  const auto [object, lack] = LoadForSending(link, path);
  // Half an image would arrive as if it were the whole.
  if (object == nullptr || !lack.empty() || !MakeNative(*object)) return &RetrieveCounters::failed;
  const auto sopClass = UidOf(*object, 0x0008, 0x0016);
  if (!sopClass || !TakesNativeData(link, *sopClass)) return &RetrieveCounters::failed;
  ObjectStorage storage(*sopClass);
  if (!storage.Write(&link, object.get())) return &RetrieveCounters::failed;
  const std::uint16_t status = storage.GetStatus();
  if (status == dimse_status::kSuccess) return &RetrieveCounters::completed;
  return dimse_status::IsWarning(status) ? &RetrieveCounters::warning : &RetrieveCounters::failed;
}

/// The same, of one that no memory or no message can hold too: the others are still sent, and the peer hears of each.
std::uint16_t RetrieveCounters::*SendFile(PDU_Service& link, const std::string& path) {
  return Contained(&RetrieveCounters::failed, [&] { return SendOneFile(link, path); });
}

/// For an association to the destination, as what `pdu` has been called by.
std::unique_ptr<PDU_Service> LinkBehind(const PDU_Service& pdu, std::string_view destinationAE) {
  auto link = std::make_unique<PDU_Service>();
  link->AttachDictionary(pdu.Dictionary, false);
  link->Link.TimeoutSecs = pdu.Link.TimeoutSecs;
  link->SetCallingTitle(std::string_view(pdu.AAssociateAC.CalledApTitle.data(), kApTitleBytes));
  link->SetCalledTitle(destinationAE);
  return link;
}

/// Proposes the class of each instance. False where one cannot be told.
bool ProposeClasses(PDU_Service& link, const std::vector<std::string>& instances) {
  for (const std::string& path : instances) {
    const std::unique_ptr<DICOMDataObject> head = link.LoadFile(path.c_str(), false, false);
    const auto sopClass = head == nullptr ? std::nullopt : UidOf(*head, 0x0008, 0x0016);
    if (!sopClass) return false;
    link.AddAbstractSyntax(*sopClass);
  }
  return true;
}

/// The largest number where there are more than two bytes can say.
std::uint16_t Counted(std::size_t count) {
  return static_cast<std::uint16_t>(
      std::min<std::size_t>(count, std::numeric_limits<std::uint16_t>::max()));
}

}  // namespace

/// One request in progress.
struct StandardRetrieve::Move {
  PDU_Service* pdu;
  const DICOMCommandObject* request;
  std::vector<std::string> instances;
  RetrieveCounters counters;
};

bool StandardRetrieve::Write(PDU_Service* pdu, DICOMDataObject* query,
                             std::string_view destinationAE) {
  if (pdu == nullptr || query == nullptr) return false;
  DICOMDataObject sent;
  Exchange exchange(*pdu);
  if (!exchange.HasBegun()) return false;
  if (!sent.CopyFrom(*query)) throw std::bad_alloc();
  if (!CMoveRQ::Write(pdu, &sent, destinationAE)) return false;
  // A hook may send another request by this on another association.
  const std::uint16_t messageID = MessageID;
  exchange.Expect(messageID);
  OnMoveResponse(nullptr, query);
  for (;;) {
    DICOMCommandObject command;
    DICOMDataObject data;
    if (!exchange.Read(command_field::kMoveRSP, command, &data)) return false;
    switch (CommandNumber(command, command_element::kStatus).value_or(dimse_status::kSuccess)) {
      case dimse_status::kSuccess:
      case dimse_status::kCancelled:
      case dimse_status::kSubOperationsFailed:
        exchange.End();
        OnMoveResponse(&command, &data);
        return true;
      case dimse_status::kPending:
        if (OnMoveResponse(&command, &data)) continue;
        CMoveCancelRQ::Write(pdu, messageID);
        return false;
      default:
        return exchange.Fail(command);
    }
  }
}

bool StandardRetrieve::Answer(const Move& move, std::uint16_t status, std::string_view comment) {
  return CMoveRSP::Write(move.pdu, move.request, status, move.counters, nullptr, comment);
}

bool StandardRetrieve::Read(PDU_Service* pdu, DICOMCommandObject* command) {
  UID own;
  if (pdu == nullptr || command == nullptr || !GetMoveUID(own)) return false;
  const auto asked = UidOf(*command, 0x0000, command_element::kSopClass);
  DICOMDataObject identifier;
  if (!asked || !(*asked == own) || !CMoveRQ::Read(*command, pdu, &identifier)) return false;

  Move move{.pdu = pdu, .request = command, .instances = {}, .counters = {}};
  const std::string_view destination =
      ValueOf(command->GetVR(0x0000, command_element::kDestination));
  if (destination.empty()) return Answer(move, dimse_status::kUnableToProcess);
  const std::string destinationAE(destination.substr(0, kApTitleBytes));
  std::uint16_t count = 0;
  if (!Contained(false,
                 [&] { return PrepareMove(destinationAE, identifier, move.instances, count); })) {
    return Answer(move, dimse_status::kNothingPrepared, "Unspecified destination AE");
  }
  PeerAddress address;
  if (!Contained(false, [&] { return FindDestination(destinationAE, address); })) {
    return Answer(move, dimse_status::kUnknownDestination, "Cannot find destination AE");
  }
  const auto link =
      Contained(std::unique_ptr<PDU_Service>(), [&] { return LinkBehind(*pdu, destinationAE); });
  if (link != nullptr && !Contained(false, [&] { return ProposeClasses(*link, move.instances); })) {
    return Answer(move, dimse_status::kCannotLoad, "Cannot load SOP");
  }
  if (link == nullptr ||
      Contained(0, [&] { return link->Connect(address.host, address.port); }) == 0) {
    return Answer(move, dimse_status::kCannotConnect, "Cannot connect to destination AE");
  }
  const bool isAnswered = SendInstances(move, *link);
  link->Close();
  return isAnswered;
}

bool StandardRetrieve::SendInstances(Move& move, PDU_Service& link) {
  std::size_t left = move.instances.size();
  move.counters.remaining = Counted(left);
  for (const std::string& path : move.instances) {
    switch (CMoveCancelRQ::Look(*move.pdu)) {
      case Interruption::kNone:
        break;
      case Interruption::kCancel:
        return Answer(move, dimse_status::kCancelled);
      case Interruption::kEnd:
        return false;
    }
    std::uint16_t& counter = move.counters.*SendFile(link, path);
    counter = Counted(std::size_t{counter} + 1);
    move.counters.remaining = Counted(--left);
    if (!Answer(move, dimse_status::kPending)) return false;
  }
  return Answer(move, dimse_status::kSuccess);
}

}  // namespace tessaret
