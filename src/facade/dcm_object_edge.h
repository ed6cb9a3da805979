// What the members of CDCMObject have in common at their edge.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/tag.h"
#include "core/type_code.h"
#include "core/vr.h"
#include "facade/class_ids.h"
#include "facade/guard.h"
#include "tessaret/idcm_file.hpp"
#include "tessaret/idcm_object.hpp"

namespace tessaret::dcm_object {

inline constexpr const char* kNothingToPutInto = "No data object";
inline constexpr const char* kNothingToGetFrom = "Empty object";
// An element has bytes or items, never both: the writers would leave the bytes out.
inline constexpr const char* kHoldsItems = "The element holds items: remove it first";
inline constexpr const char* kHoldsBytes = "The element holds a value: remove it first";

/// Does `work`, with whatever is thrown turned into a status with words.
template <class Work>
Status Answer(Work work) {
  return Guarded<IDCMObject>(class_id::kDCMObject, work);
}

inline Status FailWith(const char* words) {
  return Report(class_id::kDCMObject, words, IDCMObject::kId);
}
inline Status FailWith(std::int32_t stringId) {
  return Report(class_id::kDCMObject, stringId, IDCMObject::kId);
}

/// The same for the members of IDcmFile.
template <class Work>
Status AnswerOfFile(Work work) {
  return Guarded<IDcmFile>(class_id::kDCMObject, work);
}

inline Status FailOfFile(const char* words) {
  return Report(class_id::kDCMObject, words, IDcmFile::kId);
}

/// A path with a NUL in it would be cut there, and name another file.
inline bool IsPath(const std::string& path) { return path.find('\0') == std::string::npos; }

/// The tag of the low 16 bits of both.
constexpr TagKey KeyOf(std::int32_t group, std::int32_t element) {
  return MakeTagKey(static_cast<std::uint16_t>(group), static_cast<std::uint16_t>(element));
}

/// The length of an element as IDcmFile tells it.
inline double LengthOf(const VR& vr) {
  return vr.Length == kUndefinedLength ? -1.0 : static_cast<double>(vr.Length);
}

/// A letter of a type; characters of more than a byte are none that any type has.
constexpr char LetterOf(char16_t unit) { return unit < 0x100 ? static_cast<char>(unit) : '?'; }

/// The code of the first two letters of `text`; none for fewer.
constexpr VrCode FirstLetters(std::u16string_view text) {
  return text.size() < 2 ? type_code::kNone : MakeTypeCode(LetterOf(text[0]), LetterOf(text[1]));
}
/// The code of a text of exactly two letters; none for any other.
constexpr VrCode TwoLetters(std::u16string_view text) {
  return text.size() == 2 ? FirstLetters(text) : type_code::kNone;
}

/// The letters of a type as text. Throws std::bad_alloc.
inline String LettersOf(VrCode type) {
  const char letters[] = {FirstLetter(type), SecondLetter(type), '\0'};
  return String::FromNarrow(letters);
}

}  // namespace tessaret::dcm_object
