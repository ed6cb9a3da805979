// Made by scripts/make_interface_tables.py from include/tessaret/idcm_cstore.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_cstore.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmCStore>() {
using I = IDcmCStore;

static constexpr auto kArguments0 = Signature<decltype(&I::SendFiles)>::Describe({{{"host", ArgumentFlow::kIn}, {"port", ArgumentFlow::kIn}, {"LocalAE", ArgumentFlow::kIn}, {"RemoteAE", ArgumentFlow::kIn}, {"TimeoutSecs", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::AddFile)>::Describe({{{"FilePath", ArgumentFlow::kIn}, {"SOPClassUID", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::Cancel)>::Describe({});
static constexpr auto kArguments3 = Signature<decltype(&I::get_NumFiles)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments4 = Signature<decltype(&I::get_SentFiles)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_FileName)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"SendFiles", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Sends every file of the queue, in the order in which they were added, and returns when all are done; the queue stays as it is.\n"
        "`host` is a name or an address, `port` a number or a service as text, the titles have up to 16 characters. `TimeoutSecs` is how\n"
        "long an answer may take; 0 stands for 300 seconds.\n"
        "A file is sent in its own transfer syntax where the node takes that for its class, and otherwise in the one that the node\n"
        "took. One file that fails, or cannot be read to its end, does not stop the others: it ends in SopError, and the call succeeds\n"
        "whatever the files did. An answer of the node with a warning or a failure in it counts as sent.\n"
        "Fails with kInvalidArgument for a time below 0, and with \"Files are being sent already\" where it is called from one of its events.\n"
        "Fails where no association comes about: \"Connection to  %s: %s permanently refused\" or \"Connection to  %s: %s temporarily\n"
        "refused\" with host and title, then in a second line \"Non active link\", \"Unupported Application Context\", \"Unknown local\n"
        "AETitle\" or \"Unknown remote AETitle\", also where no file names a class, so that nothing could be proposed; IDcmStoreResponse tells\n"
        "more."},
{"AddFile", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Puts a file at the end of the queue. `SOPClassUID` is the class of its object, which SendFiles proposes to the node. The file is\n"
        "not looked at before it is sent."},
{"Cancel", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Ends a SendFiles that is under way before its next file; files that are left get no event. It may be called from an event or\n"
        "from another thread, and does nothing else."},
{"NumFiles", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "How many files are in the queue."},
{"SentFiles", MemberKind::kGet, kArguments4.data(), kArguments4.size(), "How many files the last SendFiles has sent so far."},
{"FileName", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "The path of file `Idx` of the queue, from 0."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::SendFiles>,
&CallMember<&I::AddFile>,
&CallMember<&I::Cancel>,
&CallMember<&I::get_NumFiles>,
&CallMember<&I::get_SentFiles>,
&CallMember<&I::get_FileName>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 6, "A queue of files, sent over one association when SendFiles is called. What became of each file is told by events, on the caller's\n"
        "thread and before SendFiles returns."}, kCalls};
return kTable;
}

}  // namespace tessaret
