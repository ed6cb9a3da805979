// Command sets as other programs send them, recorded on their way: they are read, and are sent again byte by byte as they came. For the
// same values the messages of the library write the same bytes, but for what is named.
#include <map>
#include <optional>

#include <gtest/gtest.h>

#include "net/c_cancel.h"
#include "net/c_echo.h"
#include "net/c_find.h"
#include "net/c_get.h"
#include "net/c_move.h"
#include "net/c_store.h"
#include "net/item_bytes.h"
#include "net/message_helpers.h"

namespace tessaret::test {
namespace {

constexpr const char* kGet = "1.2.840.10008.5.1.4.1.2.2.3";
constexpr const char* kPlan = "1.2.840.10008.5.1.4.1.1.481.5";

// By DCMTK 3.6.7 and Orthanc 1.10.1 of the distribution; each is one PDU with one PDV.
// echoscu
constexpr const char* kEchoRequest =
    "04000000004a0000004601030000000004000000380000000000020012000000312e322e3834302e31303030382e"
    "312e3100000000010200000030000000100102000000010000000008020000000101";
// storescp
constexpr const char* kEchoResponse =
    "0400000000540000005001030000000004000000420000000000020012000000312e322e3834302e31303030382e"
    "312e310000000001020000003080000020010200000001000000000802000000010100000009020000000000";
// storescu
constexpr const char* kStoreRequest =
    "0400000000900000008c290300000000040000007e000000000002001a000000312e322e3834302e31303030382e"
    "352e312e342e312e312e320000000001020000000100000010010200000001000000000702000000000000000008"
    "020000000100000000102c000000322e32352e363339303432353336393932363135353238373839383433303739"
    "383339333237353036343200";
// storescp
constexpr const char* kStoreResponse =
    "0400000000900000008c290300000000040000007e000000000002001a000000312e322e3834302e31303030382e"
    "352e312e342e312e312e320000000001020000000180000020010200000001000000000802000000010100000009"
    "020000000000000000102c000000322e32352e363339303432353336393932363135353238373839383433303739"
    "383339333237353036343200";
// Orthanc
constexpr const char* kStoreResponseOfOrthanc =
    "0400000000920000008e0303000000000400000080000000000002001e000000312e322e3834302e31303030382e"
    "352e312e342e312e312e3438312e3500000000010200000001800000200102000000010000000008020000000101"
    "00000009020000000000000000102a000000312e322e3737372e3737372e37372e372e373737372e373737372e32"
    "3030333039303331353030323300";
// findscu
constexpr const char* kFindRequest =
    "04000000005e0000005a010300000000040000004c000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e31000000000102000000200000001001020000000100000000070200000000000000"
    "0008020000000100";
// dcmqrscp, and Orthanc
constexpr const char* kFindResponse =
    "04000000005e0000005a010300000000040000004c000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e31000000000102000000208000002001020000000100000000080200000001010000"
    "0009020000000000";
// Orthanc; its data set follows
constexpr const char* kMatchOfOrthanc =
    "04000000005e0000005a010300000000040000004c000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e31000000000102000000208000002001020000000100000000080200000001000000"
    "00090200000000ff";
// findscu --cancel 1
constexpr const char* kCancelRequest =
    "0400000000300000002c010300000000040000001e0000000000000102000000ff0f000020010200000001000000"
    "0008020000000101";
// movescu -aem NOWHERE
constexpr const char* kMoveRequest =
    "04000000006e0000006a030300000000040000005c000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e3200000000010200000021000000100102000000010000000006080000004e4f5748"
    "455245200000000702000000000000000008020000000100";
// dcmqrscp
constexpr const char* kMoveResponse =
    "04000000007c00000078030300000000040000006a000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e32000000000102000000218000002001020000000100000000080200000001010000"
    "0009020000000000000021100200000000000000221002000000000000002310020000000000";
// Orthanc
constexpr const char* kMoveFailureOfOrthanc =
    "04000000007c00000078030300000000040000006a000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e32000000000102000000218000002001020000000100000000080200000001010000"
    "00090200000000c0000021100200000000000000221002000000000000002310020000000000";
// getscu
constexpr const char* kGetRequest =
    "04000000005e0000005a010300000000040000004c000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e33000000000102000000100000001001020000000100000000070200000000000000"
    "0008020000000100";
// dcmqrscp
constexpr const char* kGetResponse =
    "04000000007c00000078010300000000040000006a000000000002001c000000312e322e3834302e31303030382e"
    "352e312e342e312e322e322e33000000000102000000108000002001020000000100000000080200000001010000"
    "0009020000000000000021100200000000000000221002000000000000002310020000000000";

struct Recorded {
  const char* pdu;
  bool (*isOfKind)(const DICOMCommandObject&);
  std::string_view sopClass;    // empty: it names none
  std::uint16_t numberElement;  // (0000,0110) of a request, (0000,0120) of what is about one
  bool hasDataSet;
  std::optional<std::uint16_t> status;
};

// All have Message ID 1.
const Recorded kRecorded[] = {
    {kEchoRequest, &CEchoRQ::Test, kEcho, 0x0110, false, {}},
    {kEchoResponse, &CEchoRSP::Test, kEcho, 0x0120, false, 0},
    {kStoreRequest, &CStoreRQ::Test, kCt, 0x0110, true, {}},
    {kStoreResponse, &CStoreRSP::Test, kCt, 0x0120, false, 0},
    {kStoreResponseOfOrthanc, &CStoreRSP::Test, kPlan, 0x0120, false, 0},
    {kFindRequest, &CFindRQ::Test, kFind, 0x0110, true, {}},
    {kFindResponse, &CFindRSP::Test, kFind, 0x0120, false, 0},
    {kMatchOfOrthanc, &CFindRSP::Test, kFind, 0x0120, true, 0xFF00},
    {kCancelRequest, &CCancelRQ::Test, "", 0x0120, false, {}},
    {kMoveRequest, &CMoveRQ::Test, kMove, 0x0110, true, {}},
    {kMoveResponse, &CMoveRSP::Test, kMove, 0x0120, false, 0},
    {kMoveFailureOfOrthanc, &CMoveRSP::Test, kMove, 0x0120, false, 0xC000},
    {kGetRequest, &CGetRQ::Test, kGet, 0x0110, true, {}},
    {kGetResponse, &CGetRSP::Test, kGet, 0x0120, false, 0},
};

/// A recorded command set, and what the library says in other words put in its place.
class But {
 public:
  explicit But(const char* pdu) : pdu_(Hex(pdu)) {
    // Behind the heads of PDU and PDV, and the group length.
    for (std::size_t at = 12 + 12; at < pdu_.size();) {
      const std::size_t element = pdu_.at(at + 2) | std::size_t{pdu_.at(at + 3)} << 8;
      const std::size_t length = pdu_.at(at + 4);
      const auto value = pdu_.begin() + static_cast<std::ptrdiff_t>(at + 8);
      elements_[static_cast<std::uint16_t>(element)] =
          Bytes(value, value + static_cast<std::ptrdiff_t>(length));
      at += 8 + length;
    }
  }
  But& Number(std::uint16_t element, std::uint16_t value) {
    elements_[element] = {static_cast<std::uint8_t>(value), static_cast<std::uint8_t>(value >> 8)};
    return *this;
  }
  /// DICOM PS3.7 takes any number but 0101 for a data set that follows: DCMTK writes 1, the library 0102.
  But& OurDataSetType() { return Number(0x0800, 0x0102); }
  /// Responses of the library to queries and retrievals repeat the number and the priority of the request.
  But& RequestRepeated() { return Number(0x0110, 1).Number(0x0700, 0); }

