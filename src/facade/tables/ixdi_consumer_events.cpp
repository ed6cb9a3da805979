// Made by scripts/make_interface_tables.py from include/tessaret/ixdi_consumer.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/ixdi_consumer.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IXDIConsumerEvents>() {
using I = _IXDIConsumerEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::OnKOS)>::Describe({{{"DDO", ArgumentFlow::kIn}, {"XDIDom", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::OnObject)>::Describe({{{"DDO", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::OnError)>::Describe({{{"Msg", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"OnKOS", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "An object came, of whatever kind. `DDO` is new, and the sink's to keep; `XDIDom` is null."},
{"OnObject", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Not told by this version."},
{"OnError", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Something failed, in words."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::OnKOS>,
&CallMember<&I::OnObject>,
&CallMember<&I::OnError>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 3, "Events of that class. They come on the thread that made the object, while it pumps."}, kCalls};
return kTable;
}

}  // namespace tessaret
