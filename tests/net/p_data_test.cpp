#include <algorithm>
#include <cstdlib>
#include <numeric>

#include <gtest/gtest.h>

#include "core/trace.h"
#include "net/scripted_peer.h"
#include "support/socket_failure.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

const std::vector<Agreed> kContexts = {
    {1, kEcho, kImplicit}, {3, kCt, kExplicit}, {5, kFind, kBigEndianSyntax}};

/// Sends `count` bytes as a message of context 3, and hands out what went.
Bytes SentFor(std::size_t count, std::uint8_t control) {
  Association association(kContexts);
  PDataTF data;
  const Bytes message = Pattern(count);
  data.VRBuffer.Write(message.data(), static_cast<std::uint32_t>(message.size()));
  data.MessagePresentationContextID = 3;
  data.MessageControl = control;
  data.Length = 99;  // of a PDU that is partly read
  EXPECT_TRUE(data.Write(association.pdu));
  EXPECT_EQ(data.Length, 99u);
  EXPECT_EQ(data.VRBuffer.OutSize, 0);
  EXPECT_EQ(association.pdu.OutSize, 0);
  return association.peer.Received();
}

TEST(PDataWrite, CutsMessagesIntoFragmentsOf4096Bytes) {
  for (const int size : {1, 4095, 4096, 4097, 8192, 8193, 32600, 100000}) {
    const auto count = static_cast<std::size_t>(size);
    EXPECT_EQ(SentFor(count, 0), Fragmented(3, 0, Pattern(count))) << count;
    EXPECT_EQ(SentFor(count, kCommandPart), Fragmented(3, kCommandPart, Pattern(count))) << count;
  }
  const auto pdusOf = [](std::size_t count) { return SplitPdus(SentFor(count, 0)).size(); };
  EXPECT_EQ(pdusOf(4096), 1u);
  EXPECT_EQ(pdusOf(4097), 2u);
}

TEST(PDataWrite, LeavesOneBitOfTheControlByteWhereMoreFollowsAndAddsOneToTheLast) {
  EXPECT_EQ(SentFor(4097, 0xFF), Fragmented(3, kCommandPart, Pattern(4097)));
  EXPECT_EQ(SentFor(4097, 0xFE), Fragmented(3, 0, Pattern(4097)));
  // What goes in one fragment keeps all that the caller has set.
  EXPECT_EQ(SentFor(5, 0xFC), Data(3, 0xFE, Pattern(5)));
  EXPECT_EQ(SentFor(4096, 0xFF), Data(3, 0xFF, Pattern(4096)));
}

TEST(PDataWrite, SendsNothingWhereThereIsNothing) { EXPECT_TRUE(SentFor(0, 0).empty()); }

TEST(PDataWrite, SendsSeveralFragmentsByOneCall) {
  Association association(kContexts);
  PDataTF data;
  const Bytes message = Pattern(100000);  // 25 fragments
  data.VRBuffer.Write(message.data(), static_cast<std::uint32_t>(message.size()));
  SocketFailure calls;
  EXPECT_TRUE(data.Write(association.pdu));
  EXPECT_LE(calls.Calls(SocketCall::kSend), 25 / 4);
}

TEST(PDataWrite, FailsWhereTheLinkIsLost) {
  Association association(kContexts);
  association.peer.Close();
  PDataTF data;
  const Bytes message = Pattern(10000);
  data.VRBuffer.Write(message.data(), static_cast<std::uint32_t>(message.size()));
  EXPECT_FALSE(data.Write(association.pdu));
}

// --- reading ---

/// One call of ReadDynamic on what a peer sends behind the type byte, which a reader of messages has taken.
struct Step {
  bool isRead;
  int status;
  std::uint32_t length;
  Bytes message;
};

bool operator==(const Step& a, const Step& b) {
  return a.isRead == b.isRead && a.status == b.status && a.length == b.length &&
         a.message == b.message;
}

Step ReadOnce(Association& association, PDataTF& data) {
  if (data.Length == 0) {
    std::uint8_t type = 0;
    EXPECT_TRUE(association.pdu.Read8(&type));
    EXPECT_EQ(type, 4);
  }
  const bool isRead = data.ReadDynamic(association.pdu);
  const auto message = data.Message();
  return {isRead, data.MsgStatus, data.Length, Bytes(message.begin(), message.end())};
}

