// Made by scripts/make_interface_tables.py from include/tessaret; not to be edited.
// clang-format off
#include "facade/enumerations.h"
#include "tessaret/dicomdir_level.hpp"
#include "tessaret/image_type.hpp"
#include "tessaret/img_flip_mode.hpp"
#include "tessaret/interpolation_order.hpp"
#include "tessaret/intersection_type.hpp"
#include "tessaret/merge_type.hpp"
#include "tessaret/oblique_view_mode.hpp"
#include "tessaret/voxel_type.hpp"

namespace tessaret {
namespace {

constexpr tessaret_enumerator kMembers0[] = {
{"DICOMDIR_PATIENT", "", DICOMDIR_PATIENT},
{"DICOMDIR_STUDY", "", DICOMDIR_STUDY},
{"DICOMDIR_SERIES", "", DICOMDIR_SERIES},
{"DICOMDIR_OBJECT", "", DICOMDIR_OBJECT},
};
constexpr tessaret_enumerator kMembers1[] = {
{"IMAGE_GRAY8", "One sample of 8 bits.", IMAGE_GRAY8},
{"IMAGE_GRAY16", "One sample of 16 bits.", IMAGE_GRAY16},
{"IMAGE_GRAY32", "One sample of 32 bits.", IMAGE_GRAY32},
{"IMAGE_RGB", "Three samples of 8 bits.", IMAGE_RGB},
};
constexpr tessaret_enumerator kMembers2[] = {
{"INTERP_NEAREST", "The nearest voxel's.", INTERP_NEAREST},
{"INTERP_TRILINEAR", "Linear in three directions.", INTERP_TRILINEAR},
{"INTERP_SYNCH_2", "By a kernel of order 2.", INTERP_SYNCH_2},
{"INTERP_SYNCH_3", "By a kernel of order 3.", INTERP_SYNCH_3},
{"INTERP_SYNCH_4", "By a kernel of order 4.", INTERP_SYNCH_4},
{"INTERP_SYNCH_5", "By a kernel of order 5.", INTERP_SYNCH_5},
{"INTERP_SYNCH_6", "By a kernel of order 6.", INTERP_SYNCH_6},
};
constexpr tessaret_enumerator kMembers3[] = {
{"INTERSECT_NONE", "They do not meet within the image, or nothing is known of their places.", INTERSECT_NONE},
{"INTERSECT_PARALLEL", "They are parallel.", INTERSECT_PARALLEL},
{"INTERSECT_SEGMENT", "They meet in a line that crosses the image.", INTERSECT_SEGMENT},
};
constexpr tessaret_enumerator kMembers4[] = {
{"MERGE_TRANSPARENCY", "By transparency.", MERGE_TRANSPARENCY},
{"MERGE_DITHERED", "By a pattern of dots.", MERGE_DITHERED},
};
constexpr tessaret_enumerator kMembers5[] = {
{"OBLIQUE_ORTHO_XY", "", OBLIQUE_ORTHO_XY},
{"OBLIQUE_ORTHO_YZ", "", OBLIQUE_ORTHO_YZ},
{"OBLIQUE_ORTHO_XZ", "", OBLIQUE_ORTHO_XZ},
{"OBLIQUE_ORTHO_ZX", "", OBLIQUE_ORTHO_ZX},
{"OBLIQUE_ORTHO_ZY", "", OBLIQUE_ORTHO_ZY},
{"OBLIQUE_ORTHO_YX", "", OBLIQUE_ORTHO_YX},
{"OBLIQUE_ORTHO_AXIAL", "The axial plane of the patient, whatever the axes of the volume.", OBLIQUE_ORTHO_AXIAL},
{"OBLIQUE_ORTHO_SAGGITAL", "The sagittal plane of the patient.", OBLIQUE_ORTHO_SAGGITAL},
{"OBLIQUE_ORTHO_CORONAL", "The coronal plane of the patient.", OBLIQUE_ORTHO_CORONAL},
{"OBLIQUE_FREE", "Any other plane, as it was set by points.", OBLIQUE_FREE},
};
constexpr tessaret_enumerator kMembers7[] = {
{"SHORT_VOXEL", "Signed 16 bits.", SHORT_VOXEL},
{"USHORT_VOXEL", "Unsigned 16 bits.", USHORT_VOXEL},
{"UCHAR_VOXEL", "Unsigned 8 bits.", UCHAR_VOXEL},
{"FLOAT_VOXEL", "Floating point of 32 bits.", FLOAT_VOXEL},
{"LONG_VOXEL", "Signed 32 bits.", LONG_VOXEL},
{"ULONG_VOXEL", "Unsigned 32 bits.", ULONG_VOXEL},
};
constexpr tessaret_enumerator kMembers8[] = {
{"IMAGE_FLIP_NONE", "As it is.", IMAGE_FLIP_NONE},
{"IMAGE_FLIP_VERT", "Upside down.", IMAGE_FLIP_VERT},
{"IMAGE_FLIP_HORZ", "Left and right swapped.", IMAGE_FLIP_HORZ},
{"IMAGE_FLIP_BOTH", "Both.", IMAGE_FLIP_BOTH},
};
constexpr tessaret_enumeration kEnumerations[] = {
{"_EnumDICOMDIRLevel", kMembers0, 4, "A level of the tree of records in a DICOMDIR."},
{"_EnumImageType", kMembers1, 4, "How the samples of an image are stored. Colour images have three bytes a pixel in the order in which they were put."},
{"_EnumInterpolationOrder", kMembers2, 7, "How a value between voxels is found. Hosts share these names; no member takes them yet."},
{"_EnumIntersectionType", kMembers3, 3, "What the intersection of two planes is."},
{"_EnumMergeType", kMembers4, 2, "How an image is merged onto another one."},
{"_EnumObliqueViewMode", kMembers5, 10, "Which section of a volume a control shows. The first letter of an orthogonal section is the volume's axis that runs along the rows\n"
        "of its image, the second the one that runs down its columns."},
{"_EnumServerType", nullptr, 0, "What kind of server a receiver connects to. No kinds are named yet; any number may be passed."},
{"_EnumVoxelType", kMembers7, 6, "What one voxel of a volume is."},
{"_ImgFlipMode", kMembers8, 4, "How an image is mirrored: value 1 turns it upside down, value 2 swaps left and right."},
};

}  // namespace

std::span<const tessaret_enumeration> AllEnumerations() { return kEnumerations; }

}  // namespace tessaret
