// Which SOP class an object is stored as.
#include "services/dicom_storage.h"

#include <gtest/gtest.h>

#include "core/object_maker.h"

namespace tessaret::test {
namespace {

constexpr TagKey kSopClassTag = MakeTagKey(0x0008, 0x0016);
constexpr TagKey kModalityTag = MakeTagKey(0x0008, 0x0060);

std::string StoredAs(const DICOMObject& object) {
  DicomStorage storage(object);
  UID uid;
  EXPECT_TRUE(storage.GetUID(uid));
  EXPECT_EQ(uid, storage.UID);
  return std::string(uid.View());
}

std::string StoredAs(std::initializer_list<VR*> elements) {
  const std::unique_ptr<DICOMObject> object(NewObject(elements));
  return StoredAs(*object);
}

std::string StoredAsModality(std::string_view modality) {
  return StoredAs({NewVR(kModalityTag, modality)});
}

TEST(DicomStorage, TakesTheSopClassThatTheObjectSays) {
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, "1.2.3.4"), NewVR(kModalityTag, "CT")}), "1.2.3.4");
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, std::string_view("1.2.3\0", 6))}), "1.2.3");
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, "1.2.3 ")}), "1.2.3");
}

TEST(DicomStorage, AnUnusableSopClassIsNoneWhateverTheModality) {
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, ""), NewVR(kModalityTag, "CT")}), "");
  const std::string tooLong = "1." + std::string(63, '2');
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, tooLong), NewVR(kModalityTag, "CT")}), "");
  const std::string longest = "1." + std::string(62, '2');
  EXPECT_EQ(StoredAs({NewVR(kSopClassTag, longest)}), longest);
}

TEST(DicomStorage, WithoutOneTheModalityTellsIt) {
  EXPECT_EQ(StoredAsModality("CR"), "1.2.840.10008.5.1.4.1.1.1");
  EXPECT_EQ(StoredAsModality("CT"), "1.2.840.10008.5.1.4.1.1.2");
  EXPECT_EQ(StoredAsModality("MR"), "1.2.840.10008.5.1.4.1.1.4");
  EXPECT_EQ(StoredAsModality("NM"), "1.2.840.10008.5.1.4.1.1.5");
  EXPECT_EQ(StoredAsModality("US"), "1.2.840.10008.5.1.4.1.1.6");
  EXPECT_EQ(StoredAsModality("SC"), "1.2.840.10008.5.1.4.1.1.7");
}

TEST(DicomStorage, TheFirstTwoLettersOfTheModalityCountInAnyCase) {
  EXPECT_EQ(StoredAsModality("ct"), "1.2.840.10008.5.1.4.1.1.2");
  EXPECT_EQ(StoredAsModality("mR"), "1.2.840.10008.5.1.4.1.1.4");
  EXPECT_EQ(StoredAsModality("USXX"), "1.2.840.10008.5.1.4.1.1.6");
  EXPECT_EQ(StoredAsModality("NM\\CT"), "1.2.840.10008.5.1.4.1.1.5");
}

TEST(DicomStorage, OtherModalitiesTellNone) {
  for (const char* modality : {"", "C", "PT", "OT", " CT", "XA"}) {
    EXPECT_EQ(StoredAsModality(modality), "") << modality;
  }
  EXPECT_EQ(StoredAs({}), "");
  // One whose length was read alone, and one that has come to hold an item.
  EXPECT_EQ(StoredAs({new VR(0x0008, 0x0060, 8, nullptr)}), "");
  const std::unique_ptr<DICOMObject> object(NewObject({NewVR(kModalityTag, "CT")}));
  ASSERT_TRUE(object->Push(new DICOMObject()));
  EXPECT_EQ(StoredAs(*object), "");
}

}  // namespace
}  // namespace tessaret::test
