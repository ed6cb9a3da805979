// What C-FIND, C-MOVE and C-GET have in common: a request with an identifier to find by, and responses of which each may have a data
// set of its own.
#pragma once

#include <cstdint>
#include <optional>
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

/// What one kind of request says beyond what all do.
struct QueryRequest {
  std::uint16_t field;
  std::uint16_t priority = request_priority::kMedium;
  std::optional<std::string_view> destination = std::nullopt;  // application entity title
  bool isSentAtOnce = false;  // with its identifier; nothing goes where that cannot be encoded
};

/// Sends a request of the message's SOP class, and then the identifier, which is popped empty, or may be null. `messageID` becomes its
/// Message ID. Where an identifier that is sent by itself cannot be encoded, the link is closed.
bool WriteQueryRequest(DimseMessage& message, PDU_Service* pdu, const QueryRequest& what,
                       DICOMDataObject* identifier, std::uint16_t& messageID);

/// What one kind of response says beyond what all do.
struct QueryResponse {
  std::uint16_t field;
  std::uint16_t status;
  const RetrieveCounters* counters = nullptr;  // null: none are said
  std::string_view comment = {};               // sent at its very length; none where it is empty
};

/// Answers the request, with a data set that is popped empty, or null. The Message ID stands under both tags.
bool WriteQueryResponse(DimseMessage& message, PDU_Service* pdu, const DICOMCommandObject* request,
                        const QueryResponse& what, DICOMDataObject* dataObject);

/// The response of a retrieval, with counters: C-MOVE and C-GET differ in the command field alone.
template <std::uint16_t commandField>
class RetrieveResponse : public MessageOf<commandField> {
 public:
  /// Answers the request, with a data set that is popped empty or null, and a comment of its very length, or none.
  bool Write(PDU_Service* pdu, const DICOMCommandObject* request, std::uint16_t status,
             const RetrieveCounters& counters, DICOMDataObject* dataObject = nullptr,
             std::string_view comment = {}) {
    return WriteQueryResponse(*this, pdu, request, {commandField, status, &counters, comment},
                              dataObject);
  }
};

}  // namespace tessaret
