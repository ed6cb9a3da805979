/// Sends files to another node. Class "Tessaret.DcmCStore".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// A queue of files, sent over one association when SendFiles is called. What became of each file is told by events, on the caller's
/// thread and before SendFiles returns.
class IDcmCStore : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F0200C};
  static constexpr const char* kName = "IDcmCStore";

  /// Sends every file of the queue, in the order in which they were added, and returns when all are done; the queue stays as it is.
  /// `host` is a name or an address, `port` a number or a service as text, the titles have up to 16 characters. `TimeoutSecs` is how
  /// long an answer may take; 0 stands for 300 seconds.
  /// A file is sent in its own transfer syntax where the node takes that for its class, and otherwise in the one that the node
  /// took. One file that fails, or cannot be read to its end, does not stop the others: it ends in SopError, and the call succeeds
  /// whatever the files did. An answer of the node with a warning or a failure in it counts as sent.
  /// Fails with kInvalidArgument for a time below 0, and with "Files are being sent already" where it is called from one of its events.
  /// Fails where no association comes about: "Connection to  %s: %s permanently refused" or "Connection to  %s: %s temporarily
  /// refused" with host and title, then in a second line "Non active link", "Unupported Application Context", "Unknown local
  /// AETitle" or "Unknown remote AETitle", also where no file names a class, so that nothing could be proposed; IDcmStoreResponse tells
  /// more.
  virtual Status SendFiles(const String& host, const String& port, const String& LocalAE,
                           const String& RemoteAE, std::int32_t TimeoutSecs) = 0;

  /// Puts a file at the end of the queue. `SOPClassUID` is the class of its object, which SendFiles proposes to the node. The file is
  /// not looked at before it is sent.
  virtual Status AddFile(const String& FilePath, const String& SOPClassUID) = 0;

  /// Ends a SendFiles that is under way before its next file; files that are left get no event. It may be called from an event or
  /// from another thread, and does nothing else.
  virtual Status Cancel() = 0;

  /// How many files are in the queue.
  virtual Status get_NumFiles(Result<std::int16_t> pVal) = 0;

  /// How many files the last SendFiles has sent so far.
  virtual Status get_SentFiles(Result<std::int16_t> pVal) = 0;

  /// The path of file `Idx` of the queue, from 0.
  virtual Status get_FileName(std::int16_t Idx, Result<String> pVal) = 0;
};

/// Events of that class. They come on the thread that called SendFiles, while it runs.
class _IDcmCStoreEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F0300C};
  static constexpr const char* kName = "_IDcmCStoreEvents";

  /// A file was sent. `FileName` is its path as it was added, `Idx` its place in the queue, from 0.
  virtual Status SopSent(const String& FileName, std::int16_t Idx) = 0;

  /// A file could not be sent. `Message` says why; it begins with "Error sending [" and the path.
  virtual Status SopError(const String& FileName, std::int16_t Idx, const String& Message) = 0;

  /// All is done: how many files were sent and how many failed.
  virtual Status Finished(std::int16_t TotSent, std::int16_t TotErrors) = 0;
};

}  // namespace tessaret
