/// A DICOM data set. Class "Tessaret.DCMObject".
#pragma once

#include "tessaret/dispatch.hpp"
#include "tessaret/handle.hpp"

namespace tessaret {

/// A data set: a file, a command or an item of a sequence. An object is empty when it is made, and always has the data set in it; only
/// after a failed Load, or when the item that it showed is gone, there is none.
///
/// A tag is given as Group and Element, of which the low 16 bits count. TypeCode is the two letters of a value representation such as
/// "PN"; texts of fewer letters, and values that are no text, count as none, and so do longer ones for an element that is added. Where no
/// type is given for an element that has none yet, it comes from the dictionary. VM is the number of a value within its element, from 0.
/// Values travel as DICOM PS3.5, 6.2 has them:
///
/// | Types | Value |
/// |---|---|
/// | AE AS CS LO LT PN SH ST UI UT | string, a character a byte of the file, without padding at its end |
/// | IS, SL, US, AT | long; of an AT group and element are values of their own |
/// | SS | short |
/// | DS, FD, UL | double; a DS that is put gets six digits behind its point, a UL that is put is a long |
/// | FL | float |
/// | DA, DT | date |
/// | TM | string such as 14:05:06; a string that is put has the form 14:05:06.250 |
/// | all others | array of bytes: the whole value, whatever VM is |
///
/// Numbers are those of the host, also where the file was big endian; OW are numbers of 16 bits, whatever the pixels are. Failures with
/// words have the source "Tessaret.DCMObject". Every member answers kPointer for a place of an answer that is null, unless it says
/// that it never writes there, and kOutOfMemory with "Not enough memory" where it says nothing else.
class IDCMObject : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02001};
  static constexpr const char* kName = "IDCMObject";

  /// A value of an element; empty where there is no such element or value, but a string with nothing in it for a text that an
  /// element with others does not have. A TypeCode replaces the type of the element for good, so that an element of type UN can be
  /// read as what it is. kException "Error: VR type ST,LT and UT have VM=1" for another VM in these.
  virtual Status get_VR(std::int32_t Group, std::int32_t Element, Optional<const Variant&> TypeCode,
                        Optional<std::int32_t> VM, Result<Variant> pVal) = 0;

  /// Sets a value of an element, which is added where there is none; an empty value leaves it without bytes. TypeCode counts for an
  /// element without a type. Values behind the end are appended. Texts are cut to the length that their type allows. kException
  /// "Error converting VARIANT to VR type" for a value that cannot be turned into the type and for an element with items, the words
  /// above for a VM, and "No data object": the element is as it was. One of type SQ takes no value: it stays as it is, or is added
  /// without items, and that is no failure.
  virtual Status put_VR(std::int32_t Group, std::int32_t Element, Optional<const Variant&> TypeCode,
                        Optional<std::int32_t> VM, const Variant& newVal) = 0;

  /// How many values an element has: 0 for one that is not there, 1 for types that are not divided.
  virtual Status get_VRMultiplicity(std::int32_t Group, std::int32_t Element,
                                    Result<std::int32_t> pVal) = 0;

  /// Removes all elements. Where there is no data set, an empty one is there afterwards.
  virtual Status Clear() = 0;

  /// A new object with a copy of everything, independent at every depth.
  virtual Status copy(Result<IDCMObject*> pVal) = 0;

  /// Makes this a copy of `Object`, which stays as it is. kPointer for none, and the answer of one that does not give its
  /// IDcmObjectManager: nothing has changed then.
  virtual Status Set(IDCMObject* Object) = 0;

  /// Saves as a file with meta header, in the transfer syntax of (0002,0010), or implicit little endian where that is not there. Pixel
  /// data goes out as it stands. What was at `FileName` stays where the new file cannot be written whole: kException, with the words of
  /// the encoder or the system, or "Empty object". An explicit syntax has no place for more than 65535 bytes in types other than OB,
  /// OW, UN and UT: a longer value makes what follows it unreadable. OD, OF, OL, OV, SV, UC, UR and UV are among these, for which other
  /// programs expect a longer head. An element of type UN that the dictionary knows goes out with the type that it has there, one of
  /// these too, where its length fits; IDcmFile.SaveFile with SAVE_KEEPS_TYPES leaves it UN.
  virtual Status Save(const String& FileName) = 0;

  /// Loads a file. What was here is gone, also when it fails. With LoadPixels exactly true (-1) the pixel data is there and native, and
  /// (0002,0010) says so; otherwise (7FE0,0010) comes without bytes and the file is not read beyond it. A file that ends early is there
  /// as far as it goes. kException with the words of the reader where nothing can be read, "Unsupported Encapsulated Transfer Syntax"
  /// where no codec turns the pixel data native: the object is there then, still compressed; "Not a DICOM FILE" for anything unforeseen.
  virtual Status Load(const String& FileName, VariantBool LoadPixels) = 0;

  /// How many items an element has; 32767 where there are more.
  virtual Status get_SequencesCount(std::int32_t Group, std::int32_t Element,
                                    Result<std::int16_t> pVal) = 0;

  /// Item `Idx` of an element, from 0; none where there is no such item. The item belongs to this object, which lives as long as what is
  /// given here; once it is removed or replaced, that has no data set any more.
  virtual Status get_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                              Result<IDCMObject*> pVal) = 0;

  /// Makes the data set of `newVal` item `Idx` of an element: in place of the one that is there, or behind the last one where there is
  /// none of this number. The element is added where it is not there; with no `newVal` nothing else happens. `newVal` shows the item
  /// from then on and no longer owns it. Where it fails nothing has changed: kInvalidArgument for a `newVal` that does not own its data
  /// set, or in which this object lies; the answer of one that does not give its IDcmObjectManager; kException "No data object", "The
  /// element holds a value: remove it first".
  virtual Status putref_Sequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                                 IDCMObject* newVal) = 0;

  /// What an element is: `Descr` is its name in the dictionary, `TypeCode` the two letters of its type, `Length` its bytes (-1 for an
  /// undefined length), `VM` the number of its values, 0 for OB, OW and UN. False where there is no such element; `VM` is 0 then and the
  /// rest untouched.
  virtual Status GetVRDescr(std::int32_t Group, std::int32_t Elem, Out<String> Descr,
                            Out<String> TypeCode, Out<std::int32_t> Length, Out<std::int32_t> VM,
                            Result<VariantBool> Found) = 0;

  /// Removes an element. `Removed` is never written.
  virtual Status RemoveVR(std::int32_t Group, std::int32_t Element,
                          Result<VariantBool> Removed) = 0;

  /// Does nothing. `Removed` is never written.
  virtual Status RemoveSequence(std::int32_t Group, std::int32_t Element, std::int32_t Idx,
                                Result<VariantBool> Removed) = 0;

  /// Sends the data set to a remote node with C-STORE, over an association of its own, which is made and released within the call;
  /// an answer may take 300 seconds. `host` is a name or an address, `port` a number or a service as text, the titles have up to 16
  /// characters. The object stays as it is, and `GetOwnership` has no effect. Pixel data in fragments is sent as it is where the node
  /// takes its transfer syntax, and native otherwise. True when the node answered, whatever the status of the answer.
  /// Fails with "Missing SOP Class for C-STORE" without a usable (0008,0016), where no association comes about with the words of
  /// IDcmCStore::SendFiles, and with "Error during transfer".
  virtual Status Send(const String& host, const String& port, const String& LocalAETitle,
                      const String& RemoteAETitle, Optional<VariantBool> GetOwnership,
                      Result<VariantBool> Sent) = 0;

  /// Replaces the whole value of an element by `val`, a byte a character, as it is: nothing is padded or cut. The element is added where
  /// there is none. TypeCode counts for an element without a type. kException "No data object", "The element holds items: remove it
  /// first".
  virtual Status PutVRRawString(std::int32_t Group, std::int32_t Elem, const String& TypeCode,
                                const String& val) = 0;

  /// The whole value of an element as text, padding and backslashes included; "" where there is none. `TypeCode` is never written.
  /// kException "Cannot convert VR to raw ASCII" for an element that holds no text.
  virtual Status GetVRRawString(std::int32_t Group, std::int32_t Elem, Out<String> TypeCode,
                                Out<String> val) = 0;

  /// The lowest tag. False, with nothing written, for an empty object.
  virtual Status GetFirstVR(Out<std::int32_t> Group, Out<std::int32_t> Element,
                            Result<VariantBool> Found) = 0;

  /// The tag behind the one that is given, in the same place. False, with nothing written, where the tag given is the last one or not
  /// there.
  virtual Status GetNextVR(InOut<std::int32_t> Group, InOut<std::int32_t> Element,
                           Result<VariantBool> Found) = 0;

  /// Turns the pixel data, here in memory, into another transfer syntax, and names it in (0002,0010). Without `trSyntax` it becomes
  /// native, and `Done` is not written. `trSyntax` is a UID, which a NUL ends. False, with the pixel data native, where no codec serves the
  /// syntax for this image. True, with nothing done, for pixel data without bytes. kException with the words of the codec, or "No data
  /// object": the pixel data is compressed as before where it cannot become native, and native where it cannot be compressed.
  virtual Status Translate(Optional<const String&> trSyntax, Result<VariantBool> Done) = 0;

  /// The bytes of an element, as an array with one dimension from 0; empty where it has none. `TypeCode` gets its two letters.
  /// kException "Empty object", "Non existing VR", "Not enough memory for VR Data".
  virtual Status GetVRData(std::int32_t Group, std::int32_t Element, Out<String> TypeCode,
                           Out<Variant> BinArray) = 0;

  /// Replaces the bytes of an element by those of an array with one dimension, as they are; the element is added where there is none. Its
  /// type becomes the first two characters of TypeCode, whatever it was; 0 for an empty text. kException "No data object", "Only BYTE
  /// vectors allowed", "PutVRData: Only 1 dim BYTE vectors allowed", "The element holds items: remove it first".
  virtual Status PutVRData(std::int32_t Group, std::int32_t Element, const String& TypeCode,
                           const Variant& BinArray) = 0;

  /// The line in which this image and another one meet. Not available in this version: kNotImplemented, with words. With `Pixels` exactly
  /// true the ends `p0` and `p1` will be in pixels of this image, otherwise in patient millimetres: arrays of three floats.
  virtual Status IntersectPlane(IDCMObject* pIObj, VariantBool Pixels, Out<VariantBool> Coplanar,
                                Out<Variant> p0, Out<Variant> p1, Result<VariantBool> bExists) = 0;

  /// Makes this a Secondary Capture image of a picture, with the patient and study of `pIRefDcm`. Not available in this version:
  /// kNotImplemented, with words.
  virtual Status CreateSecondaryCapture(IDCMObject* pIRefDcm, const Variant& pIPic) = 0;

  /// Adds an overlay plane of what is drawn in the event OnDrawOverlay, within x0 to x1 and y0 to y1, both inclusive. Not available in
  /// this version: kNotImplemented, with words.
  virtual Status AddOverlay(Out<std::int32_t> ovlIndex, std::int32_t x0, std::int32_t y0,
                            std::int32_t x1, std::int32_t y1, const String& type,
                            const String& description) = 0;
};

/// Events of that class.
class _IDCMObjectEvents : public IObject {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F03001};
  static constexpr const char* kName = "_IDCMObjectEvents";

  /// AddOverlay wants the overlay drawn into the surface `hDc`, within x0 to x1 and y0 to y1, in any colour but black.
  virtual Status OnDrawOverlay(Handle hDc, std::int32_t x0, std::int32_t y0, std::int32_t x1,
                               std::int32_t y1) = 0;
};

}  // namespace tessaret
