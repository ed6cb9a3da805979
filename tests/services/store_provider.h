// Another node in this process, to which tests send: it listens on a free port of loopback, takes associations one after the other on
// a thread of its own, and keeps what it was sent.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/dicom_object.h"
#include "core/type_code.h"
#include "net/c_store.h"
#include "net/command_elements.h"
#include "net/sop_classes.h"
#include "net/verification.h"
#include "support/bytes.h"

namespace tessaret::test {

/// A listening socket on a free port of the loopback interface. Whoever takes the descriptor closes it.
inline std::pair<int, std::string> ListenOnLoopback() {
  const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  if (::bind(descriptor, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      ::listen(descriptor, 16) != 0 ||
      ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no listener");
  }
  return {descriptor, std::to_string(ntohs(address.sin_port))};
}

/// What becomes of a request for storage.
struct StoreAnswer {
  std::uint16_t status = 0;
  std::string comment = {};
  /// Instead of an answer: closes the link, aborts, asks for a release and waits for the peer to close, or answers something else.
  enum class Instead { kNothing, kClose, kAbort, kRelease, kOther };
  Instead instead = Instead::kNothing;
};

struct ProviderPlan {
  std::set<std::string> syntaxes = {"1.2.840.10008.1.2", "1.2.840.10008.1.2.1"};
  std::set<std::string> refusedClasses = {};
  std::string calledTitle = {};   // empty: any
  std::string callingTitle = {};  // empty: any
  bool takesContext = true;
  std::string namedSyntax = {};  // in place of the one that was taken, where it is not empty
  bool answersEcho = true;
  /// Asked on the provider's thread, with how many objects came before.
  std::function<StoreAnswer(std::size_t)> answer = [](std::size_t) { return StoreAnswer(); };
};

/// One object as it came.
struct StoredObject {
  std::string sopClass;
  std::string instance;
  std::string syntax;  // of the context that it came on
  std::unique_ptr<DICOMDataObject> object;
};

class StoreProvider {
 public:
  explicit StoreProvider(ProviderPlan plan = {}) : plan_(std::move(plan)) {
    const auto [descriptor, port] = ListenOnLoopback();
    listener_ = descriptor;
    port_ = port;
    thread_ = std::thread([this] { Serve(); });
  }
  StoreProvider(const StoreProvider&) = delete;
  StoreProvider& operator=(const StoreProvider&) = delete;
  ~StoreProvider() { End(); }

  [[nodiscard]] const std::string& Port() const { return port_; }

  /// Takes nobody any more, and waits for an association that is under way.
  void End() {
    if (!thread_.joinable()) return;
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    if (!isListenerClosed_) ::close(listener_);
  }

  // After End.
  std::vector<StoredObject> stored;
  std::vector<std::string> proposals;  // "class: syntax syntax", of the last association, in order
  std::string titles;                  // "calling > called", with their blanks
  std::size_t associations = 0;
  std::size_t releases = 0;
  std::size_t echoes = 0;

 private:
  class Acceptor : public PDU_Service {
   public:
    explicit Acceptor(const ProviderPlan& plan) : plan_(plan) {}

    bool AcceptPresentationContext(const PresentationContext& proposed,
                                   PresentationContextAccept& accept) override {
      if (!PDU_Service::AcceptPresentationContext(proposed, accept)) return false;
      if (!plan_.namedSyntax.empty()) accept.TransferSyntax.Set(plan_.namedSyntax);
      return true;
    }
    bool AcceptTransferSyntax(const UID& syntax) override {
      return plan_.syntaxes.contains(std::string(syntax.View()));
    }
    bool AcceptAbstractSyntax(const UID& sopClass) override {
      return !plan_.refusedClasses.contains(std::string(sopClass.View()));
    }
    bool AcceptCalledTitle(std::string_view title) override {
      return plan_.calledTitle.empty() || title.substr(0, title.find(' ')) == plan_.calledTitle;
    }
    bool AcceptCallingTitle(std::string_view title) override {
      return plan_.callingTitle.empty() || title.substr(0, title.find(' ')) == plan_.callingTitle;
    }
    bool AcceptApplicationContext(const UID&) override { return plan_.takesContext; }

   private:
    const ProviderPlan& plan_;
  };

  void Serve() {
    for (;;) {
      Acceptor acceptor(plan_);
      acceptor.Link.TimeoutSecs = 20;
      if (acceptor.AcceptNext(listener_) == 0) break;
      ++associations;
      acceptor.SetError(nullptr);
      NoteProposals(acceptor);
      while (Answer(acceptor)) {
      }
      // A release leaves the link to whoever answered it, and is no error.
      const bool isReleased = acceptor.Link.Connected != 0 && acceptor.GetLastError() == nullptr;
      if (isReleased && plan_.answersEcho) ++releases;
      acceptor.Link.Close();
    }
    // One that could not accept has closed the listener.
    isListenerClosed_ = true;
  }

  void NoteProposals(PDU_Service& acceptor) {
    proposals.clear();
    for (const PresentationContext& context : acceptor.AAssociateRQ.PresentationContexts) {
      std::string line = std::string(context.AbstractSyntax.View()) + ":";
      for (const TransferSyntax& syntax : context.TransferSyntaxes) {
        line += " " + std::string(syntax.View());
      }
      proposals.push_back(line);
    }
    titles = std::string(acceptor.AAssociateRQ.CallingApTitle.data(), 16) + " > " +
             std::string(acceptor.AAssociateRQ.CalledApTitle.data(), 16);
  }

  /// One message. False when the association is to end.
  bool Answer(PDU_Service& acceptor) {
    DICOMCommandObject command;
    if (acceptor.Read(command) == 0) return false;
    if (CEchoRQ::Test(command)) {
      ++echoes;
      if (!plan_.answersEcho) return false;
      Verification verification;
      return verification.Read(&acceptor, &command);
    }
    StoredObject came;
    came.object = std::make_unique<DICOMDataObject>();
    if (!CStoreRQ::Read(command, &acceptor, came.object.get())) return false;
    const auto text = [](const DICOMObject& in, std::uint16_t group, std::uint16_t element) {
      return std::string(UidOf(in, group, element).value_or(UID()).View());
    };
    came.sopClass = text(command, 0x0000, command_element::kSopClass);
    came.instance = text(command, 0x0000, command_element::kSopInstance);
    came.syntax = text(*came.object, 0x0002, 0x0010);
    const StoreAnswer answer = plan_.answer(stored.size());
    stored.push_back(std::move(came));
    return answer.instead == StoreAnswer::Instead::kNothing
               ? Respond(acceptor, command, answer)
               : ActInstead(acceptor, command, answer.instead);
  }

  static bool ActInstead(PDU_Service& acceptor, DICOMCommandObject& command,
                         StoreAnswer::Instead instead) {
    switch (instead) {
      case StoreAnswer::Instead::kAbort:
        acceptor.AAbortRQ.Write(acceptor);
        break;
      case StoreAnswer::Instead::kRelease: {
        acceptor.AReleaseRQ.Write(acceptor);
        DICOMCommandObject unread;
        acceptor.Read(unread);
        break;
      }
      case StoreAnswer::Instead::kOther:
        PutNumber16(command, 0x0000, command_element::kCommandField, command_field::kFindRSP);
        return acceptor.Respond(command, nullptr, UID(sop_class::kCT));
      case StoreAnswer::Instead::kClose:
      case StoreAnswer::Instead::kNothing:
        break;
    }
    acceptor.Link.Close();
    return false;
  }

  static bool Respond(PDU_Service& acceptor, DICOMCommandObject& command,
                      const StoreAnswer& answer) {
    DICOMCommandObject response;
    const UID sopClass = UidOf(command, 0x0000, command_element::kSopClass).value_or(UID());
    PutUid(response, 0x0000, command_element::kSopClass, sopClass.View());
    PutNumber16(response, 0x0000, command_element::kCommandField, command_field::kStoreRSP);
    PutNumber16(response, 0x0000, command_element::kRespondedMessageID,
                CommandNumber(command, command_element::kMessageID).value_or(0));
    PutNumber16(response, 0x0000, command_element::kDataSetType, data_set_type::kNone);
    PutNumber16(response, 0x0000, command_element::kStatus, answer.status);
    if (!answer.comment.empty()) {
      PutBytes(response, 0x0000, command_element::kErrorComment, type_code::LO, answer.comment);
    }
    return acceptor.Respond(response, nullptr, sopClass);
  }

  ProviderPlan plan_;
  int listener_ = -1;
  bool isListenerClosed_ = false;
  std::string port_;
  std::thread thread_;
};

/// Takes one connection after the other and sends each `answer` once it has sent something; then nothing more is sent.
class AnsweringPeer {
 public:
  explicit AnsweringPeer(Bytes answer) : answer_(std::move(answer)) {
    const auto [descriptor, port] = ListenOnLoopback();
    listener_ = descriptor;
    port_ = port;
    thread_ = std::thread([this] { Serve(); });
  }
  AnsweringPeer(const AnsweringPeer&) = delete;
  AnsweringPeer& operator=(const AnsweringPeer&) = delete;
  ~AnsweringPeer() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
  }
  [[nodiscard]] const std::string& Port() const { return port_; }

 private:
  void Serve() {
    for (;;) {
      const int peer = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
      if (peer < 0) return;
      std::uint8_t bytes[4096];
      if (::recv(peer, bytes, sizeof bytes, 0) > 0) {
        ::send(peer, answer_.data(), answer_.size(), MSG_NOSIGNAL);
        ::shutdown(peer, SHUT_WR);
        while (::recv(peer, bytes, sizeof bytes, 0) > 0) {
        }
      }
      ::close(peer);
    }
  }

  Bytes answer_;
  int listener_ = -1;
  std::string port_;
  std::thread thread_;
};

/// A-ASSOCIATE-RJ: type 3, length 4, a zero, result, source, reason.
inline Bytes Refusal(std::uint8_t result, std::uint8_t source, std::uint8_t reason) {
  return {3, 0, 0, 0, 0, 4, 0, result, source, reason};
}

}  // namespace tessaret::test
