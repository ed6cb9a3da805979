// Command sets: each message knows its own, what was read reads the same once it has been written, and requests and responses made
// from it say to the other end what they were to say.
#include <sys/socket.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agreed_context.h"
#include "base/byte_order.h"
#include "core/type_code.h"
#include "net/c_cancel.h"
#include "net/c_echo.h"
#include "net/c_find.h"
#include "net/c_get.h"
#include "net/c_move.h"
#include "net/c_store.h"
#include "net/command_elements.h"
#include "net/sop_classes.h"
#include "saved_form.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

constexpr std::uint8_t kContextID = 1;

/// Both ends of an association with one context. What one says waits in the system until the other one hears it.
struct Talk {
  explicit Talk(const UID& sopClass) {
    int ends[2];
    Require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) == 0, "a pair of sockets can be had");
    speaker.Link.Adopt(ends[0]);
    hearer.Link.Adopt(ends[1]);
    for (PDU_Service* end : {&speaker, &hearer}) {
      end->Dictionary = StandardDictionary();
      end->Link.TimeoutSecs = 0;
      Agree(*end, kContextID, sopClass.View(), "1.2.840.10008.1.2");
      end->PDataTF.MessagePresentationContextID = kContextID;
    }
  }
  ~Talk() {
    speaker.Link.Close();
    hearer.Link.Close();
  }

  void Hear(DICOMObject& object) {
    Require(hearer.Read(object) == kContextID, "what is said is heard");
  }

  PDU_Service speaker;
  PDU_Service hearer;
};

/// A message about one SOP class.
template <class Message>
class About : public Message {
 public:
  explicit About(const UID& sopClass) : sopClass_(sopClass) {}
  bool GetUID(UID& uid) override {
    uid = sopClass_;
    return true;
  }

 private:
  UID sopClass_;
};

using Number = std::optional<std::uint16_t>;

std::string_view BytesOf(const DICOMObject& command, std::uint16_t element) {
  const VR* vr = command.GetVR(0x0000, element);
  if (vr == nullptr || vr->Items != nullptr || vr->Data == nullptr) return {};
  return {reinterpret_cast<const char*>(vr->Data), vr->Length};
}

/// The class that it is about, as the other end will read it: what is of an odd length or padded in another way may read as another one
/// once it is padded as it should be.
UID ClassOf(const DICOMObject& command) {
  const auto uid = UidOf(command, 0x0000, command_element::kSopClass);
  const bool isPlain = uid && !uid->IsEmpty() &&
                       uid->View().find_first_not_of(".0123456789") == std::string_view::npos;
  return isPlain ? *uid : UID(sop_class::kVerification);
}

bool HasItems(const DICOMObject& object) {
  return !object.Elements.ForEachWhile([](const VR& vr) { return vr.Items == nullptr; });
}

template <class Message>
void RequireKnown(const DICOMCommandObject& command, std::uint16_t field) {
  const bool isOwn =
      BytesOf(command, 0x0100).size() == 2 && command.GetUINT16(0x0000, 0x0100) == field;
  Require(Message::Test(command) == isOwn, "a command is known by its field");
  Require(Message::MessageOf::Read(command) == isOwn, "and read where it is known");
}

void CheckKinds(const DICOMCommandObject& command) {
  RequireKnown<CStoreRQ>(command, 0x0001);
  RequireKnown<CStoreRSP>(command, 0x8001);
  RequireKnown<CGetRQ>(command, 0x0010);
  RequireKnown<CGetRSP>(command, 0x8010);
  RequireKnown<CFindRQ>(command, 0x0020);
  RequireKnown<CFindRSP>(command, 0x8020);
  RequireKnown<CMoveRQ>(command, 0x0021);
  RequireKnown<CMoveRSP>(command, 0x8021);
  RequireKnown<CEchoRQ>(command, 0x0030);
  RequireKnown<CEchoRSP>(command, 0x8030);
  RequireKnown<CCancelRQ>(command, 0x0FFF);
}

/// What group 0000 says of its own length is where the next group begins.
void RequireGroupLength(const DICOMObject& heard) {
  const VR* length = heard.GetFirstVR();
  Require(length != nullptr && length->Key() == 0 && length->Length == 4, "a command has a length");
  std::size_t bytes = 0;
  heard.Elements.ForEach([&](const VR& vr) {
    if (vr.Group == 0 && vr.Element != 0) bytes += 8 + vr.Length;
  });
  Require(LoadLittle32(length->Data) == bytes, "which is that of its elements");
}

