// What is sent to a peer that names a maximum length of its own: the fragments are as long as ever, one to a PDU.
#include <functional>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/scripted_peer.h"

namespace tessaret::test {
namespace {

const std::size_t kNamed[] = {0, 1, 5, 6, 7, 8, 4095, 4102, 4103, 0x7FFFFFFF, 0xFFFFFFFF};

// In implicit little endian 10006 bytes, head included: fragments of 4096, 4096 and 1814.
const std::string kText(9998, 'x');

Bytes MessageBytes() { return Elements().Text(0x0010, 0x0010, kText); }

Bytes CommandBytes() { return Command().Number(0x0100, 0x0001).Number(0x0800, 0x0102); }

/// A data set alone, and one with its command.
void WriteMessages(PDU_Service& pdu) {
  DICOMDataObject alone;
  PutBytes(alone, 0x0010, 0x0010, type_code::PN, kText);
  EXPECT_TRUE(pdu.Write(alone, UID(kCt))) << Words(pdu);
  DICOMDataObject object;
  PutBytes(object, 0x0010, 0x0010, type_code::PN, kText);
  DICOMCommandObject command;
  PutNumber16(command, 0x0000, 0x0100, 0x0001);
  PutNumber16(command, 0x0000, 0x0800, 0x0102);
  EXPECT_TRUE(pdu.Write(command, &object, UID(kCt))) << Words(pdu);
}

void ExpectUsualFragments(const Bytes& sent, std::size_t named) {
  EXPECT_EQ(sent, Joined({Fragmented(1, 0, MessageBytes()), Data(1, kWholeCommand, CommandBytes()),
                          Fragmented(1, 0, MessageBytes())}))
      << named;
  // As numbers: 6 bytes of the PDU's head, 6 of the PDV's, and the fragment.
  std::vector<std::size_t> sizes;
  for (const Bytes& pdu : SplitPdus(sent)) sizes.push_back(pdu.size() - 12);
  EXPECT_EQ(sizes, (std::vector<std::size_t>{4096, 4096, 1814, 32, 4096, 4096, 1814})) << named;
}

TEST(MaximumLength, OfAnAnswerChangesNoFragment) {
  for (const std::size_t named : kNamed) {
    Bytes sent;
    ScriptedServer server([&](Peer& peer) {
      const Bytes asked = peer.ReceivePdu();
      peer.Send(Associate(2, "US", "PEER",
                          Joined({ApplicationItem(), AcceptItem(1, 0, kImplicit),
                                  UserItem(named, "1.2.3.4", "PEER")})));
      sent = peer.ReceiveToEnd();
    });
    PDU_Service pdu;
    pdu.AddAbstractSyntax(UID(kCt));
    SetIdentifierCounter(1);
    ASSERT_EQ(pdu.Connect("127.0.0.1", server.Port()), 1) << Words(pdu);
    EXPECT_EQ(pdu.AAssociateAC.UserInformation.MaximumSubLength.MaximumLength, named);
    WriteMessages(pdu);
    pdu.Link.Close();
    EXPECT_EQ(server.Wait(), "");
    ExpectUsualFragments(sent, named);
  }
}

TEST(MaximumLength, OfARequestChangesNoFragment) {
  for (const std::size_t named : kNamed) {
    Connection connection;
    connection.peer.Send(RequestFor({{1, kCt, {kImplicit}}}, UserItem(named, "1.2.3.4", "PEER")));
    PDU_Service pdu;
    ASSERT_EQ(pdu.Listen(connection.ours), 1) << Words(pdu);
    EXPECT_EQ(connection.peer.ReceivePdu()[0], 2);
    WriteMessages(pdu);
    pdu.Link.Close();
    ExpectUsualFragments(connection.peer.ReceiveToEnd(), named);
  }
}

}  // namespace
}  // namespace tessaret::test
