// Data sets through the public interface, as the verbs want them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include <tessaret/tessaret.hpp>

#include "character_sets.h"
#include "tag_path.h"
#include "type_code.h"

namespace tessaret::tool {

/// A call of the library failed; the words are the library's.
class CallError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws CallError after a failure, and std::bad_alloc where it was for want of memory.
void Require(Status status);

/// What a property without arguments has, as in AnswerOf(*file, &IDcmFile::get_HasMark).
template <class Interface, class T>
T AnswerOf(Interface& object, Status (Interface::*get)(T*)) {
  T answer{};
  Require((object.*get)(&answer));
  return answer;
}

/// A new object. Throws CallError.
Ref<IDCMObject> NewObject();

/// The interface of `object` for a close look.
inline Ref<IDcmFile> FileOf(IDCMObject& object) { return Ref<IDCMObject>(&object).As<IDcmFile>(); }

struct ElementFacts {
  VrCode type = 0;
  std::string letters;       // of the type
  std::uint32_t length = 0;  // of its value, or undefined
};

/// What an element is; nothing where there is none.
std::optional<ElementFacts> FactsOf(IDCMObject& object, TagKey tag);

/// How many bytes of an element's value are there; 0 where there are none, or no such element.
std::uint32_t StoredSize(IDcmFile& file, TagKey tag);
/// The whole value of an element as text, padding included; empty where it has none.
std::string TextOf(IDcmFile& file, TagKey tag);
/// A value of two bytes as a number; 0 for an absent or another value.
std::uint16_t UnsignedOf(IDcmFile& file, TagKey tag);
/// Sets the bytes of an element, and its type.
void PutBytes(IDCMObject& object, TagKey tag, VrCode type, std::span<const std::uint8_t> bytes);
void Remove(IDCMObject& object, TagKey tag);

/// The bytes of an array of bytes, which stay its own; none in any other value.
std::span<const std::uint8_t> BytesIn(const Variant& value);

/// Item `index` of an element; null where there is none.
Ref<IDCMObject> ItemOf(IDCMObject& object, TagKey tag, std::uint32_t index);
bool HasItems(IDCMObject& object, TagKey tag);

/// The character sets of `object`; those of what is around it where it names none.
CharacterSets SetsOf(IDCMObject& object, const CharacterSets& around);

/// Where a path leads.
struct Place {
  Ref<IDCMObject>
      object;          // that the last element of the path is in; null where there is no such item
  CharacterSets sets;  // that count there
  bool signedPixels = false;  // as Pixel Representation says there
};

Place Find(Ref<IDCMObject> object, const TagPath& path);

}  // namespace tessaret::tool
