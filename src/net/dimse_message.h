// What the messages of the composite services have in common (DICOM PS3.7, 9.3): a class for each message fills a command set to write
// one, and looks into a command set to know one. They keep nothing beyond what a class says; a service inherits several of them and
// gives them its SOP class.
#pragma once

#include <cstdint>
#include <optional>

#include "core/dicom_object.h"
#include "net/pdu_service.h"
#include "net/uid.h"

namespace tessaret {

namespace command_field {
inline constexpr std::uint16_t kStoreRQ = 0x0001;
inline constexpr std::uint16_t kStoreRSP = 0x8001;
inline constexpr std::uint16_t kGetRQ = 0x0010;
inline constexpr std::uint16_t kGetRSP = 0x8010;
inline constexpr std::uint16_t kFindRQ = 0x0020;
inline constexpr std::uint16_t kFindRSP = 0x8020;
inline constexpr std::uint16_t kMoveRQ = 0x0021;
inline constexpr std::uint16_t kMoveRSP = 0x8021;
inline constexpr std::uint16_t kEchoRQ = 0x0030;
inline constexpr std::uint16_t kEchoRSP = 0x8030;
inline constexpr std::uint16_t kCancelRQ = 0x0FFF;
}  // namespace command_field

namespace data_set_type {
inline constexpr std::uint16_t kNone = 0x0101;
/// What this side writes; of a peer every value but kNone means that a data set follows.
inline constexpr std::uint16_t kFollows = 0x0102;
}  // namespace data_set_type

namespace request_priority {
inline constexpr std::uint16_t kMedium = 0;
inline constexpr std::uint16_t kLow = 2;
}  // namespace request_priority

/// Elements of command sets (DICOM PS3.7, annex E), all of group 0000.
namespace command_element {
inline constexpr std::uint16_t kSopClass = 0x0002;
inline constexpr std::uint16_t kCommandField = 0x0100;
inline constexpr std::uint16_t kMessageID = 0x0110;
inline constexpr std::uint16_t kRespondedMessageID = 0x0120;
inline constexpr std::uint16_t kReceiver = 0x0200;
inline constexpr std::uint16_t kInitiator = 0x0300;
inline constexpr std::uint16_t kDestination = 0x0600;
inline constexpr std::uint16_t kPriority = 0x0700;
inline constexpr std::uint16_t kDataSetType = 0x0800;
inline constexpr std::uint16_t kStatus = 0x0900;
inline constexpr std::uint16_t kErrorComment = 0x0902;
inline constexpr std::uint16_t kSopInstance = 0x1000;
inline constexpr std::uint16_t kRemaining = 0x1020;
inline constexpr std::uint16_t kCompleted = 0x1021;
inline constexpr std::uint16_t kFailed = 0x1022;
inline constexpr std::uint16_t kWarning = 0x1023;
}  // namespace command_element

class DimseMessage {
 public:
  virtual ~DimseMessage() = default;
  /// The SOP class that the message is about. False where there is none.
  virtual bool GetUID(UID& uid) = 0;
};

/// The number of one command element, nothing where it is absent or no number of two bytes.
std::optional<std::uint16_t> CommandNumber(const DICOMObject& command, std::uint16_t element);

/// Whether the command set is of this kind.
bool HasCommandField(const DICOMObject& command, std::uint16_t field);
/// Whether a data set follows it.
bool HasDataSet(const DICOMObject& command);
/// Reads the data set that follows the command set, where one does. False when it could not be read, and, with words, when a command came
/// in its place.
bool ReadDataSet(const DICOMObject& command, PDU_Service& pdu, DICOMDataObject& dataObject);
/// Whether the command set is of this kind; if so, a data set that follows is read into `dataObject`, where both that and `pdu` are
/// given. False also where ReadDataSet fails.
bool ReadMessage(const DICOMCommandObject& command, std::uint16_t field, PDU_Service* pdu,
                 DICOMDataObject* dataObject);

/// A message that is known by its command field.
template <std::uint16_t commandField>
class MessageOf : public virtual DimseMessage {
 public:
  /// Whether a command set that has been read is of this kind; if so, a data set that follows is read into `dataObject`, where both that
  /// and `pdu` are given. False also when it could not be read.
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr) {
    return ReadMessage(command, commandField, pdu, dataObject);
  }
  static bool Test(const DICOMCommandObject& command) {
    return HasCommandField(command, commandField);
  }
};

/// A message that asks for a response.
template <std::uint16_t commandField>
class RequestOf : public MessageOf<commandField> {
 public:
  std::uint16_t MessageID = 0;  // of the request written last
};

/// A new request: SOP class, command field, data set type, and a Message ID of its own, which is the answer.
std::uint16_t FillRequest(DICOMCommandObject& command, const UID& sopClass, std::uint16_t field,
                          std::uint16_t dataSetType);

/// Whether the data set has an element that is sent: those of group 0002 and group lengths are not.
bool HasElementToSend(const DICOMObject& dataObject);

/// Whether the message that was read last is a command.
bool IsCommand(const PDU_Service& pdu);

// No element of a command set has items; one that has counts as absent.

/// Moves an element of a request that is there into the response, under a tag that may be another.
void MoveElement(DICOMObject& request, std::uint16_t from, DICOMObject& response, std::uint16_t to);
/// The same for one that is a number of two bytes; of any other length it counts as absent.
void MoveNumber(DICOMObject& request, std::uint16_t from, DICOMObject& response, std::uint16_t to);
/// Copies one that is there.
void CopyElement(const DICOMObject& request, DICOMObject& response, std::uint16_t element);
/// Puts a copy of `value` under a tag of its own.
void PutCopy(const VR& value, DICOMObject& command, std::uint16_t element);

}  // namespace tessaret
