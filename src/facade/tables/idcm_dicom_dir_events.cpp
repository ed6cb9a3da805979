// Made by scripts/make_interface_tables.py from include/tessaret/idcm_dicom_dir.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_dicom_dir.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<_IDCMDicomDirEvents>() {
using I = _IDCMDicomDirEvents;

static constexpr auto kArguments0 = Signature<decltype(&I::OnStudy)>::Describe({{{"PatienID", ArgumentFlow::kIn}, {"StudyUID", ArgumentFlow::kIn}, {"rec", ArgumentFlow::kIn}}});
static constexpr auto kArguments1 = Signature<decltype(&I::OnSeries)>::Describe({{{"StudyUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"Modality", ArgumentFlow::kIn}, {"rec", ArgumentFlow::kIn}}});
static constexpr auto kArguments2 = Signature<decltype(&I::OnSOPInstance)>::Describe({{{"StudyUID", ArgumentFlow::kIn}, {"SeriesInstanceUID", ArgumentFlow::kIn}, {"SOPInstanceUID", ArgumentFlow::kIn}, {"type", ArgumentFlow::kIn}, {"File", ArgumentFlow::kIn}, {"rec", ArgumentFlow::kIn}}});
static constexpr auto kArguments3 = Signature<decltype(&I::OnPatient)>::Describe({{{"Name", ArgumentFlow::kIn}, {"PatientID", ArgumentFlow::kIn}, {"rec", ArgumentFlow::kIn}}});
static constexpr auto kArguments4 = Signature<decltype(&I::OnEnd)>::Describe({});

static constexpr MemberInfo kMembers[] = {
{"OnStudy", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "A study of the patient told last."},
{"OnSeries", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "A series of the study told last."},
{"OnSOPInstance", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Any other record. `type` is its type, \"PRIVATE\" for private ones; `File` the place of its file as it stands in the record, its\n"
        "parts parted by \"\\\"."},
{"OnPatient", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "A patient."},
{"OnEnd", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "All has been told."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::OnStudy>,
&CallMember<&I::OnSeries>,
&CallMember<&I::OnSOPInstance>,
&CallMember<&I::OnPatient>,
&CallMember<&I::OnEnd>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 5, "Events of that class. They come on the thread that called ReadDICOMDIR, while it runs. `rec` is a new object with a copy of the\n"
        "record, and the sink's to keep."}, kCalls};
return kTable;
}

}  // namespace tessaret
