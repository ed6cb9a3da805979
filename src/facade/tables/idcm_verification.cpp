// Made by scripts/make_interface_tables.py from include/tessaret/idcm_verification.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_verification.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmVerification>() {
using I = IDcmVerification;

static constexpr auto kArguments0 = Signature<decltype(&I::Verify)>::Describe({{{"host", ArgumentFlow::kIn}, {"port", ArgumentFlow::kIn}, {"LocalAE", ArgumentFlow::kIn}, {"RemoteAE", ArgumentFlow::kIn}, {"TimeoutSecs", ArgumentFlow::kIn}, {"Answered", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"Verify", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Makes an association, sends a C-ECHO (DICOM PS3.4, annex A), and releases it. The arguments are those of IDcmCStore::SendFiles,\n"
        "and so are the failures where no association comes about. True when the node answered, whatever the status; false when it did not,\n"
        "and the association has ended. IDcmStoreResponse::get_AssociationError tells more of both."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::Verify>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 1, "For hosts that want to know before they send, and for those who set up nodes."}, kCalls};
return kTable;
}

}  // namespace tessaret
