#include "net/exchange.h"

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/identifiers.h"
#include "net/retrieve_helpers.h"
#include "net/storage.h"
#include "net/verification.h"

namespace tessaret::test {
namespace {

Bytes Response(std::uint16_t field, std::uint16_t message, std::uint16_t status,
               std::string_view name = {}) {
  const Bytes command = Data(5, kWholeCommand,
                             Command()
                                 .Number(0x0100, field)
                                 .Number(0x0120, message)
                                 .Number(0x0800, name.empty() ? 0x0101 : 0x0102)
                                 .Number(0x0900, status));
  return name.empty() ? command : Joined({command, Data(5, kLastPart, NameBytes(name))});
}

/// What is read, by its status; -1 for nothing.
int StatusOfNext(Exchange& exchange, std::uint16_t field) {
  DICOMCommandObject response;
  if (!exchange.Read(field, response)) return -1;
  return CommandNumber(response, 0x0900).value_or(0);
}

TEST(Exchange, HasWordsForWhatIsNoResponse) {
  const struct {
    Bytes sent;
    const char* words;
  } rows[] = {
      {Response(0x8001, 1, 0), "Got command 0x8001 where response 0x8030 was awaited"},
      {Data(5, kWholeCommand, Command().Number(0x0120, 1)),
       "Got command 0x0000 where response 0x8030 was awaited"},
      {Data(5, kLastPart, NameBytes("AA")), "Got a data set where a response was awaited"},
  };
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.Send(row.sent);
    Exchange exchange(association.pdu);
    EXPECT_EQ(StatusOfNext(exchange, 0x8030), -1);
    EXPECT_EQ(Words(association.pdu), row.words);
    EXPECT_NE(association.pdu.Link.Connected, 0);
  }
}

TEST(Exchange, HasStatusAndCommentOfAFailureAsWords) {
  const struct {
    std::string comment;
    std::string words;
  } rows[] = {
      {"", "The peer has answered with status 0xA700"},
      {"disk full ", "The peer has answered with status 0xA700: disk full"},
      {std::string(1000, 'x'), "The peer has answered with status 0xA700: " + std::string(64, 'x')},
  };
  for (const auto& row : rows) {
    Association association(kContexts);
    Command command;
    command.Number(0x0100, 0x8020).Number(0x0120, 1).Number(0x0800, 0x0101).Number(0x0900, 0xA700);
    association.peer.Send(Data(5, kWholeCommand, command.Text(0x0902, row.comment)));
    {
      Exchange exchange(association.pdu);
      exchange.Expect(1);
      DICOMCommandObject response;
      ASSERT_TRUE(exchange.Read(0x8020, response));
      EXPECT_FALSE(exchange.Fail(response));
    }
    EXPECT_EQ(Words(association.pdu), row.words);
    EXPECT_TRUE(association.pdu.AbandonedMessages.empty()) << "it was the last one";
  }
}

TEST(Exchange, HasNoWordsOfACommentThatHasItems) {
  Association association(kContexts);
  association.peer.Send(Data(5, kWholeCommand, RefusalWithItemInComment(0x8020)));
  Exchange exchange(association.pdu);
  exchange.Expect(1);
  DICOMCommandObject read;
  ASSERT_TRUE(exchange.Read(0x8020, read));
  EXPECT_FALSE(exchange.Fail(read));
  EXPECT_EQ(Words(association.pdu), "The peer has answered with status 0xA700");
}

TEST(Exchange, IsOneAtATime) {
  Association association(kContexts);
  {
    const Exchange first(association.pdu);
    EXPECT_TRUE(first.HasBegun());
    const Exchange second(association.pdu);
    EXPECT_FALSE(second.HasBegun());
    EXPECT_EQ(Words(association.pdu), "A request is in progress on this association");
    EXPECT_FALSE(Verification().Write(&association.pdu));
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    EXPECT_FALSE(CTStorage().Write(&association.pdu, &object));
    EXPECT_FALSE(object.IsEmpty());
    EXPECT_FALSE(Moving().Write(&association.pdu, &object, "DEST"));
    EXPECT_TRUE(association.peer.Received().empty());
  }
  EXPECT_TRUE(Exchange(association.pdu).HasBegun());
}

TEST(Exchange, DropsTheResponsesOfThoseThatWereAbandoned) {
  Association association(kContexts);
  {
    Exchange abandoned(association.pdu);
    abandoned.Expect(7);
  }
  association.peer.Send(
      Joined({Response(0x8020, 7, 0xFF00, "AA"), Response(0x8020, 7, 0xFF01, "BB"),
              Response(0x8020, 7, 0xFE00), Response(0x8030, 9, 0),
              // Its last response has come: this one would be of another request.
              Response(0x8030, 7, 5)}));
  Exchange next(association.pdu);
  next.Expect(9);
  EXPECT_EQ(StatusOfNext(next, 0x8030), 0);
  next.End();
  EXPECT_EQ(StatusOfNext(next, 0x8030), 5);
}

TEST(Exchange, TakesAResponseOfAnAbandonedOneWithoutAStatusForItsLast) {
  const auto response = [](std::uint16_t message) {
    return Command().Number(0x0100, 0x8030).Number(0x0120, message).Number(0x0800, 0x0101);
  };
  Association association(kContexts);
  {
    Exchange abandoned(association.pdu);
    abandoned.Expect(7);
  }
  association.peer.Send(Joined({Response(0x8030, 7, 0xFF00), Data(5, kWholeCommand, response(9)),
                                Data(5, kWholeCommand, response(7)), Response(0x8030, 9, 1),
                                Response(0x8030, 7, 5)}));
  Exchange next(association.pdu);
  next.Expect(9);
  EXPECT_EQ(StatusOfNext(next, 0x8030), 0) << "its own, with nothing of the one before it";
  EXPECT_EQ(StatusOfNext(next, 0x8030), 1);
  EXPECT_EQ(StatusOfNext(next, 0x8030), 5);
}

TEST(Exchange, DropsTheDataSetOfWhatAnAbandonedOneGotInstead) {
  // A peer may ask for something itself, with a data set: nothing of it is left for the request after the next one.
  const Bytes report = Data(
      5, kWholeCommand, Command().Number(0x0100, 0x0100).Number(0x0110, 3).Number(0x0800, 0x0102));
  Association association(kContexts);
  association.peer.Send(Joined({report, Data(5, kLastPart, NameBytes("AA")), Response(0x8030, 7, 0),
                                Response(0x8030, 9, 5)}));
  {
    Exchange abandoned(association.pdu);
    abandoned.Expect(7);
    EXPECT_EQ(StatusOfNext(abandoned, 0x8030), -1);
  }
  Exchange next(association.pdu);
  next.Expect(9);
  EXPECT_EQ(StatusOfNext(next, 0x8030), 5) << Words(association.pdu);
}

TEST(Exchange, WaitsForNoDataSetOfAStoreAndDropsOneThatComes) {
  // The response to a store has none (DICOM PS3.7, 9.3.1.2), whatever it says. One that comes all the same is no answer to the next
  // request.
  const auto response = [](std::uint16_t message, std::uint16_t status, std::uint16_t type) {
    Command command;
    command.Number(0x0100, 0x8001).Number(0x0120, message);
    if (type != 0) command.Number(0x0800, type);
    return Data(5, kWholeCommand, command.Number(0x0900, status));
  };
  const Bytes data = Data(5, kLastPart, NameBytes("AA"));
  constexpr std::uint16_t kTypes[] = {0, 0x0101, 0x0102};  // 0: it says nothing
  for (const std::uint16_t type : kTypes) {
    for (const bool follows : {false, true}) {
      for (const bool isFirstAbandoned : {false, true}) {
        Association association(kContexts);
        // In place of the first one, something else may come.
        if (isFirstAbandoned) association.peer.Send(EchoResponse(0));
        for (std::uint16_t i = 1; i <= 4; ++i) {
          association.peer.Send(response(i, i, type));
          if (follows) association.peer.Send(data);
        }
        for (std::uint16_t i = 1; i <= 4; ++i) {
          Exchange exchange(association.pdu);
          exchange.Expect(i);
          const int status = StatusOfNext(exchange, 0x8001);
          EXPECT_EQ(status, isFirstAbandoned && i == 1 ? -1 : i) << Words(association.pdu);
          if (status != -1) exchange.End();
        }
        EXPECT_NE(association.pdu.Link.Connected, 0);
      }
    }
  }
}

TEST(Exchange, DropsADataSetBehindALastResponseThatSaysThatThereIsNone) {
  // Behind the last of these it would be a match.
  for (const std::uint16_t pending : {std::uint16_t{0xFF00}, std::uint16_t{0xFF01}}) {
    Association association(kContexts);
    const Bytes data = Data(5, kLastPart, NameBytes("AA"));
    association.peer.Send(
        Joined({Response(0x8020, 1, 2), data, Response(0x8020, 1, pending), data}));
    Exchange exchange(association.pdu);
    DICOMCommandObject response;
    DICOMDataObject received;
    for (const std::uint16_t status : {std::uint16_t{2}, pending}) {
      ASSERT_TRUE(exchange.Read(0x8020, response, &received)) << Words(association.pdu);
      EXPECT_EQ(CommandNumber(response, 0x0900), status);
      EXPECT_TRUE(received.IsEmpty());
    }
    EXPECT_FALSE(exchange.Read(0x8020, response, &received));
    EXPECT_EQ(Words(association.pdu), "Got a data set where a response was awaited");
  }
}

TEST(Exchange, DropsADataSetBehindAnyResponseToAMoveThatSaysThatThereIsNone) {
  // No match comes behind these.
  constexpr std::uint16_t kStatuses[] = {0xFF00, 0xFF01, 0};
  Association association(kContexts);
  const Bytes data = Data(5, kLastPart, NameBytes("AA"));
  for (const std::uint16_t status : kStatuses) {
    association.peer.Send(Joined({Response(0x8021, 1, status), data}));
  }
  association.peer.Send(EchoResponse(0));
  Exchange exchange(association.pdu);
  DICOMCommandObject response;
  DICOMDataObject received;
  for (const std::uint16_t status : kStatuses) {
    ASSERT_TRUE(exchange.Read(0x8021, response, &received)) << Words(association.pdu);
    EXPECT_EQ(CommandNumber(response, 0x0900), status);
    EXPECT_TRUE(received.IsEmpty());
  }
  EXPECT_EQ(StatusOfNext(exchange, 0x8030), 0);
}

TEST(Exchange, DropsOneDataSetForEachCommand) {
  const Bytes data = Data(5, kLastPart, NameBytes("AA"));
  Association association(kContexts);
  association.pdu.AbandonedMessages = {7};
  // One for the abandoned response, one too many; the response with its own; one too many behind that.
  association.peer.Send(Joined({Response(0x8020, 7, 0, "AA"), data, Response(0x8020, 9, 5, "BB"),
                                data, Response(0x8020, 9, 6, "CC")}));
  Exchange exchange(association.pdu);
  exchange.Expect(9);
  for (const bool isWhole : {false, true, false, true}) {
    DICOMCommandObject response;
    DICOMDataObject received;
    EXPECT_EQ(exchange.Read(0x8020, response, &received), isWhole);
    EXPECT_EQ(Words(association.pdu), "Got a data set where a response was awaited");
  }
}

TEST(Exchange, ForgetsADataSetThatIsToBeDroppedWithItsLink) {
  Association association(kContexts);
  association.pdu.HasDataSetToDrop = true;
  EXPECT_EQ(association.pdu.Connect("127.0.0.1", FreePort()), 0);
  EXPECT_FALSE(association.pdu.HasDataSetToDrop);
}

TEST(Exchange, EndsWithItsLastResponse) {
  Association association(kContexts);
  {
    Exchange ended(association.pdu);
    ended.Expect(7);
    ended.End();
  }
  association.peer.Send(Response(0x8030, 7, 5));
  Exchange next(association.pdu);
  EXPECT_EQ(StatusOfNext(next, 0x8030), 5);
}

TEST(Exchange, TakesTheResponseToAnIdentifierThatHasComeRound) {
  Association association(kContexts);
  {
    Exchange abandoned(association.pdu);
    abandoned.Expect(1);
  }
  // 0x10001 is the next number, of which two bytes count.
  SetIdentifierCounter(0x10001);
  association.peer.SendAll(EchoResponse(0));
  EXPECT_TRUE(Verification().Write(&association.pdu));
  EXPECT_TRUE(association.pdu.AbandonedMessages.empty());
}

TEST(Exchange, LeavesNoLinkOpenBehindWhatCannotBeRead) {
  const Bytes pending = Data(
      5, kWholeCommand, Command().Number(0x0100, 0x8020).Number(0x0120, 7).Number(0x0800, 0x0102));
  const Bytes command = EchoResponse(0);
  // A PDU of data whose PDV says that it is longer.
  const Bytes lying = Pdu(4, Joined({Big32(100), {5, kWholeCommand}, Bytes(20)}));
  const struct {
    Bytes sent;
    bool isAbandoned;  // the message that the responses are to
    const char* words;
  } rows[] = {
      {ReleaseRequest(), false, ""},
      {lying, false, "Error reading P-DATA-TF from network"},
      {Joined({pending, ReleaseRequest()}), false, ""},
      {Joined({pending, command}), false, "Got a command where a data set was announced"},
      {Joined({pending, lying}), true, "Error reading P-DATA-TF from network"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    Association association(kContexts);
    if (row.isAbandoned) association.pdu.AbandonedMessages = {7};
    association.peer.Send(row.sent);
    Exchange exchange(association.pdu);
    exchange.Expect(9);
    DICOMCommandObject response;
    DICOMDataObject data;
    EXPECT_FALSE(exchange.Read(0x8020, response, &data));
    EXPECT_EQ(association.pdu.Link.Connected, 0);
    EXPECT_EQ(Words(association.pdu), row.words);
  }
}

TEST(Exchange, IsForgottenWithItsLink) {
  Association association(kContexts);
  {
    Exchange abandoned(association.pdu);
    abandoned.Expect(7);
  }
  ASSERT_EQ(association.pdu.AbandonedMessages.size(), 1u);
  EXPECT_EQ(association.pdu.Connect("127.0.0.1", FreePort()), 0);
  EXPECT_TRUE(association.pdu.AbandonedMessages.empty());
}

}  // namespace
}  // namespace tessaret::test
