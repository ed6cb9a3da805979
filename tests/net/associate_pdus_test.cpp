#include "net/associate_pdus.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "core/scripted_buffer.h"
#include "net/identifiers.h"
#include "net/item_bytes.h"
#include "support/allocation_failure.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::BytesOf;
using test::Hex;
using test::ItemBytes;
using test::Joined;
using test::Received;
using test::TextItemBytes;
using test::TextOf;
using test::Written;

// "1.2.840.10008.3.1.1.1" in its item.
const Bytes kApplication = TextItemBytes(0x10, "1.2.840.10008.3.1.1.1");
// Verification with implicit little endian, identifier 1.
const Bytes kContext =
    Hex("20 00 002e 01 000000"
        "30 00 0011 312e322e3834302e31303030382e312e31"
        "40 00 0011 312e322e3834302e31303030382e312e32");
const Bytes kAccept =
    Hex("21 00 0019 01 00 00 00"
        "40 00 0011 312e322e3834302e31303030382e312e32");
const Bytes kInformation = Hex("50 00 0015 51 00 0004 00004000 52 00 0003 312e32 55 00 0002 5631");

Bytes Length32(std::size_t size) {
  return {static_cast<std::uint8_t>(size >> 24), static_cast<std::uint8_t>(size >> 16),
          static_cast<std::uint8_t>(size >> 8), static_cast<std::uint8_t>(size)};
}

/// What stands in front of the items, behind the length.
Bytes FixedBytes() {
  return Joined(
      {Hex("0001 0000"), BytesOf("CALLED          "), BytesOf("CALLER          "), Bytes(32, 0)});
}

Bytes PduBytes(std::uint8_t type, std::initializer_list<Bytes> items) {
  const Bytes all = Joined(items);
  return Joined({{type, 0}, Length32(68 + all.size()), FixedBytes(), all});
}

Bytes RequestBytes(std::initializer_list<Bytes> items) { return PduBytes(1, items); }
Bytes AnswerBytes(std::initializer_list<Bytes> items) { return PduBytes(2, items); }

/// Reads a PDU behind its type byte, with another one behind it of which nothing may be read.
template <class Pdu>
bool ReadsWhole(Pdu& pdu, const Bytes& bytes) {
  const Bytes next(10, 0x07);
  Received received({bytes.begin() + 1, bytes.end()});
  Received followed(Joined({{bytes.begin() + 1, bytes.end()}, next}));
  const bool isRead = pdu.Read(followed);
  EXPECT_EQ(followed.Left(), next.size());
  return isRead;
}

AAssociateRQ SmallRequest() {
  AAssociateRQ request;
  request.CalledApTitle = MakeApTitle("CALLED");
  request.CallingApTitle = MakeApTitle("CALLER");
  PresentationContext context;
  context.PresentationContextID = 1;
  context.AbstractSyntax.Set("1.2.840.10008.1.1");
  context.TransferSyntaxes = {TransferSyntax("1.2.840.10008.1.2")};
  request.AddPresentationContext(context);
  request.UserInformation.SetMax(16384);
  request.UserInformation.SetImplementationClass("1.2");
  request.UserInformation.SetImplementationVersion("V1");
  return request;
}

TEST(AssociateRequest, IsLaidOutAsItsTableSays) {
  AAssociateRQ request = SmallRequest();
  const Bytes expected = RequestBytes({kApplication, kContext, kInformation});
  EXPECT_EQ(request.Size(), expected.size());
  EXPECT_EQ(request.Length, expected.size() - 6);
  EXPECT_EQ(Written(request), expected);
}

TEST(AssociateAnswer, IsLaidOutAsItsTableSays) {
  AAssociateAC answer;
  answer.CalledApTitle = MakeApTitle("CALLED");
  answer.CallingApTitle = MakeApTitle("CALLER");
  PresentationContextAccept context;
  context.PresentationContextID = 1;
  context.Result = 0;
  context.TransferSyntax.Set("1.2.840.10008.1.2");
  answer.PresentationContexts = {context};
  answer.UserInformation = SmallRequest().UserInformation;
  const Bytes expected = AnswerBytes({kApplication, kAccept, kInformation});
  EXPECT_EQ(answer.Size(), expected.size());
  EXPECT_EQ(Written(answer), expected);
}

