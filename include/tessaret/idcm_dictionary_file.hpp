/// Files of the data dictionary, and all UIDs. A further interface of class "Tessaret.DcmDictionary".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// For hosts with a data dictionary of their own, and those that make one. What is loaded counts for this object
/// alone: its IDcmDictionary looks elements up there in place of the library's dictionary, and nothing else changes.
/// An object that loads belongs to one thread.
///
/// A dictionary file has a text form, with lines such as `{0x0010 0x0020 LO "Patient ID"}` behind a first line that
/// is no entry, and a binary form that loads faster. Descriptions are texts of one byte a character. Failures with
/// words have the source "Tessaret.DcmDictionary". Every member answers kPointer for a place of an answer that is
/// null, and kOutOfMemory with "Not enough memory" where it says nothing else.
class IDcmDictionaryFile : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02105};
  static constexpr const char* kName = "IDcmDictionaryFile";

  /// Loads a dictionary file of either form. kException "Error reading [FileName]: " with the line and the reason, or
  /// the words of the system, where it cannot be read or has no entry: what was here stays.
  virtual Status LoadFile(const String& FileName) = 0;

  /// Loads likewise from an array of bytes with one dimension; the words are "Error reading dictionary: " and the
  /// reason. kTypeMismatch for anything else.
  virtual Status LoadBytes(const Variant& Bytes) = 0;

  /// Goes back to the library's dictionary.
  virtual Status Unload() = 0;

  /// How many elements the dictionary has.
  virtual Status get_ElementsCount(Result<std::int32_t> pVal) = 0;

  /// Element `Idx` in the order of tags, from 0: its tag, the two letters of its type, and its name, "" without one.
  /// False, with nothing written, where there is none of this number.
  virtual Status GetElementAt(std::int32_t Idx, Out<std::int32_t> Group, Out<std::int32_t> Element,
                              Out<String> TypeCode, Out<String> description,
                              Result<VariantBool> Found) = 0;

  /// How many UIDs the library's dictionary has.
  virtual Status get_UIDsCount(Result<std::int32_t> pVal) = 0;

  /// UID `Idx` in the order of their characters, from 0; IDcmDictionary.GetUIDDescription tells what it denotes.
  /// False, with nothing written, where there is none of this number.
  virtual Status GetUIDAt(std::int32_t Idx, Out<String> UID, Result<VariantBool> Found) = 0;

  /// The dictionary as the bytes of a file, an array with one dimension from 0: in its binary form, or else as text.
  /// Names come along; a line end in a name becomes a blank in the text form. kException "Type of (gggg,eeee) cannot
  /// be written as text" where its letters separate words there.
  virtual Status GetBytes(VariantBool Binary, Result<Variant> Bytes) = 0;

  /// Saves these bytes as a file, whole or not at all. With `KeepsFiles` a file that is there stays, and the save
  /// fails. kException with the words above or those of the system.
  virtual Status SaveFile(const String& FileName, VariantBool Binary,
                          Optional<VariantBool> KeepsFiles) = 0;
};

}  // namespace tessaret
