#include "net/command_elements.h"

#include <gtest/gtest.h>

#include "core/dicom_object.h"

namespace tessaret::test {
namespace {

TEST(CommandElements, TakeNumbersOfTheirOwnLengthOnly) {
  DICOMDataObject object;
  PutNumber16(object, 0x0028, 0x0010, 0x1234);
  PutNumber32(object, 0x0028, 0x0011, 0x1234);
  PutBytes(object, 0x0028, 0x0012, type_code::US, "");
  EXPECT_EQ(Number16(object, 0x0028, 0x0010), 0x1234);
  EXPECT_EQ(Number16(object, 0x0028, 0x0011), std::nullopt);
  EXPECT_EQ(Number16(object, 0x0028, 0x0012), std::nullopt);
  EXPECT_EQ(Number16(object, 0x0028, 0x0013), std::nullopt);
}

TEST(CommandElements, TakeUidsOfAtMost64BytesWithoutTheirPad) {
  const auto uidOf = [](std::string_view value) {
    DICOMDataObject object;
    auto* bytes = new std::uint8_t[value.size() + 1];
    std::copy(value.begin(), value.end(), bytes);
    object.Push(new VR(0x0008, 0x0016, static_cast<std::uint32_t>(value.size()), bytes));
    const auto uid = UidOf(object, 0x0008, 0x0016);
    return uid ? std::string(uid->Text.data(), uid->Size) : "refused";
  };
  using std::string_view_literals::operator""sv;
  EXPECT_EQ(uidOf("1.2.3\0"sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3 "sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3x"sv), "1.2.3");
  EXPECT_EQ(uidOf("1.2.3."sv), "1.2.3.");
  EXPECT_EQ(uidOf("1.2.34"sv), "1.2.34");
  EXPECT_EQ(uidOf("1.2.3\0\0"sv), "1.2.3\0"sv);
  EXPECT_EQ(uidOf(""sv), "refused");
  EXPECT_EQ(uidOf("  "sv), "refused");
  EXPECT_EQ(uidOf("\0\0"sv), "refused");
  EXPECT_EQ(uidOf(std::string(64, '1')), std::string(64, '1'));
  EXPECT_EQ(uidOf(std::string(65, '1')), "refused");
  EXPECT_EQ(UidOf(DICOMDataObject(), 0x0008, 0x0016), std::nullopt);
}

TEST(CommandElements, TakeNothingOfAnElementThatHasItems) {
  // As a reader leaves a value behind which a tag of items stands.
  DICOMDataObject object;
  PutNumber16(object, 0x0000, 0x0100, 0x0030);
  ASSERT_TRUE(object.Push(new DICOMDataObject()));
  PutUid(object, 0x0008, 0x0016, "1.2.3");
  ASSERT_TRUE(object.Push(new DICOMDataObject()));
  EXPECT_EQ(object.GetUINT16(0x0000, 0x0100), 0x0030);
  EXPECT_EQ(Number16(object, 0x0000, 0x0100), std::nullopt);
  EXPECT_EQ(UidOf(object, 0x0008, 0x0016), std::nullopt);
  EXPECT_EQ(ValueOf(object.GetVR(0x0008, 0x0016)), "");
}

TEST(CommandElements, HaveTheirBytesAsValues) {
  DICOMDataObject object;
  PutBytes(object, 0x0000, 0x0600, type_code::AE, " AB ");
  PutBytes(object, 0x0000, 0x0902, type_code::LO, "");
  ASSERT_TRUE(object.Push(new VR(0x0008, 0x0060, 2, nullptr)));
  EXPECT_EQ(ValueOf(object.GetVR(0x0000, 0x0600)), " AB ");
  EXPECT_EQ(ValueOf(object.GetVR(0x0000, 0x0902)), "");
  EXPECT_EQ(ValueOf(object.GetVR(0x0008, 0x0060)), "") << "a length without bytes";
  EXPECT_EQ(ValueOf(nullptr), "");
}

}  // namespace
}  // namespace tessaret::test