  /// And of a retrieval the library says how much remains in the last one, too, where DCMTK says nothing.
  But& NoneRemaining() { return Number(0x1020, 0); }

  operator Bytes() const {
    Elements all;
    for (const auto& [element, value] : elements_) all.Value(0, element, value);
    const auto size = static_cast<std::uint8_t>(all.Done().size());
    return Data(pdu_.at(10), pdu_.at(11), Joined({Elements().Value(0, 0, {size, 0, 0, 0}), all}));
  }

 private:
  Bytes pdu_;
  std::map<std::uint16_t, Bytes> elements_;
};

/// An association on which the recorded command can go, and the next request has the number 1.
struct RecordedAssociation : Association {
  RecordedAssociation(const char* recorded, std::string_view sopClass)
      : Association({{Hex(recorded).at(10), sopClass, kImplicit}}) {
    SetIdentifierCounter(1);
    pdu.PDataTF.MessagePresentationContextID = Hex(recorded).at(10);
  }
  /// The recorded request, as it is read here.
  void Take(const char* request, DICOMCommandObject& command) {
    peer.Send(Hex(request));
    ASSERT_NE(pdu.Read(command), 0);
  }
};

TEST(CommandSetsOfOthers, AreSentAgainAsTheyCame) {
  for (const Recorded& row : kRecorded) {
    SCOPED_TRACE(row.pdu);
    const Bytes pdu = Hex(row.pdu);
    const std::uint8_t contextID = pdu.at(10);
    Association association({{contextID, kCt, kImplicit}});
    association.peer.Send(pdu);
    DICOMCommandObject command;
    EXPECT_EQ(association.pdu.Read(command), contextID);
    EXPECT_TRUE(row.isOfKind(command));
    EXPECT_TRUE(association.pdu.Write(command, contextID));
    EXPECT_EQ(association.peer.Received(), pdu);
    EXPECT_EQ(Bytes(But(row.pdu)), pdu);
  }
}

TEST(CommandSetsOfOthers, SayWhatTheyMean) {
  for (const Recorded& row : kRecorded) {
    SCOPED_TRACE(row.pdu);
    RecordedAssociation association(row.pdu, kCt);
    DICOMCommandObject command;
    association.Take(row.pdu, command);
    const auto sopClass = UidOf(command, 0x0000, 0x0002);
    EXPECT_EQ(sopClass ? sopClass->View() : "", row.sopClass);
    EXPECT_EQ(CommandNumber(command, row.numberElement), 1);
    EXPECT_EQ(CommandNumber(command, 0x0900), row.status);
    EXPECT_EQ(HasDataSet(command), row.hasDataSet);
  }
}

TEST(CommandSetsOfOthers, AreRequestsThatTheLibraryWrites) {
  RecordedAssociation echo(kEchoRequest, kEcho);
  EXPECT_TRUE(About<CEchoRQ>(kEcho).Write(&echo.pdu));
  EXPECT_EQ(echo.peer.Received(), Hex(kEchoRequest));

  RecordedAssociation cancel(kCancelRequest, kFind);
  EXPECT_TRUE(CCancelRQ::Write(&cancel.pdu, 1));
  EXPECT_EQ(cancel.peer.Received(), Hex(kCancelRequest));

  RecordedAssociation store(kStoreRequest, kCt);
  DICOMDataObject object;
  PutUid(object, 0x0008, 0x0018, "2.25.63904253699261552878984307983932750642");
  EXPECT_TRUE(About<CStoreRQ>(kCt).Write(&store.pdu, &object));
  EXPECT_EQ(store.peer.ReceivePdu(), Bytes(But(kStoreRequest).OurDataSetType()));
}

TEST(CommandSetsOfOthers, AreQueriesThatTheLibraryWrites) {
  DICOMDataObject identifier;
  FillIdentifier(identifier);
  RecordedAssociation find(kFindRequest, kFind);
  EXPECT_TRUE(About<CFindRQ>(kFind).Write(&find.pdu, &identifier));
  // Archives serve what somebody waits for at a screen first: its queries have a low priority.
  EXPECT_EQ(find.peer.ReceivePdu(), Bytes(But(kFindRequest).OurDataSetType().Number(0x0700, 2)));

  FillIdentifier(identifier);
  RecordedAssociation move(kMoveRequest, kMove);
  EXPECT_TRUE(About<CMoveRQ>(kMove).Write(&move.pdu, &identifier, "NOWHERE"));
  EXPECT_EQ(move.peer.ReceivePdu(), Bytes(But(kMoveRequest).OurDataSetType()));

  FillIdentifier(identifier);
  RecordedAssociation get(kGetRequest, kGet);
  EXPECT_TRUE(About<CGetRQ>(kGet).Write(&get.pdu, &identifier));
  EXPECT_EQ(get.peer.ReceivePdu(), Bytes(But(kGetRequest).OurDataSetType()));
}

TEST(CommandSetsOfOthers, AreResponsesThatTheLibraryWrites) {
  DICOMCommandObject request;
  RecordedAssociation echo(kEchoRequest, kEcho);
  echo.Take(kEchoRequest, request);
  EXPECT_TRUE(About<CEchoRSP>(kEcho).Write(&echo.pdu, &request));
  EXPECT_EQ(echo.peer.Received(), Hex(kEchoResponse));

  request.Reset();
  RecordedAssociation store(kStoreRequest, kCt);
  store.Take(kStoreRequest, request);
  EXPECT_TRUE(About<CStoreRSP>(kCt).Write(&store.pdu, &request, 0));
  EXPECT_EQ(store.peer.Received(), Hex(kStoreResponse));

  // What Orthanc was asked.
  request.Reset();
  PutUid(request, 0x0000, 0x0002, kPlan);
  PutNumber16(request, 0x0000, 0x0110, 1);
  PutUid(request, 0x0000, 0x1000, "1.2.777.777.77.7.7777.7777.20030903150023");
  RecordedAssociation archive(kStoreResponseOfOrthanc, kPlan);
  EXPECT_TRUE(About<CStoreRSP>(kPlan).Write(&archive.pdu, &request, 0));
  EXPECT_EQ(archive.peer.Received(), Hex(kStoreResponseOfOrthanc));
}

TEST(CommandSetsOfOthers, AreResponsesToQueriesThatTheLibraryWrites) {
  DICOMCommandObject request;
  RecordedAssociation find(kFindRequest, kFind);
  find.Take(kFindRequest, request);
  EXPECT_TRUE(About<CFindRSP>(kFind).Write(&find.pdu, &request, 0));
  EXPECT_EQ(find.peer.ReceivePdu(), Bytes(But(kFindResponse).RequestRepeated()));
  DICOMDataObject match;
  FillIdentifier(match);
  EXPECT_TRUE(About<CFindRSP>(kFind).Write(&find.pdu, &request, 0xFF00, &match));
  EXPECT_EQ(find.peer.ReceivePdu(), Bytes(But(kMatchOfOrthanc).RequestRepeated().OurDataSetType()));

  request.Reset();
  RecordedAssociation move(kMoveRequest, kMove);
  move.Take(kMoveRequest, request);
  EXPECT_TRUE(About<CMoveRSP>(kMove).Write(&move.pdu, &request, 0, {}));
  EXPECT_EQ(move.peer.ReceivePdu(), Bytes(But(kMoveResponse).RequestRepeated().NoneRemaining()));
  EXPECT_TRUE(About<CMoveRSP>(kMove).Write(&move.pdu, &request, 0xC000, {}));
  EXPECT_EQ(move.peer.ReceivePdu(),
            Bytes(But(kMoveFailureOfOrthanc).RequestRepeated().NoneRemaining()));

  request.Reset();
  RecordedAssociation get(kGetRequest, kGet);
  get.Take(kGetRequest, request);
  EXPECT_TRUE(About<CGetRSP>(kGet).Write(&get.pdu, &request, 0, {}));
  EXPECT_EQ(get.peer.ReceivePdu(), Bytes(But(kGetResponse).RequestRepeated().NoneRemaining()));
}

}  // namespace
}  // namespace tessaret::test
