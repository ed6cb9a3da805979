// C-FIND, C-MOVE, C-GET and the request that cancels one of them (DICOM PS3.7, 9.3.2 to 9.3.4).
#pragma once

#include <string_view>

#include "net/dimse_message.h"

namespace tessaret {

/// How far a retrieval has come, in sub-operations.
struct RetrieveCounters {
  std::uint16_t remaining = 0;
  std::uint16_t completed = 0;
  std::uint16_t failed = 0;
  std::uint16_t warning = 0;
};

class CFindRQ : public virtual DimseMessage {
 public:
  /// Sends the request and the identifier, which is popped empty.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);

  std::uint16_t MessageID = 0;  // of the request written last
};

class CFindRSP : public virtual DimseMessage {
 public:
  /// Answers the request, with a data set that is popped empty or null, and a comment of its very length, or none.
  bool Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
             DICOMDataObject* dataObject = nullptr, std::string_view comment = {});
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);
};

class CMoveRQ : public virtual DimseMessage {
 public:
  /// Sends the request, and then the identifier, which is popped empty.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject, std::string_view destinationAE);
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);

  std::uint16_t MessageID = 0;
};

class CMoveRSP : public virtual DimseMessage {
 public:
  bool Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
             const RetrieveCounters& counters, DICOMDataObject* dataObject = nullptr,
             std::string_view comment = {});
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);
};

class CGetRQ : public virtual DimseMessage {
 public:
  /// Sends the request, and then the identifier, which is popped empty or null.
  bool Write(PDU_Service* pdu, DICOMDataObject* dataObject);
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);

  std::uint16_t MessageID = 0;
};

class CGetRSP : public virtual DimseMessage {
 public:
  bool Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
             const RetrieveCounters& counters, DICOMDataObject* dataObject = nullptr,
             std::string_view comment = {});
  static bool Read(const DICOMCommandObject& command, PDU_Service* pdu = nullptr,
                   DICOMDataObject* dataObject = nullptr);
  static bool Test(const DICOMCommandObject& command);
};

class CCancelRQ : public virtual DimseMessage {
 public:
  /// Cancels the request with this identifier, on the presentation context of the last message.
  static bool Write(PDU_Service* pdu, std::uint16_t messageID);
  /// Looks for a cancel without waiting. False at once where nothing has come; otherwise one command is read into `command`, and the
  /// answer tells whether it is one.
  static bool Read(PDU_Service* pdu, DICOMCommandObject& command);
  static bool Test(const DICOMCommandObject& command);
};

class CFindCancelRQ : public CCancelRQ {};
class CMoveCancelRQ : public CCancelRQ {};
class CGetCancelRQ : public CCancelRQ {};

}  // namespace tessaret