TEST(AssociatePdus, AreNewWithBlankTitlesAndTheOneApplicationContext) {
  const AAssociateRQ request;
  const AAssociateAC answer;
  EXPECT_EQ(request.ItemType, 1);
  EXPECT_EQ(answer.ItemType, 2);
  for (const AssociatePdu* pdu :
       {static_cast<const AssociatePdu*>(&request), static_cast<const AssociatePdu*>(&answer)}) {
    EXPECT_EQ(pdu->ProtocolVersion, 1);
    EXPECT_EQ(pdu->ApplicationContext.View(), "1.2.840.10008.3.1.1.1");
    EXPECT_EQ(std::string(pdu->CalledApTitle.data()), std::string(16, ' '));
    EXPECT_EQ(std::string(pdu->CallingApTitle.data()), std::string(16, ' '));
    EXPECT_EQ(pdu->Reserved3, (std::array<std::uint8_t, 32>{}));
  }
}

TEST(AssociatePdus, LeaveByOneFlush) {
  test::ScriptedBuffer stream;
  stream.OutEndian = kBigEndian;
  AAssociateRQ request = SmallRequest();
  ASSERT_TRUE(request.Write(stream));
  ASSERT_EQ(stream.sent.size(), 1u);
  EXPECT_EQ(stream.sent[0].size(), request.Size());
  EXPECT_EQ(stream.OutSize, 0);
}

TEST(AssociatePdus, FailToBeWrittenWhereTheStreamTakesNothing) {
  test::ScriptedBuffer stream;
  stream.refuseSend = 1;
  EXPECT_FALSE(AAssociateRQ().Write(stream));
  EXPECT_FALSE(AAssociateAC().Write(stream));
}

TEST(ApplicationTitle, IsFilledUpWithBlanksAndCutAtSixteenBytes) {
  EXPECT_EQ(std::string(MakeApTitle("").data()), "                ");
  EXPECT_EQ(std::string(MakeApTitle("A").data()), "A               ");
  EXPECT_EQ(std::string(MakeApTitle("ABCDEFGHIJKLMNOP").data()), "ABCDEFGHIJKLMNOP");
  EXPECT_EQ(std::string(MakeApTitle("ABCDEFGHIJKLMNOPQ").data()), "ABCDEFGHIJKLMNOP");
  EXPECT_EQ(std::string(MakeApTitle("../\\\x01/..").data()), "../\\\x01/..        ");
}

TEST(AssociateRequest, IsReadAsItWasWritten) {
  AAssociateRQ request;
  const Bytes bytes = RequestBytes({kApplication, kContext, kInformation});
  ASSERT_TRUE(ReadsWhole(request, bytes));
  EXPECT_EQ(request.Length, bytes.size() - 6);
  EXPECT_EQ(std::string(request.CalledApTitle.data()), "CALLED          ");
  EXPECT_EQ(std::string(request.CallingApTitle.data()), "CALLER          ");
  ASSERT_EQ(request.PresentationContexts.size(), 1u);
  EXPECT_EQ(request.PresentationContexts[0].PresentationContextID, 1);
  EXPECT_EQ(request.UserInformation.MaximumSubLength.MaximumLength, 16384u);
  EXPECT_EQ(Written(request), bytes);
}

TEST(AssociateAnswer, IsReadAsItWasWritten) {
  AAssociateAC answer;
  const Bytes bytes = AnswerBytes({kApplication, kAccept, kInformation});
  ASSERT_TRUE(ReadsWhole(answer, bytes));
  ASSERT_EQ(answer.PresentationContexts.size(), 1u);
  EXPECT_EQ(answer.PresentationContexts[0].Result, 0);
  EXPECT_EQ(answer.PresentationContexts[0].TransferSyntax.View(), "1.2.840.10008.1.2");
  EXPECT_EQ(Written(answer), bytes);
}

