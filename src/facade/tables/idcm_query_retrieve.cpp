// Made by scripts/make_interface_tables.py from include/tessaret/idcm_query_retrieve.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_query_retrieve.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDcmQueryRetrieve>() {
using I = IDcmQueryRetrieve;

static constexpr auto kArguments0 = Signature<decltype(&I::QueryStudy)>::Describe({{{"PatientName", ArgumentFlow::kIn}, {"PatientID", ArgumentFlow::kIn}, {"From", ArgumentFlow::kIn}, {"To", ArgumentFlow::kIn}, {"StudyID", ArgumentFlow::kIn}, {"AccessionNumber", ArgumentFlow::kIn}, {"Modalities", ArgumentFlow::kIn}, {"rawVr", ArgumentFlow::kOptional}}});
static constexpr auto kArguments1 = Signature<decltype(&I::QuerySeries)>::Describe({{{"UID", ArgumentFlow::kIn}, {"rawVr", ArgumentFlow::kOptional}}});
static constexpr auto kArguments2 = Signature<decltype(&I::MoveStudy)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"DestAE", ArgumentFlow::kIn}}});
static constexpr auto kArguments3 = Signature<decltype(&I::MoveSeries)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"DestAE", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::MoveSOP)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"SOPInstanceUID", ArgumentFlow::kIn}, {"DestAE", ArgumentFlow::kIn}}});
static constexpr auto kArguments5 = Signature<decltype(&I::MovePatient)>::Describe({{{"PatientID", ArgumentFlow::kIn}, {"DestAE", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::StopQuerying)>::Describe({});
static constexpr auto kArguments7 = Signature<decltype(&I::get_IsWorking)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::Connect)>::Describe({{{"CallingAE", ArgumentFlow::kIn}, {"CalledAE", ArgumentFlow::kIn}, {"host", ArgumentFlow::kIn}, {"port", ArgumentFlow::kIn}}});
static constexpr auto kArguments9 = Signature<decltype(&I::Close)>::Describe({});
static constexpr auto kArguments10 = Signature<decltype(&I::get_Connected)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments11 = Signature<decltype(&I::Verify)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments12 = Signature<decltype(&I::WaitCompletition)>::Describe({});
static constexpr auto kArguments13 = Signature<decltype(&I::GetStudyInfo)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"rawVr", ArgumentFlow::kOptional}}});
static constexpr auto kArguments14 = Signature<decltype(&I::GetSeriesInfo)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"rawVr", ArgumentFlow::kOptional}}});
static constexpr auto kArguments15 = Signature<decltype(&I::QuerySOP)>::Describe({{{"StudyInstanceUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"rawVr", ArgumentFlow::kOptional}}});
static constexpr auto kArguments16 = Signature<decltype(&I::get_UseCGET)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments17 = Signature<decltype(&I::put_UseCGET)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments18 = Signature<decltype(&I::AddSOP)>::Describe({{{"SOPClassUID", ArgumentFlow::kIn}}});
static constexpr auto kArguments19 = Signature<decltype(&I::AddTransferSyntax)>::Describe({{{"TrSyntaxUID", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"QueryStudy", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Asks for studies. `From` and `To` bound the study date, as YYYYMMDD: both the same is that one day, one of them empty leaves that\n"
        "side open, both empty asks for any. `Modalities` is Modalities in Study. Fails with \"Cannot query while processing\" until the\n"
        "end of an operation before has been told, and with \"Must connect first\"."},
{"QuerySeries", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Asks for the series of the study whose instance UID is `UID`. Fails as QueryStudy does."},
{"MoveStudy", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Fetches a study. `DestAE` is the title of the node that it is sent to; the objects then do not come through here. Where it is empty,\n"
        "and where UseCGET is set, they come over this very association as OnRetrieveDDO if the node can do so; if it cannot, an empty\n"
        "title stands for our own. A retrieval that is asked for while one runs waits for its turn, and goes where the last one asked\n"
        "for goes. Fails with \"Must connect first\" and \"Cannot execute retrieve while processing query\"."},
{"MoveSeries", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "Fetches a series, as MoveStudy does a study."},
{"MoveSOP", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "Fetches one instance, as MoveStudy does a study."},
{"MovePatient", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "Fetches all of a patient, as MoveStudy does a study."},
{"StopQuerying", MemberKind::kMethod, kArguments6.data(), kArguments6.size(), "Ends a running operation and with it the association; waits until the operation has ended. To go on, Connect again. Does\n"
        "nothing where none runs."},
{"IsWorking", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "Whether an operation is running."},
{"Connect", MemberKind::kMethod, kArguments8.data(), kArguments8.size(), "Opens the association, from the title `CallingAE` to the title `CalledAE` at `host` (a name or an address) and `port` (a number or a\n"
        "service as text). Fails with \"Connection to  %s: %s permanently refused\" or \"Connection to  %s: %s temporarily refused\" with\n"
        "host and title, then in a second line \"Non active link\", \"Unupported Application Context\", \"Unknown local AETitle\" or \"Unknown\n"
        "remote AETitle\"."},
{"Close", MemberKind::kMethod, kArguments9.data(), kArguments9.size(), "Ends the association. A running operation is told to stop, and waited for."},
{"Connected", MemberKind::kGet, kArguments10.data(), kArguments10.size(), "Whether there is an association."},
{"Verify", MemberKind::kMethod, kArguments11.data(), kArguments11.size(), "Asks the node for a sign of life, and waits for it on the calling thread. Fails with \"Cannot verify while processing\" and \"Must\n"
        "connect first\"."},
{"WaitCompletition", MemberKind::kMethod, kArguments12.data(), kArguments12.size(), "Waits until the running operation has ended; returns at once where none runs. Its events still have to be pumped."},
{"GetStudyInfo", MemberKind::kMethod, kArguments13.data(), kArguments13.size(), "Asks for one study with all that QueryStudy gives. Fails as QueryStudy does."},
{"GetSeriesInfo", MemberKind::kMethod, kArguments14.data(), kArguments14.size(), "Asks for one series of a study, with its SOP class. Fails as QueryStudy does."},
{"QuerySOP", MemberKind::kMethod, kArguments15.data(), kArguments15.size(), "Asks for the instances of a series. Fails as QueryStudy does."},
{"UseCGET", MemberKind::kGet, kArguments16.data(), kArguments16.size(), "Whether objects are to be fetched over this association rather than sent to a node."},
{"UseCGET", MemberKind::kPut, kArguments17.data(), kArguments17.size(), "Sets it: for retrievals from now on, and for what the next Connect proposes."},
{"AddSOP", MemberKind::kMethod, kArguments18.data(), kArguments18.size(), "Adds a storage class that may be received over the association, from the next Connect on."},
{"AddTransferSyntax", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Adds a transfer syntax to those that are proposed, from the next Connect on. Implicit VR Little Endian always is."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::QueryStudy>,
&CallMember<&I::QuerySeries>,
&CallMember<&I::MoveStudy>,
&CallMember<&I::MoveSeries>,
&CallMember<&I::MoveSOP>,
&CallMember<&I::MovePatient>,
&CallMember<&I::StopQuerying>,
&CallMember<&I::get_IsWorking>,
&CallMember<&I::Connect>,
&CallMember<&I::Close>,
&CallMember<&I::get_Connected>,
&CallMember<&I::Verify>,
&CallMember<&I::WaitCompletition>,
&CallMember<&I::GetStudyInfo>,
&CallMember<&I::GetSeriesInfo>,
&CallMember<&I::QuerySOP>,
&CallMember<&I::get_UseCGET>,
&CallMember<&I::put_UseCGET>,
&CallMember<&I::AddSOP>,
&CallMember<&I::AddTransferSyntax>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 20, "One association to a node, over which queries and retrievals run on a thread of their own. Each call that starts one returns at\n"
        "once; results come as events on the thread that made this object, which has to call PumpEvents (tessaret/pump.hpp) for them.\n"
        "A query ends with OnQueryEnd, a retrieval with OnRetrieveEnd, and only then the next query may be started; that may be done in the\n"
        "event itself.\n"
        "\n"
        "Texts of queries may have the wildcards of DICOM; blanks around them are dropped, and an empty text asks for any value. An object\n"
        "`rawVr` may bring further keys: its elements are moved into the query, where they win over those that it would have had, and the\n"
        "object is empty afterwards. It fails with \"IDcmObjectManager interface not found\" where the object lacks that interface."}, kCalls};
return kTable;
}

}  // namespace tessaret
