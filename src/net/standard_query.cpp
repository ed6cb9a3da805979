#include "net/standard_query.h"

#include "net/command_elements.h"
#include "net/contained.h"
#include "net/dimse_status.h"

namespace tessaret {

bool StandardQuery::Write(PDU_Service* pdu, DICOMDataObject* query) {
  if (pdu == nullptr || query == nullptr) return false;
  // Sending empties what it sends, and the query is to be seen once more.
  DICOMDataObject sent;
  if (!sent.CopyFrom(*query) || !CFindRQ::Write(pdu, &sent)) return false;
  OnResponse(nullptr, query);
  for (;;) {
    DICOMCommandObject command;
    DICOMDataObject data;
    if (pdu->Read(command) == 0 || !CFindRSP::Read(command, pdu, &data)) return false;
    switch (CommandNumber(command, command_element::kStatus).value_or(dimse_status::kSuccess)) {
      case dimse_status::kSuccess:
      case dimse_status::kCancelled:
        OnResponse(&command, &data);
        return true;
      case dimse_status::kPending:
      case dimse_status::kPendingWithoutKeys:
        if (!HasDataSet(command) || OnResponse(&command, &data)) continue;
        CFindCancelRQ::Write(pdu, MessageID);
        return false;
      default:
        return false;
    }
  }
}

bool StandardQuery::Read(PDU_Service* pdu, DICOMCommandObject* command) {
  UID own;
  if (pdu == nullptr || command == nullptr || !GetQueryUID(own)) return false;
  const auto asked = UidOf(*command, 0x0000, command_element::kSopClass);
  DICOMDataObject query;
  if (!asked || !(*asked == own) || !CFindRQ::Read(*command, pdu, &query)) return false;
  std::vector<std::unique_ptr<DICOMDataObject>> responses;
  if (!Contained(false, [&] { return SearchDatabase(query, responses); })) {
    return CFindRSP::Write(pdu, command, dimse_status::kUnableToProcess);
  }
  for (const auto& response : responses) {
    DICOMCommandObject maybeCancel;
    if (CFindCancelRQ::Read(pdu, maybeCancel)) {
      return CFindRSP::Write(pdu, command, dimse_status::kCancelled);
    }
    // One that is not there says nothing, and one without an element could not follow.
    if (response == nullptr || response->IsEmpty()) continue;
    if (!CFindRSP::Write(pdu, command, dimse_status::kPending, response.get())) return false;
  }
  return CFindRSP::Write(pdu, command, dimse_status::kSuccess);
}

}  // namespace tessaret