TEST(AssociatePdus, KeepReservedBytesTitlesOfAnyBytesAndProtocolVersions) {
  Bytes bytes = RequestBytes({kApplication, kContext, kInformation});
  bytes[1] = 0x7f;
  std::fill(bytes.begin() + 6, bytes.begin() + 74, std::uint8_t{0xc3});
  AAssociateRQ request;
  ASSERT_TRUE(ReadsWhole(request, bytes));
  EXPECT_EQ(request.ProtocolVersion, 0xc3c3);
  EXPECT_EQ(std::string(request.CalledApTitle.data()), std::string(16, '\xc3'));
  EXPECT_EQ(Written(request), bytes);
}

// What echoscu 3.6.7 sends, called with -aet CALLER -aec CALLED, and what storescp answers.
const Bytes kRequestOfEchoscu = Hex(
    "0100000000cd0001000043414c4c45442020202020202020202043414c4c4552202020202020202020200000000000"
    "00000000000000000000000000000000000000000000000000000010000015312e322e3834302e31303030382e332e"
    "31"
    "2e312e312000002e0100ff0030000011312e322e3834302e31303030382e312e3140000011312e322e3834302e3130"
    "30"
    "30382e312e325000003a51000004000040005200001b312e322e3237362e302e373233303031302e332e302e332e36"
    "2e"
    "375500000f4f464649535f44434d544b5f333637");
const Bytes kAnswerOfStorescp = Hex(
    "0200000000b80001000043414c4c45442020202020202020202043414c4c4552202020202020202020200000000000"
    "00000000000000000000000000000000000000000000000000000010000015312e322e3834302e31303030382e332e"
    "31"
    "2e312e31210000190100000040000011312e322e3834302e31303030382e312e325000003a51000004000040005200"
    "00"
    "1b312e322e3237362e302e373233303031302e332e302e332e362e375500000f4f464649535f44434d544b5f33363"
    "7");

TEST(AssociateRequest, OfAnotherProgramIsReadToTheByte) {
  AAssociateRQ request;
  ASSERT_TRUE(ReadsWhole(request, kRequestOfEchoscu));
  EXPECT_EQ(std::string(request.CallingApTitle.data()), "CALLER          ");
  ASSERT_EQ(request.PresentationContexts.size(), 1u);
  EXPECT_EQ(request.PresentationContexts[0].AbstractSyntax.View(), "1.2.840.10008.1.1");
  EXPECT_EQ(request.UserInformation.ImplementationVersion.View(), "OFFIS_DCMTK_367");
  EXPECT_EQ(Written(request), kRequestOfEchoscu);
}

TEST(AssociateAnswer, OfAnotherProgramIsReadToTheByte) {
  AAssociateAC answer;
  ASSERT_TRUE(ReadsWhole(answer, kAnswerOfStorescp));
  ASSERT_EQ(answer.PresentationContexts.size(), 1u);
  EXPECT_EQ(answer.PresentationContexts[0].PresentationContextID, 1);
  EXPECT_EQ(answer.UserInformation.ImplementationClass.View(), "1.2.276.0.7230010.3.0.3.6.7");
  EXPECT_EQ(Written(answer), kAnswerOfStorescp);
}

TEST(AssociateRequest, SkipsAnUnknownItemAsIfItsLengthHadFourBytes) {
  AAssociateRQ request;
  const Bytes unknown = Hex("77 09 00000003 aabbcc");
  EXPECT_FALSE(ReadsWhole(request, RequestBytes({kApplication, unknown, kContext, kInformation})));
  EXPECT_EQ(request.Reserved1, 9);
  EXPECT_EQ(request.Length, 3u);
  EXPECT_EQ(request.PresentationContexts.size(), 1u);
  EXPECT_EQ(request.UserInformation.ImplementationVersion.View(), "V1");
}

TEST(AssociateRequest, EndsOffZeroBehindAnUnknownItemThatComesLast) {
  AAssociateRQ request;
  EXPECT_FALSE(ReadsWhole(request, RequestBytes({kContext, kInformation, Hex("77 00 00000000")})));
  EXPECT_EQ(request.PresentationContexts.size(), 1u);
}

