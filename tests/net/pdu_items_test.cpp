#include "net/pdu_items.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "net/item_bytes.h"

namespace tessaret::test {
namespace {

template <class Item>
struct TextItems : testing::Test {};

using AllTextItems = testing::Types<ApplicationContext, AbstractSyntax, TransferSyntax,
                                    ImplementationClass, ImplementationVersion>;
TYPED_TEST_SUITE(TextItems, AllTextItems);

TYPED_TEST(TextItems, AreTypeReservedByteLengthAndTheTextWithoutPadding) {
  TypeParam item("1.2.3");
  EXPECT_EQ(item.Size(), 9u);
  EXPECT_EQ(item.Length, 5);
  EXPECT_EQ(Written(item), Joined({{item.ItemType, 0}, Hex("00 05 31 2e 32 2e 33")}));
}

TYPED_TEST(TextItems, AreReadAsTheyWereWritten) {
  TypeParam item;
  const Bytes bytes = Joined({{item.ItemType, 0x7f}, Hex("00 03 31 2e 39")});
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(item.View(), "1.9");
  EXPECT_EQ(item.UID::Size, 3u);
  EXPECT_EQ(item.Length, 3);
  EXPECT_EQ(item.Reserved1, 0x7f);
  EXPECT_EQ(Written(item), bytes);
}

TYPED_TEST(TextItems, AreReadWithoutTheirTypeByteByWhatEnclosesThem) {
  TypeParam item;
  const std::uint8_t type = item.ItemType;
  ASSERT_TRUE(ReadsRest(item, TextItemBytes(0xee, "1.9")));
  EXPECT_EQ(item.ItemType, type);
  EXPECT_EQ(item.View(), "1.9");
}

TYPED_TEST(TextItems, HoldNulsBehindATextThatFollowsALongerOne) {
  TypeParam item(std::string(64, '8'));
  ASSERT_TRUE(Reads(item, TextItemBytes(item.ItemType, "1")));
  EXPECT_EQ(std::count(item.Text.begin() + 1, item.Text.end(), '\0'), 64);
}

TYPED_TEST(TextItems, TakeSixtyFourBytesAndFailAtOneMore) {
  TypeParam item;
  ASSERT_TRUE(Reads(item, TextItemBytes(item.ItemType, std::string(64, '4'))));
  EXPECT_EQ(item.View(), std::string(64, '4'));
  EXPECT_FALSE(Reads(item, TextItemBytes(item.ItemType, std::string(65, '4'))));
  EXPECT_FALSE(Reads(item, TextItemBytes(item.ItemType, std::string(65535, '4'))));
}

TYPED_TEST(TextItems, KeepNulsWithinTheirText) {
  TypeParam item;
  const Bytes bytes = TextItemBytes(item.ItemType, std::string("1.2\0", 4));
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(item.View(), "1.2");
  EXPECT_EQ(Written(item), bytes);
}

TYPED_TEST(TextItems, FailWhereTheStreamEndsWithinThem) {
  TypeParam item;
  ExpectFailsCutAnywhere<TypeParam>(TextItemBytes(item.ItemType, "1.2.840"));
  EXPECT_FALSE(Reads(item, {}));
}

TYPED_TEST(TextItems, FailWhereTheyReachBeyondWhatEnclosesThem) {
  const Bytes rest = Hex("00 0003 31 2e 32");
  for (std::uint32_t room = 0; room < 6; ++room) {
    TypeParam item;
    Received received(rest);
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
    EXPECT_EQ(item.UID::Size, 0u);
  }
  TypeParam item;
  Received received(rest);
  EXPECT_TRUE(item.ReadRest(received, 6));
}

TEST(TextItem, OnlyATransferSyntaxMayBeEmpty) {
  TransferSyntax transfer("1.2");
  EXPECT_TRUE(Reads(transfer, Hex("40 00 0000")));
  EXPECT_TRUE(transfer.IsEmpty());
  EXPECT_EQ(transfer.UID::Size, 0u);
  ApplicationContext application;
  AbstractSyntax abstract;
  ImplementationClass implementation;
  ImplementationVersion version;
  EXPECT_FALSE(Reads(application, Hex("10 00 0000")));
  EXPECT_FALSE(Reads(abstract, Hex("30 00 0000")));
  EXPECT_FALSE(Reads(implementation, Hex("52 00 0000")));
  EXPECT_FALSE(Reads(version, Hex("55 00 0000")));
}

TEST(TextItem, WhatMayBeEmptyIsDecidedByTheKindAndNotByTheTypeThatCame) {
  AbstractSyntax abstract;
  EXPECT_FALSE(Reads(abstract, Hex("40 00 0000")));
  TransferSyntax transfer;
  EXPECT_TRUE(Reads(transfer, Hex("30 00 0000")));
}

TEST(TextItem, TypesAreThoseOfTheStandard) {
  EXPECT_EQ(ApplicationContext().ItemType, 0x10);
  EXPECT_EQ(AbstractSyntax().ItemType, 0x30);
  EXPECT_EQ(TransferSyntax().ItemType, 0x40);
  EXPECT_EQ(ImplementationClass().ItemType, 0x52);
  EXPECT_EQ(ImplementationVersion().ItemType, 0x55);
}

TEST(MaximumLength, IsFourBytesBehindALengthOfFour) {
  MaximumSubLength item;
  item.MaximumLength = 0x01020304;
  EXPECT_EQ(item.Size(), 8u);
  EXPECT_EQ(Written(item), Hex("51 00 0004 01020304"));
}

TEST(MaximumLength, IsReadWithAnyValue) {
  for (const std::uint32_t value : {0u, 1u, 8u, 16384u, 0xffffffffu}) {
    MaximumSubLength written;
    written.MaximumLength = value;
    MaximumSubLength item;
    ASSERT_TRUE(Reads(item, Written(written)));
    EXPECT_EQ(item.MaximumLength, value);
  }
}

TEST(MaximumLength, KeepsTheLengthThatItStatesAndReadsFourBytesAllTheSame) {
  MaximumSubLength item;
  Received received(Hex("51 09 ffff 00004000 aa"));
  ASSERT_TRUE(item.Read(received));
  EXPECT_EQ(item.Length, 0xffff);
  EXPECT_EQ(item.Reserved1, 9);
  EXPECT_EQ(item.MaximumLength, 16384u);
  EXPECT_EQ(received.Left(), 1u);
}

TEST(MaximumLength, FailsWhereItIsCutOrHasNoRoom) {
  const Bytes bytes = Hex("51 00 0004 00004000");
  ExpectFailsCutAnywhere<MaximumSubLength>(bytes);
  MaximumSubLength item;
  Received received({bytes.begin() + 1, bytes.end()});
  EXPECT_FALSE(item.ReadRest(received, 6));
}

TEST(RoleSelect, TakesTheProvidersRoleBeforeTheUsersAndWritesThemTheOtherWayRound) {
  SCPSCURoleSelect item(UID("1.2.3"), 1, 0);
  EXPECT_EQ(item.SCPRole, 1);
  EXPECT_EQ(item.SCURole, 0);
  EXPECT_EQ(item.Size(), 13u);
  EXPECT_EQ(Written(item), Hex("54 00 0009 0005 312e322e33 00 01"));
}

TEST(RoleSelect, IsReadWithItsRolesAsTheyStand) {
  SCPSCURoleSelect item;
  const Bytes bytes = Hex("54 05 0007 0003 312e32 7e ff");
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(item.UID.View(), "1.2");
  EXPECT_EQ(item.SCURole, 0x7e);
  EXPECT_EQ(item.SCPRole, 0xff);
  EXPECT_EQ(item.Length, 7);
  EXPECT_EQ(Written(item), bytes);
}

TEST(RoleSelect, FailsWhereItsLengthsContradictEachOther) {
  for (const char* bytes : {"54 00 0008 0003 312e32 00 01 00", "54 00 0006 0003 312e32 00 01",
                            "54 00 0007 0004 312e322e 00 01", "54 00 0007 ffff 312e32 00 01",
                            "54 00 0000", "54 00 0003 0000 00"}) {
    SCPSCURoleSelect item;
    EXPECT_FALSE(Reads(item, Hex(bytes))) << bytes;
  }
}

TEST(RoleSelect, FailsAtAnIdentifierOfMoreThanSixtyFourBytes) {
  SCPSCURoleSelect item;
  const auto of = [](std::uint8_t size) {
    return Joined(
        {{0x54, 0, 0, static_cast<std::uint8_t>(size + 4), 0, size}, Bytes(size, '3'), {1, 1}});
  };
  EXPECT_TRUE(Reads(item, of(64)));
  EXPECT_FALSE(Reads(item, of(65)));
}

TEST(RoleSelect, FailsWhereItIsCutOrReachesBeyondWhatEnclosesIt) {
  const Bytes bytes = Hex("54 00 0007 0003 312e32 00 01");
  ExpectFailsCutAnywhere<SCPSCURoleSelect>(bytes);
  for (std::uint32_t room = 0; room < 10; ++room) {
    SCPSCURoleSelect item;
    Received received({bytes.begin() + 1, bytes.end()});
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
  }
}

TEST(ExtendedNegotiationItem, IsTheIdentifierWithItsSizeAndTheInformationBehindIt) {
  ExtendedNegotiation item;
  item.UID.Set("1.2.3");
  item.ApplicationInfo = {0xa1, 0, 0xa3};
  EXPECT_EQ(item.Size(), 14u);
  EXPECT_EQ(Written(item), Hex("56 00 000a 0005 312e322e33 a100a3"));
  EXPECT_EQ(item.ApplicationInfoLength, 3);
}

TEST(ExtendedNegotiationItem, TakesWhatItsLengthLeavesForInformation) {
  ExtendedNegotiation item;
  const Bytes bytes = Hex("56 01 0007 0003 312e32 0102");
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_EQ(item.UID.View(), "1.2");
  EXPECT_EQ(item.ApplicationInfoLength, 2);
  EXPECT_EQ(item.ApplicationInfo, Hex("0102"));
  EXPECT_EQ(Written(item), bytes);
}

TEST(ExtendedNegotiationItem, MayHaveNoInformation) {
  ExtendedNegotiation item;
  item.ApplicationInfo = {1};
  const Bytes bytes = Hex("56 00 0005 0003 312e32");
  ASSERT_TRUE(Reads(item, bytes));
  EXPECT_TRUE(item.ApplicationInfo.empty());
  EXPECT_EQ(item.ApplicationInfoLength, 0);
  EXPECT_EQ(Written(item), bytes);
}

TEST(ExtendedNegotiationItem, HoldsAsMuchAsItsLengthCanSay) {
  // 65,535 less two bytes for the identifier's size and three for the identifier.
  ExtendedNegotiation item;
  item.UID.Set("1.2");
  item.ApplicationInfo = Pattern(65530);
  const Bytes bytes = Written(item);
  EXPECT_EQ(bytes.size(), 65539u);
  ExtendedNegotiation read;
  ASSERT_TRUE(Reads(read, bytes));
  EXPECT_EQ(read.ApplicationInfo, item.ApplicationInfo);
  item.ApplicationInfo.push_back(0);
  Sent sent;
  EXPECT_FALSE(item.Write(sent));
  EXPECT_TRUE(sent.Written().empty());
}

TEST(ExtendedNegotiationItem, FailsWhereItsIdentifierIsLongerThanItself) {
  for (const char* bytes : {"56 00 0004 0003 312e32", "56 00 0000 0003 312e32", "56 00 0001 0000",
                            "56 00 0005 ffff 312e32"}) {
    ExtendedNegotiation item;
    EXPECT_FALSE(Reads(item, Hex(bytes))) << bytes;
    EXPECT_TRUE(item.ApplicationInfo.empty());
  }
}

TEST(ExtendedNegotiationItem, FailsAtAnIdentifierOfMoreThanSixtyFourBytes) {
  ExtendedNegotiation item;
  const auto of = [](std::uint8_t size) {
    return Joined(
        {{0x56, 0, 0, static_cast<std::uint8_t>(size + 3), 0, size}, Bytes(size, '3'), {1}});
  };
  EXPECT_TRUE(Reads(item, of(64)));
  EXPECT_FALSE(Reads(item, of(65)));
}

TEST(ExtendedNegotiationItem, FailsWhereItIsCutOrReachesBeyondWhatEnclosesIt) {
  const Bytes bytes = Hex("56 00 0007 0003 312e32 0102");
  ExpectFailsCutAnywhere<ExtendedNegotiation>(bytes);
  for (std::uint32_t room = 0; room < 10; ++room) {
    ExtendedNegotiation item;
    Received received({bytes.begin() + 1, bytes.end()});
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
  }
}

TEST(SkippedBytes, AreReadToTheirEndAndNoFurther) {
  Received received(Bytes(5000, 1));
  EXPECT_TRUE(SkipBytes(received, 0));
  EXPECT_TRUE(SkipBytes(received, 4321));
  EXPECT_EQ(received.Left(), 679u);
  EXPECT_FALSE(SkipBytes(received, 680));
}

}  // namespace
}  // namespace tessaret::test
