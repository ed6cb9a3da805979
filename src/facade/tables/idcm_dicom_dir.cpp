// Made by scripts/make_interface_tables.py from include/tessaret/idcm_dicom_dir.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_dicom_dir.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDCMDicomDir>() {
using I = IDCMDicomDir;

static constexpr auto kArguments0 = Signature<decltype(&I::AddIOD)>::Describe({{{"IOD", ArgumentFlow::kIn}, {"ForceExplicitLE", ArgumentFlow::kIn}, {"pFileID", ArgumentFlow::kResult}}});
static constexpr auto kArguments1 = Signature<decltype(&I::AddPrivate)>::Describe({{{"level", ArgumentFlow::kIn, 0, "_EnumDICOMDIRLevel"}, {"UID", ArgumentFlow::kIn}, {"File", ArgumentFlow::kIn}, {"pFileID", ArgumentFlow::kResult}}});
static constexpr auto kArguments2 = Signature<decltype(&I::Reset)>::Describe({});
static constexpr auto kArguments3 = Signature<decltype(&I::get_FileSetID)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments4 = Signature<decltype(&I::put_FileSetID)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments5 = Signature<decltype(&I::get_StorageUID)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments6 = Signature<decltype(&I::put_StorageUID)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments7 = Signature<decltype(&I::get_AETitle)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments8 = Signature<decltype(&I::put_AETitle)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments9 = Signature<decltype(&I::get_RootPath)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments10 = Signature<decltype(&I::put_RootPath)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments11 = Signature<decltype(&I::WriteCDR)>::Describe({{{"FileName", ArgumentFlow::kIn}}});
static constexpr auto kArguments12 = Signature<decltype(&I::get_DicomFileRoot)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::put_DicomFileRoot)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments14 = Signature<decltype(&I::ReadDICOMDIR)>::Describe({{{"fname", ArgumentFlow::kIn}}});

static constexpr MemberInfo kMembers[] = {
{"AddIOD", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Copies the file `IOD` into the file set, with directories for its patient, study and series where they are new. `ForceExplicitLE`\n"
        "true (exactly -1) has it stored as Explicit VR Little Endian, decompressed where need be. `pFileID` gets its place below\n"
        "RootPath, its parts parted by \"\\\". An instance that is there already is not copied again, and its place is given.\n"
        "Fails with \"CCDRObject::AddIOD: error loading [\" and the path, \"cannot write to [\", \"Destination is not empty\", \"Error Creating\n"
        "[\", \"Failed to init compression codecs\", \"Error decoding object\"."},
{"AddPrivate", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Puts a file of any kind beside the one that was added last, at `level` of the tree, with a private record that names `UID`. By a\n"
        "hard link where the file system has such, otherwise by a copy. `pFileID` gets its place. Fails with \"CCDRObject::AddPrivate: No\n"
        "current record\" before any AddIOD, and with \"CCDRObject::CopyFile: Error copying files to DICOMDIR struct\"."},
{"Reset", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Begins a new file set. Files that were written stay."},
{"FileSetID", MemberKind::kGet, kArguments3.data(), kArguments3.size(), "The identifier of the file set."},
{"FileSetID", MemberKind::kPut, kArguments4.data(), kArguments4.size(), "Sets it, unchecked."},
{"StorageUID", MemberKind::kGet, kArguments5.data(), kArguments5.size(), "The UID of the storage medium; empty where each WriteCDR is to make one."},
{"StorageUID", MemberKind::kPut, kArguments6.data(), kArguments6.size(), "Sets it, unchecked."},
{"AETitle", MemberKind::kGet, kArguments7.data(), kArguments7.size(), "The title that the files are written under, up to its first blank; \"KORVANDE\" at first."},
{"AETitle", MemberKind::kPut, kArguments8.data(), kArguments8.size(), "Sets it; what goes beyond 16 characters is cut."},
{"RootPath", MemberKind::kGet, kArguments9.data(), kArguments9.size(), "The directory that the file set is written to."},
{"RootPath", MemberKind::kPut, kArguments10.data(), kArguments10.size(), "Sets it."},
{"WriteCDR", MemberKind::kMethod, kArguments11.data(), kArguments11.size(), "Writes the directory file \"DICOMDIR\" into RootPath. `FileName` is looked for there only: it fails with the name and \" already\n"
        "present\" where that exists. What was added stays, and the file may be written again."},
{"DicomFileRoot", MemberKind::kGet, kArguments12.data(), kArguments12.size(), "The directory below RootPath that holds all files of the set; empty for none."},
{"DicomFileRoot", MemberKind::kPut, kArguments13.data(), kArguments13.size(), "Sets it."},
{"ReadDICOMDIR", MemberKind::kMethod, kArguments14.data(), kArguments14.size(), "Reads the DICOMDIR `fname` and tells its records by events before it returns, each with those below it; OnEnd comes last, also\n"
        "after a failure. Fails with \"Error loading DICOMDIr[\" and the path, and with \"Uncaught error in ReadDICOMDIR\"."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::AddIOD>,
&CallMember<&I::AddPrivate>,
&CallMember<&I::Reset>,
&CallMember<&I::get_FileSetID>,
&CallMember<&I::put_FileSetID>,
&CallMember<&I::get_StorageUID>,
&CallMember<&I::put_StorageUID>,
&CallMember<&I::get_AETitle>,
&CallMember<&I::put_AETitle>,
&CallMember<&I::get_RootPath>,
&CallMember<&I::put_RootPath>,
&CallMember<&I::WriteCDR>,
&CallMember<&I::get_DicomFileRoot>,
&CallMember<&I::put_DicomFileRoot>,
&CallMember<&I::ReadDICOMDIR>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 15, "Puts files one by one into a file set, then writes its DICOMDIR; or reads a DICOMDIR that exists and tells its records by events.\n"
        "Reading leaves nothing behind. A failure of AddIOD, AddPrivate and WriteCDR has \"DCMDicomDir::\" and the member's name with \": \" in\n"
        "front of its words; one that nobody foresaw is \"Unknown error\" behind that."}, kCalls};
return kTable;
}

}  // namespace tessaret
