#include "net/c_get.h"

#include <gtest/gtest.h>

#include "net/identifiers.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

TEST(CGetRequest, IsThisOnTheWireWithAnIdentifierOrWithout) {
  for (const bool hasIdentifier : {true, false}) {
    Association association(kMessageContexts);
    About<CGetRQ> message(kFind);
    DICOMDataObject object;
    FillIdentifier(object);
    SetIdentifierCounter(9);
    EXPECT_TRUE(message.Write(&association.pdu, hasIdentifier ? &object : nullptr));
    const std::uint16_t kind = hasIdentifier ? 0x0102 : 0x0101;
    const Bytes command = Data(5, kWholeCommand,
                               Command()
                                   .Uid(0x0002, kFind)
                                   .Number(0x0100, 0x0010)
                                   .Number(0x0110, 9)
                                   .Number(0x0700, 0)
                                   .Number(0x0800, kind));
    EXPECT_EQ(association.peer.Received(),
              hasIdentifier ? Joined({command, Data(5, kLastPart, IdentifierBytes())}) : command);
  }
}

TEST(CGetRequest, IsRefusedWithoutWhatItNeeds) {
  ExpectRequestRefused<CGetRQ>(kFind, DataSetOf::kOptional);
}

TEST(CGetRequest, ClosesTheLinkWhereItsIdentifierCannotBeEncoded) {
  ExpectLinkClosedBehind<CGetRQ>(Command()
                                     .Uid(0x0002, kFind)
                                     .Number(0x0100, 0x0010)
                                     .Number(0x0110, 9)
                                     .Number(0x0700, 0)
                                     .Number(0x0800, 0x0102));
}

}  // namespace
}  // namespace tessaret::test