TEST(AssociateRequest, WithAnUnknownItemOfATwoByteLengthKeepsWhatCameBeforeIt) {
  AAssociateRQ request;
  EXPECT_FALSE(ReadsWhole(
      request, RequestBytes({kApplication, kContext, TextItemBytes(0x77, "abc"), kInformation})));
  EXPECT_EQ(request.PresentationContexts.size(), 1u);
  EXPECT_TRUE(request.UserInformation.ImplementationVersion.IsEmpty());
}

TEST(AssociateRequest, TakesAnUnknownItemThatIsCutForAFailure) {
  for (std::size_t size = 1; size < 6; ++size) {
    const Bytes unknown = Hex("77 00 00000000");
    AAssociateRQ request;
    EXPECT_FALSE(ReadsWhole(
        request,
        RequestBytes({kContext, {unknown.begin(), unknown.begin() + static_cast<long>(size)}})));
  }
}

TEST(AssociateRequest, DoesNotKnowTheItemOfAnAnswerNorTheOtherWayRound) {
  AAssociateRQ request;
  EXPECT_FALSE(ReadsWhole(request, RequestBytes({kAccept})));
  AAssociateAC answer;
  EXPECT_FALSE(ReadsWhole(answer, AnswerBytes({kContext})));
  EXPECT_TRUE(answer.PresentationContexts.empty());
}

TEST(AssociateAnswer, FailsAtAnUnknownItemAfterAllOfThePduWasRead) {
  AAssociateAC answer;
  EXPECT_FALSE(ReadsWhole(
      answer, AnswerBytes({kApplication, kAccept, TextItemBytes(0x77, "abc"), kInformation})));
  EXPECT_EQ(answer.PresentationContexts.size(), 1u);
  EXPECT_TRUE(answer.UserInformation.ImplementationVersion.IsEmpty());
}

TEST(AssociateAnswer, CountsUserInformationForWhatWasKeptOfIt) {
  const Bytes maximum = Hex("51 00 0004 00004000");
  const Bytes texts = Hex("52 00 0003 312e32 55 00 0002 5631");
  const Bytes unknown = Hex("53 00 0004 0001 0001");
  const Bytes role = Hex("54 00 0007 0003 312e33 01 00");
  const auto reads = [](const Bytes& items) {
    AAssociateAC answer;
    return ReadsWhole(answer, AnswerBytes({kApplication, kAccept, ItemBytes(0x50, items)}));
  };
  EXPECT_TRUE(reads(Joined({maximum, texts})));
  EXPECT_TRUE(reads(Joined({maximum, texts, unknown})));
  EXPECT_TRUE(reads(Joined({maximum, texts, role})));
  // Two unknown items of which one counts, a role that is dropped, texts and a maximum that are missing.
  EXPECT_FALSE(reads(Joined({maximum, texts, unknown, unknown})));
  EXPECT_FALSE(reads(Joined({maximum, texts, role, role})));
  EXPECT_FALSE(reads(maximum));
  EXPECT_FALSE(reads(texts));
  EXPECT_FALSE(reads({}));
}

TEST(AssociateAnswer, ReadsNothingBehindTheEndOfItsCount) {
  // 12 bytes with a maximum alone, which count for 20: 8 for it, 4 for each of two texts without a byte, 4 of its own. The
  // context that follows has the 8 between them.
  const Bytes information = ItemBytes(0x50, Hex("51 00 0004 00004000"));
  AAssociateAC answer;
  EXPECT_TRUE(
      ReadsWhole(answer, AnswerBytes({kAccept, information, Hex("21 00 0004 05 00 03 00")})));
  EXPECT_EQ(answer.PresentationContexts.size(), 1u);
}

TEST(AssociateRequest, CountsUserInformationForWhatItIs) {
  const Bytes role = Hex("54 00 0007 0003 312e33 01 00");
  const Bytes unknown = Hex("53 00 0004 0001 0001");
  for (const Bytes& items : {Joined({unknown, unknown}), Joined({role, role}), Bytes()}) {
    AAssociateRQ request;
    EXPECT_TRUE(
        ReadsWhole(request, RequestBytes({ItemBytes(0x50, items), kApplication, kContext})));
    EXPECT_EQ(request.PresentationContexts.size(), 1u);
  }
}

