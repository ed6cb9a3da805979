#include "net/user_information.h"

#include <string>

#include <gtest/gtest.h>

#include "net/item_bytes.h"

namespace tessaret::test {
namespace {

const Bytes kMaximum = Hex("51 00 0004 00004000");
const Bytes kClass = Hex("52 00 0003 312e32");
const Bytes kVersion = Hex("55 00 0002 5631");
const Bytes kRole = Hex("54 00 0007 0003 312e33 01 00");
const Bytes kExtended = Hex("56 00 0006 0003 312e34 aa");
// Asynchronous operations: five may be asked, one performed.
const Bytes kAsynchronous = Hex("53 00 0004 0005 0001");

Bytes Information(std::initializer_list<Bytes> items) { return ItemBytes(0x50, Joined(items)); }

/// A role selection for a UID of its own.
Bytes RoleOf(int number) {
  const std::string uid = "1.2." + std::to_string(number);
  const auto size = static_cast<std::uint8_t>(uid.size());
  return Joined({{0x54, 0, 0, static_cast<std::uint8_t>(size + 4), 0, size}, BytesOf(uid), {1, 1}});
}

TEST(UserInformationItem, IsWrittenInOneOrder) {
  UserInformation item;
  ExtendedNegotiation negotiation;
  negotiation.UID.Set("1.4");
  negotiation.ApplicationInfo = {0xaa};
  EXPECT_EQ(item.AddExtendedNegotiation(negotiation), 1);
  EXPECT_EQ(item.AddRoleSelect(SCPSCURoleSelect(UID("1.3"), 0, 1)), 1);
  EXPECT_EQ(item.AddRoleSelect(SCPSCURoleSelect(UID("1.5"), 0, 1)), 1);
  item.SetImplementationVersion("V1");
  item.SetImplementationClass("1.2");
  item.SetMax(16384);
  const Bytes secondRole = Hex("54 00 0007 0003 312e35 01 00");
  const Bytes expected = Information({kMaximum, kClass, kVersion, kRole, secondRole, kExtended});
  EXPECT_EQ(item.Size(), expected.size());
  EXPECT_EQ(item.Length, expected.size() - 4);
  EXPECT_EQ(Written(item), expected);
}

TEST(UserInformationItem, IsReadInAnyOrder) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kExtended, kVersion, kRole, kClass, kMaximum})));
  EXPECT_EQ(item.MaximumSubLength.MaximumLength, 16384u);
  EXPECT_EQ(item.ImplementationClass.View(), "1.2");
  EXPECT_EQ(item.ImplementationVersion.View(), "V1");
  ASSERT_EQ(item.RoleSelects.size(), 1u);
  EXPECT_EQ(item.RoleSelects[0].UID.View(), "1.3");
  EXPECT_EQ(item.RoleSelects[0].SCURole, 1);
  EXPECT_EQ(item.RoleSelects[0].SCPRole, 0);
  ASSERT_EQ(item.ExtendedNegotiations.size(), 1u);
  EXPECT_EQ(item.ExtendedNegotiations[0].UID.View(), "1.4");
  EXPECT_EQ(item.ExtendedNegotiations[0].ApplicationInfo, Hex("aa"));
  EXPECT_EQ(Written(item), Information({kMaximum, kClass, kVersion, kRole, kExtended}));
}

TEST(UserInformationItem, OfLengthZeroHasNothingInIt) {
  UserInformation item;
  item.SetMax(7);
  EXPECT_TRUE(Reads(item, Hex("50 00 0000")));
  EXPECT_EQ(item.MaximumSubLength.MaximumLength, 7u);
  EXPECT_TRUE(item.RoleSelects.empty());
}

TEST(UserInformationItem, SkipsWhatItDoesNotKnow) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kMaximum, kAsynchronous, kClass})));
  EXPECT_EQ(item.ImplementationClass.View(), "1.2");
  EXPECT_EQ(item.UnknownItemBytes, 8u);
  // 8 and 7 bytes that were kept, 4 of a version that is missing, 8 that were skipped, and 4 of its own.
  EXPECT_EQ(item.Size(), 31u);
}

TEST(UserInformationItem, LeavesReservedByteAndLengthOfTheLastUnknownItemInItsOwn) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({Hex("58 77 0003 010203"), kMaximum})));
  EXPECT_EQ(item.Reserved1, 0x77);
  EXPECT_EQ(item.Length, 3);
}

TEST(UserInformationItem, CountsTheLastUnknownItemOnly) {
  UserInformation item;
  ASSERT_TRUE(
      Reads(item, Information({kMaximum, kAsynchronous, kClass, kVersion, Hex("59 00 0001 ff")})));
  EXPECT_EQ(item.UnknownItemBytes, 5u);
  // 8 + 7 + 6 + 5 + 4
  EXPECT_EQ(item.Size(), 30u);
}

TEST(UserInformationItem, KeepsTheFirstOfTwoRolesForOneUid) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kRole, Hex("54 00 0007 0003 312e33 00 01")})));
  ASSERT_EQ(item.RoleSelects.size(), 1u);
  EXPECT_EQ(item.RoleSelects[0].SCURole, 1);
  EXPECT_EQ(item.AddRoleSelect(SCPSCURoleSelect(UID("1.3"), 1, 1)), 0);
  EXPECT_EQ(item.RoleSelects[0].SCPRole, 0);
}

