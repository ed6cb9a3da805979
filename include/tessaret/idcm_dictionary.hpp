/// What the dictionaries of data elements and UIDs know. Class "Tessaret.DcmDictionary".
#pragma once

#include "tessaret/dispatch.hpp"

namespace tessaret {

/// The dictionaries that the library loaded when it started. They never change, so that any thread may ask; where IDcmDictionaryFile
/// has loaded another one for this object, that one is asked for elements in place of the library's.
class IDcmDictionary : public IDispatch {
 public:
  static constexpr InterfaceId kId{0x5A51DE9E6B7D4F60, 0x91B3C8D4A2F02007};
  static constexpr const char* kName = "IDcmDictionary";

  /// How many elements the dictionary has.
  virtual Status get_NumEntries(Result<std::int16_t> pVal) = 0;

  /// The tag of entry `Idx` in the order of tags, from 0. False below 0 and at NumEntries and above; entries above 32767 cannot be
  /// reached.
  virtual Status GetEntry(std::int16_t Idx, Out<std::int32_t> Group, Out<std::int32_t> Element,
                          Result<VariantBool> Found) = 0;

  /// Type and name of an element: `TypeCode` gets the two letters of its value representation, `description` its text. False for
  /// a tag that the dictionary does not know, with both untouched. Of Group and Element the low 16 bits count.
  virtual Status GetVRDescription(std::int32_t Group, std::int32_t Element, Out<String> TypeCode,
                                  Out<String> description, Result<VariantBool> Found) = 0;

  /// What a UID denotes: a description without blanks, its kind, the modality of a storage class, and whether that holds images.
  /// False for an unknown UID, with all of these untouched.
  virtual Status GetUIDDescription(const String& UID, Out<String> Desc, Out<String> type,
                                   Out<String> Modality, Out<VariantBool> IsImg,
                                   Result<VariantBool> Found) = 0;
};

}  // namespace tessaret