TEST(AssociatePdus, AreWrittenWithoutTheUserInformationThatWasSkipped) {
  const Bytes information =
      Hex("50 00 001d 51 00 0004 00004000 52 00 0003 312e32 55 00 0002 5631 53 00 0004 0001 0001");
  AAssociateRQ request;
  ASSERT_TRUE(ReadsWhole(request, RequestBytes({kApplication, kContext, information})));
  EXPECT_EQ(Written(request), RequestBytes({kApplication, kContext, kInformation}));
  AAssociateAC answer;
  ASSERT_TRUE(ReadsWhole(answer, AnswerBytes({kApplication, kAccept, information})));
  EXPECT_EQ(Written(answer), AnswerBytes({kApplication, kAccept, kInformation}));
}

TEST(AssociateAnswer, ReadsWhatFollowsRefusalsWithoutATransferSyntax) {
  Bytes refusals;
  for (int count = 0; count < 20; ++count)
    refusals = Joined({refusals, Hex("21 00 0004 05 00 03 00")});
  AAssociateAC answer;
  EXPECT_TRUE(ReadsWhole(answer, AnswerBytes({kApplication, refusals, kAccept, kInformation})));
  EXPECT_EQ(answer.PresentationContexts.size(), 21u);
  EXPECT_EQ(answer.UserInformation.ImplementationVersion.View(), "V1");
}

TEST(AssociateRequest, ReadsWhatFollowsContextsWithNothingInThem) {
  Bytes empties;
  for (int count = 0; count < 20; ++count) empties = Joined({empties, Hex("20 00 0004 05 000000")});
  AAssociateRQ request;
  EXPECT_TRUE(ReadsWhole(request, RequestBytes({empties, kContext, kInformation})));
  EXPECT_EQ(request.PresentationContexts.size(), 21u);
  EXPECT_EQ(request.UserInformation.ImplementationVersion.View(), "V1");
}

TEST(AssociatePdus, NeedNoItems) {
  AAssociateRQ request;
  EXPECT_TRUE(ReadsWhole(request, RequestBytes({})));
  AAssociateAC answer;
  EXPECT_TRUE(ReadsWhole(answer, AnswerBytes({})));
}

TEST(AssociatePdus, OfALengthThatCannotBeAreRefusedBeforeAnyOfThem) {
  // 4,194,305 is one more than the most.
  for (const std::uint32_t length : {0u, 1u, 67u, 4194305u, 0x80000000u, 0xffffffffu}) {
    const Bytes head = Joined({{0}, Length32(length)});
    Received request(Joined({head, Bytes(100, 0)}));
    EXPECT_FALSE(AAssociateRQ().Read(request)) << length;
    EXPECT_EQ(request.Left(), 100u);
    Received answer(Joined({head, Bytes(100, 0)}));
    EXPECT_FALSE(AAssociateAC().Read(answer)) << length;
    EXPECT_EQ(answer.Left(), 100u);
  }
}

TEST(AssociatePdus, OfTheGreatestLengthAreReadToTheirEnd) {
  // One unknown item fills the rest of 4,194,304 bytes: 68 of the PDU's own and 6 of its head.
  const std::size_t size = 4194304 - 68 - 6;
  const Bytes bytes = RequestBytes({Joined({{0x77, 0}, Length32(size), Bytes(size, 0)})});
  MemoryBuffer stream(const_cast<std::uint8_t*>(bytes.data()) + 1,
                      static_cast<std::uint32_t>(bytes.size() - 1), false, kBigEndian);
  EXPECT_FALSE(AAssociateRQ().Read(stream));
  EXPECT_EQ(stream.Available(), 0u);
}

TEST(AssociatePdus, FailWhereTheStreamEndsWithinThem) {
  const Bytes request = RequestBytes({kApplication, kContext, kInformation});
  for (std::size_t kept = 1; kept < request.size(); ++kept) {
    Received received({request.begin() + 1, request.begin() + static_cast<std::ptrdiff_t>(kept)});
    EXPECT_FALSE(AAssociateRQ().Read(received)) << kept;
  }
  const Bytes answer = AnswerBytes({kApplication, kAccept, kInformation});
  for (std::size_t kept = 1; kept < answer.size(); ++kept) {
    Received received({answer.begin() + 1, answer.begin() + static_cast<std::ptrdiff_t>(kept)});
    EXPECT_FALSE(AAssociateAC().Read(received)) << kept;
  }
}