TEST(PDataRead, GathersTheFragmentsOfAMessage) {
  Association association(kContexts);
  const Bytes a = Pattern(10, 1);
  const Bytes b = Pattern(5000, 2);
  const Bytes c = Pattern(3, 3);
  association.peer.Send(
      Joined({Pdu(4, Joined({Pdv(3, 0, a), Pdv(3, 0, b)})), Data(3, kLastPart, c)}));
  PDataTF data;
  data.MsgStatus = 1;  // of the message before
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 0, 0, Joined({a, b})}));
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, Joined({a, b, c})}));
  EXPECT_EQ(data.MessagePresentationContextID, 3);
  EXPECT_EQ(data.PresentationContextID, 3);
  EXPECT_EQ(data.MsgHeader, kLastPart);
  EXPECT_EQ(data.PDVLength, 5u);
  // The message can be read from its buffer, too.
  EXPECT_EQ(data.VRBuffer.Available(), 5013u);
  std::uint8_t first = 0;
  EXPECT_TRUE(data.VRBuffer.Read8(&first));
  EXPECT_EQ(first, a[0]);
}

TEST(PDataRead, EndsAtALastFragmentWithinItsPdu) {
  Association association(kContexts);
  association.peer.Send(
      Joined({Pdu(4, Joined({Pdv(1, kWholeCommand, {1, 2}), Pdv(3, kLastPart, {3, 4, 5})})),
              Data(5, kLastPart, {6})}));
  PDataTF data;
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 9, {1, 2}}));
  EXPECT_EQ(data.MessagePresentationContextID, 1);
  // The next call goes on in the same PDU without a head, and with the next message alone.
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, {3, 4, 5}}));
  EXPECT_EQ(data.MessagePresentationContextID, 3);
  std::uint8_t half = 0;
  EXPECT_TRUE(data.VRBuffer.Read8(&half));
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, {6}}));
  EXPECT_EQ(data.VRBuffer.Available(), 1u);
}

TEST(PDataRead, MixesWhateverIdentifiersAndKindsComeTogether) {
  Association association(kContexts);
  association.peer.Send(
      Pdu(4, Joined({Pdv(1, kCommandPart, {1}), Pdv(3, 0xFC, {2}), Pdv(5, kLastPart, {3})})));
  PDataTF data;
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, {1, 2, 3}}));
  EXPECT_EQ(data.MessagePresentationContextID, 5);
  EXPECT_EQ(data.MsgHeader, kLastPart);
}

TEST(PDataRead, TakesAMessageWithoutABit) {
  Association association(kContexts);
  association.peer.Send(Data(3, kLastPart, {}));
  PDataTF data;
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, {}}));
}

TEST(PDataRead, PassesOverAPduOfNoByte) {
  Association association(kContexts);
  association.peer.Send(Joined({Data(3, 0, {1, 2}), Pdu(4, {}), Data(3, kLastPart, {3})}));
  PDataTF data;
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 0, 0, {1, 2}}));
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 0, 0, {1, 2}}));
  EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, {1, 2, 3}}));
}

TEST(PDataRead, RefusesLengthsThatLie) {
  const Bytes bodies[] = {
      Joined({Big32(0), {3, 2}, Bytes(4)}),  // shorter than what it has to count
      Joined({Big32(1), {3, 2}, Bytes(4)}),
      Joined({Big32(7), {3, 2}, Bytes(4)}),           // one beyond the PDU
      Joined({Big32(0xFFFFFFFF), {3, 2}, Bytes(4)}),  // would come round
      Joined({Big32(0xFFFFFFFC), {3, 2}, Bytes(4)}),
      Joined({Big32(0x80000001), {3, 2}, Bytes(4)}),
      Joined({Pdv(3, 0, {1, 2}), Bytes(5)}),  // no room for a head
  };
  for (const Bytes& body : bodies) {
    Association association(kContexts);
    association.peer.Send(Pdu(4, body));
    PDataTF data;
    EXPECT_FALSE(ReadOnce(association, data).isRead);
  }
  for (const std::size_t length :
       {std::size_t{1}, std::size_t{5}, std::size_t{0x80000000}, std::size_t{0xFFFFFFFF}}) {
    Association association(kContexts);
    association.peer.Send(Joined({{4, 0}, Big32(length), Pdv(3, 2, {1, 2})}));
    PDataTF data;
    EXPECT_FALSE(ReadOnce(association, data).isRead) << length;
  }
}

