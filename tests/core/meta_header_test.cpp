// Group 0002 as the library writes it.
#include "core/meta_header.h"

#include <gtest/gtest.h>

#include "core/coding_helpers.h"
#include "core/element_maker.h"

namespace tessaret::test {
namespace {

constexpr std::string_view kClassUid = "1.2.826.0.1.5518204.7.460.20000624";
static_assert(kClassUid.size() == 34);
const std::string kJpegUid = "1.2.840.10008.1.2.4.50";  // 22 characters

std::unique_ptr<DICOMObject> Instance() {
  auto object = std::make_unique<DICOMObject>();
  object->Push(NewElement(0x0008, 0x0016, type_code::UI, Bytes{'1', '.', '2', 0}));
  object->Push(NewElement(0x0008, 0x0018, type_code::UI, BytesOf("1.2.3.")));
  object->Push(NewElement(0x0010, 0x0010, type_code::PN, "A "));
  return object;
}

void Add(DICOMObject& object, std::int32_t mode) {
  EXPECT_TRUE(DataSetCoder().AddMetaHeader(object, mode));
}

std::uint32_t GroupLength(const DICOMObject& object) {
  return LoadLittle32(At(object, 0x0002, 0x0000).Data);
}

TEST(MetaHeader, HasItsElementsWithTheirTypesAndValues) {
  const auto object = Instance();
  Add(*object, 3);
  EXPECT_EQ(TagsOf(*object),
            "(0002,0000) (0002,0001) (0002,0002) (0002,0003) (0002,0010) (0002,0012) (0002,0013) "
            "(0002,0016) "
            "(0008,0016) (0008,0018) (0010,0010)");
  struct Expected {
    std::uint16_t element;
    VrCode type;
    std::string value;
  };
  const Expected expected[] = {
      {0x0001, type_code::OB, std::string("\0\1", 2)},
      {0x0002, type_code::UI, std::string("1.2\0", 4)},
      {0x0003, type_code::UI, "1.2.3."},
      {0x0010, type_code::UI, std::string("1.2.840.10008.1.2\0", 18)},
      {0x0012, type_code::UI, std::string(kClassUid)},
      {0x0013, type_code::SH, "QX/W32/1.6.9"},
      {0x0016, type_code::AE, std::string(16, ' ')},
  };
  for (const Expected& one : expected) {
    const VR& vr = At(*object, 0x0002, one.element);
    EXPECT_EQ(vr.TypeCode, one.type) << one.element;
    EXPECT_EQ(vr.Length, one.value.size()) << one.element;
    EXPECT_EQ(ValueText(vr), one.value) << one.element;
    EXPECT_EQ(vr.OwnsData, 1u);
  }
  EXPECT_EQ(At(*object, 0x0002, 0x0000).TypeCode, type_code::UL);
  EXPECT_EQ(At(*object, 0x0002, 0x0000).Length, 4u);
  EXPECT_EQ(GroupLength(*object),
            14u + (8 + 4) + (8 + 6) + (8 + 18) + (8 + 34) + (8 + 12) + (8 + 16));
}

TEST(MetaHeader, TheGroupLengthCountsTheBytesThatAreWritten) {
  for (const std::string& syntax : {std::string(), kJpegUid, std::string("1.2.840.10008.1.2")}) {
    const auto object = Instance();
    if (!syntax.empty()) object->Push(NewElement(0x0002, 0x0010, type_code::kNone, syntax));
    Add(*object, 3);
    const std::uint32_t stated = GroupLength(*object);
    delete object->Remove(0x0008, 0x0016);
    delete object->Remove(0x0008, 0x0018);
    delete object->Remove(0x0010, 0x0010);
    DataSetCoder coder;
    CollectingBuffer buffer;
    ASSERT_TRUE(coder.File_ParseDCMIntoRawVR(*object, buffer, 101));
    // (0002,0000) itself takes 12 bytes and is not counted.
    EXPECT_EQ(buffer.Written().size(), 12 + stated);
  }
}

TEST(MetaHeader, LeavesClassAndInstanceOutWhereTheObjectHasNone) {
  DICOMObject object;
  Add(object, 3);
  EXPECT_EQ(TagsOf(object),
            "(0002,0000) (0002,0001) (0002,0010) (0002,0012) (0002,0013) (0002,0016)");
  EXPECT_EQ(GroupLength(object), 14u + 26 + 42 + 20 + 24);
}

TEST(MetaHeader, CopiesEmptyAndOddUidsToEvenLength) {
  DICOMObject object;
  object.Push(NewElement(0x0008, 0x0016, type_code::UI, ""));
  object.Push(NewElement(0x0008, 0x0018, type_code::UI, "1.2"));
  Add(object, 2);
  EXPECT_EQ(At(object, 0x0002, 0x0002).Length, 0u);
  EXPECT_EQ(ValueText(At(object, 0x0002, 0x0003)), std::string("1.2\0", 4));
  EXPECT_EQ(GroupLength(object), 14u + 8 + 12 + 26 + 42 + 20 + 24);
  // The object's own value stays as it is.
  EXPECT_EQ(ValueText(At(object, 0x0008, 0x0018)), "1.2");
}

TEST(MetaHeader, PassesOverAUidWhoseBytesAreNotThere) {
  DICOMObject object;
  object.Push(new VR(0x0008, 0x0018, 20, nullptr));
  Add(object, 3);
  EXPECT_EQ(object.GetVR(0x0002, 0x0003), nullptr);
}

TEST(MetaHeader, PassesOverAUidThatItsLengthFieldCannotState) {
  // As a reader of the implicit form may find one. Cut, it would make the meta header unreadable.
  for (const std::size_t length : {65534u, 65535u, 65536u, 70000u}) {
    DICOMObject object;
    object.Push(NewElement(0x0008, 0x0016, type_code::UI, Bytes(length, '1')));
    object.Push(NewElement(0x0008, 0x0018, type_code::UI, Bytes(length, '2')));
    Add(object, 3);
    EXPECT_EQ(object.GetVR(0x0002, 0x0002) != nullptr, length == 65534) << length;
    EXPECT_EQ(object.GetVR(0x0002, 0x0003) != nullptr, length == 65534) << length;
    EXPECT_EQ(At(object, 0x0008, 0x0018).Length, length);
  }
}

TEST(MetaHeader, KeepsASyntaxThatItsLengthFieldCannotStateAsTheTextThatCountsOfIt) {
  // 65536 + 18 and 65536 + 17 state 18 and 17 in six bits, 65536 states 0, and 65534 fits.
  const std::string known = "1.2.840.10008.1.2";  // 17 characters
  struct Case {
    std::size_t length;
    std::string kept;
  };
  const Case cases[] = {{65534, known + std::string(65534 - 17, '\0')},
                        {65535, known},
                        {65536 + 17, known},
                        {65536 + 18, known},
                        {65536, ""}};
  for (const auto& [length, kept] : cases) {
    DICOMObject object;
    object.Push(NewElement(0x0002, 0x0010, type_code::UI, known + std::string(length - 17, '\0')));
    Add(object, 3);
    EXPECT_EQ(ValueText(At(object, 0x0002, 0x0010)), kept) << length;
    EXPECT_EQ(GroupLength(object), 14u + (8 + (kept.size() + 1) / 2 * 2) + 42 + 20 + 24) << length;
  }
  // Its bytes are not there: the writer has words for that.
  DICOMObject object;
  object.Push(new VR(0x0002, 0x0010, 70000, nullptr));
  Add(object, 3);
  EXPECT_EQ(At(object, 0x0002, 0x0010).Length, 70000u);
}

TEST(MetaHeader, TakesTheWholeOldGroupAway) {
  const auto object = Instance();
  object->Push(NewElement(0x0000, 0x0002, type_code::UI, "9."));
  object->Push(NewElement(0x0002, 0x0000, type_code::UL, Bytes{1, 2, 3, 4}));
  object->Push(NewElement(0x0002, 0x0001, type_code::OB, Bytes{7, 7}));
  object->Push(NewElement(0x0002, 0x0002, type_code::UI, "9.9."));
  object->Push(NewElement(0x0002, 0x0100, type_code::UI, "9.9."));
  object->Push(NewElement(0x0002, 0x0102, type_code::OB, Bytes{7, 7}));
  Add(*object, 3);
  EXPECT_EQ(TagsOf(*object),
            "(0000,0002) (0002,0000) (0002,0001) (0002,0002) (0002,0003) (0002,0010) (0002,0012) "
            "(0002,0013) "
            "(0002,0016) (0008,0016) (0008,0018) (0010,0010)");
  EXPECT_EQ(ValueText(At(*object, 0x0002, 0x0001)), std::string("\0\1", 2));
  EXPECT_EQ(ValueText(At(*object, 0x0002, 0x0002)), std::string("1.2\0", 4));
}

TEST(MetaHeader, KeepsTheSyntaxWithModeThreeOnly) {
  for (const std::int32_t mode : {0, 1, 2, 3}) {
    const auto object = Instance();
    object->Push(NewElement(0x0002, 0x0010, type_code::UN, kJpegUid));
    Add(*object, mode);
    const VR& syntax = At(*object, 0x0002, 0x0010);
    EXPECT_EQ(ValueText(syntax), mode == 3 ? kJpegUid : std::string("1.2.840.10008.1.2\0", 18))
        << mode;
    EXPECT_EQ(syntax.TypeCode, type_code::UI);
    EXPECT_EQ(GroupLength(*object), 14u + 12 + 14 + (8 + (mode == 3 ? 22 : 18)) + 42 + 20 + 24);
  }
}

TEST(MetaHeader, CountsASyntaxOfOddLengthAsItIsWritten) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0010, type_code::UI, "1.2.840.10008.1.2"));  // 17 characters
  Add(object, 3);
  EXPECT_EQ(At(object, 0x0002, 0x0010).Length, 17u);
  EXPECT_EQ(GroupLength(object), 14u + 26 + 42 + 20 + 24);
}

