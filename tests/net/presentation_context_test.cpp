#include "net/presentation_context.h"

#include <string>

#include <gtest/gtest.h>

#include "net/item_bytes.h"

namespace tessaret::test {
namespace {

// An abstract syntax "1.2" and two transfer syntaxes, "1.3" and "1.45".
const Bytes kTwoSyntaxes =
    Hex("20 00 001a 07 000000"
        "30 00 0003 312e32"
        "40 00 0003 312e33"
        "40 00 0004 312e3435");

Bytes ContextBytes(const Bytes& items) {
  return ItemBytes(0x20, Joined({Hex("07 000000"), items}));
}

Bytes AcceptBytes(std::uint8_t result, const Bytes& items) {
  return ItemBytes(0x21, Joined({{7, 0, result, 0}, items}));
}

TEST(ProposedContext, IsItsIdentifierTheAbstractSyntaxAndAllTransferSyntaxes) {
  PresentationContext item;
  item.PresentationContextID = 7;
  item.AbstractSyntax.Set("1.2");
  item.TransferSyntaxes = {TransferSyntax("1.3"), TransferSyntax("1.45")};
  EXPECT_EQ(item.Size(), 30u);
  EXPECT_EQ(item.Length, 26);
  EXPECT_EQ(Written(item), kTwoSyntaxes);
}

TEST(ProposedContext, IsReadAsItWasWritten) {
  PresentationContext item;
  ASSERT_TRUE(Reads(item, kTwoSyntaxes));
  EXPECT_EQ(item.PresentationContextID, 7);
  EXPECT_EQ(item.AbstractSyntax.View(), "1.2");
  ASSERT_EQ(item.TransferSyntaxes.size(), 2u);
  EXPECT_EQ(item.TransferSyntaxes[0].View(), "1.3");
  EXPECT_EQ(item.TransferSyntaxes[1].View(), "1.45");
  EXPECT_EQ(item.Length, 26);
  EXPECT_EQ(Written(item), kTwoSyntaxes);
}

TEST(ProposedContext, KeepsItsReservedBytes) {
  PresentationContext item;
  const Bytes bytes = Hex("20 01 000b 07 020304 30 00 0003 312e32");
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(Written(item), bytes);
}

TEST(ProposedContext, TakesItsFirstItemForTheAbstractSyntaxWhateverTypesTheyState) {
  PresentationContext item;
  ASSERT_TRUE(
      Reads(item, ContextBytes(Joined({TextItemBytes(0x40, "1.1"), TextItemBytes(0x30, "1.2"),
                                       TextItemBytes(0x99, "1.3")}))));
  EXPECT_EQ(item.AbstractSyntax.View(), "1.1");
  ASSERT_EQ(item.TransferSyntaxes.size(), 2u);
  EXPECT_EQ(item.TransferSyntaxes[0].View(), "1.2");
  EXPECT_EQ(item.TransferSyntaxes[1].View(), "1.3");
}

TEST(ProposedContext, ReadsAnEmptyTransferSyntax) {
  PresentationContext item;
  ASSERT_TRUE(
      Reads(item, ContextBytes(Joined({TextItemBytes(0x30, "1.1"), TextItemBytes(0x40, "")}))));
  ASSERT_EQ(item.TransferSyntaxes.size(), 1u);
  EXPECT_TRUE(item.TransferSyntaxes[0].IsEmpty());
}

TEST(ProposedContext, NeedsNoTransferSyntaxAndNoItemAtAll) {
  PresentationContext item;
  EXPECT_TRUE(Reads(item, ContextBytes(TextItemBytes(0x30, "1.1"))));
  EXPECT_TRUE(item.TransferSyntaxes.empty());
  PresentationContext bare;
  EXPECT_TRUE(Reads(bare, ContextBytes({})));
  EXPECT_TRUE(bare.AbstractSyntax.IsEmpty());
}

TEST(ProposedContext, FailsUnlessItsItemsFillItExactly) {
  // The length is one less and one more than what stands in it, and less than what it begins with.
  for (const std::uint8_t length : std::initializer_list<std::uint8_t>{25, 27, 0, 1, 2, 3}) {
    Bytes bytes = kTwoSyntaxes;
    bytes[3] = length;
    bytes.push_back(0);
    PresentationContext item;
    EXPECT_FALSE(Reads(item, bytes)) << int{length};
  }
}

TEST(ProposedContext, FailsAtAnItemThatReachesBeyondIt) {
  Bytes bytes = kTwoSyntaxes;
  bytes[18] = 0xff;  // the length of the first transfer syntax
  PresentationContext item;
  EXPECT_FALSE(Reads(item, bytes));
  bytes = kTwoSyntaxes;
  bytes[11] = 0x20;  // that of the abstract syntax
  EXPECT_FALSE(Reads(item, bytes));
}

TEST(ProposedContext, FailsWhereItIsCutOrReachesBeyondWhatEnclosesIt) {
  ExpectFailsCutAnywhere<PresentationContext>(kTwoSyntaxes);
  for (std::uint32_t room = 0; room < 29; ++room) {
    PresentationContext item;
    Received received({kTwoSyntaxes.begin() + 1, kTwoSyntaxes.end()});
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
  }
}

TEST(ProposedContext, HasAtMostAHundredAndTwentyEightTransferSyntaxes) {
  Bytes items = TextItemBytes(0x30, "1.1");
  for (std::size_t count = 0; count < kMostTransferSyntaxes; ++count) {
    items = Joined({items, Hex("40 00 0000")});
  }
  PresentationContext item;
  EXPECT_TRUE(Reads(item, ContextBytes(items)));
  EXPECT_EQ(item.TransferSyntaxes.size(), 128u);
  PresentationContext more;
  EXPECT_FALSE(Reads(more, ContextBytes(Joined({items, Hex("40 00 0000")}))));
  EXPECT_EQ(more.TransferSyntaxes.size(), 128u);
}

TEST(ProposedContext, IsNotWrittenWhereItsLengthCannotSayIt) {
  // 4 bytes of its own, 4 of the empty abstract syntax, and 68 for each transfer syntax: 963 make 65,492.
  PresentationContext item;
  item.TransferSyntaxes.assign(963, TransferSyntax(std::string(64, '1')));
  EXPECT_EQ(Written(item).size(), 65496u);
  item.TransferSyntaxes.emplace_back(std::string(64, '1'));
  Sent sent;
  EXPECT_FALSE(item.Write(sent));
  EXPECT_TRUE(sent.Written().empty());
}

TEST(ContextAnswer, IsRefusedUntilItIsDecided) { EXPECT_EQ(PresentationContextAccept().Result, 2); }

TEST(ContextAnswer, IsItsIdentifierTheResultAndOneTransferSyntax) {
  PresentationContextAccept item;
  item.PresentationContextID = 7;
  item.Result = 0;
  item.AbstractSyntax.Set("1.99");
  item.TransferSyntax.Set("1.3");
  EXPECT_EQ(item.Size(), 15u);
  EXPECT_EQ(Written(item), Hex("21 00 000b 07 00 00 00 40 00 0003 312e33"));
}

TEST(ContextAnswer, IsReadAsItWasWritten) {
  PresentationContextAccept item;
  const Bytes bytes = Hex("21 01 000b 07 02 04 03 40 00 0003 312e33");
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(item.PresentationContextID, 7);
  EXPECT_EQ(item.Result, 4);
  EXPECT_EQ(item.TransferSyntax.View(), "1.3");
  EXPECT_TRUE(item.AbstractSyntax.IsEmpty());
  EXPECT_EQ(Written(item), bytes);
}

TEST(ContextAnswer, TakesItsItemForTheTransferSyntaxWhateverTypeItStates) {
  PresentationContextAccept item;
  ASSERT_TRUE(Reads(item, AcceptBytes(0, TextItemBytes(0x30, "1.3"))));
  EXPECT_EQ(item.TransferSyntax.View(), "1.3");
}

TEST(ContextAnswer, MayHaveAnEmptyTransferSyntaxAndARefusalNone) {
  PresentationContextAccept item;
  EXPECT_TRUE(Reads(item, AcceptBytes(0, Hex("40 00 0000"))));
  for (const std::uint8_t result : std::initializer_list<std::uint8_t>{1, 2, 3, 4, 255}) {
    EXPECT_TRUE(Reads(item, AcceptBytes(result, {}))) << int{result};
  }
  EXPECT_FALSE(Reads(item, AcceptBytes(0, {})));
}

TEST(ContextAnswer, FailsUnlessTheTransferSyntaxFillsItExactly) {
  const Bytes bytes = AcceptBytes(0, TextItemBytes(0x40, "1.3"));
  for (const std::uint8_t length : std::initializer_list<std::uint8_t>{0, 3, 4, 5, 10, 12, 255}) {
    Bytes lying = Joined({bytes, Bytes(300, 0)});
    lying[3] = length;
    PresentationContextAccept item;
    EXPECT_FALSE(Reads(item, lying)) << int{length};
  }
}

TEST(ContextAnswer, FailsWhereItIsCutOrReachesBeyondWhatEnclosesIt) {
  const Bytes bytes = AcceptBytes(0, TextItemBytes(0x40, "1.3"));
  ExpectFailsCutAnywhere<PresentationContextAccept>(bytes);
  for (std::uint32_t room = 0; room < 14; ++room) {
    PresentationContextAccept item;
    Received received({bytes.begin() + 1, bytes.end()});
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
  }
}

}  // namespace
}  // namespace tessaret::test
