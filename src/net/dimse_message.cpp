#include "net/dimse_message.h"

#include <memory>

#include "net/command_elements.h"
#include "net/identifiers.h"

namespace tessaret {

std::optional<std::uint16_t> CommandNumber(const DICOMObject& command, std::uint16_t element) {
  return Number16(command, 0x0000, element);
}

bool HasCommandField(const DICOMObject& command, std::uint16_t field) {
  return CommandNumber(command, command_element::kCommandField) == field;
}

bool HasDataSet(const DICOMObject& command) {
  return CommandNumber(command, command_element::kDataSetType) != data_set_type::kNone;
}

bool ReadDataSet(const DICOMObject& command, PDU_Service& pdu, DICOMDataObject& dataObject) {
  if (!HasDataSet(command)) return true;
  if (pdu.Read(dataObject) == 0) return false;
  if (!IsCommand(pdu)) return true;
  pdu.SetError("Got a command where a data set was announced");
  return false;
}

bool ReadMessage(const DICOMCommandObject& command, std::uint16_t field, PDU_Service* pdu,
                 DICOMDataObject* dataObject) {
  if (!HasCommandField(command, field)) return false;
  return pdu == nullptr || dataObject == nullptr || ReadDataSet(command, *pdu, *dataObject);
}

std::uint16_t FillRequest(DICOMCommandObject& command, const UID& sopClass, std::uint16_t field,
                          std::uint16_t dataSetType) {
  PutUid(command, 0x0000, command_element::kSopClass, sopClass.View());
  PutNumber16(command, 0x0000, command_element::kCommandField, field);
  const auto messageID = static_cast<std::uint16_t>(TakeOddIdentifier());
  PutNumber16(command, 0x0000, command_element::kMessageID, messageID);
  PutNumber16(command, 0x0000, command_element::kDataSetType, dataSetType);
  return messageID;
}

bool HasElementToSend(const DICOMObject& dataObject) {
  return !dataObject.Elements.ForEachWhile(
      [](const VR& vr) { return vr.Group == 0x0002 || vr.Element == 0; });
}

bool IsCommand(const PDU_Service& pdu) { return (pdu.PDataTF.MsgHeader & kCommandFragment) != 0; }

void MoveElement(DICOMObject& request, std::uint16_t from, DICOMObject& response,
                 std::uint16_t to) {
  std::unique_ptr<VR> element(request.Remove(0x0000, from));
  if (element == nullptr || element->Items != nullptr) return;
  element->Element = to;
  response.Push(element.get());
  element.release();
}

void MoveNumber(DICOMObject& request, std::uint16_t from, DICOMObject& response, std::uint16_t to) {
  if (CommandNumber(request, from)) MoveElement(request, from, response, to);
}

void CopyElement(const DICOMObject& request, DICOMObject& response, std::uint16_t element) {
  if (const VR* found = request.GetVR(0x0000, element)) PutCopy(*found, response, element);
}

void PutCopy(const VR& value, DICOMObject& command, std::uint16_t element) {
  if (value.Items != nullptr) return;
  auto copy = std::make_unique<VR>(value, true);
  copy->Group = 0x0000;
  copy->Element = element;
  command.Push(copy.get());
  copy.release();
}

}  // namespace tessaret
