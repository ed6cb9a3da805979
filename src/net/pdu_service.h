// One end of one DICOM association (DICOM PS3.8): the byte stream of the association, one object of every kind of PDU, what was
// negotiated, the socket, and the readers and writers of data sets. Messages and services work through it and never touch a
// socket. It connects or accepts; every decision of the accepting side is a virtual operation for a descendant to replace.
//
// One thread at a time. Another thread may end what it waits for by Close of Link.
//
// Operations answer false or 0 when they fail, with the reason in GetLastError() where there is one.
#pragma once

#include <cxxabi.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/buffer.h"
#include "core/data_set_coder.h"
#include "net/associate_pdus.h"
#include "net/own_request.h"
#include "net/p_data.h"
#include "net/short_pdus.h"
#include "net/socket.h"
#include "net/uid.h"

namespace tessaret {

/// What this side says of itself.
inline constexpr const char* kImplementationClass = "1.2.826.0.1.5518204.7.460.20000624";
inline constexpr const char* kImplementationVersion = "QX/W32/1.6.9";
inline constexpr std::uint32_t kProposedMaximumLength = 16384;

class PDU_Service : public Buffer, public DataSetCoder {
 public:
  /// Not connected, big endian both ways. Switches the trace of data on where the environment variable "DCM_DUMP_PDATA" is there.
  PDU_Service();
  /// Releases an association that is open.
  ~PDU_Service() override;

  // The stream.

  std::int64_t ReadBinary(void* data, std::uint32_t count) override;
  int SendBinary(const void* data, std::uint32_t count) override;
  /// True when the last that was to be received did not come.
  bool IsEnd() override { return hasEnded_; }
  /// From what was received ahead, and from the socket.
  std::int64_t Read(void* data, std::uint32_t count) override;
  using Buffer::Write;

  // What the accepting side decides.

  /// True for "1.2.840.10008.1.2" alone.
  virtual bool AcceptTransferSyntax(const UID& transferSyntax);
  /// Titles come with their blanks. True.
  virtual bool AcceptCallingTitle(std::string_view title);
  virtual bool AcceptCalledTitle(std::string_view title);
  /// True.
  virtual bool AcceptApplicationContext(const UID& context);
  /// Takes the first transfer syntax, in the order proposed, that AcceptTransferSyntax takes; false where AcceptAbstractSyntax does
  /// not take the abstract syntax or none is left. Fills both into `accept`.
  virtual bool AcceptPresentationContext(const PresentationContext& proposed,
                                         PresentationContextAccept& accept);
  /// True.
  virtual bool AcceptAbstractSyntax(const UID& abstractSyntax);
  /// The role that the answer gives the requester: 0.
  virtual std::uint8_t SCURoleReply(const UID& abstractSyntax, std::uint8_t proposedSCURole);
  /// And this side: 1.
  virtual std::uint8_t SCPRoleReply(const UID& abstractSyntax, std::uint8_t proposedSCPRole);

  // What is proposed.

  /// Implicit little endian is added to what is to be proposed, and everything that is goes into `context`.
  virtual void FillTransferSyntaxes(PresentationContext& context);
  virtual void FillImplementationClass(ImplementationClass& item);
  virtual void FillImplementationVersion(ImplementationVersion& item);

  // Data sets in the transfer syntax of a presentation context.

  /// Reads `buffer` into `object`, whose (0002,0010) then names the syntax.
  virtual bool ParseIncoming(std::uint8_t contextID, Buffer& buffer, DICOMObject& object);
  /// Writes `object`, which is popped empty, into `buffer`. A descendant that writes another object in its place keeps
  /// the bytes that it shares until the message is sent: they may wait where they lie.
  virtual bool ParseOutgoing(DICOMObject& object, Buffer& buffer, std::uint8_t contextID);
  /// Writes it in its own syntax where a context of the abstract syntax has that, and otherwise in the first one of the table of
  /// syntaxes that any has. The context's identifier, 0 with words where there is none.
  virtual std::uint8_t ParseOutgoingForClass(DICOMObject& object, Buffer& buffer,
                                             const UID& abstractSyntax);
  /// Writes it in the first syntax of the table that any context has. The context's identifier, 0 where there is none.
  virtual std::uint8_t ParseOutgoingAny(DICOMObject& object, Buffer& buffer);

