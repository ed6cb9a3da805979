// The responses of C-MOVE and C-GET, which differ in their command field alone.
#include <gtest/gtest.h>

#include "net/c_get.h"
#include "net/c_move.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

template <class Response>
void ExpectCounters(std::uint16_t field) {
  const RetrieveCounters counters{.remaining = 1, .completed = 2, .failed = 3, .warning = 0xFFFF};
  const auto expected = [&](bool hasData, std::uint16_t status) {
    return Data(5, kWholeCommand,
                ResponseToReceived(field, hasData, status)
                    .Number(0x1020, 1)
                    .Number(0x1021, 2)
                    .Number(0x1022, 3)
                    .Number(0x1023, 0xFFFF));
  };
  Association association(kMessageContexts);
  DICOMCommandObject request;
  FillReceived(request, kFind);
  About<Response> message(kFind);
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xFF00, counters));
  EXPECT_EQ(association.peer.Received(), expected(false, 0xFF00));
  DICOMDataObject object;
  FillIdentifier(object);
  EXPECT_TRUE(message.Write(&association.pdu, &request, 0xB000, counters, &object));
  EXPECT_TRUE(object.IsEmpty());
  EXPECT_EQ(association.peer.Received(),
            Joined({expected(true, 0xB000), Data(5, kLastPart, IdentifierBytes())}));
}

TEST(RetrieveResponse, HasCounters) {
  ExpectCounters<CMoveRSP>(0x8021);
  ExpectCounters<CGetRSP>(0x8010);
}

TEST(RetrieveResponse, IsRefusedWithoutWhatItNeeds) {
  ExpectResponseRefused<CMoveRSP>(RetrieveCounters());
  ExpectResponseRefused<CGetRSP>(RetrieveCounters());
}

}  // namespace
}  // namespace tessaret::test
