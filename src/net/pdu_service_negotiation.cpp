// How associations begin and end.
#include <algorithm>
#include <utility>

#include "base/text.h"
#include "core/trace.h"
#include "net/contained.h"
#include "net/pdu_service.h"
#include "net/reject_texts.h"

namespace tessaret {
namespace {

constexpr std::uint8_t kAccepted = 0;
// The one result of every refusal, also of one that is about transfer syntaxes alone.
constexpr std::uint8_t kRefused = 3;

constexpr std::uint8_t kPermanent = 1;
constexpr std::uint8_t kServiceUser = 1;
constexpr std::uint8_t kServiceProvider = 2;
constexpr std::uint8_t kNoReason = 1;
constexpr std::uint8_t kUnknownContextName = 2;
constexpr std::uint8_t kUnknownCallingTitle = 3;
constexpr std::uint8_t kUnknownCalledTitle = 7;

/// The text of a number from the wire, and the number itself, 0 where the table ends before it.
template <std::size_t count>
const char* TextOf(const std::array<const char*, count>& texts, std::uint8_t& number) {
  if (number >= count) number = 0;
  return texts[number];
}

bool IsTaken(const std::vector<PresentationContextAccept>& contexts, std::uint8_t identifier) {
  for (const PresentationContextAccept& context : contexts) {
    if (context.PresentationContextID == identifier) return true;
  }
  return false;
}

}  // namespace

int PDU_Service::Connect(const std::string& host, const std::string& port) {
  const int stands = OrCloseLink([&] { return Request(host, port); });
  // Nothing stays open that stood before, either, nor anything to be read.
  if (stands == 0) CloseLink();
  return stands;
}

int PDU_Service::Request(const std::string& host, const std::string& port) {
  ForgetStream();
  ownRequest_.TakeBack(AAssociateRQ);
  // Callers choose their words by it, and a refusal from before is not this one's.
  AAssociateRJ = tessaret::AAssociateRJ();
  if (!BuildContexts()) return 0;
  FillImplementationClass(AAssociateRQ.UserInformation.ImplementationClass);
  FillImplementationVersion(AAssociateRQ.UserInformation.ImplementationVersion);
  AAssociateRQ.UserInformation.SetMax(kProposedMaximumLength);
  // Nothing would be sent, and an answer be waited for.
  if (!AAssociateRQ.IsWritable()) {
    RefuseToPropose("Association request too long");
    return 0;
  }
  if (Link.Open(host, port) == 0) {
    NoteRefusal(kServiceProvider, kNoReason);
    return Fail(Link.GetLastError());
  }
  // Nobody accepts what was not sent whole; a peer that is gone may have said why before.
  const bool isSent = AAssociateRQ.Write(*this);
  std::uint8_t type = 0;
  if ((!isSent && !Link.HasInput()) || !Read8(&type)) type = 0;
  if (isSent && type == AAssociateAC.ItemType) {
    AAssociateAC = tessaret::AAssociateAC();
    // Answers that do not add up are taken all the same, unless the link has ended within.
    AAssociateAC.Read(*this);
    if (hasEnded_) return Fail("Corrupt transmission reading AAssociateRQ");
    if (CheckAccept() != 0) return 1;
    Close();
    return 0;
  }
  if (type == AAssociateRJ.ItemType) return RefuseConnect();
  return Fail("Corrupt transmission reading AAssociateRQ");
}

bool PDU_Service::BuildContexts() {
  if (AAssociateRQ.PresentationContexts.empty()) {
    // All of them or none: those that are there are not built anew.
    tessaret::AAssociateRQ request;
    for (const AbstractSyntax& syntax : ProposedAbstractSyntaxes) {
      PresentationContext context;
      FillTransferSyntaxes(context);
      context.AbstractSyntax = syntax;
      if (request.AddPresentationContext(std::move(context)) == 0) {
        return RefuseToPropose("Too many SOP Classes proposed");
      }
    }
    AAssociateRQ.PresentationContexts = std::move(request.PresentationContexts);
  }
  return !AAssociateRQ.PresentationContexts.empty() || RefuseToPropose("No SOP Class proposed");
}

bool PDU_Service::RefuseToPropose(const char* words) {
  NoteRefusal(kServiceUser, kNoReason);
  return Fail(words) != 0;
}

int PDU_Service::RefuseConnect() {
  if (!AAssociateRJ.Read(*this)) return Fail("Association rejected: link error");
  const char* result = TextOf(reject_text::kResults, AAssociateRJ.Result);
  const char* source = TextOf(reject_text::kSources, AAssociateRJ.Source);
  const char* reason = TextOf(reject_text::kReasons, AAssociateRJ.Reason);
  return Fail(Format("Connection rejected %s: %s, %s", result, source, reason));
}

int PDU_Service::CheckAccept() {
  AcceptedContexts.clear();
  for (const PresentationContextAccept& answer : AAssociateAC.PresentationContexts) {
    if (answer.Result != kAccepted) continue;
    for (const PresentationContext& proposed : AAssociateRQ.PresentationContexts) {
      if (proposed.PresentationContextID != answer.PresentationContextID) continue;
      AcceptedContexts.push_back(answer);
      AcceptedContexts.back().AbstractSyntax = proposed.AbstractSyntax;
      break;
    }
  }
  return AcceptedContexts.empty() ? Fail("No Accepted presentation Context found") : 1;
}

int PDU_Service::Close() {
  if (Link.Connected != 0) Attempt([&] { Release(); });
  CloseLink();
  return 1;
}

void PDU_Service::Release() {
  // The reserved bytes may be those of one that was received.
  AReleaseRQ = tessaret::AReleaseRQ();
  // Whatever comes is read as the answer; to what could not be sent none comes.
  if (AReleaseRQ.Write(*this) && Read8(&AReleaseRP.ItemType)) AReleaseRP.Read(*this);
}

int PDU_Service::Listen(const std::string& port) {
  if (Link.Listen(port) == 0 || Link.Accept() == 0) return Fail(Link.GetLastError());
  return AnswerRequest();
}

int PDU_Service::Listen(int connectedHandle) {
  // The link may have accepted the very one.
  if (Link.Connected != 0 && Link.DataSocket != connectedHandle) Link.Close();
  Link.Adopt(connectedHandle);
  return AnswerRequest();
}

int PDU_Service::AcceptNext(const std::string& port) {
  if (Link.Listen(port) == 0) return Fail(Link.GetLastError());
  return AcceptOnListener();
}

int PDU_Service::AcceptNext(int listenHandle) {
  // The link alone: its listener may be the very one.
  if (Link.Connected != 0) Link.ClosePeer();
  // Nobody would ever connect to what is no descriptor.
  Link.AdoptListener(std::max(listenHandle, 0));
  return AcceptOnListener();
}

int PDU_Service::AcceptOnListener() {
  for (;;) {
    // The listener is closed by nobody but another thread that wants this to end.
    if (Link.Accept() == 0) return Fail(Link.GetLastError());
    if (AnswerOnLink()) break;
    if (Link.Listening == 0) return Fail(kClosedHere);
    Link.ClosePeer();
  }
  DumpTrace(kDumpPdu, "%s", "Accepted association\n");
  const int listener = Link.GiveListener();
  return listener != 0 ? listener : Fail(kClosedHere);
}

int PDU_Service::AnswerRequest() {
  if (AnswerOnLink()) return 1;
  CloseLink();
  return 0;
}

bool PDU_Service::AnswerOnLink() {
  bool stands = false;
  try {
    const bool isDone = Contained(false, [&] {
      stands = ReadAndNegotiate();
      return true;
    });
    if (isDone) return stands;
  } catch (const abi::__forced_unwind&) {
    // A release of what does not stand would be waited for.
    Link.ClosePeer();
    ForgetStream();
    throw;
  }
  Fail("The request could not be answered, sending A-Abort-RQ");
  ForgetStream();
  WriteAbort();
  return false;
}

bool PDU_Service::ReadAndNegotiate() {
  ForgetStream();
  Link.Error = 0;
  // Nothing that the peer before has said is held against this one.
  ownRequest_.PutAside(AAssociateRQ);
  std::uint8_t type = 0;
  if (Read8(&type) && type != AAssociateRQ.ItemType) {
    Fail(Format("DUL: Received unknown item type %X, sending A-Abort-RQ", type));
    WriteAbort();
    return false;
  }
  // What could be read of a request that does not add up is answered.
  tessaret::AAssociateRQ request;
  if (!hasEnded_) request.Read(*this);
  const auto peers = ownRequest_.ShowPeers(std::move(request), AAssociateRQ);
  if (!hasEnded_) return Answer(*peers) != 0;
  NoteEndOfLink();
  return false;
}

void PDU_Service::NoteRefusal(std::uint8_t source, std::uint8_t reason) {
  // The reserved bytes may be those of one that was received.
  AAssociateRJ = tessaret::AAssociateRJ();
  AAssociateRJ.Result = kPermanent;
  AAssociateRJ.Source = source;
  AAssociateRJ.Reason = reason;
}

int PDU_Service::Reject(std::uint8_t source, std::uint8_t reason) {
  NoteRefusal(source, reason);
  AAssociateRJ.Write(*this);
  return 0;
}

int PDU_Service::Negotiate() {
  // A decision may change what stands there, and the answer is to what was asked.
  return Answer(tessaret::AAssociateRQ(AAssociateRQ));
}

int PDU_Service::Answer(const tessaret::AAssociateRQ& request) {
  const std::string_view called(request.CalledApTitle.data(), kApTitleBytes);
  const std::string_view calling(request.CallingApTitle.data(), kApTitleBytes);
  if (!AcceptCalledTitle(called)) return Reject(kServiceUser, kUnknownCalledTitle);
  if (!AcceptCallingTitle(calling)) return Reject(kServiceUser, kUnknownCallingTitle);
  if (!AcceptApplicationContext(request.ApplicationContext)) {
    return Reject(kServiceUser, kUnknownContextName);
  }
  // Nothing that a peer has answered to this side is repeated.
  AAssociateAC = tessaret::AAssociateAC();
  AAssociateAC.CalledApTitle = request.CalledApTitle;
  AAssociateAC.CallingApTitle = request.CallingApTitle;
  AAssociateAC.ApplicationContext = request.ApplicationContext;
  AAssociateAC.ApplicationContext.Reserved1 = 0;
  AAssociateAC.PresentationContexts.reserve(request.PresentationContexts.size());
  AcceptedContexts.clear();
  for (const PresentationContext& proposed : request.PresentationContexts) {
    PresentationContextAccept answer;
    answer.PresentationContextID = proposed.PresentationContextID;
    // Data of two contexts with one identifier could not be told apart, and 0 is none.
    const bool isAccepted = answer.PresentationContextID != 0 &&
                            !IsTaken(AcceptedContexts, answer.PresentationContextID) &&
                            AcceptPresentationContext(proposed, answer);
    answer.Result = isAccepted ? kAccepted : kRefused;
    answer.TransferSyntax.Reserved1 = 0;
    if (isAccepted) AcceptedContexts.push_back(answer);
    AAssociateAC.PresentationContexts.push_back(answer);
  }
  if (AcceptedContexts.empty()) {
    Fail("No accepted presentation contexts");
    return Reject(kServiceUser, kUnknownContextName);
  }
  UserInformation& reply = AAssociateAC.UserInformation;
  FillImplementationClass(reply.ImplementationClass);
  FillImplementationVersion(reply.ImplementationVersion);
  reply.SetMax(request.UserInformation.MaximumSubLength.MaximumLength);
  for (const SCPSCURoleSelect& role : request.UserInformation.RoleSelects) {
    reply.AddRoleSelect(SCPSCURoleSelect(role.UID, SCPRoleReply(role.UID, role.SCPRole),
                                         SCURoleReply(role.UID, role.SCURole)));
  }
  if (AAssociateAC.Write(*this)) return 1;
  return Fail(Link.Connected == 0 ? kClosedHere : Link.GetLastError());
}

bool PDU_Service::AcceptTransferSyntax(const UID& transferSyntax) {
  return transferSyntax.View() == "1.2.840.10008.1.2";
}

bool PDU_Service::AcceptCallingTitle(std::string_view) { return true; }
bool PDU_Service::AcceptCalledTitle(std::string_view) { return true; }
bool PDU_Service::AcceptApplicationContext(const UID&) { return true; }
bool PDU_Service::AcceptAbstractSyntax(const UID&) { return true; }
std::uint8_t PDU_Service::SCURoleReply(const UID&, std::uint8_t) { return 0; }
std::uint8_t PDU_Service::SCPRoleReply(const UID&, std::uint8_t) { return 1; }

bool PDU_Service::AcceptPresentationContext(const PresentationContext& proposed,
                                            PresentationContextAccept& accept) {
  if (!AcceptAbstractSyntax(proposed.AbstractSyntax)) return false;
  for (const TransferSyntax& syntax : proposed.TransferSyntaxes) {
    if (!AcceptTransferSyntax(syntax)) continue;
    accept.TransferSyntax = syntax;
    accept.AbstractSyntax = proposed.AbstractSyntax;
    return true;
  }
  return false;
}

}  // namespace tessaret