/// Sends the command, and the other end reads what it was. Whether it can be sent.
bool CheckSent(Talk& talk, const DICOMCommandObject& command) {
  DICOMCommandObject sent;
  Require(sent.CopyFrom(command), "a command can be copied");
  PutNumber32(sent, 0x0000, 0x0000, CommandGroupLength(sent));
  const SavedForm form{ElementForm::kImplicit, false, StandardDictionary()};
  const SavedLimits limits = LimitsOf(sent, form);
  const std::unique_ptr<DICOMObject> before(sent.Clone(true));
  Require(talk.speaker.Write(sent, kContextID) == !limits.unwritable,
          "a command is sent unless it cannot be encoded");
  Require(sent.IsEmpty(), "a command that was sent is empty");
  if (limits.unwritable) return false;
  DICOMCommandObject heard;
  Require(talk.hearer.Read(heard) == kContextID || limits.changes, "what is said is heard");
  if (limits.changes) return false;
  RequireReadsBack(*before, heard, form);
  if (!HasItems(heard)) RequireGroupLength(heard);
  return true;
}

/// Takes what a message has said: a command of this kind about this class.
template <class Message>
void HearCommand(Talk& talk, const UID& sopClass, DICOMCommandObject& heard) {
  talk.Hear(heard);
  Require(IsCommand(talk.hearer) && Message::Test(heard), "a message is of its own kind");
  const auto uid = UidOf(heard, 0x0000, command_element::kSopClass);
  Require(uid && *uid == sopClass, "and about its class");
  RequireGroupLength(heard);
}

void FillIdentifier(DICOMDataObject& identifier) {
  PutBytes(identifier, 0x0010, 0x0010, type_code::PN, "NAME");
}

template <class Message>
void HearIdentifier(Talk& talk, const DICOMCommandObject& heard) {
  DICOMDataObject identifier;
  Require(HasDataSet(heard), "a data set is announced");
  Require(Message::MessageOf::Read(heard, &talk.hearer, &identifier), "and follows");
  Require(identifier.GetVR(0x0010, 0x0010) != nullptr, "with what was put in");
}

template <class Request, class... More>
void CheckRequest(Talk& talk, const UID& sopClass, DICOMCommandObject& heard, More... more) {
  About<Request> request(sopClass);
  DICOMDataObject identifier;
  FillIdentifier(identifier);
  Require(request.Write(&talk.speaker, &identifier, more...), "a request is sent");
  HearCommand<Request>(talk, sopClass, heard);
  Require(CommandNumber(heard, command_element::kMessageID) == Number(request.MessageID),
          "with its number");
  HearIdentifier<Request>(talk, heard);
}

/// Whether the element holds these bytes, made even.
bool Holds(const DICOMObject& heard, std::uint16_t element, std::string_view bytes, char pad) {
  std::string padded(bytes);
  if (padded.size() % 2 != 0) padded += pad;
  return BytesOf(heard, element) == padded;
}

void CheckStoreRequest(Talk& talk, const UID& sopClass, std::string_view instance) {
  DICOMDataObject object;
  PutBytes(object, 0x0008, 0x0018, type_code::UI, instance);
  Require(About<CStoreRQ>(sopClass).Write(&talk.speaker, &object), "a store is sent");
  DICOMCommandObject heard;
  HearCommand<CStoreRQ>(talk, sopClass, heard);
  std::string said(instance);
  // A UID that was padded with a blank is put right.
  if (said.size() % 2 == 0 && said.ends_with(' ')) said.back() = '\0';
  Require(Holds(heard, command_element::kSopInstance, said, '\0'), "with its instance");
  DICOMDataObject stored;
  Require(CStoreRQ::Read(heard, &talk.hearer, &stored), "and its object");
}

void CheckRequests(Talk& talk, const DICOMCommandObject& command, const UID& sopClass) {
  DICOMCommandObject heard;
  Require(About<CEchoRQ>(sopClass).Write(&talk.speaker), "an echo is sent");
  HearCommand<CEchoRQ>(talk, sopClass, heard);
  heard.Reset();
  CheckRequest<CFindRQ>(talk, sopClass, heard);
  heard.Reset();
  CheckRequest<CGetRQ>(talk, sopClass, heard);
  heard.Reset();
  const std::string_view destination = BytesOf(command, command_element::kDestination);
  CheckRequest<CMoveRQ>(talk, sopClass, heard, destination);
  Require(Holds(heard, command_element::kDestination, destination, ' '), "with its destination");
  CheckStoreRequest(talk, sopClass, BytesOf(command, command_element::kSopInstance));

  const std::uint16_t messageID = command.GetUINT16(0x0000, 0x0120);
  Require(CCancelRQ::Write(&talk.speaker, messageID), "a cancel is sent");
  heard.Reset();
  Require(CCancelRQ::Read(&talk.hearer, heard), "and seen at once");
  Require(CommandNumber(heard, 0x0120) == Number(messageID), "of the request that is meant");
}

/// What a response says of its request.
void RequireAnswers(const DICOMObject& heard, const DICOMObject& request, std::uint16_t status) {
  const Number asked = CommandNumber(request, command_element::kMessageID);
  Require(CommandNumber(heard, command_element::kRespondedMessageID) == Number(asked.value_or(0)),
          "a response names its request");
  Require(CommandNumber(heard, command_element::kStatus) == Number(status), "and a status");
}