TEST(PDataRead, RefusesAMessageThatGrowsBeyondItsBound) {
  EXPECT_EQ(PDataTF().MostBytes, 0x7FFFFFFFu) << "buffers count in 31 bits";
  // One that fills the bound, and one that is a byte longer: in one fragment, and in the second or third one of a PDU or of several.
  const struct {
    std::vector<std::size_t> fragments;
    bool isRead;
  } rows[] = {
      {{100}, true},      {{101}, false},      {{60, 40}, true},
      {{60, 41}, false},  {{100, 1}, false},   {{100, 0}, true},
      {{1, 98, 1}, true}, {{1, 98, 2}, false}, {{100, 0, 100}, false},
  };
  for (const auto& row : rows) {
    for (const bool inOnePdu : {true, false}) {
      Bytes fragments;
      for (std::size_t i = 0; i < row.fragments.size(); ++i) {
        const Bytes fragment = Pdv(3, i + 1 == row.fragments.size() ? kLastPart : std::uint8_t{0},
                                   Bytes(row.fragments[i], 7));
        fragments = Joined({fragments, inOnePdu ? fragment : Pdu(4, fragment)});
      }
      const std::size_t whole =
          std::accumulate(row.fragments.begin(), row.fragments.end(), std::size_t{0});
      Association association(kContexts);
      association.peer.Send(inOnePdu ? Pdu(4, fragments) : fragments);
      PDataTF data;
      data.MostBytes = 100;
      Step step{};
      do {
        step = ReadOnce(association, data);
      } while (step.isRead && step.status == 0);
      EXPECT_EQ(step.isRead, row.isRead) << whole;
      EXPECT_LE(step.message.size(), 100u);
      if (!row.isRead) continue;
      EXPECT_EQ(step.message, Bytes(whole, 7));
      // The next message begins with the whole bound.
      association.peer.Send(Data(3, kLastPart, Bytes(100, 8)));
      EXPECT_EQ(ReadOnce(association, data), (Step{true, 1, 0, Bytes(100, 8)}));
    }
  }
}

TEST(PDataRead, HoldsToABoundThatIsLoweredWithinAMessage) {
  for (const std::size_t more : {std::size_t{0}, std::size_t{1}}) {
    Association association(kContexts);
    association.peer.Send(Joined({Data(3, 0, Bytes(60, 7)), Data(3, kLastPart, Bytes(more, 7))}));
    PDataTF data;
    ASSERT_TRUE(ReadOnce(association, data).isRead);
    data.MostBytes = 59;  // less than has come already
    EXPECT_FALSE(ReadOnce(association, data).isRead) << more;
  }
}

TEST(PDataRead, FailsWhereThePeerClosesAtAnyByte) {
  const Bytes whole =
      Joined({Data(1, kCommandPart, Pattern(9)), Data(1, kWholeCommand, Pattern(9))});
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Association association(kContexts);
    association.peer.SendAll(Bytes(whole.begin(), whole.begin() + static_cast<int>(size)));
    DICOMDataObject object;
    ASSERT_EQ(association.pdu.Read(object), 0) << size;
    ASSERT_TRUE(object.IsEmpty());
  }
}

TEST(PDataRead, FailsWhereThePeerFallsSilentAtAnyByte) {
  const Bytes whole =
      Joined({Data(1, kCommandPart, Pattern(9)), Data(1, kWholeCommand, Pattern(9))});
  const std::size_t second = whole.size() / 2;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Association association(kContexts);
    association.pdu.Link.TimeoutSecs = 0;
    association.peer.Send(Bytes(whole.begin(), whole.begin() + static_cast<int>(size)));
    DICOMDataObject object;
    ASSERT_EQ(association.pdu.Read(object), 0) << size;
    // Between PDUs the peer is told; within one it is the caller's to end the association.
    const bool isBetween = size == 0 || size == second;
    ASSERT_EQ(Words(association.pdu), isBetween ? "Timeout error reading from socket"
                                                : "Error reading P-DATA-TF from network");
    ASSERT_EQ(association.pdu.Link.Connected, isBetween ? 0 : 1) << size;
    ASSERT_EQ(association.peer.Received(), isBetween ? OurAbort() : Bytes{}) << size;
    ASSERT_TRUE(object.IsEmpty());
  }
}

