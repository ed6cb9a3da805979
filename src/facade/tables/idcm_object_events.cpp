// Made by scripts/make_interface_tables.py from include/tessaret/idcm_object.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_object.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDCMObjectEvents>() {
using I = _IDCMObjectEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::OnDrawOverlay)>::Describe({{{"hDc", ArgumentFlow::kIn}, {"x0", ArgumentFlow::kIn}, {"y0", ArgumentFlow::kIn}, {"x1", ArgumentFlow::kIn}, {"y1", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"OnDrawOverlay", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "AddOverlay wants the overlay drawn into the surface `hDc`, within x0 to x1 and y0 to y1, in any colour but black."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::OnDrawOverlay>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 1, "Events of that class."}, kCalls};
return kTable;
}

}  // namespace tessaret
