#include "services/outgoing_object.h"

#include <new>

#include "base/text.h"
#include "core/codec_registry.h"
#include "core/comp_engine.h"
#include "core/each_element.h"
#include "core/element_writer.h"
#include "core/transfer_syntax.h"
#include "core/value_order.h"
#include "net/command_elements.h"

namespace tessaret {
namespace {

bool IsBigEndianSyntax(const UID& syntax) {
  const auto code = FindTransferSyntax(syntax.View());
  return code && IsBigEndian(*code);
}

/// Writers put a NUL in place of a blank behind a UID right where it is stored, which is to be in the clone alone.
void OwnUids(DICOMObject& clone, const RTC* dictionary) {
  ForEachElement(clone, [&](VR& vr) {
    if (vr.Data == nullptr || vr.Length == 0 || vr.Data[vr.Length - 1] != ' ') return;
    const VrCode type = TypeInStream(vr, vr.TypeCode, ElementForm::kExplicit, dictionary);
    if (type == type_code::UI) vr.ReplaceValue(vr.Data, vr.Length);
  });
}

}  // namespace

void CloneInto(const DICOMObject& object, bool deep, const RTC* dictionary, DICOMDataObject& to) {
  const std::unique_ptr<DICOMObject> clone(object.Clone(deep));
  if (clone == nullptr) throw std::bad_alloc();
  while (VR* element = clone->Pop()) {
    std::unique_ptr<VR> held(element);
    to.Push(element);
    held.release();
  }
  if (!deep) OwnUids(to, dictionary);
}

UID SyntaxOf(const DICOMObject& object) {
  return UidOf(object, GroupOf(kTransferSyntaxTag), ElementOf(kTransferSyntaxTag)).value_or(UID());
}

std::string TranscodeForPeer(const PDU_Service& pdu, DICOMDataObject& object, const UID& sopClass) {
  const UID syntax = SyntaxOf(object);
  const auto about = [&](const char* words) {
    return Format("]: %s [%s]", words, syntax.Text.data());
  };
  const CodecEntry* codec = ModuleCodecRegistry().Find(syntax.View());
  if (codec == nullptr) return about("Unsupported compressed Transfer Syntax");
  DcmCompEngine engine;
  const bool isDecoded = engine.Decompress(&object, nullptr, nullptr);
  // The engine leaves those of items as they are, which the new name would belie.
  if (!isDecoded || (!codec->IsNative() && HasFragments(object))) {
    return about("Error decoding compressed Transfer Syntax");
  }
  const std::uint8_t contextID = pdu.ContextIDFor(sopClass);
  if (contextID == 0) {
    return Format("]: Cannot find Presentation Context for SOP Class[%s]", sopClass.Text.data());
  }
  UID accepted;
  // A peer may accept without saying what.
  if (!pdu.TransferSyntaxOf(contextID, accepted) || accepted.IsEmpty()) {
    return about("No presentation context for Transfer Syntax");
  }
  // They would go by the other name as if they were what it says.
  if (HasFragments(object)) return {};
  if (!engine.Compress(&object, accepted.Text.data(), nullptr)) {
    return about("Error encoding to Transfer Syntax");
  }
  // Codecs call all native pixels bytes, which are not turned round.
  if (IsBigEndianSyntax(accepted)) CallWidePixelsWords(object);
  return {};
}

bool CanGoAsItIs(const PDU_Service& pdu, const DICOMObject& object, const UID& sopClass) {
  // The first context of the class, in which it will be written.
  UID accepted;
  if (!pdu.TransferSyntaxOf(pdu.ContextIDFor(sopClass), accepted)) return true;
  if (accepted == SyntaxOf(object)) return true;
  if (HasFragments(object)) return false;
  if (object.GetVR(GroupOf(kPixelDataTag), ElementOf(kPixelDataTag)) == nullptr) return true;
  return !FindTransferSyntax(accepted.View()) || IsOfNativePixels(accepted.View());
}

bool SendOver(PDU_Service& pdu, DicomStorage& storage, const DICOMObject& object) {
  // Nothing is encoded for a link that is lost.
  if (pdu.Link.Connected == 0) return false;
  UID accepted;
  const bool isTurned =
      pdu.TransferSyntaxOf(pdu.ContextIDFor(storage.UID), accepted) && IsBigEndianSyntax(accepted);
  // A shallow clone shares long values, which go from where they lie. Bytes that are turned round are not the object's own.
  DICOMDataObject sent;
  CloneInto(object, isTurned, pdu.Dictionary, sent);
  if (isTurned) {
    // Where the object is little endian itself, wide pixels called bytes are, too.
    if (!IsBigEndianSyntax(SyntaxOf(object))) CallWidePixelsWords(sent);
    // Bytes of no known type are never turned.
    CallLongValuesUnknown(sent);
    TurnForBigEndian(sent, pdu.Dictionary);
  }
  return storage.CStoreRQ::Write(&pdu, &sent);
}

bool StoreOver(PDU_Service& pdu, DicomStorage& storage, const DICOMObject& object) {
  return SendOver(pdu, storage, object) && storage.ReadResponse(&pdu);
}

}  // namespace tessaret