TEST(MetaHeader, ItemsInTheSyntaxElementGoSinceItHoldsAUid) {
  DICOMObject object;
  object.Push(NewElement(0x0002, 0x0010, type_code::SQ, kJpegUid));
  object.Push(new DICOMObject);
  Add(object, 3);
  EXPECT_EQ(At(object, 0x0002, 0x0010).Items, nullptr);
  EXPECT_EQ(ValueText(At(object, 0x0002, 0x0010)), kJpegUid);
}

TEST(MetaHeader, FillsTheCallingTitleUpToSixteenCharacters) {
  const std::pair<const char*, const char*> cases[] = {
      {"", "                "},
      {"WORKSTATION", "WORKSTATION     "},
      {"SIXTEEN_LETTERS_", "SIXTEEN_LETTERS_"},
      {"SEVENTEEN_LETTERS", "SEVENTEEN_LETTER"},
  };
  for (const auto& [title, expected] : cases) {
    DICOMObject object;
    DataSetCoder coder;
    coder.CallingAETitle = title;
    EXPECT_TRUE(coder.AddMetaHeader(object, 3));
    EXPECT_EQ(ValueText(At(object, 0x0002, 0x0016)), expected);
  }
}

// The type of pixel data.

VrCode PixelTypeAfter(std::int32_t mode, const std::string& syntax,
                      std::optional<Bytes> bitsAllocated, VrCode before,
                      std::uint16_t group = 0x7FE0) {
  DICOMObject object;
  if (!syntax.empty()) object.Push(NewElement(0x0002, 0x0010, type_code::UI, syntax));
  if (bitsAllocated) object.Push(NewElement(0x0028, 0x0100, type_code::US, *bitsAllocated));
  object.Push(NewElement(group, 0x0010, before, Bytes{1, 2}));
  Add(object, mode);
  return At(object, group, 0x0010).TypeCode;
}

