// Real files that do not load, or do not come back, as the manifest and the saved form say, each with its cause. The
// tests hold every line: one that is no longer true has to go.
#pragma once

#include <cstdint>
#include <string_view>

#include "core/data_set_coder.h"

namespace tessaret::test {

/// A file of which another number of top-level elements loads than independent programs count, or whose parse ends
/// early.
struct KnownDifference {
  std::string_view path;
  std::uint64_t elements;
  ParseStop::Why stop;
  std::string_view cause;
};

/// A file whose saved copy loads to another object, with the first difference as `Difference` words it.
struct KnownSavedDifference {
  std::string_view path;
  std::string_view difference;
  std::string_view cause;
};

namespace cause {
inline constexpr std::string_view kUnknownSyntax =
    "the transfer syntax is in no table, so the parse ends behind the meta header";
inline constexpr std::string_view kSyntaxIsNotKept =
    "group 2 has no (0002,0000), so its first element ends it; (0002,0010) is that element, takes "
    "effect and is not kept";
inline constexpr std::string_view kShortFloats =
    "OF and OD have a 16-bit length here, which reads 0; the 32-bit length and the values behind "
    "it are taken for elements";
inline constexpr std::string_view kGarbageBeforeTheMetaHeader =
    "elements of group 0, which came from reading values as elements, are written first and stand "
    "before the meta header";
}  // namespace cause

inline constexpr KnownDifference kKnownDifferences[] = {
    {"dicom/broken/GH177_big_endian_sequence_undefined_length.dcm", 54, ParseStop::Why::kTruncated,
     "an element of VR UN and undefined length is read in the stream's own form; its implicit "
     "little endian content makes no "
     "sense there"},
    {"dicom/broken/MR_truncated.dcm", 79, ParseStop::Why::kTruncated,
     "the file ends within the pixel data, which are not kept in part"},
    {"dicom/broken/emri_small_jpeg_2k_lossless_too_short.dcm", 139, ParseStop::Why::kMissingEnd,
     "the file ends within the last frame, whose fragments have no delimiter; those that are there "
     "are kept"},
    {"dicom/broken/no_meta.dcm", 90, ParseStop::Why::kNone,
     "a stray byte before the data set shifts every tag; what is read is no data set, but ends "
     "with the file"},
    {"dicom/broken/reportsi_with_empty_number_tags.dcm", 48, ParseStop::Why::kTruncated,
     "the file ends with an empty OF, which has a 16-bit length here, so the upper half of its "
     "length is the start of a tag"},
    {"dicom/broken/rtplan_truncated.dcm", 38, ParseStop::Why::kTruncated,
     "the file ends within an element of a sequence; the sequence is kept as far as it came"},
    {"dicom/compressed/deflated-frame/liver_deflate.dcm", 7, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/compressed/deflated-frame/liver_nonbyte_aligned_deflate.dcm", 7,
     ParseStop::Why::kUnknownSyntax, cause::kUnknownSyntax},
    {"dicom/compressed/htj2k/HTJ2KLossless_08_RGB.dcm", 7, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/compressed/htj2k/HTJ2K_08_RGB.dcm", 7, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/compressed/jpeg-baseline/SC_rgb_jpeg.dcm", 8, ParseStop::Why::kTruncated,
     "the meta header names a syntax of the explicit form, but the data set is implicit: the first "
     "length reads as letters"},
    {"dicom/compressed/jpeg-ls/JLSL_RGB_ILV0.dcm", 12, ParseStop::Why::kNone,
     cause::kSyntaxIsNotKept},
    {"dicom/compressed/jpeg-ls/JLSL_RGB_ILV1.dcm", 12, ParseStop::Why::kNone,
     cause::kSyntaxIsNotKept},
    {"dicom/compressed/jpeg-ls/JLSL_RGB_ILV2.dcm", 12, ParseStop::Why::kNone,
     cause::kSyntaxIsNotKept},
    {"dicom/compressed/jpeg-ls/JLSN_RGB_ILV0.dcm", 12, ParseStop::Why::kNone,
     cause::kSyntaxIsNotKept},
    {"dicom/encodings/deflated/CTImage_deflated.dcm", 8, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/encodings/deflated/image_dfl", 8, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/encodings/deflated/report_dfl", 8, ParseStop::Why::kUnknownSyntax,
     cause::kUnknownSyntax},
    {"dicom/encodings/deflated/wave_dfl", 8, ParseStop::Why::kUnknownSyntax, cause::kUnknownSyntax},
    {"dicom/encodings/no-meta/ExplVR_BigEndNoMeta.dcm", 0, ParseStop::Why::kTruncated,
     "without a meta header only the two little endian forms are told apart; the first length is "
     "too long when turned round"},
    {"dicom/encodings/no-meta/meta_missing_tsyntax.dcm", 5, ParseStop::Why::kTruncated,
     "group 2 names no syntax, so the implicit data set is read in the explicit form of the meta "
     "header"},
    {"dicom/encodings/no-meta/no-meta-length-test.dcm", 10, ParseStop::Why::kNone,
     "group 2 has no (0002,0000), so its first element ends it; (0002,0010) comes later and is "
     "passed over"},
    {"dicom/encodings/no-meta/no_meta_group_length.dcm", 7, ParseStop::Why::kTruncated,
     "group 2 has no (0002,0000), so its first element ends it; (0002,0010) comes later and is "
     "passed over, and the implicit "
     "data set is read in the explicit form"},
    {"dicom/encodings/sequences/UN_sequence.dcm", 9, ParseStop::Why::kTruncated,
     "an element of VR UN and undefined length is read in the stream's own form; its implicit "
     "content makes no sense there"},
    {"dicom/photometric/bits/parametric_map_double_float.dcm", 63, ParseStop::Why::kTruncated,
     cause::kShortFloats},
    {"dicom/photometric/bits/parametric_map_float.dcm", 61, ParseStop::Why::kTruncated,
     cause::kShortFloats},
};

inline constexpr KnownSavedDifference kKnownSavedDifferences[] = {
    {"dicom/encodings/sequences/nested_priv_SQ.dcm", "(0001,0001): TypeCode 21838 and 21329",
     "an element of group 1 comes before group 2 in the order of tags: it is written first, in the "
     "explicit form, and stands "
     "before the meta header"},
    {"dicom/photometric/bits/parametric_map_double_float.dcm", "(0000,0002) and no further element",
     cause::kGarbageBeforeTheMetaHeader},
    {"dicom/photometric/bits/parametric_map_float.dcm", "(0000,0001) and no further element",
     cause::kGarbageBeforeTheMetaHeader},
};

/// The line of a file in one of the tables, or null.
template <class Row, std::size_t kCount>
constexpr const Row* FindRow(const Row (&table)[kCount], std::string_view path) {
  for (const Row& row : table) {
    if (row.path == path) return &row;
  }
  return nullptr;
}

}  // namespace tessaret::test
