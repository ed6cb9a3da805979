// Made by scripts/make_interface_tables.py from include/tessaret; not to be edited.
// clang-format off
#include "facade/enumerations.h"
#include "tessaret/dicomdir_level.hpp"
#include "tessaret/file_options.hpp"
#include "tessaret/image_type.hpp"
#include "tessaret/img_flip_mode.hpp"
#include "tessaret/interpolation_order.hpp"
#include "tessaret/intersection_type.hpp"
#include "tessaret/merge_type.hpp"
#include "tessaret/oblique_view_mode.hpp"
#include "tessaret/reading_notes.hpp"
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
{"ENCODING_NONE", "Not known; to a load it says that the bytes are to tell.", ENCODING_NONE},
{"ENCODING_IMPLICIT_LITTLE", "", ENCODING_IMPLICIT_LITTLE},
{"ENCODING_EXPLICIT_LITTLE", "", ENCODING_EXPLICIT_LITTLE},
{"ENCODING_EXPLICIT_BIG", "", ENCODING_EXPLICIT_BIG},
};
constexpr tessaret_enumerator kMembers2[] = {
{"IMAGE_GRAY8", "One sample of 8 bits.", IMAGE_GRAY8},
{"IMAGE_GRAY16", "One sample of 16 bits.", IMAGE_GRAY16},
{"IMAGE_GRAY32", "One sample of 32 bits.", IMAGE_GRAY32},
{"IMAGE_RGB", "Three samples of 8 bits.", IMAGE_RGB},
};
constexpr tessaret_enumerator kMembers3[] = {
{"INTERP_NEAREST", "The nearest voxel's.", INTERP_NEAREST},
{"INTERP_TRILINEAR", "Linear in three directions.", INTERP_TRILINEAR},
{"INTERP_SYNCH_2", "By a kernel of order 2.", INTERP_SYNCH_2},
{"INTERP_SYNCH_3", "By a kernel of order 3.", INTERP_SYNCH_3},
{"INTERP_SYNCH_4", "By a kernel of order 4.", INTERP_SYNCH_4},
{"INTERP_SYNCH_5", "By a kernel of order 5.", INTERP_SYNCH_5},
{"INTERP_SYNCH_6", "By a kernel of order 6.", INTERP_SYNCH_6},
};
constexpr tessaret_enumerator kMembers4[] = {
{"INTERSECT_NONE", "They do not meet within the image, or nothing is known of their places.", INTERSECT_NONE},
{"INTERSECT_PARALLEL", "They are parallel.", INTERSECT_PARALLEL},
{"INTERSECT_SEGMENT", "They meet in a line that crosses the image.", INTERSECT_SEGMENT},
};
constexpr tessaret_enumerator kMembers5[] = {
{"LOAD_PIXELS", "Pixel data comes with its bytes, as they are in the file. Otherwise the element is there without them, and\n"
        "nothing behind it unless LOAD_SKIPS_PIXELS says so.", LOAD_PIXELS},
{"LOAD_STRICT", "What has no preamble with the mark \"DICM\" behind it is refused.", LOAD_STRICT},
{"LOAD_SKIPS_PIXELS", "What stands behind pixel data is read too, and the bytes of pixel data are stepped over instead of being loaded: those of\n"
        "(7FE0,0008), (7FE0,0009) and (7FE0,0010), at any depth, and of fragments. Every element and fragment is there with its\n"
        "length. Values of at most 4096 bytes, and those of a type other than OB, OW, OF, OD, OL, OV, UN and none, have their\n"
        "bytes as with LOAD_PIXELS; of all others IDcmFile.GetBytes gives the first 256, and nothing gives more. To save such an\n"
        "object fails, and so does to compress or to decompress it. Not together with LOAD_PIXELS.", LOAD_SKIPS_PIXELS},
};
constexpr tessaret_enumerator kMembers6[] = {
{"MERGE_TRANSPARENCY", "By transparency.", MERGE_TRANSPARENCY},
{"MERGE_DITHERED", "By a pattern of dots.", MERGE_DITHERED},
};
constexpr tessaret_enumerator kMembers7[] = {
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
constexpr tessaret_enumerator kMembers8[] = {
{"READ_TO_THE_END", "It came to the end of the bytes.", READ_TO_THE_END},
{"READ_CUT_ELEMENT", "The bytes end within an element.", READ_CUT_ELEMENT},
{"READ_NO_DELIMITER", "The bytes end where the delimiter of a sequence, an item or fragments is due. Everything was read all the same.", READ_NO_DELIMITER},
{"READ_STRAY_TAG", "A tag of group FFFE that is no item and no delimiter.", READ_STRAY_TAG},
{"READ_UNKNOWN_SYNTAX", "The meta header names a transfer syntax that the library does not know.", READ_UNKNOWN_SYNTAX},
{"READ_TO_PIXELS", "At pixel data that was not asked for.", READ_TO_PIXELS},
{"READ_ORPHAN_ITEM", "An item with no element before it.", READ_ORPHAN_ITEM},
{"READ_TOO_DEEP", "Sequences within sequences, more than 256 deep. Nothing is loaded then.", READ_TOO_DEEP},
{"READ_TOO_LONG", "An element with a length beyond what its stream says it holds. Files and blocks of bytes end such an element with\n"
        "READ_CUT_ELEMENT.", READ_TOO_LONG},
};
constexpr tessaret_enumerator kMembers9[] = {
{"ODDITY_NONE", "", ODDITY_NONE},
{"ODDITY_VALUE_BEYOND_ITEM", "A value longer than the item or sequence around it, with which it ends.", ODDITY_VALUE_BEYOND_ITEM},
{"ODDITY_WRONG_LENGTH", "A sequence or an item that ends elsewhere than its length says.", ODDITY_WRONG_LENGTH},
{"ODDITY_ELEMENT_IN_SEQUENCE", "A data element where only items belong; it is in the object that holds the sequence.", ODDITY_ELEMENT_IN_SEQUENCE},
{"ODDITY_ITEM_OUTSIDE", "An item that is in no sequence; it is in the element before it.", ODDITY_ITEM_OUTSIDE},
{"ODDITY_STRAY_FRAGMENT", "Something other than an item among the fragments of pixel data; it is dropped.", ODDITY_STRAY_FRAGMENT},
{"ODDITY_NOT_A_SEQUENCE", "An undefined length in an element of a type that has none; it is read as a sequence.", ODDITY_NOT_A_SEQUENCE},
{"ODDITY_NO_DELIMITER", "An undefined length that ends with what is around it instead of by a delimiter.", ODDITY_NO_DELIMITER},
{"ODDITY_STRAY_DELIMITER", "A delimiter outside all sequences.", ODDITY_STRAY_DELIMITER},
{"ODDITY_WRONG_DELIMITER", "A delimiter of the other kind than is due, or with a length; or a tag that is no item in the place of one.", ODDITY_WRONG_DELIMITER},
{"ODDITY_LATE_SYNTAX", "A (0002,0010) behind the meta header; it is dropped.", ODDITY_LATE_SYNTAX},
{"ODDITY_NO_LETTERS", "Two zero bytes where the letters of the type belong; the dictionary has the type.", ODDITY_NO_LETTERS},
{"ODDITY_TWICE", "An element of a tag that was there already, which it replaces.", ODDITY_TWICE},
};
constexpr tessaret_enumerator kMembers10[] = {
{"SAVE_BARE", "The data set alone, in implicit little endian.", SAVE_BARE},
{"SAVE_WITHOUT_META_HEADER", "Preamble and mark, and behind them the data set in implicit little endian.", SAVE_WITHOUT_META_HEADER},
{"SAVE_COMPLETE", "Preamble, mark, meta header, and the data set in the transfer syntax of (0002,0010), or implicit little endian\n"
        "without one.", SAVE_COMPLETE},
};
constexpr tessaret_enumerator kMembers11[] = {
{"SAVE_KEEPS_FILES", "A file that is there stays, also one that comes there during the save, and the save fails.", SAVE_KEEPS_FILES},
{"SAVE_KEEPS_TYPES", "Elements of type UN stay that. Otherwise those that the dictionary knows are written with its type, where their\n"
        "length fits it.", SAVE_KEEPS_TYPES},
};
constexpr tessaret_enumerator kMembers13[] = {
{"SHORT_VOXEL", "Signed 16 bits.", SHORT_VOXEL},
{"USHORT_VOXEL", "Unsigned 16 bits.", USHORT_VOXEL},
{"UCHAR_VOXEL", "Unsigned 8 bits.", UCHAR_VOXEL},
{"FLOAT_VOXEL", "Floating point of 32 bits.", FLOAT_VOXEL},
{"LONG_VOXEL", "Signed 32 bits.", LONG_VOXEL},
{"ULONG_VOXEL", "Unsigned 32 bits.", ULONG_VOXEL},
};
constexpr tessaret_enumerator kMembers14[] = {
{"IMAGE_FLIP_NONE", "As it is.", IMAGE_FLIP_NONE},
{"IMAGE_FLIP_VERT", "Upside down.", IMAGE_FLIP_VERT},
{"IMAGE_FLIP_HORZ", "Left and right swapped.", IMAGE_FLIP_HORZ},
{"IMAGE_FLIP_BOTH", "Both.", IMAGE_FLIP_BOTH},
};
constexpr tessaret_enumeration kEnumerations[] = {
{"_EnumDICOMDIRLevel", kMembers0, 4, "A level of the tree of records in a DICOMDIR."},
{"_EnumDataEncoding", kMembers1, 4, "How the elements of a data set are written (DICOM PS3.5, annex A). Compressed transfer syntaxes write them as\n"
        "explicit little endian does."},
{"_EnumImageType", kMembers2, 4, "How the samples of an image are stored. Colour images have three bytes a pixel in the order in which they were put."},
{"_EnumInterpolationOrder", kMembers3, 7, "How a value between voxels is found. Hosts share these names; no member takes them yet."},
{"_EnumIntersectionType", kMembers4, 3, "What the intersection of two planes is."},
{"_EnumLoadOption", kMembers5, 3, "What a load may be told. The numbers are added up."},
{"_EnumMergeType", kMembers6, 2, "How an image is merged onto another one."},
{"_EnumObliqueViewMode", kMembers7, 10, "Which section of a volume a control shows. The first letter of an orthogonal section is the volume's axis that runs along the rows\n"
        "of its image, the second the one that runs down its columns."},
{"_EnumReadingEnd", kMembers8, 9, "Why a reader stopped."},
{"_EnumReadingOddity", kMembers9, 13, "What a reader takes without complaint although hardly anybody can have meant it."},
{"_EnumSaveForm", kMembers10, 3, "What a save writes."},
{"_EnumSaveOption", kMembers11, 2, "What a save may be told. The numbers are added up."},
{"_EnumServerType", nullptr, 0, "What kind of server a receiver connects to. No kinds are named yet; any number may be passed."},
{"_EnumVoxelType", kMembers13, 6, "What one voxel of a volume is."},
{"_ImgFlipMode", kMembers14, 4, "How an image is mirrored: value 1 turns it upside down, value 2 swaps left and right."},
};

}  // namespace

std::span<const tessaret_enumeration> AllEnumerations() { return kEnumerations; }

}  // namespace tessaret
