// All that a peer may send over an association that stands. How PDUs of data come to messages stands here a second time, without the
// library's code: the same messages are read, with the same elements, up to the same place.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "agreed_context.h"
#include "net/dimse_message.h"
#include "preloaded_peer.h"
#include "support.h"

namespace tessaret::fuzz {
namespace {

struct Message {
  std::uint8_t contextID = 0;
  bool isCommand = false;
  std::vector<std::uint8_t> bytes;
};

/// What the PDUs say (DICOM PS3.8, 9.3.5 and annex E).
class SentMessages {
 public:
  explicit SentMessages(std::span<const std::uint8_t> stream) : stream_(stream) {}

  /// The next one; nothing where something else comes, nothing more, or what lies about its length.
  std::optional<Message> Next() {
    Message message;
    for (;;) {
      if (leftOfPdu_ == 0 ? !BeginPdu() : !TakeFragment(message)) return std::nullopt;
      if (isLast_) return message;
    }
  }

 private:
  bool BeginPdu() {
    isLast_ = false;
    if (stream_.size() < 6 || stream_[0] != 4) return false;
    leftOfPdu_ = LoadBig32(&stream_[2]);
    stream_ = stream_.subspan(6);
    return leftOfPdu_ <= 0x7FFFFFFF;
  }

  bool TakeFragment(Message& message) {
    if (leftOfPdu_ < 6 || stream_.size() < 6) return false;
    const std::size_t size = std::size_t{LoadBig32(stream_.data())} + 4;
    if (size < 6 || size > leftOfPdu_ || size > stream_.size()) return false;
    message.contextID = stream_[4];
    message.isCommand = (stream_[5] & 1) != 0;
    isLast_ = (stream_[5] & 2) != 0;
    message.bytes.insert(message.bytes.end(), stream_.begin() + 6,
                         stream_.begin() + static_cast<std::ptrdiff_t>(size));
    stream_ = stream_.subspan(size);
    leftOfPdu_ -= size;
    return true;
  }

  std::span<const std::uint8_t> stream_;
  std::size_t leftOfPdu_ = 0;
  bool isLast_ = false;
};

/// One native syntax each, one of compressed images, and one that nobody knows.
void AgreeOnAll(PDU_Service& pdu) {
  pdu.Dictionary = StandardDictionary();
  Agree(pdu, 1, "1.2.840.10008.5.1.4.1.2.2.1", "1.2.840.10008.1.2");
  Agree(pdu, 3, "1.2.840.10008.5.1.4.1.1.2", "1.2.840.10008.1.2.1");
  Agree(pdu, 5, "1.2.840.10008.5.1.4.1.1.2", "1.2.840.10008.1.2.2");
  Agree(pdu, 7, "1.2.840.10008.5.1.4.1.1.2", "1.2.840.10008.1.2.4.70");
  Agree(pdu, 9, "1.2.840.10008.5.1.4.1.1.2", "1.2.3");
}

/// Reads the message by itself, of which no other has been before.
bool ReadAlone(PDU_Service& judge, const Message& message, DICOMObject& object) {
  MemoryBuffer bytes(BlockOf(message.bytes), static_cast<std::uint32_t>(message.bytes.size()),
                     false);
  return message.isCommand ? judge.ImplicitLittleIn(bytes, object)
                           : judge.ParseIncoming(message.contextID, bytes, object);
}

/// False where the association is over.
bool ReadsTheSame(PDU_Service& pdu, PDU_Service& judge, const Message& message) {
  DICOMDataObject object;
  DICOMDataObject expected;
  const std::uint8_t contextID = pdu.Read(object);
  const bool isGood = ReadAlone(judge, message, expected) && message.contextID != 0;
  Require(contextID == (isGood ? message.contextID : 0), "a message is read as it was sent");
  RequireSame(object, expected);
  Require(IsCommand(pdu) == message.isCommand, "a command is told from data");
  Require(pdu.PDataTF.Message().empty(), "a message that was read takes no room");
  Require(isGood == (pdu.Link.Connected != 0), "a message that cannot be read is the end");
  Require(isGood || pdu.GetLastError() != nullptr, "a failure has words");
  return isGood;
}

void ReadAll(PDU_Service& pdu, std::span<const std::uint8_t> stream) {
  PDU_Service judge;
  AgreeOnAll(judge);
  SentMessages messages(stream);
  while (const auto message = messages.Next()) {
    if (!ReadsTheSame(pdu, judge, *message)) return;
  }
  DICOMDataObject object;
  Require(pdu.Read(object) == 0, "what is no message is not read");
  // Whoever does not look at that comes to no harm.
  for (int i = 0; i < 3; ++i) pdu.Read(object);
}

}  // namespace
}  // namespace tessaret::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tessaret::fuzz;
  PreloadedPeer peer(data, size);
  if (!peer.IsThere()) return 0;
  {
    tessaret::PDU_Service pdu;
    AgreeOnAll(pdu);
    pdu.Link.TimeoutSecs = 0;
    pdu.Link.Adopt(peer.Give());
    ReadAll(pdu, {data, size});
    pdu.Link.Close();
  }
  peer.CheckHeard("67");
  return 0;
}
