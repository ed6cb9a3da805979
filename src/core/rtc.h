// The data dictionary: what the standard says of a tag. Readers take the type of implicit elements from it, dumps and the
// public classes their labels.
//
// A dictionary is filled once and only read from then on, by any number of threads without a lock. Loading and detaching
// need it to themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/dicom_object.h"
#include "core/rtc_draft.h"
#include "core/rtc_table.h"
#include "core/tag.h"
#include "core/tag_index.h"
#include "core/type_code.h"
#include "core/vr.h"

namespace tessaret {

/// A buffer for any description with its NUL.
inline constexpr std::size_t kDescriptionBuffer = kLongestToken + 1;

/// What LastErrorText says where memory ran out.
inline constexpr const char* kRtcNoMemory = "out of memory";

class RTC {
 public:
  explicit RTC(bool keepDescriptions = true) : KeepDescriptions(keepDescriptions ? 1 : 0) {}
  RTC(const RTC&) = delete;
  RTC& operator=(const RTC&) = delete;
  virtual ~RTC();

  /// Replaces what is loaded by the entries of a file, in text or binary form. True when there was at least one.
  /// False for a null path, a file that cannot be read or is larger than kLargestDictionaryFile, and a file that breaks
  /// its grammar: the dictionary stays as it was. False too for a file without an entry: the dictionary is then empty. For
  /// a binary file that ends early see LoadBinary.
  virtual bool AttachRTC(const char* path);

  /// Empties the dictionary and frees all that it held. Always true.
  virtual bool DetachRTC();

  /// The type of a tag; 0 for an unknown tag and an empty dictionary. `description`, unless null, is a buffer of
  /// kDescriptionBuffer bytes; it receives the description, or an empty text.
  virtual VrCode RunTimeClass(std::uint16_t group, std::uint16_t element, char* description) const;

  /// Gives `vr` a type if it has none or UN. True when it had one or the dictionary knows the tag; false when it does not:
  /// the type is then SQ for an element with Items and UN for any other. False for null.
  bool RunTimeClass(VR* vr) const;

  /// Does so for every element of `object`, with all that is nested in it at any depth, on a flat stack. True when every
  /// one was known. All elements are then in their place as if each had been popped and pushed back: a walk by Pop starts
  /// again, and LastPushedVR is the last one. Throws std::bad_alloc with some elements not typed yet.
  bool RunTimeClass(DICOMObject* object) const;

  /// Writes the binary form, whole or not at all. False with an empty dictionary, for a null path, for a file that
  /// cannot be written, and for one above kLargestDictionaryFile, which could not be loaded.
  bool SaveBinary(const char* path) const;

  /// Replaces what is loaded by the entries of a file in binary form. KeepDescriptions is off afterwards when it or the
  /// descriptions in the file were missing. False leaves the dictionary as it was, but for two cases: a file without an
  /// entry empties it, and of a file that ends early it holds, if there are any, the entries that came whole.
  bool LoadBinary(const char* path);

  /// What AttachRTC does with the bytes of a file; more than kLargestDictionaryFile are refused in the same way.
  bool AttachBytes(const void* bytes, std::size_t size);

  /// The entry of a tag, or null. It lives until the dictionary is loaded anew or emptied.
  [[nodiscard]] const _RTCElement* Find(TagKey key) const;

  /// What RunTimeClass looks types up in, for those who ask a great many times; null where there is none and where a
  /// descendant may answer in its own way. It lives as an entry does.
  [[nodiscard]] const TagIndex* PlainTypes() const;

  /// Why the last load was refused, with the number of the line in a text file; empty after one that was not.
  [[nodiscard]] const std::string& LastErrorText() const { return lastErrorText_; }

  /// Null when empty. Look-ups rely on an index of it, so only a load may change it.
  std::unique_ptr<RtcTable> Table;
  std::uint32_t KeepDescriptions;  // not 0: descriptions are kept

 private:
  bool ReadFile(const char* path, std::vector<std::uint8_t>& bytes);
  bool LoadText(const void* bytes, std::size_t size);
  bool LoadBinaryBytes(const void* bytes, std::size_t size);
  bool Install(RtcDraft&& draft);
  bool Refuse(std::string why);

  TagIndex index_;           // of Table; not built where its keys crowd too much
  std::vector<char> texts_;  // all descriptions, each with its NUL
  std::string lastErrorText_;
};

/// The dictionary of the module: keeps descriptions and is empty at first.
class DcmDictionary : public RTC {
 public:
  DcmDictionary() = default;
  ~DcmDictionary() override;
};

}  // namespace tessaret
