// Made by scripts/make_interface_tables.py from include/tessaret/idata_set_handle.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idata_set_handle.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDataSetHandle>() {
using I = IDataSetHandle;

static constexpr auto kArguments0 = Signature<decltype(&I::get_IsAlive)>::Describe({{{"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"IsAlive", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "Whether the data set still exists."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_IsAlive>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 1, "A data set for calls by name. IDcmObjectManager.GetPtr gives one, and PutPtr takes it."}, kCalls};
return kTable;
}

}  // namespace tessaret
