#include "vr_traits.h"

#include <algorithm>
#include <iterator>

#include "core/element_reader.h"

namespace tessaret::tool {
namespace {

using Kind = ValueKind;

constexpr VrTraits kTraits[] = {
    {type_code::AE, Kind::kText, true, false},
    {type_code::AS, Kind::kText, true, false},
    {type_code::AT, Kind::kTag, true, false},
    {type_code::CS, Kind::kText, true, false},
    {type_code::DA, Kind::kText, true, false},
    {type_code::DS, Kind::kText, true, false},
    {type_code::DT, Kind::kText, true, false},
    {type_code::FD, Kind::kFloat, true, false},
    {type_code::FL, Kind::kFloat, true, false},
    {type_code::IS, Kind::kText, true, false},
    {type_code::LO, Kind::kText, true, false},
    {type_code::LT, Kind::kText, false, false},
    {type_code::OB, Kind::kBytes, false, true},
    {MakeTypeCode('O', 'D'), Kind::kFloat, false, true},
    {type_code::OF, Kind::kFloat, false, true},
    {MakeTypeCode('O', 'L'), Kind::kBytes, false, true},
    {MakeTypeCode('O', 'V'), Kind::kBytes, false, true},
    {type_code::OW, Kind::kBytes, false, true},
    {type_code::PN, Kind::kText, true, false},
    {type_code::SH, Kind::kText, true, false},
    {type_code::SL, Kind::kInteger, true, false},
    {type_code::SQ, Kind::kSequence, false, true},
    {type_code::SS, Kind::kInteger, true, false},
    {type_code::ST, Kind::kText, false, false},
    {MakeTypeCode('S', 'V'), Kind::kInteger, true, true},
    {type_code::TM, Kind::kText, true, false},
    {MakeTypeCode('U', 'C'), Kind::kText, true, true},
    {type_code::UI, Kind::kUid, true, false},
    {type_code::UL, Kind::kUnsigned, true, false},
    {type_code::UN, Kind::kBytes, false, true},
    {MakeTypeCode('U', 'R'), Kind::kText, false, true},
    {type_code::US, Kind::kUnsigned, true, false},
    {type_code::UT, Kind::kText, false, true},
    {MakeTypeCode('U', 'V'), Kind::kUnsigned, true, true},
};

}  // namespace

const VrTraits* FindTraits(VrCode type) {
  const auto* row = std::find_if(std::begin(kTraits), std::end(kTraits),
                                 [type](const VrTraits& each) { return each.type == type; });
  return row == std::end(kTraits) ? nullptr : row;
}

ValueKind KindOf(VrCode type) {
  const VrTraits* traits = FindTraits(type);
  return traits == nullptr ? ValueKind::kBytes : traits->kind;
}

bool IsLongByTheStandardOnly(VrCode type) {
  const VrTraits* traits = FindTraits(type);
  return traits != nullptr && traits->longLength && !HasLongForm(type);
}

}  // namespace tessaret::tool
