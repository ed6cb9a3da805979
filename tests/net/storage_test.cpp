#include "net/storage.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "net/command_elements.h"
#include "net/dimse_status.h"
#include "net/identifiers.h"
#include "net/service_helpers.h"

namespace tessaret::test {
namespace {

template <class Storage>
class Keeping : public Storage {
 public:
  std::uint32_t StoreObject(DICOMDataObject* object) override {
    if (object == nullptr) return 1;
    stored += NameIn(*object) + ";";
    if (throws) throw std::runtime_error("no");
    return status;
  }
  std::string stored;
  std::uint32_t status = 0;
  bool throws = false;
};

Bytes StoreRequest(std::string_view sopClass, std::uint16_t dataSetType = 0x0102) {
  return Data(3, kWholeCommand,
              Command()
                  .Uid(0x0002, sopClass)
                  .Number(0x0100, 0x0001)
                  .Number(0x0110, 77)
                  .Number(0x0700, 0)
                  .Number(0x0800, dataSetType)
                  .Uid(0x1000, "1.2.3"));
}

Bytes StoreResponse(std::string_view sopClass, std::uint16_t status, std::uint16_t message = 77) {
  return Data(3, kWholeCommand,
              Command()
                  .Uid(0x0002, sopClass)
                  .Number(0x0100, 0x8001)
                  .Number(0x0120, message)
                  .Number(0x0800, 0x0101)
                  .Number(0x0900, status)
                  .Uid(0x1000, "1.2.3"));
}

TEST(Storage, IsDoneByAnyResponseWhateverItsStatus) {
  for (const std::uint16_t status : Bytes{0, 1}) {
    Association association(kContexts);
    association.peer.SendAll(StoreResponse(kCt, status));
    CTStorage storage;
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    EXPECT_TRUE(storage.Write(&association.pdu, &object));
    EXPECT_EQ(storage.Status, status);
    EXPECT_EQ(TypesOf(association.peer.Received()), "44");
  }
  for (const Bytes& answer : {EchoResponse(0), ReleaseRequest(), Bytes{}}) {
    Association association(kContexts);
    association.peer.SendAll(answer);
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    EXPECT_FALSE(CTStorage().Write(&association.pdu, &object));
  }
}

TEST(Storage, TakesNoLateResponseForThatOfTheNextObject) {
  Association association(kContexts);
  SetIdentifierCounter(21);
  association.peer.Send(Joined({EchoResponse(0), StoreResponse(kCt, 0, 21),
                                StoreResponse(kCt, 0xA700, 23), StoreResponse(kCt, 0xB000, 25)}));
  const auto statusOfNext = [&] {
    CTStorage storage;
    DICOMDataObject object;
    PutUid(object, 0x0008, 0x0018, "1.2.3");
    return storage.Write(&association.pdu, &object) ? storage.Status : -1;
  };
  EXPECT_EQ(statusOfNext(), -1);
  EXPECT_EQ(statusOfNext(), 0xA700);
  EXPECT_EQ(statusOfNext(), 0xB000);
  EXPECT_TRUE(association.pdu.AbandonedMessages.empty());
}

TEST(Storage, OfAnUnknownClassSendsNothing) {
  Association association(kContexts);
  DICOMDataObject object;
  UnknownStorage storage;
  UID uid;
  EXPECT_FALSE(storage.GetUID(uid));
  EXPECT_FALSE(storage.Write(&association.pdu, &object));
  EXPECT_EQ(storage.StoreObject(&object), 0u);
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Storage, AnswersWithTheStatusOfTheHookCutToTwoBytes) {
  const struct {
    std::uint32_t status;
    bool throws;
    std::uint16_t answer;
  } rows[] = {{0, false, 0}, {0xA700, false, 0xA700}, {0x1B000, false, 0xB000}, {0, true, 0xC001}};
  for (const auto& row : rows) {
    Association association(kContexts);
    association.peer.Send(Joined({StoreRequest("1.2.840.99"), Data(3, kLastPart, NameBytes("A"))}));
    Keeping<UnknownStorage> storage;  // takes any class
    storage.status = row.status;
    storage.throws = row.throws;
    DICOMCommandObject command;
    ReadCommand(association, command);
    DICOMDataObject object;
    // The class was not agreed, so there is no context but that of the request to answer on.
    EXPECT_TRUE(storage.Read(&association.pdu, &command, &object));
    EXPECT_EQ(storage.stored, "A ;");
    EXPECT_EQ(association.peer.Received(), StoreResponse("1.2.840.99", row.answer));
  }
}

TEST(Storage, EndsWhereTheHookClosesTheLink) {
  class Closing : public UnknownStorage {
   public:
    explicit Closing(PDU_Service& pdu) : pdu_(pdu) {}
    std::uint32_t StoreObject(DICOMDataObject*) override {
      pdu_.Link.Close();
      return 0;
    }

   private:
    PDU_Service& pdu_;
  };
  Association association(kContexts);
  association.peer.Send(Joined({StoreRequest(kCt), Data(3, kLastPart, NameBytes("A"))}));
  DICOMCommandObject command;
  ReadCommand(association, command);
  DICOMDataObject object;
  EXPECT_FALSE(Closing(association.pdu).Read(&association.pdu, &command, &object));
  EXPECT_EQ(association.pdu.Read(command), 0);
  EXPECT_TRUE(association.peer.ReceiveToEnd().empty());
}

/// What is stored of a request, which is all that comes.
std::string StoredOf(const Bytes& request, bool expected) {
  Association association(kContexts);
  association.peer.SendAll(request);
  Keeping<CTStorage> storage;
  DICOMCommandObject command;
  ReadCommand(association, command);
  DICOMDataObject object;
  EXPECT_EQ(storage.Read(&association.pdu, &command, &object), expected);
  return storage.stored;
}

TEST(Storage, StoresAnEmptyObjectWhereTheRequestSaysThatNoneFollows) {
  EXPECT_EQ(StoredOf(StoreRequest(kCt, 0x0101), true), ";");
}

TEST(Storage, TakesAResponseInsteadAndNothingElse) {
  Association association(kContexts);
  Keeping<UnknownStorage> storage;
  DICOMDataObject object;
  DICOMCommandObject response;
  PutNumber16(response, 0, 0x0100, 0x8001);
  PutNumber16(response, 0, 0x0900, 0xA900);
  EXPECT_TRUE(storage.Read(&association.pdu, &response, &object));
  EXPECT_EQ(storage.Status, 0xA900);
  DICOMCommandObject other;
  PutNumber16(other, 0, 0x0100, 0x0030);
  EXPECT_FALSE(storage.Read(&association.pdu, &other, &object));
  EXPECT_FALSE(storage.Read(nullptr, &response, &object));
  EXPECT_FALSE(storage.Read(&association.pdu, nullptr, &object));
  EXPECT_FALSE(storage.Read(&association.pdu, &response, nullptr));
  EXPECT_EQ(storage.stored, "");
  EXPECT_TRUE(association.peer.Received().empty());
}

TEST(Storage, StoresNothingWhereTheObjectDoesNotCome) {
  EXPECT_EQ(StoredOf(StoreRequest(kCt), false), "");
}

TEST(Storage, OfOneClassTakesNoOther) {
  Association association(kContexts);
  Keeping<CTStorage> storage;
  const auto taken = [&](std::string_view uid) {
    DICOMCommandObject command;
    if (!uid.empty()) PutUid(command, 0, 0x0002, uid);
    PutNumber16(command, 0, 0x0100, 0x0001);
    PutNumber16(command, 0, 0x0800, 0x0101);
    DICOMDataObject object;
    return storage.Read(&association.pdu, &command, &object);
  };
  EXPECT_FALSE(taken(kFind));
  EXPECT_FALSE(taken(""));
  EXPECT_EQ(storage.stored, "");
  EXPECT_TRUE(taken(kCt));
  DICOMDataObject object;
  EXPECT_FALSE(storage.Read(&association.pdu, nullptr, &object));
}

TEST(Storage, HasAClassForEachSopClass) {
  EXPECT_EQ(UidOfService<ComputedRadiographyStorage>(), "1.2.840.10008.5.1.4.1.1.1");
  EXPECT_EQ(UidOfService<CTStorage>(), "1.2.840.10008.5.1.4.1.1.2");
  EXPECT_EQ(UidOfService<RetiredUltrasoundMultiframeStorage>(), "1.2.840.10008.5.1.4.1.1.3");
  EXPECT_EQ(UidOfService<MRStorage>(), "1.2.840.10008.5.1.4.1.1.4");
  EXPECT_EQ(UidOfService<RetiredNuclearMedicineStorage>(), "1.2.840.10008.5.1.4.1.1.5");
  EXPECT_EQ(UidOfService<RetiredUltrasoundStorage>(), "1.2.840.10008.5.1.4.1.1.6");
  EXPECT_EQ(UidOfService<SecondaryCaptureStorage>(), "1.2.840.10008.5.1.4.1.1.7");
  EXPECT_EQ(UidOfService<OverlayStorage>(), "1.2.840.10008.5.1.4.1.1.8");
  EXPECT_EQ(UidOfService<CurveStorage>(), "1.2.840.10008.5.1.4.1.1.9");
  EXPECT_EQ(UidOfService<ModalityLutStorage>(), "1.2.840.10008.5.1.4.1.1.10");
  EXPECT_EQ(UidOfService<VoiLutStorage>(), "1.2.840.10008.5.1.4.1.1.11");
  EXPECT_EQ(UidOfService<GEPrivateStorage>(), "1.2.840.113619.4.2");
  EXPECT_EQ(UidOfService<GESecondPrivateStorage>(), "1.2.840.113619.4.3");
}

TEST(Storage, KnowsWarningsByTheirFirstDigit) {
  EXPECT_TRUE(dimse_status::IsWarning(0xB000));
  EXPECT_TRUE(dimse_status::IsWarning(0xB007));
  EXPECT_FALSE(dimse_status::IsWarning(0));
  EXPECT_FALSE(dimse_status::IsWarning(0xA700));
  EXPECT_FALSE(dimse_status::IsWarning(0xC000));
}

}  // namespace
}  // namespace tessaret::test