// --- the trace ---

TEST(PDataTrace, ShowsHeadAndBytesOfEachFragmentSent) {
  const TempFolder folder;
  const std::string path = folder.File("trace");
  SetDumpFile(path.c_str());
  {
    Association association(kContexts);
    PDataTF data;
    // 33 bytes, the last of them in another chunk.
    data.VRBuffer.SetBreakSize(32);
    const Bytes message = BytesOf("ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFG");
    data.VRBuffer.Write(message.data(), 33);
    data.MessagePresentationContextID = 3;
    SetDumpFlag(kDumpData, true);
    EXPECT_TRUE(data.Write(association.pdu));
    SetDumpFlag(kDumpData, false);
  }
  SetDumpFile(nullptr);
  // Length 33 + 6, then 33 + 2; dumps of 12 and of 33 bytes.
  EXPECT_EQ(ReadText(path),
            "WRITING PDATA Header\n"
            "000000-000011 04 00 00 00 00 27 00 00 00 23 03 02 " +
                std::string(20 * 3, ' ') +
                "| .....'...#..|\n"
                "000000-000031 41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 51 52 53 54 55 56 "
                "57 58 59 5A 41 42 "
                "43 44 45 46 | ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEF|\n"
                "000032-000032 47 " +
                std::string(31 * 3, ' ') + "| G|\n");
}

TEST(PDataTrace, ShowsEachFragmentOfAMessageByItsOwnBytes) {
  const TempFolder folder;
  const std::string path = folder.File("trace");
  SetDumpFile(path.c_str());
  Association association(kContexts);
  PDataTF data;
  const Bytes message = BytesOf(std::string(4096, 'A') + "BCD");
  data.VRBuffer.Write(message.data(), static_cast<std::uint32_t>(message.size()));
  SetDumpFlag(kDumpData, true);
  EXPECT_TRUE(data.Write(association.pdu));
  SetDumpFlag(kDumpData, false);
  SetDumpFile(nullptr);
  const std::string trace = ReadText(path);
  // A head, 128 lines of 32 bytes; a head, and a line of three.
  const std::string last = "000000-000002 42 43 44 " + std::string(29 * 3, ' ') + "| BCD|\n";
  EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 2 + 128 + 2 + 1);
  EXPECT_NE(trace.find("\n004064-004095 41 41 "), std::string::npos);
  ASSERT_GE(trace.size(), last.size());
  EXPECT_EQ(trace.substr(trace.size() - last.size()), last);
}

TEST(PDataTrace, SaysWhatCouldNotBeRead) {
  const TempFolder folder;
  const std::string path = folder.File("trace");
  Association association(kContexts);
  association.peer.SendAll(Joined({{4, 0}, Big32(20), Big32(16), {3, 2}, Bytes(5)}));
  PDataTF data;
  SetDumpFile(path.c_str());
  SetDumpFlag(kDumpData, true);
  EXPECT_FALSE(ReadOnce(association, data).isRead);
  SetDumpFlag(kDumpData, false);
  SetDumpFile(nullptr);
  EXPECT_EQ(ReadText(path), "ERROR Reading 14 BYTES in PDataTF::ReadDynamic\n");
}

TEST(PDataTrace, IsSwitchedOnByTheEnvironmentBeforeEachTransfer) {
  const TempFolder folder;
  const std::string path = folder.File("trace");
  SetDumpFile(path.c_str());
  Association association(kContexts);
  EXPECT_FALSE(IsDumping(kDumpData));
  ::setenv("DCM_DUMP_PDATA", "", 1);
  PDataTF data;
  data.VRBuffer.Write8(1);
  EXPECT_TRUE(data.Write(association.pdu));
  EXPECT_TRUE(IsDumping(kDumpData));
  SetDumpFlag(kDumpData, false);
  const PDU_Service another;
  EXPECT_TRUE(IsDumping(kDumpData));
  ::unsetenv("DCM_DUMP_PDATA");
  SetDumpFlag(kDumpData, false);
  SetDumpFile(nullptr);
}

}  // namespace
}  // namespace tessaret::test
