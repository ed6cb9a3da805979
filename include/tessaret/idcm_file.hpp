/// Reading and writing a data set with options, what its reader noted, and its elements as they are stored. A further
/// interface of class "Tessaret.DCMObject".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/file_options.hpp"
#include "tessaret/reading_notes.hpp"

namespace tessaret {

/// For hosts that look closely at files. Every IDCMObject of the library has it: `object.As<IDcmFile>()`.
///
/// A load puts what it reads in place of what was here, which is gone also when it fails. What was read before the
/// bytes ended or stopped making sense is there, and the notes say where that was; IDCMObject.Load leaves them too.
/// They stay until the next load, whatever is done to the data set in between, and are told of this object only, not
/// of its items and copies.
///
/// Offsets count from the first byte that was read, the preamble included, modulo 4 GiB. Of Group and Element the low
/// 16 bits count. Failures with words have the source "Tessaret.DCMObject". Every member answers kPointer for a place
/// of an answer that is null, and kOutOfMemory with "Not enough memory" where it says nothing else.
class IDcmFile : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02104};
  static constexpr const char* kName = "IDcmFile";

  /// Loads a file. `Options` is a sum of _EnumLoadOption; `Encoding` says that there is a bare data set in that
  /// encoding, and otherwise, by preamble, meta header and the first element, the bytes tell. Compressed pixel data
  /// stays compressed. Numbers are turned to those of the host. kInvalidArgument, with nothing changed, for options
  /// and encodings that do not exist, for LOAD_STRICT together with an encoding, and for LOAD_PIXELS together with
  /// LOAD_SKIPS_PIXELS; kException with the words of the reader or the system where nothing can be read.
  virtual Status LoadFile(const String& FileName, Optional<std::int32_t> Options,
                          Optional<_EnumDataEncoding> Encoding) = 0;

  /// Loads likewise from an open file, pipe or socket of this process, beginning where it stands. `Descriptor` stays
  /// the caller's; where it stands afterwards is not said.
  virtual Status LoadDescriptor(std::int32_t Descriptor, Optional<std::int32_t> Options,
                                Optional<_EnumDataEncoding> Encoding) = 0;

  /// Loads likewise from an array of bytes with one dimension, of at most 2147483647; an empty value is no bytes.
  /// kTypeMismatch, with nothing changed, for anything else.
  virtual Status LoadBytes(const Variant& Bytes, Optional<std::int32_t> Options,
                           Optional<_EnumDataEncoding> Encoding) = 0;

  /// How the data set was encoded that was read last; how the meta header was where no data set followed.
  /// ENCODING_NONE before the first load, and where not even a byte could be read.
  virtual Status get_ReadEncoding(Result<_EnumDataEncoding> pVal) = 0;

  /// Whether there was a preamble with the mark "DICM" behind it.
  virtual Status get_HasMark(Result<VariantBool> pVal) = 0;

  /// How many bytes the reader went through, preamble and mark included, modulo 4 GiB.
  virtual Status get_BytesRead(Result<double> pVal) = 0;

  /// The transfer syntax that the meta header names, without padding, whether or not the reader followed it; "" where
  /// it names none.
  virtual Status get_NamedSyntax(Result<String> pVal) = 0;

  /// How a data set in that transfer syntax is encoded: what the reader was to follow. ENCODING_NONE where none is named,
  /// and for one that the library does not know.
  virtual Status get_NamedEncoding(Result<_EnumDataEncoding> pVal) = 0;

  /// The tag that stands first, preamble and mark aside. False, with nothing written, where there are not enough
  /// bytes for one.
  virtual Status GetFirstTag(Out<std::int32_t> Group, Out<std::int32_t> Element,
                             Result<VariantBool> Found) = 0;

  /// The length of the meta header behind (0002,0000): `Stated` by that element, and `Counted` in bytes up to the
  /// first element of another group. False, with nothing written, where there is no such element or the end of the
  /// group was not seen.
  virtual Status GetMetaLength(Out<double> Stated, Out<double> Counted,
                               Result<VariantBool> Found) = 0;

  /// Why the reader stopped, where, and in which element. `Offset` is that of the element; with a tag of zeros it is the end
  /// of the bytes where a delimiter is missing, and where a sequence or an item that is too deep begins within its element.
  /// After READ_TO_THE_END all three are 0.
  virtual Status GetEnd(Out<double> Offset, Out<std::int32_t> Group, Out<std::int32_t> Element,
                        Result<_EnumReadingEnd> End) = 0;

  /// What the system said when it could not supply the bytes; "" where it could. A file that it cuts short looks like
  /// one that is cut.
  virtual Status get_SystemError(Result<String> pVal) = 0;

  /// How many kinds of oddities were met.
  virtual Status get_OdditiesCount(Result<std::int32_t> pVal) = 0;

  /// Kind number `Idx` of them, from 0 in the order in which they came, and the offset and tag of the first element
  /// or item of that kind. ODDITY_NONE, with nothing written, where there is none of this number.
  virtual Status GetOddity(std::int32_t Idx, Out<double> Offset, Out<std::int32_t> Group,
                           Out<std::int32_t> Element, Result<_EnumReadingOddity> Kind) = 0;

  /// Saves as a file; the object stays as it is. `Form`, SAVE_COMPLETE where it is left away, says what is written,
  /// `Options` is a sum of _EnumSaveOption. What was at `FileName` stays where the new file cannot be written whole:
  /// kException, with the words of the encoder or the system, or "Empty object": "VR(7FE0,0010) was stepped over when it was
  /// read" is what comes of LOAD_SKIPS_PIXELS. kInvalidArgument for forms and options that do not exist.
  virtual Status SaveFile(const String& FileName, Optional<_EnumSaveForm> Form,
                          Optional<std::int32_t> Options) = 0;

  /// The bytes of that file, as an array with one dimension from 0. Options that speak of files mean nothing here.
  virtual Status SaveBytes(Optional<_EnumSaveForm> Form, Optional<std::int32_t> Options,
                           Result<Variant> Bytes) = 0;

  /// An element as it is stored; unlike the members of IDCMObject this gives no type to one that has none. `TypeCode`
  /// gets its two characters as they stood in the file, "" for none; `Length` the bytes of its value, -1 for an
  /// undefined length, of a sequence as it was read, 0 where it was undefined; `Offset` where it stood among the
  /// bytes read, 0 where it was not read; `HasValue` whether its bytes are here, which those of pixel data may not
  /// be; `ItemsCount` how many items or fragments it has. An item outside any sequence hangs on an element with a
  /// value. False, with nothing written, where there is no such element.
  virtual Status GetElement(std::int32_t Group, std::int32_t Element, Out<String> TypeCode,
                            Out<double> Length, Out<double> Offset, Out<VariantBool> HasValue,
                            Out<std::int32_t> ItemsCount, Result<VariantBool> Found) = 0;

  /// All elements, those in items at every depth too, and the items themselves, as they follow one another in a file:
  /// seven arrays with one dimension from 0, in which the same index stands for the same element or item. `Levels`
  /// (longs) is 0 for the elements of this data set, and one more for an item, and what is in it, than for the element
  /// that holds it. `Tags` (doubles) is group * 65536 + element, `TypeCodes` (longs) the first character of the type *
  /// 256 + the second, 0 for none; `Lengths`, `Offsets` (doubles), `HaveValues` (booleans) and `ItemsCounts` (longs)
  /// are what GetElement tells. For an item the tag is (FFFE,E000), `Lengths` the number of its elements, and
  /// `ItemsCounts` -1, which tells it from a fragment of pixel data. All are empty where there are no elements.
  virtual Status GetListing(Out<Variant> Levels, Out<Variant> Tags, Out<Variant> TypeCodes,
                            Out<Variant> Lengths, Out<Variant> Offsets, Out<Variant> HaveValues,
                            Out<Variant> ItemsCounts, Result<std::int32_t> Count) = 0;

  /// At most `Count` bytes of the value of an element from its byte `Offset` on, as an array with one dimension from
  /// 0: fewer where the value ends before, or what is here of one that LOAD_SKIPS_PIXELS stepped over. Empty where there are
  /// none. kInvalidArgument for a negative `Count`, and an `Offset` that is negative or no whole number.
  virtual Status GetBytes(std::int32_t Group, std::int32_t Element, double Offset,
                          std::int32_t Count, Result<Variant> Bytes) = 0;

  /// Gives an element another type, with its bytes as they are. `TypeCode` is two characters; kInvalidArgument for
  /// any other text. False where there is no such element.
  virtual Status SetType(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                         Result<VariantBool> Found) = 0;

  /// Whether there is native pixel data with more bits a sample than the numbers of its type have. Programs write
  /// such pixels in big endian in two ways, and nothing in a file tells which was meant.
  virtual Status get_HasPixelsOfDoubtfulOrder(Result<VariantBool> pVal) = 0;

  /// The data set as text, for people: a line an element, with items set in, each line with its end. A character a
  /// byte: text of values stands as it is, but for control characters, which are dots. kException "Empty object".
  virtual Status get_Text(Result<String> pVal) = 0;

  /// The lines of that text for one element with all that is in it; "" where there is no such element, kException
  /// "Empty object". Set in by their depth, all lines may take many times the memory of the data set: parts of them begin
  /// with line `FirstLine`, counted from 0, and end behind the line with which they have `Room` characters or more; one
  /// with fewer is the last. A `Room` of 0 has no end. kInvalidArgument where one of both is negative.
  virtual Status GetElementText(std::int32_t Group, std::int32_t Element,
                                Optional<std::int32_t> FirstLine, Optional<std::int32_t> Room,
                                Result<String> Text) = 0;

  /// Why the last Translate of IDCMObject answered false, which is no failure: the words of the engine or of the codec that
  /// cannot hold this object. "" where it answered true or failed, and before the first.
  virtual Status get_Refusal(Result<String> pVal) = 0;
};

}  // namespace tessaret