/// A peer that stops in the middle, and takes its time for it.
class Stopping : public test::ScriptedBuffer {
 public:
  explicit Stopping(const Bytes& bytes) : ScriptedBuffer(bytes) {
    InEndian = kBigEndian;
    endsWithAnswers = true;
  }
  std::int64_t ReadBinary(void* data, std::uint32_t count) override {
    if (answers.empty()) ++waits;
    return ScriptedBuffer::ReadBinary(data, count);
  }

  int waits = 0;
};

TEST(AssociatePdus, AreNotWaitedForAgainByAReaderThatHasWaitedInVain) {
  const Bytes request = RequestBytes({kApplication, kContext, kInformation});
  for (std::size_t kept = 2; kept < request.size(); ++kept) {
    Stopping peer({request.begin() + 1, request.begin() + static_cast<std::ptrdiff_t>(kept)});
    EXPECT_FALSE(AAssociateRQ().Read(peer)) << kept;
    EXPECT_EQ(peer.waits, 1) << kept;
  }
}

TEST(AssociatePdus, WithAnyByteChangedAreReadToTheirEndAtMost) {
  const Bytes request = RequestBytes({kApplication, kContext, kInformation});
  const Bytes answer = AnswerBytes({kApplication, kAccept, kInformation});
  for (std::size_t at = 6; at < request.size(); ++at) {
    for (const std::uint8_t value :
         std::initializer_list<std::uint8_t>{0x00, 0x01, 0x7f, 0x80, 0xff}) {
      Bytes changed = request;
      changed[at] = value;
      AAssociateRQ pdu;
      ReadsWhole(pdu, changed);
    }
  }
  for (std::size_t at = 6; at < answer.size(); ++at) {
    for (const std::uint8_t value :
         std::initializer_list<std::uint8_t>{0x00, 0x01, 0x7f, 0x80, 0xff}) {
      Bytes changed = answer;
      changed[at] = value;
      AAssociateAC pdu;
      ReadsWhole(pdu, changed);
    }
  }
}

TEST(AssociateRequest, DropsAContextThatLiesAndKeepsThoseBeforeIt) {
  Bytes lying = kContext;
  lying[11] = 0xff;  // the length of its abstract syntax
  AAssociateRQ request;
  EXPECT_FALSE(ReadsWhole(request, RequestBytes({kApplication, kContext, lying, kInformation})));
  EXPECT_EQ(request.PresentationContexts.size(), 1u);
}

TEST(AssociatePdus, TakeAHundredAndTwentyEightContexts) {
  Bytes proposals;
  Bytes answers;
  for (std::size_t count = 0; count < kMostPresentationContexts; ++count) {
    proposals = Joined({proposals, kContext});
    answers = Joined({answers, kAccept});
  }
  AAssociateRQ request;
  EXPECT_TRUE(ReadsWhole(request, RequestBytes({proposals, kInformation})));
  EXPECT_EQ(request.PresentationContexts.size(), 128u);
  AAssociateRQ tooMany;
  EXPECT_FALSE(ReadsWhole(tooMany, RequestBytes({proposals, kContext, kInformation})));
  EXPECT_EQ(tooMany.PresentationContexts.size(), 128u);
  AAssociateAC answer;
  EXPECT_TRUE(ReadsWhole(answer, AnswerBytes({answers, kInformation})));
  AAssociateAC tooLong;
  EXPECT_FALSE(ReadsWhole(tooLong, AnswerBytes({answers, kAccept, kInformation})));
  EXPECT_EQ(tooLong.PresentationContexts.size(), 128u);
}

