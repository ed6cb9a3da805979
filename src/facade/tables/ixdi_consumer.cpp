// Made by scripts/make_interface_tables.py from include/tessaret/ixdi_consumer.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/ixdi_consumer.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IXDIConsumer>() {
using I = IXDIConsumer;

static constexpr auto kArguments0 = Signature<decltype(&I::Connect)>::Describe({{{"XDIDom", ArgumentFlow::kIn}, {"AETitle", ArgumentFlow::kIn}, {"method", ArgumentFlow::kIn, 0, "_EnumServerType"}}});
static constexpr auto kArguments1 = Signature<decltype(&I::Retrieve)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"SOPInstanceUID", ArgumentFlow::kIn}, {"frame", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::Disconnect)>::Describe({});
static constexpr auto kArguments3 = Signature<decltype(&I::Listen)>::Describe({{{"port", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"Connect", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Succeeds and does nothing."},
{"Retrieve", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Succeeds and does nothing: no object is fetched, and no event follows."},
{"Disconnect", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Succeeds and does nothing; the server goes on listening."},
{"Listen", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "Starts the server on `port`, a number as text; one that listens already starts anew. Empty: the port of the user's settings,\n"
        "then that of \"vandrel.ini\" beside the library, then 8080. May come from any thread. Fails with \"Cannot create HTTP Server\"\n"
        "for want of memory; a port that is in use comes as OnError."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::Connect>,
&CallMember<&I::Retrieve>,
&CallMember<&I::Disconnect>,
&CallMember<&I::Listen>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 4, "A small server: whatever object is posted to its port comes as an event on the thread that made this, which has to call PumpEvents\n"
        "(tessaret/pump.hpp) for them. Making it fails with \"Cannot create proxy window\" where events cannot be carried."}, kCalls};
return kTable;
}

}  // namespace tessaret
