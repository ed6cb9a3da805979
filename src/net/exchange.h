// One request of this side on an association, up to its last response.
#pragma once

#include <cstdint>
#include <optional>

#include "net/dimse_message.h"

namespace tessaret {

/// One at a time on an association, since the responses of two could not be told apart: what begins within another one, as a hook of a
/// requester might ask for, has not begun. One that ends before its last response has come is abandoned, and the responses that are
/// still on their way are dropped by those that follow.
class Exchange {
 public:
  explicit Exchange(PDU_Service& pdu);
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
  ~Exchange();

  /// False, with words in LastError, while another one is in progress.
  [[nodiscard]] bool HasBegun() const { return hasBegun_; }
  /// The request has gone. Identifiers come round: an abandoned one of the same is forgotten.
  void Expect(std::uint16_t messageID);
  /// Waits for the next response into `response`, and for the data set that follows it into `data`, where that is given. False, with
  /// words where there are some, for anything of another command field, and where the association has been released or cannot be read:
  /// its link is closed then.
  bool Read(std::uint16_t field, DICOMCommandObject& response, DICOMDataObject* data = nullptr);
  /// The last response has come.
  void End() { awaited_.reset(); }
  /// Ends with a response that is a failure: leaves its status and comment in LastError. One with a status that promises more is not
  /// the last, and the exchange is abandoned. False.
  bool Fail(const DICOMObject& response);

 private:
  bool IsOfAbandoned(const DICOMObject& response);
  bool ReadData(const DICOMObject& response, DICOMDataObject& data);
  /// Nothing that may still come can be told for what it is. False.
  bool CloseLink();

  PDU_Service& pdu_;
  bool hasBegun_;
  std::optional<std::uint16_t> awaited_;  // Message ID
};

}  // namespace tessaret
