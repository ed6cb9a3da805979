#include "net/outgoing_file.h"

#include <cerrno>

#include "base/text.h"
#include "core/each_element.h"
#include "core/file_head.h"
#include "core/transfer_syntax.h"
#include "core/value_order.h"
#include "net/command_elements.h"
#include "platform/file_calls.h"

namespace tessaret {

bool HasFragments(const DICOMObject& object) {
  return AnyElement(object,
                    [](const VR& vr) { return vr.Key() == kPixelDataTag && vr.Items != nullptr; });
}

OutgoingFile LoadForSending(PDU_Service& pdu, const std::string& path) {
  OutgoingFile file = LoadForSending(pdu.Dictionary, path);
  if (file.object == nullptr) pdu.SetError(file.lack.empty() ? nullptr : file.lack.c_str());
  return file;
}

OutgoingFile LoadForSending(const RTC* dictionary, const std::string& path) {
  // The system would take such a path for the one that ends there.
  if (HasNul(path)) return {.object = nullptr, .lack = SystemErrorText(EINVAL)};
  HeadNotingCoder coder(dictionary);
  OutgoingFile file{.object = coder.LoadFile(path.c_str(), true, false), .lack = {}};
  if (file.object == nullptr) {
    if (coder.ErrorText() != nullptr) file.lack = coder.ErrorText();
    return file;
  }
  if (const ParseStop& stop = coder.LastStop(); stop.why != ParseStop::Why::kNone) {
    file.lack = Format("The file cannot be read beyond offset %llu",
                       static_cast<unsigned long long>(stop.position));
  }
  DICOMDataObject& object = *file.object;
  if (IsBigEndian(coder.FirstCode)) SwapNumbers(object);
  constexpr std::uint16_t kGroup = GroupOf(kTransferSyntaxTag);
  constexpr std::uint16_t kElement = ElementOf(kTransferSyntaxTag);
  const bool isNamed = !UidOf(object, kGroup, kElement).value_or(UID()).IsEmpty();
  if (!isNamed && HasFragments(object) && !coder.Head.syntax.empty()) {
    PutUid(object, kGroup, kElement, coder.Head.syntax);
  }
  return file;
}

}  // namespace tessaret
