#include "net/verification.h"

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/service_helpers.h"

namespace tessaret::test {
namespace {

TEST(Verification, IsDoneByAnyResponseToAnEcho) {
  const struct {
    Bytes answer;
    bool isDone;
  } rows[] = {{EchoResponse(0), true},          {EchoResponse(0x0122), true},
              {EchoResponse(0, 0x8001), false}, {ReleaseRequest(), false},
              {AbortPdu(0, 0), false},          {{}, false}};
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.SendAll(row.answer);
    SetIdentifierCounter(1);
    EXPECT_EQ(Verification().Write(&association.pdu), row.isDone);
    const Bytes request = Data(1, kWholeCommand,
                               Command()
                                   .Uid(0x0002, kEcho)
                                   .Number(0x0100, 0x0030)
                                   .Number(0x0110, 1)
                                   .Number(0x0800, 0x0101));
    const Bytes sent = association.peer.Received();
    EXPECT_EQ(Bytes(sent.begin(), sent.begin() + static_cast<int>(request.size())), request);
  }
  EXPECT_FALSE(Verification().Write(nullptr));
}

TEST(Verification, TakesNoLateResponseForItsOwn) {
  Association association(kContexts);
  SetIdentifierCounter(1);
  association.peer.SendAll(Joined({EchoResponse(0, 0x8001), EchoResponse(0)}));
  EXPECT_FALSE(Verification().Write(&association.pdu));
  // The response to message 1 has come late, and none to message 3.
  EXPECT_FALSE(Verification().Write(&association.pdu));
  EXPECT_EQ(Words(association.pdu), "The peer has closed the link");
}

TEST(Verification, LeavesNothingToBeDroppedWhereItIsDone) {
  Association association(kContexts);
  SetIdentifierCounter(1);
  association.peer.Send(EchoResponse(0));
  EXPECT_TRUE(Verification().Write(&association.pdu));
  EXPECT_TRUE(association.pdu.AbandonedMessages.empty());
}

TEST(Verification, AnswersARequestOfItsClass) {
  for (const bool isOdd : {true, false}) {
    Association association(kContexts);
    // The UID with its pad, and as some send it.
    Elements elements;
    elements.Value(0, 0x0002, Joined({BytesOf(kEcho), isOdd ? Bytes{0} : Bytes{' '}}));
    elements.Number(0, 0x0100, 0x0030).Number(0, 0x0110, 5).Number(0, 0x0800, 0x0101);
    association.peer.Send(Data(1, kWholeCommand, elements));
    DICOMCommandObject command;
    ReadCommand(association, command);
    EXPECT_TRUE(Verification().Read(&association.pdu, &command));
    EXPECT_EQ(TypesOf(association.peer.Received()), "4");
  }
}

TEST(Verification, TakesNothingElse) {
  Association association(kContexts);
  const auto answered = [&](std::string_view uid, std::uint16_t field) {
    DICOMCommandObject command;
    if (!uid.empty()) PutUid(command, 0, 0x0002, uid);
    PutNumber16(command, 0, 0x0100, field);
    return Verification().Read(&association.pdu, &command);
  };
  EXPECT_FALSE(answered(kCt, 0x0030));
  EXPECT_FALSE(answered(kCt, 0x8030));
  EXPECT_FALSE(answered("", 0x0030));
  EXPECT_FALSE(answered(std::string(66, '1'), 0x0030));
  EXPECT_FALSE(answered(kEcho, 0x0001));
  EXPECT_TRUE(answered(kEcho, 0x8030));
  DICOMCommandObject command;
  EXPECT_FALSE(Verification().Read(nullptr, &command));
  EXPECT_FALSE(Verification().Read(&association.pdu, nullptr));
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Verification, NamesItsClass) { EXPECT_EQ(UidOfService<Verification>(), "1.2.840.10008.1.1"); }

}  // namespace
}  // namespace tessaret::test
