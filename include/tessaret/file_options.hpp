/// How files and blocks of bytes are read and written.
#pragma once

#include <cstdint>

namespace tessaret {

/// What a load may be told. The numbers are added up.
enum _EnumLoadOption : std::int32_t {
  /// Pixel data comes with its bytes, as they are in the file. Otherwise the element is there without them, and
  /// nothing behind it unless LOAD_SKIPS_PIXELS says so.
  LOAD_PIXELS = 1,
  /// What has no preamble with the mark "DICM" behind it is refused.
  LOAD_STRICT = 2,
  /// What stands behind pixel data is read too, and the bytes of pixel data are stepped over instead of being loaded: those of
  /// (7FE0,0008), (7FE0,0009) and (7FE0,0010), at any depth, and of fragments. Every element and fragment is there with its
  /// length. Values of at most 4096 bytes, and those of a type other than OB, OW, OF, OD, OL, OV, UN and none, have their
  /// bytes as with LOAD_PIXELS; of all others IDcmFile.GetBytes gives the first 256, and nothing gives more. To save such an
  /// object fails, and so does to compress or to decompress it. Not together with LOAD_PIXELS.
  LOAD_SKIPS_PIXELS = 4,
};

/// How the elements of a data set are written (DICOM PS3.5, annex A). Compressed transfer syntaxes write them as
/// explicit little endian does.
enum _EnumDataEncoding : std::int32_t {
  /// Not known; to a load it says that the bytes are to tell.
  ENCODING_NONE = 0,
  ENCODING_IMPLICIT_LITTLE = 100,
  ENCODING_EXPLICIT_LITTLE = 101,
  ENCODING_EXPLICIT_BIG = 102,
};

/// What a save writes.
enum _EnumSaveForm : std::int32_t {
  /// The data set alone, in implicit little endian.
  SAVE_BARE = 1,
  /// Preamble and mark, and behind them the data set in implicit little endian.
  SAVE_WITHOUT_META_HEADER = 2,
  /// Preamble, mark, meta header, and the data set in the transfer syntax of (0002,0010), or implicit little endian
  /// without one.
  SAVE_COMPLETE = 3,
};

/// What a save may be told. The numbers are added up.
enum _EnumSaveOption : std::int32_t {
  /// A file that is there stays, also one that comes there during the save, and the save fails.
  SAVE_KEEPS_FILES = 1,
  /// Elements of type UN stay that. Otherwise those that the dictionary knows are written with its type, where their
  /// length fits it.
  SAVE_KEEPS_TYPES = 2,
};

}  // namespace tessaret
