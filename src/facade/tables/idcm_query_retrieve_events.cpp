// Made by scripts/make_interface_tables.py from include/tessaret/idcm_query_retrieve.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_query_retrieve.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDcmQueryRetrieveEvents>() {
using I = _IDcmQueryRetrieveEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::OnQueryResult)>::Describe({{{"result", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::OnRetrieve)>::Describe({{{"TotInstances", ArgumentFlow::kIn}, {"SentInstances", ArgumentFlow::kIn}, {"NumErrors", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::OnQueryEnd)>::Describe({});
static constexpr auto kArguments3 = Signature<decltype(&I::OnError)>::Describe({{{"Msg", ArgumentFlow::kIn}, {"Errcode", ArgumentFlow::kIn}, {"DCO", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::OnRetrieveEnd)>::Describe({{{"Status", ArgumentFlow::kIn}, {"NumSuccesful", ArgumentFlow::kIn}, {"NumWarnings", ArgumentFlow::kIn}, {"NumFailed", ArgumentFlow::kIn}}});
static constexpr auto kArguments5 = Signature<decltype(&I::OnRetrieveDDO)>::Describe({{{"DDO", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"OnQueryResult", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "One match of a query. The object is new, and the sink's to keep."},
{"OnRetrieve", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "A retrieval goes on: how many instances there are still to come and the one under way, how many are done, how many failed."},
{"OnQueryEnd", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "A query has ended, be it with its last match, after an error, or because it was stopped."},
{"OnError", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "Something failed. `Errcode` is the status that the node answered, or 0; `DCO` its answer, or null."},
{"OnRetrieveEnd", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "A retrieval has ended, with the node's last status and counts. `NumWarnings` is the node's number of failed instances, and\n"
        "`NumFailed` that of instances with warnings."},
{"OnRetrieveDDO", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "An object came over the association. It is the sink's to keep."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::OnQueryResult>,
&CallMember<&I::OnRetrieve>,
&CallMember<&I::OnQueryEnd>,
&CallMember<&I::OnError>,
&CallMember<&I::OnRetrieveEnd>,
&CallMember<&I::OnRetrieveDDO>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 6, "Events of that class. They come on the thread that made the object, while it pumps."}, kCalls};
return kTable;
}

}  // namespace tessaret
