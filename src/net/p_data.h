// One encoded command or data set across an association, as PDUs of type P-DATA-TF (DICOM PS3.8, 9.3.5 and annex E).
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "core/linked_buffer.h"

namespace tessaret {

class PDU_Service;

/// What a fragment holds at most, whatever the sides have said about the length of PDUs.
inline constexpr std::uint32_t kFragmentBytes = 4096;
/// What a PDU may announce, and a message may come to: buffers count in 31 bits. Memory is taken for what has come only.
inline constexpr std::uint32_t kMostMessageBytes = 0x7FFFFFFF;

/// Bits of the message header (DICOM PS3.8, annex E.2).
inline constexpr std::uint8_t kCommandFragment = 1;
inline constexpr std::uint8_t kLastFragment = 2;

/// The bytes of a message.
class MessageBuffer final : public LinkedBuffer {
 public:
  /// For a message that is sent while what its object shares is still there: long values that are shared wait where they lie, and are
  /// not copied.
  void ShareLongValues() { shareSize_ = kLeastShared; }

  // Shorter values cost less to copy than to look after.
  static constexpr std::uint32_t kLeastShared = 1 << 14;
};

class PDataTF {
 public:
  PDataTF() = default;
  PDataTF(const PDataTF&) = delete;
  PDataTF& operator=(const PDataTF&) = delete;
  virtual ~PDataTF() = default;

  /// Sends what VRBuffer has to send and takes it out of there: fragments of 4096 bytes and a rest, each a PDU with one PDV, the last
  /// of them marked. MessagePresentationContextID and bit 0 of MessageControl say what it is; its other bits go along where there is
  /// only one fragment, and are cleared by the first of several. Nothing is sent, not even a mark, where there is nothing. False when it
  /// could not be sent. Several PDUs go in one call of the system, and none waits here when this returns.
  bool Write(PDU_Service& pdu);
  /// The same, but the last PDUs may still wait in the stream for the caller's flush.
  bool Queue(PDU_Service& pdu);

  /// Reads PDVs into VRBuffer up to one that ends a message, or the end of the PDU, whose type byte has been read where a new one
  /// begins. False where the stream ends, a PDV is shorter than its own head or longer than its PDU, the PDU announces more than
  /// kMostMessageBytes, and the message comes to more than MostBytes.
  bool ReadDynamic(PDU_Service& pdu);

  /// The bytes that ReadDynamic has gathered, until DropMessage, or until it begins with the next message.
  [[nodiscard]] std::span<std::uint8_t> Message() { return {received_.get(), receivedSize_}; }
  /// Forgets a message that is read, or that will not be.
  void DropMessage();
  /// Forgets what VRBuffer was to send.
  void DropOutgoing();
  /// Forgets both, a PDU that is partly read, and the context of the last message.
  void Reset();

  std::uint8_t ItemType = 4;
  std::uint8_t Reserved1 = 0;  // of the last PDU read
  std::uint32_t Length = 0;    // bytes of the PDU in hand still unread; 0: the next one begins
  MessageBuffer
      VRBuffer;  // the encoded message: to be sent in its outgoing chunks, received in its incoming one
  PDU_Service* Link = nullptr;  // over which the last transfer went; not owned
  std::int32_t MsgStatus = 0;   // 1: the message is complete
  std::uint32_t PDVLength = 0;
  // The two bytes at the head of the last PDV read.
  std::uint8_t PresentationContextID = 0;
  std::uint8_t MsgHeader = 0;
  // Set by the caller before a write; the identifier is left by a read.
  std::uint8_t MessagePresentationContextID = 0;
  std::uint8_t MessageControl = 0;
  /// What a message that is read may come to: kMostMessageBytes, or less.
  std::uint32_t MostBytes = kMostMessageBytes;

 private:
  struct Freer {
    void operator()(std::uint8_t* bytes) const { std::free(bytes); }
  };

  bool QueueFragment(PDU_Service& pdu, std::uint32_t size);
  /// Writes head and bytes of a fragment to the trace.
  void TraceFragment(std::span<const std::uint8_t> head, std::uint32_t size) const;
  bool ReadFragment(PDU_Service& pdu, std::uint32_t size);
  /// False, with a line in the trace.
  static bool FailToRead(std::uint32_t count);
  /// Room for `count` further bytes of the message, doubled so that a long one is seldom moved. Throws std::bad_alloc.
  std::uint8_t* Grow(std::uint32_t count);
  void EnterMessage();

  std::unique_ptr<std::uint8_t, Freer> received_;
  std::uint32_t receivedSize_ = 0;
  std::uint32_t receivedRoom_ = 0;
  bool isWhole_ = false;           // what was received is a whole message; the next one begins anew
  std::uint32_t sentOfChunk_ = 0;  // of the first outgoing chunk
};

}  // namespace tessaret