  /// What is there already is not added again.
  virtual void AddAbstractSyntax(const UID& uid);
  /// A further context of the abstract syntax, with the identifier and result of the first one. 1; 0 where there is none.
  virtual int AddAcceptedContext(const UID& abstractSyntax, const UID& transferSyntax);
  virtual void AddTransferSyntax(const UID& uid);
  virtual void SetApplicationContext(const UID& uid);
  /// What is longer than 16 bytes is cut.
  virtual void SetCallingTitle(std::string_view title);
  virtual void SetCalledTitle(std::string_view title);

  // Associations.

  /// Requests an association. 1, or 0 with words, the link closed, and the numbers of a refusal in AAssociateRJ: the peer's, source 2
  /// and reason 1 where the socket could not be opened, source 1 and reason 1 where nothing is proposed, those of a new one otherwise.
  int Connect(const std::string& host, const std::string& port);
  /// Releases the association, if one is open, and closes the link. 1, whatever comes of the release.
  int Close();
  /// Takes one peer that connects to `port`, or the connected descriptor, and answers its request. 1 when the association stands. What
  /// was open before is closed, unless it is that descriptor (which no other thread may close meanwhile). A decision that throws is an
  /// abort, here and in AcceptNext.
  int Listen(const std::string& port);
  int Listen(int connectedHandle);
  /// Takes peers until one association stands. The listening descriptor, which is the caller's then; 0, with words, when no further
  /// peer can be taken.
  int AcceptNext(const std::string& port);
  int AcceptNext(int listenHandle);
  /// Answers the request in AAssociateRQ. 1 when the association stands; 0 after a refusal.
  int Negotiate();
  /// Takes what AAssociateAC accepts. 0 with words where that is nothing.
  int CheckAccept();

  // What is accepted; an identifier of 0 means that there is none.

  [[nodiscard]] std::uint8_t ContextIDFor(const UID& abstractSyntax) const;
  [[nodiscard]] std::uint8_t ContextIDFor(const UID& abstractSyntax,
                                          const UID& transferSyntax) const;
  [[nodiscard]] std::uint8_t ContextIDForTransfer(const UID& transferSyntax) const;
  bool TransferSyntaxOf(std::uint8_t contextID, UID& transferSyntax) const;
  [[nodiscard]] bool IsAccepted(const UID& abstractSyntax) const;

  // Messages. Objects that are written are popped empty.

  /// In the first accepted context of the SOP class, and in its transfer syntax.
  bool Write(DICOMDataObject& dataObject, const UID& sopClass);
  /// Commands are implicit little endian in any context.
  bool Write(DICOMCommandObject& commandObject, const UID& sopClass);
  bool Write(DICOMCommandObject& commandObject, std::uint8_t contextID);
  /// Sends what stands in VRBuffer of PDataTF, as data or command by its MessageControl.
  bool Write(std::uint8_t contextID);
  /// A command and the data set that goes with it, which may be null. Nothing is sent where either cannot be encoded.
  bool Write(DICOMCommandObject& commandObject, DICOMDataObject* dataObject, const UID& sopClass);
  /// The same on the context of the message read last, where that is of the SOP class: a response belongs to its request. So it does
  /// where the class was accepted in no context at all.
  bool Respond(DICOMCommandObject& commandObject, DICOMDataObject* dataObject, const UID& sopClass);
  /// Waits for the next message and reads it into `object`. Its context's identifier; 0 after a failure, a release, which is answered
  /// and leaves the link open, or an abort.
  std::uint8_t Read(DICOMObject& object);
  /// Whether a read would find something at once: bytes, or the end of the link.
  bool HasInput();

  [[nodiscard]] const char* GetLastError() const { return ErrorText(); }
  /// With `owned` the dictionary is deleted with this, or when another one takes its place.
  void AttachDictionary(const RTC* dictionary, bool owned);

