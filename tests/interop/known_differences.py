"""Real files that the library reads or saves otherwise than other programs do, each with the cause. The tests hold
every line: one that is no longer true has to go."""

READ = "test_the_library_reads_what_pydicom_reads"
BY_PYDICOM = "test_pydicom_reads_the_same_from_the_saved_file"
BY_DCMDUMP = "test_dcmdump_reads_the_same_from_the_saved_file"
TURNED = "test_pydicom_and_dcmdump_read_the_same_from_the_other_little_endian_form"
VARIANTS_READ = "test_the_library_reads_what_pydicom_reads_from_what_dcmconv_wrote"
VARIANTS_SAME = "test_the_library_reads_the_same_from_all_encodings_that_dcmconv_wrote"

UNKNOWN_SYNTAX = "the transfer syntax is in no table, so nothing behind the meta header is read"
NO_GROUP_LENGTH = "group 2 has no (0002,0000), so its first element ends it, and (0002,0010) is not kept"
IMPLICIT_UN = "UN of undefined length is read in the stream's own form, not in the implicit one that the standard means"
SHORT_LENGTHS = "types but OB, OW, UN, UT and SQ have a 16-bit length here, OF, OD and OL too: what follows is misread"
TRUNCATED = "the file ends within an element, of which nothing is kept; pydicom shows what there is of it"

ROWS = [
    ("dicom/broken/GH177_ELE_undefined_length.dcm", [READ, BY_PYDICOM, BY_DCMDUMP, TURNED], IMPLICIT_UN),
    ("dicom/broken/GH177_big_endian_sequence_undefined_length.dcm", [BY_DCMDUMP], IMPLICIT_UN),
    ("dicom/encodings/sequences/UN_sequence.dcm", [READ, BY_PYDICOM, BY_DCMDUMP], IMPLICIT_UN),
    ("dicom/broken/MR_truncated.dcm", [READ, BY_PYDICOM, TURNED], TRUNCATED),
    ("dicom/broken/rtplan_truncated.dcm", [READ, BY_PYDICOM, TURNED], TRUNCATED),
    (
        "dicom/broken/emri_small_jpeg_2k_lossless_too_short.dcm",
        [READ, BY_PYDICOM],
        "the fragments have no delimiter; they are kept, pydicom leaves them out",
    ),
    (
        "dicom/broken/no_meta.dcm",
        [READ, BY_PYDICOM],
        "a stray byte before the data set: it is no data set, and each program makes something else of it",
    ),
    (
        "dicom/broken/reportsi_with_empty_number_tags.dcm",
        [BY_PYDICOM, BY_DCMDUMP],
        "an empty OF at the end is written with a 16-bit length, and other programs miss the rest of its length",
    ),
    ("dicom/compressed/deflated-frame/liver_deflate.dcm", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    (
        "dicom/compressed/deflated-frame/liver_nonbyte_aligned_deflate.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP],
        UNKNOWN_SYNTAX,
    ),
    ("dicom/compressed/htj2k/HTJ2KLossless_08_RGB.dcm", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    ("dicom/compressed/htj2k/HTJ2K_08_RGB.dcm", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    ("dicom/encodings/deflated/CTImage_deflated.dcm", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    ("dicom/encodings/deflated/image_dfl", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    ("dicom/encodings/deflated/report_dfl", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    ("dicom/encodings/deflated/wave_dfl", [READ, BY_PYDICOM, BY_DCMDUMP], UNKNOWN_SYNTAX),
    (
        "dicom/compressed/jpeg-baseline/SC_rgb_jpeg.dcm",
        [READ, BY_PYDICOM],
        "the data set is implicit although its syntax is explicit; pydicom guesses that",
    ),
    ("dicom/compressed/jpeg-ls/JLSL_RGB_ILV0.dcm", [READ], NO_GROUP_LENGTH),
    ("dicom/compressed/jpeg-ls/JLSL_RGB_ILV1.dcm", [READ], NO_GROUP_LENGTH),
    ("dicom/compressed/jpeg-ls/JLSL_RGB_ILV2.dcm", [READ], NO_GROUP_LENGTH),
    ("dicom/compressed/jpeg-ls/JLSN_RGB_ILV0.dcm", [READ], NO_GROUP_LENGTH),
    ("dicom/encodings/no-meta/no-meta-length-test.dcm", [READ], NO_GROUP_LENGTH),
    (
        "dicom/encodings/no-meta/no_meta_group_length.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP, TURNED],
        NO_GROUP_LENGTH + "; the implicit data set is read in the explicit form",
    ),
    (
        "dicom/encodings/no-meta/meta_missing_tsyntax.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP],
        "group 2 names no syntax, so the implicit data set is read in the explicit form; other programs guess",
    ),
    (
        "dicom/encodings/no-meta/ExplVR_BigEndNoMeta.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP],
        "without a meta header only the little endian forms are told apart; other programs guess",
    ),
    (
        "dicom/encodings/sequences/nested_priv_SQ.dcm",
        [BY_DCMDUMP],
        "elements of group 1 come before group 2 in the order of tags, so they are written before the meta header",
    ),
    (
        "dicom/modalities/ann/sm_annotations.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP, TURNED, VARIANTS_READ, VARIANTS_SAME],
        SHORT_LENGTHS,
    ),
    (
        "dicom/photometric/bits/parametric_map_float.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP, TURNED, VARIANTS_READ, VARIANTS_SAME],
        SHORT_LENGTHS,
    ),
    (
        "dicom/photometric/bits/parametric_map_double_float.dcm",
        [READ, BY_PYDICOM, BY_DCMDUMP, TURNED],
        SHORT_LENGTHS,
    ),
]

BY_TEST = {}
for path, tests, cause in ROWS:
    for test in tests:
        BY_TEST.setdefault(test, {})[path] = cause
