// Made by scripts/make_interface_tables.py from include/tessaret/idcm_volume.hpp; not to be edited.
// clang-format off
#include "component/call_by_name.h"
#include "tessaret/idcm_volume.hpp"

namespace tessaret {

template <>
const InterfaceTable& TableOf<IDCMVolume>() {
using I = IDCMVolume;

static constexpr auto kArguments0 = Signature<decltype(&I::Create)>::Describe({{{"type", ArgumentFlow::kIn, 0, "_EnumVoxelType"}, {"dx", ArgumentFlow::kIn}, {"dy", ArgumentFlow::kIn}, {"dz", ArgumentFlow::kIn}, {"ZArray", ArgumentFlow::kOptional}}});
static constexpr auto kArguments1 = Signature<decltype(&I::GetOrigin)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments2 = Signature<decltype(&I::PutOrigin)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"z", ArgumentFlow::kIn}}});
static constexpr auto kArguments3 = Signature<decltype(&I::GetOrientation)>::Describe({{{"rowX", ArgumentFlow::kOut}, {"rowY", ArgumentFlow::kOut}, {"rowZ", ArgumentFlow::kOut}, {"colX", ArgumentFlow::kOut}, {"colY", ArgumentFlow::kOut}, {"colZ", ArgumentFlow::kOut}}});
static constexpr auto kArguments4 = Signature<decltype(&I::SetOrientation)>::Describe({{{"rowX", ArgumentFlow::kIn}, {"rowY", ArgumentFlow::kIn}, {"rowZ", ArgumentFlow::kIn}, {"colX", ArgumentFlow::kIn}, {"colY", ArgumentFlow::kIn}, {"colZ", ArgumentFlow::kIn}}});
static constexpr auto kArguments5 = Signature<decltype(&I::SetSpacing)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"z", ArgumentFlow::kIn}}});
static constexpr auto kArguments6 = Signature<decltype(&I::GetSpacing)>::Describe({{{"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments7 = Signature<decltype(&I::putref_Plane)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"image", ArgumentFlow::kIn}}});
static constexpr auto kArguments8 = Signature<decltype(&I::Dispose)>::Describe({});
static constexpr auto kArguments9 = Signature<decltype(&I::AddIOD)>::Describe({{{"iod", ArgumentFlow::kIn}}});
static constexpr auto kArguments10 = Signature<decltype(&I::UpdateVolume)>::Describe({});
static constexpr auto kArguments11 = Signature<decltype(&I::GetDimensions)>::Describe({{{"dx", ArgumentFlow::kOut}, {"dy", ArgumentFlow::kOut}, {"dz", ArgumentFlow::kOut}}});
static constexpr auto kArguments12 = Signature<decltype(&I::get_VoxelSize)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments13 = Signature<decltype(&I::get_Min)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments14 = Signature<decltype(&I::get_Max)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments15 = Signature<decltype(&I::Allocate)>::Describe({});
static constexpr auto kArguments16 = Signature<decltype(&I::StopElab)>::Describe({});
static constexpr auto kArguments17 = Signature<decltype(&I::get_VolumePlaneToIOD)>::Describe({{{"PlaneIdx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments18 = Signature<decltype(&I::get_IODToVolumePlane)>::Describe({{{"IODIdx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments19 = Signature<decltype(&I::ReorderIOD)>::Describe({});
static constexpr auto kArguments20 = Signature<decltype(&I::get_FrameOfReferenceUID)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments21 = Signature<decltype(&I::get_SeriesUID)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments22 = Signature<decltype(&I::get_VolName)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments23 = Signature<decltype(&I::put_VolName)>::Describe({{{"newVal", ArgumentFlow::kIn}}});
static constexpr auto kArguments24 = Signature<decltype(&I::IsAligned)>::Describe({{{"vol", ArgumentFlow::kIn}, {"Theta", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments25 = Signature<decltype(&I::GetPlaneOrigin)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"x", ArgumentFlow::kOut}, {"y", ArgumentFlow::kOut}, {"z", ArgumentFlow::kOut}}});
static constexpr auto kArguments26 = Signature<decltype(&I::FindPlane)>::Describe({{{"x", ArgumentFlow::kIn}, {"y", ArgumentFlow::kIn}, {"z", ArgumentFlow::kIn}, {"delta", ArgumentFlow::kOut}, {"Idx", ArgumentFlow::kResult}}});
static constexpr auto kArguments27 = Signature<decltype(&I::get_IODIdx)>::Describe({{{"iod", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments28 = Signature<decltype(&I::get_IOD)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments29 = Signature<decltype(&I::FindNearestPlane)>::Describe({{{"iod", ArgumentFlow::kIn}, {"delta", ArgumentFlow::kOut}, {"Idx", ArgumentFlow::kResult}}});
static constexpr auto kArguments30 = Signature<decltype(&I::VolumeToDicom)>::Describe({{{"vx", ArgumentFlow::kIn}, {"vy", ArgumentFlow::kIn}, {"vz", ArgumentFlow::kIn}, {"dcmX", ArgumentFlow::kOut}, {"dcmY", ArgumentFlow::kOut}, {"dcmZ", ArgumentFlow::kOut}}});
static constexpr auto kArguments31 = Signature<decltype(&I::DicomToVolume)>::Describe({{{"dcmX", ArgumentFlow::kIn}, {"dcmY", ArgumentFlow::kIn}, {"dcmZ", ArgumentFlow::kIn}, {"vx", ArgumentFlow::kOut}, {"vy", ArgumentFlow::kOut}, {"vz", ArgumentFlow::kOut}}});
static constexpr auto kArguments32 = Signature<decltype(&I::get_IsDicomVolume)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments33 = Signature<decltype(&I::IntersectPlane)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"iod", ArgumentFlow::kIn}, {"pResult", ArgumentFlow::kOut}, {"pVal", ArgumentFlow::kResult, 0, "_EnumIntersectionType"}}});
static constexpr auto kArguments34 = Signature<decltype(&I::get_NumPlanes)>::Describe({{{"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments35 = Signature<decltype(&I::PlaneToVolume)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"ix", ArgumentFlow::kIn}, {"iy", ArgumentFlow::kIn}, {"vx", ArgumentFlow::kOut}, {"vy", ArgumentFlow::kOut}, {"vz", ArgumentFlow::kOut}}});
static constexpr auto kArguments36 = Signature<decltype(&I::Save)>::Describe({{{"fname", ArgumentFlow::kIn}}});
static constexpr auto kArguments37 = Signature<decltype(&I::get_PlaneZ)>::Describe({{{"Idx", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});
static constexpr auto kArguments38 = Signature<decltype(&I::PlaneZToIdx)>::Describe({{{"z", ArgumentFlow::kIn}, {"delta", ArgumentFlow::kOut}, {"Idx", ArgumentFlow::kResult}}});
static constexpr auto kArguments39 = Signature<decltype(&I::get_AlignedImage)>::Describe({{{"pImage", ArgumentFlow::kIn}, {"pVal", ArgumentFlow::kResult}}});

static constexpr MemberInfo kMembers[] = {
{"Create", MemberKind::kMethod, kArguments0.data(), kArguments0.size(), "Makes a plain box of `dz` planes of `dx` by `dy` voxels, with memory for them. `ZArray`, where it is not empty, is an array of 32-bit\n"
        "floating point numbers with `dz` entries in one dimension: where each plane lies, in millimetres. Fails with \"ZArray must be a R4\n"
        "(single) array [1..dz]\", \"ZArray must be a R4 (single) array\", \"Not enough memory for volume\"."},
{"GetOrigin", MemberKind::kMethod, kArguments1.data(), kArguments1.size(), "Where the first voxel lies, in millimetres in the patient."},
{"PutOrigin", MemberKind::kMethod, kArguments2.data(), kArguments2.size(), "Sets it."},
{"GetOrientation", MemberKind::kMethod, kArguments3.data(), kArguments3.size(), "The directions of lines and of columns in the patient, as unit vectors."},
{"SetOrientation", MemberKind::kMethod, kArguments4.data(), kArguments4.size(), "Sets them."},
{"SetSpacing", MemberKind::kMethod, kArguments5.data(), kArguments5.size(), "Sets the distances of columns, lines and planes, in millimetres."},
{"GetSpacing", MemberKind::kMethod, kArguments6.data(), kArguments6.size(), "Gives them."},
{"Plane", MemberKind::kPutRef, kArguments7.data(), kArguments7.size(), "Makes plane `Idx` the pixels of `image`, which the volume holds from then on. Allocate comes before. Fails with \"Must create volume\n"
        "first\", \"PutPlane: Bad Plane IDX\", \"Volume must be allocated before putting planes\"."},
{"Dispose", MemberKind::kMethod, kArguments8.data(), kArguments8.size(), "Lets go of all voxels and instances. The UIDs stay."},
{"AddIOD", MemberKind::kMethod, kArguments9.data(), kArguments9.size(), "Adds an instance, of which a reference is kept. All have to be of one series and one frame of reference and parallel to each other.\n"
        "Fails with \"Missing Series UID\", \"IOD must be of the same series\", \"Missing frame of reference\", \"IOD must have the same plane of\n"
        "reference\", \"Missing Image Plane\", \"Missing SOP Instance UID\", \"Bad Plane Orientation in Volume IOD\", \"Volume planes must be\n"
        "parallel\"."},
{"UpdateVolume", MemberKind::kMethod, kArguments10.data(), kArguments10.size(), "Sorts what was added and works out the geometry; no pixel is read. Fails with \"No IOD added to volume\", \"Error getting\n"
        "IDcmObjectManager\", \"Cannor find Image Plane\"."},
{"GetDimensions", MemberKind::kMethod, kArguments11.data(), kArguments11.size(), "How many columns and lines the planes have, and how many planes there are."},
{"VoxelSize", MemberKind::kGet, kArguments12.data(), kArguments12.size(), "The length of a voxel of the regular grid in millimetres."},
{"Min", MemberKind::kGet, kArguments13.data(), kArguments13.size(), "The least value of all voxels."},
{"Max", MemberKind::kGet, kArguments14.data(), kArguments14.size(), "The greatest value of all voxels."},
{"Allocate", MemberKind::kMethod, kArguments15.data(), kArguments15.size(), "Makes the volume ready for its planes, which come by setting Plane; UpdateVolume is done first where it is due. Fails with \"Error\n"
        "allocating volume\"."},
{"StopElab", MemberKind::kMethod, kArguments16.data(), kArguments16.size(), "Ends a loading of pixels that is under way. It may be called from OnProgress or another thread."},
{"VolumePlaneToIOD", MemberKind::kGet, kArguments17.data(), kArguments17.size(), "Which instance, in the order in which they were added, plane `PlaneIdx` is."},
{"IODToVolumePlane", MemberKind::kGet, kArguments18.data(), kArguments18.size(), "Which plane instance `IODIdx` is."},
{"ReorderIOD", MemberKind::kMethod, kArguments19.data(), kArguments19.size(), "Puts the instances into the order of their planes, so that both indices are the same."},
{"FrameOfReferenceUID", MemberKind::kGet, kArguments20.data(), kArguments20.size(), "The UID of the frame of reference; empty before the first instance."},
{"SeriesUID", MemberKind::kGet, kArguments21.data(), kArguments21.size(), "The UID of the series; empty before the first instance."},
{"VolName", MemberKind::kGet, kArguments22.data(), kArguments22.size(), "A name for people."},
{"VolName", MemberKind::kPut, kArguments23.data(), kArguments23.size(), "Sets it."},
{"IsAligned", MemberKind::kMethod, kArguments24.data(), kArguments24.size(), "Whether the planes of both volumes are parallel, within the angle `Theta` in radians; 0 stands for 0.01. False for null."},
{"GetPlaneOrigin", MemberKind::kMethod, kArguments25.data(), kArguments25.size(), "Where the first pixel of plane `Idx` lies, in millimetres in the patient."},
{"FindPlane", MemberKind::kMethod, kArguments26.data(), kArguments26.size(), "The plane nearest to a point of the patient, in millimetres: `Idx` is its instance, `delta` how far the point lies from it in\n"
        "voxels of the grid."},
{"IODIdx", MemberKind::kGet, kArguments27.data(), kArguments27.size(), "Which instance has the SOP instance UID of `iod`; -1 where there is none."},
{"IOD", MemberKind::kGet, kArguments28.data(), kArguments28.size(), "Instance `Idx`, with a reference for the caller. Fails with \"CDCMVolume::get_IOD: Bad Idx\"."},
{"FindNearestPlane", MemberKind::kMethod, kArguments29.data(), kArguments29.size(), "The plane nearest to the image `iod`: `Idx` is its instance, `delta` the distance in millimetres. -1 where `iod` has another frame\n"
        "of reference or is not parallel. Fails with \"Missing plane origin\", \"Missing plane orientation\", \"Bad Origin format\", \"Bad\n"
        "Orientation format\"."},
{"VolumeToDicom", MemberKind::kMethod, kArguments30.data(), kArguments30.size(), "From voxels of the grid to millimetres in the patient."},
{"DicomToVolume", MemberKind::kMethod, kArguments31.data(), kArguments31.size(), "From millimetres in the patient to voxels of the grid."},
{"IsDicomVolume", MemberKind::kGet, kArguments32.data(), kArguments32.size(), "True for a volume of DICOM instances; fails with \"Not a DICOM Volume\" for any other."},
{"IntersectPlane", MemberKind::kMethod, kArguments33.data(), kArguments33.size(), "How plane `Idx` and the image `iod` meet. INTERSECT_PARALLEL: `pResult` is their distance, a 32-bit floating point number.\n"
        "INTERSECT_SEGMENT: an array of such numbers with two dimensions from 1 to 2, the ends of the segment in pixels of the plane; the\n"
        "first index is the coordinate, the second the end. Fails with \"CDCMVolume::IntersectPlane: Bad plane index\", \"Bad Origin in\n"
        "Volume IOD\", \"Bad Plane Orientation in Volume IOD\"."},
{"NumPlanes", MemberKind::kGet, kArguments34.data(), kArguments34.size(), "How many planes there are; 0 without a volume."},
{"PlaneToVolume", MemberKind::kMethod, kArguments35.data(), kArguments35.size(), "From column `ix` and line `iy` of plane `Idx` to voxels of the grid."},
{"Save", MemberKind::kMethod, kArguments36.data(), kArguments36.size(), "Writes the voxels of all planes to a file, line by line, with nothing else. Does nothing without a volume; a failed write is not\n"
        "told."},
{"PlaneZ", MemberKind::kGet, kArguments37.data(), kArguments37.size(), "Where plane `Idx` lies along the third axis, in voxels of the grid."},
{"PlaneZToIdx", MemberKind::kMethod, kArguments38.data(), kArguments38.size(), "The plane nearest to `z`, which is millimetres from the first plane; `delta` is how far it lies from it."},
{"AlignedImage", MemberKind::kGet, kArguments39.data(), kArguments39.size(), "A section of the volume in the plane of the image `pImage`, of its size and spacing, with 16 bits. New, with a reference for the\n"
        "caller."},
};
static constexpr MemberCall kCalls[] = {
&CallMember<&I::Create>,
&CallMember<&I::GetOrigin>,
&CallMember<&I::PutOrigin>,
&CallMember<&I::GetOrientation>,
&CallMember<&I::SetOrientation>,
&CallMember<&I::SetSpacing>,
&CallMember<&I::GetSpacing>,
&CallMember<&I::putref_Plane>,
&CallMember<&I::Dispose>,
&CallMember<&I::AddIOD>,
&CallMember<&I::UpdateVolume>,
&CallMember<&I::GetDimensions>,
&CallMember<&I::get_VoxelSize>,
&CallMember<&I::get_Min>,
&CallMember<&I::get_Max>,
&CallMember<&I::Allocate>,
&CallMember<&I::StopElab>,
&CallMember<&I::get_VolumePlaneToIOD>,
&CallMember<&I::get_IODToVolumePlane>,
&CallMember<&I::ReorderIOD>,
&CallMember<&I::get_FrameOfReferenceUID>,
&CallMember<&I::get_SeriesUID>,
&CallMember<&I::get_VolName>,
&CallMember<&I::put_VolName>,
&CallMember<&I::IsAligned>,
&CallMember<&I::GetPlaneOrigin>,
&CallMember<&I::FindPlane>,
&CallMember<&I::get_IODIdx>,
&CallMember<&I::get_IOD>,
&CallMember<&I::FindNearestPlane>,
&CallMember<&I::VolumeToDicom>,
&CallMember<&I::DicomToVolume>,
&CallMember<&I::get_IsDicomVolume>,
&CallMember<&I::IntersectPlane>,
&CallMember<&I::get_NumPlanes>,
&CallMember<&I::PlaneToVolume>,
&CallMember<&I::Save>,
&CallMember<&I::get_PlaneZ>,
&CallMember<&I::PlaneZToIdx>,
&CallMember<&I::get_AlignedImage>,
};

static constexpr InterfaceTable kTable = {{I::kName, I::kId, kMembers, 40, "A stack of planes: either the instances of one series, added one by one and sorted in the patient's space, or a plain box that Create\n"
        "makes. Planes and instances count from 0.\n"
        "\n"
        "Three systems of coordinates: DICOM is millimetres in the patient; pixels of a plane are columns and lines of its image; volume is\n"
        "voxels of a regular grid whose first axis runs along the lines of the planes, the second along their columns, and the third from\n"
        "plane to plane, against the cross product of the first two.\n"
        "\n"
        "Members of a volume of DICOM instances fail with \"Not a DICOM Volume\" for a plain box and before UpdateVolume; those that need any\n"
        "volume with \"No volume defined\". An index outside is \"Bad plane index\" where nothing else is said."}, kCalls};
return kTable;
}

}  // namespace tessaret