  /// A peer's from when it has been read until the next Connect, or the next peer. Connect proposes what this side had here before, with
  /// titles and application context that were set meanwhile; what the caller has changed here since stays changed. Where that
  /// leaves no contexts, those are proposed that the lists of classes and syntaxes make.
  tessaret::AAssociateRQ AAssociateRQ;
  tessaret::AAssociateAC AAssociateAC;
  tessaret::AAssociateRJ AAssociateRJ;
  tessaret::AReleaseRQ AReleaseRQ;
  tessaret::AReleaseRP AReleaseRP;
  tessaret::AAbortRQ AAbortRQ;
  tessaret::PDataTF PDataTF;
  std::vector<TransferSyntax> ProposedTransferSyntaxes;
  std::vector<AbstractSyntax> ProposedAbstractSyntaxes;
  std::vector<PresentationContextAccept> AcceptedContexts;
  bool HasRequest = false;  // one of this side is in progress
  std::vector<std::uint16_t>
      AbandonedMessages;  // of this side, whose last responses have not come yet
  bool HasDataSetToDrop =
      false;  // one that comes next belongs to the command before, and nobody waits for it
  std::int32_t OwnsDictionary = 0;
  std::int32_t ByteOrderFlag = 1;
  Socket Link;

 private:
  // Words for what another thread of this side has ended.
  static constexpr const char* kClosedHere = "The link was closed";

  /// Receives what has come, at least a byte. False at the end of the link.
  bool ReceiveAhead();
  /// Forgets all that waits in either direction, of a link before.
  void ForgetStream();
  /// Leaves the words and answers 0.
  int Fail(const char* words) noexcept;
  int Fail(const std::string& words) noexcept { return Fail(words.c_str()); }
  /// What `work` answers. Where it throws, the link is closed first: a peer must not wait for the rest of what has begun, nor find
  /// something else behind it.
  template <class Work>
  auto OrCloseLink(Work work) {
    try {
      return work();
    } catch (...) {
      CloseLink();
      throw;
    }
  }
  /// Sends what nothing depends on; the closed link tells the peer as much. Where the thread is cancelled within, the link is closed:
  /// nothing is to be sent or waited for once more.
  template <class Work>
  void Attempt(Work work) {
    try {
      work();
    } catch (const abi::__forced_unwind&) {
      CloseLink();
      throw;
    } catch (...) {
    }
  }
  /// Closes the link and forgets what waits for it.
  void CloseLink() noexcept;
  int Request(const std::string& host, const std::string& port);
  void Release();
  bool BuildContexts();
  /// Leaves the words, and the numbers of a refusal for having nothing to propose. False.
  bool RefuseToPropose(const char* words);
  int RefuseConnect();
  /// Takes peers from the listener of the link until one association stands, and gives it to the caller.
  int AcceptOnListener();
  /// Receives a request on the link and answers it. False where no association comes of it; then the caller closes the link, but not
  /// a listener that is to go on.
  bool AnswerOnLink();
  bool ReadAndNegotiate();
  /// The same; then the link is closed, too.
  int AnswerRequest();
  /// Negotiates by a request that stays as it is.
  int Answer(const tessaret::AAssociateRQ& request);
  /// Leaves the numbers of a refusal by this side.
  void NoteRefusal(std::uint8_t source, std::uint8_t reason);
  int Reject(std::uint8_t source, std::uint8_t reason);
  void Abort();
  void WriteAbort();
  /// After a type byte that could not be read.
  std::uint8_t EndOfLink();
  /// Leaves the words for it; of a failure the peer is told.
  void NoteEndOfLink();
  /// What `work` answers, which sends a message. Where it fails the link is closed, with words; of a link that was closed before they
  /// stand already. `wasOpen` is before the message was encoded: another thread may close it within.
  template <class Work>
  bool Sends(bool wasOpen, Work work);
  bool Send(std::uint8_t contextID, bool wasOpen);
  /// Acts on a PDU that is not of data. Always 0.
  std::uint8_t ActOn(std::uint8_t type);
  std::uint8_t ReadMessage(DICOMObject& object);
  std::uint8_t Decode(DICOMObject& object, const char* wordsOnFailure);
  /// 0 with words where none was accepted.
  std::uint8_t ContextToWrite(const UID& sopClass);
  bool WriteBoth(DICOMCommandObject& commandObject, DICOMDataObject* dataObject,
                 std::uint8_t contextID);
  bool EncodeCommand(DICOMCommandObject& commandObject, tessaret::PDataTF& data);
  bool EncodeAs(std::int32_t code, DICOMObject& object, Buffer& buffer);

  OwnRequest ownRequest_;
  bool hasEnded_ = false;  // the link, for reading
  std::vector<std::uint8_t>
      ahead_;  // received, and read from the incoming chunk that leads into it
};

}  // namespace tessaret
