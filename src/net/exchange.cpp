#include "net/exchange.h"

#include <algorithm>
#include <new>
#include <string>
#include <utility>

#include "base/text.h"
#include "net/command_elements.h"
#include "net/dimse_status.h"

namespace tessaret {
namespace {

// More than comments have (DICOM PS3.7, annex E.1).
constexpr std::size_t kMostCommentBytes = 64;

std::string CommentIn(const DICOMObject& response) {
  const std::string_view comment = ValueOf(response.GetVR(0x0000, command_element::kErrorComment));
  const std::string text(Trimmed(comment.substr(0, kMostCommentBytes)));
  return text.empty() ? text : ": " + text;
}

}  // namespace

Exchange::Exchange(PDU_Service& pdu) : pdu_(pdu), hasBegun_(!pdu.HasRequest) {
  pdu.HasRequest = true;
  if (!hasBegun_) pdu.SetError("A request is in progress on this association");
}

Exchange::~Exchange() {
  if (!hasBegun_) return;
  pdu_.HasRequest = false;
  if (!awaited_) return;
  try {
    pdu_.AbandonedMessages.push_back(*awaited_);
  } catch (const std::bad_alloc&) {
    pdu_.Link.Close();  // its responses could not be told from those of the next one
  }
}

void Exchange::Expect(std::uint16_t messageID) {
  awaited_ = messageID;
  std::erase(pdu_.AbandonedMessages, messageID);
}

bool Exchange::Read(std::uint16_t field, DICOMCommandObject& response, DICOMDataObject* data) {
  for (;;) {
    response.Reset();
    if (pdu_.Read(response) == 0) return CloseLink();
    if (!IsCommand(pdu_)) {
      if (std::exchange(pdu_.HasDataSetToDrop, false)) continue;
      pdu_.SetError("Got a data set where a response was awaited");
      return false;
    }
    pdu_.HasDataSetToDrop = true;
    if (!IsOfAbandoned(response)) break;
  }
  if (HasCommandField(response, field)) return data == nullptr || ReadData(response, *data);
  const std::uint16_t other = CommandNumber(response, command_element::kCommandField).value_or(0);
  pdu_.SetError(
      Format("Got command 0x%4.4X where response 0x%4.4X was awaited", other, field).c_str());
  return false;
}

bool Exchange::ReadData(const DICOMObject& response, DICOMDataObject& data) {
  // A match must not be lost without words, though its response says that there is none.
  const auto status = CommandNumber(response, command_element::kStatus);
  const bool isOfMatch = HasCommandField(response, command_field::kFindRSP) && status &&
                         dimse_status::IsPending(*status);
  if (isOfMatch || HasDataSet(response)) pdu_.HasDataSetToDrop = false;
  return ReadDataSet(response, pdu_, data) || CloseLink();
}

bool Exchange::CloseLink() {
  pdu_.Link.Close();
  return false;
}

bool Exchange::IsOfAbandoned(const DICOMObject& response) {
  std::vector<std::uint16_t>& abandoned = pdu_.AbandonedMessages;
  const auto asked = CommandNumber(response, command_element::kRespondedMessageID);
  const auto found =
      asked ? std::find(abandoned.begin(), abandoned.end(), *asked) : abandoned.end();
  if (found == abandoned.end()) return false;
  const auto status = CommandNumber(response, command_element::kStatus);
  if (!status || !dimse_status::IsPending(*status)) abandoned.erase(found);
  return true;
}

bool Exchange::Fail(const DICOMObject& response) {
  const std::uint16_t status = CommandNumber(response, command_element::kStatus).value_or(0);
  if (!dimse_status::IsPending(status)) End();
  pdu_.SetError(
      (Format("The peer has answered with status 0x%4.4X", status) + CommentIn(response)).c_str());
  return false;
}

}  // namespace tessaret