void CheckQueryResponses(Talk& talk, const DICOMCommandObject& request, const UID& sopClass,
                         std::uint16_t status) {
  const std::string_view comment = BytesOf(request, command_element::kErrorComment);
  const RetrieveCounters counters{1, 2, 3, request.GetUINT16(0x0000, 0x1023)};
  DICOMDataObject identifier;
  FillIdentifier(identifier);
  Require(About<CFindRSP>(sopClass).Write(&talk.speaker, &request, status, &identifier, comment),
          "a match is sent");
  DICOMCommandObject heard;
  talk.Hear(heard);
  RequireAnswers(heard, request, status);
  Require(Holds(heard, command_element::kErrorComment, comment, '\0'), "and a comment");
  HearIdentifier<CFindRSP>(talk, heard);

  Require(About<CMoveRSP>(sopClass).Write(&talk.speaker, &request, status, counters),
          "a response to a move is sent");
  Require(About<CGetRSP>(sopClass).Write(&talk.speaker, &request, status, counters),
          "and one to a get");
  for (const auto test : {&CMoveRSP::Test, &CGetRSP::Test}) {
    heard.Reset();
    talk.Hear(heard);
    Require(test(heard) && !HasDataSet(heard), "each of its own kind");
    RequireAnswers(heard, request, status);
    Require(CommandNumber(heard, command_element::kRemaining) == Number(1) &&
                CommandNumber(heard, command_element::kCompleted) == Number(2) &&
                CommandNumber(heard, command_element::kFailed) == Number(3) &&
                CommandNumber(heard, command_element::kWarning) == Number(counters.warning),
            "how far it has come");
  }
}

void CheckStoreResponse(Talk& talk, const DICOMCommandObject& command, std::uint16_t status) {
  DICOMCommandObject request;
  Require(request.CopyFrom(command), "a command can be copied");
  Require(About<CStoreRSP>(UID()).Write(&talk.speaker, &request, status), "a store is answered");
  DICOMCommandObject heard;
  talk.Hear(heard);
  RequireAnswers(heard, command, status);
  const bool hasInstance = request.GetVR(0x0000, command_element::kSopInstance) != nullptr;
  Require(!hasInstance, "what the answer takes is taken out of the request");
  About<CStoreRSP> read{UID()};
  Require(read.Read(heard) && read.GetStatus() == status, "its status is read");
}

void CheckEchoResponse(Talk& talk, const DICOMCommandObject& command, const UID& sopClass) {
  DICOMCommandObject request;
  Require(request.CopyFrom(command), "a command can be copied");
  const auto asked = UidOf(command, 0x0000, command_element::kSopClass);
  const bool isOwn = asked && *asked == sopClass;
  Require(About<CEchoRSP>(sopClass).Write(&talk.speaker, &request) == isOwn,
          "an echo of the class is answered");
  if (!isOwn) return;
  DICOMCommandObject heard;
  talk.Hear(heard);
  Require(CEchoRSP::Test(heard), "by an echo");
  Require(CommandNumber(heard, 0x0120) == CommandNumber(command, 0x0110), "to this one");
}

/// Takes out of a response what there is to be known.
void CheckAsStoreResponse(const DICOMCommandObject& command) {
  DICOMCommandObject response;
  Require(response.CopyFrom(command), "a command can be copied");
  const bool hasComment = response.GetVR(0x0000, command_element::kErrorComment) != nullptr;
  About<CStoreRSP> read{UID()};
  if (!read.Read(response)) return;
  Require(read.GetStatus() == CommandNumber(command, command_element::kStatus).value_or(0),
          "a status that is there is told");
  Require((read.ErrorComment != nullptr) == (hasComment && read.GetStatus() != 0),
          "and a comment on what went wrong");
}

void Check(const DICOMCommandObject& command) {
  CheckKinds(command);
  CheckAsStoreResponse(command);
  const UID sopClass = ClassOf(command);
  Talk talk(sopClass);
  if (!CheckSent(talk, command)) return;
  CheckRequests(talk, command, sopClass);
  const std::uint16_t status = command.GetUINT16(0x0000, command_element::kStatus);
  CheckQueryResponses(talk, command, sopClass, status);
  CheckStoreResponse(talk, command, status);
  CheckEchoResponse(talk, command, sopClass);
  Require(!talk.hearer.HasInput(), "nothing else was said");
}

}  // namespace
}  // namespace tessaret::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tessaret;
  using namespace tessaret::fuzz;
  // What a pair of sockets holds of all the messages that are made of one.
  constexpr std::size_t kMostInput = 8 << 10;
  if (size > kMostInput) return 0;
  DataSetCoder coder(StandardDictionary());
  MemoryBuffer bytes(BlockOf({data, size}), static_cast<std::uint32_t>(size), false);
  DICOMCommandObject command;
  if (coder.ImplicitLittleIn(bytes, command)) Check(command);
  return 0;
}
