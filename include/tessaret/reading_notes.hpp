/// What a reader notes of the bytes that it reads.
#pragma once

#include <cstdint>

namespace tessaret {

/// Why a reader stopped.
enum _EnumReadingEnd : std::int32_t {
  /// It came to the end of the bytes.
  READ_TO_THE_END = 0,
  /// The bytes end within an element.
  READ_CUT_ELEMENT = 1,
  /// The bytes end where the delimiter of a sequence, an item or fragments is due. Everything was read all the same.
  READ_NO_DELIMITER = 2,
  /// A tag of group FFFE that is no item and no delimiter.
  READ_STRAY_TAG = 3,
  /// The meta header names a transfer syntax that the library does not know.
  READ_UNKNOWN_SYNTAX = 4,
  /// At pixel data that was not asked for.
  READ_TO_PIXELS = 5,
  /// An item with no element before it.
  READ_ORPHAN_ITEM = 6,
  /// Sequences within sequences, more than 256 deep. Nothing is loaded then.
  READ_TOO_DEEP = 7,
  /// An element with a length beyond what its stream says it holds. Files and blocks of bytes end such an element with
  /// READ_CUT_ELEMENT.
  READ_TOO_LONG = 8,
};

/// What a reader takes without complaint although hardly anybody can have meant it.
enum _EnumReadingOddity : std::int32_t {
  ODDITY_NONE = 0,
  /// A value longer than the item or sequence around it, with which it ends.
  ODDITY_VALUE_BEYOND_ITEM = 1,
  /// A sequence or an item that ends elsewhere than its length says.
  ODDITY_WRONG_LENGTH = 2,
  /// A data element where only items belong; it is in the object that holds the sequence.
  ODDITY_ELEMENT_IN_SEQUENCE = 3,
  /// An item that is in no sequence; it is in the element before it.
  ODDITY_ITEM_OUTSIDE = 4,
  /// Something other than an item among the fragments of pixel data; it is dropped.
  ODDITY_STRAY_FRAGMENT = 5,
  /// An undefined length in an element of a type that has none; it is read as a sequence.
  ODDITY_NOT_A_SEQUENCE = 6,
  /// An undefined length that ends with what is around it instead of by a delimiter.
  ODDITY_NO_DELIMITER = 7,
  /// A delimiter outside all sequences.
  ODDITY_STRAY_DELIMITER = 8,
  /// A delimiter of the other kind than is due, or with a length; or a tag that is no item in the place of one.
  ODDITY_WRONG_DELIMITER = 9,
  /// A (0002,0010) behind the meta header; it is dropped.
  ODDITY_LATE_SYNTAX = 10,
  /// Two zero bytes where the letters of the type belong; the dictionary has the type.
  ODDITY_NO_LETTERS = 11,
  /// An element of a tag that was there already, which it replaces.
  ODDITY_TWICE = 12,
};

}  // namespace tessaret
