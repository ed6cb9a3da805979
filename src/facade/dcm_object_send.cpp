// Sending an object that is in memory.
#include <string>

#include "core/module_dictionaries.h"
#include "facade/dcm_object.h"
#include "facade/dcm_object_edge.h"
#include "net/command_elements.h"
#include "services/connect_failure.h"
#include "services/outgoing_object.h"

namespace tessaret {

using namespace dcm_object;

namespace {

constexpr std::int32_t kErrorDuringTransfer = 542;

}  // namespace

Status CDCMObject::Send(const String& host, const String& port, const String& LocalAETitle,
                        const String& RemoteAETitle, VariantBool, VariantBool* Sent) {
  if (Sent == nullptr) return kPointer;
  *Sent = false;
  return Answer([&] {
    const DICOMObject* const object = Object.Get();
    if (object == nullptr) return FailWith(kNothingToGetFrom);
    const auto sopClass = UidOf(*object, 0x0008, 0x0016);
    if (!sopClass) return FailWith("Missing SOP Class for C-STORE");
    PDU_Service pdu;
    pdu.SetApplicationContext(UID("1.2.840.10008.3.1.1.1"));
    pdu.AddAbstractSyntax(*sopClass);
    const UID syntax = SyntaxOf(*object);
    if (!syntax.IsEmpty()) pdu.AddTransferSyntax(syntax);
    pdu.SetCallingTitle(LocalAETitle.Narrow());
    pdu.SetCalledTitle(RemoteAETitle.Narrow());
    pdu.AttachDictionary(&ModuleDictionary(), false);
    if (pdu.Connect(host.Utf8(), port.Utf8()) == 0) {
      return FailWith(
          ConnectFailureWords(pdu.AAssociateRJ, host.Utf8(), RemoteAETitle.Utf8()).c_str());
    }
    bool isSent = false;
    {
      DICOMDataObject shared;
      CloneInto(*object, false, pdu.Dictionary, shared);
      // Also then: what says that it has no fragments is not decoded.
      const bool canGo =
          CanGoAsItIs(pdu, shared, *sopClass) ||
          (TranscodeForPeer(pdu, shared, *sopClass).empty() && CanGoAsItIs(pdu, shared, *sopClass));
      DicomStorage storage(shared);
      isSent = canGo && StoreOver(pdu, storage, shared);
    }
    pdu.Close();
    if (!isSent) return FailWith(kErrorDuringTransfer);
    *Sent = true;
    return kOk;
  });
}

}  // namespace tessaret
