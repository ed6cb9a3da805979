#include "vr_traits.h"

#include <algorithm>
#include <iterator>

namespace tessaret::tool {
namespace {

using Kind = ValueKind;

constexpr VrTraits kTraits[] = {
    {type_code::AE, Kind::kText, true, false, 0, 16},
    {type_code::AS, Kind::kText, true, false, 0, 4},
    {type_code::AT, Kind::kTag, true, false, 4, 0},
    {type_code::CS, Kind::kText, true, false, 0, 16},
    {type_code::DA, Kind::kText, true, false, 0, 8},
    {type_code::DS, Kind::kText, true, false, 0, 16},
    {type_code::DT, Kind::kText, true, false, 0, 26},
    {type_code::FD, Kind::kFloat, true, false, 8, 0},
    {type_code::FL, Kind::kFloat, true, false, 4, 0},
    {type_code::IS, Kind::kText, true, false, 0, 12},
    {type_code::LO, Kind::kText, true, false, 0, 64},
    {type_code::LT, Kind::kText, false, false, 0, 10240},
    {type_code::OB, Kind::kBytes, false, true, 0, 0},
    {type_code::OD, Kind::kFloat, false, true, 8, 0},
    {type_code::OF, Kind::kFloat, false, true, 4, 0},
    {type_code::OL, Kind::kBytes, false, true, 0, 0},
    {type_code::OV, Kind::kBytes, false, true, 0, 0},
    {type_code::OW, Kind::kBytes, false, true, 0, 0},
    {type_code::PN, Kind::kText, true, false, 0, 64},
    {type_code::SH, Kind::kText, true, false, 0, 16},
    {type_code::SL, Kind::kInteger, true, false, 4, 0},
    {type_code::SQ, Kind::kSequence, false, true, 0, 0},
    {type_code::SS, Kind::kInteger, true, false, 2, 0},
    {type_code::ST, Kind::kText, false, false, 0, 1024},
    {type_code::SV, Kind::kInteger, true, true, 8, 0},
    {type_code::TM, Kind::kText, true, false, 0, 16},
    {type_code::UC, Kind::kText, true, true, 0, 0},
    {type_code::UI, Kind::kUid, true, false, 0, 64},
    {type_code::UL, Kind::kUnsigned, true, false, 4, 0},
    {type_code::UN, Kind::kBytes, false, true, 0, 0},
    {type_code::UR, Kind::kText, false, true, 0, 0},
    {type_code::US, Kind::kUnsigned, true, false, 2, 0},
    {type_code::UT, Kind::kText, false, true, 0, 0},
    {type_code::UV, Kind::kUnsigned, true, true, 8, 0},
};

/// What the library's readers and writers give a 32-bit length in the explicit form.
bool HasLongForm(VrCode type) {
  return type == type_code::OB || type == type_code::OW || type == type_code::UN ||
         type == type_code::UT || type == type_code::SQ;
}

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

bool FitsExplicitForm(VrCode type, std::size_t length) {
  constexpr std::size_t kMostOfShortLength = 65534;
  if (HasLongForm(type) || type == type_code::kNone) return true;
  return length <= kMostOfShortLength && !IsLongByTheStandardOnly(type);
}

}  // namespace tessaret::tool
