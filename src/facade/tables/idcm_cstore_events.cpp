// Made by scripts/make_interface_tables.py from include/tessaret/idcm_cstore.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_cstore.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDcmCStoreEvents>() {
using I = _IDcmCStoreEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::SopSent)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::SopError)>::Describe({{{"FileName", ArgumentFlow::kIn}, {"Idx", ArgumentFlow::kIn}, {"Message", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::Finished)>::Describe({{{"TotSent", ArgumentFlow::kIn}, {"TotErrors", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"SopSent", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "A file was sent. `FileName` is its path as it was added, `Idx` its place in the queue, from 0."},
{"SopError", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "A file could not be sent. `Message` says why; it begins with \"Error sending [\" and the path."},
{"Finished", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "All is done: how many files were sent and how many failed."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::SopSent>,
&CallMember<&I::SopError>,
&CallMember<&I::Finished>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 3, "Events of that class. They come on the thread that called SendFiles, while it runs."}, kCalls};
return kTable;
}

}  // namespace tessaret
