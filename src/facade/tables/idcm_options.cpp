// Made by scripts/make_interface_tables.py from include/tessaret/idcm_options.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_options.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDCMOptions>() {
using I = IDCMOptions;

static constexpr auto kArguments0 = Signature<decltype(&I::get_UseTotokuLUT)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::put_UseTotokuLUT)>::Describe({{{"newVal", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"UseTotokuLUT", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "Whether lookup tables for monitors of a certain kind are to be used. The value is kept for hosts; the library itself does not\n"
        "draw by it. It is read from the user's settings when the library starts and when the class is first used."},
{"UseTotokuLUT", MemberKind::kPut, kArguments1.data(), kArguments1.size(), "Sets it for the process, and in the user's settings where these can be written. True is exactly -1. The value that is set\n"
        "already is not written again."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_UseTotokuLUT>,
&CallMember<&I::put_UseTotokuLUT>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 2, ""}, kCalls};
return kTable;
}

}  // namespace tessaret