TEST(AssociateRequest, HoldsAHundredAndTwentyEightContextsWithIdentifiersOfTheirOwn) {
  const std::uint32_t before = IdentifierCounter();
  SetIdentifierCounter(201);
  AAssociateRQ request;
  std::array<bool, 256> taken{};
  for (std::size_t count = 0; count < kMostPresentationContexts; ++count) {
    // Another association takes some as well.
    if (count % 3 == 0) TakeOddIdentifier();
    ASSERT_EQ(request.AddPresentationContext(PresentationContext()), 1);
    const std::uint8_t identifier = request.PresentationContexts.back().PresentationContextID;
    EXPECT_EQ(identifier % 2, 1);
    EXPECT_FALSE(taken[identifier]);
    taken[identifier] = true;
  }
  EXPECT_EQ(request.AddPresentationContext(PresentationContext()), 0);
  EXPECT_EQ(request.PresentationContexts.size(), 128u);
  SetIdentifierCounter(before);
}

TEST(AssociatePdus, GrowWhereTheyAreUsedAgain) {
  const Bytes bytes = RequestBytes({kContext});
  AAssociateRQ request;
  EXPECT_TRUE(ReadsWhole(request, bytes));
  EXPECT_TRUE(ReadsWhole(request, bytes));
  EXPECT_EQ(request.PresentationContexts.size(), 2u);
}

TEST(AssociatePdus, AreNotWrittenWhereALengthWithinCannotBeSaid) {
  AAssociateRQ request = SmallRequest();
  request.PresentationContexts[0].TransferSyntaxes.assign(1000,
                                                          TransferSyntax(std::string(64, '1')));
  test::ScriptedBuffer stream;
  EXPECT_FALSE(request.Write(stream));
  EXPECT_EQ(stream.OutSize, 0);
  AAssociateAC answer;
  ExtendedNegotiation negotiation;
  negotiation.ApplicationInfo.assign(70000, 0);
  answer.UserInformation.AddExtendedNegotiation(negotiation);
  EXPECT_FALSE(answer.Write(stream));
  EXPECT_EQ(stream.OutSize, 0);
  EXPECT_TRUE(stream.sent.empty());
}

TEST(AssociatePdus, TakeMemoryInProportionToWhatCame) {
  // The costliest content: 16,000 transfer syntaxes of four bytes, spread over 128 contexts, and then 60 rounds of user information
  // with as many roles as fit, each with a UID of its own.
  Bytes context = Joined({Hex("01 000000"), TextItemBytes(0x30, "1.2")});
  for (int count = 0; count < 125; ++count) context = Joined({context, Hex("40 00 0000")});
  Bytes items;
  const Bytes whole = ItemBytes(0x20, context);
  for (int count = 0; count < 128; ++count) items.insert(items.end(), whole.begin(), whole.end());
  for (int round = 0; round < 60; ++round) {
    Bytes roles;
    for (int number = 0; number < 4000; ++number) {
      const int uid = round * 4000 + number;
      const Bytes role = {0x54,
                          0,
                          0,
                          8,
                          0,
                          4,
                          static_cast<std::uint8_t>(uid >> 18 | 0x40),
                          static_cast<std::uint8_t>((uid >> 12 & 63) | 0x40),
                          static_cast<std::uint8_t>((uid >> 6 & 63) | 0x40),
                          static_cast<std::uint8_t>((uid & 63) | 0x40),
                          1,
                          1};
      roles.insert(roles.end(), role.begin(), role.end());
    }
    const Bytes information = ItemBytes(0x50, roles);
    items.insert(items.end(), information.begin(), information.end());
  }
  const Bytes bytes = RequestBytes({items});
  MemoryBuffer stream(const_cast<std::uint8_t*>(bytes.data()) + 1,
                      static_cast<std::uint32_t>(bytes.size() - 1), false, kBigEndian);
  AAssociateRQ request;
  const test::AllocationWatch watch;
  EXPECT_FALSE(request.Read(stream));
  EXPECT_EQ(stream.Available(), 0u);
  EXPECT_EQ(request.PresentationContexts.size(), 128u);
  EXPECT_EQ(request.PresentationContexts[127].TransferSyntaxes.size(), 125u);
  EXPECT_EQ(request.UserInformation.RoleSelects.size(), 128u);
  EXPECT_LT(watch.LargestRequest(), 64u << 10);
}

}  // namespace
}  // namespace tessaret
