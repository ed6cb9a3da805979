#include "services/store_sender.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "base/text.h"
#include "core/module_dictionaries.h"
#include "net/command_elements.h"
#include "services/connect_failure.h"
#include "services/outgoing_object.h"
#include "tessaret/string.hpp"

namespace tessaret {
namespace {

constexpr std::string_view kTailStart = "]: ";

StoreResponse ResponseIn(const DicomStorage& storage) {
  return {.status = storage.Status,
          .comment = std::string(Trimmed(ValueOf(storage.ErrorComment.get())))};
}

bool IsAcceptedAsOffered(const PDU_Service& pdu, const UID& sopClass) {
  UID accepted;
  if (!pdu.TransferSyntaxOf(pdu.ContextIDFor(sopClass), accepted)) return false;
  const auto& offered = pdu.ProposedTransferSyntaxes;
  return std::any_of(offered.begin(), offered.end(),
                     [&](const UID& syntax) { return syntax == accepted; });
}

}  // namespace

bool StoreSender::Send(const StoreTarget& target, const std::set<std::string>& sopClasses,
                       const std::atomic<bool>& isCancelled) {
  PDU_Service pdu;
  if (target.timeoutSecs != 0) pdu.Link.TimeoutSecs = target.timeoutSecs;
  pdu.SetApplicationContext(UID("1.2.840.10008.3.1.1.1"));
  for (const std::string& sopClass : sopClasses) pdu.AddAbstractSyntax(UID(sopClass));
  // In this order: a peer that takes the first one that it knows takes the implicit form.
  pdu.AddTransferSyntax(UID("1.2.840.10008.1.2"));
  pdu.AddTransferSyntax(UID("1.2.840.10008.1.2.1"));
  pdu.SetCallingTitle(String(target.localTitle).Narrow());
  pdu.SetCalledTitle(String(target.remoteTitle).Narrow());
  pdu.AttachDictionary(&ModuleDictionary(), false);
  if (pdu.Connect(target.host, target.port) == 0) {
    Failure = ConnectFailureWords(pdu.AAssociateRJ, target.host, target.remoteTitle);
    LinkWords = LastWordsOf(pdu);
    return false;
  }
  for (std::size_t index = 0; index < files_.size() && !isCancelled; ++index) {
    // The queue may move while it grows.
    const std::string path = files_[index];
    Response = {};
    LinkWords.clear();
    pdu.SetError(nullptr);
    std::string words;
    try {
      SendFile(pdu, index);
    } catch (const std::string& thrown) {
      words = thrown;
    } catch (const std::bad_alloc&) {
      words = "Error sending [" + path + "]: Not enough memory";
    }
    if (words.empty()) {
      ++Sent;
      listener_.OnSent(path, index);
    } else {
      ++Errors;
      listener_.OnError(path, index, words);
    }
  }
  listener_.OnFinished(Sent, Errors);
  pdu.Close();
  return true;
}

void StoreSender::SendFile(PDU_Service& pdu, std::size_t index) {
  const std::string path = files_[index];
  const std::string start = "Error sending [" + path;
  OutgoingFile file{.object = ahead_.Take(path), .lack = {}};
  if (file.object == nullptr) file = LoadForSending(pdu, path);
  auto& [object, lack] = file;
  if (object == nullptr) {
    const char* why = pdu.GetLastError();
    throw start + "]: " + (why == nullptr ? "It is no DICOM file" : why);
  }
  const UID sopClass = UidOf(*object, 0x0008, 0x0016).value_or(UID());
  const UID syntax = SyntaxOf(*object);
  if (!syntax.IsEmpty() && pdu.ContextIDFor(sopClass, syntax) == 0) {
    const std::string tail = TranscodeForPeer(pdu, *object, sopClass);
    if (!tail.empty()) {
      // Where the class was not accepted as it was offered, the file is not at fault.
      const bool isOfPeer = !sopClass.IsEmpty() && !IsAcceptedAsOffered(pdu, sopClass);
      if (isOfPeer) LinkWords = tail.substr(kTailStart.size());
      throw start + tail;
    }
  }
  // Half an image would arrive as if it were all that there is. What an unknown syntax hides has been told of.
  if (!lack.empty()) throw start + "]: " + lack;
  DicomStorage storage(*object);
  if (!CanGoAsItIs(pdu, *object, storage.UID)) {
    const std::string words = "The pixel data are not in the accepted Transfer Syntax";
    // Fragments of which the file does not say what they are in go to nobody.
    if (!HasFragments(*object)) LinkWords = words;
    throw start + "]: " + words;
  }
  bool isStored = SendOver(pdu, storage, *object);
  if (isStored) {
    if (index + 1 < files_.size()) ahead_.Load(pdu.Dictionary, files_[index + 1]);
    isStored = storage.ReadResponse(&pdu);
  }
  if (!isStored) {
    const std::string words = LastWordsOf(pdu);
    if (!storage.UID.IsEmpty() || pdu.Link.Connected == 0) LinkWords = words;
    throw start + "]: " + words;
  }
  Response = ResponseIn(storage);
}

}  // namespace tessaret
