#include "core/vr_properties.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "core/binary_vr.h"
#include "core/person_name.h"
#include "core/string_vr.h"
#include "core/typed_vr.h"

namespace tessaret {
namespace {

template <class View, class Family>
void ExpectClass(VrCode code, std::uint32_t width) {
  static_assert(std::is_base_of_v<Family, View>);
  const View view;
  EXPECT_EQ(view.GetTypeCode(), code) << FirstLetter(code) << SecondLetter(code);
  EXPECT_EQ(view.ValueWidth(), width) << FirstLetter(code) << SecondLetter(code);
  EXPECT_EQ(view.Record().TypeCode, code) << FirstLetter(code) << SecondLetter(code);
}

TEST(VrClasses, HaveTheirFamilyCodeAndWidth) {
  ExpectClass<VrAE, VR_XXSTRING>(0x4145, 16);
  ExpectClass<VrAS, VR_XXSTRING>(0x4153, 4);
  ExpectClass<VrAT, VR_XXBINARY>(0x4154, 4);
  ExpectClass<VrCS, VR_XXSTRING>(0x4353, 0);
  ExpectClass<VrDA, VR_XXSTRING>(0x4441, 8);
  ExpectClass<VrDS, VR_XXSTRING>(0x4453, 0);
  ExpectClass<VrDT, VR_XXSTRING>(0x4454, 0);
  ExpectClass<VrFD, VR_XXBINARY>(0x4644, 8);
  ExpectClass<VrFL, VR_XXBINARY>(0x464C, 4);
  ExpectClass<VrIS, VR_XXSTRING>(0x4953, 0);
  ExpectClass<VrLO, VR_XXSTRING>(0x4C4F, 0);
  ExpectClass<VrLT, VR_XXTYPED>(0x4C54, 0);
  ExpectClass<VrOB, VR_XXBINARY>(0x4F42, 1);
  ExpectClass<VrOW, VR_XXBINARY>(0x4F57, 1);
  ExpectClass<VrOX, VR_XXBINARY>(0x4F57, 2);
  ExpectClass<VrPN, VR_XXSTRING>(0x504E, 0);
  ExpectClass<VrSH, VR_XXSTRING>(0x5348, 0);
  ExpectClass<VrSL, VR_XXBINARY>(0x534C, 4);
  ExpectClass<VrSQ, VR_XXTYPED>(0x5351, 0);
  ExpectClass<VrSS, VR_XXBINARY>(0x5353, 2);
  ExpectClass<VrST, VR_XXTYPED>(0x5354, 0);
  ExpectClass<VrTM, VR_XXSTRING>(0x544D, 0);
  ExpectClass<VrUI, VR_XXSTRING>(0x5549, 0);
  ExpectClass<VrUL, VR_XXBINARY>(0x554C, 4);
  ExpectClass<VrUS, VR_XXBINARY>(0x5553, 2);
  ExpectClass<VrXS, VR_XXBINARY>(0x5553, 2);
}

TEST(VrClasses, FormOneTree) {
  static_assert(std::is_base_of_v<VR_XXTYPED, VR_XXMULTIBINARY>);
  static_assert(std::is_base_of_v<VR_XXMULTIBINARY, VR_XXBINARY>);
  static_assert(std::is_base_of_v<VR_XXTYPED, VR_XXMULTISTRING>);
  static_assert(std::is_base_of_v<VR_XXMULTISTRING, VR_XXSTRING>);
  static_assert(!std::is_base_of_v<VR_XXMULTISTRING, VrLT>);
  static_assert(!std::is_base_of_v<VR_XXMULTISTRING, VrST>);
  static_assert(!std::is_base_of_v<VR_XXMULTISTRING, VrSQ>);
}

TEST(VrProperties, LimitsAreThoseOfTheTextTypes) {
  const std::map<VrCode, std::uint32_t> limits = {
      {type_code::AE, 16}, {type_code::AS, 4},    {type_code::CS, 16}, {type_code::DA, 10},
      {type_code::DS, 16}, {type_code::DT, 26},   {type_code::IS, 12}, {type_code::LO, 64},
      {type_code::SH, 16}, {type_code::ST, 1024}, {type_code::TM, 16}, {type_code::UI, 64}};
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    const auto expected = limits.find(static_cast<VrCode>(code));
    ASSERT_EQ(PropertiesOf(static_cast<VrCode>(code)).limit,
              expected == limits.end() ? 0 : expected->second)
        << code;
  }
}

TEST(VrProperties, ATypeWithoutARowIsBytes) {
  for (const VrCode code : {VrCode{0}, VrCode{0xFFFF}, MakeTypeCode('Z', 'Z'),
                            MakeTypeCode('O', 'D'), MakeTypeCode('a', 'e')}) {
    EXPECT_EQ(PropertiesOf(code).kind, ValueKind::kBytes);
    EXPECT_EQ(PropertiesOf(code).count, ValueCount::kOne);
  }
}

}  // namespace
}  // namespace tessaret
