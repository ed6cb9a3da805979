// Sends a queue of files over one association (DICOM PS3.4, annex B), one after the other on the caller's thread, and tells a listener
// of each.
#pragma once

#include <atomic>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "net/pdu_service.h"
#include "services/file_ahead.h"

namespace tessaret {

/// Whom to send to, and as whom, in UTF-8.
struct StoreTarget {
  std::string host;
  std::string port;
  std::string localTitle;
  std::string remoteTitle;
  std::int32_t timeoutSecs = 0;  // 0: as a socket has it
};

/// The response to the file sent last.
struct StoreResponse {
  std::int32_t status = -1;  // -1: there was none
  std::string comment;       // of a status that is not 0
};

class StoreListener {
 public:
  virtual ~StoreListener() = default;
  virtual void OnSent(const std::string& path, std::size_t index) = 0;
  virtual void OnError(const std::string& path, std::size_t index, const std::string& words) = 0;
  /// While the association is still there.
  virtual void OnFinished(std::size_t sent, std::size_t errors) = 0;
};

class StoreSender {
 public:
  /// Both must live longer. The queue may grow while it is sent.
  StoreSender(const std::vector<std::string>& files, StoreListener& listener)
      : files_(files), listener_(listener) {}

  /// Proposes `sopClasses` in their order, and sends the files while `isCancelled` is false. False where no association comes about;
  /// the words are in Failure then.
  bool Send(const StoreTarget& target, const std::set<std::string>& sopClasses,
            const std::atomic<bool>& isCancelled);

  std::size_t Sent = 0;
  std::size_t Errors = 0;
  StoreResponse Response;
  std::string Failure;
  // What the association said when it did not come about, or when it did not take the file at hand.
  std::string LinkWords;

 private:
  /// Throws std::string with the words of what went wrong, from the path on.
  void SendFile(PDU_Service& pdu, std::size_t index);

  const std::vector<std::string>& files_;
  StoreListener& listener_;
  FileAhead ahead_;
};

}  // namespace tessaret