TEST(UserInformationItem, KeepsTheFirstOfTwoExtendedNegotiationsForOneUid) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kExtended, Hex("56 00 0006 0003 312e34 bb")})));
  ASSERT_EQ(item.ExtendedNegotiations.size(), 1u);
  EXPECT_EQ(item.ExtendedNegotiations[0].ApplicationInfo, Hex("aa"));
  EXPECT_EQ(item.AddExtendedNegotiation(item.ExtendedNegotiations[0]), 0);
  EXPECT_EQ(item.ExtendedNegotiations.size(), 1u);
}

TEST(UserInformationItem, FindsByTheTextOfTheUid) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kRole, kExtended})));
  EXPECT_EQ(item.FindRoleSelect(UID("1.3")), &item.RoleSelects[0]);
  EXPECT_EQ(item.FindRoleSelect(UID(std::string("1.3\0", 4))), &item.RoleSelects[0]);
  EXPECT_EQ(item.FindRoleSelect(UID("1.4")), nullptr);
  EXPECT_EQ(item.FindExtendedNegotiation(UID("1.4")), &item.ExtendedNegotiations[0]);
  EXPECT_EQ(item.FindExtendedNegotiation(UID("1.3")), nullptr);
}

TEST(UserInformationItem, CountsEightBytesForAMaximumLengthWhateverItStates) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({Hex("51 00 0040 00004000"), kClass})));
  EXPECT_EQ(item.MaximumSubLength.Length, 0x40);
  EXPECT_EQ(item.ImplementationClass.View(), "1.2");
}

TEST(UserInformationItem, FailsUnlessItsItemsFillItExactly) {
  for (const Bytes& item : {kMaximum, kClass, kVersion, kRole, kExtended, kAsynchronous}) {
    for (const int change : {-1, 1, 2, 3}) {
      Bytes bytes = Joined({Information({item}), Bytes(3, 0x52)});
      bytes[3] = static_cast<std::uint8_t>(bytes[3] + change);
      UserInformation read;
      EXPECT_FALSE(Reads(read, bytes)) << int{item[0]} << " " << change;
    }
  }
}

TEST(UserInformationItem, FailsAtAnItemThatReachesBeyondIt) {
  for (const Bytes& item : {kClass, kVersion, kRole, kExtended, kAsynchronous}) {
    Bytes bytes = Joined({Information({item}), Bytes(70000, 0)});
    bytes[6] = 0xff;  // the high byte of its length
    UserInformation read;
    EXPECT_FALSE(Reads(read, bytes)) << int{item[0]};
  }
}

TEST(UserInformationItem, FailsWhereItIsCutOrReachesBeyondWhatEnclosesIt) {
  const Bytes bytes = Information({kMaximum, kClass, kVersion, kRole, kExtended, kAsynchronous});
  ExpectFailsCutAnywhere<UserInformation>(bytes);
  for (std::uint32_t room = 0; room + 1 < bytes.size(); ++room) {
    UserInformation item;
    Received received({bytes.begin() + 1, bytes.end()});
    EXPECT_FALSE(item.ReadRest(received, room)) << room;
  }
}

TEST(UserInformationItem, TakesNoMoreRolesThanThereAreContextsForThem) {
  Bytes roles;
  for (int number = 0; number < 128; ++number) roles = Joined({roles, RoleOf(number)});
  UserInformation item;
  // One that is there already is dropped as ever.
  ASSERT_TRUE(Reads(item, Information({roles, RoleOf(3)})));
  EXPECT_EQ(item.RoleSelects.size(), 128u);
  EXPECT_FALSE(Reads(item, Information({RoleOf(128)})));
  EXPECT_EQ(item.RoleSelects.size(), 128u);
}

TEST(UserInformationItem, IsNotWrittenWhereItsLengthCannotSayIt) {
  UserInformation item;
  for (const char* uid : {"1.1", "1.2"}) {
    ExtendedNegotiation negotiation;
    negotiation.UID.Set(uid);
    negotiation.ApplicationInfo.assign(33000, 0);
    item.AddExtendedNegotiation(negotiation);
  }
  Sent sent;
  EXPECT_FALSE(item.Write(sent));
  EXPECT_TRUE(sent.Written().empty());
}

TEST(UserInformationItem, IsWrittenWithoutWhatWasSkipped) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({kMaximum, kAsynchronous, kClass, kVersion})));
  EXPECT_EQ(Written(item), Information({kMaximum, kClass, kVersion}));
  EXPECT_EQ(item.Length, 21);  // 8 + 7 + 6
}

TEST(UserInformationItem, GrowsWithEachRead) {
  UserInformation item;
  ASSERT_TRUE(Reads(item, Information({RoleOf(1), kAsynchronous})));
  ASSERT_TRUE(Reads(item, Information({RoleOf(2), kExtended})));
  EXPECT_EQ(item.RoleSelects.size(), 2u);
  EXPECT_EQ(item.ExtendedNegotiations.size(), 1u);
}

}  // namespace
}  // namespace tessaret::test
