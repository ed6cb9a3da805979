#include "net/standard_query.h"

#include <new>
#include <optional>

#include "net/command_elements.h"
#include "net/contained.h"
#include "net/dimse_status.h"
#include "net/exchange.h"

namespace tessaret {

bool StandardQuery::Write(PDU_Service* pdu, DICOMDataObject* query) {
  if (pdu == nullptr || query == nullptr) return false;
  // Sending empties what it sends, and the query is to be seen once more.
  DICOMDataObject sent;
  Exchange exchange(*pdu);
  if (!exchange.HasBegun()) return false;
  if (!sent.CopyFrom(*query)) throw std::bad_alloc();
  if (!CFindRQ::Write(pdu, &sent)) return false;
  // A hook may send another request by this on another association.
  const std::uint16_t messageID = MessageID;
  exchange.Expect(messageID);
  OnResponse(nullptr, query);
  for (;;) {
    DICOMCommandObject command;
    DICOMDataObject data;
    if (!exchange.Read(command_field::kFindRSP, command, &data)) return false;
    switch (CommandNumber(command, command_element::kStatus).value_or(dimse_status::kSuccess)) {
      case dimse_status::kSuccess:
      case dimse_status::kCancelled:
        exchange.End();
        OnResponse(&command, &data);
        return true;
      case dimse_status::kPending:
      case dimse_status::kPendingWithoutKeys:
        if (!HasDataSet(command) || OnResponse(&command, &data)) continue;
        CFindCancelRQ::Write(pdu, messageID);
        return false;
      default:
        return exchange.Fail(command);
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
    switch (CFindCancelRQ::Look(*pdu)) {
      case Interruption::kNone:
        break;
      case Interruption::kCancel:
        return CFindRSP::Write(pdu, command, dimse_status::kCancelled);
      case Interruption::kEnd:
        return false;
    }
    // One that is not there says nothing, and one without an element could not follow.
    if (response == nullptr || !HasElementToSend(*response)) continue;
    const auto isSent = Contained(std::optional<bool>(), [&] {
      return std::optional(CFindRSP::Write(pdu, command, dimse_status::kPending, response.get()));
    });
    // Otherwise the peer would take what has come for all that there is, or wait for more on a link that stands.
    if (!isSent || (!*isSent && pdu->Link.Connected != 0)) {
      return CFindRSP::Write(pdu, command, dimse_status::kUnableToProcess);
    }
    if (!*isSent) return false;
  }
  return CFindRSP::Write(pdu, command, dimse_status::kSuccess);
}

}  // namespace tessaret
