// Made by scripts/make_interface_tables.py from include/tessaret/idcm_volume.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_volume.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDCMVolumeEvents>() {
using I = _IDCMVolumeEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::OnProgress)>::Describe({{{"Percente", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"OnProgress", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "How much of a loading is done, from 0 to 100."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::OnProgress>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 1, "Events of that class. They come on the calling thread."}, kCalls};
return kTable;
}

}  // namespace tessaret
