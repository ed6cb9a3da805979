#include "net/short_pdus.h"

#include <gtest/gtest.h>

#include "core/scripted_buffer.h"
#include "net/item_bytes.h"

namespace tessaret {
namespace {

using test::Bytes;
using test::Hex;
using test::ReadsWholeBehindType;
using test::Received;
using test::Written;

TEST(Reject, IsTenBytesWithItsDefaultsFromTheBeginning) {
  AAssociateRJ pdu;
  EXPECT_EQ(Written(pdu), Hex("03 00 00000004 00 01 03 01"));
}

TEST(Reject, HasResultSourceAndReasonInThisOrder) {
  AAssociateRJ pdu;
  pdu.Result = 2;
  pdu.Source = 1;
  pdu.Reason = 7;
  EXPECT_EQ(Written(pdu), Hex("03 00 00000004 00 02 01 07"));
}

TEST(Reject, OfAnotherProgramIsRead) {
  // What storescp answers when it is called with --refuse.
  AAssociateRJ pdu;
  ASSERT_TRUE(ReadsWholeBehindType(pdu, Hex("03000000000400010101")));
  EXPECT_EQ(pdu.Result, 1);
  EXPECT_EQ(pdu.Source, 1);
  EXPECT_EQ(pdu.Reason, 1);
  ASSERT_TRUE(ReadsWholeBehindType(pdu, Hex("03 aa 00000004 bb cc dd ee")));
  EXPECT_EQ(Written(pdu), Hex("03 aa 00000004 bb cc dd ee"));
}

TEST(Release, IsARequestAndAnAnswerOfTenBytes) {
  AReleaseRQ request;
  AReleaseRP answer;
  EXPECT_EQ(Written(request), Hex("05 00 00000004 00000000"));
  EXPECT_EQ(Written(answer), Hex("06 00 00000004 00000000"));
}

TEST(Release, IsReadWithItsReservedBytes) {
  AReleaseRQ request;
  ASSERT_TRUE(ReadsWholeBehindType(request, Hex("05 01 00000004 02030405")));
  EXPECT_EQ(request.Reserved1, 1);
  EXPECT_EQ(request.Reserved2, 0x02030405u);
  AReleaseRP answer;
  ASSERT_TRUE(ReadsWholeBehindType(answer, Hex("06 01 00000004 02030405")));
  EXPECT_EQ(Written(answer), Hex("06 01 00000004 02030405"));
}

TEST(Abort, IsTenBytesWithSourceThreeAndReasonOne) {
  AAbortRQ pdu;
  EXPECT_EQ(Written(pdu), Hex("07 00 00000004 00 00 03 01"));
}

TEST(Abort, OfAnotherProgramIsRead) {
  // What storescp sends at a second request on one association.
  AAbortRQ pdu;
  ASSERT_TRUE(ReadsWholeBehindType(pdu, Hex("07000000000400000202")));
  EXPECT_EQ(pdu.Source, 2);
  EXPECT_EQ(pdu.Reason, 2);
  ASSERT_TRUE(ReadsWholeBehindType(pdu, Hex("07 01 00000004 02 03 04 05")));
  EXPECT_EQ(pdu.Reserved2, 2);
  EXPECT_EQ(pdu.Reserved3, 3);
  EXPECT_EQ(Written(pdu), Hex("07 01 00000004 02 03 04 05"));
}

template <class Pdu>
struct ShortPdus : testing::Test {};

using AllShortPdus = testing::Types<AAssociateRJ, AReleaseRQ, AReleaseRP, AAbortRQ>;
TYPED_TEST_SUITE(ShortPdus, AllShortPdus);

TYPED_TEST(ShortPdus, SetTheirLengthThemselves) {
  TypeParam pdu;
  const Bytes expected = Written(pdu);
  pdu.Length = 99;
  EXPECT_EQ(Written(pdu), expected);
  EXPECT_EQ(pdu.Length, 4u);
}

TYPED_TEST(ShortPdus, LeaveByOneFlush) {
  test::ScriptedBuffer stream;
  TypeParam pdu;
  EXPECT_TRUE(pdu.Write(stream));
  EXPECT_EQ(stream.sent.size(), 1u);
  test::ScriptedBuffer refusing;
  refusing.refuseSend = 1;
  EXPECT_FALSE(pdu.Write(refusing));
}

TYPED_TEST(ShortPdus, OfAnyOtherLengthFail) {
  for (const char* length : {"00000000", "00000003", "00000005", "00000404", "ffffffff"}) {
    TypeParam pdu;
    Received received(test::Joined({{0}, Hex(length), Bytes(20, 1)}));
    EXPECT_FALSE(pdu.Read(received)) << length;
    EXPECT_EQ(received.Left(), 20u);
  }
}

TYPED_TEST(ShortPdus, FailWhereTheStreamEndsWithinThem) {
  const Bytes bytes = Hex("00 00000004 01020304");
  for (std::size_t kept = 0; kept < bytes.size(); ++kept) {
    TypeParam pdu;
    Received received({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(kept)});
    EXPECT_FALSE(pdu.Read(received)) << kept;
  }
}

TYPED_TEST(ShortPdus, EndWhereTheyEnd) {
  TypeParam pdu;
  Received received(Hex("00 00000004 01020304 05"));
  EXPECT_TRUE(pdu.Read(received));
  EXPECT_EQ(received.Left(), 1u);
}

}  // namespace
}  // namespace tessaret
