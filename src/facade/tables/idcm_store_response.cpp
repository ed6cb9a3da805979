// Made by scripts/make_interface_tables.py from include/tessaret/idcm_store_response.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_store_response.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmStoreResponse>() {
using I = IDcmStoreResponse;

static constexpr auto kArguments0 = Signature<decltype(&I::get_ResponseStatus)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::get_ResponseComment)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments2 = Signature<decltype(&I::get_AssociationError)>::Describe({{{"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"ResponseStatus", MemberKind::kGet, kArguments0.data(), kArguments0.size(), "The status of the answer (DICOM PS3.4, B.2.3): 0 for success, 0xB000 to 0xBFFF for a warning, by which the object was stored, and\n"
        "anything else for a failure. -1 where there was no answer."},
{"ResponseComment", MemberKind::kGet, kArguments1.data(), kArguments1.size(), "The comment that came with a status that is not 0, (0000,0902); empty without one."},
{"AssociationError", MemberKind::kGet, kArguments2.data(), kArguments2.size(), "Why the last SendFiles made no association, in the words of the network: the system's for a link that could not be opened, the\n"
        "numbers of the refusal as texts, \"No SOP Class proposed\", \"No Accepted presentation Context found\", \"Corrupt transmission\n"
        "reading AAssociateRQ\". In SopError: why the association did not take the file, such as \"SOP Class not supported [%s]\" or \"The\n"
        "peer has closed the link\"; empty where the file itself is to blame. After IDcmVerification::Verify: why no association came\n"
        "about, or why the node did not answer on the one that did; empty where it answered."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::get_ResponseStatus>,
&CallMember<&I::get_ResponseComment>,
&CallMember<&I::get_AssociationError>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 3, "For hosts that want to know whether a node really took what it was sent: IDcmCStore counts every answer as sent, also a refusal. To\n"
        "be asked within the events of IDcmCStore, about the file that the event is about, or after SendFiles. Every member answers kPointer\n"
        "for a null place of the answer."}, kCalls};
return kTable;
}

}  // namespace tessaret
