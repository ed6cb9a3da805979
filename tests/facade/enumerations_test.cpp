// The enumerations as scripts meet them: all of them, with every value; and the names in the table of classes.
#include "facade/enumerations.h"

#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "facade/module.h"
#include "facade/named_interface.h"
#include "tessaret/tessaret.hpp"

namespace tessaret {
namespace {

std::string LineOf(const tessaret_enumeration& enumeration) {
  std::string line = enumeration.name;
  for (std::uint32_t at = 0; at < enumeration.member_count; ++at) {
    line += std::string(" ") + enumeration.members[at].name + "=" +
            std::to_string(enumeration.members[at].value);
  }
  return line;
}

TEST(Enumerations, AreListedWithAllTheirValues) {
  std::uint32_t count = 0;
  const tessaret_enumeration* all = tessaret_enumerations(&count);
  std::vector<std::string> lines;
  for (std::uint32_t at = 0; at < count; ++at) lines.push_back(LineOf(all[at]));
  EXPECT_EQ(
      lines,
      (std::vector<std::string>{
          "_EnumDICOMDIRLevel DICOMDIR_PATIENT=0 DICOMDIR_STUDY=1 DICOMDIR_SERIES=2 "
          "DICOMDIR_OBJECT=3",
          "_EnumDataEncoding ENCODING_NONE=0 ENCODING_IMPLICIT_LITTLE=100 "
          "ENCODING_EXPLICIT_LITTLE=101 ENCODING_EXPLICIT_BIG=102",
          "_EnumImageType IMAGE_GRAY8=0 IMAGE_GRAY16=1 IMAGE_GRAY32=2 IMAGE_RGB=3",
          "_EnumInterpolationOrder INTERP_NEAREST=0 INTERP_TRILINEAR=1 INTERP_SYNCH_2=2 "
          "INTERP_SYNCH_3=3 INTERP_SYNCH_4=4 INTERP_SYNCH_5=5 INTERP_SYNCH_6=6",
          "_EnumIntersectionType INTERSECT_NONE=0 INTERSECT_PARALLEL=1 INTERSECT_SEGMENT=2",
          "_EnumLoadOption LOAD_PIXELS=1 LOAD_STRICT=2 LOAD_SKIPS_PIXELS=4",
          "_EnumMergeType MERGE_TRANSPARENCY=0 MERGE_DITHERED=1",
          "_EnumObliqueViewMode OBLIQUE_ORTHO_XY=0 OBLIQUE_ORTHO_YZ=1 OBLIQUE_ORTHO_XZ=2 "
          "OBLIQUE_ORTHO_ZX=3 OBLIQUE_ORTHO_ZY=4 OBLIQUE_ORTHO_YX=5 OBLIQUE_ORTHO_AXIAL=6 "
          "OBLIQUE_ORTHO_SAGGITAL=7 OBLIQUE_ORTHO_CORONAL=8 OBLIQUE_FREE=9",
          "_EnumReadingEnd READ_TO_THE_END=0 READ_CUT_ELEMENT=1 READ_NO_DELIMITER=2 "
          "READ_STRAY_TAG=3 READ_UNKNOWN_SYNTAX=4 READ_TO_PIXELS=5 READ_ORPHAN_ITEM=6 "
          "READ_TOO_DEEP=7 READ_TOO_LONG=8",
          "_EnumReadingOddity ODDITY_NONE=0 ODDITY_VALUE_BEYOND_ITEM=1 ODDITY_WRONG_LENGTH=2 "
          "ODDITY_ELEMENT_IN_SEQUENCE=3 ODDITY_ITEM_OUTSIDE=4 ODDITY_STRAY_FRAGMENT=5 "
          "ODDITY_NOT_A_SEQUENCE=6 ODDITY_NO_DELIMITER=7 ODDITY_STRAY_DELIMITER=8 "
          "ODDITY_WRONG_DELIMITER=9 ODDITY_LATE_SYNTAX=10 ODDITY_NO_LETTERS=11 ODDITY_TWICE=12",
          "_EnumSaveForm SAVE_BARE=1 SAVE_WITHOUT_META_HEADER=2 SAVE_COMPLETE=3",
          "_EnumSaveOption SAVE_KEEPS_FILES=1 SAVE_KEEPS_TYPES=2", "_EnumServerType",
          "_EnumVoxelType SHORT_VOXEL=0 USHORT_VOXEL=1 UCHAR_VOXEL=2 FLOAT_VOXEL=3 LONG_VOXEL=4 "
          "ULONG_VOXEL=5",
          "_ImgFlipMode IMAGE_FLIP_NONE=0 IMAGE_FLIP_VERT=1 IMAGE_FLIP_HORZ=2 "
          "IMAGE_FLIP_BOTH=3"}));
  EXPECT_EQ(tessaret_enumerations(nullptr), all);
}

TEST(Enumerations, HaveTheSameValuesInCpp) {
  EXPECT_EQ(OBLIQUE_ORTHO_AXIAL, 6);
  EXPECT_EQ(ULONG_VOXEL, 5);
  EXPECT_EQ(IMAGE_FLIP_BOTH, IMAGE_FLIP_VERT | IMAGE_FLIP_HORZ);
}

TEST(Enumerations, ShareNoNameAndHaveHelp) {
  std::set<std::string> names;
  for (const tessaret_enumeration& enumeration : AllEnumerations()) {
    EXPECT_STRNE(enumeration.help, "") << enumeration.name;
    EXPECT_TRUE(names.insert(enumeration.name).second) << enumeration.name;
    for (std::uint32_t at = 0; at < enumeration.member_count; ++at)
      EXPECT_TRUE(names.insert(enumeration.members[at].name).second)
          << enumeration.members[at].name;
  }
}

std::set<std::string> NamesOfInterfaces() {
  std::set<std::string> names;
  for (const NamedInterface& row : AllInterfaces()) names.insert(row.name);
  return names;
}

TEST(Interfaces, OfAllClassesCanBeAskedForByName) {
  const std::set<std::string> names = NamesOfInterfaces();
  EXPECT_EQ(names.size(), AllInterfaces().size());
  for (const ClassRow& row : AllClasses())
    EXPECT_TRUE(names.contains(std::string(row.interface))) << row.interface;
}

/// The name and identifier that the table of `Interface` has.
template <class Interface>
void ExpectTable(const char* name, std::uint64_t low) {
  const InterfaceInfo& info = TableOf<Interface>().info;
  EXPECT_STREQ(info.name, name);
  EXPECT_EQ(info.id, (InterfaceId{0x5A51DE9E6B7D4F60, low}));
  EXPECT_STRNE(info.help, "") << name;
  EXPECT_EQ(info.memberCount, TableOf<Interface>().calls.size());
}

TEST(Interfaces, HaveTablesThatGoWithTheTableOfClasses) {
  const auto row = [](std::size_t at) { return AllClasses()[at]; };
  ExpectTable<IDCMObject>(row(0).interface.data(), 0x91B3C8D4A2F02001);
  ExpectTable<_IDCMObjectEvents>(row(0).events.data(), 0x91B3C8D4A2F03001);
  ExpectTable<IDCMOblique>(row(1).interface.data(), 0x91B3C8D4A2F02002);
  ExpectTable<_IDCMObliqueEvents>(row(1).events.data(), 0x91B3C8D4A2F03002);
  ExpectTable<IDCMDicomDir>(row(2).interface.data(), 0x91B3C8D4A2F02003);
  ExpectTable<_IDCMDicomDirEvents>(row(2).events.data(), 0x91B3C8D4A2F03003);
  ExpectTable<IViewParameters>(row(3).interface.data(), 0x91B3C8D4A2F02004);
  ExpectTable<IImageModule>(row(5).interface.data(), 0x91B3C8D4A2F02006);
  ExpectTable<IDcmDictionary>(row(6).interface.data(), 0x91B3C8D4A2F02007);
  ExpectTable<IDCMVolume>(row(7).interface.data(), 0x91B3C8D4A2F02008);
  ExpectTable<_IDCMVolumeEvents>(row(7).events.data(), 0x91B3C8D4A2F03008);
  ExpectTable<IDcmQueryRetrieve>(row(8).interface.data(), 0x91B3C8D4A2F02009);
  ExpectTable<_IDcmQueryRetrieveEvents>(row(8).events.data(), 0x91B3C8D4A2F03009);
  ExpectTable<IXDIDomain>(row(9).interface.data(), 0x91B3C8D4A2F0200A);
  ExpectTable<IXDIConsumer>(row(10).interface.data(), 0x91B3C8D4A2F0200B);
  ExpectTable<_IXDIConsumerEvents>(row(10).events.data(), 0x91B3C8D4A2F0300B);
  ExpectTable<IDcmCStore>(row(11).interface.data(), 0x91B3C8D4A2F0200C);
  ExpectTable<_IDcmCStoreEvents>(row(11).events.data(), 0x91B3C8D4A2F0300C);
}

TEST(Interfaces, SayOfEveryArgumentOfAnEnumerationWhichItIs) {
  std::set<std::string> known;
  for (const tessaret_enumeration& enumeration : AllEnumerations()) known.insert(enumeration.name);
  const InterfaceInfo& info = TableOf<IDCMOblique>().info;
  std::uint32_t found = 0;
  for (std::uint32_t at = 0; at < info.memberCount; ++at) {
    const MemberInfo& member = info.members[at];
    for (std::uint32_t place = 0; place < member.argumentCount; ++place) {
      const std::string name = member.arguments[place].interfaceName;
      if (member.arguments[place].type != TESSARET_LONG || name.empty()) continue;
      EXPECT_TRUE(known.contains(name)) << member.name;
      ++found;
    }
  }
  // Mode twice, RawMode, SetCutPlane, ImageFlip twice.
  EXPECT_EQ(found, 6u);
}

}  // namespace
}  // namespace tessaret
