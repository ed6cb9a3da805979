// Class "Tessaret.DcmDictionary", by its slots and by name.
#include <string>

#include <gtest/gtest.h>

#include "support/allocation_failure.h"
#include "tessaret/tessaret.hpp"

namespace tessaret {
namespace {

class Dictionary : public testing::Test {
 protected:
  Variant Call(const char* name, MemberKind kind, std::vector<Variant> arguments) {
    std::int32_t member = -1;
    EXPECT_EQ(dictionary_->FindMember(name, kind, &member), kOk);
    Variant result;
    EXPECT_EQ(dictionary_->Invoke(member, arguments.data(),
                                  static_cast<std::uint32_t>(arguments.size()), &result),
              kOk);
    arguments_ = std::move(arguments);
    return result;
  }
  std::string TextAt(std::size_t at) const { return arguments_[at].ToString().Utf8(); }

  Ref<IDcmDictionary> dictionary_ = Create<IDcmDictionary>("Tessaret.DcmDictionary");
  std::vector<Variant> arguments_;
};

TEST_F(Dictionary, HasThousandsOfEntriesInTheOrderOfTags) {
  std::int16_t count = 0;
  ASSERT_EQ(dictionary_->get_NumEntries(&count), kOk);
  EXPECT_GT(count, 5000);
  EXPECT_EQ(Call("NumEntries", MemberKind::kGet, {}).AsShort(), count);
  std::int64_t last = -1;
  for (std::int16_t at = 0; at < count; ++at) {
    std::int32_t group = -1;
    std::int32_t element = -1;
    VariantBool found;
    ASSERT_EQ(dictionary_->GetEntry(at, &group, &element, &found), kOk);
    ASSERT_TRUE(found.IsTrue());
    const std::int64_t key = std::int64_t{group} << 16 | element;
    ASSERT_GT(key, last);
    last = key;
  }
}

TEST_F(Dictionary, HasNoEntriesOutsideItsRange) {
  std::int16_t count = 0;
  ASSERT_EQ(dictionary_->get_NumEntries(&count), kOk);
  for (const std::int16_t at :
       {std::int16_t{-1}, std::int16_t{-32768}, count, std::int16_t{32767}}) {
    std::int32_t group = 77;
    std::int32_t element = 78;
    VariantBool found = true;
    EXPECT_EQ(dictionary_->GetEntry(at, &group, &element, &found), kOk);
    EXPECT_EQ(found.value, 0);
    EXPECT_EQ(group, 77);
    EXPECT_EQ(element, 78);
  }
}

TEST_F(Dictionary, KnowsTypeAndNameOfAnElement) {
  String letters;
  String name;
  VariantBool found;
  ASSERT_EQ(dictionary_->GetVRDescription(0x0010, 0x0010, &letters, &name, &found), kOk);
  EXPECT_EQ(found.value, -1);
  EXPECT_EQ(letters.Utf8(), "PN");
  EXPECT_EQ(name.Utf8(), "Patient's Name");
  // The low 16 bits count.
  ASSERT_EQ(dictionary_->GetVRDescription(0x70010, -65520, &letters, &name, &found), kOk);
  EXPECT_EQ(name.Utf8(), "Patient's Name");
}

TEST_F(Dictionary, LeavesTheAnswersAloneForAnUnknownElement) {
  String letters("old");
  String name("name");
  VariantBool found = true;
  ASSERT_EQ(dictionary_->GetVRDescription(0x0009, 0x1001, &letters, &name, &found), kOk);
  EXPECT_EQ(found.value, 0);
  EXPECT_EQ(letters.Utf8(), "old");
  EXPECT_EQ(name.Utf8(), "name");
}

TEST_F(Dictionary, KnowsWhatAUidDenotes) {
  String text("old");
  String kind;
  String modality;
  VariantBool isImage;
  VariantBool found;
  ASSERT_EQ(dictionary_->GetUIDDescription("1.2.840.10008.5.1.4.1.1.2", &text, &kind, &modality,
                                           &isImage, &found),
            kOk);
  EXPECT_EQ(found.value, -1);
  EXPECT_EQ(text.Utf8(), "CTImageStorage");
  EXPECT_EQ(modality.Utf8(), "CT");
  EXPECT_EQ(isImage.value, -1);
  EXPECT_FALSE(kind.IsEmpty());
  ASSERT_EQ(dictionary_->GetUIDDescription("1.2.840.10008.1.2", &text, &kind, &modality, &isImage,
                                           &found),
            kOk);
  EXPECT_EQ(text.Utf8(), "ImplicitVRLittleEndian");
  EXPECT_EQ(isImage.value, 0);
  ASSERT_EQ(dictionary_->GetUIDDescription("1.2.3", &text, &kind, &modality, &isImage, &found),
            kOk);
  EXPECT_EQ(found.value, 0);
  EXPECT_EQ(text.Utf8(), "ImplicitVRLittleEndian");
  ASSERT_EQ(dictionary_->GetUIDDescription(String(), &text, &kind, &modality, &isImage, &found),
            kOk);
  EXPECT_EQ(found.value, 0);
}

TEST_F(Dictionary, IsCalledByName) {
  EXPECT_TRUE(Call("GetEntry", MemberKind::kMethod, {0, Variant(), Variant()}).AsBool().IsTrue());
  EXPECT_TRUE(arguments_[1].Is(VariantType::kLong));
  EXPECT_TRUE(Call("GetVRDescription", MemberKind::kMethod, {0x0010, 0x0010, Variant(), Variant()})
                  .AsBool()
                  .IsTrue());
  EXPECT_EQ(TextAt(2), "PN");
  EXPECT_EQ(TextAt(3), "Patient's Name");
  EXPECT_FALSE(
      Call("GetVRDescription", MemberKind::kMethod, {9, 1, "old", "name"}).AsBool().IsTrue());
  EXPECT_EQ(TextAt(2), "old");
  EXPECT_TRUE(Call("GetUIDDescription", MemberKind::kMethod,
                   {"1.2.840.10008.5.1.4.1.1.4", Variant(), Variant(), Variant(), Variant()})
                  .AsBool()
                  .IsTrue());
  EXPECT_EQ(TextAt(1), "MRImageStorage");
  EXPECT_EQ(TextAt(3), "MR");
  EXPECT_TRUE(arguments_[4].AsBool().IsTrue());
}

TEST_F(Dictionary, IsDescribedAsItsHeaderSays) {
  const InterfaceInfo* info = dictionary_->Describe();
  EXPECT_STREQ(info->name, "IDcmDictionary");
  ASSERT_EQ(info->memberCount, 4u);
  EXPECT_STREQ(info->members[0].name, "NumEntries");
  EXPECT_STREQ(info->members[1].name, "GetEntry");
  EXPECT_STREQ(info->members[2].name, "GetVRDescription");
  EXPECT_STREQ(info->members[3].name, "GetUIDDescription");
  EXPECT_STREQ(info->members[0].help, "How many elements the dictionary has.");
  EXPECT_STREQ(info->members[3].arguments[0].name, "UID");
  EXPECT_EQ(info->members[3].arguments[4].flow, ArgumentFlow::kOut);
}

TEST_F(Dictionary, RefusesNullPointers) {
  std::int32_t number = 0;
  String text;
  VariantBool flag;
  EXPECT_EQ(dictionary_->get_NumEntries(nullptr), kPointer);
  EXPECT_EQ(dictionary_->GetEntry(0, nullptr, &number, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetEntry(0, &number, nullptr, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetEntry(0, &number, &number, nullptr), kPointer);
  EXPECT_EQ(dictionary_->GetVRDescription(0x10, 0x10, nullptr, &text, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetVRDescription(0x10, 0x10, &text, nullptr, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetVRDescription(0x10, 0x10, &text, &text, nullptr), kPointer);
  EXPECT_EQ(dictionary_->GetUIDDescription("1", nullptr, &text, &text, &flag, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetUIDDescription("1", &text, nullptr, &text, &flag, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetUIDDescription("1", &text, &text, nullptr, &flag, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetUIDDescription("1", &text, &text, &text, nullptr, &flag), kPointer);
  EXPECT_EQ(dictionary_->GetUIDDescription("1", &text, &text, &text, &flag, nullptr), kPointer);
}

TEST_F(Dictionary, SaysWhenMemoryEnds) {
  std::uint64_t failures = 0;
  test::FailEveryAllocation(
      [&] {
        String letters;
        String name;
        VariantBool found;
        const Status status =
            dictionary_->GetVRDescription(0x0020, 0x000D, &letters, &name, &found);
        if (status == kOutOfMemory) ++failures;
        EXPECT_EQ(found.IsTrue(), status == kOk);
        EXPECT_EQ(letters.IsNull(), status != kOk);
        EXPECT_EQ(name.IsNull(), status != kOk);
      },
      [] {});
  EXPECT_GT(failures, 2u);
  failures = 0;
  const String uid("1.2.840.10008.5.1.4.1.1.2");
  test::FailEveryAllocation(
      [&] {
        String text;
        String kind;
        String modality;
        VariantBool isImage;
        VariantBool found;
        const Status status =
            dictionary_->GetUIDDescription(uid, &text, &kind, &modality, &isImage, &found);
        if (status == kOutOfMemory) ++failures;
        EXPECT_EQ(found.IsTrue(), status == kOk);
        EXPECT_EQ(isImage.IsTrue(), status == kOk);
        for (const String* answer : {&text, &kind, &modality})
          EXPECT_EQ(answer->IsNull(), status != kOk);
      },
      [] {});
  EXPECT_GT(failures, 3u);
  EXPECT_EQ(LastError().source, "Tessaret.DcmDictionary");
  EXPECT_EQ(LastError().text, "Not enough memory");
}

}  // namespace
}  // namespace tessaret
