// Made by scripts/make_interface_tables.py from include/tessaret/ixdi_domain.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/ixdi_domain.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IXDIDomain>() {
using I = IXDIDomain;

static constexpr auto kArguments0 = Signature<decltype(&I::get_NumPeers)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::get_AETitle)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_WadoURL)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments3 = Signature<decltype(&I::get_DicomHost)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_DicomPort)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_PeerIdx)>::Describe({{{"AETitle", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"NumPeers", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "How many nodes there are."},
{"AETitle", MemberKind::kGet, kArguments1.data(), kArguments1.size(), "The title of node `Idx`."},
{"WadoURL", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "Where node `Idx` gives objects over HTTP."},
{"DicomHost", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "The name or address of node `Idx`."},
{"DicomPort", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "The port of node `Idx`, as text like every port."},
{"PeerIdx", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "The index of the node with this title."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_NumPeers>,
&CallMember<&I::get_AETitle>,
&CallMember<&I::get_WadoURL>,
&CallMember<&I::get_DicomHost>,
&CallMember<&I::get_DicomPort>,
&CallMember<&I::get_PeerIdx>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 6, "What is known of the nodes of one domain. No domain is filled yet: every property succeeds and leaves its output as it was, which\n"
        "by name gives 0 and empty text."}, kCalls};
return kTable;
}

}  // namespace tessaret
