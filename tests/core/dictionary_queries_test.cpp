#include "core/dictionary_queries.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace tessaret {
namespace {

bool Attach(RTC& rtc, std::string_view text) { return rtc.AttachBytes(text.data(), text.size()); }

class DictionaryQueries : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Attach(
        rtc_, "\n{0x0010 0x0020 LO \"ID\"}\n{0x0010 0x0010 PN \"Name\"}\n(0028,0010) VR=\"US\"\n"));
    uids_.ReadText("A 1.2 1 B C\nD 1.3 0 E\n");
  }

  DcmDictionary rtc_;
  UIDDictionary uids_;
};

/// A dictionary of `count` entries, whose keys are 0 to count - 1.
void Fill(RTC& rtc, std::uint32_t count) {
  std::string text = "\n";
  for (std::uint32_t key = 0; key < count; ++key) {
    text += "{" + std::to_string(key >> 16) + " " + std::to_string(key & 0xFFFF) + " US \"d\"}\n";
  }
  ASSERT_TRUE(Attach(rtc, text));
}

TEST_F(DictionaryQueries, NumEntriesIsTheCount) { EXPECT_EQ(NumEntries(rtc_), 3); }

TEST_F(DictionaryQueries, NumEntriesOfAnEmptyDictionaryIsZero) { EXPECT_EQ(NumEntries(RTC()), 0); }

TEST_F(DictionaryQueries, NumEntriesStopsAtTheLargestShort) {
  Fill(rtc_, 32767);
  EXPECT_EQ(NumEntries(rtc_), 32767);
  Fill(rtc_, 32768);
  EXPECT_EQ(NumEntries(rtc_), 32767);
  Fill(rtc_, 65537);
  EXPECT_EQ(NumEntries(rtc_), 32767);
}

TEST_F(DictionaryQueries, GetEntryGoesThroughTheTagsInOrder) {
  std::uint16_t group = 0, element = 0;
  EXPECT_TRUE(GetEntry(rtc_, 0, group, element));
  EXPECT_EQ(MakeTagKey(group, element), 0x00100010u);
  EXPECT_TRUE(GetEntry(rtc_, 1, group, element));
  EXPECT_EQ(MakeTagKey(group, element), 0x00100020u);
  EXPECT_TRUE(GetEntry(rtc_, 2, group, element));
  EXPECT_EQ(MakeTagKey(group, element), 0x00280010u);
}

TEST_F(DictionaryQueries, GetEntryOutsideTheEntriesTouchesNothing) {
  std::uint16_t group = 7, element = 8;
  for (const std::int16_t index : std::initializer_list<std::int16_t>{-32768, -1, 3, 32767}) {
    EXPECT_FALSE(GetEntry(rtc_, index, group, element)) << index;
  }
  EXPECT_FALSE(GetEntry(RTC(), 0, group, element));
  EXPECT_EQ(group, 7);
  EXPECT_EQ(element, 8);
}

TEST_F(DictionaryQueries, GetEntryReachesEntry32767) {
  Fill(rtc_, 40000);
  std::uint16_t group = 7, element = 8;
  EXPECT_TRUE(GetEntry(rtc_, 32767, group, element));
  EXPECT_EQ(MakeTagKey(group, element), 32767u);
}

TEST_F(DictionaryQueries, GetVRDescriptionGivesLettersAndText) {
  std::string letters, text;
  EXPECT_TRUE(GetVRDescription(rtc_, 0x0010, 0x0010, letters, text));
  EXPECT_EQ(letters, "PN");
  EXPECT_EQ(text, "Name");
}

TEST_F(DictionaryQueries, GetVRDescriptionGivesAnEmptyTextWhereThereIsNone) {
  std::string letters, text = "before";
  EXPECT_TRUE(GetVRDescription(rtc_, 0x0028, 0x0010, letters, text));
  EXPECT_EQ(letters, "US");
  EXPECT_EQ(text, "");
}

TEST_F(DictionaryQueries, GetVRDescriptionOfAnUnknownTagTouchesNothing) {
  std::string letters = "as", text = "was";
  EXPECT_FALSE(GetVRDescription(rtc_, 0x0009, 0x0010, letters, text));
  EXPECT_FALSE(GetVRDescription(RTC(), 0x0010, 0x0010, letters, text));
  EXPECT_EQ(letters + text, "aswas");
}

TEST_F(DictionaryQueries, GetUIDDescriptionGivesAllFields) {
  std::string description, type, modality;
  bool isImage = false;
  EXPECT_TRUE(GetUIDDescription(uids_, "1.2", description, type, modality, isImage));
  EXPECT_EQ(description + type + modality, "BAC");
  EXPECT_TRUE(isImage);
  EXPECT_TRUE(GetUIDDescription(uids_, "1.3", description, type, modality, isImage));
  EXPECT_EQ(description + type + modality, "ED");
  EXPECT_FALSE(isImage);
}

TEST_F(DictionaryQueries, GetUIDDescriptionOfAnUnknownUidTouchesNothing) {
  std::string description = "as", type = "it", modality = "was";
  bool isImage = true;
  EXPECT_FALSE(GetUIDDescription(uids_, "1.4", description, type, modality, isImage));
  EXPECT_EQ(description + type + modality, "asitwas");
  EXPECT_TRUE(isImage);
}

}  // namespace
}  // namespace tessaret