TEST(MetaHeader, DeclaresPixelsOfMoreThanEightBitsOWAndOthersOB) {
  constexpr auto kBefore = type_code::UN;
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{16, 0}, kBefore), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{9, 0}, kBefore), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{8, 0}, kBefore), type_code::OB);
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{1, 0}, kBefore), type_code::OB);
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{0, 1}, kBefore), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, std::nullopt, kBefore), type_code::OB);
  EXPECT_EQ(PixelTypeAfter(3, "1.2.840.10008.1.2.1", Bytes{16, 0}, type_code::OB), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, "1.2.840.10008.1.2", Bytes{8, 0}, type_code::OW), type_code::OB);
}

TEST(MetaHeader, LeavesThePixelTypeAloneWhereNoSyntaxIsKept) {
  EXPECT_EQ(PixelTypeAfter(3, "", Bytes{16, 0}, type_code::UN), type_code::UN);
  EXPECT_EQ(PixelTypeAfter(2, kJpegUid, Bytes{16, 0}, type_code::UN), type_code::UN);
  // Pixel data only.
  EXPECT_EQ(PixelTypeAfter(3, kJpegUid, Bytes{16, 0}, type_code::UN, 0x7FDF), type_code::UN);
}

TEST(MetaHeader, KeepsThePixelTypeOfABigEndianSyntaxSinceItSaysInWhichOrderTheBytesAre) {
  const std::string big = "1.2.840.10008.1.2.2";
  EXPECT_EQ(PixelTypeAfter(3, big, Bytes{0, 16}, type_code::OW), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, big, Bytes{0, 8}, type_code::OW), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, big, Bytes{0, 16}, type_code::OB), type_code::OB);
  // Without a type of its own it goes by the number of bits, which is big endian too.
  EXPECT_EQ(PixelTypeAfter(3, big, Bytes{0, 16}, type_code::UN), type_code::OW);
  EXPECT_EQ(PixelTypeAfter(3, big, Bytes{0, 8}, type_code::UN), type_code::OB);
}

TEST(MetaHeader, LeavesOtherElementsAsTheyAre) {
  const auto object = Instance();
  object->Push(NewElement(0x0009, 0x1001, type_code::kNone, "odd"));
  Add(*object, 3);
  const VR& vr = At(*object, 0x0009, 0x1001);
  EXPECT_EQ(vr.TypeCode, type_code::kNone);
  EXPECT_EQ(ValueText(vr), "odd");
}

}  // namespace
}  // namespace tessaret::test
